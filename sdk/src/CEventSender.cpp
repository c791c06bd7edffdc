#include "CEventSender.h"

CEventSender::CEventSender(QObject* parent) : QObject(parent)
{
    qRegisterMetaType<QV::CArrayList<QV::CHandle*>>("QV::CArrayList<QV::CHandle*>");
}

CEventSender::~CEventSender() = default;

CFigmoraEventSender::CFigmoraEventSender(QObject* parent) : QObject(parent) {}

CFigmoraEventSender::~CFigmoraEventSender() = default;

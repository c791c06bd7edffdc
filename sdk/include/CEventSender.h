#pragma once

#include "MVPluginQtExport.h"
#include "QVArrayList.h"

#include <QMetaType>
#include <QObject>

class CBaseEvent;

Q_DECLARE_METATYPE(QV::CArrayList<QV::CHandle*>)

// Host-wide notifications. The host owns the object and emits; plug-ins connect.
class MVPLUGINQT_EXPORT CEventSender : public QObject
{
    Q_OBJECT
public:
    explicit CEventSender(QObject* parent = nullptr);
    ~CEventSender() override;

signals:
    void ObjectSelectionChanged();
    void ObjectDataChanged2(CBaseEvent* event);
    void Played();
    void Stopped();
    void GoZDataUpdated();
    void ObjectAdded(QV::CArrayList<QV::CHandle*> objects);
    void RunAutoTestForPlugins(const QString& pluginName);
};

// Character-editing notifications of the Figmora host.
class MVPLUGINQT_EXPORT CFigmoraEventSender : public QObject
{
    Q_OBJECT
public:
    explicit CFigmoraEventSender(QObject* parent = nullptr);
    ~CFigmoraEventSender() override;

signals:
    void ExpressionGoZBrushDialog();
    void LoadExpressionGozMotion();
};

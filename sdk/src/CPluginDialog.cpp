#include "CPluginDialog.h"

#include <QKeyEvent>

CDialogEx::CDialogEx(QWidget* parent, Qt::WindowFlags flags) : QDialog(parent, flags) {}

CDialogEx::~CDialogEx() = default;

CPluginDialog::CPluginDialog(QWidget* parent, Qt::WindowFlags flags) : CDialogEx(parent, flags) {}

CPluginDialog::~CPluginDialog() = default;

QV::Result CPluginDialog::BeforeDialogModeChangedToShow()
{
    return QV::kOk;
}

QV::Result CPluginDialog::AfterDialogModeChangedToShow()
{
    return QV::kOk;
}

QV::Result CPluginDialog::BeforeDialogModeChangedTHide()
{
    return QV::kOk;
}

QV::Result CPluginDialog::AfterDialogModeChangedTHide()
{
    return QV::kOk;
}

void CPluginDialog::showEvent(QShowEvent* event)
{
    BeforeDialogModeChangedToShow();
    CDialogEx::showEvent(event);
    AfterDialogModeChangedToShow();
}

void CPluginDialog::hideEvent(QHideEvent* event)
{
    BeforeDialogModeChangedTHide();
    CDialogEx::hideEvent(event);
    AfterDialogModeChangedTHide();
}

void CPluginDialog::keyPressEvent(QKeyEvent* event)
{
    // Return must not press a default button by accident: sends write files.
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        event->accept();
        return;
    }
    CDialogEx::keyPressEvent(event);
}

void CPluginDialog::keyReleaseEvent(QKeyEvent* event)
{
    CDialogEx::keyReleaseEvent(event);
}

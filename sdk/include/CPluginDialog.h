#pragma once

#include "MVPluginQtExport.h"
#include "QVResult.h"

#include <QDialog>

// Dialog base of the SDK.
class MVPLUGINQT_EXPORT CDialogEx : public QDialog
{
    Q_OBJECT
public:
    explicit CDialogEx(QWidget* parent = nullptr, Qt::WindowFlags flags = Qt::WindowFlags());
    ~CDialogEx() override;
};

// Plug-in dialog: show and hide pass through the four mode hooks.
class MVPLUGINQT_EXPORT CPluginDialog : public CDialogEx
{
    Q_OBJECT
public:
    explicit CPluginDialog(QWidget* parent = nullptr, Qt::WindowFlags flags = Qt::WindowFlags());
    ~CPluginDialog() override;

    virtual QV::Result BeforeDialogModeChangedToShow();
    virtual QV::Result AfterDialogModeChangedToShow();
    virtual QV::Result BeforeDialogModeChangedTHide();
    virtual QV::Result AfterDialogModeChangedTHide();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
};

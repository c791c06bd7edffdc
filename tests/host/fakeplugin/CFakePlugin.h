#pragma once

#include "CAbstractPlugin.h"
#include "CMiravaInterface.h"

#include <QWidget>

#ifndef FAKE_PLUGIN_IID
#define FAKE_PLUGIN_IID MV_PLUGIN_INTERFACE_IID
#endif
#ifndef FAKE_PLUGIN_APPS
#define FAKE_PLUGIN_APPS 0x01800007u
#endif

// A small plug-in for testing the reference host: a menu and a tool bar whose actions open
// modal dialogs, call host operations and start a stand-in program.
class CFakePlugin : public QWidget, public CAbstractPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID FAKE_PLUGIN_IID)
    Q_INTERFACES(CPluginInterface)
public:
    ~CFakePlugin() override;

    QV::Result Initialize(const QString& pluginFolder, const QString& secondPath, CMiravaInterface* host) override;
    QV::Result Finalize() override { return QV::kNothingDone; }
    QV::Result Activate() override { return QV::kNothingDone; }
    QV::Result Deactivate() override { return QV::kNothingDone; }
    QV::Result GetContextList(QList<QAction*>&) override { return QV::kOk; }
    QV::Result GetMenusList(QList<QMenu*>& menus) override;
    QV::Result GetToolBarsList(QList<QToolBar*>& toolBars) override;
    bool IsValid(CMiravaInterface* host) override { return host != nullptr && host->Plugins()->IsPluginSupported(); }
    quint32 GetCompatibleApps() override { return FAKE_PLUGIN_APPS; }

private:
    void OnDialog();
    void OnCallHost();
    void OnStartProgram();
    void Record(const QString& tag, const QString& text, int id);
};

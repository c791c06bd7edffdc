#pragma once

#include "MVPluginQtExport.h"
#include "QVResult.h"

#include <QList>
#include <QString>
#include <QtPlugin>

class CMiravaInterface;
class QAction;
class QMenu;
class QToolBar;

#define MV_PLUGIN_INTERFACE_IID "Quorvane.Mirava.CPluginInterface/7.0"

// The contract between the host and a plug-in module.
class MVPLUGINQT_EXPORT CPluginInterface
{
public:
    virtual QV::Result Initialize(const QString& pluginFolder, const QString& secondPath, CMiravaInterface* host) = 0;
    virtual QV::Result Finalize() = 0;
    virtual QV::Result Activate() = 0;
    virtual QV::Result Deactivate() = 0;
    virtual QV::Result GetContextList(QList<QAction*>& actions) = 0;
    virtual QV::Result GetMenusList(QList<QMenu*>& menus) = 0;
    virtual QV::Result GetToolBarsList(QList<QToolBar*>& toolBars) = 0;
    virtual bool IsValid(CMiravaInterface* host) = 0;
    virtual quint32 GetCompatibleApps() = 0;
    virtual quint32 GetCurrentApp();
    virtual void SetCurrentApp(quint32 app);
    virtual QV::Result RestoreLayout();
    virtual ~CPluginInterface();

private:
    quint32 m_uCurrentApp = 0;
};

Q_DECLARE_INTERFACE(CPluginInterface, MV_PLUGIN_INTERFACE_IID)

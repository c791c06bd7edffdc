#pragma once

#include "CCoreBase.h"
#include "CPluginInterface.h"
#include "CWidgetBuilder.h"
#include "MVPluginQtExport.h"
#include "QVArrayList.h"

#include <QPointer>

class QAction;
class QMenu;
class QToolBar;

// Base implementation of a plug-in: resource registration, host pointer, form builder and
// the guarded lists of what the plug-in hands to the host.
class MVPLUGINQT_EXPORT CAbstractPlugin : public CPluginInterface, public CCoreBase
{
public:
    CAbstractPlugin();
    ~CAbstractPlugin() override;

    // Registers pluginFolder + rccName as a binary resource and keeps the host.
    QV::Result InitResource(const QString& pluginFolder, const QString& rccName, const QString& secondPath,
                            CMiravaInterface* host);

protected:
    CMiravaInterface* m_pHost = nullptr;
    CWidgetBuilder m_kWidgetBuilder;
    QV::CArrayList<QPointer<QToolBar>> m_kToolBars;
    QV::CArrayList<QPointer<QMenu>> m_kMenus;
    QV::CArrayList<QPointer<QAction>> m_kContextActions;

private:
    QString m_strResourcePath;
};

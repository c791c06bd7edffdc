#pragma once

#include "QVResult.h"

#include <QList>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <memory>

class CPluginInterface;
class QAction;
class QMenu;
class QObject;
class QPluginLoader;
class QToolBar;

namespace MV {
namespace Host {

class CReferenceHost;

// Loads one plug-in module the way a host does: metadata check, instance, IsValid, the
// compatible applications, Initialize, then its menus and tool bars into the main window.
class CPluginHost
{
public:
    static constexpr const char* kInterfaceId = "Quorvane.Mirava.CPluginInterface/7.0";
    static constexpr const char* kDefaultClassName = "CGoZBrushPlugin";

    explicit CPluginHost(CReferenceHost& host);
    ~CPluginHost(); // unloads
    CPluginHost(const CPluginHost&) = delete;
    CPluginHost& operator=(const CPluginHost&) = delete;

    // The class name the metadata must carry (kDefaultClassName unless set).
    void SetExpectedClassName(const QString& className) { m_strClassName = className; }
    void SetSecondPath(const QString& path) { m_strSecondPath = path; }

    // kOk when loaded and initialised; otherwise the module is not kept and Errors() says why.
    QV::Result Load(const QString& path);
    // Finalize, then delete the instance through the loader. kNothingDone when nothing is loaded.
    QV::Result Unload();

    bool IsLoaded() const { return m_pPlugin != nullptr; }
    QString Path() const { return m_strPath; }
    QStringList Errors() const { return m_kErrors; }
    QObject* Instance() const;
    CPluginInterface* Plugin() const { return m_pPlugin; }
    quint32 CompatibleApps() const { return m_uCompatibleApps; }
    bool HasInitializeResult() const { return m_bInitializeCalled; }
    QV::Result InitializeResult() const { return m_iInitializeResult; }
    QV::Result FinalizeResult() const { return m_iFinalizeResult; }

    QList<QMenu*> Menus() const;
    QList<QToolBar*> ToolBars() const;
    QList<QAction*> ContextActions() const;
    // Every action of the plug-in's menus (and their sub-menus), tool bars and context list, once each.
    QList<QAction*> Actions() const;
    QAction* FindAction(const QString& objectName) const;

private:
    QV::Result Refuse(const QString& message, QV::Result code);
    // Refusals once the loader exists: it goes (after unloading the instance it made).
    QV::Result Discard(const QString& message);
    QV::Result UnloadAndDiscard(const QString& message);

    CReferenceHost& m_rHost;
    QString m_strClassName = QString::fromLatin1(kDefaultClassName);
    QString m_strSecondPath;
    QString m_strPath;
    QStringList m_kErrors;
    std::unique_ptr<QPluginLoader> m_pLoader;
    QPointer<QObject> m_pInstance;
    CPluginInterface* m_pPlugin = nullptr;
    quint32 m_uCompatibleApps = 0;
    bool m_bInitializeCalled = false;
    QV::Result m_iInitializeResult = QV::kOk;
    QV::Result m_iFinalizeResult = QV::kOk;
    QList<QPointer<QMenu>> m_kMenus;
    QList<QPointer<QToolBar>> m_kToolBars;
    QList<QPointer<QAction>> m_kContextActions;
};

} // namespace Host
} // namespace MV

#include "CPluginHost.h"

#include "CEventSender.h"
#include "CPluginInterface.h"
#include "CReferenceHost.h"

#include <QAction>
#include <QFileInfo>
#include <QJsonObject>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPluginLoader>
#include <QToolBar>

namespace MV {
namespace Host {

namespace {

QString Hex(QV::Result code)
{
    return QStringLiteral("0x%1").arg(static_cast<quint32>(code), 8, 16, QLatin1Char('0'));
}

void AppendOnce(QList<QAction*>& actions, QAction* action)
{
    if (!actions.contains(action)) {
        actions << action;
    }
}

void CollectMenuActions(QMenu* menu, QList<QAction*>& actions, int depth)
{
    if (menu == nullptr || depth > 16) {
        return;
    }
    for (QAction* action : menu->actions()) {
        AppendOnce(actions, action);
        CollectMenuActions(action->menu(), actions, depth + 1);
    }
}

// The plug-in may delete what it handed over; only what still lives is given out.
template <typename T>
QList<T*> Living(const QList<QPointer<T>>& pointers)
{
    QList<T*> living;
    for (const QPointer<T>& pointer : pointers) {
        if (pointer) {
            living << pointer.data();
        }
    }
    return living;
}

} // namespace

CPluginHost::CPluginHost(CReferenceHost& host) : m_rHost(host) {}

CPluginHost::~CPluginHost()
{
    Unload();
}

QV::Result CPluginHost::Refuse(const QString& message, QV::Result code)
{
    m_kErrors << message;
    return code;
}

QV::Result CPluginHost::Discard(const QString& message)
{
    m_pLoader.reset();
    return Refuse(message, QV::kFail);
}

QV::Result CPluginHost::UnloadAndDiscard(const QString& message)
{
    m_pLoader->unload();
    return Discard(message);
}

QV::Result CPluginHost::Load(const QString& path)
{
    if (IsLoaded()) {
        return Refuse(QStringLiteral("a plug-in is already loaded from %1").arg(m_strPath), QV::kFail);
    }
    m_kErrors.clear();
    m_strPath = path;
    m_bInitializeCalled = false;
    m_iInitializeResult = QV::kOk;
    m_uCompatibleApps = 0;

    const QFileInfo info(path);
    // A relative name would be searched in the library paths, not where the caller meant.
    if (!info.isAbsolute()) {
        return Refuse(QStringLiteral("the plug-in path must be absolute: %1").arg(path), QV::kInvalidArg);
    }
    if (!info.isFile()) {
        return Refuse(QStringLiteral("no plug-in file at %1").arg(path), QV::kInvalidArg);
    }

    m_pLoader = std::make_unique<QPluginLoader>(path);
    const QJsonObject metaData = m_pLoader->metaData();
    if (metaData.isEmpty()) {
        return Discard(QStringLiteral("%1 is not a Qt plug-in (%2)").arg(path, m_pLoader->errorString()));
    }
    const QString iid = metaData.value(QStringLiteral("IID")).toString();
    if (iid != QLatin1String(kInterfaceId)) {
        return Discard(
            QStringLiteral("the plug-in implements interface \"%1\", not \"%2\"").arg(iid, QLatin1String(kInterfaceId)));
    }
    const QString className = metaData.value(QStringLiteral("className")).toString();
    if (className != m_strClassName) {
        return Discard(QStringLiteral("the plug-in class is \"%1\", not \"%2\"").arg(className, m_strClassName));
    }

    QObject* instance = m_pLoader->instance();
    if (instance == nullptr) {
        return Discard(QStringLiteral("the plug-in could not be instantiated: %1").arg(m_pLoader->errorString()));
    }
    m_pInstance = instance;
    CPluginInterface* plugin = qobject_cast<CPluginInterface*>(instance);
    if (plugin == nullptr) {
        return UnloadAndDiscard(
            QStringLiteral("the plug-in object does not implement %1").arg(QLatin1String(kInterfaceId)));
    }
    if (!plugin->IsValid(&m_rHost)) {
        return UnloadAndDiscard(QStringLiteral("the plug-in refused this host (IsValid returned false)"));
    }
    m_uCompatibleApps = plugin->GetCompatibleApps();
    if ((m_uCompatibleApps & CReferenceHost::kHostApps) == 0) {
        return UnloadAndDiscard(QStringLiteral("the plug-in is for applications 0x%1, none of them this host (0x%2)")
                                    .arg(m_uCompatibleApps, 8, 16, QLatin1Char('0'))
                                    .arg(CReferenceHost::kHostApps, 8, 16, QLatin1Char('0')));
    }

    QString folder = info.absolutePath();
    if (!folder.endsWith(QLatin1Char('/'))) {
        folder += QLatin1Char('/');
    }
    m_pPlugin = plugin;
    m_bInitializeCalled = true;
    m_iInitializeResult = plugin->Initialize(folder, m_strSecondPath, &m_rHost);
    if (QV::Failed(m_iInitializeResult)) {
        m_kErrors << QStringLiteral("Initialize failed with %1").arg(Hex(m_iInitializeResult));
        const QV::Result initializeResult = m_iInitializeResult;
        Unload();
        m_bInitializeCalled = true;
        m_iInitializeResult = initializeResult;
        return initializeResult;
    }

    QList<QMenu*> menus;
    QList<QToolBar*> toolBars;
    QList<QAction*> context;
    const QV::Result menusResult = plugin->GetMenusList(menus);
    const QV::Result toolBarsResult = plugin->GetToolBarsList(toolBars);
    const QV::Result contextResult = plugin->GetContextList(context);
    for (const auto& [name, code] : {std::make_pair("GetMenusList", menusResult),
                                     std::make_pair("GetToolBarsList", toolBarsResult),
                                     std::make_pair("GetContextList", contextResult)}) {
        if (QV::Failed(code)) {
            m_kErrors << QStringLiteral("%1 failed with %2").arg(QLatin1String(name), Hex(code));
        }
    }
    QMainWindow* window = m_rHost.MainWindow();
    for (QMenu* menu : menus) {
        if (menu != nullptr) {
            window->menuBar()->addMenu(menu);
            m_kMenus << menu;
        }
    }
    for (QToolBar* toolBar : toolBars) {
        if (toolBar != nullptr) {
            window->addToolBar(toolBar);
            m_kToolBars << toolBar;
        }
    }
    for (QAction* action : context) {
        if (action != nullptr) {
            m_kContextActions << action;
        }
    }
    return QV::kOk;
}

QV::Result CPluginHost::Unload()
{
    if (!m_pLoader) {
        return QV::kNothingDone;
    }
    if (m_pPlugin != nullptr && m_pInstance) {
        m_iFinalizeResult = m_pPlugin->Finalize();
    }
    QMainWindow* window = m_rHost.MainWindow();
    for (const QPointer<QToolBar>& toolBar : m_kToolBars) {
        if (toolBar && window != nullptr) {
            window->removeToolBar(toolBar);
        }
    }
    for (const QPointer<QMenu>& menu : m_kMenus) {
        if (menu && window != nullptr) {
            window->menuBar()->removeAction(menu->menuAction());
        }
    }
    // The loader deletes the instance; the module stays mapped, so widgets the plug-in left
    // with the main window keep their code.
    m_pLoader->unload();
    m_pLoader.reset();
    // Tool bars were re-parented to the main window; they go with the plug-in that made them.
    for (const QPointer<QToolBar>& toolBar : m_kToolBars) {
        delete toolBar.data();
    }
    // A plug-in may have connected functors whose context is the sender itself; they would
    // outlive the plug-in.
    m_rHost.EventSender()->disconnect();
    m_rHost.FigmoraEventSender()->disconnect();
    m_pPlugin = nullptr;
    m_pInstance.clear();
    m_kMenus.clear();
    m_kToolBars.clear();
    m_kContextActions.clear();
    return QV::kOk;
}

QObject* CPluginHost::Instance() const
{
    return m_pInstance.data();
}

QList<QMenu*> CPluginHost::Menus() const
{
    return Living(m_kMenus);
}

QList<QToolBar*> CPluginHost::ToolBars() const
{
    return Living(m_kToolBars);
}

QList<QAction*> CPluginHost::ContextActions() const
{
    return Living(m_kContextActions);
}

QList<QAction*> CPluginHost::Actions() const
{
    QList<QAction*> actions;
    for (QMenu* menu : Menus()) {
        CollectMenuActions(menu, actions, 0);
    }
    for (QToolBar* toolBar : ToolBars()) {
        for (QAction* action : toolBar->actions()) {
            AppendOnce(actions, action);
        }
    }
    for (QAction* action : ContextActions()) {
        AppendOnce(actions, action);
    }
    return actions;
}

QAction* CPluginHost::FindAction(const QString& objectName) const
{
    if (objectName.isEmpty()) {
        return nullptr;
    }
    for (QAction* action : Actions()) {
        if (action->objectName() == objectName) {
            return action;
        }
    }
    return nullptr;
}

} // namespace Host
} // namespace MV

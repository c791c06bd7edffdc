#include "CGoZBrushPlugin.h"

#include "CBaseEvent.h"
#include "CBridgeInstaller.h"
#include "CEventSender.h"
#include "CMiravaInterface.h"
#include "ExpressionZBrushToFMDlg.h"
#include "FMToZBrushDlg.h"
#include "GoZPaths.h"
#include "Platform.h"
#include "ZBrushToFMDlg.h"

#include <QAction>
#include <QDebug>
#include <QDir>
#include <QMenu>
#include <QToolBar>

#include <new>

namespace MV {

namespace {

constexpr quint32 kCompatibleApps = 0x01800007;

// Object kinds accepted for sending: 1, 2, 3, 14 and 18.
constexpr quint32 kAcceptedKindMask = 0x4400E;
constexpr unsigned int kHighestKind = 18;

constexpr int kCharacterCode = 4;
const int kExpressionChildTypes[] = {49, 50, 35, 36};

bool IsAcceptedKind(unsigned int kind)
{
    return kind <= kHighestKind && ((kAcceptedKindMask >> kind) & 1U) != 0;
}

template <typename T>
QV::Result AppendGuarded(const QV::CArrayList<QPointer<T>>& from, QList<T*>& to)
{
    to.reserve(to.size() + from.GetCount());
    for (const QPointer<T>& entry : from) {
        to.append(entry.data()); // a destroyed entry is handed on as null, not skipped
    }
    return QV::kOk;
}

} // namespace

CGoZBrushPlugin::CGoZBrushPlugin() : QWidget(nullptr, Qt::WindowFlags()) {}

CGoZBrushPlugin::~CGoZBrushPlugin()
{
    for (const QMetaObject::Connection& connection : m_kSenderConnections) {
        QObject::disconnect(connection);
    }
    // Only the receive dialog is released here; the other two belong to the host's window.
    if (m_pReceiveDialog) {
        m_pReceiveDialog->deleteLater();
    }
}

QV::Result CGoZBrushPlugin::Initialize(const QString& pluginFolder, const QString& secondPath, CMiravaInterface* host)
{
    // Harmless first step kept from the host's plug-in template; the value is not used.
    (void)Platform::GetExecutablePath();

    QV::Result result = InitResource(pluginFolder, QStringLiteral("MVGoZBrush.rcc"), secondPath, host);
    if (QV::Failed(result)) {
        return result;
    }
    // Forms and texts are translated as they load: the translation must be there first.
    m_kTranslator.Install(host->Ui() != nullptr ? host->Ui()->GetLanguage() : QString());
    m_kWidgetBuilder.SetFormPath(QStringLiteral(":/plugin/MVGoZBrush/MVGoZPlugin.ui"));
    m_kWidgetBuilder.SetSecondPath(secondPath);
    result = m_kWidgetBuilder.InitToolbarAndMenuUi(&m_kUi, m_kToolBars, m_kMenus, host);
    if (QV::Failed(result)) {
        return result;
    }

    QWidget* mainWindow = host->Query()->GetMainWindow();
    m_pReceiveDialog = new (std::nothrow) ZBrushToFMDlg(mainWindow);
    if (!m_pReceiveDialog) {
        return QV::kOutOfMemory;
    }
    m_pReceiveDialog->Initialize(pluginFolder, secondPath, host);

    m_strPluginFolder = pluginFolder;

    m_pExpressionDialog = new (std::nothrow) ExpressionZBrushToFMDlg(mainWindow);
    if (!m_pExpressionDialog) {
        return QV::kOutOfMemory;
    }
    m_pExpressionDialog->Initialize(pluginFolder, secondPath, host);

    m_pSendDialog = new (std::nothrow) FMToZBrushDlg(mainWindow);
    if (!m_pSendDialog) {
        return QV::kOutOfMemory;
    }
    m_pSendDialog->Initialize(pluginFolder, secondPath, host);
    m_pSendDialog->SetReceiveDialog(m_pReceiveDialog);

    m_strPixologicRoot = GoZPaths::PixologicRoot();

    connect(m_kUi.qtGoZAction, &QAction::triggered, this, &CGoZBrushPlugin::CheckExportGozObject);
    connect(m_kUi.qtExpressionGoZAction, &QAction::triggered, this, &CGoZBrushPlugin::OnExpressionGoz);

    CEventSender* events = host->GetEventSender();
    if (events != nullptr) {
        connect(events, &CEventSender::ObjectSelectionChanged, this, &CGoZBrushPlugin::UpdateUi);
        connect(events, &CEventSender::ObjectDataChanged2, this, &CGoZBrushPlugin::OnObjectDataChanged2);
    } else {
        qWarning() << "The host has no event sender; the GoZ commands will not follow the selection";
    }
    CFigmoraEventSender* figmoraEvents = host->GetFigmoraEventSender();
    if (figmoraEvents != nullptr) {
        connect(figmoraEvents, &CFigmoraEventSender::ExpressionGoZBrushDialog, this,
                &CGoZBrushPlugin::OnExpressionGoz);
    }
    if (events != nullptr) {
        m_kSenderConnections.push_back(
            connect(events, &CEventSender::Played, events, [this]() { OnPlaybackChanged(); }, Qt::DirectConnection));
        m_kSenderConnections.push_back(
            connect(events, &CEventSender::Stopped, events, [this]() { OnPlaybackChanged(); }, Qt::DirectConnection));
    }
    host->Registry()->RegisterPluginValue(this, host->File()->GetPluginValue(this));
    if (events != nullptr) {
        m_kSenderConnections.push_back(connect(
            events, &CEventSender::RunAutoTestForPlugins, events,
            [this](const QString& pluginName) { RunSelfTest(pluginName); }, Qt::DirectConnection));
    }
    return QV::kOk;
}

QV::Result CGoZBrushPlugin::Finalize()
{
    m_kTranslator.Remove();
    return QV::kNothingDone;
}

QV::Result CGoZBrushPlugin::Activate()
{
    return QV::kNothingDone;
}

QV::Result CGoZBrushPlugin::Deactivate()
{
    return QV::kNothingDone;
}

QV::Result CGoZBrushPlugin::GetContextList(QList<QAction*>& actions)
{
    return AppendGuarded(m_kContextActions, actions);
}

QV::Result CGoZBrushPlugin::GetMenusList(QList<QMenu*>& menus)
{
    return AppendGuarded(m_kMenus, menus);
}

QV::Result CGoZBrushPlugin::GetToolBarsList(QList<QToolBar*>& toolBars)
{
    return AppendGuarded(m_kToolBars, toolBars);
}

bool CGoZBrushPlugin::IsValid(CMiravaInterface* host)
{
    if (host == nullptr || host->Plugins() == nullptr) {
        return false;
    }
    return host->Plugins()->IsPluginSupported();
}

quint32 CGoZBrushPlugin::GetCompatibleApps()
{
    return kCompatibleApps;
}

void CGoZBrushPlugin::SetActionsEnabled(bool goz, bool expression)
{
    m_kUi.qtGoZAction->setEnabled(goz);
    m_kUi.qtExpressionGoZAction->setEnabled(expression);
}

void CGoZBrushPlugin::OnPlaybackChanged()
{
    if (m_pHost->Query()->IsPlaying()) {
        SetActionsEnabled(false, false);
        return;
    }
    UpdateUi();
}

QV::Result CGoZBrushPlugin::UpdateUi()
{
    CQueryService* query = m_pHost->Query();
    QV::Result result = QV::kOk;
    QV::CArrayList<QV::CHandle*> selected;
    query->GetSelectedObjects(result, selected, 1);

    for (QV::CHandle* object : selected) {
        unsigned int kind = 0;
        QV::Result kindResult = QV::kOk;
        query->GetObjectKind(kindResult, object, kind);
        bool acceptable = IsAcceptedKind(kind);

        int type = 0;
        result = QV::kOk;
        query->GetAvatarType(result, object, type);
        if (QV::Failed(result)) {
            return result;
        }
        if (query->HasNodeType(object)) {
            if (type == kCharacterCode) {
                std::wstring tag;
                result = QV::kOk;
                m_pHost->Character()->GetCharacterTag(result, object, tag);
                if (QV::Failed(result)) {
                    return result;
                }
                acceptable = m_pHost->Avatar()->IsCharacterTagSupported(tag, kCharacterCode);
            } else if (type >= 1 && type <= 3) {
                acceptable = true;
            }
        }
        if (!acceptable) {
            SetActionsEnabled(false, false);
            return QV::kOk;
        }
    }

    QV::CHandle* avatar = m_pHost->Avatar()->GetCurrentAvatar();
    if (avatar != nullptr && query->IsExpressionEditing(avatar)) {
        SetActionsEnabled(false, true);
    } else {
        SetActionsEnabled(selected.GetCount() > 0, false);
    }
    return QV::kOk;
}

QV::Result CGoZBrushPlugin::CheckExportGozObject(bool expression)
{
    if (!m_pHost->Ui()->ReadyForCommand(0, 1)) {
        return QV::kOk;
    }
    QV::Result result = QV::kOk;
    QV::CArrayList<QV::CHandle*> selected;
    m_pHost->Query()->GetSelectedObjects(result, selected, 1);
    if (QV::Failed(result)) {
        return result;
    }
    for (QV::CHandle* object : selected) {
        int type = 0;
        QV::Result ignored = QV::kOk;
        m_pHost->Query()->GetAvatarType(ignored, object, type);
        if (type != kCharacterCode) {
            continue;
        }
        std::wstring tag;
        m_pHost->Character()->GetCharacterTag(ignored, object, tag);
        if (!m_pHost->Avatar()->IsCharacterTagSupported(tag, kCharacterCode)) {
            ShowWarning(tr("[MVGoZBursh] Unsupport Avatar"));
            return QV::kOk;
        }
    }
    result = CopyRequiredFilesBeforeSave();
    if (QV::Failed(result)) {
        return result;
    }
    if (!m_pSendDialog) {
        return QV::kFail;
    }
    m_pSendDialog->SetExpressionGoZ(expression);
    m_pSendDialog->exec();
    return QV::kOk;
}

void CGoZBrushPlugin::OnExpressionGoz()
{
    QV::CHandle* avatar = m_pHost->Avatar()->GetCurrentAvatar();
    if (avatar == nullptr) {
        return;
    }
    QV::CArrayList<QV::CHandle*> faceMeshes;
    for (int type : kExpressionChildTypes) {
        QV::Result ignored = QV::kOk;
        m_pHost->Query()->CollectChildObjects(ignored, avatar, type, 1, faceMeshes);
    }
    QV::Result ignored = QV::kOk;
    m_pHost->Ui()->SelectObjects(ignored, faceMeshes, 0, 1);
    CheckExportGozObject(true);
}

void CGoZBrushPlugin::OnObjectDataChanged2(CBaseEvent* event)
{
    static const CEditBlendShapeEvent kSample;
    if (event != nullptr && event->IsKindOf(kSample)) {
        UpdateUi();
    }
}

QV::Result CGoZBrushPlugin::CopyRequiredFilesBeforeSave()
{
    const CBridgeInstaller installer(m_strPixologicRoot, m_strPluginFolder);
    switch (installer.Install(QDir::currentPath())) {
    case CBridgeInstaller::EStatus::Installed:
        return QV::kOk;
    case CBridgeInstaller::EStatus::ZBrushMissing:
        ShowWarning(tr("[MVGoZBursh] Please install ZBrush"));
        break;
    case CBridgeInstaller::EStatus::CannotCreateFolder:
        ShowWarning(tr("[MVGoZBursh] Fail to create dir"));
        break;
    case CBridgeInstaller::EStatus::CopyFailed:
        ShowWarning(tr("[MVGoZBursh] Fail to copy necessary files"));
        break;
    }
    return QV::kFail;
}

void CGoZBrushPlugin::ShowWarning(const QString& text)
{
    m_pHost->Ui()->ShowMessageBox(text, QString(), nullptr, kMessageWarning, kMessageButtonOk, 0);
}

QV::Result CGoZBrushPlugin::RunSelfTest(const QString& pluginName)
{
    if (!pluginName.isEmpty() && pluginName != QLatin1String("MVGoZBrush")) {
        return QV::kNothingDone;
    }
    // The self-test checks that every form loaded whole; a missing widget is a broken build.
    const bool ok = m_pSendDialog && m_pSendDialog->IsFormComplete() && m_pReceiveDialog &&
                    m_pReceiveDialog->IsFormComplete() && m_pExpressionDialog && m_pExpressionDialog->IsFormComplete();
    qInfo().noquote() << "MVGoZBrush self-test:" << (ok ? "passed" : "failed");
    return ok ? QV::kOk : QV::kFail;
}

} // namespace MV

#include "CGuiSession.h"

#include "CGoZReturnChannel.h"
#include "CPluginHost.h"
#include "CReferenceHost.h"
#include "CSandbox.h"
#include "CScene.h"
#include "CStandInTracker.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTimer>

namespace MV {
namespace Host {

CGuiSession::CGuiSession(QObject* parent) : QObject(parent) {}

CGuiSession::~CGuiSession()
{
    Stop();
}

QV::Result CGuiSession::Prepare(const QByteArray& scene, QString& error)
{
    auto parsed = std::make_unique<CScene>();
    QString problem;
    if (QV::Failed(parsed->Parse(scene, problem))) {
        error = QStringLiteral("scene: ") + problem;
        return QV::kInvalidArg;
    }
    CZBrushReturn settings;
    const CSceneState& state = parsed->State();
    if (state.m_bZBrushReturns && !CZBrushReturn::FromJson(state.m_kZBrushReturn, settings, problem)) {
        error = QStringLiteral("scene: zbrush_return: ") + problem;
        return QV::kInvalidArg;
    }
    m_kZBrushSettings = settings;
    m_pScene = std::move(parsed);
    return QV::kOk;
}

QString CGuiSession::WorkFolder() const
{
    return m_pSandbox ? m_pSandbox->WorkFolder() : QString();
}

void CGuiSession::AddProblem(const QString& problem)
{
    m_kProblems << problem;
    emit ProblemAdded(problem);
}

// The same layout as a scripted run makes: the texture sizes the plug-in reads from the host
// data folder, copied from the plug-in folder unless the scene gives the file or none.
void CGuiSession::LayOutHostData(const QString& pluginPath)
{
    const CSceneState& state = m_pScene->State();
    QString folder = state.m_strHostDataFolder;
    folder.replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (folder.isEmpty() || QDir::isAbsolutePath(folder) ||
        folder.split(QLatin1Char('/')).contains(QStringLiteral(".."))) {
        return; // outside the sandbox: never written to
    }
    QByteArray bytes;
    switch (state.m_eTextureSizeFile) {
    case CSceneState::ETextureSizeFile::Missing:
        return;
    case CSceneState::ETextureSizeFile::Given:
        bytes = state.m_kTextureSizeFile;
        break;
    case CSceneState::ETextureSizeFile::FromPlugin: {
        QFile source(QFileInfo(pluginPath).absolutePath() + QStringLiteral("/GoZTextureSize.ini"));
        if (!source.open(QIODevice::ReadOnly)) {
            return;
        }
        bytes = source.readAll();
        break;
    }
    }
    const QString target = folder + QStringLiteral("/MVGoZBrush/GoZTextureSize.ini");
    QFile file(target);
    if (!QDir().mkpath(QFileInfo(target).absolutePath()) || !file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(bytes) != bytes.size()) {
        AddProblem(QStringLiteral("sandbox: cannot write %1").arg(target));
    }
}

QV::Result CGuiSession::Start(const CGuiOptions& options, QString& error)
{
    if (!m_pScene) {
        error = QStringLiteral("the session was not prepared (or started already)");
        return QV::kInvalidArg;
    }
    const CSceneState& state = m_pScene->State();
    m_pSandbox = std::make_unique<CSandbox>();
    m_pSandbox->SetWorkFolder(options.m_strWorkFolder);
    m_pSandbox->SetInstallZBrush(state.m_bZBrushInstalled);
    m_pSandbox->SetPixologicFolder(state.m_bPixologicFolder);
    m_pSandbox->SetCurrentDirectory(state.m_strCurrentDirectory);
    m_pSandbox->SetGoZAppFolder(state.m_eGoZAppFolder);
    m_pSandbox->SetToolsFolder(options.m_strToolsFolder);
    QString problem;
    if (QV::Failed(m_pSandbox->Create(problem))) {
        m_pSandbox.reset();
        error = QStringLiteral("sandbox: ") + problem;
        return QV::kFail;
    }
    m_strPublicFolder = QDir(m_pSandbox->CurrentDirectory()).absoluteFilePath(QLatin1String(CSandbox::kPublic));
    // The panel plays ZBrush's way back; the program the plug-in starts must not do it as well.
    m_pSandbox->SetEnvironment("MVGOZ_ZBRUSH_RETURN", QByteArray());

    // The socket and the running marks live outside the work folder: they are no file of the session.
    m_pPrivateFolder = std::make_unique<QTemporaryDir>(QDir::tempPath() + QStringLiteral("/mvgoz-gui-XXXXXX"));
    m_pTracker = std::make_unique<CStandInTracker>();
    m_pChannel = std::make_unique<CGoZReturnChannel>();
    if (!m_pPrivateFolder->isValid() || !m_pTracker->Start(m_pPrivateFolder->path(), problem) ||
        !m_pChannel->Listen(m_pPrivateFolder->path(), problem)) {
        AddProblem(QStringLiteral("return channel: ") +
                   (m_pPrivateFolder->isValid() ? problem : m_pPrivateFolder->errorString()));
    }
    // Raised from the event loop, not from inside the socket's read: the launcher gets its
    // answer first, and the plug-in's dialog does not run inside a socket handler.
    connect(m_pChannel.get(), &CGoZReturnChannel::NoticeReceived, this,
            [this] { QTimer::singleShot(0, this, &CGuiSession::RaisePendingNotices); });
    LayOutHostData(options.m_strPlugin);

    m_pHost = std::make_unique<CReferenceHost>(std::move(m_pScene));
    if (QV::Failed(m_pHost->WriteRegistryFile(m_pSandbox->RegistryFilePath(), problem))) {
        AddProblem(problem);
    }
    m_pPlugins = std::make_unique<CPluginHost>(*m_pHost);
    if (QV::Failed(m_pPlugins->Load(options.m_strPlugin))) {
        error = QStringLiteral("the plug-in %1 was not loaded: %2")
                    .arg(options.m_strPlugin, m_pPlugins->Errors().join(QStringLiteral("; ")));
        Stop();
        return QV::kFail;
    }
    for (const QString& message : m_pPlugins->Errors()) {
        AddProblem(message);
    }
    return QV::kOk;
}

void CGuiSession::RaisePendingNotices()
{
    // A notice that comes in while the plug-in handles one waits until it has returned.
    if (m_bRaising || !m_pChannel || !m_pHost) {
        return;
    }
    m_bRaising = true;
    while (m_pChannel && m_pChannel->HasPending() && m_pHost) {
        m_pChannel->TakeNext(-1);
        ++m_iRaised;
        m_pHost->RaiseGoZDataUpdated();
        emit GoZNoticeRaised();
    }
    m_bRaising = false;
}

void CGuiSession::Stop()
{
    if (m_pTracker) {
        // No stand-in may outlive the session; the socket keeps answering while they finish.
        const QStringList left = m_pTracker->WaitForAll(kStandInGraceMs);
        if (!left.isEmpty()) {
            const QStringList stopped = m_pTracker->Stop(left);
            AddProblem(QStringLiteral("%1 stand-in program(s) still ran %2 ms after the window closed; %3 stopped")
                           .arg(left.size())
                           .arg(kStandInGraceMs)
                           .arg(stopped.size()));
        }
    }
    if (m_pPlugins) {
        m_pPlugins->Unload();
        m_pPlugins.reset();
    }
    m_pHost.reset();
    m_pChannel.reset();
    m_pTracker.reset();
    m_pPrivateFolder.reset();
    m_pSandbox.reset(); // last: it restores the current directory and the environment
}

} // namespace Host
} // namespace MV

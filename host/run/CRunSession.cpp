#include "CRunSession.h"

#include "CDebugLogRecorder.h"
#include "CGoZReturnChannel.h"
#include "CPluginHost.h"
#include "CReferenceHost.h"
#include "CReport.h"
#include "CSandbox.h"
#include "CScene.h"
#include "CScriptRunner.h"
#include "CStandInTracker.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QTemporaryDir>

namespace MV {
namespace Host {

CRunSession::CRunSession() = default;
CRunSession::~CRunSession() = default;

QV::Result CRunSession::Prepare(const QByteArray& scene, const QByteArray& script, QString& error)
{
    auto parsed = std::make_unique<CScene>();
    QString problem;
    if (QV::Failed(parsed->Parse(scene, problem))) {
        error = QStringLiteral("scene: ") + problem;
        return QV::kInvalidArg;
    }
    if (QV::Failed(m_kScript.Parse(script, problem))) {
        error = QStringLiteral("script: ") + problem;
        return QV::kInvalidArg;
    }
    m_pScene = std::move(parsed);
    return QV::kOk;
}

namespace {

// How long the run waits, once the script is over, for the stand-ins to finish on their own.
// Below the program's last-resort margin, so a stuck stand-in cannot outlast it.
constexpr int kStandInGraceMs = 8000;

// The texture sizes the plug-in reads from the host data folder, laid out as the host's
// installer would: copied from the plug-in folder, unless the scene gives the file or none.
void LayOutHostData(const CSceneState& state, const QString& pluginPath, CReport& report)
{
    QString folder = state.m_strHostDataFolder;
    folder.replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (folder.isEmpty() || QDir::isAbsolutePath(folder) ||
        folder.split(QLatin1Char('/')).contains(QStringLiteral(".."))) {
        return; // outside the sandbox: never written to
    }
    const QString target = folder + QStringLiteral("/MVGoZBrush/GoZTextureSize.ini");
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
            return; // a plug-in without the file ships none
        }
        bytes = source.readAll();
        break;
    }
    }
    QFile file(target);
    if (!QDir().mkpath(QFileInfo(target).absolutePath()) || !file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(bytes) != bytes.size()) {
        report.AddRunError(QStringLiteral("sandbox: cannot write %1").arg(target));
    }
}

} // namespace

QV::Result CRunSession::Execute(const CRunOptions& options, CReport& report)
{
    if (!m_pScene) {
        report.SetPluginError(options.m_strPlugin, QStringLiteral("the run was not prepared (or ran already)"));
        return QV::kFail;
    }
    const CSceneState& state = m_pScene->State();
    CSandbox sandbox;
    sandbox.SetWorkFolder(options.m_strWorkFolder);
    sandbox.SetInstallZBrush(options.m_bInstallZBrush && state.m_bZBrushInstalled);
    sandbox.SetPixologicFolder(state.m_bPixologicFolder);
    sandbox.SetCurrentDirectory(state.m_strCurrentDirectory);
    sandbox.SetGoZAppFolder(state.m_eGoZAppFolder);
    sandbox.SetToolsFolder(options.m_strToolsFolder);
    QString error;
    if (QV::Failed(sandbox.Create(error))) {
        report.SetPluginError(options.m_strPlugin, QStringLiteral("not loaded: no sandbox"));
        report.AddRunError(QStringLiteral("sandbox: ") + error);
        return QV::kFail;
    }
    // The socket and the running marks live outside the work folder: they are no file of the run.
    QTemporaryDir privateFolder(QDir::tempPath() + QStringLiteral("/mvgoz-run-XXXXXX"));
    CStandInTracker tracker;
    CGoZReturnChannel channel;
    if (!privateFolder.isValid() || !tracker.Start(privateFolder.path(), error) ||
        !channel.Listen(privateFolder.path(), error)) {
        report.AddRunError(QStringLiteral("return channel: ") +
                           (privateFolder.isValid() ? error : privateFolder.errorString()));
    }
    // What the ZBrush stand-in does with a send; no file: it sends nothing back.
    const QString returnFile = sandbox.WorkFolder() + QStringLiteral("/zbrush-return.json");
    sandbox.SetEnvironment("MVGOZ_ZBRUSH_RETURN", QFile::encodeName(returnFile));
    if (state.m_bZBrushReturns) {
        QFile file(returnFile);
        const QByteArray bytes = QJsonDocument(state.m_kZBrushReturn).toJson(QJsonDocument::Indented);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
            report.AddRunError(QStringLiteral("sandbox: cannot write %1").arg(returnFile));
        }
    }
    LayOutHostData(state, options.m_strPlugin, report);
    if (!options.m_strLanguage.isEmpty()) {
        m_pScene->State().m_strLanguage = options.m_strLanguage;
    }

    CReferenceHost host(std::move(m_pScene));
    const CDebugLogRecorder debugLog([&host] { return host.CurrentStep(); });
    // The platform layer reads the registry stand-in from here (MVGOZ_REGISTRY_FILE, set by the sandbox).
    if (QV::Failed(host.WriteRegistryFile(sandbox.RegistryFilePath(), error))) {
        report.AddRunError(error);
    }
    {
        CPluginHost plugins(host);
        if (!options.m_strClassName.isEmpty()) {
            plugins.SetExpectedClassName(options.m_strClassName);
        }
        plugins.Load(options.m_strPlugin);
        report.SetPlugin(plugins);
        if (plugins.IsLoaded()) {
            CScriptRunner runner(host, plugins, report);
            runner.SetProcessLogPath(sandbox.ProcessLogPath());
            runner.SetWatchdogMs(options.m_iWatchdogMs);
            runner.SetReturnChannel(&channel);
            runner.SetZBrushReturnFile(returnFile);
            runner.Run(m_kScript);
        }
        // No stand-in may outlive the run; the socket keeps answering while they finish.
        const QStringList left = tracker.WaitForAll(kStandInGraceMs);
        if (!left.isEmpty()) {
            const QStringList stopped = tracker.Stop(left);
            report.AddRunError(QStringLiteral("%1 stand-in program(s) still ran %2 ms after the script ended; "
                                              "%3 stopped")
                                   .arg(left.size())
                                   .arg(kStandInGraceMs)
                                   .arg(stopped.size()));
        }
        if (plugins.IsLoaded()) {
            plugins.Unload();
            report.SetFinalizeResult(plugins.FinalizeResult());
        }
    }
    report.CaptureHost(host);
    // The process log is in the report as "processes", in start order; its raw lines are in finishing order.
    report.CaptureFiles(sandbox.WorkFolder(), {QFileInfo(sandbox.ProcessLogPath()).fileName()});
    report.CaptureProcesses(sandbox.ProcessLogPath());
    report.SetGoZReturns(channel.ToJson());
    report.SetDebugLog(debugLog.ToJson());
    return report.Succeeded() ? QV::kOk : QV::kFail;
}

} // namespace Host
} // namespace MV

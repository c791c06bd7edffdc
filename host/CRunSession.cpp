#include "CRunSession.h"

#include "CPluginHost.h"
#include "CReferenceHost.h"
#include "CReport.h"
#include "CSandbox.h"
#include "CScene.h"
#include "CScriptRunner.h"

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

QV::Result CRunSession::Execute(const CRunOptions& options, CReport& report)
{
    if (!m_pScene) {
        report.SetPluginError(options.m_strPlugin, QStringLiteral("the run was not prepared (or ran already)"));
        return QV::kFail;
    }
    CSandbox sandbox;
    sandbox.SetWorkFolder(options.m_strWorkFolder);
    sandbox.SetInstallZBrush(options.m_bInstallZBrush);
    sandbox.SetToolsFolder(options.m_strToolsFolder);
    QString error;
    if (QV::Failed(sandbox.Create(error))) {
        report.SetPluginError(options.m_strPlugin, QStringLiteral("not loaded: no sandbox"));
        report.AddRunError(QStringLiteral("sandbox: ") + error);
        return QV::kFail;
    }

    CReferenceHost host(std::move(m_pScene));
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
            runner.Run(m_kScript);
            plugins.Unload();
            report.SetFinalizeResult(plugins.FinalizeResult());
        }
    }
    report.CaptureHost(host);
    report.CaptureFiles(sandbox.WorkFolder());
    report.CaptureProcesses(sandbox.ProcessLogPath());
    return report.Succeeded() ? QV::kOk : QV::kFail;
}

} // namespace Host
} // namespace MV

#include "CBackstopWatchdog.h"
#include "CCommandLine.h"
#include "CDemoNarrator.h"
#include "CGuiSession.h"
#include "CHostWindow.h"
#include "CPrivateRuntimeFolder.h"
#include "CReport.h"
#include "CRunSession.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFont>
#include <QTextStream>

#include <limits>
#include <memory>

using namespace MV::Host;

namespace {

// The script's own watchdog normally ends a stuck run; this one only fires when the
// user-interface thread never returns to an event loop.
constexpr int kBackstopGraceMs = 15000;

bool ReadFile(const QString& path, QByteArray& bytes, QString& error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return false;
    }
    bytes = file.readAll();
    return true;
}

int Fail(const QString& message, int code)
{
    QTextStream(stderr) << "mvgoz-host: " << message << '\n';
    return code;
}

int Run(const CHostCommand& command)
{
    QByteArray scene;
    QByteArray script;
    QString error;
    if (command.m_eKind == CHostCommand::EKind::Demo) {
        if (!ReadFile(QStringLiteral(":/mvgoz-host/demo/scene.json"), scene, error) ||
            !ReadFile(QStringLiteral(":/mvgoz-host/demo/script.json"), script, error)) {
            return Fail(error, CCommandLine::kExitFailed);
        }
    } else if (!ReadFile(command.m_strScene, scene, error) || !ReadFile(command.m_strScript, script, error)) {
        return Fail(error, CCommandLine::kExitBadArguments);
    }
    if (!command.m_strReport.isEmpty() && !QFileInfo(command.m_strReport).absoluteDir().exists()) {
        return Fail(QStringLiteral("the folder of the report %1 does not exist").arg(command.m_strReport),
                    CCommandLine::kExitBadArguments);
    }
    CRunSession session;
    if (QV::Failed(session.Prepare(scene, script, error))) {
        return Fail(error, CCommandLine::kExitBadArguments);
    }
    CRunOptions options;
    options.m_strPlugin = command.m_strPlugin;
    options.m_strWorkFolder = command.m_strWorkFolder;
    options.m_bInstallZBrush = !command.m_bNoZBrush;
    options.m_strLanguage = command.m_strLanguage;

    CReport report;
    QV::Result result = QV::kOk;
    {
        // Saturated: a watchdog near the int range must not wrap into an instant backstop.
        const int backstopMs = session.WatchdogMs() > std::numeric_limits<int>::max() - kBackstopGraceMs
                                   ? std::numeric_limits<int>::max()
                                   : session.WatchdogMs() + kBackstopGraceMs;
        const CBackstopWatchdog backstop(backstopMs,
                                         "mvgoz-host: the run is stuck outside any event loop; giving up",
                                         CCommandLine::kExitFailed);
        result = session.Execute(options, report);
    }
    if (!command.m_strReport.isEmpty() && QV::Failed(report.Save(command.m_strReport, error))) {
        return Fail(error, CCommandLine::kExitFailed);
    }
    if (command.m_eKind == CHostCommand::EKind::Demo) {
        QTextStream(stdout) << CDemoNarrator::Narrate(report.ToJson());
    } else if (QV::Failed(result)) {
        QTextStream err(stderr);
        for (const QString& problem : report.Problems()) {
            err << "mvgoz-host: " << problem << '\n';
        }
        err << "mvgoz-host: the run failed; see " << command.m_strReport << '\n';
    }
    return QV::Succeeded(result) ? CCommandLine::kExitOk : CCommandLine::kExitFailed;
}

// The host as a window over the scene, until the user closes it.
int Gui(const CHostCommand& command)
{
    QByteArray scene = CHostWindow::DefaultScene();
    QString sceneName = CHostWindow::DefaultSceneName();
    QString error;
    if (!command.m_strScene.isEmpty()) {
        if (!ReadFile(command.m_strScene, scene, error)) {
            return Fail(error, CCommandLine::kExitBadArguments);
        }
        sceneName = QFileInfo(command.m_strScene).fileName();
    }
    CGuiSession session;
    if (QV::Failed(session.Prepare(scene, error))) {
        return Fail(error, CCommandLine::kExitBadArguments);
    }
    CGuiOptions options;
    options.m_strPlugin = command.m_strPlugin.isEmpty()
                              ? CCommandLine::DefaultPluginPath(QCoreApplication::applicationDirPath())
                              : command.m_strPlugin;
    options.m_strWorkFolder = command.m_strWorkFolder;
    if (QV::Failed(session.Start(options, error))) {
        return Fail(error, CCommandLine::kExitFailed);
    }
    int code = 0;
    {
        CHostWindow window(session);
        window.SetSceneName(sceneName);
        window.Show();
        code = QApplication::exec();
    }
    session.Stop();
    for (const QString& problem : session.Problems()) {
        QTextStream(stderr) << "mvgoz-host: " << problem << '\n';
    }
    return code == 0 ? CCommandLine::kExitOk : CCommandLine::kExitFailed;
}

} // namespace

int main(int argc, char** argv)
{
    // Headless by default: only gui shows the host's window.
    const bool gui = argc > 1 && qstrcmp(argv[1], "gui") == 0;
    if (gui && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY") &&
        qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        return Fail(QStringLiteral("gui needs a display: set DISPLAY (or run it under xvfb-run -a)"),
                    CCommandLine::kExitBadArguments);
    }
    if (!gui && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    // Qt would take "--plugin" as its own option: the application sees only the program name.
    QStringList args;
    for (int i = 1; i < argc; ++i) {
        args << QString::fromLocal8Bit(argv[i]);
    }
    int qtArgc = 1;
    const MV::CPrivateRuntimeFolder runtime; // outlives the application
    QApplication app(qtArgc, argv);
    QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 9));
    Q_INIT_RESOURCE(demo);

    CHostCommand command;
    QString error;
    if (QV::Failed(CCommandLine::Parse(args, command, error))) {
        QTextStream(stderr) << "mvgoz-host: " << error << "\n\n" << CCommandLine::Usage();
        return CCommandLine::kExitBadArguments;
    }
    if (command.m_eKind == CHostCommand::EKind::Help) {
        QTextStream(stdout) << CCommandLine::Usage();
        return CCommandLine::kExitOk;
    }
    return command.m_eKind == CHostCommand::EKind::Gui ? Gui(command) : Run(command);
}

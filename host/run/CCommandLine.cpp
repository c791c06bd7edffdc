#include "CCommandLine.h"

#include "CScene.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

namespace MV {
namespace Host {

QString CCommandLine::Usage()
{
    return QStringLiteral(
        "usage:\n"
        "  mvgoz-host run --plugin MODULE --scene SCENE.json --script SCRIPT.json --report REPORT.json\n"
        "                 [--workdir FOLDER] [--no-zbrush] [--language CODE]\n"
        "  mvgoz-host demo --plugin MODULE [--report REPORT.json] [--workdir FOLDER] [--language CODE]\n"
        "  mvgoz-host gui [--scene SCENE.json] [--plugin MODULE] [--workdir FOLDER]\n"
        "  mvgoz-host help\n"
        "\n"
        "run   loads the plug-in module into the reference host, runs the script against the\n"
        "      scene inside a sandbox folder and writes a JSON report. Exit code 0 when every\n"
        "      step succeeded, 1 when something failed, 2 for bad arguments or input files.\n"
        "demo  runs the built-in demonstration and tells what happened.\n"
        "gui   opens the reference host as a window over the scene (default: its own scene with\n"
        "      meshes), with the plug-in loaded (default: ../plugin-folder/MVGoZBrush.so beside\n"
        "      the program's folder) and a ZBrush panel that sends sculpted meshes back.\n"
        "\n"
        "--workdir   use (and keep) this sandbox folder instead of a temporary one\n"
        "--no-zbrush leave the ZBrush stand-ins out of the sandbox\n"
        "--language  the host's language (\"en\"), over the scene's; the plug-in loads its translation\n");
}

QV::Result CCommandLine::Parse(const QStringList& args, CHostCommand& command, QString& error)
{
    command = CHostCommand();
    if (args.isEmpty()) {
        error = QStringLiteral("no command given");
        return QV::kInvalidArg;
    }
    const QString verb = args.first();
    if (verb == QLatin1String("help") || verb == QLatin1String("--help") || verb == QLatin1String("-h")) {
        command.m_eKind = CHostCommand::EKind::Help;
        return QV::kOk;
    }
    QStringList valueOptions;
    if (verb == QLatin1String("run")) {
        command.m_eKind = CHostCommand::EKind::Run;
        valueOptions = QStringList{QStringLiteral("--plugin"), QStringLiteral("--scene"), QStringLiteral("--script"),
                                   QStringLiteral("--report"), QStringLiteral("--workdir"), QStringLiteral("--language")};
    } else if (verb == QLatin1String("demo")) {
        command.m_eKind = CHostCommand::EKind::Demo;
        valueOptions = QStringList{QStringLiteral("--plugin"), QStringLiteral("--report"), QStringLiteral("--workdir"),
                                   QStringLiteral("--language")};
    } else if (verb == QLatin1String("gui")) {
        command.m_eKind = CHostCommand::EKind::Gui;
        valueOptions = QStringList{QStringLiteral("--plugin"), QStringLiteral("--scene"), QStringLiteral("--workdir")};
    } else {
        error = QStringLiteral("unknown command \"%1\"").arg(verb);
        return QV::kInvalidArg;
    }

    QSet<QString> seen;
    for (int i = 1; i < args.size(); ++i) {
        const QString option = args.at(i);
        if (seen.contains(option)) {
            error = QStringLiteral("%1 is given twice").arg(option);
            return QV::kInvalidArg;
        }
        seen.insert(option);
        if (option == QLatin1String("--no-zbrush") && command.m_eKind == CHostCommand::EKind::Run) {
            command.m_bNoZBrush = true;
            continue;
        }
        if (!valueOptions.contains(option)) {
            error = QStringLiteral("unknown option \"%1\" for %2").arg(option, verb);
            return QV::kInvalidArg;
        }
        if (i + 1 >= args.size() || args.at(i + 1).isEmpty() || args.at(i + 1).startsWith(QLatin1String("--"))) {
            error = QStringLiteral("%1 needs a value").arg(option);
            return QV::kInvalidArg;
        }
        if (option == QLatin1String("--language")) {
            command.m_strLanguage = args.at(++i);
            if (!CScene::IsLanguageCode(command.m_strLanguage)) {
                error = QStringLiteral("--language needs a language code such as \"en\" or \"pt_BR\"");
                return QV::kInvalidArg;
            }
            continue;
        }
        // The run changes into its sandbox folder: relative paths must be resolved now.
        const QString value = QFileInfo(args.at(++i)).absoluteFilePath();
        if (option == QLatin1String("--plugin")) {
            command.m_strPlugin = value;
        } else if (option == QLatin1String("--scene")) {
            command.m_strScene = value;
        } else if (option == QLatin1String("--script")) {
            command.m_strScript = value;
        } else if (option == QLatin1String("--report")) {
            command.m_strReport = value;
        } else {
            command.m_strWorkFolder = value;
        }
    }
    QStringList missing;
    if (command.m_strPlugin.isEmpty() && command.m_eKind != CHostCommand::EKind::Gui) {
        missing << QStringLiteral("--plugin");
    }
    if (command.m_eKind == CHostCommand::EKind::Run) {
        if (command.m_strScene.isEmpty()) {
            missing << QStringLiteral("--scene");
        }
        if (command.m_strScript.isEmpty()) {
            missing << QStringLiteral("--script");
        }
        if (command.m_strReport.isEmpty()) {
            missing << QStringLiteral("--report");
        }
    }
    if (!missing.isEmpty()) {
        error = QStringLiteral("%1 needs %2").arg(verb, missing.join(QStringLiteral(", ")));
        return QV::kInvalidArg;
    }
    return QV::kOk;
}

QString CCommandLine::DefaultPluginPath(const QString& programFolder)
{
    return QDir::cleanPath(programFolder + QStringLiteral("/../plugin-folder/MVGoZBrush.so"));
}

} // namespace Host
} // namespace MV

// A run: the sandbox it works in, the stand-in programs' process log, the report and the program
// that writes it.
#include "CReport.h"
#include "CRunSession.h"
#include "HostTestSupport.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace MV::Host;

namespace {

void WriteBytes(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

TEST(hostReport, ListsFilesAsTextBase64OrANoteAndKeepsUnreadableProcessLines)
{
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    const struct { const char* m_szPath; QByteArray m_kBytes; const char* m_szKey; QJsonValue m_kValue; } cases[] = { // listing order
        {"a/text.txt", QByteArray("PATH = \"C:\\Figmora.exe\"\r\n"), "text", QStringLiteral("PATH = \"C:\\Figmora.exe\"\r\n")},
        {"a/utf8.txt", QByteArray("Ünï"), "text", QStringLiteral("Ünï")},
        {"b/latin1.txt", QByteArray("\xe9t\xe9"), "base64", QStringLiteral("6XTp")},
        {"b/nul.bin", QByteArray("a\0b", 3), "base64", QStringLiteral("YQBi")},
        {"c/big.txt", QByteArray(static_cast<int>(CReport::kMaxInlineBytes), 'x'), "note", QStringLiteral("not included: 65536 bytes")},
        {"empty.txt", QByteArray(), "text", QString()},
    };
    for (const auto& item : cases) {
        WriteBytes(folder.filePath(QString::fromLatin1(item.m_szPath)), item.m_kBytes);
    }
    const QJsonArray files = CReport::FilesToJson(folder.path());
    ASSERT_EQ(6, files.size());
    for (int i = 0; i < files.size(); ++i) {
        const QJsonObject entry = files.at(i).toObject();
        SCOPED_TRACE(cases[i].m_szPath);
        EXPECT_EQ(QString::fromLatin1(cases[i].m_szPath), entry.value(QStringLiteral("path")).toString());
        EXPECT_EQ(cases[i].m_kBytes.size(), entry.value(QStringLiteral("size")).toInt());
        EXPECT_EQ(cases[i].m_kValue, entry.value(QString::fromLatin1(cases[i].m_szKey)));
        EXPECT_EQ(3, entry.size()) << "exactly one of text, base64 and note";
    }

    const QString log = folder.filePath(QStringLiteral("processes.jsonl"));
    WriteBytes(log, "{\"program\":\"A.exe\",\"args\":[]}\n\n{broken\n[1]\n{\"program\":\"B.exe\"}");
    EXPECT_EQ(QJsonDocument::fromJson(R"([{"program": "A.exe", "args": []}, {"invalid_line": "{broken"},
                                          {"invalid_line": "[1]"}, {"program": "B.exe"}])").array(),
              CReport::ProcessesToJson(log));
    EXPECT_TRUE(CReport::ProcessesToJson(folder.filePath(QStringLiteral("missing.jsonl"))).isEmpty());
}

TEST(hostReport, SucceedsOnlyWithThePluginLoadedAndNoFailure)
{
    CReport unloaded;
    unloaded.SetPluginError(QStringLiteral("/x.so"), QStringLiteral("no"));
    EXPECT_FALSE(unloaded.ToJson().value(QStringLiteral("ok")).toBool(true));
    MV::Host::Test::CHostRun run;
    ASSERT_TRUE(run.Load());
    run.m_kReport.SetStep(0, QJsonObject{{"status", "skipped"}});
    EXPECT_TRUE(run.m_kReport.Succeeded());
    run.m_kReport.SetStep(1, QJsonObject{{"status", "failed"}});
    EXPECT_FALSE(run.m_kReport.Succeeded());
    CReport withError;
    withError.SetPlugin(*run.m_pPlugins);
    withError.AddRunError(QStringLiteral("boom"));
    EXPECT_FALSE(withError.Succeeded());
}

TEST(hostReport, ARunSessionReportsWhatTheCallLogAndTheProcessLogSaw)
{
    // What a run reports of the plug-in, its actions, dialogs and files is checked with the real plug-in.
    CRunSession session;
    QString error;
    ASSERT_EQ(QV::kOk, session.Prepare(MV::Host::Test::kBasicScene, R"({"steps": [
        {"step": "select", "ids": ["box"]}, {"step": "trigger", "action": "fakeCallAction"},
        {"step": "trigger", "action": "fakeStartAction"}, {"step": "wait_processes", "count": 1, "timeout_ms": 30000}
    ]})", error)) << error.toStdString();
    CRunOptions options;
    options.m_strPlugin = QStringLiteral(MVGOZ_FAKE_PLUGIN);
    options.m_strClassName = QStringLiteral("CFakePlugin");
    CReport report;
    const QString before = QDir::currentPath();
    EXPECT_EQ(QV::kOk, session.Execute(options, report));
    EXPECT_EQ(before, QDir::currentPath()) << "the sandbox must be left";
    const QJsonObject json = report.ToJson();
    EXPECT_TRUE(json.value(QStringLiteral("ok")).toBool());
    const QJsonArray calls = json.value(QStringLiteral("call_log")).toArray();
    EXPECT_FALSE(calls.first().toObject().contains(QStringLiteral("step"))) << "loading runs before any step";
    QJsonObject exportCall;
    for (const QJsonValue& call : calls) {
        exportCall = call.toObject().value(QStringLiteral("operation")).toString() == QLatin1String("ExportGoZ") ? call.toObject() : exportCall;
    }
    EXPECT_EQ(1, exportCall.value(QStringLiteral("step")).toInt(-1));
    EXPECT_EQ(QJsonDocument::fromJson(R"([{"path": "C:/Users/Public/Pixologic/GoZProjects/Default/Box.goz", "replaced": false}])").array(),
              exportCall.value(QStringLiteral("wrote")).toArray());
    // The stand-in program the plug-in started ran in the sandbox and logged its run there.
    const QJsonArray processes = json.value(QStringLiteral("processes")).toArray();
    ASSERT_EQ(1, processes.size());
    EXPECT_EQ(QJsonArray({QStringLiteral("--fake")}), processes.first().toObject().value(QStringLiteral("args")).toArray());
    const QJsonObject wait = json.value(QStringLiteral("steps")).toArray().last().toObject();
    EXPECT_EQ(1, wait.value(QStringLiteral("detail")).toObject().value(QStringLiteral("found")).toInt());

    // A run without the plug-in (the default class name is not the fake's) still reports, once.
    CRunSession refused;
    ASSERT_EQ(QV::kOk, refused.Prepare("{}", R"({"steps": [{"step": "clear_log"}]})", error));
    options.m_strClassName.clear();
    CReport refusedReport;
    EXPECT_EQ(QV::kFail, refused.Execute(options, refusedReport));
    EXPECT_FALSE(refusedReport.ToJson().value(QStringLiteral("plugin")).toObject().value(QStringLiteral("loaded")).toBool(true));
    EXPECT_TRUE(refusedReport.ToJson().value(QStringLiteral("steps")).toArray().isEmpty());
    EXPECT_EQ(QV::kFail, refused.Execute(options, refusedReport)) << "a session runs once";
}

TEST(hostReport, TheProgramRejectsBadInputWithExitCodeTwo)
{
    QTemporaryDir folder;
    const QString dir = folder.path() + QLatin1Char('/');
    WriteBytes(dir + QStringLiteral("bad.json"), "{\"objects\": [{\"id\": 1}]}");
    WriteBytes(dir + QStringLiteral("empty.json"), "{}");
    WriteBytes(dir + QStringLiteral("script.json"), "{\"steps\": []}");
    const auto run = [&dir](const char* plugin, const char* scene, const char* report) {
        return QStringList{"run", "--plugin", dir + QLatin1String(plugin), "--scene", dir + QLatin1String(scene), "--script",
                           dir + QStringLiteral("script.json"), "--report", dir + QLatin1String(report)};
    };
    const struct { QStringList m_kArgs; int m_iExit; const char* m_szMessage; } cases[] = {
        {{"fly"}, 2, "unknown command \"fly\""},
        {run("p.so", "bad.json", "r.json"), 2, "scene: objects[0]: \"id\" must be a non-empty string"},
        {run("p.so", "none.json", "r.json"), 2, "cannot read"},
        {run("p.so", "empty.json", "no/r.json"), 2, "the folder of the report"},
        {run("none.so", "empty.json", "r2.json"), 1, "plug-in not loaded: no plug-in file at"},
        {{"help"}, 0, ""},
    };
    for (const auto& item : cases) {
        SCOPED_TRACE(item.m_kArgs.join(QLatin1Char(' ')).toStdString());
        QProcess process;
        process.start(QStringLiteral(MVGOZ_HOST_PROGRAM), item.m_kArgs);
        ASSERT_TRUE(process.waitForFinished(60000));
        EXPECT_EQ(QProcess::NormalExit, process.exitStatus());
        EXPECT_EQ(item.m_iExit, process.exitCode());
        EXPECT_TRUE(QString::fromUtf8(process.readAllStandardError()).contains(QString::fromUtf8(item.m_szMessage)));
    }
    EXPECT_FALSE(QFileInfo::exists(dir + QStringLiteral("r.json"))) << "no report for a run that never started";
    EXPECT_TRUE(QFileInfo::exists(dir + QStringLiteral("r2.json"))) << "a refused plug-in still gets its report";
}

TEST(hostSandbox, LaysOutTheWindowsFoldersAndRestoresTheProcessAfterwards)
{
    // That the stand-ins are installed and run is checked by every run that starts one.
    const QString before = QDir::currentPath();
    qputenv("PUBLIC", "outer");
    qunsetenv("public");
    QString work;
    {
        CSandbox sandbox;
        QString error;
        ASSERT_EQ(QV::kOk, sandbox.Create(error)) << error.toStdString();
        work = sandbox.WorkFolder();
        EXPECT_EQ(QDir(work).canonicalPath(), QDir::current().canonicalPath());
        EXPECT_EQ(QByteArray("C:/Users/Public"), qgetenv("PUBLIC"));
        EXPECT_EQ(QByteArray("C:/Users/Public"), qgetenv("public"));
        EXPECT_EQ(sandbox.ProcessLogPath().toLocal8Bit(), qgetenv("MVGOZ_PROCESS_LOG"));
        EXPECT_EQ(sandbox.RegistryFilePath().toLocal8Bit(), qgetenv("MVGOZ_REGISTRY_FILE"));
    }
    EXPECT_EQ(before, QDir::currentPath());
    EXPECT_EQ(QByteArray("outer"), qgetenv("PUBLIC"));
    EXPECT_FALSE(qEnvironmentVariableIsSet("public"));
    EXPECT_FALSE(QFileInfo::exists(work)) << "a temporary sandbox is removed";
    qunsetenv("PUBLIC");
}

TEST(hostSandbox, CanLeaveZBrushOutKeepsAGivenFolderAndFailsWithoutStandIns)
{
    QTemporaryDir parent;
    ASSERT_TRUE(parent.isValid());
    const QString folder = parent.path() + QStringLiteral("/work");
    QString error;
    {
        CSandbox sandbox;
        sandbox.SetWorkFolder(folder);
        sandbox.SetInstallZBrush(false);
        ASSERT_EQ(QV::kOk, sandbox.Create(error)) << error.toStdString();
        EXPECT_TRUE(QFileInfo(QStringLiteral("C:/Users/Public/Pixologic")).isDir());
        EXPECT_FALSE(QFileInfo::exists(QStringLiteral("C:/Users/Public/Pixologic/GoZBrush")));
        EXPECT_EQ(QV::kFail, sandbox.Create(error));
    }
    EXPECT_TRUE(QFileInfo(folder + QStringLiteral("/C:/Users/Public/Pixologic")).isDir());

    const QString before = QDir::currentPath();
    CSandbox sandbox;
    sandbox.SetToolsFolder(parent.path());
    EXPECT_EQ(QV::kFail, sandbox.Create(error));
    EXPECT_TRUE(error.contains(QStringLiteral("stand-in program not found"))) << error.toStdString();
    EXPECT_FALSE(sandbox.IsActive());
    EXPECT_EQ(before, QDir::currentPath());
    EXPECT_FALSE(qEnvironmentVariableIsSet("MVGOZ_PROCESS_LOG"));
}

// The stand-in programs log each run: arguments, folder, and the object list the info file names.
TEST(hostStandIn, RecordsItsRunAndTheObjectListTheInfoFileNames)
{
    QTemporaryDir folder;
    const QString apps = folder.filePath(QStringLiteral("pub/Pixologic/GoZApps/Figmora/"));
    const QString log = folder.filePath(QStringLiteral("log.jsonl"));
    ASSERT_TRUE(QDir().mkpath(apps));
    const auto write = [&apps](const char* name, const QByteArray& bytes) {
        QFile file(apps + QLatin1String(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size()) << name;
    };
    // Runs a stand-in and reads back its process log (beside the program when no log is set).
    const auto start = [&](const QString& program, const QStringList& args, bool withLog) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"PUBLIC", "public", "MVGOZ_PROCESS_LOG"}) {
            environment.remove(QLatin1String(name));
        }
        // Mixed case on purpose: the lookup ignores case, as on the system these stand in for.
        environment.insert(QStringLiteral("Public"), folder.filePath(QStringLiteral("pub")));
        if (withLog) {
            environment.insert(QStringLiteral("MVGOZ_PROCESS_LOG"), log);
        }
        QProcess process;
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(folder.path());
        process.start(program, args);
        EXPECT_TRUE(process.waitForFinished(30000)) << program.toStdString();
        EXPECT_EQ(0, process.exitCode()) << process.readAllStandardError().toStdString();
        return CReport::ProcessesToJson(withLog ? log : QFileInfo(program).absolutePath() + QStringLiteral("/processes.jsonl"));
    };
    const QString tools = QStringLiteral(MVGOZ_TOOLS_DIR "/");

    write("GoZ_Info.txt", "GOZBRUSH_COMMAND = x\r\n  goz_object_list\t=  \"list.txt\"  \r\n");
    // Line ends of both kinds, a blank line, a Latin-1 byte, a tab and UTF-8 must all give valid JSON.
    write("list.txt", "C:/P/Body\r\nCaf\xe9\n\nTab\there\n\xc3\xa9t\xc3\xa9");
    start(tools + QStringLiteral("GoZMakeObjectPath.exe"), {}, true);
    const QJsonArray runs = start(tools + QStringLiteral("GoZBrushFromApp.exe"), {QStringLiteral("a b"), QStringLiteral("\"q\"")}, true);
    ASSERT_EQ(2, runs.size()) << "the second run must append, not replace";
    EXPECT_EQ(QStringLiteral("GoZMakeObjectPath.exe"), runs.at(0).toObject().value(QStringLiteral("program")).toString());
    const QJsonObject run = runs.at(1).toObject();
    EXPECT_EQ(QStringLiteral("GoZBrushFromApp.exe"), run.value(QStringLiteral("program")).toString());
    EXPECT_EQ(QJsonArray({QStringLiteral("a b"), QStringLiteral("\"q\"")}), run.value(QStringLiteral("args")).toArray());
    EXPECT_EQ(QDir(folder.path()).canonicalPath(), QDir(run.value(QStringLiteral("cwd")).toString()).canonicalPath());
    EXPECT_EQ(apps + QStringLiteral("list.txt"), run.value(QStringLiteral("object_list_file")).toString());
    EXPECT_EQ(QJsonArray({QStringLiteral("C:/P/Body"), QStringLiteral("Café"), QStringLiteral("Tab\there"), QStringLiteral("été")}),
              run.value(QStringLiteral("object_list")).toArray());
    EXPECT_TRUE(run.value(QStringLiteral("problems")).toArray().isEmpty());
    EXPECT_FALSE(run.contains(QStringLiteral("config_path"))) << "only the return launcher reads its config";

    // The return launcher reads its config and, without a log set, logs beside itself.
    const QString launcher = apps + QStringLiteral("GoZBrushToFM.exe");
    ASSERT_TRUE(QFile::copy(tools + QStringLiteral("GoZBrushToFM.exe"), launcher));
    write("GoZ_Config.txt", "OTHER = 1\r\nPATH = \"C:\\Apps\\Host\\Figmora.exe\"\r\n");
    const QJsonArray launched = start(launcher, {}, false);
    ASSERT_EQ(1, launched.size());
    EXPECT_EQ(QStringLiteral("GoZBrushToFM.exe"), launched.first().toObject().value(QStringLiteral("program")).toString());
    EXPECT_EQ(QStringLiteral("C:\\Apps\\Host\\Figmora.exe"), launched.first().toObject().value(QStringLiteral("config_path")).toString());
}

} // namespace

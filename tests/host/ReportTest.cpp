#include "CDemoNarrator.h"
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

TEST(hostReport, ListsFilesAsTextBase64OrANote)
{
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    const struct
    {
        const char* m_szPath;
        QByteArray m_kBytes;
        const char* m_szKey;
        QJsonValue m_kValue;
    } cases[] = { // in the order of the listing
        {"a/text.txt", QByteArray("PATH = \"C:\\Figmora.exe\"\r\n"), "text", QStringLiteral("PATH = \"C:\\Figmora.exe\"\r\n")},
        {"a/utf8.txt", QByteArray("Ünï"), "text", QStringLiteral("Ünï")},
        {"b/latin1.txt", QByteArray("\xe9t\xe9"), "base64", QStringLiteral("6XTp")},
        {"b/nul.bin", QByteArray("a\0b", 3), "base64", QStringLiteral("YQBi")},
        {"c/big.txt", QByteArray(static_cast<int>(CReport::kMaxInlineBytes), 'x'), "note", QStringLiteral("not included: 65536 bytes")},
        {"empty.txt", QByteArray(), "text", QString()},
    };
    for (const auto& item : cases) {
        WriteBytes(folder.path() + QLatin1Char('/') + QString::fromLatin1(item.m_szPath), item.m_kBytes);
    }
    const QJsonArray files = CReport::FilesToJson(folder.path());
    ASSERT_EQ(6, files.size());
    for (int i = 0; i < files.size(); ++i) {
        const QJsonObject entry = files.at(i).toObject();
        EXPECT_EQ(QString::fromLatin1(cases[i].m_szPath), entry.value(QStringLiteral("path")).toString());
        EXPECT_EQ(cases[i].m_kBytes.size(), entry.value(QStringLiteral("size")).toInt()) << cases[i].m_szPath;
        EXPECT_EQ(cases[i].m_kValue, entry.value(QString::fromLatin1(cases[i].m_szKey))) << cases[i].m_szPath;
        EXPECT_EQ(3, entry.size()) << cases[i].m_szPath << ": exactly one of text, base64 and note";
    }
}

TEST(hostReport, KeepsUnreadableProcessLogLinesAsText)
{
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    const QString log = folder.path() + QStringLiteral("/processes.jsonl");
    WriteBytes(log, "{\"program\":\"A.exe\",\"args\":[]}\n\n{broken\n[1]\n{\"program\":\"B.exe\"}");
    EXPECT_EQ(QJsonDocument::fromJson(R"([{"program": "A.exe", "args": []}, {"invalid_line": "{broken"},
                                          {"invalid_line": "[1]"}, {"program": "B.exe"}])").array(),
              CReport::ProcessesToJson(log));
    EXPECT_TRUE(CReport::ProcessesToJson(folder.path() + QStringLiteral("/missing.jsonl")).isEmpty());
}

TEST(hostReport, SucceedsOnlyWithThePluginLoadedAndNoFailure)
{
    CReport unloaded;
    unloaded.SetPluginError(QStringLiteral("/x.so"), QStringLiteral("no"));
    EXPECT_FALSE(unloaded.ToJson().value(QStringLiteral("ok")).toBool(true));

    MV::Host::Test::CHostRun run;
    ASSERT_TRUE(run.Load());
    run.m_kReport.SetStep(0, QJsonObject{{QStringLiteral("status"), QStringLiteral("skipped")}});
    EXPECT_TRUE(run.m_kReport.Succeeded());
    run.m_kReport.SetStep(1, QJsonObject{{QStringLiteral("status"), QStringLiteral("failed")}});
    EXPECT_FALSE(run.m_kReport.Succeeded());

    CReport withError;
    withError.SetPlugin(*run.m_pPlugins);
    withError.AddRunError(QStringLiteral("boom"));
    EXPECT_FALSE(withError.Succeeded());
}

TEST(hostReport, ARunSessionReportsEverythingItSaw)
{
    // What a run reports of the plug-in, its actions, dialogs and files is checked with the real
    // plug-in in the integration tests; here what the call log and the process log add.
    CRunSession session;
    QString error;
    ASSERT_EQ(QV::kOk, session.Prepare(MV::Host::Test::kBasicScene, R"({"steps": [
        {"step": "select", "ids": ["box"]},
        {"step": "trigger", "action": "fakeCallAction"},
        {"step": "trigger", "action": "fakeStartAction"},
        {"step": "wait_processes", "count": 1, "timeout_ms": 30000}
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
        if (call.toObject().value(QStringLiteral("operation")).toString() == QLatin1String("ExportGoZ")) {
            exportCall = call.toObject();
        }
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
}

TEST(hostReport, ARunWithoutThePluginStillReports)
{
    CRunSession session;
    QString error;
    ASSERT_EQ(QV::kOk, session.Prepare("{}", R"({"steps": [{"step": "clear_log"}]})", error));
    CRunOptions options;
    options.m_strPlugin = QStringLiteral(MVGOZ_FAKE_PLUGIN); // class name CGoZBrushPlugin expected
    CReport report;
    EXPECT_EQ(QV::kFail, session.Execute(options, report));
    const QJsonObject json = report.ToJson();
    EXPECT_FALSE(json.value(QStringLiteral("plugin")).toObject().value(QStringLiteral("loaded")).toBool(true));
    EXPECT_TRUE(json.value(QStringLiteral("steps")).toArray().isEmpty());
    EXPECT_EQ(QV::kFail, session.Execute(options, report)) << "a session runs once";
}

TEST(hostReport, TheNarrativeFollowsTheReport)
{
    const QJsonObject report = QJsonDocument::fromJson(R"json({
        "ok": false,
        "plugin": {"path": "/p/MVGoZBrush.so", "loaded": true, "menus": [{"name": "menuGoZ", "title": "&GoZ"}], "tool_bars": []},
        "errors": ["watchdog: the run did not finish within 10 ms (stopped in step 4 (trigger))"],
        "steps": [{"index": 1, "step": "snapshot_actions", "status": "ok", "comment": "the hero"},
                  {"index": 2, "step": "snapshot_actions", "status": "ok"}],
        "action_snapshots": [
            {"step": 1, "actions": [{"name": "qtGoZAction", "text": "Go&Z", "enabled": true},
                                    {"name": "", "text": "Export to", "enabled": true, "menu": true},
                                    {"name": "qtExpressionGoZAction", "text": "Expression GoZ", "enabled": false}]},
            {"step": 2, "selection": [], "actions": [{"name": "qtGoZAction", "text": "GoZ", "enabled": false}]}],
        "dialog_dumps": [{"step": 3, "dialog": "FMtoZBrushDlg", "widgets": [
            {"name": "qtGoZButton", "class": "QPushButton", "visible": true, "enabled": false, "checkable": false},
            {"name": "qtSplitGroup", "class": "QGroupBox", "visible": true, "enabled": false, "checkable": false},
            {"name": "qtSkinCheck", "class": "QCheckBox", "visible": true, "enabled": true, "checkable": true, "checked": true},
            {"name": "qtLegCheck", "class": "QCheckBox", "visible": true, "enabled": false, "checkable": true, "checked": false},
            {"name": "qtHidden", "class": "QPushButton", "visible": false, "enabled": true, "checkable": false}]}],
        "files": [{"path": "C:/Users/Public/Pixologic/GoZApps/Figmora/GoZ_Config.txt", "size": 40,
                   "text": "X = 1\nPATH = \"C:\\Apps\\Figmora.exe\"\n"}],
        "processes": [{"program": "GoZMakeObjectPath.exe", "object_list": ["C:/Users/Public/Pixologic/GoZProjects/Default/Hero"]}]
    })json").object();
    const QString text = CDemoNarrator::Narrate(report);
    for (const char* expected : {
             "It added the menus \"GoZ\" and the tool bars (none) to the host window.",
             "  - the hero: enabled: GoZ (qtGoZAction)\n", // a sub-menu's action is no command
             "  - nothing selected: no command is enabled\n",
             "    Buttons: qtGoZButton (disabled)\n",
             "    Disabled groups: qtSplitGroup\n",
             "    Checked: qtSkinCheck; 1 other option(s) unchecked (disabled: qtLegCheck)\n",
             "GoZ_Config.txt (40 bytes): PATH = \"C:\\Apps\\Figmora.exe\"",
             "  - GoZMakeObjectPath.exe, offered C:/Users/Public/Pixologic/GoZProjects/Default/Hero\n",
             "Problems:\n  - watchdog: the run did not finish",
         }) {
        EXPECT_TRUE(text.contains(QString::fromUtf8(expected))) << "missing: " << expected << "\n" << text.toStdString();
    }
    EXPECT_FALSE(text.contains(QStringLiteral("qtHidden"))) << "hidden widgets are not told";
}

TEST(hostReport, TheNarrativeTellsEachSendAndWhatBecameOfEarlierFiles)
{
    const QJsonObject report = QJsonDocument::fromJson(R"json({
        "ok": true,
        "plugin": {"path": "/p/MVGoZBrush.so", "loaded": true},
        "steps": [
            {"index": 0, "step": "dump_dialog", "status": "ok"},
            {"index": 1, "step": "click", "status": "ok", "comment": "first", "detail": {"dialog": "D", "clicked": "qtGoZButton"}},
            {"index": 2, "step": "wait_processes", "status": "ok", "detail": {"found": 2}},
            {"index": 4, "step": "table_combo_choose", "status": "ok", "detail": {"table": "qtTable", "row": 0, "column": 1, "text": "Relink"}},
            {"index": 5, "step": "click", "status": "ok", "detail": {"dialog": "D", "clicked": "qtGoZButton"}},
            {"index": 6, "step": "wait_processes", "status": "ok", "detail": {"found": 4}},
            {"index": 7, "step": "click", "status": "ok", "detail": {"dialog": "D", "clicked": "qtCancelButton"}}],
        "dialog_dumps": [{"step": 0, "dialog": "D", "widgets": [{"name": "qtTable", "visible": true, "rows": 1,
            "cells": [["Hero", {"text": "Create", "enabled": false}], ["Vase", {"text": "Create", "items": ["Create", "Relink"]}]]}]}],
        "call_log": [
            {"operation": "ShowMessageBox", "args": ["Lod"], "step": 1},
            {"operation": "ExportGoZ", "args": ["hero"], "step": 1,
             "wrote": [{"path": "C:/Users/Public/Pixologic/GoZProjects/Default/Hero.goz", "replaced": false},
                       {"path": "C:/Users/Public/Pixologic/GoZProjects/Default/Vase.goz", "replaced": false}]},
            {"operation": "ShowMessageBox", "args": ["never shown"], "step": 5, "injected": "0x80000000"},
            {"operation": "ExportGoZ", "args": ["hero"], "step": 5,
             "wrote": [{"path": "C:/Users/Public/Pixologic/GoZProjects/Default/Hero.goz", "replaced": false}]},
            {"operation": "ExportGoZ", "args": ["vase"], "step": 5,
             "wrote": [{"path": "C:/Users/Public/Pixologic/GoZProjects/Default/Vase.goz", "replaced": true}]},
            {"operation": "ShowMessageBox", "args": ["at unload"]}],
        "message_boxes": [{"text": "Lod"}, {"text": "at unload"}],
        "processes": [
            {"program": "A.exe", "object_list": ["C:/Users/Public/Pixologic/GoZProjects/Default/Hero",
                                                 "C:/Users/Public/Pixologic/GoZProjects/Default/Vase"]},
            {"program": "B.exe", "object_list": ["C:/Users/Public/Pixologic/GoZProjects/Default/Hero",
                                                 "C:/Users/Public/Pixologic/GoZProjects/Default/Vase"]},
            {"program": "A.exe", "object_list": ["C:/Users/Public/Pixologic/GoZProjects/Default/Hero"]},
            {"program": "B.exe", "object_list": ["D:/elsewhere/Hero"]}],
        "files": [{"path": "C:/Users/Public/Pixologic/GoZProjects/Default/Hero.goz", "size": 9, "text": "x"},
                  {"path": "C:/Users/Public/Pixologic/GoZProjects/Default/Old.goz", "size": 3, "text": "x"},
                  {"path": "C:/Users/Public/Pixologic/GoZProjects/Default/Vase.goz", "size": 9, "text": "x"}]
    })json").object();
    const QString text = CDemoNarrator::Narrate(report);
    const QString project = QStringLiteral("C:/Users/Public/Pixologic/GoZProjects/Default/");
    for (const QString& expected : {
             QStringLiteral("\nSend 1 (step 1): first\n"),
             QStringLiteral("      Hero | Create (fixed)\n      Vase | Create (or Relink)\n"),
             QStringLiteral("  The plug-in showed the message \"Lod\".\n  The host exported into %1:\n"
                            "    - Hero.goz (object hero): new\n    - Vase.goz (object hero): new\n")
                 .arg(project),
             QStringLiteral("  Started A.exe and B.exe; each was offered: Hero, Vase (in %1)\n").arg(project),
             QStringLiteral("\nSend 2 (step 5):\n  At step 4 the demo chose \"Relink\" in row 0 (Hero).\n"),
             QStringLiteral("    - Hero.goz (object hero): the same name again; the copy from send 1 had already been deleted when the export wrote it\n"),
             QStringLiteral("    - Vase.goz (object vase): over the copy from send 1\n"),
             QStringLiteral("  Started A.exe; it was offered: Hero (in %1)\n  Started B.exe; it was offered: D:/elsewhere/Hero\n")
                 .arg(project),
             QStringLiteral("\nStep 7:\n  At step 7 the demo pressed qtCancelButton"),
             QStringLiteral("  - %1Old.goz (3 bytes): \"x\"\n  - from send 2: Hero.goz, Vase.goz (in %1)\n").arg(project),
             QStringLiteral("Messages the plug-in showed:\n  - \"at unload\"\n"),
         }) {
        EXPECT_TRUE(text.contains(expected)) << "missing: " << expected.toStdString() << "\n" << text.toStdString();
    }
    for (const char* absent : {"Send 3", "never shown", "Bridge programs started", "- \"Lod\""}) {
        EXPECT_FALSE(text.contains(QString::fromUtf8(absent))) << absent << "\n" << text.toStdString();
    }
}

TEST(hostReport, TheProgramRejectsBadInputWithExitCodeTwo)
{
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    const QString dir = folder.path() + QLatin1Char('/');
    WriteBytes(dir + QStringLiteral("bad.json"), "{\"objects\": [{\"id\": 1}]}");
    WriteBytes(dir + QStringLiteral("empty.json"), "{}");
    WriteBytes(dir + QStringLiteral("script.json"), "{\"steps\": []}");
    WriteBytes(dir + QStringLiteral("badscript.json"), "{\"steps\": [{\"step\": \"jump\"}]}");
    const auto run = [&dir](const char* plugin, const char* scene, const char* script, const char* report) {
        return QStringList{QStringLiteral("run"), QStringLiteral("--plugin"), dir + QLatin1String(plugin),
                           QStringLiteral("--scene"), dir + QLatin1String(scene), QStringLiteral("--script"),
                           dir + QLatin1String(script), QStringLiteral("--report"), dir + QLatin1String(report)};
    };
    const struct
    {
        QStringList m_kArgs;
        int m_iExit;
        const char* m_szMessage;
    } cases[] = {
        {{QStringLiteral("fly")}, 2, "unknown command \"fly\""},
        {run("p.so", "bad.json", "script.json", "r.json"), 2, "scene: objects[0]: \"id\" must be a non-empty string"},
        {run("p.so", "empty.json", "badscript.json", "r.json"), 2, "script: step 0: unknown step \"jump\""},
        {run("p.so", "none.json", "script.json", "r.json"), 2, "cannot read"},
        {run("p.so", "empty.json", "script.json", "no/r.json"), 2, "the folder of the report"},
        {run("none.so", "empty.json", "script.json", "r2.json"), 1, "plug-in not loaded: no plug-in file at"},
        {{QStringLiteral("help")}, 0, ""},
    };
    for (const auto& item : cases) {
        QProcess process;
        process.start(QStringLiteral(MVGOZ_HOST_PROGRAM), item.m_kArgs);
        ASSERT_TRUE(process.waitForFinished(60000));
        EXPECT_EQ(QProcess::NormalExit, process.exitStatus());
        EXPECT_EQ(item.m_iExit, process.exitCode()) << item.m_kArgs.join(QLatin1Char(' ')).toStdString();
        const QString err = QString::fromUtf8(process.readAllStandardError());
        EXPECT_TRUE(err.contains(QString::fromUtf8(item.m_szMessage))) << err.toStdString();
    }
    EXPECT_FALSE(QFileInfo::exists(dir + QStringLiteral("r.json"))) << "no report for a run that never started";
    EXPECT_TRUE(QFileInfo::exists(dir + QStringLiteral("r2.json"))) << "a refused plug-in still gets its report";
}

} // namespace

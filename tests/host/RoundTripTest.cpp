// Whole runs through the reference host with the real plug-in: a send, ZBrush's stand-in
// sculpting and handing back what the scene asks of it, the return launcher's notice over
// the host's socket, the receive dialog and the import into the scene.
#include "CReferenceHost.h"
#include "CReport.h"
#include "CRunSession.h"
#include "QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace MV::Host;

namespace {

const QString kPlugin = QStringLiteral(MVGOZ_PLUGIN_DIR "/MVGoZBrush.so");

QByteArray Scene(const QByteArray& extra)
{
    return R"({"objects": [
        {"id": "lamp", "name": "Desk Lamp", "kind": 3, "object_type": 20,
         "mesh": {"vertices": [[0,0,0],[1,0,0],[0,1,0],[0,0,1]], "faces": [[0,1,2],[0,1,3],[0,2,3],[1,2,3]]}},
        {"id": "vase", "name": "Vase", "kind": 3, "object_type": 21,
         "mesh": {"vertices": [[0,0,0],[2,0,0],[0,2,0]], "faces": [[0,1,2]]}}],
      "registry": {"SOFTWARE\\Quorvane\\Figmora\\4.0": {"Main Program": "C:\\Program Files\\Figmora\\Figmora.exe"}})" +
           extra + "}";
}

const QByteArray kLoop = R"({"steps": [
    {"step": "select", "ids": ["lamp", "vase"]}, {"step": "trigger", "action": "qtGoZAction"},
    {"step": "click", "widget": "qtGoZButton"}, {"step": "wait_goz_return", "timeout_ms": 10000},
    {"step": "dump_table", "table": "qtFMGoZBackFromZBrushTableWidget"}, {"step": "click", "widget": "qtImportButton"},
    {"step": "close_dialog", "dialog": "ZBrushToFMDlg"}
]})";

QJsonObject RunHost(const QByteArray& scene, const QByteArray& script, const QString& workFolder = QString())
{
    CRunSession session;
    QString error;
    EXPECT_EQ(QV::kOk, session.Prepare(scene, script, error)) << error.toStdString();
    CRunOptions options;
    options.m_strPlugin = kPlugin;
    options.m_strWorkFolder = workFolder;
    CReport report;
    session.Execute(options, report);
    return report.ToJson();
}

// The value of key in every entry of the report's list, as text.
QStringList Each(const QJsonObject& report, const char* list, const char* key)
{
    QStringList values;
    for (const QJsonValue& entry : report.value(QLatin1String(list)).toArray()) {
        values << entry.toObject().value(QLatin1String(key)).toVariant().toString();
    }
    return values;
}

QJsonObject SceneEntry(const QJsonObject& report, const char* id)
{
    return report.value(QStringLiteral("scene")).toArray().at(Each(report, "scene", "id").indexOf(QLatin1String(id))).toObject();
}

// The names of the scene objects whose key is true.
QStringList Where(const QJsonObject& report, const char* key)
{
    QStringList names;
    for (const QJsonValue& entry : report.value(QStringLiteral("scene")).toArray()) {
        if (entry.toObject().value(QLatin1String(key)).toBool()) {
            names << entry.toObject().value(QStringLiteral("name")).toString();
        }
    }
    return names;
}

// "Operation: File.GoZ" for every host call refused over a returned file ("no file File.GoZ" when missing).
QStringList Notes(const QJsonObject& report)
{
    QStringList notes;
    const QRegularExpression file(QStringLiteral("([^/\\s]+\\.GoZ)"));
    for (const QJsonValue& call : report.value(QStringLiteral("call_log")).toArray()) {
        const QString note = call.toObject().value(QStringLiteral("note")).toString();
        if (!note.isEmpty()) {
            notes << call.toObject().value(QStringLiteral("operation")).toString() + QStringLiteral(": ") +
                         (note.startsWith(QLatin1String("no file")) ? QStringLiteral("no file ") : QString()) + file.match(note).captured(1);
        }
    }
    return notes;
}

QStringList TableNames(const QJsonObject& report)
{
    QStringList names;
    for (const QJsonValue& dump : report.value(QStringLiteral("table_dumps")).toArray()) {
        for (const QJsonValue& row : dump.toObject().value(QStringLiteral("rows")).toArray()) {
            names << row.toObject().value(QStringLiteral("cells")).toArray().at(0).toObject().value(QStringLiteral("text")).toString();
        }
    }
    return names;
}

class hostRoundTrip : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!QFileInfo(kPlugin).isFile()) {
            GTEST_SKIP() << "the plug-in module is not built";
        }
    }
};

TEST_F(hostRoundTrip, WhatZBrushSendsBackIsWhatLandsInTheScene)
{
    // The return settings; the receive table's mesh names; the objects whose mesh changed (created ones
    // included); those created; the host calls refused, with the file that was refused.
    const struct { const char* m_szCase; QByteArray m_kReturn; QStringList m_kRows, m_kChanged, m_kCreated, m_kNotes; } cases[] = {
        {"every mesh, sculpted", "{}", {"Desk_Lamp", "Vase"}, {"Desk Lamp", "Vase"}, {}, {}},
        {"a subset", R"({"meshes": ["Vase"]})", {"Vase"}, {"Vase"}, {}, {}},
        {"a renamed mesh is new to the scene", R"({"rename": {"Vase": "Vase_Sculpted"}})",
         {"Desk_Lamp", "Vase_Sculpted"}, {"Desk Lamp", "Vase_Sculpted"}, {"Vase_Sculpted"}, {}},
        {"a mesh nobody sent", R"({"meshes": "none", "extra": [{"name": "Rock"}]})", {"Rock"}, {"Rock"}, {"Rock"}, {}},
        {"a truncated file stops the import there", R"({"truncate": ["Vase"]})", {"Desk_Lamp", "Vase"},
         {"Desk Lamp"}, {}, {"ImportGoZToObject: Vase.GoZ"}},
        {"a listed mesh without a file", R"({"missing": ["Desk_Lamp"]})", {"Desk_Lamp", "Vase"}, {}, {},
         {"ImportGoZToObject: no file Desk_Lamp.GoZ"}},
        {"a malformed file", R"({"malformed": ["Desk_Lamp"]})", {"Desk_Lamp", "Vase"}, {}, {}, {"ImportGoZToObject: Desk_Lamp.GoZ"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_szCase);
        const QJsonObject report = RunHost(Scene(", \"zbrush_return\": " + c.m_kReturn), kLoop);
        EXPECT_TRUE(report.value(QStringLiteral("errors")).toArray().isEmpty())
            << QJsonDocument(report.value(QStringLiteral("errors")).toArray()).toJson().toStdString();
        EXPECT_EQ(c.m_kRows, TableNames(report));
        EXPECT_EQ(c.m_kChanged, Where(report, "mesh_changed"));
        EXPECT_EQ(c.m_kCreated, Where(report, "created"));
        EXPECT_EQ(c.m_kNotes, Notes(report));
        EXPECT_EQ((QStringList{"3"}), Each(report, "goz_returns", "raised_by_step"));
        EXPECT_EQ((QStringList{"2"}), Each(report, "goz_returns", "send_step"));
        // Make-object-path, the program handing over to ZBrush, then its return launcher.
        EXPECT_EQ((QStringList{"GoZMakeObjectPath.exe", "GoZBrushFromApp.exe", "GoZBrushToFM.exe"}), Each(report, "processes", "program"));
        // Every call is logged under a name a script can make fail.
        for (const QString& operation : Each(report, "call_log", "operation")) {
            EXPECT_TRUE(CReferenceHost::OperationNames().contains(operation)) << operation.toStdString();
        }
    }
}

TEST_F(hostRoundTrip, WithoutReturnSettingsNothingComesBackAndTheWaitSaysSo)
{
    const QJsonObject report = RunHost(Scene(QByteArray()), R"({"steps": [
        {"step": "select", "ids": ["vase"]}, {"step": "trigger", "action": "qtGoZAction"},
        {"step": "click", "widget": "qtGoZButton"}, {"step": "wait_processes", "count": 2},
        {"step": "wait_goz_return", "timeout_ms": 300}
    ]})");
    EXPECT_EQ(QStringLiteral("failed"), Each(report, "steps", "status").value(4));
    EXPECT_TRUE(Each(report, "steps", "error").value(4).contains(QStringLiteral("no GoZ return within 300 ms")));
    EXPECT_TRUE(report.value(QStringLiteral("goz_returns")).toArray().isEmpty());
    EXPECT_TRUE(Where(report, "mesh_changed").isEmpty());
}

// The scene's sandbox settings other runs do not use: the texture sizes the plug-in ships, none,
// and a current directory elsewhere, which the bridge install writes into its PATH.
TEST_F(hostRoundTrip, TheSandboxLaysOutWhatTheSceneSays)
{
    QFile shipped(QStringLiteral(MVGOZ_PLUGIN_DIR "/GoZTextureSize.ini"));
    ASSERT_TRUE(shipped.open(QIODevice::ReadOnly));
    const QByteArray ini = shipped.readAll();
    ASSERT_FALSE(ini.isEmpty());
    const struct { const char* m_szSandbox; QByteArray m_kIni; const char* m_szPath; } cases[] = {
        {"{}", ini, "Figmora.exe\""},
        {R"({"texture_size_ini": null})", QByteArray(), "Figmora.exe\""},
        {R"({"current_directory": "C:\\Apps\\Host"})", ini, "\\C:\\Apps\\Host\\Figmora.exe\""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_szSandbox);
        const QJsonObject report = RunHost(Scene(", \"sandbox\": " + QByteArray(c.m_szSandbox)),
                                           R"({"steps": [{"step": "select", "ids": ["vase"]}, {"step": "trigger", "action": "qtGoZAction"}]})");
        const QStringList paths = Each(report, "files", "path");
        const QStringList texts = Each(report, "files", "text");
        EXPECT_EQ(c.m_kIni, texts.value(paths.indexOf(QStringLiteral("C:/ProgramData/Figmora/MVGoZBrush/GoZTextureSize.ini"))).toUtf8());
        const QString config = texts.value(paths.indexOf(QStringLiteral("C:/Users/Public/Pixologic/GoZApps/Figmora/GoZ_Config.txt")));
        EXPECT_TRUE(config.contains(QLatin1String(c.m_szPath))) << config.toStdString();
    }
}

TEST_F(hostRoundTrip, TheDebugLogShowsWhatOnlyThePlugInKnows)
{
    // No ZBrush ever installed: the host says data came back, the plug-in finds no object list.
    const QJsonObject report = RunHost(Scene(R"(, "sandbox": {"pixologic_folder": false})"),
                                       R"({"steps": [{"step": "clear_log"}, {"step": "raise_goz_data_updated"}]})");
    const QJsonArray lines = report.value(QStringLiteral("debug_log")).toArray();
    EXPECT_TRUE(lines.contains(QJsonObject{{"type", "debug"}, {"text", "Cant' read Object list path"}, {"step", 1}}))
        << QJsonDocument(lines).toJson().toStdString();
    EXPECT_EQ(0, report.value(QStringLiteral("goz_imports")).toObject().value(QStringLiteral("finished_imports")).toInt());
}

TEST_F(hostRoundTrip, TheShippedRoundTripExampleRunsAndTellsTheSameStoryTwice)
{
    const auto read = [](const char* name) {
        QFile file(QStringLiteral(MVGOZ_DEMO_DIR "/") + QLatin1String(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
        return file.readAll();
    };
    QTemporaryDir folder;
    const QString work = folder.filePath(QStringLiteral("work"));
    const QJsonObject first = RunHost(read("roundtrip-scene.json"), read("roundtrip-script.json"), work);
    ASSERT_TRUE(QDir(work).removeRecursively());
    const QJsonObject second = RunHost(read("roundtrip-scene.json"), read("roundtrip-script.json"), work);
    EXPECT_TRUE(first.value(QStringLiteral("ok")).toBool()) << QJsonDocument(first.value(QStringLiteral("steps")).toArray()).toJson().toStdString();
    EXPECT_EQ(QJsonDocument(first).toJson(), QJsonDocument(second).toJson());
    // Both props were sculpted; the rock was left out; the second vase came back cut and was refused.
    EXPECT_EQ((QStringList{"Desk Lamp", "Vase"}), Where(first, "mesh_changed"));
    EXPECT_TRUE(Where(first, "created").isEmpty());
    const QJsonObject lamp = SceneEntry(first, "lamp");
    // Twice as big and lifted by one, then by the default sculpt: new settings replace the scene's.
    EXPECT_EQ(QJsonArray({QJsonArray{0, 1 * 1.1, 0}, QJsonArray{2 * 1.1, 3 * 1.1, 2 * 1.1}}),
              lamp.value(QStringLiteral("mesh_after")).toObject().value(QStringLiteral("bbox")).toArray());
    EXPECT_EQ(2, lamp.value(QStringLiteral("goz_imports")).toInt());
    EXPECT_EQ(1, SceneEntry(first, "vase").value(QStringLiteral("goz_imports")).toInt());
    EXPECT_EQ(1, first.value(QStringLiteral("goz_imports")).toObject().value(QStringLiteral("finished_imports")).toInt())
        << "props without a character finish their import; the stopped one does not";
    EXPECT_EQ(QStringList{"ImportGoZToObject: Vase_1.GoZ"}, Notes(first));
    EXPECT_EQ((QStringList{"Desk_Lamp", "Vase", "Rock", "Desk_Lamp_1", "Vase_1"}), TableNames(first));
}

} // namespace

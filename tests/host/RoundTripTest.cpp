// Whole runs through the reference host with the real plug-in: a send, ZBrush's stand-in
// sculpting and handing back what the scene asks of it, the return launcher's notice over
// the host's socket, the receive dialog and the import into the scene; and an expression
// round trip whose face meshes come back the same way to the expression dialog.
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

QString PluginPath()
{
    return QStringLiteral(MVGOZ_PLUGIN_DIR "/MVGoZBrush.so");
}

QByteArray Scene(const QByteArray& extra)
{
    return R"({
      "objects": [
        {"id": "lamp", "name": "Desk Lamp", "kind": 3, "object_type": 20,
         "mesh": {"vertices": [[0,0,0],[1,0,0],[0,1,0],[0,0,1]], "faces": [[0,1,2],[0,1,3],[0,2,3],[1,2,3]]}},
        {"id": "vase", "name": "Vase", "kind": 3, "object_type": 21,
         "mesh": {"vertices": [[0,0,0],[2,0,0],[0,2,0]], "faces": [[0,1,2]]}}
      ],
      "registry": {"SOFTWARE\\Quorvane\\Figmora\\4.0": {"Main Program": "C:\\Program Files\\Figmora\\Figmora.exe"}})" +
           extra + "}";
}

const QByteArray kLoop = R"({"steps": [
    {"step": "select", "ids": ["lamp", "vase"]},
    {"step": "trigger", "action": "qtGoZAction"},
    {"step": "click", "widget": "qtGoZButton"},
    {"step": "wait_goz_return", "timeout_ms": 10000},
    {"step": "dump_table", "table": "qtFMGoZBackFromZBrushTableWidget"},
    {"step": "click", "widget": "qtImportButton"},
    {"step": "close_dialog", "dialog": "ZBrushToFMDlg"}
]})";

QJsonObject RunHost(const QByteArray& scene, const QByteArray& script, const QString& workFolder = QString())
{
    CRunSession session;
    QString error;
    EXPECT_EQ(QV::kOk, session.Prepare(scene, script, error)) << error.toStdString();
    CRunOptions options;
    options.m_strPlugin = PluginPath();
    options.m_strWorkFolder = workFolder;
    CReport report;
    session.Execute(options, report);
    return report.ToJson();
}

QJsonObject SceneEntry(const QJsonObject& report, const QString& id)
{
    for (const QJsonValue& entry : report.value(QStringLiteral("scene")).toArray()) {
        if (entry.toObject().value(QStringLiteral("id")).toString() == id) {
            return entry.toObject();
        }
    }
    return QJsonObject();
}

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
        const QJsonObject record = call.toObject();
        const QString note = record.value(QStringLiteral("note")).toString();
        if (!note.isEmpty()) {
            notes << record.value(QStringLiteral("operation")).toString() + QStringLiteral(": ") +
                         (note.startsWith(QLatin1String("no file")) ? QStringLiteral("no file ") : QString()) +
                         file.match(note).captured(1);
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
        if (!QFileInfo(PluginPath()).isFile()) {
            GTEST_SKIP() << "the plug-in module is not built";
        }
    }
};

TEST_F(hostRoundTrip, WhatZBrushSendsBackIsWhatLandsInTheScene)
{
    const struct
    {
        const char* m_szCase;
        QByteArray m_kReturn;
        QStringList m_kRows;    // the receive table's mesh names
        QStringList m_kChanged; // objects whose mesh changed (created ones included)
        QStringList m_kCreated;
        QStringList m_kNotes;   // host calls refused, with the file that was refused
    } cases[] = {
        {"every mesh, sculpted", "{}", {"Desk_Lamp", "Vase"}, {"Desk Lamp", "Vase"}, {}, {}},
        {"a subset", R"({"meshes": ["Vase"]})", {"Vase"}, {"Vase"}, {}, {}},
        {"a renamed mesh is new to the scene", R"({"rename": {"Vase": "Vase_Sculpted"}})",
         {"Desk_Lamp", "Vase_Sculpted"}, {"Desk Lamp", "Vase_Sculpted"}, {"Vase_Sculpted"}, {}},
        {"a mesh nobody sent", R"({"meshes": "none", "extra": [{"name": "Rock"}]})", {"Rock"}, {"Rock"}, {"Rock"}, {}},
        {"a truncated file stops the import there", R"({"truncate": ["Vase"]})", {"Desk_Lamp", "Vase"},
         {"Desk Lamp"}, {}, {"ImportGoZToObject: Vase.GoZ"}},
        {"a listed mesh without a file", R"({"missing": ["Desk_Lamp"]})", {"Desk_Lamp", "Vase"}, {}, {},
         {"ImportGoZToObject: no file Desk_Lamp.GoZ"}},
        {"a malformed file", R"({"malformed": ["Desk_Lamp"]})", {"Desk_Lamp", "Vase"}, {}, {},
         {"ImportGoZToObject: Desk_Lamp.GoZ"}},
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
        const QJsonArray returns = report.value(QStringLiteral("goz_returns")).toArray();
        ASSERT_EQ(1, returns.size());
        EXPECT_EQ(3, returns.at(0).toObject().value(QStringLiteral("raised_by_step")).toInt());
        EXPECT_EQ(2, returns.at(0).toObject().value(QStringLiteral("send_step")).toInt());
        // Make-object-path, the program handing over to ZBrush, then its return launcher.
        QStringList programs;
        for (const QJsonValue& process : report.value(QStringLiteral("processes")).toArray()) {
            programs << process.toObject().value(QStringLiteral("program")).toString();
        }
        EXPECT_EQ((QStringList{"GoZMakeObjectPath.exe", "GoZBrushFromApp.exe", "GoZBrushToFM.exe"}), programs);
    }
}

TEST_F(hostRoundTrip, TheSculptIsTheStandInsScaleAndOffset)
{
    const QJsonObject report =
        RunHost(Scene(R"(, "zbrush_return": {"meshes": ["Vase"], "scale": 3, "offset": [1, 0, 0]})"), kLoop);
    const QJsonObject vase = SceneEntry(report, QStringLiteral("vase"));
    EXPECT_EQ(QJsonDocument::fromJson("[[0,0,0],[2,2,0]]").array(),
              vase.value(QStringLiteral("mesh_before")).toObject().value(QStringLiteral("bbox")).toArray());
    EXPECT_EQ(QJsonDocument::fromJson("[[1,0,0],[7,6,0]]").array(),
              vase.value(QStringLiteral("mesh_after")).toObject().value(QStringLiteral("bbox")).toArray());
    EXPECT_EQ(1, vase.value(QStringLiteral("goz_imports")).toInt());
    EXPECT_EQ(1, report.value(QStringLiteral("goz_imports")).toObject().value(QStringLiteral("finished_imports")).toInt());
}

TEST_F(hostRoundTrip, WithoutReturnSettingsNothingComesBackAndTheWaitSaysSo)
{
    const QJsonObject report = RunHost(Scene(QByteArray()), R"({"steps": [
        {"step": "select", "ids": ["vase"]},
        {"step": "trigger", "action": "qtGoZAction"},
        {"step": "click", "widget": "qtGoZButton"},
        {"step": "wait_processes", "count": 2},
        {"step": "wait_goz_return", "timeout_ms": 300}
    ]})");
    const QJsonArray steps = report.value(QStringLiteral("steps")).toArray();
    EXPECT_EQ(QStringLiteral("failed"), steps.at(4).toObject().value(QStringLiteral("status")).toString());
    EXPECT_TRUE(steps.at(4).toObject().value(QStringLiteral("error")).toString().contains(QStringLiteral("no GoZ return within 300 ms")));
    EXPECT_TRUE(report.value(QStringLiteral("goz_returns")).toArray().isEmpty());
    EXPECT_TRUE(Where(report, "mesh_changed").isEmpty());
}

TEST_F(hostRoundTrip, ScriptsChangeWhatZBrushDoesBetweenSends)
{
    // The second send is told to return nothing but a truncated vase; the dialog then refuses it.
    const QJsonObject report = RunHost(Scene(R"(, "zbrush_return": {"meshes": ["Vase"]})"), R"({"steps": [
        {"step": "select", "ids": ["vase"]},
        {"step": "trigger", "action": "qtGoZAction"},
        {"step": "click", "widget": "qtGoZButton"},
        {"step": "wait_goz_return"},
        {"step": "click", "widget": "qtImportButton"},
        {"step": "set_zbrush_return", "settings": {"truncate": ["Vase"]}},
        {"step": "trigger", "action": "qtGoZAction"},
        {"step": "table_combo_choose", "table": "qtFMGoZToZBrushTableWidget", "row": 0, "column": 1,
         "text": "[MVGoZBursh] Relink"},
        {"step": "click", "widget": "qtGoZButton"},
        {"step": "wait_goz_return"},
        {"step": "click", "widget": "qtImportButton"},
        {"step": "close_dialog", "dialog": "ZBrushToFMDlg"},
        {"step": "dump_scene", "ids": ["vase"]}
    ]})");
    EXPECT_TRUE(report.value(QStringLiteral("ok")).toBool()) << QJsonDocument(report).toJson().left(3000).toStdString();
    const QJsonArray returns = report.value(QStringLiteral("goz_returns")).toArray();
    ASSERT_EQ(2, returns.size());
    EXPECT_EQ(9, returns.at(1).toObject().value(QStringLiteral("raised_by_step")).toInt());
    EXPECT_EQ(QStringList{"ImportGoZToObject: Vase.GoZ"}, Notes(report));
    // Sculpted once (by 1.1), the second, cut return left it as it was.
    const QJsonObject dump = report.value(QStringLiteral("scene_dumps")).toArray().at(0).toObject();
    const QJsonObject vase = dump.value(QStringLiteral("objects")).toArray().at(0).toObject();
    EXPECT_EQ(QJsonDocument::fromJson("[[0,0,0],[2.2,0,0],[0,2.2,0]]").array(),
              vase.value(QStringLiteral("mesh")).toObject().value(QStringLiteral("vertices")).toArray());
    EXPECT_EQ(1, vase.value(QStringLiteral("goz_imports")).toInt());
}

TEST_F(hostRoundTrip, TwoRunsTellTheSameStory)
{
    QTemporaryDir folder;
    const QString work = folder.filePath(QStringLiteral("work"));
    const QByteArray scene = Scene(R"(, "zbrush_return": {"rename": {"Vase": "Vase_2"}, "extra": [{"name": "Rock"}]})");
    const QJsonObject first = RunHost(scene, kLoop, work);
    ASSERT_TRUE(QDir(work).removeRecursively());
    const QJsonObject second = RunHost(scene, kLoop, work);
    EXPECT_TRUE(first.value(QStringLiteral("ok")).toBool());
    EXPECT_EQ(QJsonDocument(first).toJson(), QJsonDocument(second).toJson());
}

TEST_F(hostRoundTrip, TheSandboxLaysOutWhatTheSceneSays)
{
    const QByteArray script = R"({"steps": [
        {"step": "select", "ids": ["vase"]},
        {"step": "trigger", "action": "qtGoZAction"}
    ]})";
    const struct
    {
        const char* m_szCase;
        QByteArray m_kSandbox;
        bool m_bIniFromPlugin; // the plug-in folder's file was copied
        QByteArray m_kIni;     // else this content; null: no file
        bool m_bPixologic;
        const char* m_szPathLine; // the PATH the bridge install wrote, from the current directory; null: no install
    } cases[] = {
        {"defaults", "{}", true, QByteArray(), true, "Figmora.exe"},
        {"texture sizes given", R"({"texture_size_ini": "[GoZTextureSize]\nCount=1\nSize0=512\n"})", false,
         "[GoZTextureSize]\nCount=1\nSize0=512\n", true, "Figmora.exe"},
        {"no texture sizes", R"({"texture_size_ini": null})", false, QByteArray(), true, "Figmora.exe"},
        {"no Pixologic folder", R"({"pixologic_folder": false})", true, QByteArray(), false, nullptr},
        {"another current directory", R"({"current_directory": "C:\\Apps\\Host"})", true, QByteArray(), true,
         "\\C:\\Apps\\Host\\Figmora.exe"},
    };
    QFile shipped(QStringLiteral(MVGOZ_PLUGIN_DIR "/GoZTextureSize.ini"));
    ASSERT_TRUE(shipped.open(QIODevice::ReadOnly));
    const QByteArray shippedIni = shipped.readAll();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_szCase);
        const QJsonObject report = RunHost(Scene(", \"sandbox\": " + c.m_kSandbox), script);
        QByteArray ini;
        bool pixologic = false;
        QString config;
        for (const QJsonValue& value : report.value(QStringLiteral("files")).toArray()) {
            const QJsonObject file = value.toObject();
            const QString path = file.value(QStringLiteral("path")).toString();
            if (path == QLatin1String("C:/ProgramData/Figmora/MVGoZBrush/GoZTextureSize.ini")) {
                ini = file.value(QStringLiteral("text")).toString().toUtf8();
            }
            pixologic = pixologic || path.startsWith(QLatin1String("C:/Users/Public/Pixologic/"));
            if (path.endsWith(QLatin1String("GoZApps/Figmora/GoZ_Config.txt"))) {
                config = file.value(QStringLiteral("text")).toString();
            }
        }
        EXPECT_EQ(c.m_bIniFromPlugin ? shippedIni : c.m_kIni, ini);
        EXPECT_EQ(c.m_bPixologic, pixologic);
        if (c.m_szPathLine == nullptr) {
            EXPECT_TRUE(config.isEmpty());
        } else {
            EXPECT_TRUE(config.contains(QLatin1String(c.m_szPathLine) + QStringLiteral("\""))) << config.toStdString();
        }
    }
}

TEST_F(hostRoundTrip, TheDebugLogShowsWhatOnlyThePlugInKnows)
{
    // No ZBrush ever installed: the host says data came back, the plug-in finds no object list.
    const QJsonObject report = RunHost(Scene(R"(, "sandbox": {"pixologic_folder": false})"),
                                       R"({"steps": [{"step": "clear_log"}, {"step": "raise_goz_data_updated"}]})");
    EXPECT_TRUE(report.value(QStringLiteral("debug_log"))
                    .toArray()
                    .contains(QJsonObject{{QStringLiteral("type"), QStringLiteral("debug")},
                                          {QStringLiteral("text"), QStringLiteral("Cant' read Object list path")},
                                          {QStringLiteral("step"), 1}}))
        << QJsonDocument(report.value(QStringLiteral("debug_log")).toArray()).toJson().toStdString();
    EXPECT_EQ(0, report.value(QStringLiteral("goz_imports")).toObject().value(QStringLiteral("finished_imports")).toInt());
}

QByteArray DemoFile(const char* name)
{
    QFile file(QStringLiteral(MVGOZ_DEMO_DIR "/") + QLatin1String(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return file.readAll();
}

TEST_F(hostRoundTrip, TheShippedRoundTripExampleRunsAndTellsTheSameStoryTwice)
{
    QTemporaryDir folder;
    const QString work = folder.filePath(QStringLiteral("work"));
    const QByteArray scene = DemoFile("roundtrip-scene.json");
    const QByteArray script = DemoFile("roundtrip-script.json");
    const QJsonObject first = RunHost(scene, script, work);
    ASSERT_TRUE(QDir(work).removeRecursively());
    const QJsonObject second = RunHost(scene, script, work);
    EXPECT_TRUE(first.value(QStringLiteral("ok")).toBool()) << QJsonDocument(first.value(QStringLiteral("steps")).toArray()).toJson().toStdString();
    EXPECT_EQ(QJsonDocument(first).toJson(), QJsonDocument(second).toJson());
    // Both props were sculpted; the rock was left out; the second vase came back cut and was refused.
    EXPECT_EQ((QStringList{"Desk Lamp", "Vase"}), Where(first, "mesh_changed"));
    EXPECT_TRUE(Where(first, "created").isEmpty());
    EXPECT_EQ(2, SceneEntry(first, QStringLiteral("lamp")).value(QStringLiteral("goz_imports")).toInt());
    EXPECT_EQ(1, SceneEntry(first, QStringLiteral("vase")).value(QStringLiteral("goz_imports")).toInt());
    EXPECT_EQ(QStringList{"ImportGoZToObject: Vase_1.GoZ"}, Notes(first));
    EXPECT_EQ((QStringList{"Desk_Lamp", "Vase", "Rock", "Desk_Lamp_1", "Vase_1"}), TableNames(first));
}

QByteArray ScriptData(const char* name)
{
    // The script runs' data, beside the demo's in the source tree.
    QFile file(QStringLiteral(MVGOZ_DEMO_DIR "/../../tests/data/scripts/") + QLatin1String(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return file.readAll();
}

QStringList ArgsOf(const QJsonObject& report, const char* operation, int argument)
{
    QStringList values;
    for (const QJsonValue& call : report.value(QStringLiteral("call_log")).toArray()) {
        if (call.toObject().value(QStringLiteral("operation")).toString() == QLatin1String(operation)) {
            values << call.toObject().value(QStringLiteral("args")).toArray().at(argument).toString();
        }
    }
    return values;
}

TEST_F(hostRoundTrip, AnExpressionGoesToTheStandInAndComesBackTwiceTheSecondTimeRelinked)
{
    const QString pose = QStringLiteral("C:/Users/Public/Pixologic/GoZProjects/Default/Ava_Tearline.mvMotionPlus");
    const QJsonObject report = RunHost(ScriptData("face-scene.json"), R"({"steps": [
        {"step": "raise_data_changed", "edit_blend_shape": true},
        {"step": "trigger", "action": "qtExpressionGoZAction"},
        {"step": "click", "widget": "qtGoZButton"},
        {"step": "wait_goz_return"},
        {"step": "set_checked", "widget": "qtAdjustEyeOcclusionCheckBox", "checked": false},
        {"step": "set_checked", "widget": "qtAdjustTearlineCheckBox", "checked": false},
        {"step": "click", "widget": "qtImportButton"},
        {"step": "trigger", "action": "qtExpressionGoZAction"},
        {"step": "table_combo_choose", "table": "qtFMGoZToZBrushTableWidget", "row": 0, "column": 1,
         "text": "[MVGoZBursh] Relink"},
        {"step": "table_combo_choose", "table": "qtFMGoZToZBrushTableWidget", "row": 1, "column": 1,
         "text": "[MVGoZBursh] Relink"},
        {"step": "click", "widget": "qtGoZButton"},
        {"step": "wait_goz_return"},
        {"step": "click", "widget": "qtImportButton"}
    ]})");
    EXPECT_TRUE(report.value(QStringLiteral("ok")).toBool()) << QJsonDocument(report.value(QStringLiteral("steps")).toArray()).toJson().toStdString();
    const QJsonArray returns = report.value(QStringLiteral("goz_returns")).toArray();
    ASSERT_EQ(2, returns.size());
    EXPECT_EQ(3, returns.at(0).toObject().value(QStringLiteral("raised_by_step")).toInt());
    EXPECT_EQ(11, returns.at(1).toObject().value(QStringLiteral("raised_by_step")).toInt());
    EXPECT_TRUE(report.value(QStringLiteral("message_boxes")).toArray().isEmpty());

    // The pose is named after the first face mesh sent; the relinking send replaces it.
    EXPECT_EQ((QStringList{pose, pose}), ArgsOf(report, "SaveMotionFile", 1));
    EXPECT_EQ((QStringList{pose, pose}), ArgsOf(report, "LoadFile", 0)) << "each import loads the pose of its send";
    QStringList poses;
    for (const QJsonValue& file : report.value(QStringLiteral("files")).toArray()) {
        if (file.toObject().value(QStringLiteral("path")).toString().endsWith(QLatin1String(".mvMotionPlus"))) {
            poses << file.toObject().value(QStringLiteral("path")).toString();
        }
    }
    EXPECT_EQ(QStringList{pose}, poses) << "no second pose beside the first";

    // Relinked face meshes go out under their names again; the teeth under new part names.
    EXPECT_EQ((QStringList{"[Ava_Tearline]", "[Ava_Brow]", "[FM_Base_Upper_Teeth, FM_Base_Lower_Teeth]", "[Ava_Tearline]",
                           "[Ava_Brow]", "[FM_Base_Upper_Teeth_1, FM_Base_Lower_Teeth_1]"}),
              ArgsOf(report, "ExportGoZ", 3));
    EXPECT_EQ((QStringList{"Ava_Tearline.GoZ", "Ava_Brow.GoZ", "FM_Base_Upper_Teeth.GoZ", "FM_Base_Lower_Teeth.GoZ",
                           "Ava_Tearline.GoZ", "Ava_Brow.GoZ", "FM_Base_Upper_Teeth_1.GoZ", "FM_Base_Lower_Teeth_1.GoZ"}),
              ArgsOf(report, "UpdateMeshFromGoZ", 1));
    // Sculpted twice by the stand-in's scale of 2; unchecked eye options fit and make nothing.
    const QJsonObject brow = SceneEntry(report, QStringLiteral("ava_brow"));
    EXPECT_EQ(QJsonDocument::fromJson("[[-4, 12, 0], [4, 14, 0]]").array(),
              brow.value(QStringLiteral("mesh_after")).toObject().value(QStringLiteral("bbox")).toArray());
    EXPECT_EQ(2, brow.value(QStringLiteral("goz_imports")).toInt());
    EXPECT_TRUE(ArgsOf(report, "CreateEyeElement", 0).isEmpty());
    EXPECT_TRUE(ArgsOf(report, "AdjustTearline", 0).isEmpty());
}

} // namespace

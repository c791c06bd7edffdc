// Script runs of the real plug-in through the mvgoz-host program and the ZBrush stand-ins:
// each case runs a scene and a script of tests/data/scripts, ZBrush's return comes back
// through the return launcher (no event is raised by hand), and the case checks the report.
#include "QtPrinters.h"
#include "ReportJson.h"
#include "TestFiles.h"

#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <ostream>

namespace {

using namespace MV::Test;

const QString kProject = QStringLiteral("C:/Users/Public/Pixologic/GoZProjects/Default/");
const QString kPleaseSelect = QStringLiteral("[MVGoZBursh] Please Select");
const QString kErrorTarget = QStringLiteral("[MVGoZBursh] Error target");

QString DataFile(const char* name)
{
    return QStringLiteral(MVGOZ_SCRIPT_DATA_DIR "/") + QLatin1String(name);
}

// The scene file with some keys of some objects set otherwise: {"id": {"key": value}}.
QByteArray PatchedScene(const QByteArray& scene, const char* patch)
{
    if (patch == nullptr) {
        return scene;
    }
    QJsonObject root = QJsonDocument::fromJson(scene).object();
    const QJsonObject changes = QJsonDocument::fromJson(patch).object();
    EXPECT_FALSE(changes.isEmpty()) << "unreadable scene patch " << patch;
    QJsonArray objects = Array(root, "objects");
    for (int i = 0; i < objects.size(); ++i) {
        QJsonObject object = objects.at(i).toObject();
        const QJsonObject keys = changes.value(Text(object, "id")).toObject();
        for (auto it = keys.begin(); it != keys.end(); ++it) {
            object.insert(it.key(), it.value());
        }
        objects[i] = object;
    }
    root.insert(QStringLiteral("objects"), objects);
    return QJsonDocument(root).toJson();
}

struct CRun
{
    int m_iExitCode = -1;
    QByteArray m_kOutput;
    QJsonObject m_kReport;
};

CRun RunHost(const char* scene, const char* script, const char* patch)
{
    CRun run;
    QTemporaryDir folder;
    const QString scenePath = folder.filePath(QStringLiteral("scene.json"));
    const QString reportPath = folder.filePath(QStringLiteral("report.json"));
    WriteFile(scenePath, PatchedScene(ReadFile(DataFile(scene)), patch));
    QProcess host;
    host.setProcessChannelMode(QProcess::MergedChannels);
    host.start(QStringLiteral(MVGOZ_HOST_PROGRAM),
               {QStringLiteral("run"), QStringLiteral("--plugin"), QStringLiteral(MVGOZ_PLUGIN_MODULE),
                QStringLiteral("--scene"), scenePath, QStringLiteral("--script"), DataFile(script),
                QStringLiteral("--report"), reportPath});
    if (!host.waitForFinished(90000)) {
        host.kill();
        host.waitForFinished();
        ADD_FAILURE() << "mvgoz-host did not finish";
    }
    run.m_iExitCode = host.exitStatus() == QProcess::NormalExit ? host.exitCode() : -1;
    run.m_kOutput = host.readAll();
    run.m_kReport = QJsonDocument::fromJson(ReadFile(reportPath)).object();
    return run;
}

QList<QJsonObject> Calls(const QJsonObject& report, const char* operation)
{
    QList<QJsonObject> calls;
    for (const QJsonValue& call : Array(report, "call_log")) {
        if (Text(call.toObject(), "operation") == QLatin1String(operation)) {
            calls << call.toObject();
        }
    }
    return calls;
}

// The arguments of every call of an operation, each joined by commas.
QStringList CallArgs(const QJsonObject& report, const char* operation)
{
    QStringList args;
    for (const QJsonObject& call : Calls(report, operation)) {
        args << Strings(call.value(QStringLiteral("args"))).join(QLatin1Char(','));
    }
    return args;
}

QJsonObject SceneEntry(const QJsonObject& report, const char* id)
{
    return Entry(report, "scene", "id", QLatin1String(id));
}

QStringList Changed(const QJsonObject& report)
{
    QStringList ids;
    for (const QJsonValue& entry : Array(report, "scene")) {
        if (entry.toObject().value(QStringLiteral("mesh_changed")).toBool()) {
            ids << Text(entry.toObject(), "id");
        }
    }
    return ids;
}

QJsonObject Cell(const QJsonObject& report, int dump, int row, int column)
{
    const QJsonObject table = Array(report, "table_dumps").at(dump).toObject();
    return Array(Array(table, "rows").at(row).toObject(), "cells").at(column).toObject();
}

// A dialog dump's widget by name; the dialog itself under its own name.
QJsonObject Widget(const QJsonObject& report, int dump, const char* name)
{
    return Entry(Array(report, "dialog_dumps").at(dump).toObject(), "widgets", "name", QLatin1String(name));
}

bool Shown(const QJsonObject& report, int dump)
{
    return Array(report, "dialog_dumps").at(dump).toObject().value(QStringLiteral("visible")).toBool();
}

bool Flag(const QJsonObject& object, const char* key)
{
    return object.value(QLatin1String(key)).toBool();
}

struct ScriptCase
{
    const char* m_szName;
    const char* m_szScene;
    const char* m_szScript;
    const char* m_szScenePatch; // {"id": {"key": value}} or null
    std::function<void(const QJsonObject&)> m_fnCheck;
};

void PrintTo(const ScriptCase& c, std::ostream* out)
{
    *out << c.m_szName;
}

const char kProps[] = "props-scene.json";
const char kCharacter[] = "character-scene.json";
const char kFace[] = "face-scene.json";

void CheckFaceUpdated(const QJsonObject& report)
{
    EXPECT_EQ(Changed(report), (QStringList{"ava_brow", "ava_tearline", "ava_teeth"}));
    EXPECT_EQ(SceneEntry(report, "ava_teeth").value(QStringLiteral("goz_imports")).toInt(), 2)
        << "both returned teeth parts update the teeth";
    // ZBrush (the stand-in) doubles every vertex.
    EXPECT_EQ(SceneEntry(report, "ava_brow").value(QStringLiteral("mesh_after")).toObject().value(QStringLiteral("bbox")),
              QJsonDocument::fromJson("[[-2, 6, 0], [2, 7, 0]]").array());
}

const ScriptCase kCases[] = {
    // --- the receive dialog
    {"ExclusiveUpdateTargetsSwapAndTheImportFollows", kProps, "receive-swap.json", nullptr,
     [](const QJsonObject& r) {
         EXPECT_EQ(Text(Cell(r, 0, 0, 2), "text"), "Desk Lamp");
         EXPECT_EQ(Text(Cell(r, 0, 1, 2), "text"), "Vase");
         EXPECT_EQ(Text(Cell(r, 1, 0, 2), "text"), "Vase") << "the row that had the lamp takes the vase row's vase";
         EXPECT_EQ(Text(Cell(r, 1, 1, 2), "text"), "Desk Lamp");
         EXPECT_EQ(CallArgs(r, "ImportGoZToObject"),
                   (QStringList{"vase,Desk_Lamp.GoZ,false,0,false,0,1", "lamp,Vase.GoZ,false,0,false,1024,1"}));
         EXPECT_EQ(Text(SceneEntry(r, "lamp"), "last_goz_file"), kProject + "Vase.GoZ");
     }},
    {"PleaseSelectLeavesTheRowWithoutTargetAndImportShowsTheTargetError", kProps, "receive-please-select.json", nullptr,
     [](const QJsonObject& r) {
         EXPECT_EQ(Text(Cell(r, 0, 1, 2), "text"), kPleaseSelect);
         EXPECT_EQ(Text(Cell(r, 0, 0, 2), "text"), "Desk Lamp") << "no other row changes";
         EXPECT_EQ(Messages(r), QStringList{kErrorTarget});
         EXPECT_TRUE(Calls(r, "ImportGoZToObject").isEmpty());
         EXPECT_TRUE(Calls(r, "CreatePropFromGoZ").isEmpty());
         EXPECT_TRUE(Calls(r, "FinishGoZImport").isEmpty());
         EXPECT_TRUE(Shown(r, 0)) << "the dialog stays open after the refusal";
         EXPECT_TRUE(Changed(r).isEmpty());
     }},
    // The lamp has no texture, the vase has one; the lamp row offers both props of its type.
    {"RowsOfferTexturesAndTargetsAsTheirMeshesAllow", kProps, "receive-rows.json", nullptr,
     [](const QJsonObject& r) {
         for (int column : {4, 5}) {
             EXPECT_FALSE(Cell(r, 0, 0, column).contains(QStringLiteral("widget"))) << "lamp, column " << column;
             EXPECT_TRUE(Cell(r, 0, 0, column).value(QStringLiteral("text")).isNull()) << "lamp, column " << column;
         }
         EXPECT_EQ(Text(Cell(r, 0, 1, 4), "widget"), "QCheckBox") << "the textured vase";
         // Sizes up to the smaller edge, then Custom; the chosen size is imported.
         const QJsonObject sizes = Cell(r, 0, 1, 5);
         EXPECT_EQ(Strings(sizes.value(QStringLiteral("items"))), (QStringList{"512 x 512", "1024 x 1024", "Custom"}));
         EXPECT_EQ(Text(sizes, "text"), "1024 x 1024");
         EXPECT_EQ(Text(Cell(r, 0, 0, 1), "text"), "Update");
         EXPECT_EQ(Strings(Cell(r, 0, 0, 2).value(QStringLiteral("items"))),
                   (QStringList{"Desk Lamp", "Vase", kPleaseSelect}));
         EXPECT_EQ(Text(Cell(r, 0, 0, 2), "text"), "Vase");
         EXPECT_EQ(CallArgs(r, "ImportGoZToObject"),
                   (QStringList{"vase,Desk_Lamp.GoZ,false,0,false,0,1", "vase,Vase.GoZ,true,0,false,512,1"}));
     }},
    {"AnUpdateRowWithoutLinkedObjectHoldsOnlyItsTargetDisabled", kProps, "receive-fixed-target.json", nullptr,
     [](const QJsonObject& r) {
         EXPECT_EQ(Text(Cell(r, 0, 0, 0), "text"), "Crate");
         EXPECT_EQ(Text(Cell(r, 0, 0, 1), "text"), "Create Prop") << "no scene target has the crate's type";
         EXPECT_TRUE(Flag(Cell(r, 0, 0, 2), "enabled"));
         const QJsonObject target = Cell(r, 1, 0, 2);
         EXPECT_EQ(Text(Cell(r, 1, 0, 1), "text"), "Update");
         EXPECT_FALSE(Flag(target, "enabled"));
         EXPECT_EQ(Strings(target.value(QStringLiteral("items"))), QStringList{"Desk Lamp"});
     }},
    {"UncheckingTheMeshOfANewPropDropsItsTextureAndCheckingItBringsItBack", kProps, "receive-texture-toggle.json",
     nullptr,
     [](const QJsonObject& r) {
         const struct
         {
             bool m_bMesh;
             bool m_bTexture;
             bool m_bTextureEnabled;
         } states[] = {{true, true, true}, {false, false, false}, {true, true, true}};
         for (int dump = 0; dump < 3; ++dump) {
             SCOPED_TRACE(dump);
             EXPECT_EQ(Flag(Cell(r, dump, 1, 3), "checked"), states[dump].m_bMesh);
             EXPECT_EQ(Flag(Cell(r, dump, 1, 4), "checked"), states[dump].m_bTexture);
             EXPECT_EQ(Flag(Cell(r, dump, 1, 4), "enabled"), states[dump].m_bTextureEnabled);
         }
         EXPECT_EQ(CallArgs(r, "CreatePropFromGoZ"), QStringList{"Vase.GoZ,true,1024,1"});
         EXPECT_TRUE(Flag(SceneEntry(r, "goz_prop_1"), "created"));
     }},
    {"ACreateClothRowDisablesThePoseSection", kCharacter, "receive-cloth-pose.json", nullptr,
     [](const QJsonObject& r) {
         const bool enabled[] = {false, true, false}; // Create Cloth, Create Prop, Create Cloth again
         for (int dump = 0; dump < 3; ++dump) {
             EXPECT_EQ(Flag(Widget(r, dump, "qtPoseGroupBox"), "enabled"), enabled[dump]) << dump;
         }
         const QJsonObject table = Widget(r, 0, "qtFMGoZBackFromZBrushTableWidget");
         EXPECT_EQ(Text(Array(table, "cells").at(0).toArray().at(1).toObject(), "text"), "Create Cloth");
     }},
    {"AMeshUnderAParentOfTypeFourOrThirtySixOffersNoTexture", kCharacter, "receive-parent-texture.json", nullptr,
     [](const QJsonObject& r) {
         const struct
         {
             const char* m_szMesh;
             bool m_bTexture;
         } rows[] = {{"Stool", true}, {"Hero_Hat", false}, {"Gum", false}}; // parent types 0, 4, 36
         for (int row = 0; row < 3; ++row) {
             SCOPED_TRACE(rows[row].m_szMesh);
             EXPECT_EQ(Text(Cell(r, 0, row, 0), "text"), rows[row].m_szMesh);
             EXPECT_EQ(Text(Cell(r, 0, row, 1), "text"), "Update");
             EXPECT_EQ(Cell(r, 0, row, 4).contains(QStringLiteral("widget")), rows[row].m_bTexture);
             EXPECT_EQ(Cell(r, 0, row, 5).contains(QStringLiteral("widget")), rows[row].m_bTexture);
         }
     }},

    // --- the expression round trip and its checks, in their order
    {"ExpressionRoundTripUpdatesTheFaceLoadsTheMotionAndFitsTheEyes", kFace, "expression-round-trip.json", nullptr,
     [](const QJsonObject& r) {
         EXPECT_TRUE(Messages(r).isEmpty());
         EXPECT_TRUE(Shown(r, 0)) << "the expression dialog takes the return";
         EXPECT_FALSE(Shown(r, 1)) << "the receive dialog stays hidden";
         EXPECT_FALSE(Shown(r, 2)) << "Import closes the expression dialog";
         EXPECT_EQ(CallArgs(r, "SaveMotionFile"), QStringList{"ava," + kProject + "Ava_Tearline.mvMotionPlus"})
             << "the pose is named after the first face mesh sent";
         const QList<QJsonObject> loads = Calls(r, "LoadFile");
         ASSERT_EQ(loads.size(), 1);
         EXPECT_EQ(Strings(loads[0].value(QStringLiteral("args"))).value(0), kProject + "Ava_Tearline.mvMotionPlus");
         EXPECT_FALSE(loads[0].contains(QStringLiteral("note"))) << "the motion was there to load";
         CheckFaceUpdated(r);
         // No eye occlusion: made and fitted twice; the tear line fitted once.
         EXPECT_EQ(CallArgs(r, "CreateEyeElement"), QStringList{"ava,49"});
         EXPECT_EQ(SceneEntry(r, "ava_element_49").value(QStringLiteral("fittings")).toInt(), 2);
         EXPECT_EQ(SceneEntry(r, "ava_tearline").value(QStringLiteral("fittings")).toInt(), 1);
         // An avatar of kind 4 rebuilds its conform and resets the spring the brow is bound to.
         EXPECT_EQ(CallArgs(r, "RebuildAvatarConform"), QStringList{"ava,0,[ava_tearline, ava_brow, ava_teeth]"});
         EXPECT_EQ(CallArgs(r, "ResetController"), QStringList{"ava_spring,0"});
     }},
    {"AnAvatarOfAnotherKindGetsNoConformRebuild", kFace, "expression-round-trip.json", R"({"ava": {"kind": 1}})",
     [](const QJsonObject& r) {
         CheckFaceUpdated(r);
         EXPECT_TRUE(Calls(r, "RebuildAvatarConform").isEmpty());
         EXPECT_TRUE(Calls(r, "ResetController").isEmpty());
         EXPECT_EQ(CallArgs(r, "UpdateAvatarMorph"), QStringList{"ava,true"});
     }},
    {"ARoundTripOfOtherObjectsHidesTheEyeOptionsAndFitsNothing", kFace, "expression-round-trip.json",
     R"({"ava_brow": {"pick_owner": "face_rig"}, "ava_tearline": {"pick_owner": "face_rig"},
         "ava_teeth": {"pick_owner": "face_rig"}})",
     [](const QJsonObject& r) {
         EXPECT_TRUE(Shown(r, 0));
         for (const char* box : {"qtAdjustEyeOcclusionCheckBox", "qtAdjustTearlineCheckBox"}) {
             EXPECT_FALSE(Flag(Widget(r, 0, box), "visible")) << box;
             EXPECT_TRUE(Flag(Widget(r, 0, box), "checked")) << box << ": checked, but not offered";
         }
         for (const char* operation : {"CreateEyeElement", "AdjustEyeOcclusion", "AdjustEyeOcclusionBlend", "AdjustTearline"}) {
             EXPECT_TRUE(Calls(r, operation).isEmpty()) << operation;
         }
         EXPECT_EQ(Changed(r), QStringList{"face_rig"});
     }},
    {"NotInEditModeButAnExpressionShowsItsMessage", kFace, "expression-not-in-edit-mode.json", nullptr,
     [](const QJsonObject& r) {
         EXPECT_EQ(Messages(r), QStringList{"[MVGOZBursh] Expression GoZ: Not in Edit Expression Mode."});
         EXPECT_FALSE(Shown(r, 0));
         EXPECT_FALSE(Shown(r, 1)) << "an expression is no ordinary return";
         EXPECT_TRUE(Changed(r).isEmpty());
     }},
    {"EditingButNoExpressionShowsItsMessageAndLeavesTheReturnToTheReceiveDialog", kFace,
     "expression-no-expression.json", nullptr,
     [](const QJsonObject& r) {
         EXPECT_EQ(Messages(r), QStringList{"[MVGOZBursh] Expression GoZ: No Expression Goz."});
         EXPECT_FALSE(Shown(r, 0));
         EXPECT_TRUE(Shown(r, 1));
     }},
    {"NeitherEditingNorAnExpressionSaysNothing", kFace, "expression-neither.json", nullptr,
     [](const QJsonObject& r) {
         EXPECT_TRUE(Messages(r).isEmpty());
         EXPECT_FALSE(Shown(r, 0));
         EXPECT_TRUE(Shown(r, 1)) << "the receive dialog takes the hat";
     }},
    {"AFaceMeshLeftOutAsksForAllMeshes", kFace, "expression-return-all.json", nullptr,
     [](const QJsonObject& r) {
         EXPECT_EQ(Messages(r), QStringList{"[MVGOZBursh] Expression GoZ: Please return all Mesh"});
         EXPECT_FALSE(Shown(r, 0));
         EXPECT_FALSE(Shown(r, 1));
         EXPECT_TRUE(Calls(r, "UpdateMeshFromGoZ").isEmpty());
     }},

    // --- the expression dialog
    {"AnUpdateLeftWithoutTargetShowsTheTargetErrorAndKeepsTheDialogOpen", kFace, "expression-error-target.json",
     nullptr,
     [](const QJsonObject& r) {
         EXPECT_EQ(Messages(r), QStringList{kErrorTarget});
         EXPECT_TRUE(Shown(r, 0));
         EXPECT_TRUE(Calls(r, "UpdateMeshFromGoZ").isEmpty());
         EXPECT_TRUE(Calls(r, "LoadFile").isEmpty());
         EXPECT_TRUE(Changed(r).isEmpty());
     }},
    {"AMotionThatDoesNotLoadLeavesTheMeshesImported", kFace, "expression-missing-motion.json", nullptr,
     [](const QJsonObject& r) {
         const QList<QJsonObject> loads = Calls(r, "LoadFile");
         ASSERT_EQ(loads.size(), 1);
         EXPECT_EQ(Text(loads[0], "injected"), "0x80000000");
         CheckFaceUpdated(r);
         EXPECT_FALSE(Shown(r, 0));
     }},
};

class ScriptRun : public ::testing::TestWithParam<ScriptCase>
{
};

TEST_P(ScriptRun, ShowsInTheReport)
{
    const ScriptCase& c = GetParam();
    const CRun run = RunHost(c.m_szScene, c.m_szScript, c.m_szScenePatch);
    const QJsonObject& report = run.m_kReport;
    ASSERT_FALSE(report.isEmpty()) << run.m_kOutput.toStdString();
    EXPECT_EQ(run.m_iExitCode, 0) << run.m_kOutput.toStdString();
    EXPECT_TRUE(Array(report, "errors").isEmpty()) << QJsonDocument(Array(report, "errors")).toJson().toStdString();
    QStringList stepNames;
    for (const QJsonValue& step : Array(report, "steps")) {
        EXPECT_EQ(Text(step.toObject(), "status"), "ok") << Text(step.toObject(), "error").toStdString();
        stepNames << Text(step.toObject(), "step");
    }
    EXPECT_FALSE(stepNames.contains(QStringLiteral("raise_goz_data_updated"))) << "the stand-in brings the return";
    const QJsonArray returns = Array(report, "goz_returns");
    ASSERT_EQ(returns.size(), 1);
    const int raisedBy = returns.at(0).toObject().value(QStringLiteral("raised_by_step")).toInt(-1);
    EXPECT_EQ(stepNames.value(raisedBy), "wait_goz_return");
    for (const QJsonValue& box : Array(report, "message_boxes")) {
        EXPECT_EQ(box.toObject().value(QStringLiteral("kind")).toInt(), 2);
        EXPECT_EQ(Text(box.toObject(), "buttons"), "0x00000400");
        EXPECT_EQ(Text(box.toObject(), "title"), "");
    }
    c.m_fnCheck(report);
}

INSTANTIATE_TEST_SUITE_P(Runs, ScriptRun, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<ScriptCase>& info) { return info.param.m_szName; });

} // namespace

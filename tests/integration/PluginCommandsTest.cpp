#include "CPluginHost.h"
#include "CPluginInterface.h"
#include "CReferenceHost.h"
#include "CReport.h"
#include "CRunSession.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QDialog>
#include <QMenu>
#include <QToolBar>
#include <QFile>
#include <QMainWindow>
#include <QPluginLoader>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace MV::Host;

namespace {

const QByteArray kScene = R"({
  "objects": [
    {"id": "hero", "name": "Hero", "kind": 1, "node_type": 4, "avatar_type": 4, "character_tag": "Standard"},
    {"id": "hero_eyeocc", "name": "Hero_EyeOcclusion", "kind": 2, "node_type": 49, "parent": "hero"},
    {"id": "hero_tear", "name": "Hero_Tearline", "kind": 2, "node_type": 50, "parent": "hero"},
    {"id": "hero_hair", "name": "Hero_Hair", "kind": 2, "node_type": 35, "parent": "hero"},
    {"id": "hero_teeth", "name": "Hero_Teeth", "kind": 2, "node_type": 36, "parent": "hero"},
    {"id": "legacy", "name": "Legacy", "kind": 1, "node_type": 4, "avatar_type": 4, "character_tag": "Old"},
    {"id": "k1", "kind": 1}, {"id": "k2", "kind": 2}, {"id": "k3", "kind": 3},
    {"id": "k14", "kind": 14}, {"id": "k18", "kind": 18}, {"id": "k7", "kind": 7},
    {"id": "k0", "kind": 0}, {"id": "k19", "kind": 19}, {"id": "kbig", "kind": 4294967295},
    {"id": "typed2", "kind": 7, "node_type": 2, "avatar_type": 2},
    {"id": "untyped2", "kind": 7, "avatar_type": 2, "has_node_type": false},
    {"id": "typed9", "kind": 3, "node_type": 9, "avatar_type": 9}
  ],
  "supported_character_tags": ["Standard"],
  "registry": {"SOFTWARE\\Quorvane\\Figmora\\4.0": {"Main Program": "C:\\Figmora\\Figmora.exe"}}
})";

// sandbox: the scene's "sandbox" object, or empty for none.
QJsonObject RunSteps(const QByteArray& steps, bool installZBrush = true, const QJsonObject& sandbox = {})
{
    CRunSession session;
    QString error;
    const QByteArray script = "{\"watchdog_ms\": 15000, \"steps\": " + steps + "}";
    QJsonObject scene = QJsonDocument::fromJson(kScene).object();
    if (!sandbox.isEmpty()) {
        scene.insert(QStringLiteral("sandbox"), sandbox);
    }
    EXPECT_EQ(session.Prepare(QJsonDocument(scene).toJson(), script, error), QV::kOk) << error.toStdString();
    CRunOptions options;
    options.m_strPlugin = QStringLiteral(MVGOZ_PLUGIN_MODULE);
    options.m_bInstallZBrush = installZBrush;
    CReport report;
    session.Execute(options, report);
    return report.ToJson();
}

// "goz/expression" enabled state of the last snapshot.
QString LastState(const QJsonObject& report)
{
    const QJsonArray snapshots = report.value(QStringLiteral("action_snapshots")).toArray();
    if (snapshots.isEmpty()) {
        return QStringLiteral("<no snapshot>");
    }
    bool goz = false;
    bool expression = false;
    for (const QJsonValue& action : snapshots.last().toObject().value(QStringLiteral("actions")).toArray()) {
        const QJsonObject a = action.toObject();
        if (a.value(QStringLiteral("name")).toString() == QLatin1String("qtGoZAction")) {
            goz = a.value(QStringLiteral("enabled")).toBool();
        }
        if (a.value(QStringLiteral("name")).toString() == QLatin1String("qtExpressionGoZAction")) {
            expression = a.value(QStringLiteral("enabled")).toBool();
        }
    }
    return QStringLiteral("%1/%2").arg(goz ? "goz" : "-", expression ? "expr" : "-");
}

QStringList Messages(const QJsonObject& report)
{
    QStringList texts;
    for (const QJsonValue& box : report.value(QStringLiteral("message_boxes")).toArray()) {
        texts << box.toObject().value(QStringLiteral("text")).toString();
    }
    return texts;
}

QStringList Operations(const QJsonObject& report)
{
    QStringList operations;
    for (const QJsonValue& call : report.value(QStringLiteral("call_log")).toArray()) {
        operations << call.toObject().value(QStringLiteral("operation")).toString();
    }
    return operations;
}

bool HasFile(const QJsonObject& report, const QString& path)
{
    for (const QJsonValue& file : report.value(QStringLiteral("files")).toArray()) {
        if (file.toObject().value(QStringLiteral("path")).toString() == path) {
            return true;
        }
    }
    return false;
}

TEST(PluginModule, MetadataNamesTheInterfaceAndClass)
{
    QPluginLoader loader(QStringLiteral(MVGOZ_PLUGIN_MODULE));
    const QJsonObject meta = loader.metaData();
    EXPECT_EQ(meta.value(QStringLiteral("IID")).toString(), QStringLiteral("Quorvane.Mirava.CPluginInterface/7.0"));
    EXPECT_EQ(meta.value(QStringLiteral("className")).toString(), QStringLiteral("CGoZBrushPlugin"));
}

TEST(PluginModule, LoadsWithItsMenusToolBarAndRegistration)
{
    const QJsonObject report = RunSteps("[]");
    const QJsonObject plugin = report.value(QStringLiteral("plugin")).toObject();
    ASSERT_TRUE(plugin.value(QStringLiteral("loaded")).toBool()) << QJsonDocument(plugin).toJson().toStdString();
    EXPECT_EQ(plugin.value(QStringLiteral("initialize_result")).toString(), QStringLiteral("0x00000000"));
    EXPECT_EQ(plugin.value(QStringLiteral("finalize_result")).toString(), QStringLiteral("0x00000001"));
    EXPECT_EQ(plugin.value(QStringLiteral("compatible_apps")).toString(), QStringLiteral("0x01800007"));
    QStringList menus;
    for (const QJsonValue& menu : plugin.value(QStringLiteral("menus")).toArray()) {
        menus << menu.toObject().value(QStringLiteral("name")).toString();
    }
    EXPECT_EQ(menus, (QStringList{QStringLiteral("qtFileMenu"), QStringLiteral("menuGoZ")}));
    ASSERT_EQ(plugin.value(QStringLiteral("tool_bars")).toArray().size(), 1);
    EXPECT_EQ(plugin.value(QStringLiteral("tool_bars")).toArray()[0].toObject().value(QStringLiteral("name")),
              QStringLiteral("qtPluginsToolBar"));
    EXPECT_EQ(report.value(QStringLiteral("plugin_registrations")).toArray().size(), 1);
    const QStringList ops = Operations(report);
    EXPECT_LT(ops.indexOf(QStringLiteral("GetMainWindow")), ops.indexOf(QStringLiteral("GetPluginValue")));
}

struct AvailabilityCase
{
    const char* name;
    const char* steps;
    const char* state;
};

void PrintTo(const AvailabilityCase& c, std::ostream* out)
{
    *out << c.name;
}

class CommandAvailability : public ::testing::TestWithParam<AvailabilityCase>
{
};

TEST_P(CommandAvailability, FollowsSelectionAndModes)
{
    const AvailabilityCase& c = GetParam();
    const QJsonObject report = RunSteps(QByteArray("[") + c.steps + ", {\"step\": \"snapshot_actions\"}]");
    EXPECT_EQ(LastState(report), QLatin1String(c.state));
}

INSTANTIATE_TEST_SUITE_P(
    Commands, CommandAvailability,
    ::testing::Values(
        AvailabilityCase{"NothingSelected", R"({"step": "select", "ids": ["k1"]}, {"step": "select", "ids": []})", "-/-"},
        AvailabilityCase{"Kind1", R"({"step": "select", "ids": ["k1"]})", "goz/-"},
        AvailabilityCase{"Kinds2_3_14_18", R"({"step": "select", "ids": ["k2", "k3", "k14", "k18"]})", "goz/-"},
        AvailabilityCase{"Kind7", R"({"step": "select", "ids": ["k7"]})", "-/-"},
        AvailabilityCase{"Kind0", R"({"step": "select", "ids": ["k0"]})", "-/-"},
        AvailabilityCase{"Kind19", R"({"step": "select", "ids": ["k19"]})", "-/-"},
        AvailabilityCase{"HugeKind", R"({"step": "select", "ids": ["kbig"]})", "-/-"},
        AvailabilityCase{"OneBadObjectDisablesAll", R"({"step": "select", "ids": ["k1", "k7", "k2"]})", "-/-"},
        AvailabilityCase{"NodeTypeOverridesKind", R"({"step": "select", "ids": ["typed2"]})", "goz/-"},
        AvailabilityCase{"NoNodeTypeKeepsKindTest", R"({"step": "select", "ids": ["untyped2"]})", "-/-"},
        AvailabilityCase{"OtherNodeTypeKeepsKindTest", R"({"step": "select", "ids": ["typed9"]})", "goz/-"},
        AvailabilityCase{"SupportedCharacter", R"({"step": "select", "ids": ["hero"]})", "goz/-"},
        AvailabilityCase{"RefusedCharacterTag", R"({"step": "select", "ids": ["legacy"]})", "-/-"},
        AvailabilityCase{"ExpressionEditing",
                         R"({"step": "set_current_avatar", "id": "hero"},
                            {"step": "set_expression_editing", "id": "hero", "editing": true},
                            {"step": "select", "ids": ["k1"]})",
                         "-/expr"},
        AvailabilityCase{"ExpressionEditingNothingSelected",
                         R"({"step": "set_current_avatar", "id": "hero"},
                            {"step": "set_expression_editing", "id": "hero", "editing": true},
                            {"step": "raise_data_changed", "edit_blend_shape": true})",
                         "-/expr"},
        AvailabilityCase{"OtherDataEventIgnored",
                         R"({"step": "select", "ids": ["k1"]}, {"step": "set_current_avatar", "id": "hero"},
                            {"step": "set_expression_editing", "id": "hero", "editing": true},
                            {"step": "raise_data_changed", "edit_blend_shape": false})",
                         "goz/-"},
        AvailabilityCase{"PlaybackDisablesBoth",
                         R"({"step": "select", "ids": ["hero"]}, {"step": "set_playing", "playing": true})", "-/-"},
        AvailabilityCase{"StopReevaluates",
                         R"({"step": "set_playing", "playing": true}, {"step": "select", "ids": ["hero"]},
                            {"step": "set_playing", "playing": true}, {"step": "set_playing", "playing": false})",
                         "goz/-"},
        AvailabilityCase{"FailingTagLeavesActions",
                         R"({"step": "select", "ids": ["k1"]},
                            {"step": "fail", "operation": "GetCharacterTag", "code": "0x80000000"},
                            {"step": "select", "ids": ["hero"]})",
                         "goz/-"},
        AvailabilityCase{"FailingQueryLeavesActions",
                         R"({"step": "select", "ids": ["k1"]},
                            {"step": "fail", "operation": "GetAvatarType", "code": "0x80000000"},
                            {"step": "select", "ids": ["k7"]})",
                         "goz/-"}),
    [](const ::testing::TestParamInfo<AvailabilityCase>& info) { return std::string(info.param.name); });

// Each way the bridge install fails has its message, and the send dialog stays closed.
TEST(PluginCommands, BridgeInstallFailuresStopBeforeTheDialog)
{
    const struct
    {
        const char* name;
        bool zbrush;
        const char* appFolder;
        const char* message;
    } cases[] = {
        {"no ZBrush", false, "absent", "[MVGoZBursh] Please install ZBrush"},
        {"folder can't be made", true, "file", "[MVGoZBursh] Fail to create dir"},
        {"stale launcher can't be replaced", true, "locked_launcher", "[MVGoZBursh] Fail to copy necessary files"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QJsonObject report = RunSteps(R"([{"step": "select", "ids": ["k1"]},
                                           {"step": "trigger", "action": "qtGoZAction"},
                                           {"step": "dump_dialog"}])",
                                            c.zbrush, QJsonObject{{"goz_app_folder", c.appFolder}});
        EXPECT_EQ(Messages(report), QStringList{QLatin1String(c.message)});
        EXPECT_FALSE(HasFile(report, QStringLiteral("C:/Users/Public/Pixologic/GoZApps/Figmora/GoZ_Config.txt")));
        const QJsonArray steps = report.value(QStringLiteral("steps")).toArray();
        EXPECT_EQ(steps.last().toObject().value(QStringLiteral("status")).toString(), QStringLiteral("failed"))
            << "no dialog to dump";
        EXPECT_TRUE(report.value(QStringLiteral("dialog_dumps")).toArray().isEmpty());
    }
}

// Only the expression command sends the expression's pose, whichever way it is given.
TEST(PluginCommands, OnlyExpressionGoZSendsThePose)
{
    const struct
    {
        const char* name;
        const char* command;
        int poseSaves;
    } cases[] = {
        {"GoZ action", R"({"step": "select", "ids": ["hero_hair"]}, {"step": "trigger", "action": "qtGoZAction"})", 0},
        {"Expression GoZ action",
         R"({"step": "set_expression_editing", "id": "hero", "editing": true},
            {"step": "select", "ids": ["hero_hair"]},
            {"step": "trigger", "action": "qtExpressionGoZAction"})", 1},
        {"Expression GoZ event", R"({"step": "raise_expression_goz"})", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QJsonObject report = RunSteps(R"([{"step": "set_current_avatar", "id": "hero"}, )" + QByteArray(c.command) +
                                            R"(, {"step": "click", "widget": "qtGoZButton"}])");
        ASSERT_TRUE(report.value(QStringLiteral("ok")).toBool())
            << QJsonDocument(report.value(QStringLiteral("steps")).toArray()).toJson().toStdString();
        EXPECT_EQ(Operations(report).count(QStringLiteral("SaveMotionFile")), c.poseSaves);
        EXPECT_GT(Operations(report).count(QStringLiteral("ExportGoZ")), 0);
    }
}

TEST(PluginCommands, FailedExpressionGoZKeepsTheFacePartsSelected)
{
    const QJsonObject report = RunSteps(R"([{"step": "select", "ids": ["k1"]},
                                       {"step": "set_current_avatar", "id": "hero"},
                                       {"step": "raise_expression_goz"}])",
                                        false);
    EXPECT_EQ(Messages(report), QStringList{QStringLiteral("[MVGoZBursh] Please install ZBrush")});
    QStringList selection;
    for (const QJsonValue& id : report.value(QStringLiteral("final_state")).toObject().value(QStringLiteral("selection")).toArray()) {
        selection << id.toString();
    }
    EXPECT_EQ(selection, (QStringList{QStringLiteral("hero_eyeocc"), QStringLiteral("hero_tear"),
                                      QStringLiteral("hero_hair"), QStringLiteral("hero_teeth")}));
}

TEST(PluginCommands, GoZInstallsTheBridgeAndOpensTheDialog)
{
    const QJsonObject report = RunSteps(R"([{"step": "select", "ids": ["k1"]},
                                       {"step": "trigger", "action": "qtGoZAction"},
                                       {"step": "dump_dialog"},
                                       {"step": "click", "widget": "qtCancelButton"}])");
    EXPECT_TRUE(Messages(report).isEmpty());
    EXPECT_TRUE(HasFile(report, QStringLiteral("C:/Users/Public/Pixologic/GoZApps/Figmora/GoZBrushToFM.exe")));
    EXPECT_TRUE(HasFile(report, QStringLiteral("C:/Users/Public/Pixologic/GoZApps/Figmora/GoZ_Config.txt")));
    ASSERT_EQ(report.value(QStringLiteral("dialog_dumps")).toArray().size(), 1);
    EXPECT_TRUE(report.value(QStringLiteral("ok")).toBool());
}

// What the GoZ command checks before it installs the bridge and opens the dialog.
TEST(PluginCommands, CommandChecksTheSelectionFirst)
{
    const struct
    {
        const char* name;
        const char* steps;
        bool opens;
        const char* message;
    } cases[] = {
        {"supported character", R"({"step": "select", "ids": ["hero"]})", true, nullptr},
        {"refused character", R"({"step": "select", "ids": ["k1"]},
                                 {"step": "fail", "operation": "GetAvatarType", "code": "0x80000000", "nth": 1},
                                 {"step": "select", "ids": ["legacy"]})", false, "[MVGoZBursh] Unsupport Avatar"},
        {"selection unreadable", R"({"step": "select", "ids": ["k1"]},
                                    {"step": "fail", "operation": "GetSelectedObjects", "code": "0x80000000"})",
         false, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QJsonObject report = RunSteps("[" + QByteArray(c.steps) + R"(, {"step": "trigger", "action": "qtGoZAction"},
                                            {"step": "dump_dialog"}])");
        EXPECT_EQ(Messages(report), c.message ? QStringList{QLatin1String(c.message)} : QStringList());
        EXPECT_EQ(report.value(QStringLiteral("dialog_dumps")).toArray().size(), c.opens ? 1 : 0);
        EXPECT_EQ(HasFile(report, QStringLiteral("C:/Users/Public/Pixologic/GoZApps/Figmora/GoZ_Config.txt")), c.opens);
    }
}

TEST(PluginCommands, ReadyForCommandRefusalIsSilent)
{
    const QJsonObject report = RunSteps(R"([{"step": "select", "ids": ["k1"]},
                                       {"step": "fail", "operation": "ReadyForCommand", "code": "0x80000000"},
                                       {"step": "trigger", "action": "qtGoZAction"}])");
    EXPECT_TRUE(Messages(report).isEmpty());
    EXPECT_FALSE(Operations(report).contains(QStringLiteral("GetSelectedObjects")) &&
                 Operations(report).lastIndexOf(QStringLiteral("GetSelectedObjects")) >
                     Operations(report).lastIndexOf(QStringLiteral("ReadyForCommand")));
    EXPECT_TRUE(report.value(QStringLiteral("dialog_dumps")).toArray().isEmpty());
}

TEST(PluginCommands, ExpressionGoZReplacesTheSelectionWithFaceParts)
{
    const QJsonObject report = RunSteps(R"([{"step": "select", "ids": ["k1"]},
                                       {"step": "set_current_avatar", "id": "hero"},
                                       {"step": "raise_expression_goz"},
                                       {"step": "dump_dialog"},
                                       {"step": "click", "widget": "qtCancelButton"}])");
    const QJsonObject state = report.value(QStringLiteral("final_state")).toObject();
    QStringList selection;
    for (const QJsonValue& id : state.value(QStringLiteral("selection")).toArray()) {
        selection << id.toString();
    }
    EXPECT_EQ(selection, (QStringList{QStringLiteral("hero_eyeocc"), QStringLiteral("hero_tear"),
                                      QStringLiteral("hero_hair"), QStringLiteral("hero_teeth")}));
    EXPECT_EQ(report.value(QStringLiteral("dialog_dumps")).toArray().size(), 1);
}

TEST(PluginCommands, ExpressionGoZWithoutCharacterDoesNothing)
{
    const QJsonObject report = RunSteps(R"([{"step": "select", "ids": ["k1"]},
                                       {"step": "clear_log"},
                                       {"step": "raise_expression_goz"}])");
    EXPECT_EQ(Operations(report), QStringList{QStringLiteral("GetCurrentAvatar")});
    EXPECT_TRUE(Messages(report).isEmpty());
}

QJsonObject FileEntry(const QJsonObject& report, const QString& path)
{
    for (const QJsonValue& file : report.value(QStringLiteral("files")).toArray()) {
        if (file.toObject().value(QStringLiteral("path")).toString() == path) {
            return file.toObject();
        }
    }
    return {};
}

// The whole send half as a user drives it: send, send again, relink the row, send.
TEST(PluginSendScript, SecondSendRelinksThroughTheTable)
{
    const QJsonObject report = RunSteps(R"([{"step": "select", "ids": ["k3"]},
        {"step": "trigger", "action": "qtGoZAction"},
        {"step": "click", "widget": "qtGoZButton"},
        {"step": "wait_processes", "count": 2, "timeout_ms": 10000},
        {"step": "trigger", "action": "qtGoZAction"},
        {"step": "dump_dialog"},
        {"step": "table_combo_choose", "table": "qtFMGoZToZBrushTableWidget", "row": 0, "column": 1,
         "text": "[MVGoZBursh] Relink"},
        {"step": "dump_dialog"},
        {"step": "click", "widget": "qtGoZButton"},
        {"step": "wait_processes", "count": 4, "timeout_ms": 10000}])");
    ASSERT_TRUE(report.value(QStringLiteral("ok")).toBool()) << QJsonDocument(report.value(QStringLiteral("steps")).toArray()).toJson().toStdString();
    const QJsonArray dumps = report.value(QStringLiteral("dialog_dumps")).toArray();
    ASSERT_EQ(dumps.size(), 2);
    QJsonObject template0;
    QJsonObject template1;
    for (const QJsonValue& widget : dumps[0].toObject().value(QStringLiteral("widgets")).toArray()) {
        if (widget.toObject().value(QStringLiteral("name")).toString() == QLatin1String("qtTemplateComboBox")) {
            template0 = widget.toObject();
        }
    }
    for (const QJsonValue& widget : dumps[1].toObject().value(QStringLiteral("widgets")).toArray()) {
        if (widget.toObject().value(QStringLiteral("name")).toString() == QLatin1String("qtTemplateComboBox")) {
            template1 = widget.toObject();
        }
    }
    EXPECT_EQ(template0.value(QStringLiteral("current_index")).toInt(), 0);
    EXPECT_TRUE(template0.value(QStringLiteral("hidden_rows")).toArray().isEmpty()) << "every row can relink";
    EXPECT_EQ(template1.value(QStringLiteral("current_index")).toInt(), 1) << "the one row now relinks";
    EXPECT_EQ(FileEntry(report, QStringLiteral("C:/Users/Public/Pixologic/GoZApps/Figmora/GoZ_ObjectList.txt"))
                  .value(QStringLiteral("text"))
                  .toString(),
              QStringLiteral("C:/Users/Public/Pixologic/GoZProjects/Default/k3\n"));
    EXPECT_EQ(report.value(QStringLiteral("processes")).toArray().size(), 4);
}

TEST(PluginModule, MissingResourceFileFailsInitialize)
{
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    const QString copy = folder.path() + QStringLiteral("/MVGoZBrush.so");
    ASSERT_TRUE(QFile::copy(QStringLiteral(MVGOZ_PLUGIN_MODULE), copy));
    CReferenceHost host;
    {
        CPluginHost plugins(host);
        EXPECT_EQ(plugins.Load(copy), QV::kFail);
        EXPECT_TRUE(plugins.HasInitializeResult());
        EXPECT_EQ(plugins.InitializeResult(), QV::kFail);
    }
    EXPECT_TRUE(host.MainWindow()->findChildren<QDialog*>().isEmpty()) << "no dialog before the form loads";
}

} // namespace

namespace {

// The host may hand in lists that already hold entries; the plug-in's go after them, and one
// the host has destroyed is handed on as a null in its place.
TEST(PluginModule, ListGettersAppendAndHandOnDestroyedEntriesAsNull)
{
    CReferenceHost host;
    CPluginHost plugins(host);
    ASSERT_EQ(plugins.Load(QStringLiteral(MVGOZ_PLUGIN_MODULE)), QV::kOk);
    CPluginInterface* plugin = plugins.Plugin();
    ASSERT_NE(plugin, nullptr);

    QMenu earlierMenu;
    QList<QMenu*> menus{&earlierMenu};
    ASSERT_EQ(plugin->GetMenusList(menus), QV::kOk);
    ASSERT_GE(menus.size(), 2);
    EXPECT_EQ(menus.first(), &earlierMenu);
    const int menuCount = menus.size();

    QToolBar earlierBar;
    QList<QToolBar*> bars{&earlierBar};
    ASSERT_EQ(plugin->GetToolBarsList(bars), QV::kOk);
    ASSERT_GE(bars.size(), 2);
    EXPECT_EQ(bars.first(), &earlierBar);

    delete menus.last();
    QList<QMenu*> again;
    ASSERT_EQ(plugin->GetMenusList(again), QV::kOk);
    ASSERT_EQ(again.size(), menuCount - 1);
    EXPECT_EQ(again.last(), nullptr);
    EXPECT_NE(again.first(), nullptr);
}

} // namespace

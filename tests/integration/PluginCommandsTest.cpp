#include "CPluginHost.h"
#include "CPluginInterface.h"
#include "CReferenceHost.h"
#include "CReport.h"
#include "CRunSession.h"
#include "ReportJson.h"

#include <QDialog>
#include <QFile>
#include <QJsonDocument>
#include <QMainWindow>
#include <QMenu>
#include <QPluginLoader>
#include <QTemporaryDir>
#include <QToolBar>

#include <gtest/gtest.h>

using namespace MV::Host;
using namespace MV::Test;

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
    const QJsonArray snapshots = Array(report, "action_snapshots");
    if (snapshots.isEmpty()) {
        return QStringLiteral("<no snapshot>");
    }
    const auto enabled = [&snapshots](const char* name) {
        return Entry(snapshots.last().toObject(), "actions", "name", QLatin1String(name))
            .value(QStringLiteral("enabled"))
            .toBool();
    };
    return QStringLiteral("%1/%2").arg(enabled("qtGoZAction") ? "goz" : "-",
                                       enabled("qtExpressionGoZAction") ? "expr" : "-");
}

const QString kAppFolder = QStringLiteral("C:/Users/Public/Pixologic/GoZApps/Figmora/");

bool HasFile(const QJsonObject& report, const QString& path)
{
    return !Entry(report, "files", "path", path).isEmpty();
}

int DialogDumps(const QJsonObject& report)
{
    return Array(report, "dialog_dumps").size();
}

TEST(PluginModule, LoadsWithItsMetadataMenusToolBarAndRegistration)
{
    const QJsonObject meta = QPluginLoader(QStringLiteral(MVGOZ_PLUGIN_MODULE)).metaData();
    EXPECT_EQ(Text(meta, "IID"), QStringLiteral("Quorvane.Mirava.CPluginInterface/7.0"));
    EXPECT_EQ(Text(meta, "className"), QStringLiteral("CGoZBrushPlugin"));

    const QJsonObject report = RunSteps("[]");
    const QJsonObject plugin = report.value(QStringLiteral("plugin")).toObject();
    ASSERT_TRUE(plugin.value(QStringLiteral("loaded")).toBool()) << QJsonDocument(plugin).toJson().toStdString();
    EXPECT_EQ(Text(plugin, "initialize_result"), QStringLiteral("0x00000000"));
    EXPECT_EQ(Text(plugin, "finalize_result"), QStringLiteral("0x00000001"));
    EXPECT_EQ(Text(plugin, "compatible_apps"), QStringLiteral("0x01800007"));
    EXPECT_EQ(Field(plugin, "menus", "name"), (QStringList{QStringLiteral("qtFileMenu"), QStringLiteral("menuGoZ")}));
    EXPECT_EQ(Field(plugin, "tool_bars", "name"), QStringList{QStringLiteral("qtPluginsToolBar")});
    EXPECT_EQ(Array(report, "plugin_registrations").size(), 1);
    const QStringList ops = Operations(report);
    EXPECT_LT(ops.indexOf(QStringLiteral("GetMainWindow")), ops.indexOf(QStringLiteral("GetPluginValue")));
}

// Which commands are enabled after each script, as its last snapshot shows them.
TEST(PluginCommands, AvailabilityFollowsSelectionAndModes)
{
    const struct
    {
        const char* name;
        const char* steps;
        const char* state;
    } cases[] = {
        {"NothingSelected", R"({"step": "select", "ids": ["k1"]}, {"step": "select", "ids": []})", "-/-"},
        {"Kind1", R"({"step": "select", "ids": ["k1"]})", "goz/-"},
        {"Kinds2_3_14_18", R"({"step": "select", "ids": ["k2", "k3", "k14", "k18"]})", "goz/-"},
        {"Kind7", R"({"step": "select", "ids": ["k7"]})", "-/-"},
        {"Kind0", R"({"step": "select", "ids": ["k0"]})", "-/-"},
        {"Kind19", R"({"step": "select", "ids": ["k19"]})", "-/-"},
        {"HugeKind", R"({"step": "select", "ids": ["kbig"]})", "-/-"},
        {"OneBadObjectDisablesAll", R"({"step": "select", "ids": ["k1", "k7", "k2"]})", "-/-"},
        {"NodeTypeOverridesKind", R"({"step": "select", "ids": ["typed2"]})", "goz/-"},
        {"NoNodeTypeKeepsKindTest", R"({"step": "select", "ids": ["untyped2"]})", "-/-"},
        {"OtherNodeTypeKeepsKindTest", R"({"step": "select", "ids": ["typed9"]})", "goz/-"},
        {"SupportedCharacter", R"({"step": "select", "ids": ["hero"]})", "goz/-"},
        {"RefusedCharacterTag", R"({"step": "select", "ids": ["legacy"]})", "-/-"},
        {"ExpressionEditing",
         R"({"step": "set_current_avatar", "id": "hero"},
            {"step": "set_expression_editing", "id": "hero", "editing": true},
            {"step": "select", "ids": ["k1"]})",
         "-/expr"},
        {"ExpressionEditingNothingSelected",
         R"({"step": "set_current_avatar", "id": "hero"},
            {"step": "set_expression_editing", "id": "hero", "editing": true},
            {"step": "raise_data_changed", "edit_blend_shape": true})",
         "-/expr"},
        {"OtherDataEventIgnored",
         R"({"step": "select", "ids": ["k1"]}, {"step": "set_current_avatar", "id": "hero"},
            {"step": "set_expression_editing", "id": "hero", "editing": true},
            {"step": "raise_data_changed", "edit_blend_shape": false})",
         "goz/-"},
        {"PlaybackDisablesBoth",
         R"({"step": "select", "ids": ["hero"]}, {"step": "set_playing", "playing": true})", "-/-"},
        {"StopReevaluates",
         R"({"step": "set_playing", "playing": true}, {"step": "select", "ids": ["hero"]},
            {"step": "set_playing", "playing": true}, {"step": "set_playing", "playing": false})",
         "goz/-"},
        {"FailingTagLeavesActions",
         R"({"step": "select", "ids": ["k1"]},
            {"step": "fail", "operation": "GetCharacterTag", "code": "0x80000000"},
            {"step": "select", "ids": ["hero"]})",
         "goz/-"},
        {"FailingQueryLeavesActions",
         R"({"step": "select", "ids": ["k1"]},
            {"step": "fail", "operation": "GetAvatarType", "code": "0x80000000"},
            {"step": "select", "ids": ["k7"]})",
         "goz/-"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QJsonObject report = RunSteps(QByteArray("[") + c.steps + ", {\"step\": \"snapshot_actions\"}]");
        EXPECT_EQ(LastState(report), QLatin1String(c.state));
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
        ASSERT_TRUE(report.value(QStringLiteral("ok")).toBool()) << QJsonDocument(Array(report, "steps")).toJson().toStdString();
        EXPECT_EQ(Operations(report).count(QStringLiteral("SaveMotionFile")), c.poseSaves);
        EXPECT_GT(Operations(report).count(QStringLiteral("ExportGoZ")), 0);
    }
}

// What the GoZ command checks before it opens the dialog: the selection, then the bridge
// install, each way of failing with its message and the dialog left closed.
TEST(PluginCommands, CommandChecksTheSelectionAndTheBridgeFirst)
{
    const char* k1 = R"({"step": "select", "ids": ["k1"]})";
    const struct
    {
        const char* name;
        const char* steps;
        bool opens;
        const char* message;
        bool zbrush;
        const char* appFolder; // the sandbox's goz_app_folder, or null
    } cases[] = {
        {"prop", k1, true, nullptr, true, nullptr},
        {"supported character", R"({"step": "select", "ids": ["hero"]})", true, nullptr, true, nullptr},
        {"refused character", R"({"step": "select", "ids": ["k1"]},
                                 {"step": "fail", "operation": "GetAvatarType", "code": "0x80000000", "nth": 1},
                                 {"step": "select", "ids": ["legacy"]})", false, "[MVGoZBursh] Unsupport Avatar", true, nullptr},
        {"selection unreadable", R"({"step": "select", "ids": ["k1"]},
                                    {"step": "fail", "operation": "GetSelectedObjects", "code": "0x80000000"})",
         false, nullptr, true, nullptr},
        {"host not ready", R"({"step": "select", "ids": ["k1"]},
                              {"step": "fail", "operation": "ReadyForCommand", "code": "0x80000000"})",
         false, nullptr, true, nullptr},
        {"no ZBrush", k1, false, "[MVGoZBursh] Please install ZBrush", false, "absent"},
        {"folder can't be made", k1, false, "[MVGoZBursh] Fail to create dir", true, "file"},
        {"stale launcher can't be replaced", k1, false, "[MVGoZBursh] Fail to copy necessary files", true, "locked_launcher"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QJsonObject report =
            RunSteps("[" + QByteArray(c.steps) + R"(, {"step": "trigger", "action": "qtGoZAction"},
                     {"step": "dump_dialog"}, {"step": "click", "widget": "qtCancelButton"}])",
                     c.zbrush, c.appFolder ? QJsonObject{{"goz_app_folder", c.appFolder}} : QJsonObject());
        EXPECT_EQ(Messages(report), c.message ? QStringList{QLatin1String(c.message)} : QStringList());
        EXPECT_EQ(DialogDumps(report), c.opens ? 1 : 0);
        EXPECT_EQ(HasFile(report, kAppFolder + QStringLiteral("GoZ_Config.txt")), c.opens);
        EXPECT_TRUE(!c.opens || HasFile(report, kAppFolder + QStringLiteral("GoZBrushToFM.exe")));
    }
}

// The expression command selects the face parts; they stay selected when the send stops.
TEST(PluginCommands, ExpressionGoZSelectsTheFaceParts)
{
    for (const bool zbrush : {true, false}) {
        SCOPED_TRACE(zbrush ? "ZBrush installed" : "no ZBrush");
        const QJsonObject report = RunSteps(R"([{"step": "select", "ids": ["k1"]},
                                           {"step": "set_current_avatar", "id": "hero"},
                                           {"step": "raise_expression_goz"},
                                           {"step": "dump_dialog"},
                                           {"step": "click", "widget": "qtCancelButton"}])",
                                            zbrush);
        EXPECT_EQ(Messages(report), zbrush ? QStringList() : QStringList{QStringLiteral("[MVGoZBursh] Please install ZBrush")});
        EXPECT_EQ(Strings(report.value(QStringLiteral("final_state")).toObject().value(QStringLiteral("selection"))),
                  (QStringList{QStringLiteral("hero_eyeocc"), QStringLiteral("hero_tear"), QStringLiteral("hero_hair"),
                               QStringLiteral("hero_teeth")}));
        EXPECT_EQ(DialogDumps(report), zbrush ? 1 : 0);
    }
}

TEST(PluginCommands, ExpressionGoZWithoutCharacterDoesNothing)
{
    const QJsonObject report = RunSteps(R"([{"step": "select", "ids": ["k1"]},
                                       {"step": "clear_log"},
                                       {"step": "raise_expression_goz"}])");
    EXPECT_EQ(Operations(report), QStringList{QStringLiteral("GetCurrentAvatar")});
    EXPECT_TRUE(Messages(report).isEmpty());
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

// What the scene, script and command line readers accept, and every refusal with its message.
#include "CCommandLine.h"
#include "CScene.h"
#include "CScript.h"
#include "HostTestSupport.h"

#include <QDir>

#include <gtest/gtest.h>

using namespace MV::Host;

namespace {

// A malformed input and a piece of the message it must give.
using CBadInputs = std::initializer_list<std::pair<const char*, const char*>>;

TEST(hostScene, RejectsBadInputWithItsMessageAndKeepsThePreviousContent)
{
    const CBadInputs cases = {
        {"{", "not valid JSON at line 1, column 2"},
        {"{\n  \"objects\": [\n    {\"id\": \"a\",}\n  ]\n}", "not valid JSON at line 3"},
        {"[]", "the scene must be a JSON object"},
        {R"({"objects": {}})", "\"objects\" must be an array"},
        {R"({"objects": [3]})", "objects[0]: must be an object"},
        {R"({"objects": [{"id": ""}]})", "objects[0]: \"id\" must be a non-empty string"},
        {R"({"objects": [{"id": "a"}, {"id": "a"}]})", "objects[1]: duplicate id \"a\""},
        {R"({"objects": [{"id": "a", "nmae": "x"}]})", "objects[0] (\"a\"): unknown key \"nmae\""},
        {R"({"objects": [{"id": "a", "kind": -1}]})", "\"kind\" must be an integer from 0 to 4294967295"},
        {R"({"objects": [{"id": "a", "kind": 1.5}]})", "\"kind\" must be an integer"},
        {R"({"objects": [{"id": "a", "node_type": 2147483648}]})", "\"node_type\" must be an integer"},
        {R"({"objects": [{"id": "a", "polygon_supported": 1}]})", "\"polygon_supported\" must be true or false"},
        {R"({"objects": [{"id": "a", "lod_meshes": ["x", 2]}]})", "\"lod_meshes\" must be an array of strings"},
        {R"({"objects": [{"id": "a", "texture_sizes": {"x": 3}}]})", "\"texture_sizes\" entry \"x\""},
        {R"({"objects": [{"id": "a", "texture_sizes": [1]}]})", "\"texture_sizes\" must map"},
        {R"({"objects": [{"id": "a", "parent": "zz"}]})", "object \"a\": unknown parent \"zz\""},
        {R"({"objects": [{"id": "a", "parent": "b"}, {"id": "b", "parent": "a"}]})", "parents form a cycle"},
        {R"({"objects": [{"id": "a", "parent": "a"}]})", "parents form a cycle"},
        {R"({"objects": [{"id": "a", "meshes": ["m"]}]})", "object \"a\" meshes: unknown object \"m\""},
        {R"({"objects": [{"id": "a", "pick_owner": "q"}]})", "pick_owner: unknown object \"q\""},
        {R"({"objects": [{"id": "a"}], "selection": ["q"]})", "selection: unknown object \"q\""},
        {R"({"current_avatar": "ghost"})", "current_avatar: unknown object \"ghost\""},
        {R"({"selecton": []})", "top level: unknown key \"selecton\""},
        {R"({"playing": "yes"})", "\"playing\" must be true or false"},
        {R"({"registry": []})", "\"registry\" must map sub-keys"},
        {R"({"registry": {"K": {"V": 3}}})", "registry \"K\" value \"V\": data must be a string"},
        {R"({"registry": {"K": {"V": "a\tb"}}})", "tabs and line breaks cannot be stored"},
        {R"({"registry": {"K": {"V": {"data": "1"}}}})", "data must be a string or {\"data\", \"type\"}"},
        {R"({"registry": {"K\nL": {"V": "x"}}})", "tabs and line breaks cannot be stored"},
        {R"({"registry": {"#SOFTWARE": {"V": "x"}}})", "registry \"#SOFTWARE\": a sub-key must not start with \"#\""},
        {R"({"split_mesh_names": [{"bit": 1}]})", "split_mesh_names[0]: \"name\" must be a non-empty string"},
        {R"({"split_mesh_names": [{"name": "x", "bit": -2}]})", "split_mesh_names[0]: \"bit\" must be"},
        {R"({"split_mesh_names": {"name": "x"}})", "\"split_mesh_names\" must be an array"},
        {R"({"objects": [{"id": "a", "mesh": []}]})", "objects[0] (\"a\"): \"mesh\": must be an object"},
        {R"({"objects": [{"id": "a", "mesh": {"vertices": [[0,0,0]], "faces": [[0,0,2]]}}]})",
                  "objects[0] (\"a\"): \"mesh\": face 0 names vertex 2, but there are 1"},
        {R"({"objects": [{"id": "a", "pose": 3}]})", "\"pose\" must be a string"},
        {R"({"sandbox": []})", "\"sandbox\" must be an object"},
        {R"({"sandbox": {"zbrush": true}})", "sandbox: unknown key \"zbrush\""},
        {R"({"sandbox": {"pixologic_folder": "no"}})", "sandbox: \"pixologic_folder\" must be true or false"},
        {R"({"sandbox": {"current_directory": "/etc"}})", "\"current_directory\" must be a folder inside the sandbox"},
        {R"({"sandbox": {"current_directory": "C:/a/../../.."}})", "\"current_directory\" must be a folder inside"},
        {R"({"sandbox": {"texture_size_ini": 512}})", "\"texture_size_ini\" must be the file's text, or null"},
        {R"({"zbrush_return": {"scale": -1}})", "zbrush_return: \"scale\" must be a number above 0"},
        {R"({"zbrush_return": []})", "zbrush_return: must be an object"},
    };
    for (const auto& item : cases) {
        CScene scene;
        QString error;
        ASSERT_EQ(QV::kOk, scene.Parse(R"({"objects": [{"id": "keep"}]})", error)) << error.toStdString();
        EXPECT_EQ(QV::kInvalidArg, scene.Parse(item.first, error)) << item.first;
        EXPECT_TRUE(error.contains(QString::fromUtf8(item.second))) << item.first << "\n" << error.toStdString();
        EXPECT_TRUE(scene.ObjectCount() == 1 && scene.Object(0).m_strId == QLatin1String("keep")) << item.first;
    }
}

TEST(hostScene, AppliesDefaultsDerivedFlagsAndPicks)
{
    const auto scene = MV::Host::Test::ParseScene(R"({"objects": [
        {"id": "plain"}, {"id": "char", "node_type": 4}, {"id": "typed_off", "node_type": 2, "has_node_type": false},
        {"id": "avatar", "avatar_type": 4, "character": false}, {"id": "empty", "meshes": []}
    ], "selection": ["empty", "plain"]})");
    ASSERT_TRUE(scene);
    const auto find = [&scene](const char* id) { return scene->Find(QString::fromLatin1(id)); };
    EXPECT_EQ(QStringLiteral("plain"), find("plain")->m_strName);
    EXPECT_TRUE(find("plain")->m_bPolygonSupported);
    EXPECT_FALSE(find("plain")->m_bHasNodeType || find("plain")->m_bCharacter);
    EXPECT_EQ(QStringList{QStringLiteral("plain")}, find("plain")->m_kMeshes);
    EXPECT_TRUE(find("empty")->m_kMeshes.isEmpty());
    EXPECT_TRUE(find("char")->m_bHasNodeType && find("char")->m_bCharacter);
    EXPECT_FALSE(find("typed_off")->m_bHasNodeType || find("typed_off")->m_bCharacter);
    EXPECT_FALSE(find("avatar")->m_bCharacter);
    EXPECT_EQ((QStringList{QStringLiteral("empty"), QStringLiteral("plain")}), scene->PickedIds()) << "picks follow the selection";
    const auto own = MV::Host::Test::ParseScene(R"({"objects": [{"id": "a"}], "selection": ["a"], "picks": []})");
    ASSERT_TRUE(own);
    EXPECT_TRUE(own->PickedIds().isEmpty());
}

TEST(hostScene, HandlesStayStableAndForeignHandlesResolveToNothing)
{
    CScene scene;
    QString error;
    ASSERT_EQ(QV::kOk, scene.Parse(R"({"objects": [{"id": "a", "node_type": 4}, {"id": "b", "parent": "a"}]})", error));
    QV::CHandle* a = scene.HandleOf(QStringLiteral("a"));
    ASSERT_NE(nullptr, a);
    CSceneObject added;
    added.m_strId = QStringLiteral("c");
    added.m_strParent = QStringLiteral("b");
    EXPECT_EQ(2, scene.AddObject(added));
    EXPECT_EQ(a, scene.HandleOf(QStringLiteral("a")));
    EXPECT_EQ(QStringList{QStringLiteral("c")}, scene.Find(QStringLiteral("b"))->m_kChildren);
    EXPECT_EQ(QStringLiteral("a"), scene.OwningCharacter(QStringLiteral("c"))) << "the nearest character above";
    EXPECT_EQ(-1, scene.AddObject(added)) << "ids stay unique";
    QV::CHandle foreign(0);
    EXPECT_EQ(-1, scene.IndexOf(&foreign));
    ASSERT_EQ(QV::kOk, scene.Parse(R"({"objects": [{"id": "x"}]})", error));
    EXPECT_EQ(-1, scene.IndexOf(a)) << "a handle of the old content must not name a new object";
}

TEST(hostScript, RejectsBadInputNamingTheStep)
{
    const CBadInputs cases = {
        {"{\"steps\": [", "not valid JSON"},
        {"[]", "must be a JSON object"},
        {"{}", "\"steps\" must be an array"},
        {R"({"steps": [], "watchdog": 5})", "unknown script key \"watchdog\""},
        {R"({"steps": [], "watchdog_ms": 0})", "\"watchdog_ms\" must be an integer from 1 to 3600000"},
        {R"({"steps": [], "watchdog_ms": 3600001})", "\"watchdog_ms\" must be an integer from 1 to 3600000"},
        {R"({"steps": [], "watchdog_ms": 2147483648})", "\"watchdog_ms\" must be an integer from 1"},
        {R"({"steps": ["select"]})", "step 0: must be an object"},
        {R"({"steps": [{"ids": []}]})", "step 0: \"step\" must name the step"},
        {R"({"steps": [{"step": "clear_log"}, {"step": "selec", "ids": []}]})", "step 1: unknown step \"selec\""},
        {R"({"steps": [{"step": "select"}]})", "step 0: select: missing \"ids\""},
        {R"({"steps": [{"step": "select", "ids": "a"}]})", "step 0: select: \"ids\" must be an array of strings"},
        {R"({"steps": [{"step": "select", "ids": [], "id": "a"}]})", "step 0: select: unknown argument \"id\""},
        {R"({"steps": [{"step": "set_playing", "playing": 1}]})", "\"playing\" must be true or false"},
        {R"({"steps": [{"step": "set_current_avatar", "id": 3}]})", "\"id\" must be a string or null"},
        {R"({"steps": [{"step": "wait_processes", "count": -1}]})", "\"count\" must be an integer of 0 or more"},
        {R"({"steps": [{"step": "set_combo_index", "widget": "w", "index": 1.5}]})", "\"index\" must be an integer"},
        {R"({"steps": [{"step": "fail", "operation": "ExportGoz", "code": 1}]})",
                  "fail: the host has no operation \"ExportGoz\""},
        {R"({"steps": [{"step": "fail", "operation": "ExportGoZ", "code": "-1"}]})", "\"code\" must be a 32-bit result code"},
        {R"({"steps": [{"step": "fail", "operation": "ExportGoZ", "code": "0x100000000"}]})", "\"code\" must be"},
        {R"({"steps": [{"step": "fail", "operation": "ExportGoZ", "code": 1, "nth": 0}]})", "\"nth\" must be an integer of 1 or more"},
        {R"({"steps": [{"step": "answer_messages"}]})", "answer_messages: give \"button\" or \"buttons\""},
        {R"({"steps": [{"step": "answer_messages", "buttons": [1, "2"]}]})", "\"buttons\" must be an array of integers"},
        {R"({"steps": [{"step": "table_combo_choose", "table": "t", "row": 0, "column": 1}]})", "missing \"text\""},
        {R"({"steps": [{"step": "click", "widget": "w", "only_if_clicked": true}]})", "\"only_if_clicked\" must be a string"},
        {R"({"steps": [{"step": "table_set_checked", "table": "t", "row": 0, "column": 1}]})", "table_set_checked: missing \"checked\""},
        {R"({"steps": [{"step": "dump_scene", "ids": "hero"}]})", "dump_scene: \"ids\" must be an array of strings"},
        {R"({"steps": [{"step": "wait_goz_return", "timeout_ms": -5}]})", "wait_goz_return: \"timeout_ms\" must be an integer of 0"},
        {R"({"steps": [{"step": "set_zbrush_return"}]})", "set_zbrush_return: missing \"settings\""},
        {R"({"steps": [{"step": "set_zbrush_return", "settings": "all"}]})", "\"settings\" must be an object or null"},
        {R"({"steps": [{"step": "set_zbrush_return", "settings": {"meshes": 3}}]})",
                  "set_zbrush_return: \"settings\": \"meshes\" must be"},
    };
    for (const auto& item : cases) {
        CScript script;
        QString error;
        ASSERT_EQ(QV::kOk, script.Parse(R"({"steps": [{"step": "clear_log"}]})", error));
        EXPECT_EQ(QV::kInvalidArg, script.Parse(item.first, error)) << item.first;
        EXPECT_TRUE(error.contains(QString::fromUtf8(item.second))) << item.first << "\n" << error.toStdString();
        EXPECT_EQ(1, script.Steps().size()) << "a refused script leaves the one before";
    }
}

TEST(hostScript, ReadsTheWatchdogCommentsAndResultCodes)
{
    CScript script;
    QString error;
    ASSERT_EQ(QV::kOk, script.Parse(R"({"comment": "x", "steps": [{"step": "clear_log", "comment": "why"}]})", error))
        << error.toStdString();
    EXPECT_EQ(CScript::kDefaultWatchdogMs, script.WatchdogMs());
    ASSERT_EQ(QV::kOk, script.Parse(R"({"watchdog_ms": 3600000, "steps": []})", error)) << error.toStdString();
    EXPECT_EQ(3600000, script.WatchdogMs());
    const struct { QJsonValue m_kValue; bool m_bOk; QV::Result m_iCode; } codes[] = {
        {QStringLiteral("0x80000005"), true, QV::kOutOfMemory}, {QStringLiteral("0X1"), true, 1},
        {-2147483648.0, true, QV::kFail}, {2147483648.0, true, QV::kFail}, {4294967296.0, false, 0}, {1.5, false, 0},
        {QStringLiteral("12"), false, 0}, {true, false, 0},
    };
    for (const auto& item : codes) {
        QV::Result code = 0;
        EXPECT_EQ(item.m_bOk, CScript::ReadCode(item.m_kValue, code)) << item.m_kValue.toVariant().toString().toStdString();
        EXPECT_EQ(item.m_iCode, item.m_bOk ? code : 0);
    }
}

TEST(hostCommandLine, RejectsWhatItCannotRunAndMakesPathsAbsolute)
{
    const struct { const char* m_szArgs; const char* m_szError; } cases[] = {
        {"", "no command given"},
        {"runn", "unknown command \"runn\""},
        {"run --plugin", "--plugin needs a value"},
        {"run --plugin --scene", "--plugin needs a value"},
        {"run --plugin a --plugin b", "--plugin is given twice"},
        {"run --plgin a", "unknown option \"--plgin\" for run"},
        {"demo --plugin a --no-zbrush", "unknown option \"--no-zbrush\" for demo"},
        {"demo --scene a", "unknown option \"--scene\" for demo"},
        {"run --plugin a --report r", "run needs --scene, --script"},
        {"demo", "demo needs --plugin"},
    };
    CHostCommand command;
    QString error;
    for (const auto& item : cases) {
        const QStringList args = QString::fromLatin1(item.m_szArgs).split(QLatin1Char(' '), Qt::SkipEmptyParts);
        EXPECT_EQ(QV::kInvalidArg, CCommandLine::Parse(args, command, error)) << item.m_szArgs;
        EXPECT_TRUE(error.contains(QString::fromUtf8(item.m_szError))) << error.toStdString();
    }
    ASSERT_EQ(QV::kOk, CCommandLine::Parse(QStringLiteral("run --plugin /p/M.so --scene s.json --script t.json --report r.json "
                                                          "--no-zbrush").split(QLatin1Char(' ')), command, error))
        << error.toStdString();
    EXPECT_EQ(CHostCommand::EKind::Run, command.m_eKind);
    EXPECT_EQ(QStringLiteral("/p/M.so"), command.m_strPlugin);
    EXPECT_EQ(QDir::current().absoluteFilePath(QStringLiteral("s.json")), command.m_strScene);
    EXPECT_TRUE(command.m_bNoZBrush);
}

} // namespace

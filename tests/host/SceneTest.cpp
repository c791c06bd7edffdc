#include "CScene.h"
#include "HostTestSupport.h"

#include <gtest/gtest.h>

using namespace MV::Host;
using MV::Host::Test::CBadInput;

namespace {

class hostSceneErrors : public ::testing::TestWithParam<CBadInput>
{
};

TEST_P(hostSceneErrors, RejectsWithMessageAndKeepsPreviousContent)
{
    CScene scene;
    QString error;
    ASSERT_EQ(QV::kOk, scene.Parse(R"({"objects": [{"id": "keep"}]})", error)) << error.toStdString();

    EXPECT_EQ(QV::kInvalidArg, scene.Parse(GetParam().m_szJson, error));
    EXPECT_TRUE(error.contains(QString::fromUtf8(GetParam().m_szError))) << error.toStdString();
    ASSERT_EQ(1, scene.ObjectCount());
    EXPECT_EQ(QStringLiteral("keep"), scene.Object(0).m_strId);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, hostSceneErrors,
    ::testing::Values(
        CBadInput{"{", "not valid JSON at line 1, column 2"},
        CBadInput{"{\n  \"objects\": [\n    {\"id\": \"a\",}\n  ]\n}", "not valid JSON at line 3"},
        CBadInput{"[]", "the scene must be a JSON object"},
        CBadInput{R"({"objects": {}})", "\"objects\" must be an array"},
        CBadInput{R"({"objects": [3]})", "objects[0]: must be an object"},
        CBadInput{R"({"objects": [{"name": "x"}]})", "objects[0]: \"id\" must be a non-empty string"},
        CBadInput{R"({"objects": [{"id": ""}]})", "objects[0]: \"id\" must be a non-empty string"},
        CBadInput{R"({"objects": [{"id": "a"}, {"id": "a"}]})", "objects[1]: duplicate id \"a\""},
        CBadInput{R"({"objects": [{"id": "a", "nmae": "x"}]})", "objects[0] (\"a\"): unknown key \"nmae\""},
        CBadInput{R"({"objects": [{"id": "a", "kind": -1}]})", "\"kind\" must be an integer from 0 to 4294967295"},
        CBadInput{R"({"objects": [{"id": "a", "kind": 1.5}]})", "\"kind\" must be an integer"},
        CBadInput{R"({"objects": [{"id": "a", "kind": "3"}]})", "\"kind\" must be an integer"},
        CBadInput{R"({"objects": [{"id": "a", "node_type": 2147483648}]})", "\"node_type\" must be an integer"},
        CBadInput{R"({"objects": [{"id": "a", "polygon_supported": 1}]})", "\"polygon_supported\" must be true or false"},
        CBadInput{R"({"objects": [{"id": "a", "lod_meshes": ["x", 2]}]})", "\"lod_meshes\" must be an array of strings"},
        CBadInput{R"({"objects": [{"id": "a", "texture_sizes": {"x": 3}}]})", "\"texture_sizes\" entry \"x\""},
        CBadInput{R"({"objects": [{"id": "a", "texture_sizes": [1]}]})", "\"texture_sizes\" must map"},
        CBadInput{R"({"objects": [{"id": "a", "parent": "zz"}]})", "object \"a\": unknown parent \"zz\""},
        CBadInput{R"({"objects": [{"id": "a", "parent": "b"}, {"id": "b", "parent": "a"}]})", "parents form a cycle"},
        CBadInput{R"({"objects": [{"id": "a", "parent": "a"}]})", "parents form a cycle"},
        CBadInput{R"({"objects": [{"id": "a", "meshes": ["m"]}]})", "object \"a\" meshes: unknown object \"m\""},
        CBadInput{R"({"objects": [{"id": "a", "pick_owner": "q"}]})", "pick_owner: unknown object \"q\""},
        CBadInput{R"({"objects": [{"id": "a"}], "selection": ["q"]})", "selection: unknown object \"q\""},
        CBadInput{R"({"objects": [{"id": "a"}], "picks": ["a", 1]})", "\"picks\" must be an array of strings"},
        CBadInput{R"({"current_avatar": "ghost"})", "current_avatar: unknown object \"ghost\""},
        CBadInput{R"({"selecton": []})", "top level: unknown key \"selecton\""},
        CBadInput{R"({"playing": "yes"})", "\"playing\" must be true or false"},
        CBadInput{R"({"registry": []})", "\"registry\" must map sub-keys"},
        CBadInput{R"({"registry": {"K": {"V": 3}}})", "registry \"K\" value \"V\": data must be a string"},
        CBadInput{R"({"registry": {"K": {"V": "a\tb"}}})", "tabs and line breaks cannot be stored"},
        CBadInput{R"({"registry": {"K": {"V": {"data": "1", "type": "REG\tDWORD"}}}})", "tabs and line breaks"},
        CBadInput{R"({"registry": {"K": {"V": {"data": "1"}}}})", "data must be a string or {\"data\", \"type\"}"},
        CBadInput{R"({"registry": {"K\nL": {"V": "x"}}})", "tabs and line breaks cannot be stored"},
        CBadInput{R"({"registry": {"#SOFTWARE": {"V": "x"}}})", "registry \"#SOFTWARE\": a sub-key must not start with \"#\""},
        CBadInput{R"({"registry": {"K": {"V": "x"}, "#": {}}})", "registry \"#\": a sub-key must not start with \"#\""},
        CBadInput{R"({"split_mesh_names": [{"bit": 1}]})", "split_mesh_names[0]: \"name\" must be a non-empty string"},
        CBadInput{R"({"split_mesh_names": [{"name": "x", "bit": -2}]})", "split_mesh_names[0]: \"bit\" must be"},
        CBadInput{R"({"split_mesh_names": {"name": "x"}})", "\"split_mesh_names\" must be an array"},
        CBadInput{"\xff\xfe{}", "not valid JSON"},
        CBadInput{R"({"objects": [{"id": "a", "mesh": []}]})", "objects[0] (\"a\"): \"mesh\": must be an object"},
        CBadInput{R"({"objects": [{"id": "a", "mesh": {"vertices": [[0,0,0]], "faces": [[0,0,2]]}}]})",
                   "objects[0] (\"a\"): \"mesh\": face 0 names vertex 2, but there are 1"},
        CBadInput{R"({"objects": [{"id": "a", "pose": 3}]})", "\"pose\" must be a string"},
        CBadInput{R"({"sandbox": []})", "\"sandbox\" must be an object"},
        CBadInput{R"({"sandbox": {"zbrush": true}})", "sandbox: unknown key \"zbrush\""},
        CBadInput{R"({"sandbox": {"pixologic_folder": "no"}})", "sandbox: \"pixologic_folder\" must be true or false"},
        CBadInput{R"({"sandbox": {"current_directory": "/etc"}})", "\"current_directory\" must be a folder inside the sandbox"},
        CBadInput{R"({"sandbox": {"current_directory": "C:/a/../../.."}})", "\"current_directory\" must be a folder inside"},
        CBadInput{R"({"sandbox": {"texture_size_ini": 512}})", "\"texture_size_ini\" must be the file's text, or null"},
        CBadInput{R"({"zbrush_return": {"scale": -1}})", "zbrush_return: \"scale\" must be a number above 0"},
        CBadInput{R"({"zbrush_return": []})", "zbrush_return: must be an object"}),
    MV::Host::Test::BadInputName);

TEST(hostScene, AppliesDefaultsAndDerivedFlags)
{
    const auto scene = MV::Host::Test::ParseScene(R"({"objects": [
        {"id": "plain"},
        {"id": "char", "node_type": 4},
        {"id": "typed_off", "node_type": 2, "has_node_type": false},
        {"id": "avatar", "avatar_type": 4, "character": false},
        {"id": "empty", "meshes": []}
    ]})");
    ASSERT_TRUE(scene);
    const CSceneObject* plain = scene->Find(QStringLiteral("plain"));
    ASSERT_NE(nullptr, plain);
    EXPECT_EQ(QStringLiteral("plain"), plain->m_strName);
    EXPECT_TRUE(plain->m_bPolygonSupported);
    EXPECT_FALSE(plain->m_bHasNodeType || plain->m_bCharacter);
    EXPECT_EQ(QStringList{QStringLiteral("plain")}, plain->m_kMeshes);
    EXPECT_TRUE(scene->Find(QStringLiteral("empty"))->m_kMeshes.isEmpty());
    EXPECT_TRUE(scene->Find(QStringLiteral("char"))->m_bHasNodeType && scene->Find(QStringLiteral("char"))->m_bCharacter);
    EXPECT_FALSE(scene->Find(QStringLiteral("typed_off"))->m_bHasNodeType || scene->Find(QStringLiteral("typed_off"))->m_bCharacter);
    EXPECT_FALSE(scene->Find(QStringLiteral("avatar"))->m_bCharacter);
}

TEST(hostScene, PicksFollowTheSelectionUnlessGiven)
{
    const auto following = MV::Host::Test::ParseScene(R"({"objects": [{"id": "a"}, {"id": "b"}], "selection": ["b", "a"]})");
    ASSERT_TRUE(following);
    EXPECT_EQ((QStringList{QStringLiteral("b"), QStringLiteral("a")}), following->PickedIds());

    const auto own = MV::Host::Test::ParseScene(R"({"objects": [{"id": "a"}, {"id": "b"}], "selection": ["b"], "picks": []})");
    ASSERT_TRUE(own);
    EXPECT_TRUE(own->PickedIds().isEmpty());
}

TEST(hostScene, DerivesChildrenAndOwningCharacter)
{
    const auto scene = MV::Host::Test::ParseScene(MV::Host::Test::kBasicScene);
    ASSERT_TRUE(scene);
    EXPECT_EQ((QStringList{QStringLiteral("hero_eye"), QStringLiteral("hero_hair"), QStringLiteral("hero_teeth")}),
              scene->Find(QStringLiteral("hero"))->m_kChildren);
    EXPECT_EQ(QStringLiteral("hero"), scene->OwningCharacter(QStringLiteral("hero_clip")));
    EXPECT_EQ(QStringLiteral("hero"), scene->OwningCharacter(QStringLiteral("hero")));
    EXPECT_TRUE(scene->OwningCharacter(QStringLiteral("box")).isEmpty());
    EXPECT_EQ(512, scene->Find(QStringLiteral("hero"))->m_kTextureSizes.value(2));
}

TEST(hostScene, HandlesStayStableAndForeignHandlesResolveToNothing)
{
    CScene scene;
    QString error;
    ASSERT_EQ(QV::kOk, scene.Parse(R"({"objects": [{"id": "a"}, {"id": "b", "parent": "a"}]})", error));
    QV::CHandle* a = scene.HandleOf(QStringLiteral("a"));
    ASSERT_NE(nullptr, a);

    CSceneObject added;
    added.m_strId = QStringLiteral("c");
    added.m_strParent = QStringLiteral("a");
    EXPECT_EQ(2, scene.AddObject(added));
    EXPECT_EQ(a, scene.HandleOf(QStringLiteral("a")));
    EXPECT_EQ(0, scene.IndexOf(a));
    EXPECT_EQ((QStringList{QStringLiteral("b"), QStringLiteral("c")}), scene.Find(a)->m_kChildren);
    EXPECT_EQ(-1, scene.AddObject(added)) << "ids stay unique";

    QV::CHandle foreign(0);
    EXPECT_EQ(-1, scene.IndexOf(&foreign));
    EXPECT_EQ(nullptr, scene.Find(static_cast<const QV::CHandle*>(nullptr)));

    ASSERT_EQ(QV::kOk, scene.Parse(R"({"objects": [{"id": "x"}]})", error));
    EXPECT_EQ(-1, scene.IndexOf(a)) << "a handle of the old content must not name a new object";
}

} // namespace

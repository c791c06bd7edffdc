#include "CGoZImporter.h"
#include "CGoZReturnReader.h"
#include "CReceiveRecordBuilder.h"
#include "ReceiveFixture.h"

using namespace MV;
using namespace MV::Test;

namespace {

// Candidates in the order they are gathered (kinds 1, 14, 3, 2):
//   0 Hero_Body (parent Hero, avatar type 4)   1 Gum (parent Mouth, 36)
//   2 Rock A (parent Shelf, 1)                 3 Rock B (parent Table, 3)
// "Rock" and "Pebble" are of Rock A's and Rock B's object type; "Crate" matches nothing.
const QByteArray kRecordScene = R"({
  "objects": [
    {"id": "hero", "name": "Hero", "kind": 1, "node_type": 4, "avatar_type": 4, "meshes": ["hero_body"]},
    {"id": "hero_body", "name": "Hero_Body", "parent": "hero", "object_type": 10, "materials": 1,
     "texture_sizes": {"0": 2048, "2": 2048}},
    {"id": "mouth", "name": "Mouth", "kind": 14, "avatar_type": 36, "character": false, "meshes": ["gum"]},
    {"id": "gum", "name": "Gum", "parent": "mouth", "object_type": 12, "materials": 1,
     "texture_sizes": {"0": 512, "2": 512}},
    {"id": "shelf", "name": "Shelf", "kind": 3, "avatar_type": 1, "character": false, "meshes": ["rock_a"]},
    {"id": "rock_a", "name": "Rock A", "parent": "shelf", "object_type": 7},
    {"id": "table", "name": "Table", "kind": 2, "avatar_type": 3, "character": false, "meshes": ["rock_b"]},
    {"id": "rock_b", "name": "Rock B", "parent": "table", "object_type": 7},
    {"id": "hero_teeth", "name": "Hero_Teeth", "parent": "hero", "node_type": 36, "meshes": []},
    {"id": "rock", "name": "Rock", "object_type": 7, "materials": 1, "texture_sizes": {"0": 2048, "2": 1024}},
    {"id": "pebble", "name": "Pebble", "parent": "shelf", "object_type": 7, "materials": 2},
    {"id": "crate", "name": "Crate", "object_type": 8, "materials": 1, "texture_sizes": {"0": 300, "2": 0}},
    {"id": "avatar2", "name": "Acc Avatar", "avatar_type": 2, "character": false, "meshes": []},
    {"id": "avatar3", "name": "Npc", "avatar_type": 3, "character": false, "meshes": []},
    {"id": "avatar0", "name": "Plain", "avatar_type": 0, "character": false, "meshes": []},
    {"id": "avatar1", "name": "Old", "avatar_type": 1, "character": false, "meshes": []}
  ],
  "current_avatar": "hero",
  "split_mesh_names": [{"name": "Hero_Skin"}],
  "extra_mesh_names": ["FM_Teeth"],
  "host_data_folder": "C:\\ProgramData\\Figmora"
})";

const QByteArray kSizes512To2048 = "[GoZTextureSize]\nCount=3\nSize0=512\nSize1=1024\nSize2=2048\n";

QStringList Names(const QV::CArrayList<std::wstring>& list)
{
    return ToStrings(list);
}

QStringList SizeNames(const CZBrushToFMMeshInfo& record)
{
    QStringList names;
    for (std::int32_t size : record.m_kTextureSizes) {
        names << QString::fromStdWString(GetTextureOptionName(size));
    }
    return names;
}

class RecordRules : public ReceiveFixture
{
public:
    void SetUp() override
    {
        ReceiveFixture::SetUp();
        StartHost(kRecordScene);
        WriteTextureSizes(kSizes512To2048);
    }

    QV::Result Build(const QStringList& returned, CZBrushToFMMeshInfoList& records)
    {
        CReceiveRecordBuilder builder(m_pHost.get());
        QV::Result result = builder.InitialAvatarPartMeshName();
        if (QV::Failed(result)) {
            return result;
        }
        CZBrushToFMMeshInfo templateRecord;
        result = builder.MakeTemplateRecord(templateRecord);
        if (QV::Failed(result)) {
            return result;
        }
        QV::CArrayList<std::wstring> files;
        for (const QString& name : returned) {
            files.Add((name + QStringLiteral(".GoZ")).toStdWString());
        }
        return builder.BuildRecords(templateRecord, files, records);
    }
};

TEST(ReceiveRecord, FreshRecordHoldsTheStartingValues)
{
    const CZBrushToFMMeshInfo record;
    EXPECT_TRUE(record.m_strMeshName.empty());
    EXPECT_EQ(record.m_iObjectType, 0);
    EXPECT_EQ(record.m_iParentType, 0);
    EXPECT_TRUE(record.m_kActionNames.IsEmpty());
    EXPECT_TRUE(record.TargetCandidates().IsEmpty());
    EXPECT_EQ(record.m_eAction, ActionUpdate);
    EXPECT_TRUE(record.m_kOfferedTargets.IsEmpty());
    EXPECT_EQ(record.m_iChosenTarget, 0);
    EXPECT_TRUE(record.m_bTakeMesh);
    EXPECT_FALSE(record.m_bTakeTexture);
    EXPECT_TRUE(record.m_kTextureSizes.IsEmpty());
    EXPECT_EQ(record.m_iChosenTextureSize, -1);
    EXPECT_TRUE(record.m_strOwnerName.empty());
}

TEST(ReceiveRecord, ActionStringsAndTextureNamesMapBothWays)
{
    const struct
    {
        int option;
        std::wstring text;
    } actions[] = {{0, L"Update"}, {1, L"Create Acc"}, {2, L"Create Cloth"}, {3, L"Create Prop"}, {4, L""}, {-1, L""}};
    for (const auto& c : actions) {
        EXPECT_EQ(GetStringByActionOption(static_cast<EActionOption>(c.option)), c.text) << c.option;
        if (!c.text.empty()) {
            EXPECT_EQ(GetActionOption(c.text), c.option);
        }
    }
    for (const std::wstring& other : {std::wstring(L"update"), std::wstring(L"Create"), std::wstring()}) {
        const int option = GetActionOption(other);
        EXPECT_TRUE(option < 0 || option > 3) << QString::fromStdWString(other).toStdString();
    }

    const struct
    {
        int size;
        std::wstring name;
    } sizes[] = {{2048, L"2048 x 2048"}, {1024, L"1024 x 1024"}, {0, L"0 x 0"}, {2147483647, L"Custom"}};
    for (const auto& c : sizes) {
        EXPECT_EQ(GetTextureOptionName(c.size), c.name) << c.size;
    }
}

TEST(ReceiveRecord, TextureAndTargetFlagsFollowTheirIndexOnly)
{
    const struct
    {
        int chosenSize;
        bool takeTexture;
        int chosenTarget;
        bool textureEnabled;
        bool hasTarget;
    } cases[] = {{-1, true, -1, false, false}, {-1, false, 0, false, true}, {0, false, 3, true, true},
                 {2, true, -1, true, false}};
    for (const auto& c : cases) {
        CZBrushToFMMeshInfo record;
        record.m_iChosenTextureSize = c.chosenSize;
        record.m_bTakeTexture = c.takeTexture;
        record.m_iChosenTarget = c.chosenTarget;
        EXPECT_EQ(GetTextureEnable(record), c.textureEnabled) << c.chosenSize;
        EXPECT_EQ(HasTarget(record), c.hasTarget) << c.chosenTarget;
    }
}

TEST(ReceiveRecord, RowCheckClearsIndicesThatNameNothing)
{
    CZBrushToFMMeshInfo record;
    record.m_pTargetCandidates = std::make_shared<CTargetCandidateList>(
        CTargetCandidateList{{L"A", nullptr}, {L"B", nullptr}, {L"C", nullptr}});
    const struct
    {
        QV::CArrayList<std::uint32_t> offered;
        int chosen;
        int chosenSize;
        int expectedTarget;
        int expectedSize;
    } cases[] = {
        {{}, 2, -1, 2, -1}, {{}, 3, 0, -1, -1}, {{1, 2}, 1, 0, 1, -1}, {{1, 2}, 2, -1, -1, -1}, {{7}, 0, -1, -1, -1},
    };
    for (const auto& c : cases) {
        CZBrushToFMMeshInfoList records;
        CZBrushToFMMeshInfo copy = record;
        copy.m_kOfferedTargets = c.offered;
        copy.m_iChosenTarget = c.chosen;
        copy.m_iChosenTextureSize = c.chosenSize;
        records.Add(copy);
        ASSERT_EQ(CReceiveRecordBuilder::CheckRows(records), QV::kOk);
        EXPECT_EQ(records[0].m_iChosenTarget, c.expectedTarget) << c.chosen;
        EXPECT_EQ(records[0].m_iChosenTextureSize, c.expectedSize) << c.chosenSize;
    }
}

TEST_F(RecordRules, DefaultActionFollowsTheAvatarType)
{
    const struct
    {
        const char* avatar;
        int expected;
    } cases[] = {{"", ActionCreateProp},         {"avatar2", ActionCreateAcc},   {"avatar3", ActionCreateAcc},
                 {"avatar0", ActionCreateCloth}, {"avatar1", ActionCreateCloth}, {"hero", ActionCreateCloth}};
    CReceiveRecordBuilder builder(m_pHost.get());
    for (const auto& c : cases) {
        SetAvatar(QLatin1String(c.avatar));
        EXPECT_EQ(builder.GetDefaultActionOption(), c.expected) << c.avatar;
    }
    ASSERT_EQ(m_pHost->SetFailure(QStringLiteral("GetAvatarType"), QV::kOutOfRange), QV::kOk);
    EXPECT_EQ(builder.GetDefaultActionOption(), QV::kOutOfRange);
}

TEST_F(RecordRules, RemoveActionOptionNarrowsByParentAndAvatar)
{
    const QStringList all{"Update", "Create Acc", "Create Cloth", "Create Prop"};
    const struct
    {
        int parentType;
        const char* avatar;
        QStringList expected;
    } cases[] = {
        {0, "", {"Update", "Create Prop"}},
        {0, "avatar2", {"Update", "Create Acc", "Create Prop"}},
        {0, "avatar3", {"Update", "Create Acc", "Create Prop"}},
        {0, "hero", all},
        {0, "avatar1", all},
        {4, "hero", {"Update", "Create Acc", "Create Prop"}},
        {35, "avatar0", {"Update", "Create Acc", "Create Prop"}},
        {36, "hero", {"Update", "Create Acc", "Create Prop"}},
        {3, "hero", all},
    };
    CReceiveRecordBuilder builder(m_pHost.get());
    for (const auto& c : cases) {
        SetAvatar(QLatin1String(c.avatar));
        CZBrushToFMMeshInfo record;
        for (const QString& name : all) {
            record.m_kActionNames.Add(name.toStdWString());
        }
        record.m_iParentType = c.parentType;
        ASSERT_EQ(builder.RemoveActionOption(&record), QV::kOk);
        EXPECT_EQ(Names(record.m_kActionNames), c.expected) << c.parentType << " " << c.avatar;
    }

    SetAvatar(QStringLiteral("hero"));
    ASSERT_EQ(m_pHost->SetFailure(QStringLiteral("GetAvatarType"), QV::kFail), QV::kOk);
    CZBrushToFMMeshInfo record;
    record.m_kActionNames.Add(L"Create Cloth");
    EXPECT_EQ(builder.RemoveActionOption(&record), QV::kFail);
    EXPECT_EQ(Names(record.m_kActionNames), QStringList{"Create Cloth"});
    EXPECT_EQ(builder.RemoveActionOption(nullptr), QV::kInvalidArg);
}

TEST_F(RecordRules, CandidatesAreTheMeshesOfKindsOneFourteenThreeTwoInThatOrder)
{
    CReceiveRecordBuilder builder(m_pHost.get());
    CZBrushToFMMeshInfo record;
    ASSERT_EQ(builder.CollectSceneMeshInfo(record), QV::kOk);
    QStringList names;
    for (const CTargetCandidate& candidate : record.TargetCandidates()) {
        names << QString::fromStdWString(candidate.first);
    }
    EXPECT_EQ(names, (QStringList{"Hero_Body", "Gum", "Rock A", "Rock B"}));
    QStringList kinds;
    for (const Host::CCallRecord& call : CallsOf("ListSceneObjectsOfKind")) {
        kinds << call.m_kArgs.value(1);
    }
    EXPECT_EQ(kinds, (QStringList{"1", "14", "3", "2"}));

    // A failing listing ends it, keeping what the earlier kinds gave.
    ASSERT_EQ(m_pHost->SetFailure(QStringLiteral("ListSceneObjectsOfKind"), QV::kOutOfMemory, 3), QV::kOk);
    CZBrushToFMMeshInfo partial;
    EXPECT_EQ(builder.CollectSceneMeshInfo(partial), QV::kOutOfMemory);
    EXPECT_EQ(partial.TargetCandidates().GetCount(), 0) << "meshes are named after all kinds are listed";
    m_pHost->ClearFailures();
    ASSERT_EQ(m_pHost->SetFailure(QStringLiteral("HandleName"), QV::kFail, 3), QV::kOk);
    EXPECT_EQ(builder.CollectSceneMeshInfo(partial), QV::kFail);
    EXPECT_EQ(partial.TargetCandidates().GetCount(), 2);
}

TEST_F(RecordRules, ReturnedMeshesAreMatchedToTheScene)
{
    const struct
    {
        const char* name;
        int action;
        QV::CArrayList<std::uint32_t> offered;
        int chosen;
        int parentType;
        QStringList actions;
        QStringList sizes;
        const char* owner;
    } cases[] = {
        // Two candidates of its type: both offered, the second chosen, its parent's type kept.
        {"Rock", ActionUpdate, {2, 3}, 1, 3, {"Update", "Create Acc", "Create Cloth", "Create Prop"},
         {"512 x 512", "1024 x 1024", "Custom"}, "Rock"},
        {"Pebble", ActionUpdate, {2, 3}, 1, 3, {"Update", "Create Acc", "Create Cloth", "Create Prop"}, {}, "Shelf"},
        // A character's part: no texture offered, no cloth.
        {"Hero_Body", ActionUpdate, {0}, 0, 4, {"Update", "Create Acc", "Create Prop"}, {}, "Hero"},
        {"Gum", ActionUpdate, {1}, 0, 36, {"Update", "Create Acc", "Create Prop"}, {}, "Mouth"},
        // Nothing of its type; one texture edge is 0.
        {"Crate", ActionCreateCloth, {}, 0, 0, {"Update", "Create Acc", "Create Cloth", "Create Prop"}, {}, "Crate"},
        // An avatar part, in another case: the part's spelling, owned by the avatar.
        {"hero_skin", ActionCreateCloth, {}, 0, 0, {"Update", "Create Acc", "Create Cloth", "Create Prop"}, {},
         "Hero"},
    };
    QStringList returned;
    for (const auto& c : cases) {
        returned << QLatin1String(c.name);
    }
    CZBrushToFMMeshInfoList records;
    ASSERT_EQ(Build(returned, records), QV::kOk);
    ASSERT_EQ(records.GetCount(), static_cast<int>(std::size(cases)));
    for (int i = 0; i < records.GetCount(); ++i) {
        const auto& c = cases[i];
        const CZBrushToFMMeshInfo& record = records[i];
        SCOPED_TRACE(c.name);
        EXPECT_EQ(record.m_eAction, c.action);
        EXPECT_EQ(record.m_kOfferedTargets, c.offered);
        EXPECT_EQ(record.m_iChosenTarget, c.chosen);
        EXPECT_EQ(record.m_iParentType, c.parentType);
        EXPECT_EQ(Names(record.m_kActionNames), c.actions);
        EXPECT_EQ(SizeNames(record), c.sizes);
        EXPECT_EQ(GetTextureEnable(record), !c.sizes.isEmpty());
        EXPECT_EQ(QString::fromStdWString(record.m_strOwnerName), QLatin1String(c.owner));
        EXPECT_EQ(record.TargetCandidates().GetCount(), 4);
    }
    EXPECT_EQ(QString::fromStdWString(records[5].m_strMeshName), "Hero_Skin");
    EXPECT_EQ(records[0].m_iChosenTextureSize, 1) << "the largest size the texture fills";
    EXPECT_EQ(records[0].m_pTargetCandidates, records[5].m_pTargetCandidates) << "rows share one candidate list";
    // Parts are no scene objects: they are not looked up by name.
    for (const Host::CCallRecord& call : CallsOf("FindObjectByName")) {
        EXPECT_NE(call.m_kArgs.value(0), "Hero_Skin");
    }
}

TEST_F(RecordRules, TextureSizesComeFromTheSettingsFile)
{
    const struct
    {
        const char* what;
        QByteArray ini; // empty: no file at all
        QV::Result result;
        QStringList sizes;
    } cases[] = {
        {"sizes up to the smaller edge", kSizes512To2048, QV::kOk, {"512 x 512", "1024 x 1024", "Custom"}},
        {"file order kept", "[GoZTextureSize]\nCount=3\nSize0=1024\nSize1=256\nSize2=512\n", QV::kOk,
         {"1024 x 1024", "256 x 256", "512 x 512", "Custom"}},
        {"negative, zero and huge sizes", "[GoZTextureSize]\nCount=4\nSize0=-5\nSize1=0\nSize2=99999999\nSize3=256\n",
         QV::kOk, {"256 x 256", "Custom"}},
        {"no sizes", "[GoZTextureSize]\nCount=0\n", QV::kOk, {"Custom"}},
        {"negative count", "[GoZTextureSize]\nCount=-3\n", QV::kOk, {"Custom"}},
        {"count beyond the keys", "[GoZTextureSize]\nCount=5\nSize0=512\nSize1=1024\n", QV::kFail, {}},
        {"huge count", "[GoZTextureSize]\nCount=2147483647\nSize0=512\n", QV::kFail, {}},
        {"count not a number", "[GoZTextureSize]\nCount=many\n", QV::kFail, {}},
        {"empty file", " ", QV::kFail, {}},
        {"no file", "", QV::kOutOfMemory, {}},
    };
    for (const auto& c : cases) {
        QFile::remove(QLatin1String(kTextureSizeFile));
        if (!c.ini.isEmpty()) {
            WriteTextureSizes(c.ini);
        }
        CZBrushToFMMeshInfoList records;
        EXPECT_EQ(Build({"Crate", "Rock"}, records), c.result) << c.what;
        if (QV::Succeeded(c.result)) {
            ASSERT_EQ(records.GetCount(), 2) << c.what;
            EXPECT_EQ(SizeNames(records[1]), c.sizes) << c.what;
        } else {
            EXPECT_EQ(records.GetCount(), 1) << c.what << ": the rows before stay, none after";
        }
    }
}

TEST_F(RecordRules, HostCallsGrowWithReturnedPlusSceneMeshes)
{
    // Three rows of one object type share two candidates: their types and parents are asked once.
    CZBrushToFMMeshInfoList records;
    ASSERT_EQ(Build({"Rock", "Pebble", "Rock"}, records), QV::kOk);
    ASSERT_EQ(records.GetCount(), 3);
    EXPECT_EQ(Calls("GetObjectType"), 4 + 3) << "each candidate once, each returned mesh once";
    const QList<Host::CCallRecord> parents = CallsOf("GetAvatarType");
    QStringList asked;
    for (const Host::CCallRecord& call : parents) {
        asked << call.m_kArgs.value(0);
    }
    asked.sort();
    EXPECT_EQ(asked, (QStringList{"hero", "shelf", "table"})) << "the avatar once, each matched parent once";
}

TEST_F(RecordRules, AFailingHostCallEndsTheBuildWithItsCode)
{
    for (const char* operation : {"FindObjectByName", "GetMaterialCount", "GetTextureSize", "GetGozSplitMeshNames",
                                  "GetGozExtraMeshNames", "GetHostDataFolder", "GetOwningCharacter"}) {
        m_pHost->ClearFailures();
        ASSERT_EQ(m_pHost->SetFailure(QLatin1String(operation), QV::kOutOfRange), QV::kOk);
        CZBrushToFMMeshInfoList records;
        const QV::Result result = Build({"Rock"}, records);
        if (QLatin1String(operation) == QLatin1String("GetOwningCharacter")) {
            // It has no result to fail with: the parent's name is taken instead.
            EXPECT_EQ(result, QV::kOk);
            ASSERT_EQ(records.GetCount(), 1);
            EXPECT_EQ(QString::fromStdWString(records[0].m_strOwnerName), "Rock");
            continue;
        }
        EXPECT_EQ(result, QV::kOutOfRange) << operation;
        EXPECT_EQ(records.GetCount(), 0) << operation;
    }
    m_pHost->ClearFailures();
    ASSERT_EQ(m_pHost->SetFailure(QStringLiteral("GetObjectType"), QV::kOutOfMemory), QV::kOk);
    CZBrushToFMMeshInfoList records;
    EXPECT_EQ(Build({"Rock"}, records), QV::kOutOfMemory) << "a failure answered in place of the type";
}

TEST_F(RecordRules, TeethAreFoundOnlyWhereTheHostFindsThem)
{
    const CReceiveRecordBuilder builder(m_pHost.get());
    const auto handle = [this](const char* id) { return m_pHost->Scene().HandleOf(QLatin1String(id)); };
    EXPECT_EQ(builder.GetAvatarTeeth(handle("hero")), handle("hero_teeth"));
    EXPECT_EQ(builder.GetAvatarTeeth(handle("shelf")), nullptr) << "no teeth";
    EXPECT_EQ(builder.GetAvatarTeeth(nullptr), nullptr);
    ASSERT_EQ(m_pHost->SetFailure(QStringLiteral("FindRelatedObjects"), QV::kOutOfRange), QV::kOk);
    EXPECT_EQ(builder.GetAvatarTeeth(handle("hero")), nullptr) << "a failed search finds none";
    m_pHost->ClearFailures();
}

TEST(ReceiveExpression, AReturnIsAnExpressionWhenARowWithTargetsNamesAMotion)
{
    const struct
    {
        const char* what;
        QStringList motions;
        const wchar_t* owner;
        const wchar_t* mesh;
        bool offered;
        bool expected;
    } cases[] = {
        {"owner name", {"Hero.mvMotionPlus"}, L"Hero", L"Hero_Brow", true, true},
        {"mesh name", {"Hero_Brow.mvMotionPlus"}, L"Hero", L"Hero_Brow", true, true},
        {"case differs", {"hero.mvMotionPlus"}, L"Hero", L"Hero_Brow", true, false},
        {"row offers no target", {"Hero.mvMotionPlus"}, L"Hero", L"Hero_Brow", false, false},
        {"no motions", {}, L"Hero", L"Hero_Brow", true, false},
        {"other file kinds", {"Hero.GoZ", "Hero.mvmotionplus"}, L"Hero", L"Hero_Brow", true, false},
    };
    for (const auto& c : cases) {
        Host::CSandbox sandbox;
        sandbox.SetInstallZBrush(false);
        QString error;
        ASSERT_EQ(sandbox.Create(error), QV::kOk) << error.toStdString();
        for (const QString& motion : c.motions) {
            WriteFile(QLatin1String(kProjectFolder) + motion, "m");
        }
        CZBrushToFMMeshInfoList records;
        CZBrushToFMMeshInfo record;
        record.m_strOwnerName = c.owner;
        record.m_strMeshName = c.mesh;
        if (c.offered) {
            record.m_kOfferedTargets.Add(0);
        }
        records.Add(record);
        bool expression = !c.expected;
        EXPECT_EQ(CGoZImporter::CheckIsExpressionGoZ(CGoZReturnReader(), records, expression), QV::kOk) << c.what;
        EXPECT_EQ(expression, c.expected) << c.what;
    }
}

} // namespace

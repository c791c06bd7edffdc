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

QStringList SizeNames(const CZBrushToFMMeshInfo& record)
{
    QStringList names;
    for (std::int32_t size : record.m_kTextureSizes) {
        names << QString::fromStdWString(GetTextureOptionName(size));
    }
    return names;
}

const QStringList kAllActions{"Update", "Create Acc", "Create Cloth", "Create Prop"};
const QStringList kNoCloth{"Update", "Create Acc", "Create Prop"};

class RecordRules : public ReceiveFixture
{
public:
    void SetUp() override
    {
        ReceiveFixture::SetUp();
        StartHost(kRecordScene);
        WriteFile(QLatin1String(kTextureSizeFile), kTextureSizes);
    }

    QV::Result Build(const QStringList& returned, CZBrushToFMMeshInfoList& records)
    {
        CReceiveRecordBuilder builder(m_pHost.get());
        CZBrushToFMMeshInfo templateRecord;
        QV::Result result = builder.InitialAvatarPartMeshName();
        if (QV::Succeeded(result)) {
            result = builder.MakeTemplateRecord(templateRecord);
        }
        QStringList files;
        for (const QString& name : returned) {
            files << name + QStringLiteral(".GoZ");
        }
        return QV::Failed(result) ? result : builder.BuildRecords(templateRecord, ToList(files), records);
    }
};

TEST(ReceiveRecord, RowCheckClearsIndicesThatNameNothing)
{
    // offered, chosen target, chosen size -> target, size afterwards
    const struct { QV::CArrayList<std::uint32_t> offered; int chosen, chosenSize, target, size; } cases[] = {
        {{}, 2, -1, 2, -1}, {{}, 3, 0, -1, -1}, {{1, 2}, 1, 0, 1, -1}, {{1, 2}, 2, -1, -1, -1}, {{7}, 0, -1, -1, -1},
    };
    for (const auto& c : cases) {
        CZBrushToFMMeshInfo record;
        record.m_pTargetCandidates = std::make_shared<CTargetCandidateList>(
            CTargetCandidateList{{L"A", nullptr}, {L"B", nullptr}, {L"C", nullptr}});
        record.m_kOfferedTargets = c.offered;
        record.m_iChosenTarget = c.chosen;
        record.m_iChosenTextureSize = c.chosenSize;
        CZBrushToFMMeshInfoList records{record};
        ASSERT_EQ(CReceiveRecordBuilder::CheckRows(records), QV::kOk);
        EXPECT_EQ(records[0].m_iChosenTarget, c.target) << c.chosen;
        EXPECT_EQ(records[0].m_iChosenTextureSize, c.size) << c.chosenSize;
    }
}

TEST_F(RecordRules, DefaultActionFollowsTheAvatarType)
{
    const struct { const char* avatar; int expected; } cases[] = {
        {"", ActionCreateProp},         {"avatar2", ActionCreateAcc},   {"avatar3", ActionCreateAcc},
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
    const struct { int parentType; const char* avatar; QStringList expected; } cases[] = {
        {0, "", {"Update", "Create Prop"}}, {0, "avatar2", kNoCloth}, {0, "avatar3", kNoCloth},
        {0, "hero", kAllActions},          {0, "avatar1", kAllActions}, {4, "hero", kNoCloth},
        {35, "avatar0", kNoCloth},          {36, "hero", kNoCloth},     {3, "hero", kAllActions},
    };
    CReceiveRecordBuilder builder(m_pHost.get());
    for (const auto& c : cases) {
        SetAvatar(QLatin1String(c.avatar));
        CZBrushToFMMeshInfo record;
        record.m_kActionNames = ToList(kAllActions);
        record.m_iParentType = c.parentType;
        ASSERT_EQ(builder.RemoveActionOption(&record), QV::kOk);
        EXPECT_EQ(ToStrings(record.m_kActionNames), c.expected) << c.parentType << " " << c.avatar;
    }

    SetAvatar(QStringLiteral("hero"));
    ASSERT_EQ(m_pHost->SetFailure(QStringLiteral("GetAvatarType"), QV::kFail), QV::kOk);
    CZBrushToFMMeshInfo record;
    record.m_kActionNames.Add(L"Create Cloth");
    EXPECT_EQ(builder.RemoveActionOption(&record), QV::kFail);
    EXPECT_EQ(ToStrings(record.m_kActionNames), QStringList{"Create Cloth"});
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
    const struct {
        const char* name;
        int action;
        QV::CArrayList<std::uint32_t> offered;
        int chosen, parentType;
        QStringList actions, sizes;
        const char* owner;
    } cases[] = {
        // Two candidates of its type: both offered, the second chosen, its parent's type kept.
        {"Rock", ActionUpdate, {2, 3}, 1, 3, kAllActions, {"512 x 512", "1024 x 1024", "Custom"}, "Rock"},
        {"Pebble", ActionUpdate, {2, 3}, 1, 3, kAllActions, {}, "Shelf"},
        // A character's part: no texture offered, no cloth.
        {"Hero_Body", ActionUpdate, {0}, 0, 4, kNoCloth, {}, "Hero"},
        {"Gum", ActionUpdate, {1}, 0, 36, kNoCloth, {}, "Mouth"},
        // Nothing of its type; one texture edge is 0.
        {"Crate", ActionCreateCloth, {}, 0, 0, kAllActions, {}, "Crate"},
        // An avatar part, in another case: the part's spelling, owned by the avatar.
        {"hero_skin", ActionCreateCloth, {}, 0, 0, kAllActions, {}, "Hero"},
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
        EXPECT_EQ(ToStrings(record.m_kActionNames), c.actions);
        EXPECT_EQ(SizeNames(record), c.sizes);
        EXPECT_EQ(GetTextureEnable(record), !c.sizes.isEmpty());
        EXPECT_EQ(QString::fromStdWString(record.m_strOwnerName), QLatin1String(c.owner));
        EXPECT_EQ(record.TargetCandidates().GetCount(), 4);
    }
    EXPECT_EQ(QString::fromStdWString(records[5].m_strMeshName), "Hero_Skin");
    EXPECT_EQ(records[0].m_iChosenTextureSize, 1) << "the largest size the texture fills";
    EXPECT_EQ(records[0].m_pTargetCandidates, records[5].m_pTargetCandidates) << "rows share one candidate list";
    // Parts are no scene objects: they are not looked up by name.
    EXPECT_FALSE(CallSequence({"FindObjectByName"}, 1).contains("FindObjectByName(Hero_Skin)"));
}

TEST_F(RecordRules, TextureSizesComeFromTheSettingsFile)
{
    const QByteArray section = "[GoZTextureSize]\n";
    const struct {
        const char* what;
        QByteArray ini; // empty: no file at all
        QV::Result result;
        QStringList sizes;
    } cases[] = {
        {"sizes up to the smaller edge", kTextureSizes, QV::kOk, {"512 x 512", "1024 x 1024", "Custom"}},
        {"file order kept", section + "Count=3\nSize0=1024\nSize1=256\nSize2=512\n", QV::kOk,
         {"1024 x 1024", "256 x 256", "512 x 512", "Custom"}},
        {"negative, zero and huge sizes", section + "Count=4\nSize0=-5\nSize1=0\nSize2=99999999\nSize3=256\n", QV::kOk,
         {"256 x 256", "Custom"}},
        {"no sizes", section + "Count=0\n", QV::kOk, {"Custom"}},
        {"negative count", section + "Count=-3\n", QV::kOk, {"Custom"}},
        {"count beyond the keys", section + "Count=5\nSize0=512\nSize1=1024\n", QV::kFail, {}},
        {"huge count", section + "Count=2147483647\nSize0=512\n", QV::kFail, {}},
        {"count not a number", section + "Count=many\n", QV::kFail, {}},
        {"empty file", " ", QV::kFail, {}},
        {"no file", "", QV::kOutOfMemory, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        QFile::remove(QLatin1String(kTextureSizeFile));
        if (!c.ini.isEmpty()) {
            WriteFile(QLatin1String(kTextureSizeFile), c.ini);
        }
        CZBrushToFMMeshInfoList records;
        EXPECT_EQ(Build({"Crate", "Rock"}, records), c.result);
        // On failure the rows before stay, none after.
        ASSERT_EQ(records.GetCount(), QV::Succeeded(c.result) ? 2 : 1);
        if (QV::Succeeded(c.result)) {
            EXPECT_EQ(SizeNames(records[1]), c.sizes);
        }
    }
}

TEST_F(RecordRules, HostCallsGrowWithReturnedPlusSceneMeshes)
{
    // Three rows of one object type share two candidates: their types and parents are asked once.
    CZBrushToFMMeshInfoList records;
    ASSERT_EQ(Build({"Rock", "Pebble", "Rock"}, records), QV::kOk);
    ASSERT_EQ(records.GetCount(), 3);
    EXPECT_EQ(Count("GetObjectType"), 4 + 3) << "each candidate once, each returned mesh once";
    QStringList asked = CallSequence({"GetAvatarType"}, 1);
    asked.sort();
    EXPECT_EQ(asked, (QStringList{"GetAvatarType(hero)", "GetAvatarType(shelf)", "GetAvatarType(table)"}))
        << "the avatar once, each matched parent once";
}

TEST_F(RecordRules, AFailingHostCallEndsTheBuildWithItsCode)
{
    for (const char* operation : {"FindObjectByName", "GetMaterialCount", "GetTextureSize", "GetGozSplitMeshNames",
                                  "GetGozExtraMeshNames", "GetHostDataFolder", "GetObjectType"}) {
        m_pHost->ClearFailures();
        ASSERT_EQ(m_pHost->SetFailure(QLatin1String(operation), QV::kOutOfRange), QV::kOk);
        CZBrushToFMMeshInfoList records;
        EXPECT_EQ(Build({"Rock"}, records), QV::kOutOfRange) << operation;
        EXPECT_EQ(records.GetCount(), 0) << operation;
    }
    // It has no result to fail with: the parent's name is taken instead.
    m_pHost->ClearFailures();
    ASSERT_EQ(m_pHost->SetFailure(QStringLiteral("GetOwningCharacter"), QV::kOutOfRange), QV::kOk);
    CZBrushToFMMeshInfoList records;
    ASSERT_EQ(Build({"Rock"}, records), QV::kOk);
    ASSERT_EQ(records.GetCount(), 1);
    EXPECT_EQ(QString::fromStdWString(records[0].m_strOwnerName), "Rock");
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
}

} // namespace

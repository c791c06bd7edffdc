#include "CExpressionMatcher.h"
#include "CGoZReturnReader.h"
#include "CReceiveRecordBuilder.h"
#include "ExpressionFixture.h"

using namespace MV;
using namespace MV::Test;

namespace {

// ---------------------------------------------------------------------------------------
// Name rules

// Contain, the case-sensitive substring test, through the candidates it keeps.
TEST(ExpressionNames, CandidatesAreThePathsWhoseBaseNameHoldsAName)
{
    const struct { const char* name; QStringList paths, names, expected; } cases[] = {
        {"FolderIsNotPartOfTheName", {"Teeth/Brow.GoZ", "Teeth\\Brow.GoZ"}, {"Teeth"}, {}},
        {"ExtensionIsNotPartOfTheName", {"Brow.GoZ"}, {"GoZ"}, {}},
        {"OnlyTheLastDotEndsTheName", {"Upper.Teeth.GoZ"}, {"Teeth"}, {"Upper.Teeth.GoZ"}},
        {"OncePerNameContained", {"FM_Base_Upper_Teeth.GoZ"}, {"Upper", "Teeth", "Lower"},
         {"FM_Base_Upper_Teeth.GoZ", "FM_Base_Upper_Teeth.GoZ"}},
        {"PathsOuterNamesInner", {"A_Teeth.GoZ", "B_Upper_Teeth.GoZ"}, {"Upper", "Teeth"},
         {"A_Teeth.GoZ", "B_Upper_Teeth.GoZ", "B_Upper_Teeth.GoZ"}},
        {"CaseMatters", {"fm_base_upper_teeth.GoZ"}, {"FM_Base_Upper_Teeth"}, {}},
        {"WholeNameOnly", {"Brow.GoZ", "Te_eth.GoZ"}, {"Brow_Mesh", "Teeth"}, {}},
        {"EmptyNameHoldsEveryPath", {"A.GoZ", "B.GoZ"}, {""}, {"A.GoZ", "B.GoZ"}},
        {"NoNamesNoCandidates", {"A.GoZ"}, {}, {}},
    };
    for (const auto& c : cases) {
        // Appended after what the list held.
        QV::CArrayList<std::wstring> candidates{L"kept"};
        ASSERT_EQ(CExpressionMatcher::GetGozFilePathCandidate(ToList(c.paths), ToList(c.names), candidates), QV::kOk);
        EXPECT_EQ(ToStrings(candidates), QStringList{"kept"} + c.expected) << c.name;
    }
}

TEST(ExpressionNames, RemovingAPathErasesItsFirstEntryOnly)
{
    const struct { const char* name; QString path; QStringList paths, expected; } cases[] = {
        {"First of two", "A.GoZ", {"A.GoZ", "B.GoZ", "A.GoZ"}, {"B.GoZ", "A.GoZ"}},
        {"Absent", "C.GoZ", {"A.GoZ", "B.GoZ"}, {"A.GoZ", "B.GoZ"}},
        {"Other case", "a.GoZ", {"A.GoZ"}, {"A.GoZ"}},
        {"Empty list", "A.GoZ", {}, {}},
    };
    for (const auto& c : cases) {
        QV::CArrayList<std::wstring> paths = ToList(c.paths);
        EXPECT_EQ(CExpressionMatcher::RemoveGozFilePathNoUsedToDisplay(c.path.toStdWString(), paths), QV::kOk) << c.name;
        EXPECT_EQ(ToStrings(paths), c.expected) << c.name;
    }
}

// ---------------------------------------------------------------------------------------
// Recognition

TEST(ExpressionRecognition, ByARecordNamedLikeAReturnedMotion)
{
    const struct {
        const char* name;
        QList<QPair<QString, bool>> records; // name, whether it has a candidate
        QStringList motions;
        QV::Result listResult;
        bool expression;
        QString expressionName;
    } cases[] = {
        {"NoRecordHasACandidate", {{"Brow_Mesh", false}, {"Tear_Mesh", false}}, {"Brow_Mesh"}, QV::kOk, false, ""},
        {"RecordWithCandidateNamedLikeAMotion", {{"Hat", false}, {"Brow_Mesh", true}}, {"Other", "Brow_Mesh"}, QV::kOk,
         true, "Brow_Mesh"},
        {"MotionListingFails", {{"Brow_Mesh", true}}, {}, QV::kFail, true, ""},
        {"MotionListingFailsWithoutRecords", {}, {}, QV::kOutOfMemory, true, ""},
        {"OwnerNameIsNotTheMeshName", {{"Brow_Mesh", true}}, {"Ava"}, QV::kOk, false, ""},
        {"CaseMatters", {{"Brow_Mesh", true}}, {"brow_mesh"}, QV::kOk, false, ""},
        {"FirstRecordInListOrderNamesIt", {{"Tear_Mesh", true}, {"Brow_Mesh", true}}, {"Brow_Mesh", "Tear_Mesh"},
         QV::kOk, true, "Tear_Mesh"},
        {"NoMotions", {{"Brow_Mesh", true}}, {}, QV::kOk, false, ""},
    };
    Host::CReferenceHost host;
    CGoZReturnReader reader;
    CReceiveRecordBuilder builder(&host);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CExpressionMatcher matcher(&host, reader, builder);
        // A name left from an earlier return must not survive this one.
        CZBrushToFMMeshInfo stale;
        stale.m_strMeshName = L"Stale";
        stale.m_kOfferedTargets.Add(0);
        matcher.SetMotionLister([](QV::CArrayList<std::wstring>& motions) { return motions.Add(L"Stale"); });
        ASSERT_TRUE(matcher.CheckIsExpressionGoZ(CZBrushToFMMeshInfoList{stale}));
        ASSERT_EQ(matcher.ExpressionName(), L"Stale");

        matcher.SetMotionLister([&c](QV::CArrayList<std::wstring>& motions) {
            motions = ToList(c.motions);
            return c.listResult;
        });
        CZBrushToFMMeshInfoList records;
        for (const auto& record : c.records) {
            CZBrushToFMMeshInfo info;
            info.m_strMeshName = record.first.toStdWString();
            info.m_strOwnerName = L"Ava";
            if (record.second) {
                info.m_kOfferedTargets.Add(0);
            }
            records.Add(info);
        }
        EXPECT_EQ(matcher.CheckIsExpressionGoZ(records), c.expression);
        EXPECT_EQ(QString::fromStdWString(matcher.ExpressionName()), c.expressionName);
    }
}

// ---------------------------------------------------------------------------------------
// The avatar's face meshes and the matching, over the reference host

class ExpressionMatching : public ExpressionFixture
{
public:
    void Build(const FaceScene& scene = FaceScene())
    {
        m_pMatcher.reset();
        m_pBuilder.reset();
        StartHost(scene.Json());
        m_pBuilder = std::make_unique<CReceiveRecordBuilder>(m_pHost.get());
        m_pMatcher = std::make_unique<CExpressionMatcher>(m_pHost.get(), m_kReader, *m_pBuilder);
    }

    void TearDown() override
    {
        m_pMatcher.reset();
        m_pBuilder.reset();
        ExpressionFixture::TearDown();
    }

    // The records of the return now in the sandbox, as the expression dialog builds them.
    CZBrushToFMMeshInfoList ReturnRecords()
    {
        QV::CArrayList<std::wstring> files;
        EXPECT_EQ(m_kReader.ReadGoZMesh(files), QV::kOk);
        EXPECT_EQ(m_pMatcher->InitialAvatarPartMeshName(), QV::kOk);
        std::wstring teethName;
        QV::CArrayList<std::wstring> teethFiles;
        EXPECT_EQ(m_pMatcher->GatherTeethReturn(Handle("ava"), files, teethName, teethFiles), QV::kOk);
        CZBrushToFMMeshInfo templateRecord;
        EXPECT_EQ(m_pBuilder->MakeTemplateRecord(templateRecord), QV::kOk);
        CZBrushToFMMeshInfoList records;
        EXPECT_EQ(m_pBuilder->BuildRecords(templateRecord, files, records), QV::kOk);
        return records;
    }

    CGoZReturnReader m_kReader;
    std::unique_ptr<CReceiveRecordBuilder> m_pBuilder;
    std::unique_ptr<CExpressionMatcher> m_pMatcher;
};

TEST_F(ExpressionMatching, FaceMeshesComeByNodeTypeNotBySceneOrder)
{
    Build();
    QV::CArrayList<std::wstring> names;
    ASSERT_EQ(m_pMatcher->GetAvatarMeshName(Handle("ava"), names), QV::kOk);
    EXPECT_EQ(ToStrings(names), (QStringList{"Brow_Mesh", "Occlusion_Mesh", "Tear_Mesh", "Teeth_Mesh"}));
    EXPECT_EQ(CallSequence({"CollectChildObjects"}, 2),
              (QStringList{"CollectChildObjects(ava, 35)", "CollectChildObjects(ava, 49)", "CollectChildObjects(ava, 50)",
                           "CollectChildObjects(ava, 36)"}));
}

TEST_F(ExpressionMatching, FailingFaceMeshQueryIsNoMatchAndNoMessage)
{
    for (const char* operation : {"CollectChildObjects", "HandleName"}) {
        Build();
        ASSERT_EQ(m_pHost->SetFailure(QLatin1String(operation), QV::kOutOfRange, 2), QV::kOk);
        QV::CArrayList<std::wstring> names;
        EXPECT_EQ(m_pMatcher->GetAvatarMeshName(Handle("ava"), names), QV::kOutOfRange) << operation;
        ASSERT_EQ(m_pHost->SetFailure(QLatin1String(operation), QV::kOutOfRange, 2), QV::kOk);
        CZBrushToFMMeshInfoList none;
        EXPECT_FALSE(m_pMatcher->CheckAvatarMeshMatch(Handle("ava"), none, nullptr)) << operation;
        EXPECT_TRUE(m_pHost->MessageBoxes().isEmpty()) << operation;
    }
}

TEST_F(ExpressionMatching, ReturnedTeethPartsBecomeOneEntryUnderTheTeethMeshName)
{
    Build();
    EXPECT_EQ(m_pMatcher->GetAvatarTeeth(Handle("ava")), Handle("ava_teeth"));
    EXPECT_EQ(m_pMatcher->GetAvatarTeeth(Handle("bob")), nullptr);
    EXPECT_EQ(m_pMatcher->GetAvatarTeeth(nullptr), nullptr);

    ASSERT_EQ(m_pMatcher->InitialAvatarPartMeshName(), QV::kOk);
    QV::CArrayList<std::wstring> files;
    std::wstring teethName;
    QV::CArrayList<std::wstring> teethFiles;
    EXPECT_EQ(m_pMatcher->GatherTeethReturn(Handle("ava"), files, teethName, teethFiles), QV::kFail) << "no list";
    WriteReturn(FullFaceReturn());
    ASSERT_EQ(m_kReader.ReadGoZMesh(files), QV::kOk);
    ASSERT_EQ(m_pMatcher->GatherTeethReturn(Handle("ava"), files, teethName, teethFiles), QV::kOk);
    EXPECT_EQ(ToStrings(files), (QStringList{"Brow_Mesh.GoZ", "Occlusion_Mesh.GoZ", "Tear_Mesh.GoZ", "Teeth_Mesh.GoZ"}));
    EXPECT_EQ(QString::fromStdWString(teethName), QStringLiteral("Teeth_Mesh"));
    EXPECT_EQ(ToStrings(teethFiles), (QStringList{"FM_Base_Upper_Teeth.GoZ", "FM_Base_Lower_Teeth.GoZ"}));
}

TEST_F(ExpressionMatching, MatchCountsRecordsThatNameAFaceMesh)
{
    FaceScene onlyABrow = Without(&FaceScene::m_bTearLine);
    onlyABrow.m_bEyeOcclusion = onlyABrow.m_bTeeth = false;
    FaceScene noTearNoTeeth = Without(&FaceScene::m_bTearLine);
    noTearNoTeeth.m_bTeeth = false;
    const QString returnAll = QStringLiteral("[MVGOZBursh] Expression GoZ: Please return all Mesh");
    const struct {
        const char* name;
        FaceScene scene;
        QStringList returned;
        bool match;
        QStringList targets; // after the match, "<record>-><chosen target>"
    } cases[] = {
        {"EveryFaceMeshReturned", FaceScene(), FullFaceReturn(), true,
         {"Brow_Mesh->Brow_Mesh", "Occlusion_Mesh->Occlusion_Mesh", "Tear_Mesh->Tear_Mesh", "Teeth_Mesh->Teeth_Mesh"}},
        {"FewerReturnedThanFaceMeshes", FaceScene(), {"Brow_Mesh", "Occlusion_Mesh"}, false,
         {"Brow_Mesh->Brow_Mesh", "Occlusion_Mesh->Occlusion_Mesh"}},
        {"TeethNotReturned", FaceScene(), {"Brow_Mesh", "Occlusion_Mesh", "Tear_Mesh"}, false,
         {"Brow_Mesh->Brow_Mesh", "Occlusion_Mesh->Occlusion_Mesh", "Tear_Mesh->Tear_Mesh"}},
        {"AvatarWithoutTeethOcclusionOrTearLine", onlyABrow, {"Brow_Mesh"}, true, {"Brow_Mesh->Brow_Mesh"}},
        {"TwoReturnedNamingOneFaceMeshCountTwice", noTearNoTeeth, {"Brow_Mesh", "Brow_Mesh"}, true,
         {"Brow_Mesh->Brow_Mesh", "Brow_Mesh->Brow_Mesh"}},
        {"AReturnedPropDoesNotCount", noTearNoTeeth, {"Hat", "Brow_Mesh"}, false, {"Hat->Hat", "Brow_Mesh->Brow_Mesh"}},
        {"OtherCharactersMeshDoesNotCount", noTearNoTeeth, {"Bob_Brow", "Brow_Mesh"}, false,
         {"Bob_Brow->Bob_Brow", "Brow_Mesh->Brow_Mesh"}},
    };
    QWidget parent;
    parent.setObjectName(QStringLiteral("MatchParent"));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Build(c.scene);
        WriteReturn(c.returned);
        CZBrushToFMMeshInfoList records = ReturnRecords();
        EXPECT_EQ(m_pMatcher->CheckAvatarMeshMatch(Handle("ava"), records, &parent), c.match);
        EXPECT_EQ(MessageTexts(), c.match ? QStringList() : QStringList{returnAll});
        for (const Host::CCallRecord& call : CallsOf("ShowMessageBox")) {
            EXPECT_EQ(call.m_kArgs.mid(1), (QStringList{"", "MatchParent", "2", "1024", "0"}));
        }
        QStringList targets;
        for (const CZBrushToFMMeshInfo& info : records) {
            const std::int64_t target = CExpressionMatcher::CandidateTarget(info, info.m_iChosenTarget);
            targets << QString::fromStdWString(info.m_strMeshName) + "->" +
                           (target < 0 ? "none" : QString::fromStdWString(info.TargetCandidates()[int(target)].first));
        }
        EXPECT_EQ(targets, c.targets);
    }
}

TEST_F(ExpressionMatching, MatchChoosesTheFirstCandidateThatIsAFaceMesh)
{
    Build();
    CZBrushToFMMeshInfo info;
    info.m_pTargetCandidates = std::make_shared<CTargetCandidateList>(
        CTargetCandidateList{CTargetCandidate(L"Hat", Handle("hat")), CTargetCandidate(L"Tear_Mesh", Handle("ava_tear")),
                             CTargetCandidate(L"Brow_Mesh", Handle("ava_brow"))});
    info.m_kOfferedTargets = {0, 2, 1};
    info.m_iChosenTarget = 2;
    CZBrushToFMMeshInfo unmatched = info;
    unmatched.m_kOfferedTargets = {0, 7};
    unmatched.m_iChosenTarget = 1;
    CZBrushToFMMeshInfoList records{info, unmatched};
    m_pMatcher->CheckAvatarMeshMatch(Handle("ava"), records, nullptr);
    EXPECT_EQ(records[0].m_iChosenTarget, 1) << "Brow_Mesh, the first face mesh among its candidates";
    EXPECT_EQ(records[1].m_iChosenTarget, 1) << "no face mesh among its candidates: left as it was";
}

} // namespace

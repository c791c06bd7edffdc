#include "CExpressionMatcher.h"
#include "CGoZReturnReader.h"
#include "CReceiveRecordBuilder.h"
#include "ExpressionFixture.h"

#include <ostream>

using namespace MV;
using namespace MV::Test;

namespace {

QStringList ToStrings(const QV::CArrayList<std::wstring>& list)
{
    QStringList out;
    for (const std::wstring& text : list) {
        out << QString::fromStdWString(text);
    }
    return out;
}

QV::CArrayList<std::wstring> ToList(const QStringList& strings)
{
    QV::CArrayList<std::wstring> list;
    for (const QString& text : strings) {
        list.Add(text.toStdWString());
    }
    return list;
}

// ---------------------------------------------------------------------------------------
// Name rules

struct ContainCase
{
    const wchar_t* m_pText;
    const wchar_t* m_pPart;
    bool m_bContained;
};

TEST(ExpressionNames, ContainIsACaseSensitiveSubstringTest)
{
    const ContainCase cases[] = {
        {L"Brow_Mesh", L"Brow", true},      {L"Brow_Mesh", L"Mesh", true},   {L"Brow_Mesh", L"w_M", true},
        {L"Brow", L"", true},               {L"", L"", true},                {L"", L"a", false},
        {L"Brow", L"Brow_Mesh", false},     {L"Brow_Mesh", L"brow", false},  {L"aab", L"ab", true},
        {L"Teeth", L"Teeth", true},         {L"Te eth", L"Teeth", false},
    };
    for (const ContainCase& c : cases) {
        EXPECT_EQ(CExpressionMatcher::Contain(c.m_pText, c.m_pPart), c.m_bContained)
            << QString::fromWCharArray(c.m_pText).toStdString() << " / "
            << QString::fromWCharArray(c.m_pPart).toStdString();
    }
}

struct CandidateCase
{
    const char* m_pName;
    QStringList m_kPaths;
    QStringList m_kNames;
    QStringList m_kExpected;
};

void PrintTo(const CandidateCase& c, std::ostream* out)
{
    *out << c.m_pName;
}

class GozFilePathCandidate : public ::testing::TestWithParam<CandidateCase>
{
};

TEST_P(GozFilePathCandidate, KeepsPathsWhoseBaseNameHoldsAName)
{
    const CandidateCase& c = GetParam();
    QV::CArrayList<std::wstring> candidates;
    candidates.Add(L"kept");
    ASSERT_EQ(CExpressionMatcher::GetGozFilePathCandidate(ToList(c.m_kPaths), ToList(c.m_kNames), candidates),
              QV::kOk);
    EXPECT_EQ(ToStrings(candidates), QStringList{QStringLiteral("kept")} + c.m_kExpected);
}

const CandidateCase kCandidateCases[] = {
    {"FolderIsNotPartOfTheName", {"Teeth/Brow.GoZ", "Teeth\\Brow.GoZ"}, {"Teeth"}, {}},
    {"ExtensionIsNotPartOfTheName", {"Brow.GoZ"}, {"GoZ"}, {}},
    {"OnlyTheLastDotEndsTheName", {"Upper.Teeth.GoZ"}, {"Teeth"}, {"Upper.Teeth.GoZ"}},
    {"OncePerNameContained", {"FM_Base_Upper_Teeth.GoZ"}, {"Upper", "Teeth", "Lower"},
     {"FM_Base_Upper_Teeth.GoZ", "FM_Base_Upper_Teeth.GoZ"}},
    {"PathsOuterNamesInner", {"A_Teeth.GoZ", "B_Upper_Teeth.GoZ"}, {"Upper", "Teeth"},
     {"A_Teeth.GoZ", "B_Upper_Teeth.GoZ", "B_Upper_Teeth.GoZ"}},
    {"CaseMatters", {"fm_base_upper_teeth.GoZ"}, {"FM_Base_Upper_Teeth"}, {}},
    {"EmptyNameHoldsEveryPath", {"A.GoZ", "B.GoZ"}, {""}, {"A.GoZ", "B.GoZ"}},
    {"NoNamesNoCandidates", {"A.GoZ"}, {}, {}},
};

INSTANTIATE_TEST_SUITE_P(Cases, GozFilePathCandidate, ::testing::ValuesIn(kCandidateCases),
                         [](const ::testing::TestParamInfo<CandidateCase>& info) { return info.param.m_pName; });

TEST(ExpressionNames, RemovingAPathErasesItsFirstEntryOnly)
{
    struct Case
    {
        const char* m_pName;
        QString m_strPath;
        QStringList m_kPaths;
        QStringList m_kExpected;
    };
    const Case cases[] = {
        {"First of two", "A.GoZ", {"A.GoZ", "B.GoZ", "A.GoZ"}, {"B.GoZ", "A.GoZ"}},
        {"Absent", "C.GoZ", {"A.GoZ", "B.GoZ"}, {"A.GoZ", "B.GoZ"}},
        {"Other case", "a.GoZ", {"A.GoZ"}, {"A.GoZ"}},
        {"Empty list", "A.GoZ", {}, {}},
    };
    for (const Case& c : cases) {
        QV::CArrayList<std::wstring> paths = ToList(c.m_kPaths);
        EXPECT_EQ(CExpressionMatcher::RemoveGozFilePathNoUsedToDisplay(c.m_strPath.toStdWString(), paths), QV::kOk)
            << c.m_pName;
        EXPECT_EQ(ToStrings(paths), c.m_kExpected) << c.m_pName;
    }
}

// ---------------------------------------------------------------------------------------
// Recognition

struct RecognitionCase
{
    const char* m_pName;
    // Records: name, whether it has a candidate.
    QList<QPair<QString, bool>> m_kRecords;
    QStringList m_kMotions;
    QV::Result m_iListResult;
    bool m_bExpression;
    QString m_strName;
};

void PrintTo(const RecognitionCase& c, std::ostream* out)
{
    *out << c.m_pName;
}

class ExpressionRecognition : public ::testing::TestWithParam<RecognitionCase>
{
};

TEST_P(ExpressionRecognition, ByARecordNamedLikeAReturnedMotion)
{
    const RecognitionCase& c = GetParam();
    Host::CReferenceHost host;
    CGoZReturnReader reader;
    CReceiveRecordBuilder builder(&host);
    CExpressionMatcher matcher(&host, reader, builder);

    // A name left from an earlier return must not survive this one.
    CZBrushToFMMeshInfo stale;
    stale.m_strMeshName = L"Stale";
    stale.m_kOfferedTargets.Add(0);
    matcher.SetMotionLister([](QV::CArrayList<std::wstring>& motions) { return motions.Add(L"Stale"); });
    ASSERT_TRUE(matcher.CheckIsExpressionGoZ(CZBrushToFMMeshInfoList{stale}));
    ASSERT_EQ(matcher.ExpressionName(), L"Stale");

    matcher.SetMotionLister([&c](QV::CArrayList<std::wstring>& motions) {
        for (const QString& motion : c.m_kMotions) {
            motions.Add(motion.toStdWString());
        }
        return c.m_iListResult;
    });
    CZBrushToFMMeshInfoList records;
    for (const auto& record : c.m_kRecords) {
        CZBrushToFMMeshInfo info;
        info.m_strMeshName = record.first.toStdWString();
        info.m_strOwnerName = L"Ava";
        if (record.second) {
            info.m_kOfferedTargets.Add(0);
        }
        records.Add(info);
    }
    EXPECT_EQ(matcher.CheckIsExpressionGoZ(records), c.m_bExpression);
    EXPECT_EQ(QString::fromStdWString(matcher.ExpressionName()), c.m_strName);
}

const RecognitionCase kRecognitionCases[] = {
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

INSTANTIATE_TEST_SUITE_P(Cases, ExpressionRecognition, ::testing::ValuesIn(kRecognitionCases),
                         [](const ::testing::TestParamInfo<RecognitionCase>& info) { return info.param.m_pName; });

// ---------------------------------------------------------------------------------------
// The avatar's face meshes and the matching, over the reference host

class ExpressionMatching : public ExpressionFixture
{
public:
    void Build(const FaceScene& scene = FaceScene())
    {
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

    QV::CHandle* Handle(const char* id) const { return m_pHost->Scene().HandleOf(QLatin1String(id)); }

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

    static QStringList Targets(const CZBrushToFMMeshInfoList& records)
    {
        QStringList targets;
        for (const CZBrushToFMMeshInfo& info : records) {
            const std::int64_t target = CExpressionMatcher::CandidateTarget(info, info.m_iChosenTarget);
            targets << QString::fromStdWString(info.m_strMeshName) + QLatin1String("->") +
                           (target < 0 ? QStringLiteral("none")
                                       : QString::fromStdWString(info.TargetCandidates()[int(target)].first));
        }
        return targets;
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
    QStringList types;
    for (const Host::CCallRecord& call : Calls("CollectChildObjects")) {
        types << call.m_kArgs.value(1);
    }
    EXPECT_EQ(types, (QStringList{"35", "49", "50", "36"}));
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

TEST_F(ExpressionMatching, TeethAreTheFirstChildOfTheirNodeType)
{
    Build();
    EXPECT_EQ(m_pMatcher->GetAvatarTeeth(Handle("ava")), Handle("ava_teeth"));
    EXPECT_EQ(m_pMatcher->GetAvatarTeeth(Handle("bob")), nullptr);
    EXPECT_EQ(m_pMatcher->GetAvatarTeeth(nullptr), nullptr);
}

TEST_F(ExpressionMatching, ReturnedTeethPartsBecomeOneEntryUnderTheTeethMeshName)
{
    Build();
    WriteReturn(FullFaceReturn());
    ASSERT_EQ(m_pMatcher->InitialAvatarPartMeshName(), QV::kOk);
    QV::CArrayList<std::wstring> files;
    ASSERT_EQ(m_kReader.ReadGoZMesh(files), QV::kOk);
    std::wstring teethName;
    QV::CArrayList<std::wstring> teethFiles;
    ASSERT_EQ(m_pMatcher->GatherTeethReturn(Handle("ava"), files, teethName, teethFiles), QV::kOk);
    EXPECT_EQ(ToStrings(files), (QStringList{"Brow_Mesh.GoZ", "Occlusion_Mesh.GoZ", "Tear_Mesh.GoZ", "Teeth_Mesh.GoZ"}));
    EXPECT_EQ(QString::fromStdWString(teethName), QStringLiteral("Teeth_Mesh"));
    EXPECT_EQ(ToStrings(teethFiles), (QStringList{"FM_Base_Upper_Teeth.GoZ", "FM_Base_Lower_Teeth.GoZ"}));
}

TEST_F(ExpressionMatching, UnreadableListWhenReadingTheTeethIsAFailure)
{
    Build();
    ASSERT_EQ(m_pMatcher->InitialAvatarPartMeshName(), QV::kOk);
    QV::CArrayList<std::wstring> files;
    std::wstring teethName;
    QV::CArrayList<std::wstring> teethFiles;
    EXPECT_EQ(m_pMatcher->GatherTeethReturn(Handle("ava"), files, teethName, teethFiles), QV::kFail);
}

struct MatchCase
{
    const char* m_pName;
    FaceScene m_kScene;
    QStringList m_kReturn;
    bool m_bMatch;
    QStringList m_kMessages;
    QStringList m_kTargets; // after the match, "<record>-><chosen target>"
};

void PrintTo(const MatchCase& c, std::ostream* out)
{
    *out << c.m_pName;
}

FaceScene OnlyABrow()
{
    FaceScene scene;
    scene.m_bEyeOcclusion = scene.m_bTearLine = scene.m_bTeeth = false;
    return scene;
}

FaceScene WithoutTearAndTeeth()
{
    FaceScene scene;
    scene.m_bTearLine = false;
    scene.m_bTeeth = false;
    return scene;
}

const QString kReturnAll = QStringLiteral("[MVGOZBursh] Expression GoZ: Please return all Mesh");

const MatchCase kMatchCases[] = {
    {"EveryFaceMeshReturned", FaceScene(), FullFaceReturn(), true, {},
     {"Brow_Mesh->Brow_Mesh", "Occlusion_Mesh->Occlusion_Mesh", "Tear_Mesh->Tear_Mesh", "Teeth_Mesh->Teeth_Mesh"}},
    {"FewerReturnedThanFaceMeshes", FaceScene(), {"Brow_Mesh", "Occlusion_Mesh"}, false, {kReturnAll},
     {"Brow_Mesh->Brow_Mesh", "Occlusion_Mesh->Occlusion_Mesh"}},
    {"TeethNotReturned", FaceScene(), {"Brow_Mesh", "Occlusion_Mesh", "Tear_Mesh"}, false, {kReturnAll},
     {"Brow_Mesh->Brow_Mesh", "Occlusion_Mesh->Occlusion_Mesh", "Tear_Mesh->Tear_Mesh"}},
    {"AvatarWithoutTeethOcclusionOrTearLine", OnlyABrow(), {"Brow_Mesh"}, true, {}, {"Brow_Mesh->Brow_Mesh"}},
    {"TwoReturnedNamingOneFaceMeshCountTwice", WithoutTearAndTeeth(), {"Brow_Mesh", "Brow_Mesh"}, true, {},
     {"Brow_Mesh->Brow_Mesh", "Brow_Mesh->Brow_Mesh"}},
    {"AReturnedPropDoesNotCount", WithoutTearAndTeeth(), {"Hat", "Brow_Mesh"}, false, {kReturnAll},
     {"Hat->Hat", "Brow_Mesh->Brow_Mesh"}},
    {"OtherCharactersMeshDoesNotCount", WithoutTearAndTeeth(), {"Bob_Brow", "Brow_Mesh"}, false, {kReturnAll},
     {"Bob_Brow->Bob_Brow", "Brow_Mesh->Brow_Mesh"}},
};

class ExpressionMeshMatch : public ExpressionMatching, public ::testing::WithParamInterface<MatchCase>
{
};

TEST_P(ExpressionMeshMatch, CountsRecordsThatNameAFaceMesh)
{
    const MatchCase& c = GetParam();
    Build(c.m_kScene);
    WriteReturn(c.m_kReturn);
    CZBrushToFMMeshInfoList records = ReturnRecords();
    ASSERT_EQ(records.GetCount(), c.m_kTargets.size());
    auto* parent = new QWidget();
    parent->setObjectName(QStringLiteral("MatchParent"));
    EXPECT_EQ(m_pMatcher->CheckAvatarMeshMatch(Handle("ava"), records, parent), c.m_bMatch);
    delete parent;
    EXPECT_EQ(MessageTexts(), c.m_kMessages);
    for (const Host::CCallRecord& call : Calls("ShowMessageBox")) {
        EXPECT_EQ(call.m_kArgs.mid(1), (QStringList{"", "MatchParent", "2", "1024", "0"}));
    }
    EXPECT_EQ(Targets(records), c.m_kTargets);
}

INSTANTIATE_TEST_SUITE_P(Cases, ExpressionMeshMatch, ::testing::ValuesIn(kMatchCases),
                         [](const ::testing::TestParamInfo<MatchCase>& info) { return info.param.m_pName; });

TEST_F(ExpressionMatching, MatchChoosesTheFirstCandidateThatIsAFaceMesh)
{
    Build();
    auto candidates = std::make_shared<CTargetCandidateList>();
    candidates->Add(CTargetCandidate(L"Hat", Handle("hat")));
    candidates->Add(CTargetCandidate(L"Tear_Mesh", Handle("ava_tear")));
    candidates->Add(CTargetCandidate(L"Brow_Mesh", Handle("ava_brow")));
    CZBrushToFMMeshInfo info;
    info.m_pTargetCandidates = candidates;
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

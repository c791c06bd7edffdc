#include "CExpressionMatcher.h"
#include "LiteralTargetCheck.h"
#include "RandomRecords.h"

#include <gtest/gtest.h>

#include <ostream>
#include <random>
#include <vector>

using namespace MV;
using namespace MV::Test;

namespace {

struct RecordRow
{
    std::vector<std::uint32_t> m_kOffered;
    int m_iChosen;
    std::int32_t m_eAction = ActionUpdate;
};

CZBrushToFMMeshInfoList MakeRecords(const std::vector<RecordRow>& rows)
{
    auto candidates = std::make_shared<CTargetCandidateList>();
    for (int t = 0; t < 10; ++t) {
        candidates->Add(CTargetCandidate(L"Mesh_" + std::to_wstring(t), nullptr));
    }
    CZBrushToFMMeshInfoList list;
    for (const RecordRow& row : rows) {
        CZBrushToFMMeshInfo info;
        info.m_pTargetCandidates = candidates;
        for (std::uint32_t offered : row.m_kOffered) {
            info.m_kOfferedTargets.Add(offered);
        }
        info.m_iChosenTarget = row.m_iChosen;
        info.m_eAction = row.m_eAction;
        list.Add(info);
    }
    return list;
}

std::vector<int> Chosen(const CZBrushToFMMeshInfoList& list)
{
    std::vector<int> chosen;
    for (const CZBrushToFMMeshInfo& info : list) {
        chosen.push_back(info.m_iChosenTarget);
    }
    return chosen;
}

struct TargetCase
{
    const char* m_pName;
    std::vector<RecordRow> m_kRecords;
    std::vector<int> m_kExpected;
};

void PrintTo(const TargetCase& c, std::ostream* out)
{
    *out << c.m_pName;
}

// Expected choices worked out by hand from the rule: the earlier record keeps a contested
// target; a later one takes its first candidate that no other record (itself included, with
// its old choice) holds as an Update, or none.
const TargetCase kTargetCases[] = {
    {"EmptyList", {}, {}},
    {"LaterMovesToItsNextCandidate", {{{0}, 0}, {{0, 1}, 0}}, {0, 1}},
    {"LaterWithoutAFreeCandidateLosesItsTarget", {{{0}, 0}, {{0}, 0}}, {0, -1}},
    {"MoveSkipsTargetsOthersHold", {{{0}, 0}, {{0, 1, 2}, 0}, {{1}, 0}}, {0, 2, 0}},
    {"ThreeOnOneTargetEachMovesOn", {{{0}, 0}, {{0, 1, 2}, 0}, {{0, 1, 2}, 0}}, {0, 1, 2}},
    {"LaterMovesEvenWhenItChoseALaterCandidate", {{{3}, 0}, {{1, 3, 4}, 1}}, {0, 0}},
    {"NonUpdateRecordNeverContests", {{{0}, 0}, {{0, 1}, 0, ActionCreateProp}}, {0, 0}},
    {"EarlierNonUpdateLeavesTheTargetToTheUpdate", {{{0}, 0, ActionCreateAcc}, {{0, 1}, 0}}, {0, 0}},
    {"RecordWithoutTargetNeverContests", {{{0}, 0}, {{0, 1}, -1}}, {0, -1}},
    {"OutOfRangeChoiceHoldsNothing", {{{0}, 0}, {{0, 1}, 5}}, {0, 5}},
    {"OwnOldTargetCountsAsTaken", {{{0}, 0}, {{0, 0}, 1}}, {0, -1}},
    {"CandidateHeldByALaterRecordIsTaken", {{{5}, 0}, {{5, 6}, 0}, {{6}, 0}}, {0, -1, 0}},
    {"TwoContestedTargetsSettleApart", {{{0}, 0}, {{1}, 0}, {{0, 2}, 0}, {{1, 2, 3}, 0}}, {0, 0, 1, 2}},
};

class TargetCheck : public ::testing::TestWithParam<TargetCase>
{
};

TEST_P(TargetCheck, SettlesContestedTargetsAsTheRuleSays)
{
    const TargetCase& c = GetParam();
    CZBrushToFMMeshInfoList fast = MakeRecords(c.m_kRecords);
    CZBrushToFMMeshInfoList literal = fast;
    ASSERT_EQ(CExpressionMatcher::CheckUpdateGozTargetObject(fast), QV::kOk);
    ASSERT_EQ(Literal::CheckUpdateGozTargetObject(literal), QV::kOk);
    EXPECT_EQ(Chosen(fast), c.m_kExpected);
    EXPECT_EQ(Chosen(literal), c.m_kExpected) << "the reference itself reads the rule this way";
}

INSTANTIATE_TEST_SUITE_P(Cases, TargetCheck, ::testing::ValuesIn(kTargetCases),
                         [](const ::testing::TestParamInfo<TargetCase>& info) { return info.param.m_pName; });

TEST(TargetCheckRandom, SameChoicesAsTheLiteralRuleOnThousandsOfLists)
{
    std::mt19937 random(20261123u);
    std::uniform_int_distribution<int> size(0, 40);
    std::uniform_int_distribution<int> targets(1, 12);
    std::uniform_int_distribution<int> candidates(0, 6);
    int changed = 0;
    constexpr int kLists = 3000;
    for (int n = 0; n < kLists; ++n) {
        const CZBrushToFMMeshInfoList original =
            MakeRandomRecords(random, size(random), targets(random), candidates(random));
        CZBrushToFMMeshInfoList fast = original;
        CZBrushToFMMeshInfoList literal = original;
        ASSERT_EQ(CExpressionMatcher::CheckUpdateGozTargetObject(fast), QV::kOk);
        ASSERT_EQ(Literal::CheckUpdateGozTargetObject(literal), QV::kOk);
        ASSERT_EQ(Chosen(fast), Chosen(literal)) << "list " << n;
        ASSERT_TRUE(fast == literal) << "list " << n << ": only the choices may change";
        changed += Chosen(literal) != Chosen(original) ? 1 : 0;
    }
    // Most lists must contest something, or the comparison proves little.
    EXPECT_GT(changed, kLists / 3);
}

TEST(TargetCheckRandom, LargeListsWithFewTargetsAgree)
{
    std::mt19937 random(7u);
    for (int records : {200, 500}) {
        const CZBrushToFMMeshInfoList original = MakeRandomRecords(random, records, records / 8, 5);
        CZBrushToFMMeshInfoList fast = original;
        CZBrushToFMMeshInfoList literal = original;
        CExpressionMatcher::CheckUpdateGozTargetObject(fast);
        Literal::CheckUpdateGozTargetObject(literal);
        EXPECT_EQ(Chosen(fast), Chosen(literal)) << records << " records";
    }
}

struct UiStateCase
{
    const char* m_pName;
    std::vector<RecordRow> m_kRecords;
    bool m_bCanGoz;
};

const UiStateCase kUiStateCases[] = {
    {"NoRecords", {}, true},
    {"UpdatesWithTargets", {{{0}, 0}, {{1}, 0}}, true},
    {"UpdateWithoutTarget", {{{0}, 0}, {{1}, -1}}, false},
    {"PropWithoutTarget", {{{}, -1, ActionCreateProp}}, true},
    {"ClothWithoutTarget", {{{0}, -1, ActionCreateCloth}, {{1}, 0}}, true},
};

TEST(ExpressionUiState, UpdateWithoutTargetBlocksTheImport)
{
    for (const UiStateCase& c : kUiStateCases) {
        EXPECT_EQ(CExpressionMatcher::CheckUiStateCanGoz(MakeRecords(c.m_kRecords)), c.m_bCanGoz) << c.m_pName;
    }
}

} // namespace

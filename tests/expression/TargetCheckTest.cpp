#include "CExpressionMatcher.h"
#include "LiteralTargetCheck.h"
#include "RandomRecords.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

using namespace MV;
using namespace MV::Test;

namespace {

struct RecordRow
{
    QV::CArrayList<std::uint32_t> m_kOffered;
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
        info.m_kOfferedTargets = row.m_kOffered;
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

TEST(TargetCheck, SettlesContestedTargetsAsTheRuleSays)
{
    // Worked out by hand from the rule: the earlier record keeps a contested target; a later
    // one takes its first candidate that no other record (itself included, with its old
    // choice) holds as an Update, or none.
    const struct { const char* name; std::vector<RecordRow> records; std::vector<int> expected; } cases[] = {
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
    for (const auto& c : cases) {
        CZBrushToFMMeshInfoList fast = MakeRecords(c.records);
        CZBrushToFMMeshInfoList literal = fast;
        ASSERT_EQ(CExpressionMatcher::CheckUpdateGozTargetObject(fast), QV::kOk) << c.name;
        ASSERT_EQ(Literal::CheckUpdateGozTargetObject(literal), QV::kOk) << c.name;
        EXPECT_EQ(Chosen(fast), c.expected) << c.name;
        EXPECT_EQ(Chosen(literal), c.expected) << c.name << ": the reference itself reads the rule this way";
    }
}

TEST(TargetCheck, SameChoicesAsTheLiteralRuleOnThousandsOfRandomLists)
{
    std::mt19937 random(20261123u);
    std::uniform_int_distribution<int> size(0, 40), targets(1, 12), candidates(0, 6);
    std::vector<CZBrushToFMMeshInfoList> lists;
    for (int n = 0; n < 3000; ++n) {
        lists.push_back(MakeRandomRecords(random, size(random), targets(random), candidates(random)));
    }
    // And large lists with few targets.
    lists.push_back(MakeRandomRecords(random, 200, 25, 5));
    lists.push_back(MakeRandomRecords(random, 500, 62, 5));
    int changed = 0;
    for (std::size_t n = 0; n < lists.size(); ++n) {
        CZBrushToFMMeshInfoList fast = lists[n];
        CZBrushToFMMeshInfoList literal = lists[n];
        ASSERT_EQ(CExpressionMatcher::CheckUpdateGozTargetObject(fast), QV::kOk);
        ASSERT_EQ(Literal::CheckUpdateGozTargetObject(literal), QV::kOk);
        ASSERT_EQ(Chosen(fast), Chosen(literal)) << "list " << n;
        ASSERT_TRUE(fast == literal) << "list " << n << ": only the choices may change";
        changed += Chosen(literal) != Chosen(lists[n]) ? 1 : 0;
    }
    // Most lists must contest something, or the comparison proves little.
    EXPECT_GT(changed, 1000);
}

TEST(ExpressionUiState, UpdateWithoutTargetBlocksTheImport)
{
    const struct { const char* name; std::vector<RecordRow> records; bool canGoz; } cases[] = {
        {"NoRecords", {}, true},
        {"UpdatesWithTargets", {{{0}, 0}, {{1}, 0}}, true},
        {"UpdateWithoutTarget", {{{0}, 0}, {{1}, -1}}, false},
        {"PropWithoutTarget", {{{}, -1, ActionCreateProp}}, true},
        {"ClothWithoutTarget", {{{0}, -1, ActionCreateCloth}, {{1}, 0}}, true},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(CExpressionMatcher::CheckUiStateCanGoz(MakeRecords(c.records)), c.canGoz) << c.name;
    }
}

} // namespace

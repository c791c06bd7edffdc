#include "CFMToZBrushMeshInfo.h"
#include "CGoZSendPipeline.h"

#include <gtest/gtest.h>

using namespace MV;

namespace {

CFMToZBrushMeshInfo Fresh()
{
    CFMToZBrushMeshInfo info;
    EXPECT_EQ(info.SetActiveAction(Create, NoInfo), QV::kOk);
    info.SelectAction(Create);
    return info;
}

TEST(SendRecord, FreshStandardCharacterRecordOffersNoChoice)
{
    const CFMToZBrushMeshInfo info = Fresh();
    ASSERT_EQ(info.m_kActionMap.size(), 1u);
    EXPECT_EQ(info.m_kActionMap[0], CFMToZBrushMeshInfo::ActionPair(Create, NoInfo));
    EXPECT_EQ(info.GetActionMapIndex(), 0);
    EXPECT_FALSE(info.IsCheckable());
    EXPECT_FALSE(info.m_bTeethMesh);
}

TEST(SendRecord, SetActiveActionReplacesTheFirstPairOrAppends)
{
    CFMToZBrushMeshInfo info = Fresh();
    ASSERT_EQ(info.SetActiveAction(Create, AutoRename), QV::kOk);
    ASSERT_EQ(info.SetActiveAction(Relink, NoInfo), QV::kOk);
    ASSERT_EQ(info.SetActiveAction(Create, SameNameMesh), QV::kOk);
    ASSERT_EQ(info.m_kActionMap.size(), 2u);
    EXPECT_EQ(info.m_kActionMap[0], CFMToZBrushMeshInfo::ActionPair(Create, SameNameMesh));
    EXPECT_EQ(info.m_kActionMap[1], CFMToZBrushMeshInfo::ActionPair(Relink, NoInfo));
    EXPECT_EQ(info.GetActionMapIndex(), 0) << "setting an action must not move the active index";
}

TEST(SendRecord, SelectingAnActionTakesTheLastPairAndIgnoresUnknownOnes)
{
    CFMToZBrushMeshInfo info;
    info.m_kActionMap = {{Create, NoInfo}, {Relink, NoInfo}, {Relink, AutoRename}};
    info.SelectAction(Relink);
    EXPECT_EQ(info.GetActionMapIndex(), 2);
    info.SelectAction(Skip);
    EXPECT_EQ(info.GetActionMapIndex(), 2);
    info.SelectAction(Create);
    EXPECT_EQ(info.GetActionMapIndex(), 0);
}

TEST(SendRecord, CheckableDependsOnTheActivePair)
{
    struct Case
    {
        std::size_t action;
        std::size_t info;
        bool checkable;
    };
    const Case cases[] = {
        {Create, NoInfo, false},       {Create, AutoRename, true}, {Create, SameNameMesh, false},
        {Relink, NoInfo, true},        {Relink, SameNameMesh, false}, {Skip, PolygonOver4Sides, true},
    };
    for (const Case& c : cases) {
        CFMToZBrushMeshInfo info;
        info.m_kActionMap = {{c.action, c.info}};
        EXPECT_EQ(info.IsCheckable(), c.checkable) << c.action << "/" << c.info;
    }
}

TEST(SendRecord, RelinkAfterAnEarlierSendBecomesIndexOne)
{
    CFMToZBrushMeshInfo info = Fresh();
    ASSERT_EQ(info.SetActiveAction(Relink, NoInfo), QV::kOk);
    EXPECT_EQ(info.m_kActionMap.size(), 2u);
    info.SelectAction(Relink);
    EXPECT_EQ(info.GetActionMapIndex(), 1);
    EXPECT_EQ(info.ActiveAction(), std::size_t(Relink));
}

TEST(SendTexts, TablesCarryTheTagAndEmptyNoneText)
{
    EXPECT_EQ(GozExportActionText(Create), L"[MVGoZBursh] Create");
    EXPECT_EQ(GozExportActionText(Relink), L"[MVGoZBursh] Relink");
    EXPECT_EQ(GozExportActionInfoText(NoInfo), L"");
    EXPECT_EQ(GozExportActionInfoText(AutoRename), L"[MVGoZBursh] It will auto rename.");
    EXPECT_EQ(GozExportActionInfoText(SameNameMesh),
              L"[MVGoZBursh] This content has some name mesh. It will auto rename.");
    EXPECT_EQ(GozExportActionInfoText(PolygonOver4Sides),
              L"[MVGoZBursh] Mesh contain polygon that side of numbers more than 4, goz does not support.");
    EXPECT_EQ(GozExportActionInfoText(99), L"");
}

TEST(SendPose, ExportAndReceiveOrdersDiffer)
{
    struct Case
    {
        bool bind, tpose, current;
        bool character;
        EGozPoseOption exported;
        EGozPoseOption received;
    };
    const Case cases[] = {
        {true, true, false, true, BindPose, TPose},
        {true, false, false, true, BindPose, BindPose},
        {false, true, false, true, TPose, TPose},
        {false, false, true, true, CurrentPose, CurrentPose},
        {false, false, false, true, BindPose, None},
        {true, false, false, false, None, BindPose},
    };
    for (const Case& c : cases) {
        CSendOptions options;
        options.m_bBindPose = c.bind;
        options.m_bTPose = c.tpose;
        options.m_bCurrentPose = c.current;
        EXPECT_EQ(CGoZSendPipeline::ExportPoseOption(c.character, options), c.exported);
        EXPECT_EQ(CGoZSendPipeline::ReceivePoseOption(options), c.received);
    }
}

} // namespace

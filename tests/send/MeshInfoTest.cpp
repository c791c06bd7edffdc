#include "CFMToZBrushMeshInfo.h"
#include "CGoZSendPipeline.h"

#include <gtest/gtest.h>

using namespace MV;

namespace {

TEST(SendRecord, SetActiveActionReplacesTheFirstPairOrAppends)
{
    CFMToZBrushMeshInfo info;
    for (const auto& pair : {std::make_pair(Create, NoInfo), {Create, AutoRename}, {Relink, NoInfo}, {Create, SameNameMesh}}) {
        ASSERT_EQ(info.SetActiveAction(pair.first, pair.second), QV::kOk);
    }
    EXPECT_EQ(info.m_kActionMap, (std::vector<CFMToZBrushMeshInfo::ActionPair>{{Create, SameNameMesh}, {Relink, NoInfo}}));
    EXPECT_EQ(info.GetActionMapIndex(), 0) << "setting an action must not move the active index";
}

TEST(SendRecord, SelectingAnActionTakesTheLastPairAndIgnoresUnknownOnes)
{
    CFMToZBrushMeshInfo info;
    info.m_kActionMap = {{Create, NoInfo}, {Relink, NoInfo}, {Relink, AutoRename}};
    for (const auto& step : {std::make_pair(Relink, 2), {Skip, 2}, {Create, 0}}) {
        info.SelectAction(step.first);
        EXPECT_EQ(info.GetActionMapIndex(), step.second) << step.first;
    }
    info.SelectAction(Relink);
    EXPECT_EQ(info.ActiveAction(), std::size_t(Relink));
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

TEST(SendTexts, UnknownInfoHasNoText)
{
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

#include "CMeshView.h"

#include <gtest/gtest.h>

using namespace MV::Host;

namespace {

// Projected bounds (y up) fill the screen target on one axis without leaving it, centred,
// aspect kept, and up is up.
TEST(WindowMeshView, FitCentresTheBoundsKeepingTheirAspect)
{
    const std::pair<QRectF, QRectF> cases[] = {
        {QRectF(-2, 0, 4, 1), QRectF(10, 10, 400, 300)},
        {QRectF(0, -5, 1, 10), QRectF(0, 0, 400, 300)},
        {QRectF(100, 200, 3, 3), QRectF(20, 40, 200, 500)},
        {QRectF(-1, 2, 2, 0), QRectF(0, 0, 300, 300)}, // a flat line
    };
    for (const auto& [bounds, target] : cases) {
        SCOPED_TRACE(testing::Message() << bounds.width() << " x " << bounds.height());
        const QTransform map = CMeshView::Fit(bounds, target);
        const QRectF mapped = map.mapRect(bounds);
        const double slack = 1e-6;
        const QRectF room = target.adjusted(-slack, -slack, slack, slack);
        EXPECT_TRUE(room.left() <= mapped.left() && mapped.right() <= room.right() && room.top() <= mapped.top() &&
                    mapped.bottom() <= room.bottom());
        EXPECT_NEAR(mapped.center().x(), target.center().x(), slack);
        EXPECT_NEAR(mapped.center().y(), target.center().y(), slack);
        EXPECT_TRUE(std::abs(mapped.width() - target.width()) < slack ||
                    std::abs(mapped.height() - target.height()) < slack);
        if (bounds.width() > 0 && bounds.height() > 0) {
            EXPECT_NEAR(mapped.width() / mapped.height(), bounds.width() / bounds.height(), 1e-9);
        }
        EXPECT_LT(map.map(QPointF(bounds.center().x(), bounds.bottom() + 1)).y(),
                  map.map(QPointF(bounds.center().x(), bounds.bottom())).y());
    }
}

TEST(WindowMeshView, ViewsDropTheAxisLookedAlongAndThreeQuarterShowsDepth)
{
    EXPECT_EQ(CMeshView::Project({{1, 2, 3}}, CMeshView::EProjection::Front), QPointF(1, 2));
    EXPECT_EQ(CMeshView::Project({{1, 2, 3}}, CMeshView::EProjection::Side), QPointF(-3, 2));
    EXPECT_EQ(CMeshView::Project({{1, 2, 3}}, CMeshView::EProjection::Top), QPointF(1, -3));
    const auto project = [](double x, double y, double z) {
        return CMeshView::Project({{x, y, z}}, CMeshView::EProjection::ThreeQuarter);
    };
    EXPECT_GT(project(0, 1, 0).y(), project(0, 0, 0).y());
    // Points that a front view would draw on top of each other come apart.
    EXPECT_NE(project(0, 0, 1), project(0, 0, 0));
    EXPECT_NE(project(1, 0, 0).x(), project(-1, 0, 0).x());
}

TEST(WindowMeshView, BoundsHoldTheMeshAsLoadedSoAShrunkReturnStaysInView)
{
    CMeshView::CShownMesh shown;
    shown.m_kAsLoaded.m_kVertices = {{{-2, 0, 0}}, {{2, 3, 0}}};
    shown.m_kMesh.m_kVertices = {{{-1, 0, 0}}, {{1, 1, 0}}};
    EXPECT_EQ(CMeshView::Bounds({shown}, CMeshView::EProjection::Front), QRectF(QPointF(-2, 0), QPointF(2, 3)));
    EXPECT_TRUE(CMeshView::Bounds({CMeshView::CShownMesh()}, CMeshView::EProjection::Front).isNull());
}

} // namespace

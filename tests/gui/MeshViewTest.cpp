#include "CMeshView.h"

#include <gtest/gtest.h>

#include <ostream>

using namespace MV::Host;

namespace {

// ---------------------------------------------------------------------------------------
// Fitting projected bounds into the view: centred, aspect kept, up is up.

struct FitCase
{
    const char* m_pName;
    QRectF m_kBounds; // projected, y up
    QRectF m_kTarget; // on screen
};

void PrintTo(const FitCase& c, std::ostream* out)
{
    *out << c.m_pName;
}

const FitCase kFitCases[] = {
    {"Wide", QRectF(-2, 0, 4, 1), QRectF(10, 10, 400, 300)},
    {"Tall", QRectF(0, -5, 1, 10), QRectF(0, 0, 400, 300)},
    {"OffCentre", QRectF(100, 200, 3, 3), QRectF(20, 40, 200, 500)},
    {"FlatLine", QRectF(-1, 2, 2, 0), QRectF(0, 0, 300, 300)},
};

class FitCases : public ::testing::TestWithParam<FitCase>
{
};

TEST_P(FitCases, BoundsFillTheTargetOnOneAxisWithoutLeavingIt)
{
    const FitCase& c = GetParam();
    const QTransform map = CMeshView::Fit(c.m_kBounds, c.m_kTarget);
    const QRectF mapped = map.mapRect(c.m_kBounds);
    const double slack = 1e-6;
    EXPECT_GE(mapped.left(), c.m_kTarget.left() - slack);
    EXPECT_LE(mapped.right(), c.m_kTarget.right() + slack);
    EXPECT_GE(mapped.top(), c.m_kTarget.top() - slack);
    EXPECT_LE(mapped.bottom(), c.m_kTarget.bottom() + slack);
    EXPECT_NEAR(mapped.center().x(), c.m_kTarget.center().x(), slack);
    EXPECT_NEAR(mapped.center().y(), c.m_kTarget.center().y(), slack);
    const bool fillsWidth = std::abs(mapped.width() - c.m_kTarget.width()) < slack;
    const bool fillsHeight = std::abs(mapped.height() - c.m_kTarget.height()) < slack;
    EXPECT_TRUE(fillsWidth || fillsHeight) << mapped.width() << " x " << mapped.height();
    if (c.m_kBounds.width() > 0 && c.m_kBounds.height() > 0) {
        EXPECT_NEAR(mapped.width() / mapped.height(), c.m_kBounds.width() / c.m_kBounds.height(), 1e-9);
    }
    // A higher point is drawn higher up the screen.
    EXPECT_LT(map.map(QPointF(c.m_kBounds.center().x(), c.m_kBounds.bottom() + 1)).y(),
              map.map(QPointF(c.m_kBounds.center().x(), c.m_kBounds.bottom())).y());
}

INSTANTIATE_TEST_SUITE_P(Window, FitCases, ::testing::ValuesIn(kFitCases),
                         [](const ::testing::TestParamInfo<FitCase>& info) { return info.param.m_pName; });

// ---------------------------------------------------------------------------------------
// Which axes each view looks along.

struct ProjectionCase
{
    CMeshView::EProjection m_eProjection;
    std::array<double, 3> m_kVertex;
    QPointF m_kSeen;
};

void PrintTo(const ProjectionCase& c, std::ostream* out)
{
    *out << CMeshView::ProjectionName(c.m_eProjection).toStdString();
}

const ProjectionCase kProjections[] = {
    {CMeshView::EProjection::Front, {{1, 2, 3}}, QPointF(1, 2)},
    {CMeshView::EProjection::Side, {{1, 2, 3}}, QPointF(-3, 2)},
    {CMeshView::EProjection::Top, {{1, 2, 3}}, QPointF(1, -3)},
};

class Projections : public ::testing::TestWithParam<ProjectionCase>
{
};

TEST_P(Projections, DropTheAxisLookedAlong)
{
    const ProjectionCase& c = GetParam();
    EXPECT_EQ(CMeshView::Project(c.m_kVertex, c.m_eProjection), c.m_kSeen);
}

INSTANTIATE_TEST_SUITE_P(Window, Projections, ::testing::ValuesIn(kProjections));

TEST(WindowMeshView, ThreeQuarterViewKeepsUpUpAndShowsDepth)
{
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
    const QRectF bounds = CMeshView::Bounds({shown}, CMeshView::EProjection::Front);
    EXPECT_EQ(bounds, QRectF(QPointF(-2, 0), QPointF(2, 3)));
    EXPECT_TRUE(CMeshView::Bounds({CMeshView::CShownMesh()}, CMeshView::EProjection::Front).isNull());
}

} // namespace

#include "CMeshView.h"

#include <QPainter>
#include <QPalette>
#include <QVector>

#include <algorithm>
#include <cmath>

namespace MV {
namespace Host {

namespace {

constexpr double kMargin = 24.0;
// The three-quarter view: turned 35 degrees about the vertical, tipped 20 degrees towards the viewer.
const double kTurn = 35.0 * M_PI / 180.0;
const double kTip = 20.0 * M_PI / 180.0;

// Appends the edges of the faces to lines, up to budget faces; returns the faces taken.
int AppendEdges(const CGoZMesh& mesh, CMeshView::EProjection projection, const QTransform& map,
                QVector<QLineF>& lines, int budget)
{
    QVector<QPointF> points;
    points.reserve(mesh.m_kVertices.size());
    for (const std::array<double, 3>& vertex : mesh.m_kVertices) {
        points << map.map(CMeshView::Project(vertex, projection));
    }
    int taken = 0;
    for (const QVector<int>& face : mesh.m_kFaces) {
        if (taken >= budget) {
            break;
        }
        ++taken;
        for (int i = 0; i < face.size(); ++i) {
            const int a = face.at(i);
            const int b = face.at((i + 1) % face.size());
            // A scene mesh is checked when loaded; a bad index is skipped rather than trusted.
            if (a >= 0 && b >= 0 && a < points.size() && b < points.size()) {
                lines << QLineF(points.at(a), points.at(b));
            }
        }
    }
    return taken;
}

} // namespace

CMeshView::CMeshView(QWidget* parent) : QWidget(parent)
{
    setAutoFillBackground(true);
    QPalette colours = palette();
    colours.setColor(QPalette::Window, Qt::white);
    setPalette(colours);
}

void CMeshView::SetMeshes(const QList<CShownMesh>& meshes)
{
    m_kMeshes = meshes;
    update();
}

void CMeshView::SetProjection(EProjection projection)
{
    m_eProjection = projection;
    update();
}

QString CMeshView::ProjectionName(EProjection projection)
{
    switch (projection) {
    case EProjection::ThreeQuarter:
        return QStringLiteral("Three-quarter");
    case EProjection::Front:
        return QStringLiteral("Front");
    case EProjection::Side:
        return QStringLiteral("Side");
    case EProjection::Top:
        return QStringLiteral("Top");
    }
    return QString();
}

QPointF CMeshView::Project(const std::array<double, 3>& vertex, EProjection projection)
{
    const double x = vertex[0];
    const double y = vertex[1];
    const double z = vertex[2];
    switch (projection) {
    case EProjection::Front:
        return QPointF(x, y);
    case EProjection::Side:
        return QPointF(-z, y);
    case EProjection::Top:
        return QPointF(x, -z);
    case EProjection::ThreeQuarter: {
        const double turnedX = x * std::cos(kTurn) + z * std::sin(kTurn);
        const double turnedZ = -x * std::sin(kTurn) + z * std::cos(kTurn);
        return QPointF(turnedX, y * std::cos(kTip) - turnedZ * std::sin(kTip));
    }
    }
    return QPointF(x, y);
}

QRectF CMeshView::Bounds(const QList<CShownMesh>& meshes, EProjection projection)
{
    bool any = false;
    double left = 0.0;
    double right = 0.0;
    double bottom = 0.0;
    double top = 0.0;
    for (const CShownMesh& shown : meshes) {
        for (const CGoZMesh* mesh : {&shown.m_kMesh, &shown.m_kAsLoaded}) {
            for (const std::array<double, 3>& vertex : mesh->m_kVertices) {
                const QPointF point = Project(vertex, projection);
                if (!any) {
                    left = right = point.x();
                    bottom = top = point.y();
                    any = true;
                }
                left = std::min(left, point.x());
                right = std::max(right, point.x());
                bottom = std::min(bottom, point.y());
                top = std::max(top, point.y());
            }
        }
    }
    return any ? QRectF(QPointF(left, bottom), QPointF(right, top)) : QRectF();
}

QTransform CMeshView::Fit(const QRectF& bounds, const QRectF& target)
{
    // A flat or single-point mesh still gets a finite scale along the other axis.
    const double width = std::max(bounds.width(), 1e-9);
    const double height = std::max(bounds.height(), 1e-9);
    double scale = std::min(target.width() / width, target.height() / height);
    if (bounds.width() <= 0.0 && bounds.height() <= 0.0) {
        scale = 1.0;
    }
    QTransform map;
    map.translate(target.center().x(), target.center().y());
    map.scale(scale, -scale);
    map.translate(-bounds.center().x(), -bounds.center().y());
    return map;
}

QSize CMeshView::minimumSizeHint() const
{
    return QSize(240, 200);
}

QSize CMeshView::sizeHint() const
{
    return QSize(600, 460);
}

void CMeshView::paintEvent(QPaintEvent* event)
{
    QWidget::paintEvent(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, true);
    const QRectF area = QRectF(rect()).adjusted(kMargin, kMargin, -kMargin, -kMargin);
    const QRectF bounds = Bounds(m_kMeshes, m_eProjection);
    if (m_kMeshes.isEmpty() || bounds.isNull()) {
        painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
        painter.drawText(rect(), Qt::AlignCenter,
                         m_kMeshes.isEmpty() ? QStringLiteral("Select an object in the scene tree to see its mesh.")
                                             : QStringLiteral("The selection has no mesh."));
        return;
    }
    const QTransform map = Fit(bounds, area);
    int budget = kMaxDrawnFaces;
    int faces = 0;
    bool changed = false;
    QVector<QLineF> before;
    QVector<QLineF> now;
    for (const CShownMesh& shown : m_kMeshes) {
        faces += shown.m_kMesh.m_kFaces.size();
        if (shown.IsChanged()) {
            changed = true;
            budget -= AppendEdges(shown.m_kAsLoaded, m_eProjection, map, before, budget);
        }
        budget -= AppendEdges(shown.m_kMesh, m_eProjection, map, now, budget);
    }
    const QColor loaded(170, 170, 170);
    const QColor current(25, 70, 160);
    painter.setPen(QPen(loaded, 1.0));
    painter.drawLines(before);
    painter.setPen(QPen(current, 1.2));
    painter.drawLines(now);

    const QRect text = rect().adjusted(8, 4, -8, -4);
    int bottom = text.bottom();
    const int line = fontMetrics().height();
    if (budget <= 0) {
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(QRect(text.left(), bottom - line, text.width(), line), Qt::AlignLeft,
                         QStringLiteral("%1 of %2 faces drawn").arg(kMaxDrawnFaces).arg(faces));
        bottom -= line;
    }
    if (changed) {
        const QString now = QStringLiteral("blue: the mesh now");
        painter.setPen(current);
        painter.drawText(QRect(text.left(), bottom - line, text.width(), line), Qt::AlignLeft, now);
        painter.setPen(loaded.darker(130));
        painter.drawText(QRect(text.left() + fontMetrics().horizontalAdvance(now + QStringLiteral("    ")),
                               bottom - line, text.width(), line),
                         Qt::AlignLeft, QStringLiteral("grey: as the scene loaded it"));
    }
}

} // namespace Host
} // namespace MV

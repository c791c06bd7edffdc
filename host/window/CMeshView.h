#pragma once

#include "CGoZStandInFile.h"

#include <QList>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QTransform>
#include <QWidget>

#include <array>

namespace MV {
namespace Host {

// A wireframe of the selected objects' meshes, drawn flat with an orthographic projection.
// Where a mesh changed since the scene was loaded, the mesh as loaded is drawn behind it in
// grey, so a sculpted mesh that came back shows against what was sent.
class CMeshView : public QWidget
{
    Q_OBJECT
public:
    enum class EProjection
    {
        ThreeQuarter,
        Front,
        Side,
        Top,
    };

    struct CShownMesh
    {
        QString m_strName;
        CGoZMesh m_kMesh;
        CGoZMesh m_kAsLoaded;

        bool IsChanged() const { return m_kMesh != m_kAsLoaded; }
    };

    // Faces drawn at most, over all meshes; a larger mesh is drawn in part and says so.
    static constexpr int kMaxDrawnFaces = 200000;

    explicit CMeshView(QWidget* parent = nullptr);

    void SetMeshes(const QList<CShownMesh>& meshes);
    const QList<CShownMesh>& Meshes() const { return m_kMeshes; }
    void SetProjection(EProjection projection);
    EProjection Projection() const { return m_eProjection; }
    static QString ProjectionName(EProjection projection);

    // A vertex seen along the projection's axis: x to the right, y up.
    static QPointF Project(const std::array<double, 3>& vertex, EProjection projection);
    // The projected bounds of the meshes (both forms of each); empty when they hold no vertex.
    static QRectF Bounds(const QList<CShownMesh>& meshes, EProjection projection);
    // Maps projected bounds into target, centred, aspect kept, y pointing down as on screen.
    static QTransform Fit(const QRectF& bounds, const QRectF& target);

    QSize minimumSizeHint() const override;
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QList<CShownMesh> m_kMeshes;
    EProjection m_eProjection = EProjection::ThreeQuarter;
};

} // namespace Host
} // namespace MV

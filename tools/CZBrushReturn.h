#pragma once

#include "CGoZStandInFile.h"

#include <QJsonObject>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

#include <array>

namespace MV {
namespace Host {

// What the ZBrush stand-in does with a send (docs/scene-format.md, "zbrush_return"): which
// meshes come back, under which names, how they are "sculpted", and how a script can make
// it misbehave (truncated or malformed files, names listed without a file, meshes nobody sent).
struct CZBrushReturn
{
    struct CExtraMesh
    {
        QString m_strName;
        CGoZMesh m_kMesh;
    };

    bool m_bAllMeshes = true;
    QStringList m_kMeshes; // when not all: the sent names that come back (object-list order is kept)
    QMap<QString, QString> m_kRenames; // sent name -> returned name
    QList<CExtraMesh> m_kExtras; // appended after the sent ones
    QSet<QString> m_kTruncated; // by returned name: the file is cut in the middle
    QSet<QString> m_kMalformed; // by returned name: the file holds no mesh
    QSet<QString> m_kMissing; // by returned name: listed, but no file is written
    double m_dScale = 1.1;
    std::array<double, 3> m_kOffset{{0.0, 0.0, 0.0}};
    bool m_bLaunch = true; // start the return launcher afterwards

    // On failure error names the key and the problem; settings stay unchanged.
    static bool FromJson(const QJsonValue& value, CZBrushReturn& settings, QString& error);

    // The "sculpt": every vertex scaled about the origin, then moved by the offset.
    CGoZMesh Sculpt(const CGoZMesh& mesh) const;
    // Four vertices, four triangles: what a mesh nobody sent looks like unless given.
    static CGoZMesh Tetrahedron();
};

} // namespace Host
} // namespace MV

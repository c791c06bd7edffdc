#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QPair>
#include <QString>
#include <QVector>

#include <array>

namespace MV {
namespace Host {

// A small polygon mesh: vertex positions and faces of three or more vertex indices.
struct CGoZMesh
{
    QVector<std::array<double, 3>> m_kVertices;
    QVector<QVector<int>> m_kFaces;

    bool IsEmpty() const { return m_kVertices.isEmpty() && m_kFaces.isEmpty(); }
    bool operator==(const CGoZMesh& other) const
    {
        return m_kVertices == other.m_kVertices && m_kFaces == other.m_kFaces;
    }
    bool operator!=(const CGoZMesh& other) const { return !(*this == other); }

    // Empty when the mesh is sound; else what is wrong (a face index out of range, ...).
    QString Check() const;
    // Counts, bounding box and a checksum of the exact content: {"vertices", "faces", "bbox", "checksum"}.
    QJsonObject Summary() const;
    // The whole mesh: {"vertices": [[x, y, z], ...], "faces": [[0, 1, 2], ...]}.
    QJsonObject ToJson() const;
    // Reads the form ToJson writes; on failure error says what is wrong and the mesh is unchanged.
    bool FromJson(const QJsonValue& value, QString& error);
};

// The stand-in for a GoZ file that the reference host and the ZBrush stand-ins exchange
// (docs/scene-format.md, "GoZ stand-in files"). Plain UTF-8 text:
//
//   GOZ-STANDIN 1
//   object=<id>          key=value lines; the keys before "vertices=" are kept in order
//   name=<name>
//   vertices=<V>
//   v <x> <y> <z>        V lines
//   faces=<F>
//   f <i> <j> <k> ...    F lines, three or more indices below V
//   end
//
// "end" closes the file: a file cut anywhere before it is refused as truncated.
class CGoZStandInFile
{
public:
    static constexpr const char* kMagic = "GOZ-STANDIN 1";
    // A returned mesh bigger than this is refused instead of being allocated.
    static constexpr int kMaxVertices = 4000000;
    static constexpr int kMaxFaces = 8000000;

    QList<QPair<QString, QString>> m_kKeys;
    CGoZMesh m_kMesh;

    QString Value(const QString& key) const;
    void SetValue(const QString& key, const QString& value);

    QByteArray Write() const;
    // On failure error says what is wrong (with the line number) and file is unchanged.
    static bool Parse(const QByteArray& bytes, CGoZStandInFile& file, QString& error);
    // Reads and parses a file; a missing or unreadable file is an error too.
    static bool Read(const QString& path, CGoZStandInFile& file, QString& error);
    // Writes beside the target and renames, so a reader never sees half a file.
    static bool Save(const QString& path, const QByteArray& bytes, QString& error);
};

} // namespace Host
} // namespace MV

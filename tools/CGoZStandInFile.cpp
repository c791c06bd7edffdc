#include "CGoZStandInFile.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QSaveFile>

#include <cmath>
#include <limits>

namespace MV {
namespace Host {

namespace {

// Shortest text that reads back to the same double.
QByteArray NumberText(double value)
{
    return QByteArray::number(value, 'g', 17);
}

bool ReadCount(const QByteArray& line, const char* key, int maximum, int& count)
{
    const QByteArray prefix = QByteArray(key) + '=';
    if (!line.startsWith(prefix)) {
        return false;
    }
    bool ok = false;
    const qlonglong value = line.mid(prefix.size()).toLongLong(&ok);
    if (!ok || value < 0 || value > maximum) {
        return false;
    }
    count = static_cast<int>(value);
    return true;
}

QList<QByteArray> Fields(const QByteArray& line)
{
    QList<QByteArray> fields;
    for (const QByteArray& field : line.split(' ')) {
        if (!field.isEmpty()) {
            fields << field;
        }
    }
    return fields;
}

} // namespace

QString CGoZMesh::Check() const
{
    for (const std::array<double, 3>& vertex : m_kVertices) {
        for (double coordinate : vertex) {
            if (!std::isfinite(coordinate)) {
                return QStringLiteral("a vertex coordinate is not a finite number");
            }
        }
    }
    for (int f = 0; f < m_kFaces.size(); ++f) {
        const QVector<int>& face = m_kFaces.at(f);
        if (face.size() < 3) {
            return QStringLiteral("face %1 has fewer than three vertices").arg(f);
        }
        for (int index : face) {
            if (index < 0 || index >= m_kVertices.size()) {
                return QStringLiteral("face %1 names vertex %2, but there are %3").arg(f).arg(index).arg(m_kVertices.size());
            }
        }
    }
    return QString();
}

QJsonObject CGoZMesh::Summary() const
{
    QJsonObject summary{{QStringLiteral("vertices"), m_kVertices.size()}, {QStringLiteral("faces"), m_kFaces.size()}};
    if (!m_kVertices.isEmpty()) {
        std::array<double, 3> low = m_kVertices.first();
        std::array<double, 3> high = low;
        for (const std::array<double, 3>& vertex : m_kVertices) {
            for (int axis = 0; axis < 3; ++axis) {
                low[axis] = std::min(low[axis], vertex[axis]);
                high[axis] = std::max(high[axis], vertex[axis]);
            }
        }
        summary.insert(QStringLiteral("bbox"), QJsonArray{QJsonArray{low[0], low[1], low[2]},
                                                          QJsonArray{high[0], high[1], high[2]}});
    } else {
        summary.insert(QStringLiteral("bbox"), QJsonValue());
    }
    // Over the exact text of every number, so any change of the content changes it.
    QCryptographicHash hash(QCryptographicHash::Sha1);
    for (const std::array<double, 3>& vertex : m_kVertices) {
        hash.addData(NumberText(vertex[0]) + ' ' + NumberText(vertex[1]) + ' ' + NumberText(vertex[2]) + '\n');
    }
    hash.addData("|");
    for (const QVector<int>& face : m_kFaces) {
        QByteArray line;
        for (int index : face) {
            line += QByteArray::number(index) + ' ';
        }
        hash.addData(line + '\n');
    }
    summary.insert(QStringLiteral("checksum"), QString::fromLatin1(hash.result().toHex().left(12)));
    return summary;
}

QJsonObject CGoZMesh::ToJson() const
{
    QJsonArray vertices;
    for (const std::array<double, 3>& vertex : m_kVertices) {
        vertices.append(QJsonArray{vertex[0], vertex[1], vertex[2]});
    }
    QJsonArray faces;
    for (const QVector<int>& face : m_kFaces) {
        QJsonArray indices;
        for (int index : face) {
            indices.append(index);
        }
        faces.append(indices);
    }
    return QJsonObject{{QStringLiteral("vertices"), vertices}, {QStringLiteral("faces"), faces}};
}

bool CGoZMesh::FromJson(const QJsonValue& value, QString& error)
{
    if (!value.isObject()) {
        error = QStringLiteral("must be an object {\"vertices\": [[x, y, z], ...], \"faces\": [[i, j, k], ...]}");
        return false;
    }
    const QJsonObject object = value.toObject();
    for (auto it = object.constBegin(); it != object.constEnd(); ++it) {
        if (it.key() != QLatin1String("vertices") && it.key() != QLatin1String("faces") &&
            it.key() != QLatin1String("comment")) {
            error = QStringLiteral("unknown key \"%1\"").arg(it.key());
            return false;
        }
    }
    const QJsonValue vertexValue = object.value(QStringLiteral("vertices"));
    const QJsonValue faceValue = object.value(QStringLiteral("faces"));
    if (!vertexValue.isArray() && !vertexValue.isUndefined()) {
        error = QStringLiteral("\"vertices\" must be an array of [x, y, z]");
        return false;
    }
    if (!faceValue.isArray() && !faceValue.isUndefined()) {
        error = QStringLiteral("\"faces\" must be an array of index arrays");
        return false;
    }
    CGoZMesh mesh;
    const QJsonArray vertices = vertexValue.toArray();
    for (int i = 0; i < vertices.size(); ++i) {
        const QJsonArray xyz = vertices.at(i).toArray();
        if (!vertices.at(i).isArray() || xyz.size() != 3 || !xyz.at(0).isDouble() || !xyz.at(1).isDouble() ||
            !xyz.at(2).isDouble()) {
            error = QStringLiteral("vertex %1 must be an array of three numbers").arg(i);
            return false;
        }
        mesh.m_kVertices.append({xyz.at(0).toDouble(), xyz.at(1).toDouble(), xyz.at(2).toDouble()});
    }
    const QJsonArray faces = faceValue.toArray();
    for (int f = 0; f < faces.size(); ++f) {
        if (!faces.at(f).isArray()) {
            error = QStringLiteral("face %1 must be an array of vertex indices").arg(f);
            return false;
        }
        QVector<int> face;
        for (const QJsonValue& index : faces.at(f).toArray()) {
            const double number = index.toDouble(-1.0);
            if (!index.isDouble() || std::floor(number) != number || number < 0 ||
                number > std::numeric_limits<int>::max()) {
                error = QStringLiteral("face %1 must hold vertex indices (integers of 0 or more)").arg(f);
                return false;
            }
            face.append(static_cast<int>(number));
        }
        mesh.m_kFaces.append(face);
    }
    const QString problem = mesh.Check();
    if (!problem.isEmpty()) {
        error = problem;
        return false;
    }
    *this = mesh;
    return true;
}

QString CGoZStandInFile::Value(const QString& key) const
{
    for (const QPair<QString, QString>& pair : m_kKeys) {
        if (pair.first == key) {
            return pair.second;
        }
    }
    return QString();
}

void CGoZStandInFile::SetValue(const QString& key, const QString& value)
{
    for (QPair<QString, QString>& pair : m_kKeys) {
        if (pair.first == key) {
            pair.second = value;
            return;
        }
    }
    m_kKeys.append(qMakePair(key, value));
}

QByteArray CGoZStandInFile::Write() const
{
    QByteArray out = QByteArray(kMagic) + '\n';
    for (const QPair<QString, QString>& pair : m_kKeys) {
        out += pair.first.toUtf8() + '=' + pair.second.toUtf8() + '\n';
    }
    out += "vertices=" + QByteArray::number(m_kMesh.m_kVertices.size()) + '\n';
    for (const std::array<double, 3>& vertex : m_kMesh.m_kVertices) {
        out += "v " + NumberText(vertex[0]) + ' ' + NumberText(vertex[1]) + ' ' + NumberText(vertex[2]) + '\n';
    }
    out += "faces=" + QByteArray::number(m_kMesh.m_kFaces.size()) + '\n';
    for (const QVector<int>& face : m_kMesh.m_kFaces) {
        out += 'f';
        for (int index : face) {
            out += ' ' + QByteArray::number(index);
        }
        out += '\n';
    }
    out += "end\n";
    return out;
}

bool CGoZStandInFile::Parse(const QByteArray& bytes, CGoZStandInFile& file, QString& error)
{
    QList<QByteArray> lines = bytes.split('\n');
    // Every CR before the LF goes: a value ending in one would not survive being written back.
    for (QByteArray& line : lines) {
        while (line.endsWith('\r')) {
            line.chop(1);
        }
    }
    // The text ends with a line end, so the last piece is empty; anything else was cut.
    if (lines.size() < 2 || !lines.last().isEmpty()) {
        error = QStringLiteral("truncated: the last line has no line end");
        return false;
    }
    lines.removeLast();
    int at = 0;
    auto fail = [&](const QString& what) {
        error = QStringLiteral("line %1: %2").arg(at + 1).arg(what);
        return false;
    };
    if (lines.at(0) != kMagic) {
        return fail(QStringLiteral("not a GoZ stand-in file (it must start with \"%1\")").arg(QLatin1String(kMagic)));
    }
    CGoZStandInFile parsed;
    for (at = 1; at < lines.size() && !lines.at(at).startsWith("vertices="); ++at) {
        const QByteArray& line = lines.at(at);
        const int eq = line.indexOf('=');
        if (eq <= 0) {
            return fail(QStringLiteral("expected key=value"));
        }
        // With explicit sizes: converting a QByteArray stops at its first NUL byte, which cut a
        // key down to nothing and wrote a file that no longer read back.
        parsed.m_kKeys.append(qMakePair(QString::fromUtf8(line.constData(), eq),
                                        QString::fromUtf8(line.constData() + eq + 1, line.size() - eq - 1)));
    }
    int vertexCount = 0;
    if (at >= lines.size()) {
        return fail(QStringLiteral("truncated: no \"vertices=\" line"));
    }
    if (!ReadCount(lines.at(at), "vertices", kMaxVertices, vertexCount)) {
        return fail(QStringLiteral("\"vertices=\" needs a count from 0 to %1").arg(kMaxVertices));
    }
    // Counts are checked against the lines there are before anything is allocated.
    if (vertexCount > lines.size() - at - 1) {
        ++at;
        return fail(QStringLiteral("truncated: %1 vertices announced, fewer lines follow").arg(vertexCount));
    }
    parsed.m_kMesh.m_kVertices.reserve(vertexCount);
    for (int v = 0; v < vertexCount; ++v) {
        ++at;
        const QList<QByteArray> fields = Fields(lines.at(at));
        if (fields.size() != 4 || fields.at(0) != "v") {
            return fail(QStringLiteral("expected \"v x y z\" for vertex %1").arg(v));
        }
        std::array<double, 3> vertex{};
        for (int axis = 0; axis < 3; ++axis) {
            bool ok = false;
            vertex[static_cast<size_t>(axis)] = fields.at(axis + 1).toDouble(&ok);
            if (!ok || !std::isfinite(vertex[static_cast<size_t>(axis)])) {
                return fail(QStringLiteral("vertex %1 has a coordinate that is not a finite number").arg(v));
            }
        }
        parsed.m_kMesh.m_kVertices.append(vertex);
    }
    ++at;
    int faceCount = 0;
    if (at >= lines.size()) {
        return fail(QStringLiteral("truncated: no \"faces=\" line"));
    }
    if (!ReadCount(lines.at(at), "faces", kMaxFaces, faceCount)) {
        return fail(QStringLiteral("\"faces=\" needs a count from 0 to %1").arg(kMaxFaces));
    }
    if (faceCount > lines.size() - at - 1) {
        ++at;
        return fail(QStringLiteral("truncated: %1 faces announced, fewer lines follow").arg(faceCount));
    }
    parsed.m_kMesh.m_kFaces.reserve(faceCount);
    for (int f = 0; f < faceCount; ++f) {
        ++at;
        const QList<QByteArray> fields = Fields(lines.at(at));
        if (fields.size() < 4 || fields.at(0) != "f") {
            return fail(QStringLiteral("expected \"f i j k ...\" (three or more indices) for face %1").arg(f));
        }
        QVector<int> face;
        face.reserve(fields.size() - 1);
        for (int k = 1; k < fields.size(); ++k) {
            bool ok = false;
            const int index = fields.at(k).toInt(&ok);
            if (!ok || index < 0 || index >= vertexCount) {
                return fail(QStringLiteral("face %1 names vertex \"%2\"; there are %3")
                                .arg(f)
                                .arg(QString::fromUtf8(fields.at(k)))
                                .arg(vertexCount));
            }
            face.append(index);
        }
        parsed.m_kMesh.m_kFaces.append(face);
    }
    ++at;
    if (at >= lines.size()) {
        return fail(QStringLiteral("truncated: no \"end\" line"));
    }
    if (lines.at(at) != "end") {
        return fail(QStringLiteral("expected \"end\""));
    }
    if (at + 1 != lines.size()) {
        ++at;
        return fail(QStringLiteral("text after \"end\""));
    }
    file = parsed;
    return true;
}

bool CGoZStandInFile::Read(const QString& path, CGoZStandInFile& file, QString& error)
{
    QFile in(path);
    if (!in.exists()) {
        error = QStringLiteral("no file %1").arg(path);
        return false;
    }
    if (!in.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("cannot read %1: %2").arg(path, in.errorString());
        return false;
    }
    const QByteArray bytes = in.readAll();
    QString problem;
    if (!Parse(bytes, file, problem)) {
        error = QStringLiteral("%1: %2").arg(path, problem);
        return false;
    }
    return true;
}

bool CGoZStandInFile::Save(const QString& path, const QByteArray& bytes, QString& error)
{
    if (!QDir().mkpath(QFileInfo(path).absolutePath())) {
        error = QStringLiteral("cannot create the folder of %1").arg(path);
        return false;
    }
    QSaveFile out(path);
    if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size() || !out.commit()) {
        error = QStringLiteral("cannot write %1: %2").arg(path, out.errorString());
        return false;
    }
    return true;
}

} // namespace Host
} // namespace MV

#include "CZBrushReturn.h"

#include <QJsonArray>

#include <cmath>

namespace MV {
namespace Host {

namespace {

bool Names(const QJsonObject& object, const char* key, QStringList& out, QString& error)
{
    const QJsonValue value = object.value(QLatin1String(key));
    if (value.isUndefined()) {
        return true;
    }
    if (!value.isArray()) {
        error = QStringLiteral("\"%1\" must be an array of mesh names").arg(QLatin1String(key));
        return false;
    }
    for (const QJsonValue& item : value.toArray()) {
        const QString name = item.toString();
        if (!item.isString() || name.isEmpty() || name.contains(QLatin1Char('\n')) || name.contains(QLatin1Char('\r'))) {
            error = QStringLiteral("\"%1\" must hold non-empty names without line breaks").arg(QLatin1String(key));
            return false;
        }
        out << name;
    }
    return true;
}

bool IsName(const QString& name)
{
    return !name.isEmpty() && !name.contains(QLatin1Char('\n')) && !name.contains(QLatin1Char('\r')) &&
           !name.contains(QLatin1Char('/')) && !name.contains(QLatin1Char('\\'));
}

} // namespace

bool CZBrushReturn::FromJson(const QJsonValue& value, CZBrushReturn& settings, QString& error)
{
    if (!value.isObject()) {
        error = QStringLiteral("must be an object");
        return false;
    }
    const QJsonObject object = value.toObject();
    static const QStringList keys = {QStringLiteral("comment"),   QStringLiteral("meshes"),   QStringLiteral("rename"),
                                     QStringLiteral("extra"),     QStringLiteral("truncate"), QStringLiteral("malformed"),
                                     QStringLiteral("missing"),   QStringLiteral("scale"),    QStringLiteral("offset"),
                                     QStringLiteral("launch")};
    for (auto it = object.constBegin(); it != object.constEnd(); ++it) {
        if (!keys.contains(it.key())) {
            error = QStringLiteral("unknown key \"%1\"").arg(it.key());
            return false;
        }
    }
    CZBrushReturn parsed;
    const QJsonValue meshes = object.value(QStringLiteral("meshes"));
    if (meshes.isString() && (meshes.toString() == QLatin1String("all") || meshes.toString() == QLatin1String("none"))) {
        parsed.m_bAllMeshes = meshes.toString() == QLatin1String("all");
    } else if (meshes.isArray()) {
        parsed.m_bAllMeshes = false;
        if (!Names(object, "meshes", parsed.m_kMeshes, error)) {
            return false;
        }
    } else if (!meshes.isUndefined()) {
        error = QStringLiteral("\"meshes\" must be \"all\", \"none\" or an array of sent mesh names");
        return false;
    }
    const QJsonValue renames = object.value(QStringLiteral("rename"));
    if (!renames.isUndefined()) {
        if (!renames.isObject()) {
            error = QStringLiteral("\"rename\" must map sent names to returned names");
            return false;
        }
        const QJsonObject map = renames.toObject();
        for (auto it = map.constBegin(); it != map.constEnd(); ++it) {
            if (!it.value().isString() || !IsName(it.value().toString())) {
                error = QStringLiteral("\"rename\" entry \"%1\" must be a name without line breaks or slashes").arg(it.key());
                return false;
            }
            parsed.m_kRenames.insert(it.key(), it.value().toString());
        }
    }
    const QJsonValue extras = object.value(QStringLiteral("extra"));
    if (!extras.isUndefined()) {
        if (!extras.isArray()) {
            error = QStringLiteral("\"extra\" must be an array of {\"name\", \"mesh\"}");
            return false;
        }
        const QJsonArray array = extras.toArray();
        for (int i = 0; i < array.size(); ++i) {
            const QJsonObject extra = array.at(i).toObject();
            CExtraMesh mesh;
            mesh.m_strName = extra.value(QStringLiteral("name")).toString();
            bool keysOk = array.at(i).isObject();
            for (auto it = extra.constBegin(); keysOk && it != extra.constEnd(); ++it) {
                keysOk = it.key() == QLatin1String("name") || it.key() == QLatin1String("mesh");
            }
            if (!keysOk || !IsName(mesh.m_strName)) {
                error = QStringLiteral("\"extra\"[%1] must be {\"name\": a name without line breaks or slashes, "
                                       "\"mesh\": optional}")
                            .arg(i);
                return false;
            }
            mesh.m_kMesh = Tetrahedron();
            QString problem;
            if (extra.contains(QStringLiteral("mesh")) && !mesh.m_kMesh.FromJson(extra.value(QStringLiteral("mesh")), problem)) {
                error = QStringLiteral("\"extra\"[%1] \"mesh\": %2").arg(i).arg(problem);
                return false;
            }
            parsed.m_kExtras << mesh;
        }
    }
    QStringList truncated;
    QStringList malformed;
    QStringList missing;
    if (!Names(object, "truncate", truncated, error) || !Names(object, "malformed", malformed, error) ||
        !Names(object, "missing", missing, error)) {
        return false;
    }
    parsed.m_kTruncated = QSet<QString>(truncated.begin(), truncated.end());
    parsed.m_kMalformed = QSet<QString>(malformed.begin(), malformed.end());
    parsed.m_kMissing = QSet<QString>(missing.begin(), missing.end());
    const QJsonValue scale = object.value(QStringLiteral("scale"));
    if (!scale.isUndefined()) {
        if (!scale.isDouble() || !std::isfinite(scale.toDouble()) || scale.toDouble() <= 0.0 || scale.toDouble() > 1e6) {
            error = QStringLiteral("\"scale\" must be a number above 0 and at most 1000000");
            return false;
        }
        parsed.m_dScale = scale.toDouble();
    }
    const QJsonValue offset = object.value(QStringLiteral("offset"));
    if (!offset.isUndefined()) {
        const QJsonArray xyz = offset.toArray();
        if (!offset.isArray() || xyz.size() != 3 || !xyz.at(0).isDouble() || !xyz.at(1).isDouble() ||
            !xyz.at(2).isDouble() || std::fabs(xyz.at(0).toDouble()) > 1e6 || std::fabs(xyz.at(1).toDouble()) > 1e6 ||
            std::fabs(xyz.at(2).toDouble()) > 1e6) {
            error = QStringLiteral("\"offset\" must be three numbers of at most 1000000 each way");
            return false;
        }
        parsed.m_kOffset = {xyz.at(0).toDouble(), xyz.at(1).toDouble(), xyz.at(2).toDouble()};
    }
    const QJsonValue launch = object.value(QStringLiteral("launch"));
    if (!launch.isUndefined()) {
        if (!launch.isBool()) {
            error = QStringLiteral("\"launch\" must be true or false");
            return false;
        }
        parsed.m_bLaunch = launch.toBool();
    }
    settings = parsed;
    return true;
}

CGoZMesh CZBrushReturn::Sculpt(const CGoZMesh& mesh) const
{
    CGoZMesh sculpted = mesh;
    for (std::array<double, 3>& vertex : sculpted.m_kVertices) {
        for (size_t axis = 0; axis < 3; ++axis) {
            vertex[axis] = vertex[axis] * m_dScale + m_kOffset[axis];
        }
    }
    return sculpted;
}

CGoZMesh CZBrushReturn::Tetrahedron()
{
    CGoZMesh mesh;
    mesh.m_kVertices = {{{0.0, 0.0, 0.0}}, {{1.0, 0.0, 0.0}}, {{0.0, 1.0, 0.0}}, {{0.0, 0.0, 1.0}}};
    mesh.m_kFaces = {{0, 2, 1}, {0, 1, 3}, {0, 3, 2}, {1, 2, 3}};
    return mesh;
}

} // namespace Host
} // namespace MV

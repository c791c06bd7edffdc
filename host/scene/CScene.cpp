#include "CScene.h"

#include "CZBrushReturn.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>
#include <QSet>

#include <cmath>
#include <limits>

namespace MV {
namespace Host {

namespace {

const QStringList kSceneKeys = {
    QStringLiteral("comment"),          QStringLiteral("objects"),
    QStringLiteral("current_avatar"),   QStringLiteral("selection"),
    QStringLiteral("picks"),            QStringLiteral("playing"),
    QStringLiteral("supported_character_tags"), QStringLiteral("ready_for_command"),
    QStringLiteral("plugin_supported"), QStringLiteral("skin_split_supported"),
    QStringLiteral("split_mesh_names"), QStringLiteral("extra_mesh_names"),
    QStringLiteral("registry"),         QStringLiteral("host_data_folder"),
    QStringLiteral("sandbox"),          QStringLiteral("zbrush_return"),
    QStringLiteral("language"),
};

const QStringList kSandboxKeys = {
    QStringLiteral("comment"), QStringLiteral("pixologic_folder"), QStringLiteral("zbrush_installed"),
    QStringLiteral("current_directory"), QStringLiteral("texture_size_ini"), QStringLiteral("goz_app_folder"),
};

const QStringList kObjectKeys = {
    QStringLiteral("comment"),           QStringLiteral("id"),
    QStringLiteral("name"),              QStringLiteral("kind"),
    QStringLiteral("has_node_type"),     QStringLiteral("node_type"),
    QStringLiteral("avatar_type"),       QStringLiteral("object_type"),
    QStringLiteral("character"),         QStringLiteral("parent"),
    QStringLiteral("meshes"),            QStringLiteral("materials"),
    QStringLiteral("texture_sizes"),     QStringLiteral("lod_meshes"),
    QStringLiteral("polygon_supported"), QStringLiteral("character_tag"),
    QStringLiteral("expression_editing"), QStringLiteral("blend_shape_editing"),
    QStringLiteral("pick_owner"),        QStringLiteral("rig_mesh_names"),
    QStringLiteral("bind_pose_locked"),  QStringLiteral("skip_receive_dialog"),
    QStringLiteral("bound_node"),        QStringLiteral("file"),
    QStringLiteral("mesh"),              QStringLiteral("pose"),
};

QString LineAndColumn(const QByteArray& json, int offset)
{
    int line = 1;
    int column = 1;
    for (int i = 0; i < offset && i < json.size(); ++i) {
        if (json.at(i) == '\n') {
            ++line;
            column = 1;
        } else {
            ++column;
        }
    }
    return QStringLiteral("line %1, column %2").arg(line).arg(column);
}

// Reads typed values out of one JSON object, naming the place of the first problem.
class CFieldReader
{
public:
    CFieldReader(const QJsonObject& object, const QString& where, QString& error)
        : m_kObject(object), m_strWhere(where), m_rError(error)
    {
    }

    bool Failed() const { return !m_rError.isEmpty(); }

    bool CheckKeys(const QStringList& allowed)
    {
        for (auto it = m_kObject.constBegin(); it != m_kObject.constEnd(); ++it) {
            if (!allowed.contains(it.key())) {
                return Fail(QStringLiteral("unknown key \"%1\"").arg(it.key()));
            }
        }
        return true;
    }

    bool Has(const QString& key) const { return m_kObject.contains(key); }

    bool String(const QString& key, QString& out, bool allowNull = false)
    {
        if (!m_kObject.contains(key)) {
            return true;
        }
        const QJsonValue value = m_kObject.value(key);
        if (allowNull && value.isNull()) {
            out.clear();
            return true;
        }
        if (!value.isString()) {
            return Fail(QStringLiteral("\"%1\" must be a string%2").arg(key, allowNull ? QStringLiteral(" or null") : QString()));
        }
        out = value.toString();
        return true;
    }

    bool Bool(const QString& key, bool& out)
    {
        if (!m_kObject.contains(key)) {
            return true;
        }
        const QJsonValue value = m_kObject.value(key);
        if (!value.isBool()) {
            return Fail(QStringLiteral("\"%1\" must be true or false").arg(key));
        }
        out = value.toBool();
        return true;
    }

    bool Integer(const QString& key, qint64 minimum, qint64 maximum, qint64& out)
    {
        if (!m_kObject.contains(key)) {
            return true;
        }
        if (!ToInteger(m_kObject.value(key), minimum, maximum, out)) {
            return Fail(QStringLiteral("\"%1\" must be an integer from %2 to %3").arg(key).arg(minimum).arg(maximum));
        }
        return true;
    }

    bool StringList(const QString& key, QStringList& out)
    {
        if (!m_kObject.contains(key)) {
            return true;
        }
        const QJsonValue value = m_kObject.value(key);
        if (!value.isArray()) {
            return Fail(QStringLiteral("\"%1\" must be an array of strings").arg(key));
        }
        QStringList items;
        for (const QJsonValue& item : value.toArray()) {
            if (!item.isString()) {
                return Fail(QStringLiteral("\"%1\" must be an array of strings").arg(key));
            }
            items << item.toString();
        }
        out = items;
        return true;
    }

    bool Fail(const QString& message)
    {
        if (m_rError.isEmpty()) {
            m_rError = m_strWhere + QStringLiteral(": ") + message;
        }
        return false;
    }

    static bool ToInteger(const QJsonValue& value, qint64 minimum, qint64 maximum, qint64& out)
    {
        if (!value.isDouble()) {
            return false;
        }
        const double number = value.toDouble();
        if (!std::isfinite(number) || std::floor(number) != number || number < static_cast<double>(minimum) ||
            number > static_cast<double>(maximum)) {
            return false;
        }
        out = static_cast<qint64>(number);
        return true;
    }

private:
    const QJsonObject& m_kObject;
    QString m_strWhere;
    QString& m_rError;
};

constexpr qint64 kIntMin = std::numeric_limits<int>::min();
constexpr qint64 kIntMax = std::numeric_limits<int>::max();
constexpr qint64 kUintMax = std::numeric_limits<unsigned int>::max();

bool ParseObject(const QJsonValue& value, int index, CSceneObject& object, QString& error)
{
    const QString where = QStringLiteral("objects[%1]").arg(index);
    if (!value.isObject()) {
        error = where + QStringLiteral(": must be an object");
        return false;
    }
    const QJsonObject json = value.toObject();
    QString id;
    if (json.value(QStringLiteral("id")).isString()) {
        id = json.value(QStringLiteral("id")).toString();
    }
    if (id.isEmpty()) {
        error = where + QStringLiteral(": \"id\" must be a non-empty string");
        return false;
    }
    CFieldReader reader(json, QStringLiteral("%1 (\"%2\")").arg(where, id), error);
    object.m_strId = id;
    object.m_strName = id;
    qint64 kind = 0;
    qint64 nodeType = 0;
    qint64 avatarType = 0;
    qint64 objectType = 0;
    qint64 materials = 0;
    object.m_bHasNodeType = json.contains(QStringLiteral("node_type"));
    reader.CheckKeys(kObjectKeys) && reader.String(QStringLiteral("name"), object.m_strName) &&
        reader.Integer(QStringLiteral("kind"), 0, kUintMax, kind) &&
        reader.Bool(QStringLiteral("has_node_type"), object.m_bHasNodeType) &&
        reader.Integer(QStringLiteral("node_type"), kIntMin, kIntMax, nodeType) &&
        reader.Integer(QStringLiteral("avatar_type"), kIntMin, kIntMax, avatarType) &&
        reader.Integer(QStringLiteral("object_type"), kIntMin, kIntMax, objectType) &&
        reader.String(QStringLiteral("parent"), object.m_strParent, true) &&
        reader.StringList(QStringLiteral("meshes"), object.m_kMeshes) &&
        reader.Integer(QStringLiteral("materials"), 0, kIntMax, materials) &&
        reader.StringList(QStringLiteral("lod_meshes"), object.m_kLodMeshes) &&
        reader.Bool(QStringLiteral("polygon_supported"), object.m_bPolygonSupported) &&
        reader.String(QStringLiteral("character_tag"), object.m_strCharacterTag) &&
        reader.Bool(QStringLiteral("expression_editing"), object.m_bExpressionEditing) &&
        reader.Bool(QStringLiteral("blend_shape_editing"), object.m_bBlendShapeEditing) &&
        reader.String(QStringLiteral("pick_owner"), object.m_strPickOwner, true) &&
        reader.StringList(QStringLiteral("rig_mesh_names"), object.m_kRigMeshNames) &&
        reader.Bool(QStringLiteral("bind_pose_locked"), object.m_bBindPoseLocked) &&
        reader.Bool(QStringLiteral("skip_receive_dialog"), object.m_bSkipReceiveDialog) &&
        reader.String(QStringLiteral("bound_node"), object.m_strBoundNode, true) &&
        reader.String(QStringLiteral("file"), object.m_strFile) &&
        reader.String(QStringLiteral("pose"), object.m_strPose);
    if (reader.Failed()) {
        return false;
    }
    if (json.contains(QStringLiteral("mesh"))) {
        QString problem;
        if (!object.m_kMesh.FromJson(json.value(QStringLiteral("mesh")), problem)) {
            return reader.Fail(QStringLiteral("\"mesh\": ") + problem);
        }
        object.m_kMeshAtStart = object.m_kMesh;
    }
    object.m_uKind = static_cast<unsigned int>(kind);
    object.m_iNodeType = static_cast<int>(nodeType);
    object.m_iAvatarType = static_cast<int>(avatarType);
    object.m_iObjectType = static_cast<int>(objectType);
    object.m_iMaterials = static_cast<int>(materials);
    if (!json.contains(QStringLiteral("meshes"))) {
        object.m_kMeshes = QStringList{id};
    }
    object.m_bCharacter = object.m_iAvatarType == 4 ||
                          (object.m_bHasNodeType && object.m_iNodeType >= 1 && object.m_iNodeType <= 4);
    if (!reader.Bool(QStringLiteral("character"), object.m_bCharacter)) {
        return false;
    }
    if (json.contains(QStringLiteral("texture_sizes"))) {
        const QJsonValue sizes = json.value(QStringLiteral("texture_sizes"));
        if (!sizes.isObject()) {
            return reader.Fail(QStringLiteral("\"texture_sizes\" must map channel numbers to sizes"));
        }
        const QJsonObject map = sizes.toObject();
        for (auto it = map.constBegin(); it != map.constEnd(); ++it) {
            bool ok = false;
            const int channel = it.key().toInt(&ok);
            qint64 size = 0;
            if (!ok || channel < 0 || !CFieldReader::ToInteger(it.value(), 0, kIntMax, size)) {
                return reader.Fail(QStringLiteral("\"texture_sizes\" entry \"%1\" must be a channel number with a "
                                                  "non-negative integer size")
                                       .arg(it.key()));
            }
            object.m_kTextureSizes.insert(channel, static_cast<int>(size));
        }
    }
    return true;
}

bool ParseSplitNames(const QJsonValue& value, QList<CSplitMeshName>& names, QString& error)
{
    if (!value.isArray()) {
        error = QStringLiteral("\"split_mesh_names\" must be an array of {\"name\", \"bit\"} objects");
        return false;
    }
    const QJsonArray array = value.toArray();
    for (int i = 0; i < array.size(); ++i) {
        const QString where = QStringLiteral("split_mesh_names[%1]").arg(i);
        if (!array.at(i).isObject()) {
            error = where + QStringLiteral(": must be an object");
            return false;
        }
        const QJsonObject entry = array.at(i).toObject();
        CFieldReader reader(entry, where, error);
        CSplitMeshName name;
        qint64 bit = 0;
        if (!reader.CheckKeys({QStringLiteral("name"), QStringLiteral("bit")}) ||
            !reader.String(QStringLiteral("name"), name.m_strName) ||
            !reader.Integer(QStringLiteral("bit"), 0, kUintMax, bit)) {
            return false;
        }
        if (name.m_strName.isEmpty()) {
            return reader.Fail(QStringLiteral("\"name\" must be a non-empty string"));
        }
        name.m_uBit = static_cast<unsigned int>(bit);
        names << name;
    }
    return true;
}

bool ParseRegistry(const QJsonValue& value, QList<CRegistryValue>& registry, QString& error)
{
    if (!value.isObject()) {
        error = QStringLiteral("\"registry\" must map sub-keys to objects of value names and strings");
        return false;
    }
    const QJsonObject keys = value.toObject();
    for (auto key = keys.constBegin(); key != keys.constEnd(); ++key) {
        if (!key.value().isObject()) {
            error = QStringLiteral("registry \"%1\": must be an object of value names and strings").arg(key.key());
            return false;
        }
        // Each value is one line of the stand-in file, which starts with the sub-key; the reader
        // skips lines starting with '#' as comments, so such a value could never be read back.
        if (key.key().startsWith(QLatin1Char('#'))) {
            error = QStringLiteral("registry \"%1\": a sub-key must not start with \"#\" (the registry file reads "
                                   "such a line as a comment)")
                        .arg(key.key());
            return false;
        }
        const QJsonObject values = key.value().toObject();
        for (auto item = values.constBegin(); item != values.constEnd(); ++item) {
            CRegistryValue entry{key.key(), item.key(), QString(), QString()};
            const QJsonValue data = item.value();
            const QJsonObject typed = data.toObject();
            if (data.isString()) {
                entry.m_strData = data.toString();
            } else if (data.isObject() && typed.value(QStringLiteral("data")).isString() &&
                       typed.value(QStringLiteral("type")).isString() && typed.size() == 2) {
                entry.m_strData = typed.value(QStringLiteral("data")).toString();
                entry.m_strType = typed.value(QStringLiteral("type")).toString();
            } else {
                error = QStringLiteral("registry \"%1\" value \"%2\": data must be a string or {\"data\", \"type\"}")
                            .arg(key.key(), item.key());
                return false;
            }
            // The stand-in file is tab-separated, one value a line.
            for (const QString& text : {entry.m_strSubKey, entry.m_strName, entry.m_strData, entry.m_strType}) {
                if (text.contains(QLatin1Char('\t')) || text.contains(QLatin1Char('\n')) ||
                    text.contains(QLatin1Char('\r'))) {
                    error = QStringLiteral("registry \"%1\" value \"%2\": tabs and line breaks cannot be stored")
                                .arg(key.key(), item.key());
                    return false;
                }
            }
            if (entry.m_strSubKey.isEmpty()) {
                error = QStringLiteral("registry: a sub-key must not be empty");
                return false;
            }
            registry << entry;
        }
    }
    return true;
}

// A relative folder inside the work folder: no root, no drive-less absolute path, no "..".
bool IsInsideFolder(const QString& path)
{
    QString folder = path;
    folder.replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (folder.startsWith(QLatin1Char('/'))) {
        return false;
    }
    for (const QString& part : folder.split(QLatin1Char('/'))) {
        if (part == QLatin1String("..")) {
            return false;
        }
    }
    return true;
}

bool ParseSandbox(const QJsonValue& value, CSceneState& state, QString& error)
{
    if (!value.isObject()) {
        error = QStringLiteral("\"sandbox\" must be an object");
        return false;
    }
    const QJsonObject sandbox = value.toObject();
    CFieldReader reader(sandbox, QStringLiteral("sandbox"), error);
    if (!reader.CheckKeys(kSandboxKeys) ||
        !reader.Bool(QStringLiteral("pixologic_folder"), state.m_bPixologicFolder) ||
        !reader.Bool(QStringLiteral("zbrush_installed"), state.m_bZBrushInstalled) ||
        !reader.String(QStringLiteral("current_directory"), state.m_strCurrentDirectory)) {
        return false;
    }
    if (!IsInsideFolder(state.m_strCurrentDirectory)) {
        return reader.Fail(QStringLiteral("\"current_directory\" must be a folder inside the sandbox (relative, "
                                          "without \"..\"), such as \"C:/Program Files/Figmora\""));
    }
    QString appFolder = QStringLiteral("absent");
    if (!reader.String(QStringLiteral("goz_app_folder"), appFolder)) {
        return false;
    }
    if (appFolder == QLatin1String("absent")) {
        state.m_eGoZAppFolder = CSceneState::EGoZAppFolder::Absent;
    } else if (appFolder == QLatin1String("file")) {
        state.m_eGoZAppFolder = CSceneState::EGoZAppFolder::File;
    } else if (appFolder == QLatin1String("locked_launcher")) {
        state.m_eGoZAppFolder = CSceneState::EGoZAppFolder::LockedLauncher;
    } else {
        return reader.Fail(QStringLiteral("\"goz_app_folder\" must be \"absent\", \"file\" or \"locked_launcher\""));
    }
    if (sandbox.contains(QStringLiteral("texture_size_ini"))) {
        const QJsonValue ini = sandbox.value(QStringLiteral("texture_size_ini"));
        if (ini.isNull()) {
            state.m_eTextureSizeFile = CSceneState::ETextureSizeFile::Missing;
        } else if (ini.isString()) {
            state.m_eTextureSizeFile = CSceneState::ETextureSizeFile::Given;
            state.m_kTextureSizeFile = ini.toString().toUtf8();
        } else {
            return reader.Fail(QStringLiteral("\"texture_size_ini\" must be the file's text, or null for no file"));
        }
    }
    return true;
}

bool CheckIds(const QStringList& ids, const QSet<QString>& known, const QString& where, QString& error)
{
    for (const QString& id : ids) {
        if (!known.contains(id)) {
            error = QStringLiteral("%1: unknown object \"%2\"").arg(where, id);
            return false;
        }
    }
    return true;
}

} // namespace

CScene::CScene() = default;
CScene::~CScene() = default;

QV::Result CScene::Parse(const QByteArray& json, QString& error)
{
    error.clear();
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        error = QStringLiteral("not valid JSON at %1: %2")
                    .arg(LineAndColumn(json, parseError.offset), parseError.errorString());
        return QV::kInvalidArg;
    }
    if (!document.isObject()) {
        error = QStringLiteral("the scene must be a JSON object");
        return QV::kInvalidArg;
    }
    const QJsonObject root = document.object();
    CFieldReader reader(root, QStringLiteral("top level"), error);
    if (!reader.CheckKeys(kSceneKeys)) {
        return QV::kInvalidArg;
    }

    std::vector<CSceneObject> objects;
    QSet<QString> ids;
    if (root.contains(QStringLiteral("objects"))) {
        if (!root.value(QStringLiteral("objects")).isArray()) {
            error = QStringLiteral("\"objects\" must be an array");
            return QV::kInvalidArg;
        }
        const QJsonArray array = root.value(QStringLiteral("objects")).toArray();
        for (int i = 0; i < array.size(); ++i) {
            CSceneObject object;
            if (!ParseObject(array.at(i), i, object, error)) {
                return QV::kInvalidArg;
            }
            if (ids.contains(object.m_strId)) {
                error = QStringLiteral("objects[%1]: duplicate id \"%2\"").arg(i).arg(object.m_strId);
                return QV::kInvalidArg;
            }
            ids.insert(object.m_strId);
            objects.push_back(object);
        }
    }

    QHash<QString, QString> parents;
    for (const CSceneObject& object : objects) {
        const QString where = QStringLiteral("object \"%1\"").arg(object.m_strId);
        if (!object.m_strParent.isEmpty() && !ids.contains(object.m_strParent)) {
            error = where + QStringLiteral(": unknown parent \"%1\"").arg(object.m_strParent);
            return QV::kInvalidArg;
        }
        parents.insert(object.m_strId, object.m_strParent);
        if (!CheckIds(object.m_kMeshes, ids, where + QStringLiteral(" meshes"), error) ||
            !CheckIds(object.m_strPickOwner.isEmpty() ? QStringList() : QStringList{object.m_strPickOwner}, ids,
                      where + QStringLiteral(" pick_owner"), error) ||
            !CheckIds(object.m_strBoundNode.isEmpty() ? QStringList() : QStringList{object.m_strBoundNode}, ids,
                      where + QStringLiteral(" bound_node"), error)) {
            return QV::kInvalidArg;
        }
    }
    for (const CSceneObject& object : objects) {
        QString current = object.m_strParent;
        for (size_t steps = 0; !current.isEmpty(); ++steps) {
            if (current == object.m_strId || steps > objects.size()) {
                error = QStringLiteral("object \"%1\": its parents form a cycle").arg(object.m_strId);
                return QV::kInvalidArg;
            }
            current = parents.value(current);
        }
    }

    CSceneState state;
    QString picksError;
    const bool stateRead =
        reader.String(QStringLiteral("current_avatar"), state.m_strCurrentAvatar, true) &&
        reader.StringList(QStringLiteral("selection"), state.m_kSelection) &&
        reader.StringList(QStringLiteral("picks"), state.m_kPicks) &&
        reader.Bool(QStringLiteral("playing"), state.m_bPlaying) &&
        reader.StringList(QStringLiteral("supported_character_tags"), state.m_kSupportedCharacterTags) &&
        reader.Bool(QStringLiteral("ready_for_command"), state.m_bReadyForCommand) &&
        reader.Bool(QStringLiteral("plugin_supported"), state.m_bPluginSupported) &&
        reader.Bool(QStringLiteral("skin_split_supported"), state.m_bSkinSplitSupported) &&
        reader.StringList(QStringLiteral("extra_mesh_names"), state.m_kExtraMeshNames) &&
        reader.String(QStringLiteral("host_data_folder"), state.m_strHostDataFolder) &&
        reader.String(QStringLiteral("language"), state.m_strLanguage);
    if (!stateRead) {
        return QV::kInvalidArg;
    }
    if (!IsLanguageCode(state.m_strLanguage)) {
        error = QStringLiteral("top level: \"language\" must be empty or a language code such as \"en\" or \"pt_BR\"");
        return QV::kInvalidArg;
    }
    state.m_bPicksFollowSelection = !root.contains(QStringLiteral("picks"));
    if (root.contains(QStringLiteral("sandbox")) && !ParseSandbox(root.value(QStringLiteral("sandbox")), state, error)) {
        return QV::kInvalidArg;
    }
    const QJsonValue zbrushReturn = root.value(QStringLiteral("zbrush_return"));
    if (!zbrushReturn.isUndefined() && !zbrushReturn.isNull()) {
        CZBrushReturn settings;
        QString problem;
        if (!CZBrushReturn::FromJson(zbrushReturn, settings, problem)) {
            error = QStringLiteral("zbrush_return: ") + problem;
            return QV::kInvalidArg;
        }
        state.m_bZBrushReturns = true;
        state.m_kZBrushReturn = zbrushReturn.toObject();
    }
    if ((root.contains(QStringLiteral("split_mesh_names")) &&
         !ParseSplitNames(root.value(QStringLiteral("split_mesh_names")), state.m_kSplitMeshNames, error)) ||
        (root.contains(QStringLiteral("registry")) &&
         !ParseRegistry(root.value(QStringLiteral("registry")), state.m_kRegistry, error))) {
        return QV::kInvalidArg;
    }
    if (!CheckIds(state.m_kSelection, ids, QStringLiteral("selection"), error) ||
        !CheckIds(state.m_kPicks, ids, QStringLiteral("picks"), error) ||
        !CheckIds(state.m_strCurrentAvatar.isEmpty() ? QStringList() : QStringList{state.m_strCurrentAvatar}, ids,
                  QStringLiteral("current_avatar"), error)) {
        return QV::kInvalidArg;
    }

    m_kObjects = std::move(objects);
    m_kState = state;
    // A plug-in may still hold handles of the old content: keep them alive, resolving to nothing.
    for (std::unique_ptr<QV::CHandle>& handle : m_kHandles) {
        m_kRetiredHandles.push_back(std::move(handle));
    }
    m_kHandles.clear();
    RebuildIndex();
    return QV::kOk;
}

bool CScene::IsLanguageCode(const QString& language)
{
    // The code becomes part of a translation file name: letters first, then letters, digits, '_' or '-'.
    if (language.size() > 35) {
        return false;
    }
    for (int i = 0; i < language.size(); ++i) {
        const QChar c = language.at(i);
        const bool letter = (c >= QLatin1Char('a') && c <= QLatin1Char('z')) || (c >= QLatin1Char('A') && c <= QLatin1Char('Z'));
        const bool other = (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('_') || c == QLatin1Char('-');
        if (!letter && (i == 0 || !other)) {
            return false;
        }
    }
    return true;
}

void CScene::RebuildIndex()
{
    m_kIdIndex.clear();
    m_kNames.ClearScene();
    for (size_t i = 0; i < m_kObjects.size(); ++i) {
        m_kIdIndex.insert(m_kObjects[i].m_strId, static_cast<int>(i));
        m_kNames.AddSceneName(m_kObjects[i].m_strName, static_cast<int>(i));
        m_kObjects[i].m_kChildren.clear();
    }
    for (const CSceneObject& object : m_kObjects) {
        const int parent = IndexOf(object.m_strParent);
        if (parent >= 0) {
            m_kObjects[static_cast<size_t>(parent)].m_kChildren << object.m_strId;
        }
    }
    m_kHandleIndex.clear();
    while (m_kHandles.size() < m_kObjects.size()) {
        m_kHandles.push_back(std::make_unique<QV::CHandle>(static_cast<int>(m_kHandles.size())));
    }
    for (size_t i = 0; i < m_kObjects.size(); ++i) {
        m_kHandleIndex.insert(m_kHandles[i].get(), static_cast<int>(i));
    }
}

int CScene::IndexOf(const QString& id) const
{
    return m_kIdIndex.value(id, -1);
}

int CScene::IndexOf(const QV::CHandle* handle) const
{
    return handle == nullptr ? -1 : m_kHandleIndex.value(handle, -1);
}

const CSceneObject* CScene::Find(const QString& id) const
{
    const int index = IndexOf(id);
    return index < 0 ? nullptr : &Object(index);
}

const CSceneObject* CScene::Find(const QV::CHandle* handle) const
{
    const int index = IndexOf(handle);
    return index < 0 ? nullptr : &Object(index);
}

CSceneObject* CScene::Find(const QV::CHandle* handle)
{
    const int index = IndexOf(handle);
    return index < 0 ? nullptr : &Object(index);
}

QV::CHandle* CScene::Handle(int index) const
{
    if (index < 0 || index >= ObjectCount()) {
        return nullptr;
    }
    return m_kHandles[static_cast<size_t>(index)].get();
}

QV::CHandle* CScene::HandleOf(const QString& id) const
{
    return Handle(IndexOf(id));
}

int CScene::AddObject(const CSceneObject& object)
{
    if (object.m_strId.isEmpty() || IndexOf(object.m_strId) >= 0 ||
        (!object.m_strParent.isEmpty() && IndexOf(object.m_strParent) < 0)) {
        return -1;
    }
    const int index = ObjectCount();
    m_kObjects.push_back(object);
    CSceneObject& added = m_kObjects.back();
    added.m_kChildren.clear();
    m_kIdIndex.insert(added.m_strId, index);
    m_kNames.AddSceneName(added.m_strName, index);
    const int parent = IndexOf(added.m_strParent);
    if (parent >= 0) {
        m_kObjects[static_cast<size_t>(parent)].m_kChildren << added.m_strId;
    }
    if (m_kHandles.size() <= static_cast<size_t>(index)) {
        m_kHandles.push_back(std::make_unique<QV::CHandle>(index));
    }
    m_kHandleIndex.insert(m_kHandles[static_cast<size_t>(index)].get(), index);
    return index;
}

void CScene::RenameObject(int index, const QString& name)
{
    if (index < 0 || index >= ObjectCount()) {
        return;
    }
    CSceneObject& object = Object(index);
    if (object.m_strName == name) {
        return;
    }
    m_kNames.RemoveSceneName(object.m_strName, index);
    object.m_strName = name;
    m_kNames.AddSceneName(name, index);
}

QStringList CScene::Descendants(const QString& id) const
{
    QStringList result;
    const CSceneObject* object = Find(id);
    if (object == nullptr) {
        return result;
    }
    for (const QString& child : object->m_kChildren) {
        result << child;
        result << Descendants(child);
    }
    return result;
}

QStringList CScene::MeshesOf(const QString& id) const
{
    const CSceneObject* object = Find(id);
    return object == nullptr ? QStringList() : object->m_kMeshes;
}

QString CScene::OwningCharacter(const QString& id) const
{
    QString current = id;
    for (int steps = 0; !current.isEmpty() && steps <= ObjectCount(); ++steps) {
        const CSceneObject* object = Find(current);
        if (object == nullptr) {
            return QString();
        }
        if (object->m_bCharacter) {
            return current;
        }
        current = object->m_strParent;
    }
    return QString();
}

QStringList CScene::SplitMeshNames(unsigned int mask) const
{
    QStringList names;
    for (const CSplitMeshName& entry : m_kState.m_kSplitMeshNames) {
        if (entry.m_uBit == 0 || (entry.m_uBit & mask) != 0) {
            names << entry.m_strName;
        }
    }
    return names;
}

QStringList CScene::PickedIds() const
{
    return m_kState.m_bPicksFollowSelection ? m_kState.m_kSelection : m_kState.m_kPicks;
}

} // namespace Host
} // namespace MV

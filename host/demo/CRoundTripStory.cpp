#include "CRoundTripStory.h"

#include "DemoJson.h"

#include <QMap>
#include <QSet>

namespace MV {
namespace Host {

using namespace DemoJson;

namespace {

QString CountOf(int count, const char* one, const char* many)
{
    return QStringLiteral("%1 %2").arg(count).arg(QLatin1String(count == 1 ? one : many));
}

QString Number(const QJsonValue& value)
{
    return QString::number(value.toDouble(), 'g', 12);
}

QString Point(const QJsonValue& point)
{
    QStringList coordinates;
    for (const QJsonValue& coordinate : point.toArray()) {
        coordinates << Number(coordinate);
    }
    return QStringLiteral("(") + coordinates.join(QStringLiteral(", ")) + QStringLiteral(")");
}

const QString kReturnLauncher = QStringLiteral("GoZBrushToFM.exe");

// The scene dumps around a press: the last one before it and the first one after it, before
// the next press.
bool SceneDumpsAround(const QJsonObject& report, int press, int nextPress, QJsonObject& before, QJsonObject& after)
{
    for (const QJsonValue& value : Array(report, "scene_dumps")) {
        const int step = value.toObject().value(QStringLiteral("step")).toInt();
        if (step < press) {
            before = value.toObject();
        } else if (step > press && step < nextPress && after.isEmpty()) {
            after = value.toObject();
        }
    }
    return !before.isEmpty() && !after.isEmpty();
}

// The character-state keys of a scene dump, in the order they are told.
const struct
{
    const char* m_szKey;
    const char* m_szLabel;
} kStateKeys[] = {
    {"pose", "pose"},
    {"rigged", "rigged"},
    {"auto_rigs", "automatic riggings"},
    {"conform_rebuilds", "conform rebuilds"},
    {"goz_updates", "avatar updates after GoZ"},
    {"commits", "avatar commits"},
    {"finished_imports", "finished GoZ imports"},
    {"fittings", "eye-element fittings"},
    {"goz_imports", "GoZ imports"},
};

QString StateValue(const QJsonValue& value)
{
    if (value.isString()) {
        return Quoted(value.toString());
    }
    if (value.isBool()) {
        return value.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
    }
    return QString::number(value.toInt());
}

// What differs between two states of an object; a new object (no earlier state) tells its values.
QStringList StateChanges(const QJsonObject* was, const QJsonObject& now, const QMap<QString, QString>& names)
{
    static const QJsonObject kNone;
    QStringList changes;
    for (const auto& key : kStateKeys) {
        const QJsonValue old = (was != nullptr ? *was : kNone).value(QLatin1String(key.m_szKey));
        const QJsonValue value = now.value(QLatin1String(key.m_szKey));
        if (old == value) {
            continue;
        }
        // A key the dump leaves out holds its fresh value.
        const QString fresh = value.isString() || old.isString() ? QStringLiteral("\"\"")
                              : value.isBool() || old.isBool()    ? QStringLiteral("no")
                                                                  : QStringLiteral("0");
        const QString after = value.isUndefined() ? fresh : StateValue(value);
        changes << (was == nullptr ? QStringLiteral("%1 %2").arg(QLatin1String(key.m_szLabel), after)
                                   : QStringLiteral("%1 %2 -> %3")
                                         .arg(QLatin1String(key.m_szLabel), old.isUndefined() ? fresh : StateValue(old), after));
    }
    const QJsonObject& before = was != nullptr ? *was : kNone;
    const QString file = Text(now, "last_goz_file");
    if (!file.isEmpty() && file != Text(before, "last_goz_file")) {
        changes << QStringLiteral("mesh from %1").arg(FileName(file));
    }
    const QStringList imported = Strings(Array(now, "last_imported"));
    if (!imported.isEmpty() && imported != Strings(Array(before, "last_imported"))) {
        QStringList shown;
        for (const QString& id : imported) {
            shown << names.value(id, id);
        }
        changes << QStringLiteral("the import finished with %1").arg(JoinQuoted(shown));
    }
    return changes;
}

} // namespace

QString CRoundTripStory::MeshText(const QJsonObject& summary)
{
    const int vertices = summary.value(QStringLiteral("vertices")).toInt();
    if (vertices == 0) {
        return QStringLiteral("no geometry");
    }
    QString text = CountOf(vertices, "vertex", "vertices") + QStringLiteral(", ") +
                   CountOf(summary.value(QStringLiteral("faces")).toInt(), "face", "faces");
    const QJsonArray box = Array(summary, "bbox");
    if (box.size() == 2) {
        text += QStringLiteral(" in %1 to %2").arg(Point(box.at(0)), Point(box.at(1)));
    }
    return text;
}

QString CRoundTripStory::ReturnSettingsText(const QJsonValue& value)
{
    if (!value.isObject()) {
        return QStringLiteral("nothing");
    }
    const QJsonObject settings = value.toObject();
    const QJsonValue meshes = settings.value(QStringLiteral("meshes"));
    QString what;
    if (meshes.isArray()) {
        what = QStringLiteral("only ") + JoinQuoted(Strings(meshes.toArray())) + QStringLiteral(" of what it gets");
    } else if (meshes.toString() == QLatin1String("none")) {
        what = QStringLiteral("none of what it gets");
    } else {
        what = QStringLiteral("every mesh it gets");
    }
    const double scale = settings.value(QStringLiteral("scale")).toDouble(1.1);
    what += QStringLiteral(", scaled by %1").arg(QString::number(scale, 'g', 12));
    const QJsonArray offset = Array(settings, "offset");
    if (!offset.isEmpty()) {
        what += QStringLiteral(" and moved by ") + Point(offset);
    }
    QStringList also;
    const QJsonObject renames = settings.value(QStringLiteral("rename")).toObject();
    for (auto it = renames.begin(); it != renames.end(); ++it) {
        also << QStringLiteral("%1 comes back as %2").arg(Quoted(it.key()), Quoted(it.value().toString()));
    }
    QStringList extras;
    for (const QJsonValue& extra : Array(settings, "extra")) {
        extras << Text(extra.toObject(), "name");
    }
    if (!extras.isEmpty()) {
        also << JoinQuoted(extras) + QStringLiteral(", which nobody sent, comes along");
    }
    const struct
    {
        const char* m_szKey;
        const char* m_szWhat;
    } broken[] = {{"truncate", "cut short"}, {"malformed", "holding no mesh"}, {"missing", "listed without a file"}};
    for (const auto& kind : broken) {
        const QStringList names = Strings(Array(settings, kind.m_szKey));
        if (!names.isEmpty()) {
            also << JoinQuoted(names) + QStringLiteral(" comes back ") + QLatin1String(kind.m_szWhat);
        }
    }
    if (!settings.value(QStringLiteral("launch")).toBool(true)) {
        also << QStringLiteral("the return launcher is not started, so the host hears nothing");
    }
    return also.isEmpty() ? what : what + QStringLiteral("; ") + also.join(QStringLiteral("; "));
}

void CRoundTripStory::TellReturn(const QJsonArray& processes, QStringList& out)
{
    for (const QJsonValue& value : processes) {
        const QJsonObject process = value.toObject();
        if (!process.contains(QStringLiteral("return"))) {
            continue;
        }
        QSet<QString> sent;
        for (const QString& line : Strings(Array(process, "object_list"))) {
            sent.insert(FileName(line));
        }
        const QJsonObject played = process.value(QStringLiteral("return")).toObject();
        const QJsonArray files = Array(played, "files");
        if (files.isEmpty()) {
            out << QStringLiteral("  ZBrush (the stand-in) sent nothing back.");
        } else {
            out << QStringLiteral("  ZBrush (the stand-in) sculpted what it got and sent back %1:")
                       .arg(CountOf(files.size(), "mesh", "meshes"));
        }
        for (const QJsonValue& entry : files) {
            const QJsonObject file = entry.toObject();
            const QString name = Text(file, "name");
            const QString state = Text(file, "state");
            QString line = QStringLiteral("    - %1: %2").arg(name, MeshText(file.value(QStringLiteral("mesh")).toObject()));
            if (!sent.contains(name)) {
                line += QStringLiteral(" (not a name it was sent)");
            }
            if (state == QLatin1String("truncated")) {
                line += QStringLiteral("; its file was cut short");
            } else if (state == QLatin1String("malformed")) {
                line += QStringLiteral("; its file holds no mesh");
            } else if (state == QLatin1String("missing")) {
                line += QStringLiteral("; listed, but no file was written");
            } else if (state != QLatin1String("written")) {
                line += QStringLiteral("; ") + state;
            }
            out << line;
        }
        const QString launcher = Text(played, "launcher");
        QJsonObject launched;
        for (const QJsonValue& other : processes) {
            if (Text(other.toObject(), "program") == kReturnLauncher) {
                launched = other.toObject();
            }
        }
        if (launched.isEmpty()) {
            out << QStringLiteral("  ZBrush started no return launcher (%1).").arg(launcher);
            continue;
        }
        const QString notice = Text(launched, "host_notice");
        out << QStringLiteral("  ZBrush then ran the return launcher %1, which read %2 from the object list and %3.")
                   .arg(kReturnLauncher, Strings(Array(launched, "object_list")).join(QStringLiteral(", ")),
                        notice == QLatin1String("acknowledged") ? QStringLiteral("told the host, which acknowledged it")
                                                                : QStringLiteral("could not tell the host (%1)").arg(notice));
    }
}

void CRoundTripStory::TellSceneChange(const QJsonObject& report, int step, int nextStep, QStringList& out)
{
    QJsonObject before;
    QJsonObject after;
    if (!SceneDumpsAround(report, step, nextStep, before, after)) {
        return;
    }
    QMap<QString, QJsonObject> was;
    for (const QJsonValue& object : Array(before, "objects")) {
        was.insert(Text(object.toObject(), "id"), object.toObject());
    }
    QMap<QString, QString> names;
    for (const QJsonValue& object : Array(after, "objects")) {
        names.insert(Text(object.toObject(), "id"), Text(object.toObject(), "name"));
    }
    QStringList changed;
    QStringList added;
    for (const QJsonValue& value : Array(after, "objects")) {
        const QJsonObject now = value.toObject();
        const QString id = Text(now, "id");
        const QString label = QStringLiteral("%1 (%2)").arg(Quoted(Text(now, "name")), id);
        const QJsonObject summary = now.value(QStringLiteral("summary")).toObject();
        if (!was.contains(id)) {
            QStringList state = StateChanges(nullptr, now, names);
            state.prepend(MeshText(summary));
            added << QStringLiteral("    - %1: %2").arg(label, state.join(QStringLiteral("; ")));
            continue;
        }
        const QJsonObject old = was.value(id);
        QStringList changes;
        const QJsonObject oldSummary = old.value(QStringLiteral("summary")).toObject();
        if (oldSummary != summary) {
            changes << QStringLiteral("mesh %1 -> %2").arg(MeshText(oldSummary), MeshText(summary));
        }
        changes << StateChanges(&old, now, names);
        if (!changes.isEmpty()) {
            changed << QStringLiteral("    - %1: %2").arg(label, changes.join(QStringLiteral("; ")));
        }
    }
    const QString steps = QStringLiteral("steps %1 and %2")
                              .arg(before.value(QStringLiteral("step")).toInt())
                              .arg(after.value(QStringLiteral("step")).toInt());
    if (changed.isEmpty() && added.isEmpty()) {
        out << QStringLiteral("  Nothing in the scene changed (compared at %1).").arg(steps);
        return;
    }
    if (!changed.isEmpty()) {
        out << QStringLiteral("  What changed in the scene (compared at %1):").arg(steps);
        out << changed;
    }
    if (!added.isEmpty()) {
        out << QStringLiteral("  What the scene gained:");
        out << added;
    }
}

void CRoundTripStory::TellLoads(const QJsonObject& report, int step, QStringList& out)
{
    for (const QJsonObject& call :
         CallsOfStep(report, step, {QStringLiteral("LoadFile"), QStringLiteral("LoadMotionFile")})) {
        const QString path = Array(call, "args").at(0).toString();
        const QString note = Text(call, "note");
        out << (note.isEmpty() && !call.contains(QStringLiteral("injected"))
                    ? QStringLiteral("  The host loaded the motion %1.").arg(path)
                    : QStringLiteral("  The host could not load the motion %1%2.")
                          .arg(path, note.isEmpty() ? QString() : QStringLiteral(": ") + note));
    }
}

} // namespace Host
} // namespace MV

#include "CExchangeCheck.h"

#include "CGoZStandInFile.h"
#include "FileFaultShim.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QRegularExpression>

namespace MV {
namespace Faults {

namespace {

QByteArray Read(const QString& path, bool* ok = nullptr)
{
    QFile file(path);
    const bool opened = file.open(QIODevice::ReadOnly);
    if (ok != nullptr) {
        *ok = opened;
    }
    return opened ? file.readAll() : QByteArray();
}

QList<QByteArray> Lines(const QByteArray& bytes)
{
    QList<QByteArray> lines = bytes.split('\n');
    if (!lines.isEmpty() && lines.last().isEmpty()) {
        lines.removeLast();
    }
    return lines;
}

bool IsPathLine(const QByteArray& line)
{
    const int eq = line.indexOf('=');
    return (eq < 0 ? line : line.left(eq)).trimmed() == "PATH";
}

// The object list's name, from the information file the plug-in ships.
QString ObjectListName(const QString& pluginSource)
{
    const QRegularExpression key(QStringLiteral("^GOZ_OBJECT_LIST\\s*=\\s*\"?([^\"\\r\\n]+)\"?"),
                                 QRegularExpression::MultilineOption);
    const QRegularExpressionMatch match =
        key.match(QString::fromUtf8(Read(pluginSource + QStringLiteral("/Figmora/GoZ_Info.txt"))));
    return match.hasMatch() ? match.captured(1).trimmed() : QStringLiteral("GoZ_ObjectList.txt");
}

} // namespace

CExchangeCheck::CExchangeCheck(const QString& pluginSource) : m_strPluginSource(pluginSource) {}

QStringList CExchangeCheck::Check(const QString& workFolder, const QJsonObject& report) const
{
    QStringList problems;
    CheckObjectList(workFolder, problems);
    CheckListsZBrushRead(workFolder, report, problems);
    CheckGoZFiles(workFolder, report, problems);
    CheckLeftovers(workFolder, problems);
    CheckBridgeFiles(workFolder, problems);
    return problems;
}

void CExchangeCheck::CheckObjectList(const QString& work, QStringList& problems) const
{
    const QString relative = QLatin1String(kApp) + ObjectListName(m_strPluginSource);
    const QString path = work + QLatin1Char('/') + relative;
    if (!QFileInfo(path).isFile() || m_kExempt.contains(relative)) {
        return; // no list: whoever reads it next says so
    }
    const QByteArray bytes = Read(path);
    if (!bytes.isEmpty() && !bytes.endsWith('\n')) {
        problems << QStringLiteral("%1 ends in the middle of a line").arg(relative);
    }
    // Windows finds "Name.goz" for "Name.GoZ" too.
    QSet<QString> present;
    for (const QFileInfo& entry : QDir(work + QLatin1Char('/') + QLatin1String(kProject)).entryInfoList(QDir::Files)) {
        present.insert(entry.fileName().toLower());
    }
    for (const QByteArray& raw : Lines(bytes)) {
        const QString line = QString::fromUtf8(raw).trimmed();
        if (line.isEmpty()) {
            continue;
        }
        const int slash = line.lastIndexOf(QLatin1Char('/'));
        if (slash >= 0 && line.left(slash + 1) != QLatin1String(kProject)) {
            problems << QStringLiteral("%1 names %2, outside the project folder").arg(relative, line);
            continue;
        }
        const QString name = line.mid(slash + 1);
        const QString sent = QLatin1String(kProject) + name + QStringLiteral(".goz");
        const QString returned = QLatin1String(kProject) + name + QStringLiteral(".GoZ");
        if (m_kExempt.contains(sent) || m_kExempt.contains(returned)) {
            continue;
        }
        if (!present.contains((name + QStringLiteral(".goz")).toLower())) {
            problems << QStringLiteral("%1 names %2, but no %3.goz is there").arg(relative, line, name);
        }
    }
}

void CExchangeCheck::CheckListsZBrushRead(const QString& work, const QJsonObject& report, QStringList& problems) const
{
    // The list ZBrush read may be gone by now (its return replaces it): what the stand-ins
    // logged having read must name meshes the host exported in this run or that are there.
    QSet<QString> meshes;
    for (const QJsonValue& value : report.value(QStringLiteral("call_log")).toArray()) {
        for (const QJsonValue& wrote : value.toObject().value(QStringLiteral("wrote")).toArray()) {
            meshes.insert(wrote.toObject().value(QStringLiteral("path")).toString().toLower());
        }
    }
    for (const QFileInfo& entry : QDir(work + QLatin1Char('/') + QLatin1String(kProject)).entryInfoList(QDir::Files)) {
        meshes.insert((QLatin1String(kProject) + entry.fileName()).toLower());
    }
    for (const QJsonValue& value : report.value(QStringLiteral("processes")).toArray()) {
        const QJsonObject process = value.toObject();
        if (process.value(QStringLiteral("program")).toString() == QLatin1String("GoZBrushToFM.exe")) {
            continue; // it reads the list ZBrush returned
        }
        for (const QJsonValue& line : process.value(QStringLiteral("object_list")).toArray()) {
            const QString name = line.toString();
            if (m_kExempt.contains(name + QStringLiteral(".goz"))) {
                continue;
            }
            if (!name.startsWith(QLatin1String(kProject)) || !meshes.contains((name + QStringLiteral(".goz")).toLower())) {
                problems << QStringLiteral("%1 read an object list naming %2, which was never exported")
                                .arg(process.value(QStringLiteral("program")).toString(), name);
            }
        }
    }
}

void CExchangeCheck::CheckGoZFiles(const QString& work, const QJsonObject& report, QStringList& problems) const
{
    // ZBrush's stand-in cuts or garbles files on purpose when the scene asks it to.
    QSet<QString> deliberate;
    for (const QJsonValue& process : report.value(QStringLiteral("processes")).toArray()) {
        const QJsonObject returned = process.toObject().value(QStringLiteral("return")).toObject();
        for (const QJsonValue& file : returned.value(QStringLiteral("files")).toArray()) {
            const QString state = file.toObject().value(QStringLiteral("state")).toString();
            if (state != QLatin1String("written")) {
                deliberate.insert(file.toObject().value(QStringLiteral("name")).toString());
            }
        }
    }
    const QDir project(work + QLatin1Char('/') + QLatin1String(kProject));
    for (const QFileInfo& entry : project.entryInfoList(QDir::Files | QDir::Hidden)) {
        const QString relative = QLatin1String(kProject) + entry.fileName();
        if (m_kExempt.contains(relative)) {
            continue;
        }
        const QString suffix = entry.suffix();
        if (suffix.compare(QLatin1String("goz"), Qt::CaseInsensitive) == 0) {
            if (suffix == QLatin1String("GoZ") && deliberate.contains(entry.completeBaseName())) {
                continue;
            }
            Host::CGoZStandInFile parsed;
            QString error;
            if (!Host::CGoZStandInFile::Parse(Read(entry.filePath()), parsed, error)) {
                problems << QStringLiteral("%1 is not whole: %2").arg(relative, error);
            }
        } else if (suffix == QLatin1String("mvMotionPlus")) {
            const QByteArray bytes = Read(entry.filePath());
            if (!bytes.startsWith("MOTION-STANDIN 1\n") || !bytes.endsWith('\n') || !bytes.contains("\npose=")) {
                problems << QStringLiteral("%1 is not a whole pose file").arg(relative);
            }
        }
    }
}

void CExchangeCheck::CheckLeftovers(const QString& work, QStringList& problems) const
{
    const QStringList folders = {QLatin1String(kApp), QLatin1String(kProject),
                                 QLatin1String(kPixologic) + QStringLiteral("GoZBrush/")};
    for (const QString& folder : folders) {
        for (const QFileInfo& entry :
             QDir(work + QLatin1Char('/') + folder).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)) {
            const std::string name = entry.fileName().toStdString();
            if (FamilyOf(name) != name || entry.fileName().startsWith(QLatin1String("qt_temp."))) {
                problems << QStringLiteral("temporary file %1%2 left behind").arg(folder, entry.fileName());
            }
        }
    }
    // A file set aside for a Relink goes back or away; it may stay only where a fault put a
    // folder in its place.
    const QDir aside(work + QLatin1Char('/') + QLatin1String(kProject) + QStringLiteral(".mvgoz-relink"));
    QStringList stayed;
    for (const QString& name : aside.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)) {
        if (!m_kExempt.contains(QLatin1String(kProject) + name)) {
            stayed << name;
        }
    }
    if (!stayed.isEmpty()) {
        problems << QStringLiteral("files set aside for a Relink stayed aside: %1").arg(stayed.join(QStringLiteral(", ")));
    }
}

void CExchangeCheck::CheckBridgeFiles(const QString& work, QStringList& problems) const
{
    const auto installed = [&](const QString& relative, QByteArray& bytes) {
        const QString path = work + QLatin1Char('/') + relative;
        if (m_kExempt.contains(relative) || !QFileInfo(path).isFile()) {
            return false;
        }
        bytes = Read(path);
        return true;
    };
    QByteArray bytes;
    for (const QString& name : {QStringLiteral("GoZ_Info.txt"), QStringLiteral("GoZBrushToFM.exe")}) {
        if (installed(QLatin1String(kApp) + name, bytes) &&
            bytes != Read(m_strPluginSource + QStringLiteral("/Figmora/") + name)) {
            problems << QStringLiteral("%1%2 differs from the one the plug-in ships").arg(QLatin1String(kApp), name);
        }
    }
    if (installed(QLatin1String(kApp) + QStringLiteral("GoZ_Config.txt"), bytes)) {
        const QByteArray shipped = Read(m_strPluginSource + QStringLiteral("/Figmora/GoZ_Config.txt"));
        QList<QByteArray> kept;
        QList<QByteArray> expected;
        int pathLines = 0;
        bool wellFormed = true;
        for (const QByteArray& line : Lines(bytes)) {
            if (IsPathLine(line)) {
                ++pathLines;
                wellFormed = wellFormed && QRegularExpression(QStringLiteral("^PATH = \"[^\"]+\"\\r?$"))
                                               .match(QString::fromLatin1(line))
                                               .hasMatch();
            } else {
                kept << line;
            }
        }
        for (const QByteArray& line : Lines(shipped)) {
            if (!IsPathLine(line)) {
                expected << line;
            }
        }
        if (kept != expected || pathLines != 1 || !wellFormed || (shipped.endsWith('\n') && !bytes.endsWith('\n'))) {
            problems << QStringLiteral("%1GoZ_Config.txt is not whole: %2")
                            .arg(QLatin1String(kApp), QString::fromUtf8(bytes.toPercentEncoding(" =\"\\:._")));
        }
    }
    if (installed(QLatin1String(kPixologic) + QStringLiteral("GoZBrush/GoZ_Application.txt"), bytes) &&
        bytes != "Figmora") {
        problems << QStringLiteral("GoZ_Application.txt holds \"%1\"").arg(QString::fromUtf8(bytes.left(40)));
    }
}

} // namespace Faults
} // namespace MV

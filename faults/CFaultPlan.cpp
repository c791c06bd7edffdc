#include "CFaultPlan.h"

#include "CReport.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QMap>

namespace MV {
namespace Faults {

namespace {

const EFileFault kFaults[] = {EFileFault::Missing, EFileFault::ReadOnly, EFileFault::Directory, EFileFault::WriteFails};

const char* const kProjectFolder = Plan::kProjectFiles;

// The run's own machinery, not files of the plug-in: the process log the host polls and the
// ZBrush stand-in's settings.
bool IsMachinery(const QString& file)
{
    return file == QLatin1String("work/processes.jsonl") || file == QLatin1String("work/zbrush-return.json") ||
           file.endsWith(QLatin1String(".so"));
}

} // namespace

QJsonObject CPlannedRun::ToJson() const
{
    return QJsonObject{{QStringLiteral("kind"), m_eKind == EKind::Host ? QStringLiteral("host") : QStringLiteral("file")},
                       {QStringLiteral("label"), m_strLabel},
                       {QStringLiteral("operation"), m_strOperation},
                       {QStringLiteral("nth"), m_iNth},
                       {QStringLiteral("file"), m_strFile},
                       {QStringLiteral("fault"), static_cast<int>(m_eFault)},
                       {QStringLiteral("when"), m_strWhen}};
}

CPlannedRun CPlannedRun::FromJson(const QJsonObject& json)
{
    CPlannedRun planned;
    planned.m_eKind = json.value(QStringLiteral("kind")).toString() == QLatin1String("host") ? EKind::Host : EKind::File;
    planned.m_strLabel = json.value(QStringLiteral("label")).toString();
    planned.m_strOperation = json.value(QStringLiteral("operation")).toString();
    planned.m_iNth = json.value(QStringLiteral("nth")).toInt();
    planned.m_strFile = json.value(QStringLiteral("file")).toString();
    planned.m_eFault = static_cast<EFileFault>(json.value(QStringLiteral("fault")).toInt());
    planned.m_strWhen = json.value(QStringLiteral("when")).toString();
    return planned;
}

QJsonObject CPlannedRun::FailStep() const
{
    if (m_eKind != EKind::Host) {
        return QJsonObject();
    }
    return QJsonObject{{QStringLiteral("step"), QStringLiteral("fail")},
                       {QStringLiteral("operation"), m_strOperation},
                       {QStringLiteral("code"), Host::CReport::Hex(QV::kFail)},
                       {QStringLiteral("nth"), m_iNth}};
}

CTouchLog::CTouchLog(const std::vector<CTouch>& touches, const QString& workFolder, const QString& pluginFolder)
    : m_strWork(QDir(workFolder).absolutePath()), m_strPlugin(QDir(pluginFolder).absolutePath())
{
    // From the registry file the host writes just before it loads the plug-in, to the listing
    // of the work folder that starts the report.
    bool inWindow = false;
    bool ended = false;
    for (const CTouch& touch : touches) {
        const QString file = Relative(touch.m_strFamily);
        if (!inWindow && !ended && file == QLatin1String("work/registry.txt") && touch.m_eKind == ETouch::Write) {
            inWindow = true;
            m_kEntries.append(CEntry{file, touch.m_eKind, false});
            continue;
        }
        if (inWindow && touch.m_eKind == ETouch::ListDir && QString::fromStdString(touch.m_strPath) == m_strWork) {
            inWindow = false;
            ended = true;
        }
        m_kEntries.append(CEntry{file, touch.m_eKind, inWindow});
    }
}

QString CTouchLog::Relative(const std::string& path) const
{
    const QString text = QString::fromStdString(path);
    if (text.startsWith(m_strWork + QLatin1Char('/'))) {
        return QStringLiteral("work/") + text.mid(m_strWork.size() + 1);
    }
    if (text.startsWith(m_strPlugin + QLatin1Char('/'))) {
        return QStringLiteral("plugin/") + text.mid(m_strPlugin.size() + 1);
    }
    return text;
}

QString CTouchLog::Absolute(const QString& relative, const QString& workFolder) const
{
    if (relative.startsWith(QLatin1String("work/"))) {
        return QDir(workFolder).absolutePath() + relative.mid(4);
    }
    if (relative.startsWith(QLatin1String("plugin/"))) {
        return m_strPlugin + relative.mid(6);
    }
    return relative;
}

int CTouchLog::Resolve(const QString& file, const QString& when) const
{
    const bool writes = when.endsWith(QLatin1String("write")) || when.startsWith(QLatin1String("write "));
    QList<int> ordinals;
    int ordinal = 0;
    for (const CEntry& entry : m_kEntries) {
        if (entry.m_strFile != file || (writes && entry.m_eKind != ETouch::Write)) {
            continue;
        }
        ++ordinal;
        if (entry.m_bInWindow) {
            ordinals.append(ordinal);
        }
    }
    if (ordinals.isEmpty()) {
        return 0;
    }
    if (when.startsWith(QLatin1String("first"))) {
        return ordinals.first();
    }
    if (when.startsWith(QLatin1String("last"))) {
        return ordinals.last();
    }
    return ordinals.value(when.mid(6).toInt() - 1); // "write <n>": the nth while the plug-in ran
}

int CTouchLog::Writes(const QString& file) const
{
    int writes = 0;
    for (const CEntry& entry : m_kEntries) {
        writes += entry.m_bInWindow && entry.m_strFile == file && entry.m_eKind == ETouch::Write ? 1 : 0;
    }
    return writes;
}

bool CTouchLog::IsChanged(const QString& file) const
{
    for (const CEntry& entry : m_kEntries) {
        if (entry.m_bInWindow && entry.m_strFile == file &&
            (entry.m_eKind == ETouch::Write || entry.m_eKind == ETouch::RenameFrom || entry.m_eKind == ETouch::RenameTo ||
             entry.m_eKind == ETouch::Unlink)) {
            return true;
        }
    }
    return false;
}

QStringList CTouchLog::Files() const
{
    QStringList files;
    QMap<QString, QStringList> meshesByKind;
    for (const CEntry& entry : m_kEntries) {
        if (!entry.m_bInWindow || files.contains(entry.m_strFile) || IsMachinery(entry.m_strFile) ||
            !(entry.m_strFile.startsWith(QLatin1String("work/")) || entry.m_strFile.startsWith(QLatin1String("plugin/")))) {
            continue;
        }
        // Files as the clean run left them; folders and files that came and went are no targets.
        if (!QFileInfo(Absolute(entry.m_strFile, m_strWork)).isFile()) {
            continue;
        }
        if (entry.m_strFile.startsWith(QLatin1String(kProjectFolder)) &&
            !entry.m_strFile.mid(static_cast<int>(qstrlen(kProjectFolder))).contains(QLatin1Char('/'))) {
            QStringList& kind = meshesByKind[QFileInfo(entry.m_strFile).suffix()];
            if (!kind.contains(entry.m_strFile)) {
                kind.append(entry.m_strFile);
            }
            continue;
        }
        files.append(entry.m_strFile);
    }
    // Of the meshes and poses, the first and the last of each kind stand for the rest.
    for (const QStringList& kind : meshesByKind) {
        files.append(kind.first());
        if (kind.size() > 1) {
            files.append(kind.last());
        }
    }
    return files;
}

namespace Plan {

QList<CPlannedRun> HostRuns(const QJsonObject& cleanReport)
{
    QStringList order;
    QMap<QString, int> calls;
    for (const QJsonValue& value : cleanReport.value(QStringLiteral("call_log")).toArray()) {
        const QJsonObject call = value.toObject();
        if (!call.contains(QStringLiteral("step"))) {
            continue; // loading and unloading: no script step reaches them
        }
        const QString operation = call.value(QStringLiteral("operation")).toString();
        if (!calls.contains(operation)) {
            order.append(operation);
        }
        ++calls[operation];
    }
    QList<CPlannedRun> runs;
    for (const QString& operation : order) {
        const int count = calls.value(operation);
        QList<int> nths{1};
        if (count > 1) {
            nths.append(count);
        }
        for (const int nth : nths) {
            CPlannedRun planned;
            planned.m_eKind = CPlannedRun::EKind::Host;
            planned.m_strOperation = operation;
            planned.m_iNth = nth;
            planned.m_strLabel = QStringLiteral("%1 fails on call %2 of %3").arg(operation).arg(nth).arg(count);
            runs.append(planned);
        }
    }
    return runs;
}

QList<CPlannedRun> FileRuns(const CTouchLog& clean, const QString& below)
{
    QList<CPlannedRun> runs;
    for (const QString& file : clean.Files()) {
        if (!file.startsWith(below)) {
            continue;
        }
        for (const EFileFault fault : kFaults) {
            const bool write = fault == EFileFault::WriteFails;
            // A file only read is read the same when it is read-only.
            if ((write && clean.Writes(file) == 0) || (fault == EFileFault::ReadOnly && !clean.IsChanged(file))) {
                continue;
            }
            QStringList whens;
            if (write) {
                // Each write of a file written a few times (the bridge config is installed, then
                // set at every send); else the first, the second and the last.
                const int writes = clean.Writes(file);
                for (int n = 1; n <= writes; ++n) {
                    if (writes <= 4 || n <= 2 || n == writes) {
                        whens << (n == writes && n > 1 ? QStringLiteral("last write") : QStringLiteral("write %1").arg(n));
                    }
                }
            } else {
                whens << QStringLiteral("first touch");
                if (clean.Resolve(file, QStringLiteral("last touch")) != clean.Resolve(file, QStringLiteral("first touch"))) {
                    whens << QStringLiteral("last touch");
                }
            }
            for (const QString& when : whens) {
                CPlannedRun planned;
                planned.m_eKind = CPlannedRun::EKind::File;
                planned.m_strFile = file;
                planned.m_eFault = fault;
                planned.m_strWhen = when;
                planned.m_strLabel = QStringLiteral("%1 %2 at its %3").arg(file, QLatin1String(Name(fault)), when);
                runs.append(planned);
            }
        }
    }
    return runs;
}

} // namespace Plan

} // namespace Faults
} // namespace MV

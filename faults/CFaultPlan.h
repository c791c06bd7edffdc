#pragma once

#include "CCampaignRun.h"
#include "FileFaultShim.h"

#include <QJsonObject>
#include <QList>
#include <QString>

#include <vector>

namespace MV {
namespace Faults {

// One faulted run: a host operation failing at its nth call, or a file fault at a touch of
// the file chosen from a clean run.
struct CPlannedRun
{
    enum class EKind
    {
        Host,
        File,
    };
    EKind m_eKind = EKind::Host;
    QString m_strLabel;
    // Host faults.
    QString m_strOperation;
    int m_iNth = 0;
    // File faults: the file as "work/<path>" or "plugin/<path>", and which of its touches.
    QString m_strFile;
    EFileFault m_eFault = EFileFault::Missing;
    QString m_strWhen; // "first touch", "last touch", "write <n>", "last write" (see CTouchLog::Resolve)

    QJsonObject ToJson() const;
    static CPlannedRun FromJson(const QJsonObject& json);

    // The fail step that replaces the placeholder.
    QJsonObject FailStep() const;
};

// The touches of one clean run, seen from its work and plug-in folders.
class CTouchLog
{
public:
    CTouchLog(const std::vector<CTouch>& touches, const QString& workFolder, const QString& pluginFolder);

    // "work/<path>", "plugin/<path>", or the absolute path for anything else.
    QString Relative(const std::string& path) const;
    // The absolute path of a relative name, for the run whose work folder is given.
    QString Absolute(const QString& relative, const QString& workFolder) const;

    // The 1-based touch of file that when names ("first touch", "last touch", "write <n>",
    // "last write"; n counts the writes while the plug-in runs), counted from the start of the
    // run as the shim counts; 0 when there is no such touch between the loading of the plug-in
    // and the report.
    int Resolve(const QString& file, const QString& when) const;
    // How often file was opened for writing while the plug-in ran.
    int Writes(const QString& file) const;

    // Files touched while the plug-in runs, in first-touch order, as "work/..." and "plugin/...".
    QStringList Files() const;
    // Written, replaced, renamed or deleted while the plug-in ran.
    bool IsChanged(const QString& file) const;

private:
    struct CEntry
    {
        QString m_strFile;
        ETouch m_eKind;
        bool m_bInWindow;
    };
    QString m_strWork;
    QString m_strPlugin;
    QList<CEntry> m_kEntries;
};

namespace Plan {

// Every host operation the clean run called from a script step, failing on its first call and
// on its last.
QList<CPlannedRun> HostRuns(const QJsonObject& cleanReport);

// Every file the clean run touched while the plug-in ran (the project folder's meshes and poses
// by the first and the last of each kind), made missing or a folder at its first and last
// touch; those it changed also made read-only then, and failing at their writes (see FileRuns).
// below: only the files whose name starts so ("work/...", "plugin/..."); empty: all.
QList<CPlannedRun> FileRuns(const CTouchLog& clean, const QString& below = QString());

// The project folder, where meshes and poses go out and come back.
constexpr const char* kProjectFiles = "work/C:/Users/Public/Pixologic/GoZProjects/Default/";

} // namespace Plan

} // namespace Faults
} // namespace MV

#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

namespace MV {
namespace Host {

// Keeps the run's stand-in programs from outliving it. The processes the host starts inherit
// MVGOZ_RUNNING_DIR and MVGOZ_RUN_ID; each stand-in marks itself in that folder while it runs
// (a file named after its process id). At the end of the run the host waits for the folder to
// empty and stops what is left, but only processes that carry this run's id.
class CStandInTracker
{
public:
    static constexpr const char* kFolderVariable = "MVGOZ_RUNNING_DIR";
    static constexpr const char* kRunVariable = "MVGOZ_RUN_ID";

    CStandInTracker();
    ~CStandInTracker(); // restores the variables
    CStandInTracker(const CStandInTracker&) = delete;
    CStandInTracker& operator=(const CStandInTracker&) = delete;

    // folder must exist; the marks go into folder/running.
    bool Start(const QString& folder, QString& error);

    // Process ids of this run's stand-ins that still run (stale marks are dropped).
    QStringList Running() const;
    // Waits, with the event loop running, until none runs or the time is up; returns those left.
    QStringList WaitForAll(int timeoutMs) const;
    // Stops the processes that carry this run's id; returns the ids it stopped.
    QStringList Stop(const QStringList& pids) const;

private:
    bool IsOurs(qint64 pid) const;

    QString m_strFolder;
    QByteArray m_kRunId;
    struct CSaved
    {
        QByteArray m_kName;
        bool m_bWasSet = false;
        QByteArray m_kValue;
    };
    QList<CSaved> m_kSaved;
};

} // namespace Host
} // namespace MV

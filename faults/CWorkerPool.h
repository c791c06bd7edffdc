#pragma once

#include "CCampaignRun.h"
#include "CFaultPlan.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace MV {
namespace Faults {

// What became of one planned run.
struct CRunResult
{
    int m_iIndex = -1;
    QString m_strLabel;
    QString m_strOutcome;      // a Name(EOutcome), or "crashed" / "hung" when the run never ended
    QStringList m_kViolations; // broken invariants
    QStringList m_kNew;        // new messages or log lines
    qint64 m_iElapsedMs = 0;
};

// Most of a run is spent waiting for the ZBrush stand-ins, so the planned runs are shared
// among a few worker processes (this program again, see FaultMain.cpp), each running its
// share in-process after a clean run of its own. A worker that dies takes only the run it was
// in: that run is reported and a new worker takes the rest.
class CWorkerPool
{
public:
    CWorkerPool(const QString& program, int workers);

    QList<CRunResult> Run(const CScenario& scenario, const QList<CPlannedRun>& runs, const QString& folder) const;

    // The worker's side: runs the planned runs of indices, appending one JSON line per run to
    // results. Returns the process exit code.
    static int Work(const QString& planPath, const QString& resultsPath, const QList<int>& indices);

    // MVGOZ_FAULT_WORKERS, else one for 25 runs, 2 to 4: two campaigns side by side then keep
    // two cores busy while most of their runs wait, and the longest ones end about together.
    static int DefaultWorkers(int runs);

private:
    QString m_strProgram;
    int m_iWorkers;
};

} // namespace Faults
} // namespace MV

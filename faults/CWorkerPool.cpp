#include "CWorkerPool.h"

#include "CBackstopWatchdog.h"
#include "COutcome.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QThread>

#include <cstdlib>
#include <deque>
#include <memory>

namespace MV {
namespace Faults {

namespace {

// Far beyond any worker's share; the runs' own watchdogs end a stuck worker long before.
constexpr int kWorkerLimitMs = 20 * 60 * 1000;

QByteArray ReadAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void AppendLine(QFile& file, const QJsonObject& line)
{
    file.write(QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n');
    file.flush();
}

struct CWorker
{
    std::unique_ptr<QProcess> m_pProcess;
    QList<int> m_kIndices;
    QString m_strResults;
    QString m_strErrors;
};

} // namespace

CWorkerPool::CWorkerPool(const QString& program, int workers) : m_strProgram(program), m_iWorkers(qMax(1, workers)) {}

int CWorkerPool::DefaultWorkers(int runs)
{
    bool ok = false;
    const int workers = qEnvironmentVariableIntValue("MVGOZ_FAULT_WORKERS", &ok);
    return ok && workers > 0 ? workers : qBound(2, runs / 25, 4);
}

QList<CRunResult> CWorkerPool::Run(const CScenario& scenario, const QList<CPlannedRun>& runs, const QString& folder) const
{
    QJsonArray entries;
    for (const CPlannedRun& planned : runs) {
        entries.append(planned.ToJson());
    }
    const QString plan = folder + QStringLiteral("/plan.json");
    {
        QFile file(plan);
        if (!file.open(QIODevice::WriteOnly)) {
            return {};
        }
        file.write(QJsonDocument(QJsonObject{{QStringLiteral("scenario"), scenario.ToJson()},
                                             {QStringLiteral("runs"), entries}})
                       .toJson(QJsonDocument::Compact));
    }

    QList<CRunResult> results;
    for (int i = 0; i < runs.size(); ++i) {
        CRunResult result;
        result.m_iIndex = i;
        result.m_strLabel = runs[i].m_strLabel;
        results.append(result);
    }
    // Dealt round, so that slow runs (those that wait for a return that never comes) spread.
    QList<QList<int>> queue;
    for (int w = 0; w < qMin(m_iWorkers, runs.size()); ++w) {
        QList<int> share;
        for (int i = w; i < runs.size(); i += m_iWorkers) {
            share.append(i);
        }
        queue.append(share);
    }
    int started = 0;
    const QString temporary = folder + QStringLiteral("/tmp");
    QDir().mkpath(temporary);
    std::deque<CWorker> active;
    const auto start = [&](const QList<int>& indices) {
        CWorker worker;
        worker.m_kIndices = indices;
        worker.m_strResults = folder + QStringLiteral("/results-%1.jsonl").arg(started);
        worker.m_strErrors = folder + QStringLiteral("/errors-%1.txt").arg(started);
        ++started;
        QStringList numbers;
        for (const int index : indices) {
            numbers << QString::number(index);
        }
        worker.m_pProcess = std::make_unique<QProcess>();
        // What a worker leaves when it dies goes with the pool's folder.
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("TMPDIR"), temporary);
        worker.m_pProcess->setProcessEnvironment(environment);
        worker.m_pProcess->setStandardOutputFile(QProcess::nullDevice());
        worker.m_pProcess->setStandardErrorFile(worker.m_strErrors);
        worker.m_pProcess->start(m_strProgram, {QStringLiteral("--fault-worker"), plan, worker.m_strResults,
                                                numbers.join(QLatin1Char(','))});
        active.push_back(std::move(worker));
    };
    for (const QList<int>& share : queue) {
        start(share);
    }
    while (!active.empty()) {
        CWorker worker = std::move(active.front());
        active.pop_front();
        if (!worker.m_pProcess->waitForFinished(kWorkerLimitMs)) {
            worker.m_pProcess->kill();
            worker.m_pProcess->waitForFinished(5000);
        }
        int current = -1;
        QList<int> done;
        for (const QByteArray& line : ReadAll(worker.m_strResults).split('\n')) {
            const QJsonObject entry = QJsonDocument::fromJson(line).object();
            if (entry.contains(QStringLiteral("start"))) {
                current = entry.value(QStringLiteral("start")).toInt();
            } else if (entry.contains(QStringLiteral("done"))) {
                const int index = entry.value(QStringLiteral("done")).toInt();
                if (index < 0 || index >= results.size()) {
                    continue;
                }
                CRunResult& result = results[index];
                result.m_strOutcome = entry.value(QStringLiteral("outcome")).toString();
                result.m_kViolations = entry.value(QStringLiteral("violations")).toVariant().toStringList();
                result.m_kNew = entry.value(QStringLiteral("new")).toVariant().toStringList();
                result.m_iElapsedMs = static_cast<qint64>(entry.value(QStringLiteral("ms")).toDouble());
                done.append(index);
                current = -1;
            }
        }
        QList<int> rest;
        for (const int index : worker.m_kIndices) {
            if (!done.contains(index) && index != current) {
                rest.append(index);
            }
        }
        const bool crashed = worker.m_pProcess->exitStatus() == QProcess::CrashExit;
        const QString how = crashed ? QStringLiteral("the worker died of a signal")
                                    : QStringLiteral("the worker ended with exit code %1").arg(worker.m_pProcess->exitCode());
        const QString errors = QString::fromUtf8(ReadAll(worker.m_strErrors).right(600)).trimmed();
        if (current >= 0 && current < results.size()) {
            CRunResult& result = results[current];
            const bool hung = errors.contains(QString::fromStdString(CCampaignRun::NeverCameBack(result.m_strLabel)));
            result.m_strOutcome = hung ? QStringLiteral("hung") : QStringLiteral("crashed");
            result.m_kViolations << QStringLiteral("the run did not end: %1; %2").arg(how, errors);
        } else if (!rest.isEmpty() && done.isEmpty()) {
            // Not even the clean run of the worker got through: nothing to blame a run for.
            for (const int index : rest) {
                results[index].m_strOutcome = QStringLiteral("crashed");
                results[index].m_kViolations << QStringLiteral("no worker could run it: %1; %2").arg(how, errors);
            }
            rest.clear();
        }
        if (!rest.isEmpty()) {
            start(rest);
        }
    }
    return results;
}

int CWorkerPool::Work(const QString& planPath, const QString& resultsPath, const QList<int>& indices)
{
    const QJsonObject plan = QJsonDocument::fromJson(ReadAll(planPath)).object();
    const CScenario scenario = CScenario::FromJson(plan.value(QStringLiteral("scenario")).toObject());
    const QJsonArray entries = plan.value(QStringLiteral("runs")).toArray();
    QFile results(resultsPath);
    if (!results.open(QIODevice::WriteOnly | QIODevice::Append)) {
        return 2;
    }
    CCampaignRun runner;
    QString why;
    if (!runner.IsReady(why)) {
        AppendLine(results, QJsonObject{{QStringLiteral("error"), why}});
        return 2;
    }
    // The measure for this worker's runs: the same touches and calls as the planning run had.
    const CRunRecord clean = runner.Run(QStringLiteral("clean"), scenario);
    const CTouchLog touches(clean.m_kTouches, clean.m_strWork, runner.PluginFolder());
    const COutcome judge(clean.m_kReport, QStringLiteral(MVGOZ_PLUGIN_DIR));
    CCampaignRun::Discard(clean);

    // MVGOZ_FAULT_TEST_END=<index>:crash|hang: that run dies, to test the pool itself.
    const QStringList end = qEnvironmentVariable("MVGOZ_FAULT_TEST_END").split(QLatin1Char(':'));
    for (const int index : indices) {
        const CPlannedRun planned = CPlannedRun::FromJson(entries.at(index).toObject());
        AppendLine(results, QJsonObject{{QStringLiteral("start"), index}});
        if (end.size() == 2 && end[0].toInt() == index) {
            if (end[1] == QLatin1String("hang")) {
                const Host::CBackstopWatchdog backstop(1, CCampaignRun::NeverCameBack(planned.m_strLabel), 3);
                QThread::sleep(60);
            }
            std::abort();
        }
        CRunRecord run;
        if (planned.m_eKind == CPlannedRun::EKind::Host) {
            run = runner.Run(planned.m_strLabel, scenario, planned.FailStep());
        } else {
            CFileFaultPlan fault;
            fault.m_strFile = planned.m_strFile;
            fault.m_eFault = planned.m_eFault;
            fault.m_iNth = touches.Resolve(planned.m_strFile, planned.m_strWhen);
            run = runner.Run(planned.m_strLabel, scenario, QJsonObject(), fault.m_iNth > 0 ? &fault : nullptr);
        }
        const CVerdict verdict = judge.Judge(planned, run);
        AppendLine(results, QJsonObject{{QStringLiteral("done"), index},
                                        {QStringLiteral("outcome"), QLatin1String(Name(verdict.m_eOutcome))},
                                        {QStringLiteral("violations"), QJsonArray::fromStringList(verdict.m_kViolations)},
                                        {QStringLiteral("new"), QJsonArray::fromStringList(verdict.m_kNew)},
                                        {QStringLiteral("ms"), static_cast<double>(run.m_iElapsedMs)}});
        // MVGOZ_FAULT_KEEP: a folder that gets every run's report, to look into an outcome.
        const QString keep = qEnvironmentVariable("MVGOZ_FAULT_KEEP");
        QFile report(keep + QStringLiteral("/%1-%2.json").arg(scenario.m_strName).arg(index));
        if (!keep.isEmpty() && report.open(QIODevice::WriteOnly)) {
            report.write(QJsonDocument(run.m_kReport).toJson());
        }
        CCampaignRun::Discard(run);
    }
    return 0;
}

} // namespace Faults
} // namespace MV

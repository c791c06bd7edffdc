// The fault campaign: the send, round-trip and expression scripts run once clean, then once
// for every host operation they call failing (on its first and on its last call) and once for
// every file they touch made missing, read-only or a folder, or failing as it is written.
// Whatever the fault does to the story, every run must end by itself and leave the exchange
// files whole and consistent.
#include "CCampaignRun.h"
#include "CExchangeCheck.h"
#include "CFaultPlan.h"
#include "COutcome.h"
#include "CWorkerPool.h"
#include "QtPrinters.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMap>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <iostream>
#include <tuple>

using namespace MV::Faults;

namespace {

// How long a faulted run waits for the stand-ins: a send that failed waits this long for
// nothing. A return late beyond it only changes how the run is classified; clean runs wait as
// their scripts say.
constexpr int kFaultWaitMs = 1000;

struct CSource
{
    const char* m_szName;
    const char* m_szScene;
    const char* m_szScript;
    const char* m_szFiles; // the files its file faults hit, by the start of their names
};

// The send script touches every exchange file, the texture sizes and the host's motion file;
// the expression script adds the poses of a Relink, which it sets aside.
const CSource kSources[] = {
    {"Send", MVGOZ_DEMO_DIR "/scene.json", MVGOZ_DEMO_DIR "/script.json", ""},
    {"RoundTrip", MVGOZ_DEMO_DIR "/roundtrip-scene.json", MVGOZ_DEMO_DIR "/roundtrip-script.json", ""},
    {"Expression", MVGOZ_FAULT_DATA_DIR "/expression-scene.json", MVGOZ_FAULT_DATA_DIR "/expression-script.json",
     Plan::kProjectFiles},
};

enum class EFaults
{
    Host,
    File,
};

using CCase = std::tuple<EFaults, CSource>;

std::string CaseName(const ::testing::TestParamInfo<CCase>& info)
{
    return std::string(std::get<0>(info.param) == EFaults::Host ? "HostOperation" : "File") +
           std::get<1>(info.param).m_szName;
}

// The row of the summary a run counts in.
QString FaultClass(const CPlannedRun& planned)
{
    if (planned.m_eKind == CPlannedRun::EKind::Host) {
        return planned.m_iNth == 1 ? QStringLiteral("host operation fails, first call")
                                : QStringLiteral("host operation fails, last call");
    }
    return QStringLiteral("file ") + QLatin1String(Name(planned.m_eFault));
}

void PrintSummary(const QString& scenario, const QList<CPlannedRun>& planned, const QList<CRunResult>& results,
                  qint64 elapsedMs)
{
    QMap<QString, QMap<QString, int>> table;
    for (int i = 0; i < results.size(); ++i) {
        ++table[FaultClass(planned[i])][results[i].m_strOutcome];
        table[FaultClass(planned[i])][QStringLiteral("violations")] += results[i].m_kViolations.isEmpty() ? 0 : 1;
    }
    std::cout << scenario.toStdString() << ": " << results.size() << " runs in " << elapsedMs << " ms\n";
    for (auto row = table.cbegin(); row != table.cend(); ++row) {
        std::cout << "  " << row.key().toStdString() << ":";
        for (auto cell = row.value().cbegin(); cell != row.value().cend(); ++cell) {
            std::cout << " " << cell.key().toStdString() << "=" << cell.value();
        }
        std::cout << "\n";
    }
    // MVGOZ_FAULT_SUMMARY: a file that collects every run, for docs/faults.md.
    const QString summary = qEnvironmentVariable("MVGOZ_FAULT_SUMMARY");
    QFile file(summary);
    if (summary.isEmpty() || !file.open(QIODevice::WriteOnly | QIODevice::Append)) {
        return;
    }
    for (int i = 0; i < results.size(); ++i) {
        const QJsonObject line{{QStringLiteral("scenario"), scenario},
                               {QStringLiteral("class"), FaultClass(planned[i])},
                               {QStringLiteral("label"), results[i].m_strLabel},
                               {QStringLiteral("outcome"), results[i].m_strOutcome},
                               {QStringLiteral("new"), QJsonArray::fromStringList(results[i].m_kNew)},
                               {QStringLiteral("violations"), QJsonArray::fromStringList(results[i].m_kViolations)},
                               {QStringLiteral("ms"), static_cast<double>(results[i].m_iElapsedMs)}};
        file.write(QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n');
    }
}

class FaultCampaign : public ::testing::TestWithParam<CCase>
{
};

TEST_P(FaultCampaign, EveryRunEndsAndLeavesTheExchangeFilesWhole)
{
    const EFaults faults = std::get<0>(GetParam());
    const CSource& source = std::get<1>(GetParam());
    CCampaignRun runner;
    QString why;
    if (!runner.IsReady(why)) {
        GTEST_SKIP() << why.toStdString();
    }
    const CScenario scenario = CScenario::Load(QLatin1String(source.m_szName), QLatin1String(source.m_szScene),
                                               QLatin1String(source.m_szScript), kFaultWaitMs);
    const CRunRecord clean = runner.Run(QStringLiteral("clean"), scenario);
    // A campaign over a broken story tests little.
    ASSERT_TRUE(clean.m_kReport.value(QStringLiteral("ok")).toBool())
        << QJsonDocument(clean.m_kReport.value(QStringLiteral("steps")).toArray()).toJson().toStdString()
        << QJsonDocument(clean.m_kReport.value(QStringLiteral("errors")).toArray()).toJson().toStdString();
    EXPECT_EQ(QStringList(), CExchangeCheck(QStringLiteral(MVGOZ_PLUGIN_DIR)).Check(clean.m_strWork, clean.m_kReport))
        << "the clean run already breaks the rules";

    const QList<CPlannedRun> runs =
        faults == EFaults::Host
            ? Plan::HostRuns(clean.m_kReport)
            : Plan::FileRuns(CTouchLog(clean.m_kTouches, clean.m_strWork, runner.PluginFolder()),
                             QLatin1String(source.m_szFiles));
    CCampaignRun::Discard(clean);
    ASSERT_GE(runs.size(), 10) << "the clean run shows too little to fault";

    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    QElapsedTimer timer;
    timer.start();
    const CWorkerPool pool(QCoreApplication::applicationFilePath(), CWorkerPool::DefaultWorkers(runs.size()));
    const QList<CRunResult> results = pool.Run(scenario, runs, folder.path());
    ASSERT_EQ(runs.size(), results.size());
    int notReached = 0;
    for (const CRunResult& result : results) {
        notReached += result.m_strOutcome == QLatin1String(Name(EOutcome::NotFired)) ? 1 : 0;
        EXPECT_FALSE(result.m_strOutcome.isEmpty()) << result.m_strLabel.toStdString() << ": never ran";
        EXPECT_EQ(QStringList(), result.m_kViolations)
            << result.m_strLabel.toStdString() << " (" << result.m_strOutcome.toStdString() << ")";
    }
    // Runs go where the clean run went until the fault: a fault that is seldom reached means
    // the shim no longer sees the calls.
    EXPECT_LE(notReached * 10, runs.size()) << notReached << " file faults never happened";
    PrintSummary(QLatin1String(source.m_szName), runs, results, timer.elapsed());
}

INSTANTIATE_TEST_SUITE_P(Campaign, FaultCampaign,
                         ::testing::Values(CCase{EFaults::Host, kSources[0]}, CCase{EFaults::Host, kSources[1]},
                                           CCase{EFaults::Host, kSources[2]}, CCase{EFaults::File, kSources[0]},
                                           CCase{EFaults::File, kSources[2]}),
                         CaseName);

} // namespace

// The pool that spreads the campaign's runs: a run that takes its worker down is reported as
// what it did to the worker, and the runs after it still run.
#include "CWorkerPool.h"
#include "QtPrinters.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <string>

using namespace MV::Faults;

namespace {

class WorkerPool : public ::testing::TestWithParam<const char*>
{
protected:
    void TearDown() override { qunsetenv("MVGOZ_FAULT_TEST_END"); }
};

TEST_P(WorkerPool, ARunThatEndsItsWorkerIsReportedAndTheRestStillRun)
{
    const QString end = QLatin1String(GetParam());
    CScenario scenario;
    scenario.m_strName = QStringLiteral("Pool");
    scenario.m_kScene = R"({"objects": [{"id": "vase", "name": "Vase", "kind": 3}]})";
    scenario.m_kSteps = QJsonArray{QJsonObject{{"step", "clear_failures"}},
                                   QJsonObject{{"step", "select"}, {"ids", QJsonArray{"vase"}}}};
    QList<CPlannedRun> runs;
    for (int i = 0; i < 3; ++i) {
        CPlannedRun planned;
        planned.m_strOperation = QStringLiteral("GetSelectedObjects");
        planned.m_iNth = 1;
        planned.m_strLabel = QStringLiteral("run %1").arg(i);
        runs << planned;
    }
    qputenv("MVGOZ_FAULT_TEST_END", ("1:" + end).toUtf8());
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    const QList<CRunResult> results =
        CWorkerPool(QCoreApplication::applicationFilePath(), 1).Run(scenario, runs, folder.path());
    ASSERT_EQ(3, results.size());
    EXPECT_EQ(QStringList(), results[0].m_kViolations);
    EXPECT_EQ(QStringList(), results[2].m_kViolations);
    EXPECT_FALSE(results[2].m_strOutcome.isEmpty()) << "a new worker took the run after the one that died";
    EXPECT_EQ(end == QLatin1String("hang") ? QStringLiteral("hung") : QStringLiteral("crashed"), results[1].m_strOutcome);
    ASSERT_EQ(1, results[1].m_kViolations.size());
    EXPECT_TRUE(results[1].m_kViolations[0].contains(end == QLatin1String("hang") ? QStringLiteral("exit code 3")
                                                                                 : QStringLiteral("signal")))
        << results[1].m_kViolations[0].toStdString();
}

INSTANTIATE_TEST_SUITE_P(Ends, WorkerPool, ::testing::Values("crash", "hang"),
                         [](const ::testing::TestParamInfo<const char*>& end) { return std::string(end.param); });

} // namespace

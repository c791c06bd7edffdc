// A whole scripted send through the reference host, the way `mvgoz-host run` does it: parse the
// scene and the script, lay out the sandbox, load the plug-in module, open the send dialog over N
// selected props, press GoZ, wait for the bridge programs and write the report. The time that
// counts is this process's CPU time per mesh, which should stay flat as N grows.
#include "CReport.h"
#include "CRunSession.h"

#include <QApplication>
#include <QByteArray>
#include <QDir>
#include <QFileInfo>
#include <QFont>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

using namespace MV::Host;

namespace {

QByteArray PropScene(int count)
{
    QJsonArray objects;
    for (int i = 0; i < count; ++i) {
        const QString id = QStringLiteral("prop_%1").arg(i);
        objects.append(QJsonObject{{QStringLiteral("id"), id},
                                   {QStringLiteral("name"), QStringLiteral("Prop_%1").arg(i)},
                                   {QStringLiteral("kind"), 3}});
    }
    const QJsonObject registry{
        {QStringLiteral("SOFTWARE\\Quorvane\\Figmora\\4.0"),
         QJsonObject{{QStringLiteral("Main Program"), QStringLiteral("C:\\Program Files\\Figmora\\Figmora.exe")}}}};
    return QJsonDocument(QJsonObject{{QStringLiteral("objects"), objects},
                                     {QStringLiteral("registry"), registry}})
        .toJson(QJsonDocument::Compact);
}

// The selection is made by a step, as a user would, so the plug-in enables its command.
QByteArray SendScript(int count)
{
    QJsonArray ids;
    for (int i = 0; i < count; ++i) {
        ids.append(QStringLiteral("prop_%1").arg(i));
    }
    const QJsonArray steps{
        QJsonObject{{QStringLiteral("step"), QStringLiteral("select")}, {QStringLiteral("ids"), ids}},
        QJsonObject{{QStringLiteral("step"), QStringLiteral("trigger")}, {QStringLiteral("action"), QStringLiteral("qtGoZAction")}},
        QJsonObject{{QStringLiteral("step"), QStringLiteral("click")}, {QStringLiteral("widget"), QStringLiteral("qtGoZButton")}},
        QJsonObject{{QStringLiteral("step"), QStringLiteral("wait_processes")},
                    {QStringLiteral("count"), 2},
                    {QStringLiteral("timeout_ms"), 60000},
                    {QStringLiteral("only_if_clicked"), QStringLiteral("qtGoZButton")}}};
    return QJsonDocument(QJsonObject{{QStringLiteral("watchdog_ms"), 3600000}, {QStringLiteral("steps"), steps}})
        .toJson(QJsonDocument::Compact);
}

void BM_HostScriptedSend(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    const QByteArray scene = PropScene(count);
    const QByteArray script = SendScript(count);
    const QString plugin = QStringLiteral(MVGOZ_PLUGIN_DIR "/MVGoZBrush.so");
    if (!QFileInfo(plugin).isFile()) {
        state.SkipWithError("the plug-in module is not built");
        return;
    }
    QTemporaryDir reports;
    for (auto _ : state) {
        CRunSession session;
        QString error;
        if (QV::Failed(session.Prepare(scene, script, error))) {
            state.SkipWithError(error.toUtf8().constData());
            return;
        }
        CRunOptions options;
        options.m_strPlugin = plugin;
        CReport report;
        const QV::Result result = session.Execute(options, report);
        if (QV::Failed(result)) {
            state.SkipWithError(report.Problems().join(QStringLiteral("; ")).toUtf8().constData());
            return;
        }
        if (QV::Failed(report.Save(reports.filePath(QStringLiteral("report.json")), error))) {
            state.SkipWithError(error.toUtf8().constData());
            return;
        }
    }
    state.counters["meshes"] = count;
    // Seconds of process CPU per mesh (the rate is inverted over the measured CPU time).
    state.counters["cpu_per_mesh"] =
        benchmark::Counter(count, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.SetComplexityN(count);
}

BENCHMARK(BM_HostScriptedSend)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->Iterations(1)
    ->Repetitions(3)
    ->ReportAggregatesOnly(false);

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    int qtArgc = 1;
    QApplication app(qtArgc, argv);
    QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 9));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

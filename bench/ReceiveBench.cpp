// Receive-side cost: records for the returned meshes matched against the scene, the receive
// table, and its first paint, at growing mesh counts. Host calls are counted from the
// reference host's call log.
#include "CReceiveRecordBuilder.h"
#include "CReferenceHost.h"
#include "CSandbox.h"
#include "CScene.h"
#include "ZBrushToFMDlg.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QHeaderView>
#include <QResource>
#include <QStringListModel>
#include <QTableWidget>
#include <QVBoxLayout>

#include <benchmark/benchmark.h>

#include <memory>

using namespace MV;

namespace {

constexpr char kAppFolder[] = "C:/Users/Public/Pixologic/GoZApps/Figmora/";

bool WriteFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(path.left(path.lastIndexOf(QLatin1Char('/'))));
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

// sceneMeshes props (kind 3) in groups of ten, each of its own object type, and a character.
// Half the returned meshes are props of the scene (Update rows with one target), half are
// objects no candidate shares a type with (new accessories offering every target); every
// fourth has a texture.
struct CReceiveScene
{
    std::unique_ptr<Host::CReferenceHost> m_pHost;
    QByteArray m_kObjectList;
};

CReceiveScene MakeScene(int returned, int sceneMeshes)
{
    QByteArray json = R"({"objects": [{"id": "hero", "name": "Hero", "kind": 1, "node_type": 4, "avatar_type": 4,
        "meshes": ["hero_body"]}, {"id": "hero_body", "name": "Hero_Body", "parent": "hero", "object_type": 1})";
    for (int group = 0; group * 10 < sceneMeshes; ++group) {
        json += ",{\"id\": \"g" + QByteArray::number(group) + "\", \"name\": \"Group_" + QByteArray::number(group) +
                "\", \"avatar_type\": 1, \"character\": false, \"meshes\": []}";
    }
    const auto textured = [](int i) {
        return i % 4 == 0 ? QByteArray(", \"materials\": 1, \"texture_sizes\": {\"0\": 1024, \"2\": 1024}") : QByteArray();
    };
    QByteArray list;
    for (int i = 0; i < sceneMeshes; ++i) {
        json += ",{\"id\": \"m" + QByteArray::number(i) + "\", \"name\": \"Mesh_" + QByteArray::number(i) +
                "\", \"kind\": 3, \"parent\": \"g" + QByteArray::number(i / 10) + "\", \"object_type\": " +
                QByteArray::number(100 + i) + textured(i) + "}";
    }
    for (int i = 0; i < returned; ++i) {
        if (i % 2 == 0 && i / 2 < sceneMeshes) {
            list += "Mesh_" + QByteArray::number(i / 2) + "\n";
        } else {
            json += ",{\"id\": \"n" + QByteArray::number(i) + "\", \"name\": \"New_" + QByteArray::number(i) +
                    "\", \"object_type\": " + QByteArray::number(1000000 + i) + textured(i) + "}";
            list += "New_" + QByteArray::number(i) + "\n";
        }
    }
    json += R"(], "current_avatar": "hero", "host_data_folder": "HostData"})";

    CReceiveScene scene;
    auto parsed = std::make_unique<Host::CScene>();
    QString error;
    if (QV::Succeeded(parsed->Parse(json, error))) {
        scene.m_pHost = std::make_unique<Host::CReferenceHost>(std::move(parsed));
        scene.m_kObjectList = list;
    }
    return scene;
}

bool WriteReturn(const QByteArray& list)
{
    return WriteFile(QLatin1String(kAppFolder) + QStringLiteral("GoZ_Info.txt"),
                     "GOZ_OBJECT_LIST = \"GoZ_ObjectList.txt\"\n") &&
           WriteFile(QLatin1String(kAppFolder) + QStringLiteral("GoZ_ObjectList.txt"), list) &&
           WriteFile(QStringLiteral("HostData/MVGoZBrush/GoZTextureSize.ini"),
                     "[GoZTextureSize]\nCount=3\nSize0=512\nSize1=1024\nSize2=2048\n");
}

// A receive dialog in a sandbox over a generated scene.
class CReceiveBench
{
public:
    bool Open(int returned, int sceneMeshes)
    {
        QString error;
        m_kSandbox.SetInstallZBrush(false);
        if (QV::Failed(m_kSandbox.Create(error))) {
            return false;
        }
        CReceiveScene scene = MakeScene(returned, sceneMeshes);
        m_pHost = std::move(scene.m_pHost);
        if (!m_pHost || !WriteReturn(scene.m_kObjectList) ||
            !QResource::registerResource(QStringLiteral(MVGOZ_PLUGIN_DIR "/MVGoZBrush.rcc"))) {
            return false;
        }
        m_bResource = true;
        m_pDialog = std::make_unique<ZBrushToFMDlg>(nullptr);
        return QV::Succeeded(m_pDialog->Initialize(QStringLiteral(MVGOZ_PLUGIN_DIR "/"), QString(), m_pHost.get()));
    }

    // A return of the given rows received once with the dialog skipped, its records kept.
    bool OpenWithRecords(int rows, CZBrushToFMMeshInfoList& records)
    {
        if (!Open(rows, 1000)) {
            return false;
        }
        Host::CScene& scene = m_pHost->Scene();
        scene.Object(scene.IndexOf(QStringLiteral("hero"))).m_bSkipReceiveDialog = true;
        if (m_pDialog->GoZDataUpdated() != QV::kNothingDone) {
            return false;
        }
        records = m_pDialog->Records();
        return true;
    }

    ~CReceiveBench()
    {
        m_pDialog.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        if (m_bResource) {
            QResource::unregisterResource(QStringLiteral(MVGOZ_PLUGIN_DIR "/MVGoZBrush.rcc"));
        }
    }

    // The table's replaced cell widgets are deleted by the event loop; that is not timed.
    void Settle()
    {
        QApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        m_pHost->CallLog().Clear();
    }

    Host::CSandbox m_kSandbox;
    std::unique_ptr<Host::CReferenceHost> m_pHost;
    std::unique_ptr<ZBrushToFMDlg> m_pDialog;
    bool m_bResource = false;
};

void SetPerMeshCounters(benchmark::State& state, int returned, int sceneMeshes, int calls)
{
    state.counters["calls"] = calls;
    state.counters["calls/mesh"] = static_cast<double>(calls) / returned;
    state.counters["calls/(mesh+scene)"] = static_cast<double>(calls) / (returned + sceneMeshes);
    state.counters["time/mesh"] =
        benchmark::Counter(returned, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// GoZDataUpdated whole: returned files, records, row checks and CreateTable. The host says to
// skip the dialog, so nothing is shown or painted here.
void BM_ReceiveDataUpdated(benchmark::State& state)
{
    const int returned = static_cast<int>(state.range(0));
    const int sceneMeshes = static_cast<int>(state.range(1));
    CReceiveBench bench;
    if (!bench.Open(returned, sceneMeshes)) {
        state.SkipWithError("setup");
        return;
    }
    Host::CScene& scene = bench.m_pHost->Scene();
    scene.Object(scene.IndexOf(QStringLiteral("hero"))).m_bSkipReceiveDialog = true;
    int calls = 0;
    for (auto _ : state) {
        const QV::Result result = bench.m_pDialog->GoZDataUpdated();
        state.PauseTiming();
        if (result != QV::kNothingDone || bench.m_pDialog->Records().GetCount() != returned) {
            state.SkipWithError("receive failed");
            break;
        }
        calls = bench.m_pHost->CallLog().Records().size();
        bench.Settle();
        state.ResumeTiming();
    }
    SetPerMeshCounters(state, returned, sceneMeshes, calls);
}

// Record building alone, with the scene's candidates already gathered and indexed: the cost
// that each returned mesh adds.
void BM_ReceiveBuildRecords(benchmark::State& state)
{
    const int returned = static_cast<int>(state.range(0));
    const int sceneMeshes = static_cast<int>(state.range(1));
    CReceiveBench bench;
    if (!bench.Open(returned, sceneMeshes)) {
        state.SkipWithError("setup");
        return;
    }
    CReceiveRecordBuilder builder(bench.m_pHost.get());
    CZBrushToFMMeshInfo templateRecord;
    QV::CArrayList<std::wstring> files;
    if (QV::Failed(builder.InitialAvatarPartMeshName()) || QV::Failed(builder.MakeTemplateRecord(templateRecord)) ||
        QV::Failed(bench.m_pDialog->ReadGoZMesh(files))) {
        state.SkipWithError("setup");
        return;
    }
    CZBrushToFMMeshInfoList warm;
    builder.BuildRecords(templateRecord, files, warm);
    bench.Settle();
    int calls = 0;
    for (auto _ : state) {
        CZBrushToFMMeshInfoList records;
        const QV::Result result = builder.BuildRecords(templateRecord, files, records);
        state.PauseTiming();
        if (QV::Failed(result) || records.GetCount() != returned) {
            state.SkipWithError("build failed");
            break;
        }
        calls = bench.m_pHost->CallLog().Records().size();
        bench.m_pHost->CallLog().Clear();
        state.ResumeTiming();
    }
    SetPerMeshCounters(state, returned, sceneMeshes, calls);
}

// The receive table filled from kept records and shown: CreateTable and the first paint.
void BM_ReceiveTableShow(benchmark::State& state)
{
    const int rows = static_cast<int>(state.range(0));
    CReceiveBench bench;
    CZBrushToFMMeshInfoList records;
    if (!bench.OpenWithRecords(rows, records)) {
        state.SkipWithError("setup");
        return;
    }
    bench.m_pDialog->SetRecords(CZBrushToFMMeshInfoList());
    bench.Settle();
    for (auto _ : state) {
        bench.m_pDialog->SetRecords(records);
        bench.m_pDialog->show();
        QApplication::processEvents();
        state.PauseTiming();
        bench.m_pDialog->hide();
        bench.m_pDialog->SetRecords(CZBrushToFMMeshInfoList()); // emptied untimed, as the floor is
        bench.Settle();
        state.ResumeTiming();
    }
    state.SetComplexityN(rows);
}

// CreateTable alone, into the hidden dialog.
void BM_ReceiveTableFill(benchmark::State& state)
{
    const int rows = static_cast<int>(state.range(0));
    CReceiveBench bench;
    CZBrushToFMMeshInfoList records;
    if (!bench.OpenWithRecords(rows, records)) {
        state.SkipWithError("setup");
        return;
    }
    bench.m_pDialog->SetRecords(CZBrushToFMMeshInfoList());
    bench.Settle();
    for (auto _ : state) {
        bench.m_pDialog->SetRecords(records);
        state.PauseTiming();
        bench.m_pDialog->SetRecords(CZBrushToFMMeshInfoList());
        bench.Settle();
        state.ResumeTiming();
    }
    state.SetComplexityN(rows);
}

// A second return while the first one's rows are still in the shown table: CreateTable
// replaces every row and the dialog paints again. The floor is the first fill and show.
void BM_ReceiveTableRefill(benchmark::State& state)
{
    const int rows = static_cast<int>(state.range(0));
    CReceiveBench bench;
    CZBrushToFMMeshInfoList records;
    if (!bench.OpenWithRecords(rows, records)) {
        state.SkipWithError("setup");
        return;
    }
    bench.m_pDialog->show();
    bench.Settle();
    for (auto _ : state) {
        bench.m_pDialog->SetRecords(records);
        QApplication::processEvents();
        state.PauseTiming();
        bench.Settle();
        state.ResumeTiming();
    }
    state.SetComplexityN(rows);
}

// The floor: a bare table in a dialog of the same size with the same rows and cell widgets
// (the target boxes over one shared model of the candidates), filled with its row count set
// first, then shown.
void BM_ReceiveBareTableFloor(benchmark::State& state)
{
    const int rows = static_cast<int>(state.range(0));
    CReceiveBench bench;
    CZBrushToFMMeshInfoList records;
    if (!bench.OpenWithRecords(rows, records)) {
        state.SkipWithError("setup");
        return;
    }
    QStringList candidates;
    for (const CTargetCandidate& candidate : records[0].TargetCandidates()) {
        candidates << QString::fromStdWString(candidate.first);
    }
    candidates << ZBrushToFMDlg::PleaseSelectText();
    QStringListModel candidateModel(candidates);

    QDialog dialog;
    auto* table = new QTableWidget(0, 6, &dialog);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(table);
    dialog.resize(900, 520);
    // Sized before they are placed, as the dialog does, so no widget measures its contents.
    const auto setCell = [table](int row, int column, QWidget* widget) {
        widget->resize(table->columnWidth(column), table->verticalHeader()->defaultSectionSize());
        table->setCellWidget(row, column, widget);
    };
    for (auto _ : state) {
        table->setRowCount(0);
        table->setRowCount(rows);
        for (int row = 0; row < rows; ++row) {
            const CZBrushToFMMeshInfo& record = records[row];
            table->setItem(row, 0, new QTableWidgetItem(QString::fromStdWString(record.m_strMeshName)));
            auto* action = new QComboBox(table);
            for (const std::wstring& name : record.m_kActionNames) {
                action->addItem(QString::fromStdWString(name));
            }
            setCell(row, 1, action);
            auto* target = new QComboBox(table);
            if (record.NarrowsTargets()) {
                target->addItem(candidates.value(record.ChosenCandidate()));
                target->addItem(candidates.last());
            } else {
                target->setModel(&candidateModel);
            }
            setCell(row, 2, target);
            setCell(row, 3, new QCheckBox(table));
            if (GetTextureEnable(record)) {
                setCell(row, 4, new QCheckBox(table));
                auto* sizes = new QComboBox(table);
                for (std::int32_t size : record.m_kTextureSizes) {
                    sizes->addItem(QString::fromStdWString(GetTextureOptionName(size)));
                }
                setCell(row, 5, sizes);
            }
        }
        dialog.show();
        QApplication::processEvents();
        state.PauseTiming();
        dialog.hide();
        table->setRowCount(0);
        QApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        state.ResumeTiming();
    }
    state.SetComplexityN(rows);
}

BENCHMARK(BM_ReceiveDataUpdated)
    ->Args({100, 1000})
    ->Args({1000, 1000})
    ->Args({100, 10000})
    ->Args({1000, 10000})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_ReceiveBuildRecords)
    ->Args({100, 1000})
    ->Args({1000, 1000})
    ->Args({100, 10000})
    ->Args({1000, 10000})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
// The machine may be shared: table figures are the process's CPU time.
BENCHMARK(BM_ReceiveTableFill)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
BENCHMARK(BM_ReceiveTableShow)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
BENCHMARK(BM_ReceiveTableRefill)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
BENCHMARK(BM_ReceiveBareTableFloor)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

// Send-side cost per mesh: record building, action rules and the export steps, at growing
// mesh counts. The host's own export is replaced by a no-op so only our work is timed.
#include "CFMToZBrushMeshInfo.h"
#include "CGoZSendPipeline.h"
#include "CReferenceHost.h"
#include "CSandbox.h"
#include "CScene.h"
#include "CSendRecordBuilder.h"
#include "FMToZBrushDlg.h"
#include "GoZPaths.h"

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QResource>
#include <QTableWidget>
#include <QVBoxLayout>

#include <benchmark/benchmark.h>

#include <memory>

using namespace MV;

namespace {

// Passes everything to the reference host's file service but writes no GoZ files.
class CNoExportFileService : public CFileService
{
public:
    explicit CNoExportFileService(CFileService* inner) : m_pInner(inner) {}

    QV::Result GetFileHandle(QV::CHandle*& handle, const std::wstring& path, const CGetFileHandleOption& option) override
    {
        return m_pInner->GetFileHandle(handle, path, option);
    }
    void ExportGoZ(QV::Result& result, QV::CHandle*, const std::wstring&, unsigned int, QV::CArrayList<std::wstring>&,
                   int) override
    {
        result = QV::kOk;
    }
    quint64 GetPluginValue(QObject* plugin) override { return m_pInner->GetPluginValue(plugin); }
    void ImportGoZToObject(QV::Result& result, QV::CHandle* target, const std::wstring& name,
                           const CGoZImportOption& options) override
    {
        m_pInner->ImportGoZToObject(result, target, name, options);
    }
    void CreatePropFromGoZ(QV::Result& result, const std::wstring& name, const CGoZCreateOption& options,
                           QV::CHandle*& created) override
    {
        m_pInner->CreatePropFromGoZ(result, name, options, created);
    }
    void FindObjectByName(QV::Result& result, QV::CHandle*& handle, const std::wstring& name) override
    {
        m_pInner->FindObjectByName(result, handle, name);
    }
    void UpdateMeshFromGoZ(QV::Result& result, const CGoZMeshUpdateInfo& info, QV::CHandle* object) override
    {
        m_pInner->UpdateMeshFromGoZ(result, info, object);
    }
    void SaveMotionFile(QV::Result& result, QV::CHandle* handle, const std::wstring& path) override
    {
        m_pInner->SaveMotionFile(result, handle, path);
    }
    QV::Result SaveAvatarMotion(QV::CHandle* avatar, const std::wstring& path, int flag) override
    {
        return m_pInner->SaveAvatarMotion(avatar, path, flag);
    }
    QV::Result LoadMotionFile(const std::wstring& path, int kind, unsigned int flags, int x, int y) override
    {
        return m_pInner->LoadMotionFile(path, kind, flags, x, y);
    }
    void LoadFile(QV::Result& result, const std::wstring& path, int kind, const CLoadFileOption& options) override
    {
        m_pInner->LoadFile(result, path, kind, options);
    }

private:
    CFileService* m_pInner;
};

// The reference host with the no-op export.
class CBenchHost : public CMiravaInterface
{
public:
    explicit CBenchHost(std::unique_ptr<Host::CScene> scene)
        : m_kHost(std::move(scene)), m_kFile(m_kHost.File())
    {
    }

    CEventSender* GetEventSender() override { return m_kHost.GetEventSender(); }
    CFigmoraEventSender* GetFigmoraEventSender() override { return m_kHost.GetFigmoraEventSender(); }
    CQueryService* Query() override { return m_kHost.Query(); }
    CFileService* File() override { return &m_kFile; }
    CEditService* Edit() override { return m_kHost.Edit(); }
    CUiService* Ui() override { return m_kHost.Ui(); }
    CAvatarService* Avatar() override { return m_kHost.Avatar(); }
    CCharacterService* Character() override { return m_kHost.Character(); }
    CFittingService* Fitting() override { return m_kHost.Fitting(); }
    CRegistryService* Registry() override { return m_kHost.Registry(); }
    CPluginsService* Plugins() override { return m_kHost.Plugins(); }

    Host::CReferenceHost m_kHost;

private:
    CNoExportFileService m_kFile;
};

// count props with distinct names; every tenth name also lies in the project folder.
std::unique_ptr<CBenchHost> MakeHost(int count, QStringList& projectFiles)
{
    QByteArray json = "{\"objects\": [";
    for (int i = 0; i < count; ++i) {
        json += (i > 0 ? "," : "") + QByteArray("{\"id\": \"p") + QByteArray::number(i) +
                "\", \"name\": \"Prop_" + QByteArray::number(i) + "\", \"kind\": 3}";
        if (i % 10 == 0) {
            projectFiles << QStringLiteral("Prop_%1.goz").arg(i);
        }
    }
    json += "]}";
    auto scene = std::make_unique<Host::CScene>();
    QString error;
    if (QV::Failed(scene->Parse(json, error))) {
        return nullptr;
    }
    return std::make_unique<CBenchHost>(std::move(scene));
}

void BM_BuildRecordsAndActions(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    QStringList projectFiles;
    auto host = MakeHost(count, projectFiles);
    if (!host) {
        state.SkipWithError("scene");
        return;
    }
    QV::CArrayList<QV::CHandle*> picks;
    for (int i = 0; i < count; ++i) {
        picks.Add(host->m_kHost.Scene().Handle(i));
    }
    const CSendRecordBuilder builder(host.get());
    for (auto _ : state) {
        CFMToZBrushMeshInfoList records;
        for (QV::CHandle* pick : picks) {
            builder.BuildMeshInfo(pick, records);
        }
        builder.MarkTeethMesh(records);
        builder.SetGozActionInfo(records, projectFiles);
        benchmark::DoNotOptimize(records.data());
        state.PauseTiming();
        host->m_kHost.CallLog().Clear();
        state.ResumeTiming();
    }
    state.SetComplexityN(count);
    state.SetItemsProcessed(state.iterations() * count);
}

void BM_SendExport(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    Host::CSandbox sandbox;
    QString error;
    if (QV::Failed(sandbox.Create(error))) {
        state.SkipWithError("sandbox");
        return;
    }
    QStringList projectFiles;
    auto host = MakeHost(count, projectFiles);
    const QString root = GoZPaths::PixologicRoot();
    // An earlier exchange: every mesh was sent before, so each row relinks.
    QDir().mkpath(root + QLatin1String(GoZPaths::kFigmoraApp));
    QDir().mkpath(root + QLatin1String(GoZPaths::kProjectsDefault));
    QFile info(root + QLatin1String(GoZPaths::kFigmoraApp) + QStringLiteral("GoZ_Info.txt"));
    info.open(QIODevice::WriteOnly);
    info.write("GOZ_OBJECT_LIST = \"GoZ_ObjectList.txt\"\n");
    info.close();
    QFile list(root + QLatin1String(GoZPaths::kFigmoraApp) + QStringLiteral("GoZ_ObjectList.txt"));
    list.open(QIODevice::WriteOnly);
    for (int i = 0; i < count; ++i) {
        list.write(QByteArray("C:/Users/Public/Pixologic/GoZProjects/Default/Prop_") + QByteArray::number(i) + "\n");
    }
    list.close();
    projectFiles << QStringLiteral("Prop_0.goz");

    CFMToZBrushMeshInfoList prepared;
    const CSendRecordBuilder builder(host.get());
    for (int i = 0; i < count; ++i) {
        builder.BuildMeshInfo(host->m_kHost.Scene().Handle(i), prepared);
    }
    builder.SetGozActionInfo(prepared, QStringList(projectFiles));
    for (CFMToZBrushMeshInfo& record : prepared) {
        record.SetActiveAction(Relink, NoInfo);
        record.SelectAction(Relink);
    }

    CGoZSendPipeline pipeline(host.get(), root);
    for (auto _ : state) {
        state.PauseTiming();
        CFMToZBrushMeshInfoList records = prepared;
        host->m_kHost.CallLog().Clear();
        state.ResumeTiming();
        QV::CArrayList<std::wstring> exported;
        const QV::Result result = pipeline.Export(records, projectFiles, CSendOptions(), false, exported);
        if (QV::Failed(result)) {
            state.SkipWithError("export failed");
            break;
        }
    }
    state.SetComplexityN(count);
    state.SetItemsProcessed(state.iterations() * count);
}


// The send dialog opened over count picked props: records, table fill and first paint.
// Its floor is a bare table with the same rows and cell widgets, filled with its row count
// set first, in a dialog of the same size.
class CSendDialogBench
{
public:
    bool Open(int count)
    {
        QString error;
        if (QV::Failed(m_kSandbox.Create(error))) {
            return false;
        }
        QStringList unused;
        m_pHost = MakeHost(count, unused);
        if (!m_pHost || !QResource::registerResource(QStringLiteral(MVGOZ_PLUGIN_DIR "/MVGoZBrush.rcc"))) {
            return false;
        }
        QStringList ids;
        for (int i = 0; i < count; ++i) {
            ids << QStringLiteral("p%1").arg(i);
        }
        if (QV::Failed(m_pHost->m_kHost.SetPicks(ids, error))) {
            return false;
        }
        m_pDialog = std::make_unique<FMToZBrushDlg>(nullptr);
        return QV::Succeeded(m_pDialog->Initialize(QStringLiteral(MVGOZ_PLUGIN_DIR "/"), QString(), m_pHost.get()));
    }
    ~CSendDialogBench()
    {
        m_pDialog.reset();
        QResource::unregisterResource(QStringLiteral(MVGOZ_PLUGIN_DIR "/MVGoZBrush.rcc"));
    }

    Host::CSandbox m_kSandbox;
    std::unique_ptr<CBenchHost> m_pHost;
    std::unique_ptr<FMToZBrushDlg> m_pDialog;
};

void BM_SendDialogOpen(benchmark::State& state)
{
    CSendDialogBench bench;
    if (!bench.Open(static_cast<int>(state.range(0)))) {
        state.SkipWithError("dialog");
        return;
    }
    for (auto _ : state) {
        bench.m_pDialog->show();
        QApplication::processEvents();
        state.PauseTiming();
        bench.m_pDialog->hide();
        QApplication::processEvents();
        bench.m_pHost->m_kHost.CallLog().Clear();
        state.ResumeTiming();
    }
    state.SetComplexityN(state.range(0));
}

// Changing the all-rows combo box refills every row.
void BM_SendDialogAllRows(benchmark::State& state)
{
    CSendDialogBench bench;
    if (!bench.Open(static_cast<int>(state.range(0)))) {
        state.SkipWithError("dialog");
        return;
    }
    bench.m_pDialog->show();
    QApplication::processEvents();
    QComboBox* all = bench.m_pDialog->Ui().qtTemplateComboBox;
    int index = 0;
    for (auto _ : state) {
        index = index == 0 ? 2 : 0;
        all->setCurrentIndex(index);
        QApplication::processEvents();
    }
    state.SetComplexityN(state.range(0));
}

void BM_BareTableFloor(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    QDialog dialog;
    auto* table = new QTableWidget(0, 3, &dialog);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(table);
    dialog.resize(620, 640);
    for (auto _ : state) {
        table->setRowCount(0);
        table->setRowCount(count);
        for (int row = 0; row < count; ++row) {
            table->setItem(row, 0, new QTableWidgetItem(QStringLiteral("Prop_%1").arg(row)));
            auto* combo = new QComboBox(table);
            combo->addItem(QStringLiteral("[MVGoZBursh] Create"));
            table->setCellWidget(row, 1, combo);
            table->setItem(row, 2, new QTableWidgetItem(QString()));
        }
        dialog.show();
        QApplication::processEvents();
        state.PauseTiming();
        dialog.hide();
        QApplication::processEvents();
        state.ResumeTiming();
    }
    state.SetComplexityN(count);
}

BENCHMARK(BM_SendDialogOpen)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(BM_BareTableFloor)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(BM_SendDialogAllRows)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

BENCHMARK(BM_BuildRecordsAndActions)->Arg(10)->Arg(100)->Arg(1000)->Complexity(benchmark::oN)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SendExport)->Arg(10)->Arg(100)->Arg(1000)->Complexity(benchmark::oN)->Unit(benchmark::kMicrosecond);

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

#include "CReport.h"

#include "CHostContext.h"
#include "CPluginHost.h"
#include "CReferenceHost.h"
#include "CScene.h"

#include <QAction>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QMenu>
#include <QSaveFile>
#include <QTextCodec>

#include <algorithm>
#include <QToolBar>

namespace MV {
namespace Host {

namespace {

QJsonArray ToArray(const QStringList& items)
{
    return QJsonArray::fromStringList(items);
}

bool IsText(const QByteArray& bytes)
{
    if (bytes.contains('\0')) {
        return false;
    }
    QTextCodec::ConverterState state;
    QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

QStringList NamesOf(const CScene& scene, const QStringList& ids)
{
    QStringList names;
    for (const QString& id : ids) {
        const CSceneObject* object = scene.Find(id);
        names << (object == nullptr ? id : object->m_strName);
    }
    return names;
}

} // namespace

QString CReport::Hex(QV::Result code)
{
    return QStringLiteral("0x%1").arg(static_cast<quint32>(code), 8, 16, QLatin1Char('0'));
}

void CReport::SetPlugin(const CPluginHost& plugins)
{
    QJsonObject plugin;
    plugin.insert(QStringLiteral("path"), plugins.Path());
    plugin.insert(QStringLiteral("loaded"), plugins.IsLoaded());
    plugin.insert(QStringLiteral("errors"), ToArray(plugins.Errors()));
    plugin.insert(QStringLiteral("compatible_apps"), Hex(static_cast<QV::Result>(plugins.CompatibleApps())));
    plugin.insert(QStringLiteral("initialize_result"),
                  plugins.HasInitializeResult() ? QJsonValue(Hex(plugins.InitializeResult())) : QJsonValue());
    QJsonArray menus;
    for (QMenu* menu : plugins.Menus()) {
        menus.append(QJsonObject{{QStringLiteral("name"), menu->objectName()}, {QStringLiteral("title"), menu->title()}});
    }
    QJsonArray toolBars;
    for (QToolBar* toolBar : plugins.ToolBars()) {
        toolBars.append(QJsonObject{{QStringLiteral("name"), toolBar->objectName()},
                                    {QStringLiteral("title"), toolBar->windowTitle()}});
    }
    QJsonArray actions;
    for (QAction* action : plugins.Actions()) {
        if (!action->isSeparator()) {
            actions.append(QJsonObject{{QStringLiteral("name"), action->objectName()},
                                       {QStringLiteral("text"), action->text()},
                                       {QStringLiteral("menu"), action->menu() != nullptr}});
        }
    }
    plugin.insert(QStringLiteral("menus"), menus);
    plugin.insert(QStringLiteral("tool_bars"), toolBars);
    plugin.insert(QStringLiteral("actions"), actions);
    plugin.insert(QStringLiteral("context_actions"), plugins.ContextActions().size());
    m_kPlugin = plugin;
    m_bPluginLoaded = plugins.IsLoaded();
}

void CReport::SetPluginError(const QString& path, const QString& error)
{
    m_kPlugin = QJsonObject{{QStringLiteral("path"), path},
                            {QStringLiteral("loaded"), false},
                            {QStringLiteral("errors"), QJsonArray{error}}};
    m_bPluginLoaded = false;
}

void CReport::SetFinalizeResult(QV::Result code)
{
    m_kPlugin.insert(QStringLiteral("finalize_result"), Hex(code));
}

void CReport::SetStep(int index, const QJsonObject& step)
{
    m_kSteps.insert(index, step);
}

void CReport::AddActionSnapshot(int step, QJsonObject snapshot)
{
    snapshot.insert(QStringLiteral("step"), step);
    m_kSnapshots.append(snapshot);
}

void CReport::AddDialogDump(int step, QJsonObject dump)
{
    dump.insert(QStringLiteral("step"), step);
    m_kDumps.append(dump);
}

void CReport::AddTableDump(int step, QJsonObject dump)
{
    dump.insert(QStringLiteral("step"), step);
    m_kTableDumps.append(dump);
}

void CReport::AddSceneDump(int step, QJsonObject dump)
{
    dump.insert(QStringLiteral("step"), step);
    m_kSceneDumps.append(dump);
}

namespace {

// The character state of an object, only what differs from a fresh object.
void AddState(const CSceneObject& object, QJsonObject& out)
{
    if (!object.m_strPose.isEmpty()) {
        out.insert(QStringLiteral("pose"), object.m_strPose);
    }
    const struct
    {
        const char* m_szKey;
        int m_iValue;
    } counters[] = {
        {"auto_rigs", object.m_iAutoRigs},          {"conform_rebuilds", object.m_iConformRebuilds},
        {"goz_updates", object.m_iGoZUpdates},      {"commits", object.m_iCommits},
        {"finished_imports", object.m_iFinishedImports}, {"fittings", object.m_iFittings},
        {"goz_imports", object.m_iGoZImports},
    };
    for (const auto& counter : counters) {
        if (counter.m_iValue != 0) {
            out.insert(QLatin1String(counter.m_szKey), counter.m_iValue);
        }
    }
    if (object.m_bRigged) {
        out.insert(QStringLiteral("rigged"), true);
    }
    if (object.m_iFinishedImports != 0) {
        out.insert(QStringLiteral("last_imported"), QJsonArray::fromStringList(object.m_kLastImported));
    }
    if (!object.m_strLastGoZFile.isEmpty()) {
        out.insert(QStringLiteral("last_goz_file"), object.m_strLastGoZFile);
    }
}

} // namespace

QJsonObject CReport::SceneDump(const CScene& scene, const QStringList& ids)
{
    QJsonArray objects;
    for (int i = 0; i < scene.ObjectCount(); ++i) {
        const CSceneObject& object = scene.Object(i);
        if (!ids.isEmpty() && !ids.contains(object.m_strId)) {
            continue;
        }
        QJsonObject entry{{QStringLiteral("id"), object.m_strId},
                          {QStringLiteral("name"), object.m_strName},
                          {QStringLiteral("summary"), object.m_kMesh.Summary()},
                          {QStringLiteral("mesh"), object.m_kMesh.ToJson()}};
        AddState(object, entry);
        objects.append(entry);
    }
    return QJsonObject{{QStringLiteral("objects"), objects}};
}

QJsonArray CReport::SceneSummary(const CScene& scene)
{
    QJsonArray objects;
    for (int i = 0; i < scene.ObjectCount(); ++i) {
        const CSceneObject& object = scene.Object(i);
        QJsonObject entry{{QStringLiteral("id"), object.m_strId}, {QStringLiteral("name"), object.m_strName}};
        if (object.m_bCreated) {
            entry.insert(QStringLiteral("created"), true);
        }
        entry.insert(QStringLiteral("mesh_before"),
                     object.m_bCreated ? QJsonValue() : QJsonValue(object.m_kMeshAtStart.Summary()));
        entry.insert(QStringLiteral("mesh_after"), object.m_kMesh.Summary());
        entry.insert(QStringLiteral("mesh_changed"), object.m_bCreated || object.m_kMesh != object.m_kMeshAtStart);
        AddState(object, entry);
        objects.append(entry);
    }
    return objects;
}

void CReport::CaptureHost(const CReferenceHost& host)
{
    m_kCallLog = QJsonArray();
    for (const CCallRecord& record : host.CallLog().Records()) {
        QJsonObject entry{{QStringLiteral("operation"), record.m_strOperation},
                          {QStringLiteral("args"), ToArray(record.m_kArgs)}};
        if (record.m_bInjected) {
            entry.insert(QStringLiteral("injected"), Hex(record.m_iInjectedResult));
        }
        if (record.m_iStep >= 0) {
            entry.insert(QStringLiteral("step"), record.m_iStep);
        }
        if (!record.m_kWrites.isEmpty()) {
            QJsonArray writes;
            for (const CFileWrite& write : record.m_kWrites) {
                writes.append(QJsonObject{{QStringLiteral("path"), write.m_strPath},
                                          {QStringLiteral("replaced"), write.m_bReplaced}});
            }
            entry.insert(QStringLiteral("wrote"), writes);
        }
        if (!record.m_strNote.isEmpty()) {
            entry.insert(QStringLiteral("note"), record.m_strNote);
        }
        m_kCallLog.append(entry);
    }
    m_kMessageBoxes = QJsonArray();
    for (const CMessageBoxRecord& box : host.MessageBoxes()) {
        m_kMessageBoxes.append(QJsonObject{{QStringLiteral("text"), box.m_strText},
                                           {QStringLiteral("title"), box.m_strTitle},
                                           {QStringLiteral("kind"), box.m_iKind},
                                           {QStringLiteral("buttons"), Hex(box.m_iButtons)},
                                           {QStringLiteral("default_button"), Hex(box.m_iDefaultButton)},
                                           {QStringLiteral("answer"), Hex(box.m_iAnswer)}});
    }
    m_kRegistrations = QJsonArray();
    for (const CPluginRegistration& registration : host.Registrations()) {
        m_kRegistrations.append(QJsonObject{{QStringLiteral("class"), registration.m_strClassName},
                                            {QStringLiteral("value"), QString::number(registration.m_uValue)}});
    }
    const CScene& scene = host.Scene();
    m_kFinalState = QJsonObject{
        {QStringLiteral("selection"), ToArray(scene.State().m_kSelection)},
        {QStringLiteral("picks"), ToArray(scene.PickedIds())},
        {QStringLiteral("current_avatar"),
         scene.State().m_strCurrentAvatar.isEmpty() ? QJsonValue() : QJsonValue(scene.State().m_strCurrentAvatar)},
        {QStringLiteral("selection_names"), ToArray(NamesOf(scene, scene.State().m_kSelection))},
        {QStringLiteral("object_count"), scene.ObjectCount()},
    };
    m_kScene = SceneSummary(scene);
    m_kImports = QJsonObject{{QStringLiteral("finished_imports"), scene.State().m_iFinishedImports},
                             {QStringLiteral("last_imported"), ToArray(scene.State().m_kLastImported)}};
}

QJsonArray CReport::FilesToJson(const QString& root, const QStringList& excluded)
{
    QStringList paths;
    QDirIterator it(root, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        paths << it.next();
    }
    std::sort(paths.begin(), paths.end());
    const QDir base(root);
    QJsonArray files;
    for (const QString& path : paths) {
        const QFileInfo info(path);
        if (excluded.contains(base.relativeFilePath(path))) {
            continue;
        }
        QJsonObject entry{{QStringLiteral("path"), base.relativeFilePath(path)},
                          {QStringLiteral("size"), static_cast<double>(info.size())}};
        if (info.size() >= kMaxInlineBytes) {
            entry.insert(QStringLiteral("note"), QStringLiteral("not included: %1 bytes").arg(info.size()));
        } else {
            QFile file(path);
            if (!file.open(QIODevice::ReadOnly)) {
                entry.insert(QStringLiteral("note"), QStringLiteral("not readable: %1").arg(file.errorString()));
            } else {
                const QByteArray bytes = file.readAll();
                if (IsText(bytes)) {
                    entry.insert(QStringLiteral("text"), QString::fromUtf8(bytes));
                } else {
                    entry.insert(QStringLiteral("base64"), QString::fromLatin1(bytes.toBase64()));
                }
            }
        }
        files.append(entry);
    }
    return files;
}

QJsonArray CReport::ProcessesToJson(const QString& logPath)
{
    QJsonArray processes;
    QFile file(logPath);
    if (!file.open(QIODevice::ReadOnly)) {
        return processes;
    }
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.trimmed().isEmpty()) {
            continue;
        }
        const QJsonDocument document = QJsonDocument::fromJson(line);
        if (document.isObject()) {
            processes.append(document.object());
        } else {
            processes.append(QJsonObject{{QStringLiteral("invalid_line"), QString::fromUtf8(line)}});
        }
    }
    return processes;
}

void CReport::CaptureFiles(const QString& root, const QStringList& excluded)
{
    m_kFiles = FilesToJson(root, excluded);
}

void CReport::CaptureProcesses(const QString& logPath)
{
    m_kProcesses = InStartOrder(ProcessesToJson(logPath));
}

QJsonArray CReport::InStartOrder(const QJsonArray& processes)
{
    // The send starts make-object-path, then the program that hands the objects to ZBrush,
    // which starts the return launcher; the log holds them in whatever order they finished.
    auto rank = [](const QJsonObject& entry) {
        static const QStringList order = {QStringLiteral("GoZMakeObjectPath.exe"), QStringLiteral("GoZBrushFromApp.exe"),
                                          QStringLiteral("GoZBrushToFM.exe")};
        const int index = order.indexOf(entry.value(QStringLiteral("program")).toString());
        return index < 0 ? order.size() : index;
    };
    auto step = [](const QJsonObject& entry) {
        const QJsonValue value = entry.value(QStringLiteral("step"));
        return value.isDouble() ? value.toInt() : -1;
    };
    QList<QJsonObject> entries;
    for (const QJsonValue& value : processes) {
        entries << value.toObject();
    }
    std::stable_sort(entries.begin(), entries.end(), [&](const QJsonObject& a, const QJsonObject& b) {
        return step(a) != step(b) ? step(a) < step(b) : rank(a) < rank(b);
    });
    QJsonArray ordered;
    for (const QJsonObject& entry : entries) {
        ordered.append(entry);
    }
    return ordered;
}

bool CReport::Succeeded() const
{
    if (!m_bPluginLoaded || !m_kRunErrors.isEmpty()) {
        return false;
    }
    for (const QJsonObject& step : m_kSteps) {
        if (step.value(QStringLiteral("status")).toString() == QLatin1String("failed")) {
            return false;
        }
    }
    return true;
}

QStringList CReport::Problems() const
{
    QStringList problems;
    if (!m_bPluginLoaded) {
        for (const QJsonValue& error : m_kPlugin.value(QStringLiteral("errors")).toArray()) {
            problems << QStringLiteral("plug-in not loaded: ") + error.toString();
        }
    }
    problems << m_kRunErrors;
    for (const QJsonObject& step : m_kSteps) {
        if (step.contains(QStringLiteral("error"))) {
            problems << step.value(QStringLiteral("error")).toString();
        }
    }
    return problems;
}

QJsonObject CReport::ToJson() const
{
    QJsonArray steps;
    for (const QJsonObject& step : m_kSteps) {
        steps.append(step);
    }
    return QJsonObject{
        {QStringLiteral("ok"), Succeeded()},
        {QStringLiteral("plugin"), m_kPlugin},
        {QStringLiteral("errors"), ToArray(m_kRunErrors)},
        {QStringLiteral("steps"), steps},
        {QStringLiteral("action_snapshots"), m_kSnapshots},
        {QStringLiteral("dialog_dumps"), m_kDumps},
        {QStringLiteral("message_boxes"), m_kMessageBoxes},
        {QStringLiteral("call_log"), m_kCallLog},
        {QStringLiteral("plugin_registrations"), m_kRegistrations},
        {QStringLiteral("final_state"), m_kFinalState},
        {QStringLiteral("files"), m_kFiles},
        {QStringLiteral("processes"), m_kProcesses},
        {QStringLiteral("scene"), m_kScene},
        {QStringLiteral("goz_imports"), m_kImports},
        {QStringLiteral("scene_dumps"), m_kSceneDumps},
        {QStringLiteral("table_dumps"), m_kTableDumps},
        {QStringLiteral("goz_returns"), m_kGoZReturns},
        {QStringLiteral("debug_log"), m_kDebugLog},
    };
}

QV::Result CReport::Save(const QString& path, QString& error) const
{
    const QByteArray bytes = QJsonDocument(ToJson()).toJson(QJsonDocument::Indented);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush() ||
        !file.commit()) { // commit() overlooks an error of its own final flush
        error = QStringLiteral("cannot write the report %1: %2").arg(path, file.errorString());
        return QV::kFail;
    }
    return QV::kOk;
}

} // namespace Host
} // namespace MV

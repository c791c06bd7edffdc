#include "CScriptRunner.h"

#include "CGoZReturnChannel.h"
#include "CPluginHost.h"
#include "CReferenceHost.h"
#include "CReport.h"
#include "CWidgetDriver.h"
#include "CWidgetDumper.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>
#include <QTableWidget>

#include <ctime>

namespace MV {
namespace Host {

namespace {

QStringList Strings(const QJsonValue& value)
{
    QStringList items;
    for (const QJsonValue& item : value.toArray()) {
        items << item.toString();
    }
    return items;
}

// A "Vm…:   1234 kB" line of /proc/self/status; -1 where there is none.
qint64 StatusKilobytes(const QByteArray& status, const char* key)
{
    for (const QByteArray& line : status.split('\n')) {
        if (line.startsWith(key)) {
            bool ok = false;
            const qint64 value = line.mid(int(qstrlen(key))).trimmed().split(' ').value(0).toLongLong(&ok);
            return ok ? value : -1;
        }
    }
    return -1;
}

QJsonObject Usage(const QElapsedTimer& sinceStart)
{
    QFile file(QStringLiteral("/proc/self/status"));
    const QByteArray status = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    return QJsonObject{{QStringLiteral("elapsed_ms"), double(sinceStart.elapsed())},
                       {QStringLiteral("cpu_ms"), double(std::clock()) * 1000.0 / CLOCKS_PER_SEC},
                       {QStringLiteral("rss_kb"), double(StatusKilobytes(status, "VmRSS:"))},
                       {QStringLiteral("peak_rss_kb"), double(StatusKilobytes(status, "VmHWM:"))}};
}

} // namespace

CScriptRunner::CScriptRunner(CReferenceHost& host, CPluginHost& plugins, CReport& report, QObject* parent)
    : QObject(parent), m_rHost(host), m_rPlugins(plugins), m_rReport(report),
      m_strProcessLog(qEnvironmentVariable("MVGOZ_PROCESS_LOG"))
{
    m_kWatchdog.setSingleShot(true);
    connect(&m_kWatchdog, &QTimer::timeout, this, &CScriptRunner::OnWatchdog);
    m_kCloser.setInterval(100);
    connect(&m_kCloser, &QTimer::timeout, this, [] { CWidgetDriver::CloseModals(); });
}

CScriptRunner::~CScriptRunner() = default;

QV::Result CScriptRunner::Run(const CScript& script)
{
    m_pScript = &script;
    m_iNext = 0;
    m_iCurrentStep = -1;
    m_bFinished = false;
    m_bStepFailed = false;
    m_strLastClicked.clear();
    m_kSinceStart.start();
    QTimer::singleShot(0, this, &CScriptRunner::RunNextStep);
    m_kWatchdog.start(m_iWatchdogOverrideMs > 0 ? m_iWatchdogOverrideMs : script.WatchdogMs());
    m_kLoop.exec();
    EnterStep(-1);
    m_kWatchdog.stop();
    m_kCloser.stop();
    for (int i = m_iNext; i < script.Steps().size(); ++i) {
        m_rReport.SetStep(i, QJsonObject{{QStringLiteral("index"), i},
                                         {QStringLiteral("step"), script.Steps().at(i).m_strName},
                                         {QStringLiteral("status"), QStringLiteral("not_run")}});
    }
    m_pScript = nullptr;
    return m_bStepFailed || !m_rReport.RunErrors().isEmpty() ? QV::kFail : QV::kOk;
}

void CScriptRunner::RunNextStep()
{
    if (m_bFinished || m_pScript == nullptr) {
        return;
    }
    if (m_iNext >= m_pScript->Steps().size()) {
        FinishRun();
        return;
    }
    const CScriptStep step = m_pScript->Steps().at(m_iNext++);
    // Scheduled before the step runs: if the step opens a modal dialog, the next step runs
    // in the dialog's event loop. A wait runs its own loop and schedules after it.
    const bool waits =
        step.m_strName == QLatin1String("wait_processes") || step.m_strName == QLatin1String("wait_goz_return");
    if (!waits) {
        QTimer::singleShot(0, this, &CScriptRunner::RunNextStep);
    }
    m_bRaiseReturn = false;
    RunStep(step);
    // Read before anything can open a dialog and run further steps inside it.
    const bool raise = m_bRaiseReturn;
    m_bRaiseReturn = false;
    if (waits) {
        QTimer::singleShot(0, this, &CScriptRunner::RunNextStep);
    }
    if (raise) {
        // The notice is raised as the host would: the receive dialog may open and run the next steps.
        const int previous = m_iCurrentStep;
        EnterStep(step.m_iIndex);
        m_rHost.RaiseGoZDataUpdated();
        EnterStep(previous);
    }
}

void CScriptRunner::EnterStep(int index)
{
    m_iCurrentStep = index;
    m_rHost.SetCurrentStep(index);
    if (index >= 0) {
        qputenv(kStepVariable, QByteArray::number(index));
    } else {
        qunsetenv(kStepVariable);
    }
}

void CScriptRunner::RunStep(const CScriptStep& step)
{
    QJsonObject record{{QStringLiteral("index"), step.m_iIndex}, {QStringLiteral("step"), step.m_strName}};
    if (step.m_kArgs.contains(QStringLiteral("comment"))) {
        record.insert(QStringLiteral("comment"), step.m_kArgs.value(QStringLiteral("comment")));
    }
    const QString condition = step.m_kArgs.value(QStringLiteral("only_if_clicked")).toString();
    if (!condition.isEmpty() && condition != m_strLastClicked) {
        record.insert(QStringLiteral("status"), QStringLiteral("skipped"));
        record.insert(QStringLiteral("reason"),
                      QStringLiteral("the last click pressed \"%1\", not \"%2\"").arg(m_strLastClicked, condition));
        m_rReport.SetStep(step.m_iIndex, record);
        return;
    }
    // Recorded as running first: a step that opens a dialog completes only when it closes.
    record.insert(QStringLiteral("status"), QStringLiteral("running"));
    m_rReport.SetStep(step.m_iIndex, record);
    const int previous = m_iCurrentStep;
    EnterStep(step.m_iIndex);
    QJsonObject detail;
    const QString error = Execute(step, detail);
    // A step that ran inside a dialog's loop hands back to the step that opened it.
    EnterStep(previous);
    if (!detail.isEmpty()) {
        record.insert(QStringLiteral("detail"), detail);
    }
    if (error.isEmpty()) {
        record.insert(QStringLiteral("status"), QStringLiteral("ok"));
    } else {
        m_bStepFailed = true;
        record.insert(QStringLiteral("status"), QStringLiteral("failed"));
        record.insert(QStringLiteral("error"), QStringLiteral("step %1 (%2): %3").arg(step.m_iIndex).arg(step.m_strName, error));
    }
    m_rReport.SetStep(step.m_iIndex, record);
}

QString CScriptRunner::Execute(const CScriptStep& step, QJsonObject& detail)
{
    const QString& name = step.m_strName;
    const QJsonObject& args = step.m_kArgs;
    QString error;
    auto text = [&](const char* key) { return args.value(QLatin1String(key)).toString(); };
    auto flag = [&](const char* key, bool fallback) { return args.value(QLatin1String(key)).toBool(fallback); };
    auto number = [&](const char* key, int fallback) { return args.value(QLatin1String(key)).toInt(fallback); };

    if (name == QLatin1String("select")) {
        m_rHost.SetSelection(Strings(args.value(QStringLiteral("ids"))), error);
    } else if (name == QLatin1String("pick")) {
        m_rHost.SetPicks(Strings(args.value(QStringLiteral("ids"))), error);
    } else if (name == QLatin1String("set_current_avatar")) {
        m_rHost.SetCurrentAvatar(text("id"), error);
    } else if (name == QLatin1String("set_playing")) {
        m_rHost.SetPlaying(flag("playing", false));
    } else if (name == QLatin1String("set_expression_editing")) {
        m_rHost.SetExpressionEditing(text("id"), flag("editing", false), error);
    } else if (name == QLatin1String("set_blend_shape_editing")) {
        m_rHost.SetBlendShapeEditing(text("id"), flag("editing", false), error);
    } else if (name == QLatin1String("raise_data_changed")) {
        m_rHost.RaiseDataChanged(flag("edit_blend_shape", false));
    } else if (name == QLatin1String("raise_expression_goz")) {
        m_rHost.RaiseExpressionGoZ();
    } else if (name == QLatin1String("raise_goz_data_updated")) {
        m_rHost.RaiseGoZDataUpdated();
    } else if (name == QLatin1String("raise_load_expression_motion")) {
        m_rHost.RaiseLoadExpressionGozMotion();
    } else if (name == QLatin1String("trigger")) {
        QAction* action = m_rPlugins.FindAction(text("action"));
        if (action == nullptr) {
            QStringList names;
            for (QAction* known : m_rPlugins.Actions()) {
                if (!known->objectName().isEmpty()) {
                    names << known->objectName();
                }
            }
            return QStringLiteral("the plug-in has no action \"%1\" (it has: %2)")
                .arg(text("action"), names.join(QStringLiteral(", ")));
        }
        if (!action->isEnabled()) {
            return QStringLiteral("action \"%1\" is disabled").arg(text("action"));
        }
        action->trigger();
    } else if (name == QLatin1String("snapshot_actions")) {
        m_rReport.AddActionSnapshot(step.m_iIndex, SnapshotActions());
    } else if (name == QLatin1String("answer_messages")) {
        if (args.contains(QStringLiteral("button"))) {
            m_rHost.QueueMessageAnswer(number("button", 0));
        }
        for (const QJsonValue& button : args.value(QStringLiteral("buttons")).toArray()) {
            m_rHost.QueueMessageAnswer(button.toInt());
        }
    } else if (name == QLatin1String("fail")) {
        QV::Result code = QV::kFail;
        CScript::ReadCode(args.value(QStringLiteral("code")), code);
        if (QV::Failed(m_rHost.SetFailure(text("operation"), code, number("nth", 0)))) {
            return QStringLiteral("the host has no operation \"%1\"").arg(text("operation"));
        }
    } else if (name == QLatin1String("clear_failures")) {
        if (args.contains(QStringLiteral("operation"))) {
            m_rHost.ClearFailure(text("operation"));
        } else {
            m_rHost.ClearFailures();
        }
    } else if (name == QLatin1String("clear_log")) {
        m_rHost.CallLog().Clear();
    } else if (name == QLatin1String("record_usage")) {
        detail = Usage(m_kSinceStart);
    } else if (name == QLatin1String("wait_processes")) {
        return WaitForProcesses(number("count", 0), number("timeout_ms", CScript::kDefaultWaitTimeoutMs), detail);
    } else if (name == QLatin1String("wait_goz_return")) {
        return WaitForReturn(number("timeout_ms", CScript::kDefaultWaitTimeoutMs), step.m_iIndex, detail);
    } else if (name == QLatin1String("set_zbrush_return")) {
        detail.insert(QStringLiteral("settings"), args.value(QStringLiteral("settings")));
        return WriteZBrushReturn(args.value(QStringLiteral("settings")));
    } else if (name == QLatin1String("dump_scene")) {
        const QStringList ids = Strings(args.value(QStringLiteral("ids")));
        for (const QString& id : ids) {
            if (m_rHost.Scene().Find(id) == nullptr) {
                return QStringLiteral("the scene has no object \"%1\"").arg(id);
            }
        }
        m_rReport.AddSceneDump(step.m_iIndex, CReport::SceneDump(m_rHost.Scene(), ids));
    } else {
        // The remaining steps work on a dialog or window.
        QWidget* root = CWidgetDriver::FindRoot(text("dialog"), error);
        if (root == nullptr) {
            return error;
        }
        detail.insert(QStringLiteral("dialog"), root->objectName());
        if (name == QLatin1String("click")) {
            QAbstractButton* button = CWidgetDriver::ResolveClick(root, text("widget"), text("fallback"), error);
            if (button == nullptr) {
                return error;
            }
            // Noted before the click: a button that opens a dialog returns only when it closes.
            m_strLastClicked = button->objectName();
            detail.insert(QStringLiteral("clicked"), m_strLastClicked);
            button->click();
        } else if (name == QLatin1String("set_checked")) {
            detail.insert(QStringLiteral("widget"), text("widget"));
            detail.insert(QStringLiteral("checked"), flag("checked", false));
            error = CWidgetDriver::SetChecked(root, text("widget"), flag("checked", false));
        } else if (name == QLatin1String("set_combo_index")) {
            detail.insert(QStringLiteral("widget"), text("widget"));
            detail.insert(QStringLiteral("index"), number("index", 0));
            error = CWidgetDriver::SetComboIndex(root, text("widget"), number("index", 0));
        } else if (name == QLatin1String("table_combo_choose")) {
            for (const char* key : {"table", "row", "column", "text"}) {
                detail.insert(QLatin1String(key), args.value(QLatin1String(key)));
            }
            error = CWidgetDriver::TableComboChoose(root, text("table"), number("row", 0), number("column", 0),
                                                    text("text"));
        } else if (name == QLatin1String("table_set_checked")) {
            for (const char* key : {"table", "row", "column", "checked"}) {
                detail.insert(QLatin1String(key), args.value(QLatin1String(key)));
            }
            error = CWidgetDriver::TableSetChecked(root, text("table"), number("row", 0), number("column", 0),
                                                   flag("checked", false));
        } else if (name == QLatin1String("dump_table")) {
            auto* table = qobject_cast<QTableWidget*>(CWidgetDriver::FindWidget(root, text("table")));
            if (table == nullptr) {
                return QStringLiteral("no table \"%1\"").arg(text("table"));
            }
            QJsonObject dump = CWidgetDumper::DumpTable(table);
            dump.insert(QStringLiteral("dialog"), root->objectName());
            m_rReport.AddTableDump(step.m_iIndex, dump);
        } else if (name == QLatin1String("dump_dialog")) {
            m_rReport.AddDialogDump(step.m_iIndex, CWidgetDumper::Dump(root));
        } else if (name == QLatin1String("close_dialog")) {
            error = CWidgetDriver::Close(root, flag("reject", true));
        } else {
            error = QStringLiteral("no handler for this step");
        }
    }
    return error;
}

int CScriptRunner::ProcessCount() const
{
    QFile file(m_strProcessLog);
    if (m_strProcessLog.isEmpty() || !file.open(QIODevice::ReadOnly)) {
        return 0;
    }
    int count = 0;
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (!line.trimmed().isEmpty()) {
            ++count;
        }
    }
    return count;
}

QString CScriptRunner::WaitForProcesses(int count, int timeoutMs, QJsonObject& detail)
{
    if (m_strProcessLog.isEmpty()) {
        return QStringLiteral("no process log is set (MVGOZ_PROCESS_LOG)");
    }
    QElapsedTimer elapsed;
    elapsed.start();
    QEventLoop loop;
    m_pWaitLoop = &loop;
    QTimer poll;
    poll.setInterval(25);
    connect(&poll, &QTimer::timeout, &loop, [&] {
        if (ProcessCount() >= count || elapsed.elapsed() >= timeoutMs) {
            loop.quit();
        }
    });
    if (ProcessCount() < count && timeoutMs > 0) {
        poll.start();
        loop.exec();
    }
    m_pWaitLoop.clear();
    const int found = ProcessCount();
    detail.insert(QStringLiteral("found"), found);
    if (m_bFinished) {
        return QStringLiteral("stopped by the watchdog with %1 of %2 processes logged").arg(found).arg(count);
    }
    if (found < count) {
        return QStringLiteral("only %1 of %2 processes logged within %3 ms").arg(found).arg(count).arg(timeoutMs);
    }
    return QString();
}

QString CScriptRunner::WaitForReturn(int timeoutMs, int step, QJsonObject& detail)
{
    if (m_pChannel == nullptr) {
        return QStringLiteral("this run has no channel for the return launcher");
    }
    if (!m_pChannel->HasPending() && timeoutMs > 0) {
        QElapsedTimer elapsed;
        elapsed.start();
        QEventLoop loop;
        m_pWaitLoop = &loop;
        QTimer poll;
        poll.setInterval(25);
        connect(&poll, &QTimer::timeout, &loop, [&] {
            if (m_pChannel->HasPending() || elapsed.elapsed() >= timeoutMs) {
                loop.quit();
            }
        });
        connect(m_pChannel, &CGoZReturnChannel::NoticeReceived, &loop, &QEventLoop::quit);
        poll.start();
        loop.exec();
        m_pWaitLoop.clear();
    }
    if (m_bFinished) {
        return QStringLiteral("stopped by the watchdog while waiting for the GoZ return");
    }
    if (!m_pChannel->HasPending()) {
        return QStringLiteral("no GoZ return within %1 ms").arg(timeoutMs);
    }
    const CGoZNotice notice = m_pChannel->TakeNext(step);
    detail.insert(QStringLiteral("notice"), notice.m_iIndex);
    detail.insert(QStringLiteral("send_step"), notice.m_kStep);
    detail.insert(QStringLiteral("object_list"), QJsonArray::fromStringList(notice.m_kObjectList));
    m_bRaiseReturn = true;
    return QString();
}

QString CScriptRunner::WriteZBrushReturn(const QJsonValue& settings)
{
    if (m_strZBrushReturnFile.isEmpty()) {
        return QStringLiteral("this run has no settings file for the ZBrush stand-in");
    }
    if (settings.isNull()) {
        if (QFile::exists(m_strZBrushReturnFile) && !QFile::remove(m_strZBrushReturnFile)) {
            return QStringLiteral("cannot remove %1").arg(m_strZBrushReturnFile);
        }
        return QString();
    }
    QSaveFile file(m_strZBrushReturnFile);
    const QByteArray bytes = QJsonDocument(settings.toObject()).toJson(QJsonDocument::Indented);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush() ||
        !file.commit()) { // commit() overlooks an error of its own final flush
        return QStringLiteral("cannot write %1: %2").arg(m_strZBrushReturnFile, file.errorString());
    }
    return QString();
}

QJsonObject CScriptRunner::SnapshotActions() const
{
    const CScene& scene = m_rHost.Scene();
    QJsonArray selection;
    for (const QString& id : scene.State().m_kSelection) {
        const CSceneObject* object = scene.Find(id);
        selection.append(QJsonObject{{QStringLiteral("id"), id}, {QStringLiteral("name"), object->m_strName}});
    }
    QJsonArray actions;
    for (QAction* action : m_rPlugins.Actions()) {
        if (action->isSeparator()) {
            continue;
        }
        actions.append(QJsonObject{{QStringLiteral("name"), action->objectName()},
                                   {QStringLiteral("text"), action->text()},
                                   {QStringLiteral("enabled"), action->isEnabled()},
                                   {QStringLiteral("visible"), action->isVisible()},
                                   {QStringLiteral("menu"), action->menu() != nullptr}});
    }
    const CSceneObject* avatar = scene.Find(scene.State().m_strCurrentAvatar);
    return QJsonObject{{QStringLiteral("selection"), selection},
                       {QStringLiteral("current_avatar"),
                        avatar == nullptr ? QJsonValue() : QJsonValue(avatar->m_strId)},
                       {QStringLiteral("playing"), scene.State().m_bPlaying},
                       {QStringLiteral("actions"), actions}};
}

void CScriptRunner::FinishRun()
{
    m_bFinished = true;
    QWidget* modal = QApplication::activeModalWidget();
    if (modal != nullptr) {
        m_rReport.AddRunError(QStringLiteral("the script ended with dialog \"%1\" still open; it was closed")
                                  .arg(modal->objectName()));
        CWidgetDriver::CloseModals();
    }
    m_kLoop.quit();
}

void CScriptRunner::OnWatchdog()
{
    if (m_pScript == nullptr) {
        return;
    }
    QString where = QStringLiteral("after the last step");
    if (m_iCurrentStep >= 0 && m_iCurrentStep < m_pScript->Steps().size()) {
        where = QStringLiteral("in step %1 (%2)").arg(m_iCurrentStep).arg(m_pScript->Steps().at(m_iCurrentStep).m_strName);
    } else if (m_iNext < m_pScript->Steps().size()) {
        where = QStringLiteral("before step %1").arg(m_iNext);
    }
    m_rReport.AddRunError(QStringLiteral("watchdog: the run did not finish within %1 ms (stopped %2)")
                              .arg(m_kWatchdog.interval())
                              .arg(where));
    m_bFinished = true;
    if (m_pWaitLoop) {
        m_pWaitLoop->quit();
    }
    CWidgetDriver::CloseModals();
    // Plug-in code may open another dialog once the first returns; keep closing until the run unwinds.
    m_kCloser.start();
    m_kLoop.quit();
}

} // namespace Host
} // namespace MV

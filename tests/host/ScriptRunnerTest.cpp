// Loading the fake plug-in and running scripts against it: steps inside its modal dialogs, the
// watchdog, injected failures, and the step each host call belongs to.
#include "HostTestSupport.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QToolBar>

#include <gtest/gtest.h>

#include <functional>

using namespace MV::Host;
using MV::Host::Test::UsageSteps;

namespace {

QJsonValue At(const QJsonObject& object, const char* key, int index)
{
    return object.value(QLatin1String(key)).toArray().at(index);
}

class hostScriptRunner : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(m_kRun.Load()); }
    void TearDown() override { EXPECT_EQ(nullptr, QApplication::activeModalWidget()) << "a run left a dialog open"; }

    QString StepText(int index, const char* key) const { return m_kRun.Step(index).value(QLatin1String(key)).toString(); }

    // Runs first, then each step of the table (and last); each must fail naming its problem.
    void ExpectEachFails(const char* first, const QList<QPair<QByteArray, const char*>>& cases, const char* last = nullptr)
    {
        for (const auto& item : cases) {
            SCOPED_TRACE(item.first.constData());
            m_kRun.m_kReport = CReport();
            EXPECT_EQ(QV::kFail, m_kRun.Run("{\"steps\": [" + QByteArray(first) + ", " + item.first +
                                            (last == nullptr ? QByteArray() : ", " + QByteArray(last)) + "]}"));
            EXPECT_EQ(QStringLiteral("failed"), StepText(1, "status"));
            EXPECT_TRUE(StepText(1, "error").contains(QString::fromUtf8(item.second))) << StepText(1, "error").toStdString();
            EXPECT_TRUE(last == nullptr || StepText(2, "status") == QLatin1String("ok")) << "the run must go on after a failed step";
        }
    }

    MV::Host::Test::CHostRun m_kRun;
};

TEST_F(hostScriptRunner, StepsRunInsideTheModalDialogAnActionOpens)
{
    EXPECT_EQ(QV::kOk, m_kRun.Run(R"({"steps": [
        {"step": "trigger", "action": "fakeDialogAction"}, {"step": "set_checked", "widget": "fakeCheck", "checked": true},
        {"step": "set_combo_index", "widget": "fakeCombo", "index": 2},
        {"step": "table_combo_choose", "table": "fakeTable", "row": 0, "column": 1, "text": "Relink"}, {"step": "dump_dialog"},
        {"step": "click", "widget": "fakeOkButton"}
    ]})")) << QJsonDocument(m_kRun.Report()).toJson().toStdString();
    // What the plug-in saw once its dialog returned: every change made, then accepted.
    EXPECT_EQ(QStringList{"check=1;combo=2;activated=2;row0=Relink|1"}, UsageSteps(*m_kRun.m_pHost, QStringLiteral("FakeDialogClosed")));
    // The report keeps what each choice step chose, so a reader can tell it without the script.
    const char* const details[] = {
        R"({"dialog": "FakeDialog", "widget": "fakeCheck", "checked": true})",
        R"({"dialog": "FakeDialog", "widget": "fakeCombo", "index": 2})",
        R"({"dialog": "FakeDialog", "table": "fakeTable", "row": 0, "column": 1, "text": "Relink"})",
    };
    for (int step = 1; step <= 3; ++step) {
        EXPECT_EQ(QJsonDocument::fromJson(details[step - 1]).object(), m_kRun.Step(step).value(QStringLiteral("detail")).toObject());
    }
    // The whole dump: every widget, its state, and a table's cells, items or what the cell's widget shows.
    EXPECT_EQ(QJsonDocument::fromJson(R"({"class": "QDialog", "dialog": "FakeDialog", "modal": true, "step": 4, "title": "Fake dialog",
      "visible": true, "widgets": [
      {"checkable": true, "checked": true, "class": "QCheckBox", "enabled": true, "name": "fakeCheck", "text": "Check me", "visible": true},
      {"class": "QComboBox", "current_index": 2, "current_text": "Gamma", "enabled": true, "hidden_rows": [1],
       "items": ["Alpha", "Beta", "Gamma"], "name": "fakeCombo", "visible": true},
      {"cells": [["Row A", {"current_index": 1, "enabled": true, "hidden_rows": [], "items": ["Create", "Relink"], "text": "Relink",
                            "widget": "QComboBox"}],
                 ["Row B", {"current_index": 0, "enabled": false, "hidden_rows": [], "items": ["Skip"], "text": "Skip", "widget": "QComboBox"}]],
       "class": "QTableWidget", "columns": 2, "enabled": true, "headers": ["Name", "Action"], "name": "fakeTable", "rows": 2, "visible": true},
      {"checkable": true, "checked": false, "class": "QCheckBox", "enabled": true, "name": "fakeHiddenCheck", "text": "Hidden", "visible": false},
      {"checkable": false, "class": "QPushButton", "enabled": true, "name": "fakeOkButton", "text": "fakeOkButton", "visible": true},
      {"checkable": false, "class": "QPushButton", "enabled": true, "name": "fakeCancelButton", "text": "fakeCancelButton", "visible": true},
      {"checkable": false, "class": "QPushButton", "enabled": false, "name": "fakeDisabledButton", "text": "fakeDisabledButton", "visible": true},
      {"checkable": false, "class": "QPushButton", "enabled": true, "name": "fakeNestedButton", "text": "fakeNestedButton", "visible": true}]})")
                  .object(),
              At(m_kRun.Report(), "dialog_dumps", 0).toObject());
    EXPECT_EQ(1, m_kRun.Report().value(QStringLiteral("dialog_dumps")).toArray().size());
}

TEST_F(hostScriptRunner, FailedStepsNameTheStepAndTheRunGoesOn)
{
    ExpectEachFails(R"({"step": "trigger", "action": "fakeDialogAction"})", {
        {R"({"step": "click", "widget": "nope"})", "step 1 (click): no widget \"nope\""},
        {R"({"step": "click", "widget": "fakeCombo"})", "widget \"fakeCombo\" is not a button"},
        {R"({"step": "click", "widget": "fakeDisabledButton"})", "widget \"fakeDisabledButton\" is disabled"},
        {R"({"step": "set_checked", "widget": "fakeHiddenCheck", "checked": true})", "widget \"fakeHiddenCheck\" is hidden"},
        {R"({"step": "set_checked", "widget": "fakeOkButton", "checked": true})", "widget \"fakeOkButton\" cannot be checked"},
        {R"({"step": "set_combo_index", "widget": "fakeCombo", "index": 3})", "combo box \"fakeCombo\" has no item 3 (it has 3)"},
        {R"({"step": "table_combo_choose", "table": "fakeTable", "row": 0, "column": 1, "text": "Skip"})",
         "has no item \"Skip\" (items: Create, Relink)"},
        {R"({"step": "table_combo_choose", "table": "fakeTable", "row": 1, "column": 1, "text": "Skip"})", "is disabled"},
        {R"({"step": "table_combo_choose", "table": "fakeTable", "row": 0, "column": 0, "text": "x"})", "holds no combo box"},
        {R"({"step": "table_combo_choose", "table": "fakeTable", "row": 5, "column": 1, "text": "x"})",
         "has no cell (5, 1); it has 2 rows and 2 columns"},
        {R"({"step": "dump_dialog", "dialog": "NoSuchDialog"})", "no window named \"NoSuchDialog\""},
        {R"({"step": "trigger", "action": "fakeDisabledAction"})", "action \"fakeDisabledAction\" is disabled"},
        {R"({"step": "trigger", "action": "noSuchAction"})", "the plug-in has no action \"noSuchAction\" (it has: fakeDialogAction"},
        {R"({"step": "select", "ids": ["box", "ghost"]})", "step 1 (select): unknown object \"ghost\""},
    }, R"({"step": "close_dialog"})");
    ExpectEachFails(R"({"step": "clear_log"})", {
        {R"({"step": "dump_scene", "ids": ["ghost"]})", "the scene has no object \"ghost\""},
        {R"({"step": "wait_goz_return", "timeout_ms": 10})", "this run has no channel for the return launcher"},
        {R"({"step": "set_zbrush_return", "settings": null})", "this run has no settings file for the ZBrush stand-in"},
    });
}

TEST_F(hostScriptRunner, AClickFallsBackWhenItsButtonCannotBePressed)
{
    EXPECT_EQ(QV::kOk, m_kRun.Run(R"({"steps": [
        {"step": "trigger", "action": "fakeDialogAction"},
        {"step": "click", "widget": "fakeDisabledButton", "fallback": "fakeCancelButton"},
        {"step": "snapshot_actions", "only_if_clicked": "fakeDisabledButton"},
        {"step": "snapshot_actions", "only_if_clicked": "fakeCancelButton"}
    ]})"));
    EXPECT_EQ(QStringLiteral("fakeCancelButton"), m_kRun.Step(1).value(QStringLiteral("detail")).toObject().value(QStringLiteral("clicked")).toString());
    EXPECT_EQ(QStringLiteral("skipped"), StepText(2, "status"));
    ASSERT_EQ(1, m_kRun.Report().value(QStringLiteral("action_snapshots")).toArray().size());
    EXPECT_EQ(3, At(m_kRun.Report(), "action_snapshots", 0).toObject().value(QStringLiteral("step")).toInt());
}

TEST_F(hostScriptRunner, TheWatchdogEndsARunThatDoesNotFinish)
{
    EXPECT_EQ(QV::kFail, m_kRun.Run(R"({"watchdog_ms": 300, "steps": [
        {"step": "trigger", "action": "fakeDialogAction"}, {"step": "wait_processes", "count": 5, "timeout_ms": 600000},
        {"step": "clear_log"}
    ]})"));
    const QJsonArray errors = m_kRun.Report().value(QStringLiteral("errors")).toArray();
    ASSERT_EQ(1, errors.size());
    EXPECT_TRUE(errors.first().toString().startsWith(QStringLiteral("watchdog: the run did not finish within 300 ms")))
        << errors.first().toString().toStdString();
    EXPECT_TRUE(StepText(1, "error").contains(QStringLiteral("stopped by the watchdog with 0 of 5 processes logged")))
        << StepText(1, "error").toStdString();
    EXPECT_EQ(QStringLiteral("not_run"), StepText(2, "status"));
    // The dialog was closed (rejected) so that the plug-in code returned.
    EXPECT_EQ(QStringList{"check=0;combo=0;activated=-1;row0=Create|0"}, UsageSteps(*m_kRun.m_pHost, QStringLiteral("FakeDialogClosed")));

    m_kRun.m_kReport = CReport();
    EXPECT_EQ(QV::kFail, m_kRun.Run(R"({"steps": [{"step": "trigger", "action": "fakeDialogAction"}]})"));
    EXPECT_EQ(QJsonArray({QStringLiteral("the script ended with dialog \"FakeDialog\" still open; it was closed")}),
              m_kRun.Report().value(QStringLiteral("errors")).toArray());
}

TEST_F(hostScriptRunner, InjectedFailuresAndQueuedAnswersReachThePlugin)
{
    EXPECT_EQ(QV::kOk, m_kRun.Run(R"({"steps": [
        {"step": "select", "ids": ["box", "lamp"]}, {"step": "fail", "operation": "ExportGoZ", "code": "0x80000005", "nth": 2},
        {"step": "answer_messages", "buttons": [65536]}, {"step": "trigger", "action": "fakeCallAction"},
        {"step": "clear_failures"}, {"step": "trigger", "action": "fakeCallAction"}
    ]})"));
    QStringList exports;
    for (const CCallRecord& record : m_kRun.m_pHost->CallLog().Of(QStringLiteral("ExportGoZ"))) {
        exports << record.m_kArgs.first() + (record.m_bInjected ? QStringLiteral(" failed") : QString());
    }
    EXPECT_EQ((QStringList{"box", "lamp failed", "box", "lamp"}), exports);
    ASSERT_EQ(2, m_kRun.m_pHost->MessageBoxes().size());
    EXPECT_EQ(QStringLiteral("Fake: exported 1"), m_kRun.m_pHost->MessageBoxes().at(0).m_strText);
    EXPECT_EQ(QStringLiteral("Fake: exported 2"), m_kRun.m_pHost->MessageBoxes().at(1).m_strText);
    EXPECT_EQ((QStringList{"65536|65536", "1024|1024"}), UsageSteps(*m_kRun.m_pHost, QStringLiteral("FakeAnswer")));
    EXPECT_TRUE(QFileInfo(QStringLiteral("C:/Users/Public/Pixologic/GoZProjects/Default/Desk Lamp.goz")).isFile());
}

TEST_F(hostScriptRunner, EachCallCarriesTheStepThatWasRunning)
{
    ASSERT_EQ(QV::kOk, m_kRun.Run(R"({"steps": [
        {"step": "trigger", "action": "fakeDialogAction"}, {"step": "click", "widget": "fakeNestedButton"}, {"step": "dump_dialog"},
        {"step": "click", "widget": "fakeNestedClose"}, {"step": "click", "widget": "fakeCancelButton", "dialog": "FakeDialog"},
        {"step": "select", "ids": ["box"]}, {"step": "trigger", "action": "fakeCallAction"}
    ]})"));
    // Steps go to the innermost dialog first. A dialog returns to the step that opened it: the nested
    // one to its button's click, the outer one to the trigger, although later steps ran meanwhile.
    QStringList calls;
    for (const CCallRecord& record : m_kRun.m_pHost->CallLog().Records()) {
        if (record.m_strOperation == QLatin1String("RecordUsageStep") || record.m_strOperation == QLatin1String("ExportGoZ")) {
            calls << record.m_kArgs.mid(0, record.m_strOperation == QLatin1String("ExportGoZ") ? 1 : -1).join(QLatin1Char('|')) +
                         QLatin1Char('@') + QString::number(record.m_iStep);
        }
    }
    EXPECT_EQ((QStringList{"FakeNestedClosed||1@1", "FakeDialogClosed|check=0;combo=0;activated=-1;row0=Create|0@0", "box@6",
                           "FakeAnswer|1024|1024@6"}),
              calls);
    EXPECT_EQ(QStringLiteral("FakeNestedDialog"), At(m_kRun.Report(), "dialog_dumps", 0).toObject().value(QStringLiteral("dialog")).toString());
    // Once the run is over, calls belong to no step.
    m_kRun.m_pHost->Query()->GetMainWindow();
    EXPECT_EQ(-1, m_kRun.m_pHost->CallLog().Records().last().m_iStep);
}

TEST_F(hostScriptRunner, TheCallLogTellsWhetherAnExportReplacedAFile)
{
    const QString path = QStringLiteral("C:/Users/Public/Pixologic/GoZProjects/Default/Box.goz");
    // A first export, the same name again, and again after the earlier file was deleted.
    for (const bool replaced : {false, true, false}) {
        ASSERT_TRUE(replaced || !QFileInfo::exists(path) || QFile::remove(path));
        m_kRun.m_pHost->CallLog().Clear();
        ASSERT_EQ(QV::kOk, m_kRun.Run(R"({"steps": [{"step": "select", "ids": ["box"]}, {"step": "trigger", "action": "fakeCallAction"}]})"));
        QStringList writes;
        for (const CCallRecord& record : m_kRun.m_pHost->CallLog().Records()) {
            for (const CFileWrite& write : record.m_kWrites) {
                writes << record.m_strOperation + QLatin1Char(' ') + write.m_strPath + (write.m_bReplaced ? " replaced" : "");
            }
        }
        EXPECT_EQ(QStringList{"ExportGoZ " + path + (replaced ? " replaced" : "")}, writes);
    }
}

// A dialog the plug-in keeps hidden until data comes back, as the receive dialog is, with a table
// whose check boxes sit centred in containers: row 1 disabled, row 2 hidden.
TEST_F(hostScriptRunner, CheckBoxesInTablesOfAHiddenDialogAreOperatedOnlyAsAUserCould)
{
    QDialog dialog;
    dialog.setObjectName(QStringLiteral("HiddenDialog"));
    auto* table = new QTableWidget(3, 2, &dialog);
    table->setObjectName(QStringLiteral("hiddenTable"));
    QList<QCheckBox*> checks;
    for (int row = 0; row < 3; ++row) {
        auto* box = new QWidget(table);
        checks << new QCheckBox(box);
        (new QHBoxLayout(box))->addWidget(checks.last());
        table->setCellWidget(row, 1, box);
    }
    checks[1]->setEnabled(false);
    table->setRowHidden(2, true);

    const auto set = [](int row, int column) {
        return QByteArray(R"({"step": "table_set_checked", "dialog": "HiddenDialog", "table": "hiddenTable", "row": )") +
               QByteArray::number(row) + ", \"column\": " + QByteArray::number(column) + ", \"checked\": true}";
    };
    ExpectEachFails(R"({"step": "clear_log"})", {
        {set(1, 1), "the check box in cell (1, 1) of table \"hiddenTable\" is disabled"},
        {set(2, 1), "is hidden"},
        {set(0, 0), "cell (0, 0) of table \"hiddenTable\" holds no check box"},
        {set(3, 1), "has no cell (3, 1); it has 3 rows and 2 columns"},
        {R"({"step": "dump_table", "dialog": "HiddenDialog", "table": "noTable"})", "no table \"noTable\""},
    });
    EXPECT_FALSE(checks[0]->isChecked() || checks[1]->isChecked() || checks[2]->isChecked());
    // A user can check the box of row 0; the second step finds it checked already.
    m_kRun.m_kReport = CReport();
    EXPECT_EQ(QV::kOk, m_kRun.Run("{\"steps\": [" + set(0, 1) + ", " + set(0, 1) + "]}"));
    EXPECT_TRUE(checks[0]->isChecked());
    EXPECT_FALSE(dialog.isVisible());
}

TEST(hostPluginHost, LoadsAPluginAndHandsItsMenusAndToolBarsToTheMainWindow)
{
    // What the report says of a loaded plug-in is checked with the real one in the integration tests.
    MV::Host::Test::CHostRun run;
    CPluginHost& plugins = *run.m_pPlugins;
    plugins.SetSecondPath(QStringLiteral("second"));
    ASSERT_TRUE(run.Load());
    EXPECT_EQ(QStringLiteral("second"), plugins.Instance()->property("secondPath").toString());
    EXPECT_EQ(QStringLiteral("IsPluginSupported"), run.m_pHost->CallLog().Records().value(0).m_strOperation)
        << "the host asks IsValid before Initialize";
    ASSERT_EQ(1, plugins.Menus().size());
    EXPECT_TRUE(run.m_pHost->MainWindow()->menuBar()->actions().contains(plugins.Menus().first()->menuAction()));
    ASSERT_EQ(1, plugins.ToolBars().size());
    EXPECT_EQ(run.m_pHost->MainWindow(), plugins.ToolBars().first()->parentWidget());
    // Actions are found in menus, sub-menus and tool bars.
    for (const char* name : {"fakeDialogAction", "fakeCallAction", "fakeNestedMenuAction"}) {
        EXPECT_NE(nullptr, plugins.FindAction(QString::fromLatin1(name))) << name;
    }
    EXPECT_EQ(nullptr, plugins.FindAction(QString()));
    EXPECT_EQ(QV::kFail, plugins.Load(QStringLiteral(MVGOZ_FAKE_PLUGIN)));
    EXPECT_TRUE(plugins.Errors().last().contains(QStringLiteral("already loaded")));
}

TEST(hostPluginHost, RefusesModulesItMustNotLoadAndSaysWhy)
{
    QTemporaryDir scratch;
    QFile text(scratch.filePath(QStringLiteral("text.so")));
    ASSERT_TRUE(text.open(QIODevice::WriteOnly) && text.write("not a library") > 0);
    text.close();
    const QString fake = QStringLiteral(MVGOZ_FAKE_PLUGIN);
    const struct { const char* m_szCase; QString m_strPath; std::function<void(CReferenceHost&)> m_kPrepare; const char* m_szError; } cases[] = {
        {"relative path", QStringLiteral("fake/mvgoz_fakeplugin.so"), nullptr, "the plug-in path must be absolute"},
        {"missing file", scratch.filePath(QStringLiteral("missing.so")), nullptr, "no plug-in file at"},
        {"not a plug-in", text.fileName(), nullptr, "is not a Qt plug-in"},
        {"wrong interface", QStringLiteral(MVGOZ_FAKE_PLUGIN_WRONG_IID), nullptr,
         "implements interface \"Other.Vendor.Interface/1.0\", not \"Quorvane.Mirava.CPluginInterface/7.0\""},
        {"wrong class", fake, nullptr, "the plug-in class is \"CFakePlugin\", not \"CGoZBrushPlugin\""},
        {"IsValid false", fake, [](CReferenceHost& host) { host.Scene().State().m_bPluginSupported = false; },
         "the plug-in refused this host (IsValid returned false)"},
        {"other application", QStringLiteral(MVGOZ_FAKE_PLUGIN_OTHER_APP), nullptr,
         "the plug-in is for applications 0x00000001, none of them this host (0x01800000)"},
        {"Initialize fails", fake, [](CReferenceHost& host) { host.SetFailure(QStringLiteral("GetMainWindow"), QV::kFail); },
         "Initialize failed with 0x80000000"},
    };
    for (const auto& item : cases) {
        SCOPED_TRACE(item.m_szCase);
        CReferenceHost host(MV::Host::Test::ParseScene(MV::Host::Test::kBasicScene));
        if (item.m_kPrepare) {
            item.m_kPrepare(host);
        }
        CPluginHost plugins(host);
        plugins.SetExpectedClassName(QLatin1String(item.m_szCase) == QLatin1String("wrong class") ? "CGoZBrushPlugin" : "CFakePlugin");
        EXPECT_TRUE(QV::Failed(plugins.Load(item.m_strPath)));
        EXPECT_FALSE(plugins.IsLoaded());
        EXPECT_EQ(nullptr, plugins.Instance()) << "a refused plug-in must not stay alive";
        EXPECT_TRUE(plugins.Errors().join(QStringLiteral("; ")).contains(QString::fromLatin1(item.m_szError)))
            << plugins.Errors().join(QStringLiteral("; ")).toStdString();
        EXPECT_TRUE(host.MainWindow()->menuBar()->actions().isEmpty());
    }
}

TEST(hostPluginHost, UnloadDeletesThePluginAndCutsItsConnections)
{
    MV::Host::Test::CHostRun run;
    CReferenceHost* host = run.m_pHost.get();
    CPluginHost& plugins = *run.m_pPlugins;
    ASSERT_TRUE(run.Load());
    QPointer<QObject> first = plugins.Instance();
    QPointer<QToolBar> toolBar = plugins.ToolBars().first();
    host->SetPlaying(true);
    EXPECT_EQ(1, first->property("played").toInt());
    EXPECT_EQ(QV::kOk, plugins.Unload());
    EXPECT_EQ(QV::kNothingDone, plugins.FinalizeResult()) << "Finalize is called before the instance goes";
    EXPECT_TRUE(first.isNull() && toolBar.isNull());
    EXPECT_FALSE(plugins.IsLoaded());
    EXPECT_TRUE(host->MainWindow()->menuBar()->actions().isEmpty());
    // The plug-in's functor was connected with the sender as context: it must be gone.
    host->SetPlaying(true);
    host->SetPlaying(false);
    EXPECT_EQ(QV::kNothingDone, plugins.Unload());
    ASSERT_TRUE(run.Load());
    EXPECT_FALSE(plugins.Instance()->property("played").isValid()) << "a reload gives a fresh instance";
    host->SetPlaying(true);
    EXPECT_EQ(1, plugins.Instance()->property("played").toInt());
}

} // namespace

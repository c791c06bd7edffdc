#include "HostTestSupport.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QHBoxLayout>
#include <QTableWidget>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

using namespace MV::Host;
using MV::Host::Test::CHostRun;
using MV::Host::Test::UsageSteps;

namespace {

QJsonObject Widget(const QJsonObject& dump, const QString& name)
{
    for (const QJsonValue& widget : dump.value(QStringLiteral("widgets")).toArray()) {
        if (widget.toObject().value(QStringLiteral("name")).toString() == name) {
            return widget.toObject();
        }
    }
    return QJsonObject();
}

class hostScriptRunner : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(m_kRun.Load()); }
    void TearDown() override { EXPECT_EQ(nullptr, QApplication::activeModalWidget()) << "a run left a dialog open"; }

    QString StepError(int index) const { return m_kRun.Step(index).value(QStringLiteral("error")).toString(); }

    CHostRun m_kRun;
};

TEST_F(hostScriptRunner, StepsRunInsideTheModalDialogAnActionOpens)
{
    const QV::Result result = m_kRun.Run(R"({"steps": [
        {"step": "trigger", "action": "fakeDialogAction"},
        {"step": "set_checked", "widget": "fakeCheck", "checked": true},
        {"step": "set_combo_index", "widget": "fakeCombo", "index": 2},
        {"step": "table_combo_choose", "table": "fakeTable", "row": 0, "column": 1, "text": "Relink"},
        {"step": "dump_dialog"},
        {"step": "click", "widget": "fakeOkButton"}
    ]})");
    EXPECT_EQ(QV::kOk, result) << QJsonDocument(m_kRun.Report()).toJson().toStdString();
    // What the plug-in saw once its dialog returned: every change made, then accepted.
    EXPECT_EQ(QStringList{QStringLiteral("check=1;combo=2;activated=2;row0=Relink|1")},
              UsageSteps(*m_kRun.m_pHost, QStringLiteral("FakeDialogClosed")));
    // The report keeps what each choice step chose, so a reader can tell it without the script.
    const struct
    {
        int m_iStep;
        const char* m_szDetail;
    } choices[] = {
        {1, R"({"dialog": "FakeDialog", "widget": "fakeCheck", "checked": true})"},
        {2, R"({"dialog": "FakeDialog", "widget": "fakeCombo", "index": 2})"},
        {3, R"({"dialog": "FakeDialog", "table": "fakeTable", "row": 0, "column": 1, "text": "Relink"})"},
    };
    for (const auto& choice : choices) {
        EXPECT_EQ(QJsonDocument::fromJson(choice.m_szDetail).object(),
                  m_kRun.Step(choice.m_iStep).value(QStringLiteral("detail")).toObject())
            << "step " << choice.m_iStep;
    }

    const QJsonArray dumps = m_kRun.Report().value(QStringLiteral("dialog_dumps")).toArray();
    ASSERT_EQ(1, dumps.size());
    const QJsonObject dump = dumps.first().toObject();
    EXPECT_EQ(4, dump.value(QStringLiteral("step")).toInt());
    EXPECT_EQ(QStringLiteral("FakeDialog"), dump.value(QStringLiteral("dialog")).toString());
    const struct
    {
        const char* m_szWidget;
        const char* m_szKey;
        QJsonValue m_kValue;
    } fields[] = {
        {"fakeCombo", "current_text", QStringLiteral("Gamma")},
        {"fakeCombo", "hidden_rows", QJsonArray({1})},
        {"fakeCheck", "checked", true},
        {"fakeHiddenCheck", "visible", false}, // hidden in a shown dialog
        {"fakeDisabledButton", "enabled", false},
        {"fakeTable", "headers", QJsonArray({QStringLiteral("Name"), QStringLiteral("Action")})},
    };
    for (const auto& field : fields) {
        EXPECT_EQ(field.m_kValue, Widget(dump, QString::fromLatin1(field.m_szWidget)).value(QLatin1String(field.m_szKey)))
            << field.m_szWidget << "." << field.m_szKey;
    }
    // Table cells: item text, or what the cell's widget shows and whether it can be changed.
    const QJsonArray cells = Widget(dump, QStringLiteral("fakeTable")).value(QStringLiteral("cells")).toArray();
    ASSERT_EQ(2, cells.size());
    EXPECT_EQ(QStringLiteral("Row A"), cells.at(0).toArray().at(0).toString());
    const QJsonObject rowCombo = cells.at(0).toArray().at(1).toObject();
    EXPECT_EQ(QStringLiteral("Relink"), rowCombo.value(QStringLiteral("text")).toString());
    EXPECT_TRUE(rowCombo.value(QStringLiteral("enabled")).toBool());
    EXPECT_FALSE(cells.at(1).toArray().at(1).toObject().value(QStringLiteral("enabled")).toBool(true));
}

TEST_F(hostScriptRunner, FailedStepsNameTheStepAndTheRunGoesOn)
{
    const struct
    {
        const char* m_szStep;
        const char* m_szError;
    } cases[] = {
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
    };
    for (const auto& item : cases) {
        const QByteArray script = QByteArray(R"({"steps": [{"step": "trigger", "action": "fakeDialogAction"}, )") +
                                  item.m_szStep + R"(, {"step": "close_dialog"}]})";
        m_kRun.m_kReport = CReport();
        EXPECT_EQ(QV::kFail, m_kRun.Run(script)) << item.m_szStep;
        EXPECT_EQ(QStringLiteral("failed"), m_kRun.Step(1).value(QStringLiteral("status")).toString()) << item.m_szStep;
        EXPECT_TRUE(StepError(1).contains(QString::fromUtf8(item.m_szError))) << StepError(1).toStdString();
        EXPECT_EQ(QStringLiteral("ok"), m_kRun.Step(2).value(QStringLiteral("status")).toString())
            << item.m_szStep << ": the run must go on after a failed step";
    }
}

TEST_F(hostScriptRunner, AClickFallsBackWhenItsButtonCannotBePressed)
{
    const QV::Result result = m_kRun.Run(R"({"steps": [
        {"step": "trigger", "action": "fakeDialogAction"},
        {"step": "click", "widget": "fakeDisabledButton", "fallback": "fakeCancelButton"},
        {"step": "snapshot_actions", "only_if_clicked": "fakeDisabledButton"},
        {"step": "snapshot_actions", "only_if_clicked": "fakeCancelButton"}
    ]})");
    EXPECT_EQ(QV::kOk, result);
    EXPECT_EQ(QStringLiteral("fakeCancelButton"),
              m_kRun.Step(1).value(QStringLiteral("detail")).toObject().value(QStringLiteral("clicked")).toString());
    EXPECT_EQ(QStringLiteral("skipped"), m_kRun.Step(2).value(QStringLiteral("status")).toString());
    const QJsonArray snapshots = m_kRun.Report().value(QStringLiteral("action_snapshots")).toArray();
    ASSERT_EQ(1, snapshots.size());
    EXPECT_EQ(3, snapshots.first().toObject().value(QStringLiteral("step")).toInt());
}

TEST_F(hostScriptRunner, TheWatchdogEndsARunThatDoesNotFinish)
{
    const QV::Result result = m_kRun.Run(R"({"watchdog_ms": 300, "steps": [
        {"step": "trigger", "action": "fakeDialogAction"},
        {"step": "wait_processes", "count": 5, "timeout_ms": 600000},
        {"step": "clear_log"}
    ]})");
    EXPECT_EQ(QV::kFail, result);
    const QJsonArray errors = m_kRun.Report().value(QStringLiteral("errors")).toArray();
    ASSERT_EQ(1, errors.size());
    EXPECT_TRUE(errors.first().toString().startsWith(QStringLiteral("watchdog: the run did not finish within 300 ms")))
        << errors.first().toString().toStdString();
    EXPECT_TRUE(StepError(1).contains(QStringLiteral("stopped by the watchdog with 0 of 5 processes logged")))
        << StepError(1).toStdString();
    EXPECT_EQ(QStringLiteral("not_run"), m_kRun.Step(2).value(QStringLiteral("status")).toString());
    // The dialog was closed (rejected) so that the plug-in code returned.
    EXPECT_EQ(QStringList{QStringLiteral("check=0;combo=0;activated=-1;row0=Create|0")},
              UsageSteps(*m_kRun.m_pHost, QStringLiteral("FakeDialogClosed")));
}

TEST_F(hostScriptRunner, AScriptThatEndsWithADialogOpenFails)
{
    EXPECT_EQ(QV::kFail, m_kRun.Run(R"({"steps": [{"step": "trigger", "action": "fakeDialogAction"}]})"));
    const QJsonArray errors = m_kRun.Report().value(QStringLiteral("errors")).toArray();
    ASSERT_EQ(1, errors.size());
    EXPECT_EQ(QStringLiteral("the script ended with dialog \"FakeDialog\" still open; it was closed"), errors.first().toString());
}

TEST_F(hostScriptRunner, InjectedFailuresAndQueuedAnswersReachThePlugin)
{
    const QV::Result result = m_kRun.Run(R"({"steps": [
        {"step": "select", "ids": ["box", "lamp"]},
        {"step": "fail", "operation": "ExportGoZ", "code": "0x80000005", "nth": 2},
        {"step": "answer_messages", "buttons": [65536]},
        {"step": "trigger", "action": "fakeCallAction"},
        {"step": "clear_failures"},
        {"step": "trigger", "action": "fakeCallAction"}
    ]})");
    EXPECT_EQ(QV::kOk, result);
    const QList<CCallRecord> exports = m_kRun.m_pHost->CallLog().Of(QStringLiteral("ExportGoZ"));
    ASSERT_EQ(4, exports.size());
    EXPECT_FALSE(exports.at(0).m_bInjected);
    EXPECT_TRUE(exports.at(1).m_bInjected);
    EXPECT_EQ(QStringLiteral("lamp"), exports.at(1).m_kArgs.first());
    EXPECT_FALSE(exports.at(3).m_bInjected);
    ASSERT_EQ(2, m_kRun.m_pHost->MessageBoxes().size());
    EXPECT_EQ(QStringLiteral("Fake: exported 1"), m_kRun.m_pHost->MessageBoxes().at(0).m_strText);
    EXPECT_EQ(QStringLiteral("Fake: exported 2"), m_kRun.m_pHost->MessageBoxes().at(1).m_strText);
    EXPECT_EQ((QStringList{QStringLiteral("65536|65536"), QStringLiteral("1024|1024")}),
              UsageSteps(*m_kRun.m_pHost, QStringLiteral("FakeAnswer")));
    EXPECT_TRUE(QFileInfo(QStringLiteral("C:/Users/Public/Pixologic/GoZProjects/Default/Desk Lamp.goz")).isFile());
}

TEST_F(hostScriptRunner, EachCallCarriesTheStepThatWasRunning)
{
    ASSERT_EQ(QV::kOk, m_kRun.Run(R"({"steps": [
        {"step": "trigger", "action": "fakeDialogAction"},
        {"step": "click", "widget": "fakeNestedButton"},
        {"step": "dump_dialog"},
        {"step": "click", "widget": "fakeNestedClose"},
        {"step": "click", "widget": "fakeCancelButton", "dialog": "FakeDialog"},
        {"step": "select", "ids": ["box"]},
        {"step": "trigger", "action": "fakeCallAction"}
    ]})"));
    // Steps go to the innermost dialog first. A dialog returns to the step that opened it: the nested
    // one to its button's click, the outer one to the trigger, although later steps ran meanwhile.
    QStringList calls;
    for (const CCallRecord& record : m_kRun.m_pHost->CallLog().Records()) {
        if (record.m_strOperation == QLatin1String("RecordUsageStep")) {
            calls << record.m_kArgs.join(QLatin1Char('|')) + QLatin1Char('@') + QString::number(record.m_iStep);
        } else if (record.m_strOperation == QLatin1String("ExportGoZ")) {
            calls << record.m_kArgs.value(0) + QLatin1Char('@') + QString::number(record.m_iStep);
        }
    }
    EXPECT_EQ((QStringList{QStringLiteral("FakeNestedClosed||1@1"),
                           QStringLiteral("FakeDialogClosed|check=0;combo=0;activated=-1;row0=Create|0@0"),
                           QStringLiteral("box@6"), QStringLiteral("FakeAnswer|1024|1024@6")}),
              calls);
    const QJsonArray dumps = m_kRun.Report().value(QStringLiteral("dialog_dumps")).toArray();
    ASSERT_EQ(1, dumps.size());
    EXPECT_EQ(QStringLiteral("FakeNestedDialog"), dumps.first().toObject().value(QStringLiteral("dialog")).toString());
    // Once the run is over, calls belong to no step.
    m_kRun.m_pHost->Query()->GetMainWindow();
    EXPECT_EQ(-1, m_kRun.m_pHost->CallLog().Records().last().m_iStep);
}

TEST_F(hostScriptRunner, TheCallLogTellsWhetherAnExportReplacedAFile)
{
    const QString path = QStringLiteral("C:/Users/Public/Pixologic/GoZProjects/Default/Box.goz");
    const struct
    {
        const char* m_szCase;
        bool m_bDeleteFirst;
        bool m_bReplaced;
    } cases[] = {
        {"first export", false, false},
        {"the same name again", false, true},
        {"after the earlier file was deleted", true, false},
    };
    for (const auto& item : cases) {
        if (item.m_bDeleteFirst) {
            ASSERT_TRUE(QFile::remove(path)) << item.m_szCase;
        }
        m_kRun.m_pHost->CallLog().Clear();
        ASSERT_EQ(QV::kOk, m_kRun.Run(R"({"steps": [{"step": "select", "ids": ["box"]},
                                                    {"step": "trigger", "action": "fakeCallAction"}]})"));
        for (const CCallRecord& record : m_kRun.m_pHost->CallLog().Records()) {
            const bool isExport = record.m_strOperation == QLatin1String("ExportGoZ");
            ASSERT_EQ(isExport ? 1 : 0, record.m_kWrites.size()) << item.m_szCase << ": " << record.m_strOperation.toStdString();
            if (isExport) {
                EXPECT_EQ(path, record.m_kWrites.first().m_strPath) << item.m_szCase;
                EXPECT_EQ(item.m_bReplaced, record.m_kWrites.first().m_bReplaced) << item.m_szCase;
            }
        }
        EXPECT_EQ(1, m_kRun.m_pHost->CallLog().Count(QStringLiteral("ExportGoZ"))) << item.m_szCase;
    }
}

TEST_F(hostScriptRunner, HostStepsChangeTheSceneAndSnapshotsRecordIt)
{
    const QV::Result result = m_kRun.Run(R"({"steps": [
        {"step": "select", "ids": ["statue"]},
        {"step": "set_current_avatar", "id": null},
        {"step": "set_playing", "playing": true},
        {"step": "snapshot_actions", "comment": "playing"},
        {"step": "pick", "ids": ["crate"]},
        {"step": "set_blend_shape_editing", "id": "hero", "editing": true},
        {"step": "clear_log"}
    ]})");
    EXPECT_EQ(QV::kOk, result);
    const CScene& scene = m_kRun.m_pHost->Scene();
    EXPECT_EQ(QStringList{QStringLiteral("crate")}, scene.PickedIds());
    EXPECT_TRUE(scene.State().m_strCurrentAvatar.isEmpty());
    EXPECT_TRUE(scene.Find(QStringLiteral("hero"))->m_bBlendShapeEditing);
    EXPECT_TRUE(m_kRun.m_pHost->CallLog().Records().isEmpty());
    EXPECT_EQ(1, m_kRun.m_pPlugins->Instance()->property("selectionChanges").toInt());

    const QJsonObject snapshot = m_kRun.Report().value(QStringLiteral("action_snapshots")).toArray().first().toObject();
    EXPECT_EQ(QStringLiteral("Ünïcödé Statue"),
              snapshot.value(QStringLiteral("selection")).toArray().first().toObject().value(QStringLiteral("name")).toString());
    EXPECT_TRUE(snapshot.value(QStringLiteral("current_avatar")).isNull());
    EXPECT_EQ(QStringLiteral("playing"), m_kRun.Step(3).value(QStringLiteral("comment")).toString());
}

// A dialog the plug-in keeps hidden until data comes back, as the receive dialog is.
class CHiddenTableDialog
{
public:
    CHiddenTableDialog()
    {
        m_kDialog.setObjectName(QStringLiteral("HiddenDialog"));
        m_pTable = new QTableWidget(3, 2, &m_kDialog);
        m_pTable->setObjectName(QStringLiteral("hiddenTable"));
        m_pTable->setItem(0, 0, new QTableWidgetItem(QStringLiteral("Vase")));
        auto* disabled = new QTableWidgetItem(QStringLiteral("Lamp"));
        disabled->setFlags(Qt::NoItemFlags);
        m_pTable->setItem(1, 0, disabled);
        m_pTable->setItem(2, 0, new QTableWidgetItem(QStringLiteral("Rock")));
        // Check boxes centred in a container, as tables often hold them.
        for (int row = 0; row < 3; ++row) {
            auto* box = new QWidget(m_pTable);
            auto* check = new QCheckBox(box);
            (new QHBoxLayout(box))->addWidget(check);
            check->setEnabled(row != 1);
            m_pTable->setCellWidget(row, 1, box);
            m_kChecks << check;
        }
        m_pTable->setRowHidden(2, true);
    }

    QDialog m_kDialog;
    QTableWidget* m_pTable = nullptr;
    QList<QCheckBox*> m_kChecks;
};

TEST_F(hostScriptRunner, TablesOfAHiddenDialogAreDumpedAndTheirCheckBoxesToggled)
{
    CHiddenTableDialog hidden;
    const QV::Result result = m_kRun.Run(R"({"steps": [
        {"step": "dump_dialog", "dialog": "HiddenDialog"},
        {"step": "table_set_checked", "dialog": "HiddenDialog", "table": "hiddenTable", "row": 0, "column": 1, "checked": true},
        {"step": "table_set_checked", "dialog": "HiddenDialog", "table": "hiddenTable", "row": 0, "column": 1, "checked": true},
        {"step": "dump_table", "dialog": "HiddenDialog", "table": "hiddenTable"}
    ]})");
    EXPECT_EQ(QV::kOk, result) << QJsonDocument(m_kRun.Report()).toJson().toStdString();
    EXPECT_TRUE(hidden.m_kChecks[0]->isChecked()) << "checked once; the second step finds it checked already";
    EXPECT_FALSE(hidden.m_kDialog.isVisible());
    EXPECT_FALSE(m_kRun.Report().value(QStringLiteral("dialog_dumps")).toArray().first().toObject().value(QStringLiteral("visible")).toBool());

    const QJsonObject dump = m_kRun.Report().value(QStringLiteral("table_dumps")).toArray().first().toObject();
    EXPECT_EQ(3, dump.value(QStringLiteral("step")).toInt());
    EXPECT_EQ(QStringLiteral("HiddenDialog"), dump.value(QStringLiteral("dialog")).toString());
    const QJsonArray rows = dump.value(QStringLiteral("rows")).toArray();
    ASSERT_EQ(3, rows.size());
    const struct
    {
        int m_iRow;
        const char* m_szText;
        bool m_bEnabled;
        bool m_bVisible;
        bool m_bChecked;
        bool m_bCheckEnabled;
    } expected[] = {
        {0, "Vase", true, true, true, true},
        {1, "Lamp", false, true, false, false},
        {2, "Rock", true, false, false, true},
    };
    for (const auto& row : expected) {
        const QJsonArray cells = rows.at(row.m_iRow).toObject().value(QStringLiteral("cells")).toArray();
        const QJsonObject text = cells.at(0).toObject();
        const QJsonObject check = cells.at(1).toObject();
        EXPECT_EQ(QString::fromUtf8(row.m_szText), text.value(QStringLiteral("text")).toString());
        EXPECT_EQ(row.m_bEnabled, text.value(QStringLiteral("enabled")).toBool()) << row.m_szText;
        EXPECT_EQ(row.m_bVisible, text.value(QStringLiteral("visible")).toBool()) << row.m_szText;
        EXPECT_EQ(row.m_bVisible, check.value(QStringLiteral("visible")).toBool()) << row.m_szText;
        EXPECT_EQ(row.m_bChecked, check.value(QStringLiteral("checked")).toBool()) << row.m_szText;
        EXPECT_EQ(row.m_bCheckEnabled, check.value(QStringLiteral("enabled")).toBool()) << row.m_szText;
    }
}

TEST_F(hostScriptRunner, TableCheckBoxesAreOperatedOnlyAsAUserCould)
{
    CHiddenTableDialog hidden;
    const struct
    {
        const char* m_szStep;
        const char* m_szError;
    } cases[] = {
        {R"({"step": "table_set_checked", "dialog": "HiddenDialog", "table": "hiddenTable", "row": 1, "column": 1, "checked": true})",
         "the check box in cell (1, 1) of table \"hiddenTable\" is disabled"},
        {R"({"step": "table_set_checked", "dialog": "HiddenDialog", "table": "hiddenTable", "row": 2, "column": 1, "checked": true})",
         "is hidden"},
        {R"({"step": "table_set_checked", "dialog": "HiddenDialog", "table": "hiddenTable", "row": 0, "column": 0, "checked": true})",
         "cell (0, 0) of table \"hiddenTable\" holds no check box"},
        {R"({"step": "table_set_checked", "dialog": "HiddenDialog", "table": "hiddenTable", "row": 3, "column": 1, "checked": true})",
         "has no cell (3, 1); it has 3 rows and 2 columns"},
        {R"({"step": "dump_table", "dialog": "HiddenDialog", "table": "noTable"})", "no table \"noTable\""},
        {R"({"step": "dump_scene", "ids": ["ghost"]})", "the scene has no object \"ghost\""},
        {R"({"step": "wait_goz_return", "timeout_ms": 10})", "this run has no channel for the return launcher"},
        {R"({"step": "set_zbrush_return", "settings": null})", "this run has no settings file for the ZBrush stand-in"},
    };
    for (const auto& item : cases) {
        const QByteArray script = QByteArray(R"({"steps": [{"step": "clear_log"}, )") + item.m_szStep + "]}";
        m_kRun.m_kReport = CReport();
        EXPECT_EQ(QV::kFail, m_kRun.Run(script)) << item.m_szStep;
        EXPECT_TRUE(StepError(1).contains(QString::fromUtf8(item.m_szError))) << StepError(1).toStdString();
    }
    for (QCheckBox* check : hidden.m_kChecks) {
        EXPECT_FALSE(check->isChecked());
    }
}

TEST_F(hostScriptRunner, SceneDumpsHoldTheWholeMeshOfTheObjectsAsked)
{
    ASSERT_EQ(QV::kOk, m_kRun.Run(R"({"steps": [{"step": "dump_scene", "ids": ["box"]}, {"step": "dump_scene"}]})"));
    const QJsonArray dumps = m_kRun.Report().value(QStringLiteral("scene_dumps")).toArray();
    ASSERT_EQ(2, dumps.size());
    const QJsonArray one = dumps.at(0).toObject().value(QStringLiteral("objects")).toArray();
    ASSERT_EQ(1, one.size());
    EXPECT_EQ(QStringLiteral("box"), one.at(0).toObject().value(QStringLiteral("id")).toString());
    EXPECT_EQ(QJsonDocument::fromJson(R"({"vertices": [], "faces": []})").object(),
              one.at(0).toObject().value(QStringLiteral("mesh")).toObject());
    EXPECT_EQ(m_kRun.m_pHost->Scene().ObjectCount(), dumps.at(1).toObject().value(QStringLiteral("objects")).toArray().size());
}

} // namespace

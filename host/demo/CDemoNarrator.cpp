#include "CDemoNarrator.h"

#include "CDumpedTable.h"
#include "CRoundTripStory.h"
#include "DemoJson.h"

#include <QJsonArray>
#include <QList>
#include <QMap>
#include <QSet>
#include <QStringList>

#include <algorithm>
#include <limits>

namespace MV {
namespace Host {

namespace {

using namespace DemoJson;

const QString kReturnLauncher = QStringLiteral("GoZBrushToFM.exe");

QString ActionLabel(const QJsonObject& action)
{
    const QString text = Text(action, "text").remove(QLatin1Char('&'));
    const QString name = Text(action, "name");
    return text.isEmpty() ? name : QStringLiteral("%1 (%2)").arg(text, name);
}

QJsonObject StepRecord(const QJsonObject& report, int index)
{
    for (const QJsonValue& step : Array(report, "steps")) {
        if (step.toObject().value(QStringLiteral("index")).toInt(-1) == index) {
            return step.toObject();
        }
    }
    return QJsonObject();
}

// Object paths of the project folder are told by their names, the folder once.
QString PathList(const QStringList& paths)
{
    const bool allInProject = std::all_of(paths.begin(), paths.end(), [](const QString& path) {
        return path.startsWith(kProjectFolder) && !path.mid(kProjectFolder.size()).contains(QLatin1Char('/'));
    });
    if (!allInProject || paths.isEmpty()) {
        return paths.join(QStringLiteral(", "));
    }
    QStringList names;
    for (const QString& path : paths) {
        names << path.mid(kProjectFolder.size());
    }
    return names.join(QStringLiteral(", ")) + QStringLiteral(" (in %1)").arg(kProjectFolder);
}

// A press of a dialog button by the script, with the steps that led up to it and what the
// plug-in did while it was pressed.
struct CPress
{
    QJsonObject m_kStep;
    int m_iFirstStep = 0; // steps from here up to the press belong to it
    int m_iSend = 0;      // 1, 2, ... for presses that had the host export meshes; else 0
    bool m_bExported = false;
    QJsonArray m_kWrites; // {"path", "replaced", "object", "operation"}
    QStringList m_kMessages;
    QJsonArray m_kProcesses;

    int Index() const { return m_kStep.value(QStringLiteral("index")).toInt(); }
};

// What the narrative tells beside the presses.
struct CStory
{
    QList<CPress> m_kPresses;
    QStringList m_kOtherMessages;
    QJsonArray m_kOtherProcesses;
};

int PressAt(const QList<CPress>& presses, int step)
{
    for (int i = 0; i < presses.size(); ++i) {
        if (presses.at(i).Index() == step) {
            return i;
        }
    }
    return -1;
}

void GatherPresses(const QJsonObject& report, CStory& story)
{
    int first = 0;
    for (const QJsonValue& value : Array(report, "steps")) {
        const QJsonObject step = value.toObject();
        if (step.value(QStringLiteral("detail")).toObject().contains(QStringLiteral("clicked"))) {
            CPress press;
            press.m_kStep = step;
            press.m_iFirstStep = first;
            first = press.Index() + 1;
            story.m_kPresses << press;
        }
    }
}

// The host's writes and message boxes, by the step during which the plug-in asked for them.
void GatherCalls(const QJsonObject& report, CStory& story)
{
    QList<int> boxSteps;
    for (const QJsonValue& value : Array(report, "call_log")) {
        const QJsonObject call = value.toObject();
        const int step = call.value(QStringLiteral("step")).toInt(-1);
        const QString operation = Text(call, "operation");
        if (operation == QLatin1String("ShowMessageBox") && !call.contains(QStringLiteral("injected"))) {
            boxSteps << step;
        }
        const int press = PressAt(story.m_kPresses, step);
        if (press < 0) {
            continue;
        }
        if (operation == QLatin1String("ExportGoZ")) {
            story.m_kPresses[press].m_bExported = true;
        }
        for (const QJsonValue& write : Array(call, "wrote")) {
            QJsonObject entry = write.toObject();
            entry.insert(QStringLiteral("object"), Array(call, "args").at(0).toString());
            entry.insert(QStringLiteral("operation"), operation);
            story.m_kPresses[press].m_kWrites.append(entry);
        }
    }
    // Every box that was shown has one such call, in the same order.
    const QJsonArray boxes = Array(report, "message_boxes");
    for (int i = 0; i < boxes.size(); ++i) {
        const QString text = Text(boxes.at(i).toObject(), "text");
        const int press = PressAt(story.m_kPresses, boxSteps.value(i, -1));
        if (press >= 0) {
            story.m_kPresses[press].m_kMessages << text;
        } else {
            story.m_kOtherMessages << text;
        }
    }
    int send = 0;
    for (CPress& press : story.m_kPresses) {
        // An import writes the avatar's motion aside; only presses that exported are sends.
        press.m_iSend = press.m_bExported ? ++send : 0;
    }
}

// Processes the script waited for after a press belong to that press.
void GatherProcesses(const QJsonObject& report, CStory& story)
{
    const QJsonArray processes = Array(report, "processes");
    QVector<bool> told(processes.size(), false);
    int taken = 0;
    int press = -1;
    for (const QJsonValue& value : Array(report, "steps")) {
        const QJsonObject step = value.toObject();
        const int index = step.value(QStringLiteral("index")).toInt();
        while (press + 1 < story.m_kPresses.size() && story.m_kPresses.at(press + 1).Index() <= index) {
            ++press;
        }
        const QJsonObject detail = step.value(QStringLiteral("detail")).toObject();
        if (Text(step, "step") != QLatin1String("wait_processes") || !detail.contains(QStringLiteral("found"))) {
            continue;
        }
        const int found = std::min(detail.value(QStringLiteral("found")).toInt(), static_cast<int>(processes.size()));
        for (; taken < found; ++taken) {
            if (press >= 0) {
                story.m_kPresses[press].m_kProcesses.append(processes.at(taken));
                told[taken] = true;
            }
        }
    }
    // A send that ZBrush answers is waited for through its return; its programs carry the
    // step that started them.
    for (int i = 0; i < processes.size(); ++i) {
        if (told.at(i)) {
            continue;
        }
        const int started = PressAt(story.m_kPresses, processes.at(i).toObject().value(QStringLiteral("step")).toInt(-1));
        if (started >= 0) {
            story.m_kPresses[started].m_kProcesses.append(processes.at(i));
        } else {
            story.m_kOtherProcesses.append(processes.at(i));
        }
    }
}

void TellPlugin(const QJsonObject& report, QStringList& out)
{
    const QJsonObject plugin = report.value(QStringLiteral("plugin")).toObject();
    out << QStringLiteral("Plug-in: %1").arg(Text(plugin, "path"));
    if (!plugin.value(QStringLiteral("loaded")).toBool()) {
        out << QStringLiteral("  It was not loaded:");
        for (const QJsonValue& error : Array(plugin, "errors")) {
            out << QStringLiteral("  - ") + error.toString();
        }
        return;
    }
    out << QStringLiteral("  Loaded; Initialize returned %1.").arg(Text(plugin, "initialize_result"));
    QStringList menus;
    for (const QJsonValue& menu : Array(plugin, "menus")) {
        menus << Quoted(Text(menu.toObject(), "title").remove(QLatin1Char('&')));
    }
    QStringList toolBars;
    for (const QJsonValue& toolBar : Array(plugin, "tool_bars")) {
        toolBars << Quoted(Text(toolBar.toObject(), "name"));
    }
    out << QStringLiteral("  It added the menus %1 and the tool bars %2 to the host window.")
               .arg(menus.isEmpty() ? QStringLiteral("(none)") : menus.join(QStringLiteral(", ")),
                    toolBars.isEmpty() ? QStringLiteral("(none)") : toolBars.join(QStringLiteral(", ")));
}

void TellSnapshots(const QJsonObject& report, QStringList& out)
{
    const QJsonArray snapshots = Array(report, "action_snapshots");
    if (snapshots.isEmpty()) {
        return;
    }
    out << QString() << QStringLiteral("Which commands each situation enables:");
    for (const QJsonValue& value : snapshots) {
        const QJsonObject snapshot = value.toObject();
        QString label = Text(StepRecord(report, snapshot.value(QStringLiteral("step")).toInt()), "comment");
        if (label.isEmpty()) {
            QStringList names;
            for (const QJsonValue& selected : Array(snapshot, "selection")) {
                names << Quoted(Text(selected.toObject(), "name"));
            }
            label = names.isEmpty() ? QStringLiteral("nothing selected")
                                    : names.join(QStringLiteral(", ")) + QStringLiteral(" selected");
        }
        QStringList enabled;
        for (const QJsonValue& action : Array(snapshot, "actions")) {
            // A sub-menu's own action opens the menu; it is no command.
            if (action.toObject().value(QStringLiteral("menu")).toBool()) {
                continue;
            }
            if (action.toObject().value(QStringLiteral("enabled")).toBool()) {
                enabled << ActionLabel(action.toObject());
            }
        }
        out << QStringLiteral("  - %1: %2").arg(label, enabled.isEmpty() ? QStringLiteral("no command is enabled")
                                                                         : QStringLiteral("enabled: ") + enabled.join(QStringLiteral(", ")));
    }
}

void TellDump(const QJsonObject& dump, const QString& comment, QMap<QString, CDumpedTable>& tables, QStringList& out)
{
    const QString title = Text(dump, "title");
    const QString heading = QStringLiteral("  Dialog %1%2 at step %3")
                                .arg(Quoted(Text(dump, "dialog")),
                                     title.isEmpty() ? QString() : QStringLiteral(" (") + title + QStringLiteral(")"))
                                .arg(dump.value(QStringLiteral("step")).toInt());
    const QString why = comment.isEmpty() ? QString() : QStringLiteral(" (") + comment + QStringLiteral(")");
    if (!dump.value(QStringLiteral("visible")).toBool(true)) {
        out << heading + QStringLiteral(" is hidden") + why + QStringLiteral(".");
        return;
    }
    out << heading + why + QStringLiteral(":");
    QStringList disabledGroups;
    QStringList checked;
    int unchecked = 0;
    QStringList disabledOptions;
    QStringList choices;
    QStringList buttons;
    for (const QJsonValue& value : Array(dump, "widgets")) {
        const QJsonObject widget = value.toObject();
        if (!widget.value(QStringLiteral("visible")).toBool()) {
            continue;
        }
        const QString name = Text(widget, "name");
        const QString type = Text(widget, "class");
        const bool enabled = widget.value(QStringLiteral("enabled")).toBool();
        const QString state = enabled ? QString() : QStringLiteral(" (disabled)");
        if (widget.contains(QStringLiteral("cells"))) {
            const CDumpedTable table = CDumpedTable::FromDialogDump(widget);
            table.Tell(out);
            tables.insert(table.Name(), table);
        } else if (widget.contains(QStringLiteral("current_text"))) {
            QStringList hidden;
            const QStringList items = Strings(Array(widget, "items"));
            for (const QJsonValue& row : Array(widget, "hidden_rows")) {
                hidden << Quoted(items.value(row.toInt()));
            }
            choices << QStringLiteral("%1 = %2%3%4")
                           .arg(name, Quoted(Text(widget, "current_text")), state,
                                hidden.isEmpty() ? QString()
                                                 : QStringLiteral(" (hidden in its list: %1)").arg(hidden.join(QStringLiteral(", "))));
        } else if (type == QLatin1String("QGroupBox")) {
            if (!enabled) {
                disabledGroups << name;
            }
        } else if (widget.contains(QStringLiteral("checked"))) {
            if (widget.value(QStringLiteral("checked")).toBool()) {
                checked << name + state;
            } else {
                ++unchecked;
                if (!enabled) {
                    disabledOptions << name;
                }
            }
        } else if (type.endsWith(QLatin1String("Button"))) {
            buttons << name + state;
        }
    }
    if (!checked.isEmpty() || unchecked > 0) {
        QString line = QStringLiteral("    Checked: %1; %2 other option(s) unchecked")
                           .arg(checked.isEmpty() ? QStringLiteral("nothing") : checked.join(QStringLiteral(", ")))
                           .arg(unchecked);
        if (!disabledOptions.isEmpty()) {
            line += QStringLiteral(" (disabled: %1)").arg(disabledOptions.join(QStringLiteral(", ")));
        }
        out << line;
    }
    if (!disabledGroups.isEmpty()) {
        out << QStringLiteral("    Disabled groups: ") + disabledGroups.join(QStringLiteral(", "));
    }
    if (!choices.isEmpty()) {
        out << QStringLiteral("    Chosen: ") + choices.join(QStringLiteral(", "));
    }
    if (!buttons.isEmpty()) {
        out << QStringLiteral("    Buttons: ") + buttons.join(QStringLiteral(", "));
    }
}

// The latest dump before step, for naming rows and items the script chose.
QJsonObject DumpBefore(const QJsonObject& report, int step)
{
    QJsonObject latest;
    for (const QJsonValue& value : Array(report, "dialog_dumps")) {
        if (value.toObject().value(QStringLiteral("step")).toInt() < step) {
            latest = value.toObject();
        }
    }
    return latest;
}

QJsonObject DumpedWidget(const QJsonObject& dump, const QString& name)
{
    for (const QJsonValue& widget : Array(dump, "widgets")) {
        if (Text(widget.toObject(), "name") == name) {
            return widget.toObject();
        }
    }
    return QJsonObject();
}

// The table as the story last showed it, else as the latest dialog dump before step held it.
CDumpedTable KnownTable(const QJsonObject& report, const QMap<QString, CDumpedTable>& tables, const QString& name, int step)
{
    if (tables.contains(name)) {
        return tables.value(name);
    }
    return CDumpedTable::FromDialogDump(DumpedWidget(DumpBefore(report, step), name));
}

QString TellChoice(const QJsonObject& report, const QJsonObject& step, const QMap<QString, CDumpedTable>& tables)
{
    const int index = step.value(QStringLiteral("index")).toInt();
    const QString name = Text(step, "step");
    const QJsonObject detail = step.value(QStringLiteral("detail")).toObject();
    const QString comment = Text(step, "comment");
    const QString end = comment.isEmpty() ? QStringLiteral(".") : QStringLiteral(": ") + comment + QStringLiteral(".");
    if (name == QLatin1String("table_combo_choose") || name == QLatin1String("table_set_checked")) {
        const int row = detail.value(QStringLiteral("row")).toInt();
        const CDumpedTable table = KnownTable(report, tables, Text(detail, "table"), index);
        const QString mesh = table.RowName(row);
        const QString where = QStringLiteral("row %1%2")
                                  .arg(row)
                                  .arg(mesh.isEmpty() ? QString() : QStringLiteral(" (") + mesh + QStringLiteral(")"));
        if (name == QLatin1String("table_set_checked")) {
            const int column = detail.value(QStringLiteral("column")).toInt();
            return QStringLiteral("  At step %1 the demo %2 the %3 box in %4%5")
                .arg(index)
                .arg(detail.value(QStringLiteral("checked")).toBool() ? QStringLiteral("checked") : QStringLiteral("unchecked"),
                     Quoted(table.Header(column)), where, end);
        }
        return QStringLiteral("  At step %1 the demo chose %2 in %3%4").arg(index).arg(Quoted(Text(detail, "text")), where, end);
    }
    if (name == QLatin1String("set_combo_index")) {
        const int item = detail.value(QStringLiteral("index")).toInt();
        const QString text = Array(DumpedWidget(DumpBefore(report, index), Text(detail, "widget")), "items").at(item).toString();
        return QStringLiteral("  At step %1 the demo chose item %2%3 of %4%5")
            .arg(index)
            .arg(item)
            .arg(text.isEmpty() ? QString() : QStringLiteral(" (") + Quoted(text) + QStringLiteral(")"), Text(detail, "widget"), end);
    }
    return QStringLiteral("  At step %1 the demo %2 %3%4")
        .arg(index)
        .arg(detail.value(QStringLiteral("checked")).toBool() ? QStringLiteral("checked") : QStringLiteral("unchecked"),
             Text(detail, "widget"), end);
}

QString ObjectName(const QJsonObject& report, const QString& id)
{
    for (const QJsonValue& object : Array(report, "scene")) {
        if (Text(object.toObject(), "id") == id) {
            return Text(object.toObject(), "name");
        }
    }
    return id;
}

// The steps up to a press, in step order: what the demo saw, chose and set up before it.
void TellStepsBefore(const QJsonObject& report, const CPress& press, QStringList& out)
{
    static const QSet<QString> kChoices = {QStringLiteral("table_combo_choose"), QStringLiteral("set_combo_index"),
                                           QStringLiteral("set_checked"), QStringLiteral("table_set_checked")};
    // Host-state steps carry no detail; the story tells them by their comment when they have one.
    static const QSet<QString> kHostSteps = {QStringLiteral("select"), QStringLiteral("pick"),
                                             QStringLiteral("set_current_avatar"), QStringLiteral("set_playing"),
                                             QStringLiteral("set_expression_editing"),
                                             QStringLiteral("set_blend_shape_editing"), QStringLiteral("raise_data_changed"),
                                             QStringLiteral("raise_expression_goz"), QStringLiteral("raise_load_expression_motion")};
    QMap<QString, CDumpedTable> tables;
    for (const QJsonValue& value : Array(report, "steps")) {
        const QJsonObject step = value.toObject();
        const int index = step.value(QStringLiteral("index")).toInt();
        if (index < press.m_iFirstStep || index >= press.Index()) {
            continue;
        }
        const QString name = Text(step, "step");
        const bool ok = Text(step, "status") == QLatin1String("ok");
        const QJsonObject detail = step.value(QStringLiteral("detail")).toObject();
        if (name == QLatin1String("dump_dialog")) {
            for (const QJsonValue& dump : Array(report, "dialog_dumps")) {
                if (dump.toObject().value(QStringLiteral("step")).toInt() == index) {
                    TellDump(dump.toObject(), Text(step, "comment"), tables, out);
                }
            }
        } else if (name == QLatin1String("dump_table")) {
            for (const QJsonValue& dump : Array(report, "table_dumps")) {
                if (dump.toObject().value(QStringLiteral("step")).toInt() != index) {
                    continue;
                }
                const CDumpedTable table = CDumpedTable::FromTableDump(dump.toObject());
                if (tables.contains(table.Name())) {
                    table.TellChangeFrom(tables.value(table.Name()), out);
                } else {
                    out << QStringLiteral("  At step %1:").arg(index);
                    table.Tell(out);
                }
                tables.insert(table.Name(), table);
            }
        } else if (kChoices.contains(name) && ok) {
            out << TellChoice(report, step, tables);
        } else if (name == QLatin1String("set_zbrush_return") && ok) {
            out << QStringLiteral("  At step %1 the demo told ZBrush (the stand-in) what to send back from now on: %2.")
                       .arg(index)
                       .arg(CRoundTripStory::ReturnSettingsText(detail.value(QStringLiteral("settings"))));
        } else if (name == QLatin1String("wait_goz_return") && ok) {
            out << QStringLiteral("  At step %1 ZBrush's return came in: the return launcher told the host that %2 came "
                                  "back for the send at step %3, and the host raised GoZDataUpdated.")
                       .arg(index)
                       .arg(Strings(Array(detail, "object_list")).join(QStringLiteral(", ")))
                       .arg(detail.value(QStringLiteral("send_step")).toInt());
        } else if (name == QLatin1String("trigger") && ok) {
            // Opening a dialog goes without saying; a command that selects first is told.
            const QList<QJsonObject> selects = CallsOfStep(report, index, {QStringLiteral("SelectObjects")});
            if (selects.isEmpty()) {
                continue;
            }
            QString ids = Array(selects.last(), "args").at(0).toString();
            ids = ids.mid(1, ids.size() - 2);
            QStringList names;
            for (const QString& id : ids.split(QStringLiteral(", "), Qt::SkipEmptyParts)) {
                names << ObjectName(report, id);
            }
            // The report keeps no action name: the step's comment names the command.
            const QString comment = Text(step, "comment");
            out << QStringLiteral("  At step %1 the demo triggered %2; the plug-in selected %3.")
                       .arg(index)
                       .arg(comment.isEmpty() ? QStringLiteral("a command") : comment,
                            names.isEmpty() ? QStringLiteral("nothing") : JoinQuoted(names));
        } else if (kHostSteps.contains(name) && ok && !Text(step, "comment").isEmpty()) {
            out << QStringLiteral("  At step %1: %2.").arg(index).arg(Text(step, "comment"));
        }
    }
}

void TellWrites(const CPress& press, QMap<QString, int>& writtenBy, QStringList& out)
{
    if (press.m_kWrites.isEmpty()) {
        return;
    }
    const bool inProject = std::all_of(press.m_kWrites.begin(), press.m_kWrites.end(), [](const QJsonValue& write) {
        return Text(write.toObject(), "path").startsWith(kProjectFolder);
    });
    out << (inProject ? QStringLiteral("  The host exported into %1:").arg(kProjectFolder) : QStringLiteral("  The host wrote:"));
    // A send's own writes are compared with earlier sends only.
    QMap<QString, int> writtenNow;
    for (const QJsonValue& value : press.m_kWrites) {
        const QJsonObject write = value.toObject();
        const QString path = Text(write, "path");
        const bool replaced = write.value(QStringLiteral("replaced")).toBool();
        const int before = writtenBy.value(path, 0);
        QString what;
        if (before > 0 && !replaced) {
            what = QStringLiteral("the same name again; the copy from send %1 had already been deleted when the export wrote it").arg(before);
        } else if (before > 0) {
            what = QStringLiteral("over the copy from send %1").arg(before);
        } else if (replaced) {
            what = QStringLiteral("over a file that was already there");
        } else {
            what = QStringLiteral("new");
        }
        const QString operation = Text(write, "operation");
        const bool motion = operation == QLatin1String("SaveMotionFile") || operation == QLatin1String("SaveAvatarMotion");
        const QString shown = inProject ? path.mid(kProjectFolder.size()) : path;
        out << QStringLiteral("    - %1 (object %2%3): %4")
                   .arg(shown, Text(write, "object"), motion ? QStringLiteral(", its pose") : QString(), what);
        writtenNow.insert(path, press.m_iSend);
    }
    if (press.m_iSend == 0) {
        return;
    }
    for (auto it = writtenNow.cbegin(); it != writtenNow.cend(); ++it) {
        writtenBy.insert(it.key(), it.value());
    }
}

bool PlayedReturn(const CPress& press)
{
    return std::any_of(press.m_kProcesses.begin(), press.m_kProcesses.end(), [](const QJsonValue& process) {
        return process.toObject().contains(QStringLiteral("return"));
    });
}

// Detached programs log in whatever order they happen to start; the story tells them in
// the order the plug-in starts them, so it reads the same on every run.
int StartRank(const QString& program)
{
    static const QStringList order = {QStringLiteral("GoZMakeObjectPath.exe"), QStringLiteral("GoZBrushFromApp.exe")};
    const int rank = order.indexOf(program);
    return rank >= 0 ? rank : order.size();
}

void TellStarts(const CPress& press, QStringList& out)
{
    // The return launcher is ZBrush's, not the plug-in's: it is told with the return.
    const bool returned = PlayedReturn(press);
    QVector<QJsonObject> processes;
    for (const QJsonValue& value : press.m_kProcesses) {
        if (!(returned && Text(value.toObject(), "program") == kReturnLauncher)) {
            processes.append(value.toObject());
        }
    }
    std::stable_sort(processes.begin(), processes.end(), [](const QJsonObject& a, const QJsonObject& b) {
        const QString left = Text(a, "program");
        const QString right = Text(b, "program");
        const int leftRank = StartRank(left);
        const int rightRank = StartRank(right);
        return leftRank != rightRank ? leftRank < rightRank : left < right;
    });
    // Programs offered the same list are told together.
    QMap<QString, QStringList> programsByList;
    QStringList lists;
    for (const QJsonObject& process : processes) {
        const QString list = process.value(QStringLiteral("object_list")).isArray()
                                 ? PathList(Strings(Array(process, "object_list")))
                                 : QStringLiteral("no object list");
        if (!lists.contains(list)) {
            lists << list;
        }
        programsByList[list] << Text(process, "program");
    }
    for (const QString& list : lists) {
        const QStringList& programs = programsByList.value(list);
        out << QStringLiteral("  Started %1; %2 offered: %3")
                   .arg(programs.join(QStringLiteral(" and ")),
                        programs.size() > 1 ? QStringLiteral("each was") : QStringLiteral("it was"), list);
    }
    if (press.m_iSend > 0 && press.m_kProcesses.isEmpty()) {
        out << QStringLiteral("  No bridge program start was logged for this send.");
    }
}

void TellPress(const QJsonObject& report, const CPress& press, int nextPress, QMap<QString, int>& writtenBy,
               QStringList& out)
{
    const int index = press.Index();
    const QJsonObject detail = press.m_kStep.value(QStringLiteral("detail")).toObject();
    const QString title = press.m_iSend > 0 ? QStringLiteral("Send %1 (step %2)").arg(press.m_iSend).arg(index)
                                            : QStringLiteral("Step %1").arg(index);
    const QString comment = Text(press.m_kStep, "comment");
    out << QString() << title + (comment.isEmpty() ? QStringLiteral(":") : QStringLiteral(": ") + comment);

    TellStepsBefore(report, press, out);
    out << QStringLiteral("  At step %1 the demo pressed %2 in %3.").arg(index).arg(Text(detail, "clicked"), Quoted(Text(detail, "dialog")));
    for (const QString& message : press.m_kMessages) {
        out << QStringLiteral("  The plug-in showed the message %1.").arg(Quoted(message));
    }

    TellWrites(press, writtenBy, out);
    TellStarts(press, out);
    CRoundTripStory::TellReturn(press.m_kProcesses, out);
    CRoundTripStory::TellLoads(report, index, out);
    if (press.m_iSend == 0) {
        CRoundTripStory::TellSceneChange(report, index, nextPress, out);
    }
}

// Returned GoZ files, by path: what ZBrush (the stand-in) wrote into the project folder.
QSet<QString> ReturnedFiles(const QJsonObject& report)
{
    QSet<QString> paths;
    for (const QJsonValue& process : Array(report, "processes")) {
        const QJsonObject played = process.toObject().value(QStringLiteral("return")).toObject();
        for (const QJsonValue& file : Array(played, "files")) {
            paths.insert(kProjectFolder + Text(file.toObject(), "name") + QStringLiteral(".GoZ"));
        }
    }
    return paths;
}

void TellFiles(const QJsonObject& report, const QString& folder, const QString& title,
               const QMap<QString, int>& writtenBy, QStringList& out)
{
    QStringList lines;
    QMap<int, QStringList> bySend;
    QStringList returned;
    const QSet<QString> returnedPaths = ReturnedFiles(report);
    for (const QJsonValue& value : Array(report, "files")) {
        const QJsonObject file = value.toObject();
        const QString path = Text(file, "path");
        if (!path.startsWith(folder)) {
            continue;
        }
        if (writtenBy.contains(path)) {
            bySend[writtenBy.value(path)] << FileName(path);
            continue;
        }
        if (returnedPaths.contains(path)) {
            returned << FileName(path);
            continue;
        }
        QString line = QStringLiteral("  - %1 (%2 bytes)").arg(path).arg(file.value(QStringLiteral("size")).toInt());
        const QString text = Text(file, "text");
        if (path.endsWith(QLatin1String("GoZ_Config.txt"))) {
            for (const QString& textLine : text.split(QLatin1Char('\n'))) {
                if (textLine.trimmed().startsWith(QLatin1String("PATH"))) {
                    line += QStringLiteral(": ") + textLine.trimmed();
                }
            }
        } else if (file.contains(QStringLiteral("text")) && text.size() <= 120 && !text.contains(QLatin1Char('\n'))) {
            line += QStringLiteral(": ") + Quoted(text);
        } else if (file.contains(QStringLiteral("text")) && path.endsWith(QLatin1String(".txt"))) {
            const QStringList shown = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
            const bool paths = std::all_of(shown.begin(), shown.end(),
                                           [](const QString& item) { return item.startsWith(kProjectFolder); });
            line += QStringLiteral(": ") + (paths ? PathList(shown)
                                                  : shown.mid(0, 6).join(QStringLiteral(" | ")) +
                                                        (shown.size() > 6 ? QStringLiteral(" | ...") : QString()));
        }
        lines << line;
    }
    for (auto it = bySend.cbegin(); it != bySend.cend(); ++it) {
        lines << QStringLiteral("  - from send %1: %2 (in %3)").arg(it.key()).arg(it.value().join(QStringLiteral(", ")), folder);
    }
    if (!returned.isEmpty()) {
        lines << QStringLiteral("  - returned by ZBrush: %1 (in %2)").arg(returned.join(QStringLiteral(", ")), folder);
    }
    out << QString() << title;
    if (lines.isEmpty()) {
        out << QStringLiteral("  (nothing)");
    } else {
        out << lines;
    }
}

void TellOtherProcesses(const QJsonArray& processes, bool anyTold, QStringList& out)
{
    if (anyTold && processes.isEmpty()) {
        return;
    }
    out << QString() << (anyTold ? QStringLiteral("Other bridge programs started:") : QStringLiteral("Bridge programs started:"));
    if (processes.isEmpty()) {
        out << QStringLiteral("  (none)");
    }
    for (const QJsonValue& value : processes) {
        const QJsonObject process = value.toObject();
        if (process.contains(QStringLiteral("invalid_line"))) {
            out << QStringLiteral("  - an unreadable log line: ") + Text(process, "invalid_line");
            continue;
        }
        const QStringList objects = Strings(Array(process, "object_list"));
        out << QStringLiteral("  - %1, offered %2")
                   .arg(Text(process, "program"), objects.isEmpty() ? QStringLiteral("no objects") : objects.join(QStringLiteral(", ")));
    }
}

void TellMessagesAndProblems(const QJsonObject& report, const QStringList& messages, QStringList& out)
{
    if (!messages.isEmpty()) {
        out << QString() << QStringLiteral("Messages the plug-in showed:");
        for (const QString& message : messages) {
            out << QStringLiteral("  - ") + Quoted(message);
        }
    }
    QStringList problems = Strings(Array(report, "errors"));
    for (const QJsonValue& step : Array(report, "steps")) {
        if (step.toObject().contains(QStringLiteral("error"))) {
            problems << Text(step.toObject(), "error");
        }
    }
    out << QString();
    if (problems.isEmpty() && report.value(QStringLiteral("ok")).toBool()) {
        out << QStringLiteral("Every step succeeded.");
        return;
    }
    out << QStringLiteral("Problems:");
    if (problems.isEmpty()) {
        problems << QStringLiteral("the plug-in was not loaded");
    }
    for (const QString& problem : problems) {
        out << QStringLiteral("  - ") + problem;
    }
}

} // namespace

QString CDemoNarrator::Narrate(const QJsonObject& report)
{
    QStringList out;
    TellPlugin(report, out);
    CStory story;
    if (report.value(QStringLiteral("plugin")).toObject().value(QStringLiteral("loaded")).toBool()) {
        GatherPresses(report, story);
        GatherCalls(report, story);
        GatherProcesses(report, story);
        TellSnapshots(report, out);
        QMap<QString, int> writtenBy;
        bool anyProcessTold = false;
        for (int i = 0; i < story.m_kPresses.size(); ++i) {
            const CPress& press = story.m_kPresses.at(i);
            const int nextPress = i + 1 < story.m_kPresses.size() ? story.m_kPresses.at(i + 1).Index()
                                                                   : std::numeric_limits<int>::max();
            TellPress(report, press, nextPress, writtenBy, out);
            anyProcessTold = anyProcessTold || !press.m_kProcesses.isEmpty();
        }
        // Dumps that no press followed.
        const int told = story.m_kPresses.isEmpty() ? 0 : story.m_kPresses.last().Index() + 1;
        bool heading = false;
        QMap<QString, CDumpedTable> tables;
        for (const QJsonValue& dump : Array(report, "dialog_dumps")) {
            if (dump.toObject().value(QStringLiteral("step")).toInt() >= told) {
                if (!heading) {
                    out << QString() << QStringLiteral("Dialogs left without a button press:");
                    heading = true;
                }
                TellDump(dump.toObject(), Text(StepRecord(report, dump.toObject().value(QStringLiteral("step")).toInt()), "comment"),
                         tables, out);
            }
        }
        TellFiles(report, kPixologic + QStringLiteral("GoZApps/"),
                  QStringLiteral("The GoZ application folder at the end (installed by the plug-in, updated by the sends):"),
                  writtenBy, out);
        TellFiles(report, kProjectFolder, QStringLiteral("The GoZ project folder at the end:"), writtenBy, out);
        TellFiles(report, kPixologic + QStringLiteral("GoZBrush/GoZ_"), QStringLiteral("Files written for the GoZ bridge:"),
                  writtenBy, out);
        TellOtherProcesses(story.m_kOtherProcesses, anyProcessTold, out);
    }
    TellMessagesAndProblems(report, story.m_kOtherMessages, out);
    return out.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

} // namespace Host
} // namespace MV

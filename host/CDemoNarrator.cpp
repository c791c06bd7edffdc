#include "CDemoNarrator.h"

#include <QJsonArray>
#include <QStringList>

namespace MV {
namespace Host {

namespace {

const QString kPixologic = QStringLiteral("C:/Users/Public/Pixologic/");

QString Quoted(const QString& text)
{
    return QStringLiteral("\"") + text + QStringLiteral("\"");
}

QString ActionLabel(const QJsonObject& action)
{
    const QString text = action.value(QStringLiteral("text")).toString().remove(QLatin1Char('&'));
    const QString name = action.value(QStringLiteral("name")).toString();
    return text.isEmpty() ? name : QStringLiteral("%1 (%2)").arg(text, name);
}

QJsonObject StepRecord(const QJsonObject& report, int index)
{
    for (const QJsonValue& step : report.value(QStringLiteral("steps")).toArray()) {
        if (step.toObject().value(QStringLiteral("index")).toInt(-1) == index) {
            return step.toObject();
        }
    }
    return QJsonObject();
}

QString CellText(const QJsonValue& cell)
{
    if (cell.isString()) {
        return cell.toString();
    }
    if (cell.isObject()) {
        const QJsonObject widget = cell.toObject();
        QString text = widget.value(QStringLiteral("text")).toString();
        if (!widget.value(QStringLiteral("enabled")).toBool(true)) {
            text += QStringLiteral(" (fixed)");
        }
        return text;
    }
    return QString();
}

void TellPlugin(const QJsonObject& report, QStringList& out)
{
    const QJsonObject plugin = report.value(QStringLiteral("plugin")).toObject();
    out << QStringLiteral("Plug-in: %1").arg(plugin.value(QStringLiteral("path")).toString());
    if (!plugin.value(QStringLiteral("loaded")).toBool()) {
        out << QStringLiteral("  It was not loaded:");
        for (const QJsonValue& error : plugin.value(QStringLiteral("errors")).toArray()) {
            out << QStringLiteral("  - ") + error.toString();
        }
        return;
    }
    out << QStringLiteral("  Loaded; Initialize returned %1.").arg(plugin.value(QStringLiteral("initialize_result")).toString());
    QStringList menus;
    for (const QJsonValue& menu : plugin.value(QStringLiteral("menus")).toArray()) {
        menus << Quoted(menu.toObject().value(QStringLiteral("title")).toString().remove(QLatin1Char('&')));
    }
    QStringList toolBars;
    for (const QJsonValue& toolBar : plugin.value(QStringLiteral("tool_bars")).toArray()) {
        toolBars << Quoted(toolBar.toObject().value(QStringLiteral("name")).toString());
    }
    out << QStringLiteral("  It added the menus %1 and the tool bars %2 to the host window.")
               .arg(menus.isEmpty() ? QStringLiteral("(none)") : menus.join(QStringLiteral(", ")),
                    toolBars.isEmpty() ? QStringLiteral("(none)") : toolBars.join(QStringLiteral(", ")));
}

void TellSnapshots(const QJsonObject& report, QStringList& out)
{
    const QJsonArray snapshots = report.value(QStringLiteral("action_snapshots")).toArray();
    if (snapshots.isEmpty()) {
        return;
    }
    out << QString() << QStringLiteral("Which commands each situation enables:");
    for (const QJsonValue& value : snapshots) {
        const QJsonObject snapshot = value.toObject();
        QString label = StepRecord(report, snapshot.value(QStringLiteral("step")).toInt()).value(QStringLiteral("comment")).toString();
        if (label.isEmpty()) {
            QStringList names;
            for (const QJsonValue& selected : snapshot.value(QStringLiteral("selection")).toArray()) {
                names << Quoted(selected.toObject().value(QStringLiteral("name")).toString());
            }
            label = names.isEmpty() ? QStringLiteral("nothing selected")
                                    : names.join(QStringLiteral(", ")) + QStringLiteral(" selected");
        }
        QStringList enabled;
        for (const QJsonValue& action : snapshot.value(QStringLiteral("actions")).toArray()) {
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

void TellFiles(const QJsonObject& report, const QString& folder, const QString& title, QStringList& out)
{
    QStringList lines;
    for (const QJsonValue& value : report.value(QStringLiteral("files")).toArray()) {
        const QJsonObject file = value.toObject();
        const QString path = file.value(QStringLiteral("path")).toString();
        if (!path.startsWith(folder)) {
            continue;
        }
        QString line = QStringLiteral("  - %1 (%2 bytes)").arg(path).arg(file.value(QStringLiteral("size")).toInt());
        const QString text = file.value(QStringLiteral("text")).toString();
        if (path.endsWith(QLatin1String("GoZ_Config.txt"))) {
            for (const QString& textLine : text.split(QLatin1Char('\n'))) {
                if (textLine.trimmed().startsWith(QLatin1String("PATH"))) {
                    line += QStringLiteral(": ") + textLine.trimmed();
                }
            }
        } else if (file.contains(QStringLiteral("text")) && text.size() <= 120 && !text.contains(QLatin1Char('\n'))) {
            line += QStringLiteral(": ") + Quoted(text);
        } else if (file.contains(QStringLiteral("text")) && path.endsWith(QLatin1String(".txt"))) {
            QStringList shown = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
            line += QStringLiteral(": ") + shown.mid(0, 6).join(QStringLiteral(" | ")) +
                    (shown.size() > 6 ? QStringLiteral(" | ...") : QString());
        }
        lines << line;
    }
    out << QString() << title;
    if (lines.isEmpty()) {
        out << QStringLiteral("  (nothing)");
    } else {
        out << lines;
    }
}

void TellDialogs(const QJsonObject& report, QStringList& out)
{
    for (const QJsonValue& value : report.value(QStringLiteral("dialog_dumps")).toArray()) {
        const QJsonObject dump = value.toObject();
        const QString title = dump.value(QStringLiteral("title")).toString();
        out << QString()
            << QStringLiteral("Dialog %1%2 as shown at step %3:")
                   .arg(Quoted(dump.value(QStringLiteral("dialog")).toString()),
                        title.isEmpty() ? QString() : QStringLiteral(" (") + title + QStringLiteral(")"))
                   .arg(dump.value(QStringLiteral("step")).toInt());
        QStringList groups;
        QStringList options;
        QStringList choices;
        QStringList buttons;
        for (const QJsonValue& widgetValue : dump.value(QStringLiteral("widgets")).toArray()) {
            const QJsonObject widget = widgetValue.toObject();
            if (!widget.value(QStringLiteral("visible")).toBool()) {
                continue;
            }
            const QString name = widget.value(QStringLiteral("name")).toString();
            const QString type = widget.value(QStringLiteral("class")).toString();
            const QString state = widget.value(QStringLiteral("enabled")).toBool() ? QString() : QStringLiteral(" (disabled)");
            if (widget.contains(QStringLiteral("cells"))) {
                out << QStringLiteral("  Table %1 with %2 row(s):").arg(name).arg(widget.value(QStringLiteral("rows")).toInt());
                for (const QJsonValue& row : widget.value(QStringLiteral("cells")).toArray()) {
                    QStringList cells;
                    for (const QJsonValue& cell : row.toArray()) {
                        cells << CellText(cell);
                    }
                    out << QStringLiteral("    | ") + cells.join(QStringLiteral(" | "));
                }
            } else if (widget.contains(QStringLiteral("current_text"))) {
                choices << QStringLiteral("%1 = %2%3").arg(name, Quoted(widget.value(QStringLiteral("current_text")).toString()), state);
            } else if (type == QLatin1String("QGroupBox")) {
                groups << name + state;
            } else if (widget.contains(QStringLiteral("checked"))) {
                options << (widget.value(QStringLiteral("checked")).toBool() ? QStringLiteral("[x] ") : QStringLiteral("[ ] ")) +
                               name + state;
            } else if (type.endsWith(QLatin1String("Button"))) {
                buttons << name + state;
            }
        }
        if (!groups.isEmpty()) {
            out << QStringLiteral("  Groups: ") + groups.join(QStringLiteral(", "));
        }
        if (!options.isEmpty()) {
            out << QStringLiteral("  Options: ") + options.join(QStringLiteral(", "));
        }
        if (!choices.isEmpty()) {
            out << QStringLiteral("  Chosen: ") + choices.join(QStringLiteral(", "));
        }
        if (!buttons.isEmpty()) {
            out << QStringLiteral("  Buttons: ") + buttons.join(QStringLiteral(", "));
        }
    }
    for (const QJsonValue& value : report.value(QStringLiteral("steps")).toArray()) {
        const QJsonObject detail = value.toObject().value(QStringLiteral("detail")).toObject();
        if (detail.contains(QStringLiteral("clicked"))) {
            out << QStringLiteral("  At step %1 the demo pressed %2 in %3.")
                       .arg(value.toObject().value(QStringLiteral("index")).toInt())
                       .arg(detail.value(QStringLiteral("clicked")).toString(), Quoted(detail.value(QStringLiteral("dialog")).toString()));
        }
    }
}

void TellProcesses(const QJsonObject& report, QStringList& out)
{
    out << QString() << QStringLiteral("Bridge programs started:");
    const QJsonArray processes = report.value(QStringLiteral("processes")).toArray();
    if (processes.isEmpty()) {
        out << QStringLiteral("  (none)");
    }
    for (const QJsonValue& value : processes) {
        const QJsonObject process = value.toObject();
        if (process.contains(QStringLiteral("invalid_line"))) {
            out << QStringLiteral("  - an unreadable log line: ") + process.value(QStringLiteral("invalid_line")).toString();
            continue;
        }
        QStringList objects;
        for (const QJsonValue& line : process.value(QStringLiteral("object_list")).toArray()) {
            objects << line.toString();
        }
        out << QStringLiteral("  - %1, offered %2").arg(process.value(QStringLiteral("program")).toString(),
                                                        objects.isEmpty() ? QStringLiteral("no objects")
                                                                          : objects.join(QStringLiteral(", ")));
    }
}

void TellMessagesAndProblems(const QJsonObject& report, QStringList& out)
{
    const QJsonArray boxes = report.value(QStringLiteral("message_boxes")).toArray();
    if (!boxes.isEmpty()) {
        out << QString() << QStringLiteral("Messages the plug-in showed:");
        for (const QJsonValue& box : boxes) {
            out << QStringLiteral("  - ") + Quoted(box.toObject().value(QStringLiteral("text")).toString());
        }
    }
    QStringList problems;
    for (const QJsonValue& error : report.value(QStringLiteral("errors")).toArray()) {
        problems << error.toString();
    }
    for (const QJsonValue& step : report.value(QStringLiteral("steps")).toArray()) {
        if (step.toObject().contains(QStringLiteral("error"))) {
            problems << step.toObject().value(QStringLiteral("error")).toString();
        }
    }
    out << QString();
    if (problems.isEmpty() && report.value(QStringLiteral("ok")).toBool()) {
        out << QStringLiteral("Every step succeeded.");
    } else {
        out << QStringLiteral("Problems:");
        if (problems.isEmpty()) {
            problems << QStringLiteral("the plug-in was not loaded");
        }
        for (const QString& problem : problems) {
            out << QStringLiteral("  - ") + problem;
        }
    }
}

} // namespace

QString CDemoNarrator::Narrate(const QJsonObject& report)
{
    QStringList out;
    TellPlugin(report, out);
    if (report.value(QStringLiteral("plugin")).toObject().value(QStringLiteral("loaded")).toBool()) {
        TellSnapshots(report, out);
        TellFiles(report, kPixologic + QStringLiteral("GoZApps/"),
                  QStringLiteral("The GoZ application folder (installed by the plug-in, updated by the send):"), out);
        TellDialogs(report, out);
        TellFiles(report, kPixologic + QStringLiteral("GoZProjects/"),
                  QStringLiteral("Files written to the GoZ project folder:"), out);
        TellFiles(report, kPixologic + QStringLiteral("GoZBrush/GoZ_"),
                  QStringLiteral("Files written for the GoZ bridge:"), out);
        TellProcesses(report, out);
    }
    TellMessagesAndProblems(report, out);
    return out.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

} // namespace Host
} // namespace MV

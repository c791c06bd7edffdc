#include "CDumpedTable.h"

#include "DemoJson.h"

#include <QJsonArray>
#include <QVector>

#include <algorithm>

namespace MV {
namespace Host {

using namespace DemoJson;

CDumpedTable CDumpedTable::FromDialogDump(const QJsonObject& widget)
{
    CDumpedTable table;
    table.m_strName = Text(widget, "name");
    table.m_kHeaders = Strings(Array(widget, "headers"));
    for (const QJsonValue& row : Array(widget, "cells")) {
        QList<QJsonObject> cells;
        for (const QJsonValue& cell : row.toArray()) {
            cells << (cell.isObject() ? cell.toObject()
                                      : cell.isString() ? QJsonObject{{QStringLiteral("text"), cell.toString()}} : QJsonObject());
        }
        table.m_kCells << cells;
    }
    return table;
}

CDumpedTable CDumpedTable::FromTableDump(const QJsonObject& dump)
{
    CDumpedTable table;
    table.m_strName = Text(dump, "table");
    table.m_kHeaders = Strings(Array(dump, "headers"));
    for (const QJsonValue& row : Array(dump, "rows")) {
        QList<QJsonObject> cells;
        for (const QJsonValue& value : Array(row.toObject(), "cells")) {
            const QJsonObject cell = value.toObject();
            // A plain item's enabled flag says nothing a user sees; a cell widget's does.
            cells << (cell.contains(QStringLiteral("widget")) ? cell
                                                              : QJsonObject{{QStringLiteral("text"), cell.value(QStringLiteral("text"))}});
        }
        table.m_kCells << cells;
    }
    return table;
}

QString CDumpedTable::RowName(int row) const
{
    return row >= 0 && row < m_kCells.size() && !m_kCells.at(row).isEmpty() ? Text(m_kCells.at(row).first(), "text")
                                                                             : QString();
}

QString CDumpedTable::Header(int column) const
{
    return m_kHeaders.value(column, QStringLiteral("column %1").arg(column));
}

QString CDumpedTable::CellText(const QJsonObject& cell)
{
    if (cell.contains(QStringLiteral("checked"))) {
        const QString box = cell.value(QStringLiteral("checked")).toBool() ? QStringLiteral("[x]") : QStringLiteral("[ ]");
        return cell.value(QStringLiteral("enabled")).toBool(true) ? box : box + QStringLiteral(" (fixed)");
    }
    QString text = Text(cell, "text");
    if (!cell.value(QStringLiteral("enabled")).toBool(true)) {
        return text + QStringLiteral(" (fixed)");
    }
    QStringList others = Strings(Array(cell, "items"));
    others.removeAll(text);
    if (others.size() > 3) {
        text += QStringLiteral(" (or %1 others)").arg(others.size());
    } else if (!others.isEmpty()) {
        text += QStringLiteral(" (or %1)").arg(others.join(QStringLiteral(", ")));
    }
    return text;
}

QString CDumpedTable::CellValue(const QJsonObject& cell)
{
    QString value = cell.contains(QStringLiteral("checked"))
                        ? (cell.value(QStringLiteral("checked")).toBool() ? QStringLiteral("[x]") : QStringLiteral("[ ]"))
                        : Quoted(Text(cell, "text"));
    if (cell.contains(QStringLiteral("widget")) && !cell.value(QStringLiteral("enabled")).toBool(true)) {
        value += QStringLiteral(" (disabled)");
    }
    return value;
}

void CDumpedTable::Tell(QStringList& out) const
{
    QList<QStringList> rows;
    if (!m_kHeaders.isEmpty()) {
        rows << m_kHeaders;
    }
    for (const QList<QJsonObject>& row : m_kCells) {
        QStringList cells;
        for (const QJsonObject& cell : row) {
            cells << CellText(cell);
        }
        rows << cells;
    }
    QVector<int> widths;
    for (const QStringList& row : rows) {
        for (int column = 0; column < row.size(); ++column) {
            if (widths.size() <= column) {
                widths.append(0);
            }
            widths[column] = std::max(widths.at(column), static_cast<int>(row.at(column).size()));
        }
    }
    out << QStringLiteral("    Table %1, %2 row(s):").arg(m_strName).arg(m_kCells.size());
    for (const QStringList& row : rows) {
        QStringList padded;
        for (int column = 0; column < row.size(); ++column) {
            padded << row.at(column).leftJustified(column + 1 < row.size() ? widths.at(column) : 0);
        }
        out << QStringLiteral("      ") + padded.join(QStringLiteral(" | ")).trimmed();
    }
}

void CDumpedTable::TellChangeFrom(const CDumpedTable& before, QStringList& out) const
{
    if (before.m_kCells.size() != m_kCells.size()) {
        Tell(out);
        return;
    }
    QStringList changes;
    for (int row = 0; row < m_kCells.size(); ++row) {
        const QList<QJsonObject>& now = m_kCells.at(row);
        const QList<QJsonObject>& was = before.m_kCells.at(row);
        for (int column = 0; column < now.size(); ++column) {
            const QString old = column < was.size() ? CellValue(was.at(column)) : QStringLiteral("nothing");
            const QString value = CellValue(now.at(column));
            if (old == value) {
                continue;
            }
            const QString header = Header(column);
            changes << QStringLiteral("row %1 (%2) %3: %4 -> %5").arg(row).arg(RowName(row), header, old, value);
        }
    }
    out << (changes.isEmpty() ? QStringLiteral("    The table did not change.")
                              : QStringLiteral("    The table changed: ") + changes.join(QStringLiteral("; ")) +
                                    QStringLiteral("."));
}

} // namespace Host
} // namespace MV

#pragma once

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

namespace MV {
namespace Host {

// A table as a report dump shows it: a dialog dump's cells and a table dump's rows made
// alike, each cell an object with "text" and, for a cell widget, what the dump says of it.
class CDumpedTable
{
public:
    static CDumpedTable FromDialogDump(const QJsonObject& widget);
    static CDumpedTable FromTableDump(const QJsonObject& dump);

    const QString& Name() const { return m_strName; }
    QString RowName(int row) const;
    QString Header(int column) const;

    // Every row, its cells padded into columns, under a line naming the table.
    void Tell(QStringList& out) const;
    // What changed since before, row by row in table order; the whole table when rows came or went.
    void TellChangeFrom(const CDumpedTable& before, QStringList& out) const;

    // A cell with what else it offers: "Update (or Create Prop)", "[x]", "Create (fixed)".
    static QString CellText(const QJsonObject& cell);
    // What a cell holds, without what it offers: for telling what a choice changed.
    static QString CellValue(const QJsonObject& cell);

private:
    QString m_strName;
    QStringList m_kHeaders;
    QList<QList<QJsonObject>> m_kCells;
};

} // namespace Host
} // namespace MV

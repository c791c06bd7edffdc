#pragma once

#include <QJsonObject>
#include <QJsonValue>

class QTableWidget;
class QWidget;

namespace MV {
namespace Host {

// Describes a dialog and every named widget in it as JSON (see docs/report-format.md).
class CWidgetDumper
{
public:
    static QJsonObject Dump(QWidget* root);
    static QJsonObject DescribeWidget(QWidget* widget, QWidget* root);
    // A table cell: its item's text, an object for a cell widget, null when empty.
    static QJsonValue DescribeCell(QWidget* cellWidget, const QString* itemText);
    // Every row of a table with every cell's text, enabled and visible state (docs/report-format.md).
    static QJsonObject DumpTable(const QTableWidget* table);
};

} // namespace Host
} // namespace MV

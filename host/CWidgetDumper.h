#pragma once

#include <QJsonObject>
#include <QJsonValue>

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
};

} // namespace Host
} // namespace MV

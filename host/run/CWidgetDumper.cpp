#include "CWidgetDumper.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QJsonArray>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QTableWidget>

namespace MV {
namespace Host {

namespace {

QJsonArray ComboItems(const QComboBox* combo)
{
    QJsonArray items;
    for (int i = 0; i < combo->count(); ++i) {
        items.append(combo->itemText(i));
    }
    return items;
}

QJsonArray HiddenRows(const QComboBox* combo)
{
    QJsonArray hidden;
    const auto* view = qobject_cast<const QListView*>(combo->view());
    for (int i = 0; view != nullptr && i < combo->count(); ++i) {
        if (view->isRowHidden(i)) {
            hidden.append(i);
        }
    }
    return hidden;
}

void DescribeCombo(const QComboBox* combo, QJsonObject& out)
{
    out.insert(QStringLiteral("current_index"), combo->currentIndex());
    out.insert(QStringLiteral("current_text"), combo->currentText());
    out.insert(QStringLiteral("items"), ComboItems(combo));
    out.insert(QStringLiteral("hidden_rows"), HiddenRows(combo));
}

QString HeaderText(const QTableWidget* table, int column)
{
    const QTableWidgetItem* item = table->horizontalHeaderItem(column);
    return item == nullptr ? QString() : item->text();
}

} // namespace

QJsonValue CWidgetDumper::DescribeCell(QWidget* cellWidget, const QString* itemText)
{
    if (cellWidget == nullptr) {
        return itemText == nullptr ? QJsonValue(QJsonValue::Null) : QJsonValue(*itemText);
    }
    QJsonObject cell;
    cell.insert(QStringLiteral("widget"), QString::fromLatin1(cellWidget->metaObject()->className()));
    cell.insert(QStringLiteral("enabled"), cellWidget->isEnabled());
    // A cell widget may wrap its control in a container (to centre a check box, say).
    QComboBox* combo = qobject_cast<QComboBox*>(cellWidget);
    if (combo == nullptr) {
        combo = cellWidget->findChild<QComboBox*>();
    }
    QAbstractButton* button = qobject_cast<QAbstractButton*>(cellWidget);
    if (button == nullptr) {
        button = cellWidget->findChild<QAbstractButton*>();
    }
    if (combo != nullptr) {
        cell.insert(QStringLiteral("text"), combo->currentText());
        cell.insert(QStringLiteral("current_index"), combo->currentIndex());
        cell.insert(QStringLiteral("items"), ComboItems(combo));
        cell.insert(QStringLiteral("hidden_rows"), HiddenRows(combo));
        cell.insert(QStringLiteral("enabled"), combo->isEnabled() && cellWidget->isEnabled());
    } else if (button != nullptr) {
        cell.insert(QStringLiteral("text"), button->text());
        cell.insert(QStringLiteral("enabled"), button->isEnabled() && cellWidget->isEnabled());
        if (button->isCheckable()) {
            cell.insert(QStringLiteral("checked"), button->isChecked());
        }
    } else if (const auto* label = qobject_cast<QLabel*>(cellWidget)) {
        cell.insert(QStringLiteral("text"), label->text());
    } else {
        cell.insert(QStringLiteral("text"), QJsonValue(QJsonValue::Null));
    }
    return cell;
}

QJsonObject CWidgetDumper::DescribeWidget(QWidget* widget, QWidget* root)
{
    QJsonObject out;
    out.insert(QStringLiteral("name"), widget->objectName());
    out.insert(QStringLiteral("class"), QString::fromLatin1(widget->metaObject()->className()));
    out.insert(QStringLiteral("enabled"), widget->isEnabled());
    out.insert(QStringLiteral("visible"), widget == root ? widget->isVisible() : widget->isVisibleTo(root));

    if (auto* table = qobject_cast<QTableWidget*>(widget)) {
        out.insert(QStringLiteral("rows"), table->rowCount());
        out.insert(QStringLiteral("columns"), table->columnCount());
        QJsonArray headers;
        for (int column = 0; column < table->columnCount(); ++column) {
            headers.append(HeaderText(table, column));
        }
        out.insert(QStringLiteral("headers"), headers);
        QJsonArray cells;
        for (int row = 0; row < table->rowCount(); ++row) {
            QJsonArray line;
            for (int column = 0; column < table->columnCount(); ++column) {
                const QTableWidgetItem* item = table->item(row, column);
                const QString text = item == nullptr ? QString() : item->text();
                line.append(DescribeCell(table->cellWidget(row, column), item == nullptr ? nullptr : &text));
            }
            cells.append(line);
        }
        out.insert(QStringLiteral("cells"), cells);
    } else if (auto* combo = qobject_cast<QComboBox*>(widget)) {
        DescribeCombo(combo, out);
    } else if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
        out.insert(QStringLiteral("text"), button->text());
        out.insert(QStringLiteral("checkable"), button->isCheckable());
        if (button->isCheckable()) {
            out.insert(QStringLiteral("checked"), button->isChecked());
        }
    } else if (auto* group = qobject_cast<QGroupBox*>(widget)) {
        out.insert(QStringLiteral("title"), group->title());
        out.insert(QStringLiteral("checkable"), group->isCheckable());
        if (group->isCheckable()) {
            out.insert(QStringLiteral("checked"), group->isChecked());
        }
    } else if (auto* label = qobject_cast<QLabel*>(widget)) {
        out.insert(QStringLiteral("text"), label->text());
    } else if (auto* edit = qobject_cast<QLineEdit*>(widget)) {
        out.insert(QStringLiteral("text"), edit->text());
    } else if (auto* spin = qobject_cast<QAbstractSpinBox*>(widget)) {
        out.insert(QStringLiteral("text"), spin->text());
    }
    return out;
}

QJsonObject CWidgetDumper::DumpTable(const QTableWidget* table)
{
    QJsonObject out;
    out.insert(QStringLiteral("table"), table->objectName());
    out.insert(QStringLiteral("columns"), table->columnCount());
    QJsonArray headers;
    for (int column = 0; column < table->columnCount(); ++column) {
        headers.append(HeaderText(table, column));
    }
    out.insert(QStringLiteral("headers"), headers);
    QJsonArray rows;
    for (int row = 0; row < table->rowCount(); ++row) {
        QJsonArray cells;
        for (int column = 0; column < table->columnCount(); ++column) {
            const bool shown = !table->isRowHidden(row) && !table->isColumnHidden(column);
            const QTableWidgetItem* item = table->item(row, column);
            QWidget* widget = table->cellWidget(row, column);
            QJsonObject cell;
            if (widget != nullptr) {
                const QString text = item == nullptr ? QString() : item->text();
                cell = DescribeCell(widget, item == nullptr ? nullptr : &text).toObject();
                cell.insert(QStringLiteral("visible"), shown && widget->isVisibleTo(const_cast<QTableWidget*>(table)));
            } else {
                cell.insert(QStringLiteral("text"), item == nullptr ? QJsonValue() : QJsonValue(item->text()));
                cell.insert(QStringLiteral("enabled"), item != nullptr && (item->flags() & Qt::ItemIsEnabled) != 0);
                cell.insert(QStringLiteral("visible"), shown);
                if (item != nullptr && item->data(Qt::CheckStateRole).isValid()) {
                    cell.insert(QStringLiteral("checked"), item->checkState() == Qt::Checked);
                }
            }
            cells.append(cell);
        }
        rows.append(QJsonObject{{QStringLiteral("row"), row}, {QStringLiteral("cells"), cells}});
    }
    out.insert(QStringLiteral("rows"), rows);
    return out;
}

QJsonObject CWidgetDumper::Dump(QWidget* root)
{
    QJsonObject out;
    if (root == nullptr) {
        return out;
    }
    out.insert(QStringLiteral("dialog"), root->objectName());
    out.insert(QStringLiteral("class"), QString::fromLatin1(root->metaObject()->className()));
    out.insert(QStringLiteral("title"), root->windowTitle());
    out.insert(QStringLiteral("visible"), root->isVisible());
    out.insert(QStringLiteral("modal"), root->isModal());
    QJsonArray widgets;
    for (QWidget* widget : root->findChildren<QWidget*>()) {
        const QString name = widget->objectName();
        // Qt's own helper widgets carry "qt_" names; they are no part of a form.
        if (name.isEmpty() || name.startsWith(QLatin1String("qt_"))) {
            continue;
        }
        widgets.append(DescribeWidget(widget, root));
    }
    out.insert(QStringLiteral("widgets"), widgets);
    return out;
}

} // namespace Host
} // namespace MV

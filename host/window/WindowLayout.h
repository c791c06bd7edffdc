#pragma once

#include <QAbstractItemView>
#include <QEvent>
#include <QHeaderView>
#include <QScrollBar>
#include <QTableWidget>

#include <functional>
#include <utility>

namespace MV {
namespace Host {

// The height of a table row, from the font the table has now.
inline int RowHeight(const QWidget* table)
{
    return table->fontMetrics().height() + 10;
}

// Runs apply now and again whenever the widget's metrics may have changed: a widget only
// settles its font when it is polished, so sizes computed at construction can come out short.
class CMetricsFollower : public QObject
{
public:
    CMetricsFollower(QWidget* widget, std::function<void()> apply) : QObject(widget), m_kApply(std::move(apply))
    {
        widget->installEventFilter(this);
        m_kApply();
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        switch (event->type()) {
        case QEvent::Polish:
        case QEvent::FontChange:
        case QEvent::StyleChange:
        case QEvent::Show:
            m_kApply();
            break;
        default:
            break;
        }
        return QObject::eventFilter(watched, event);
    }

private:
    std::function<void()> m_kApply;
};

// Gives a table fixed rows and room for rows of them below its header, so it never opens as a
// sliver; exact: no more room than that either.
inline void KeepRoomForRows(QTableWidget* table, int rows, bool exact = false)
{
    new CMetricsFollower(table, [table, rows, exact] {
        const int row = RowHeight(table);
        table->verticalHeader()->setMinimumSectionSize(row);
        table->verticalHeader()->setDefaultSectionSize(row);
        table->horizontalHeader()->setFixedHeight(row);
        const int scrollBar = table->horizontalScrollBarPolicy() == Qt::ScrollBarAlwaysOff
                                  ? 0
                                  : table->horizontalScrollBar()->sizeHint().height();
        const int height = row + rows * row + scrollBar + 2 * table->frameWidth();
        table->setMinimumHeight(height);
        if (exact) {
            table->setMaximumHeight(height);
        }
    });
}

// A read-only table of whole rows, sized by its first column.
inline void SetUpListTable(QTableWidget* table, const QStringList& headers)
{
    table->setColumnCount(headers.size());
    table->setHorizontalHeaderLabels(headers);
    table->verticalHeader()->setVisible(false);
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setTextElideMode(Qt::ElideMiddle);
    table->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
}

} // namespace Host
} // namespace MV

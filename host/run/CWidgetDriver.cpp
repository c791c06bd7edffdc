#include "CWidgetDriver.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QStringList>
#include <QTableWidget>
#include <QWidget>

namespace MV {
namespace Host {

namespace {

QString Usable(QWidget* widget, QWidget* root, const QString& name)
{
    if (!widget->isEnabled()) {
        return QStringLiteral("widget \"%1\" is disabled").arg(name);
    }
    if (widget != root && !widget->isVisibleTo(root)) {
        return QStringLiteral("widget \"%1\" is hidden").arg(name);
    }
    return QString();
}

QString Choose(QComboBox* combo, int index)
{
    combo->setCurrentIndex(index);
    // A user's choice also emits activated; some forms listen to that instead.
    QMetaObject::invokeMethod(combo, "activated", Qt::DirectConnection, Q_ARG(int, index));
    return QString();
}

} // namespace

QWidget* CWidgetDriver::FindRoot(const QString& dialogName, QString& error)
{
    if (dialogName.isEmpty()) {
        QWidget* modal = QApplication::activeModalWidget();
        if (modal == nullptr) {
            error = QStringLiteral("no modal dialog is open");
        }
        return modal;
    }
    QWidget* hiddenMatch = nullptr;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == dialogName) {
            if (widget->isVisible()) {
                return widget;
            }
            hiddenMatch = hiddenMatch == nullptr ? widget : hiddenMatch;
        }
    }
    if (hiddenMatch != nullptr) {
        return hiddenMatch;
    }
    error = QStringLiteral("no window named \"%1\"").arg(dialogName);
    return nullptr;
}

QWidget* CWidgetDriver::FindWidget(QWidget* root, const QString& name)
{
    if (root == nullptr || name.isEmpty()) {
        return nullptr;
    }
    if (root->objectName() == name) {
        return root;
    }
    return root->findChild<QWidget*>(name);
}

QAbstractButton* CWidgetDriver::ResolveClick(QWidget* root, const QString& widget, const QString& fallback,
                                             QString& error)
{
    QString problem;
    auto* button = qobject_cast<QAbstractButton*>(FindWidget(root, widget));
    if (button == nullptr) {
        problem = FindWidget(root, widget) == nullptr ? QStringLiteral("no widget \"%1\"").arg(widget)
                                                      : QStringLiteral("widget \"%1\" is not a button").arg(widget);
    } else {
        problem = Usable(button, root, widget);
    }
    if (problem.isEmpty()) {
        return button;
    }
    if (fallback.isEmpty()) {
        error = problem;
        return nullptr;
    }
    auto* other = qobject_cast<QAbstractButton*>(FindWidget(root, fallback));
    if (other == nullptr) {
        error = problem + QStringLiteral(", and there is no button \"%1\"").arg(fallback);
        return nullptr;
    }
    const QString otherProblem = Usable(other, root, fallback);
    if (!otherProblem.isEmpty()) {
        error = problem + QStringLiteral(", and ") + otherProblem;
        return nullptr;
    }
    return other;
}

QString CWidgetDriver::SetChecked(QWidget* root, const QString& widget, bool checked)
{
    auto* button = qobject_cast<QAbstractButton*>(FindWidget(root, widget));
    if (button == nullptr) {
        return QStringLiteral("no check box or radio button \"%1\"").arg(widget);
    }
    if (!button->isCheckable()) {
        return QStringLiteral("widget \"%1\" cannot be checked").arg(widget);
    }
    const QString problem = Usable(button, root, widget);
    if (!problem.isEmpty()) {
        return problem;
    }
    if (button->isChecked() != checked) {
        button->click();
    }
    if (button->isChecked() != checked) {
        return QStringLiteral("widget \"%1\" stays %2 when clicked")
            .arg(widget, button->isChecked() ? QStringLiteral("checked") : QStringLiteral("unchecked"));
    }
    return QString();
}

QString CWidgetDriver::SetComboIndex(QWidget* root, const QString& widget, int index)
{
    auto* combo = qobject_cast<QComboBox*>(FindWidget(root, widget));
    if (combo == nullptr) {
        return QStringLiteral("no combo box \"%1\"").arg(widget);
    }
    const QString problem = Usable(combo, root, widget);
    if (!problem.isEmpty()) {
        return problem;
    }
    if (index < 0 || index >= combo->count()) {
        return QStringLiteral("combo box \"%1\" has no item %2 (it has %3)").arg(widget).arg(index).arg(combo->count());
    }
    return Choose(combo, index);
}

QString CWidgetDriver::TableComboChoose(QWidget* root, const QString& table, int row, int column, const QString& text)
{
    auto* widget = qobject_cast<QTableWidget*>(FindWidget(root, table));
    if (widget == nullptr) {
        return QStringLiteral("no table \"%1\"").arg(table);
    }
    if (row < 0 || row >= widget->rowCount() || column < 0 || column >= widget->columnCount()) {
        return QStringLiteral("table \"%1\" has no cell (%2, %3); it has %4 rows and %5 columns")
            .arg(table)
            .arg(row)
            .arg(column)
            .arg(widget->rowCount())
            .arg(widget->columnCount());
    }
    QWidget* cell = widget->cellWidget(row, column);
    auto* combo = qobject_cast<QComboBox*>(cell);
    if (combo == nullptr && cell != nullptr) {
        combo = cell->findChild<QComboBox*>();
    }
    if (combo == nullptr) {
        return QStringLiteral("cell (%1, %2) of table \"%3\" holds no combo box").arg(row).arg(column).arg(table);
    }
    if (!combo->isEnabled() || !cell->isEnabled()) {
        return QStringLiteral("the combo box in cell (%1, %2) of table \"%3\" is disabled").arg(row).arg(column).arg(table);
    }
    const int index = combo->findText(text, Qt::MatchExactly);
    if (index < 0) {
        QStringList items;
        for (int i = 0; i < combo->count(); ++i) {
            items << combo->itemText(i);
        }
        return QStringLiteral("the combo box in cell (%1, %2) of table \"%3\" has no item \"%4\" (items: %5)")
            .arg(row)
            .arg(column)
            .arg(table, text, items.join(QStringLiteral(", ")));
    }
    return Choose(combo, index);
}

QString CWidgetDriver::TableSetChecked(QWidget* root, const QString& table, int row, int column, bool checked)
{
    auto* widget = qobject_cast<QTableWidget*>(FindWidget(root, table));
    if (widget == nullptr) {
        return QStringLiteral("no table \"%1\"").arg(table);
    }
    if (row < 0 || row >= widget->rowCount() || column < 0 || column >= widget->columnCount()) {
        return QStringLiteral("table \"%1\" has no cell (%2, %3); it has %4 rows and %5 columns")
            .arg(table)
            .arg(row)
            .arg(column)
            .arg(widget->rowCount())
            .arg(widget->columnCount());
    }
    QWidget* cell = widget->cellWidget(row, column);
    auto* button = qobject_cast<QAbstractButton*>(cell);
    if (button == nullptr && cell != nullptr) {
        button = cell->findChild<QAbstractButton*>();
    }
    if (button == nullptr || !button->isCheckable()) {
        return QStringLiteral("cell (%1, %2) of table \"%3\" holds no check box").arg(row).arg(column).arg(table);
    }
    if (!button->isEnabled() || !cell->isEnabled()) {
        return QStringLiteral("the check box in cell (%1, %2) of table \"%3\" is disabled").arg(row).arg(column).arg(table);
    }
    if (widget->isRowHidden(row) || widget->isColumnHidden(column) || !button->isVisibleTo(widget)) {
        return QStringLiteral("the check box in cell (%1, %2) of table \"%3\" is hidden").arg(row).arg(column).arg(table);
    }
    if (button->isChecked() != checked) {
        button->click();
    }
    if (button->isChecked() != checked) {
        return QStringLiteral("the check box in cell (%1, %2) of table \"%3\" stays %4 when clicked")
            .arg(row)
            .arg(column)
            .arg(table, button->isChecked() ? QStringLiteral("checked") : QStringLiteral("unchecked"));
    }
    return QString();
}

QString CWidgetDriver::Close(QWidget* root, bool reject)
{
    if (root == nullptr) {
        return QStringLiteral("no window to close");
    }
    if (auto* dialog = qobject_cast<QDialog*>(root)) {
        if (reject) {
            dialog->reject();
        } else {
            dialog->accept();
        }
        return QString();
    }
    root->close();
    return QString();
}

int CWidgetDriver::CloseModals()
{
    int closed = 0;
    for (int guard = 0; guard < 64; ++guard) {
        QWidget* popup = QApplication::activePopupWidget();
        QWidget* modal = popup != nullptr ? popup : QApplication::activeModalWidget();
        if (modal == nullptr) {
            break;
        }
        if (auto* dialog = qobject_cast<QDialog*>(modal)) {
            dialog->reject();
        }
        if (modal->isVisible()) {
            modal->hide();
        }
        ++closed;
    }
    return closed;
}

} // namespace Host
} // namespace MV

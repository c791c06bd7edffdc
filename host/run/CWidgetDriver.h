#pragma once

#include <QString>

class QAbstractButton;
class QWidget;

namespace MV {
namespace Host {

// Operates widgets as a user would: only enabled, visible ones, through their own signals.
// Each operation returns an empty string on success, else what went wrong.
class CWidgetDriver
{
public:
    // The visible top-level window of that name; with no name, the active modal dialog.
    static QWidget* FindRoot(const QString& dialogName, QString& error);
    // The root itself when it carries the name, else the first named descendant.
    static QWidget* FindWidget(QWidget* root, const QString& name);

    // The button a click would press: widget when it can be pressed, else the fallback (if any).
    static QAbstractButton* ResolveClick(QWidget* root, const QString& widget, const QString& fallback,
                                         QString& error);
    static QString SetChecked(QWidget* root, const QString& widget, bool checked);
    static QString SetComboIndex(QWidget* root, const QString& widget, int index);
    static QString TableComboChoose(QWidget* root, const QString& table, int row, int column, const QString& text);
    // Clicks the check box of a table cell (the cell widget or one inside it) when its state differs.
    static QString TableSetChecked(QWidget* root, const QString& table, int row, int column, bool checked);
    // Rejects (or accepts) a dialog; closes any other window.
    static QString Close(QWidget* root, bool reject);
    // Closes every modal dialog and popup, innermost first; returns how many.
    static int CloseModals();
};

} // namespace Host
} // namespace MV

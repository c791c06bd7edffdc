#include "CCellComboBox.h"

namespace MV {

CCellComboBox::CCellComboBox(QWidget* parent) : QComboBox(parent) {}

void CCellComboBox::showEvent(QShowEvent* event)
{
    // The base class asks its parent for a new layout on its first show: one queued request
    // per cell, and Qt searches the whole queue for each. A cell has no layout to ask for.
    QWidget::showEvent(event);
}

} // namespace MV

#include "CTargetComboBox.h"

#include <QListView>

namespace MV {

CTargetComboBox::CTargetComboBox(QWidget* parent) : CCellComboBox(parent) {}

void CTargetComboBox::showPopup()
{
    // The list view is made only here, when the user opens it: thousands of rows stay cheap.
    auto* list = qobject_cast<QListView*>(view());
    if (list != nullptr && count() > 0) {
        list->setRowHidden(count() - 1, m_bLastItemHidden);
    }
    QComboBox::showPopup();
}

} // namespace MV

#pragma once

#include "CCellComboBox.h"

namespace MV {

// Target cell of the receive table. Its last item is "Please Select"; rows that have a
// target keep it out of the list they pop up, so rows can share one model of all targets.
class CTargetComboBox : public CCellComboBox
{
    Q_OBJECT
public:
    explicit CTargetComboBox(QWidget* parent);

    void SetLastItemHidden(bool hidden) { m_bLastItemHidden = hidden; }
    bool IsLastItemHidden() const { return m_bLastItemHidden; }

    void showPopup() override;

private:
    bool m_bLastItemHidden = false;
};

} // namespace MV

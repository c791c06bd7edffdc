#pragma once

#include <QComboBox>

namespace MV {

// A combo box that lives in a table cell: the table decides its size.
class CCellComboBox : public QComboBox
{
    Q_OBJECT
public:
    explicit CCellComboBox(QWidget* parent);

protected:
    void showEvent(QShowEvent* event) override;
};

} // namespace MV

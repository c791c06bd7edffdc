#pragma once

#include "CUiComponent.h"

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;
class QTableWidget;
class QWidget;

namespace MV {

// Named widgets of ZBrushToFMDlg.ui.
class CZBrushToFMDlgUiComponent : public CUiComponent
{
public:
    QV::Result SetupUi(QWidget* root) override;

    QWidget* ZBrushToFMDlg = nullptr;
    QCheckBox* qtAdjustEyeOcclusionCheckBox = nullptr;
    QCheckBox* qtAdjustTearlineCheckBox = nullptr;
    QCheckBox* qtDoAutoRigBox = nullptr;
    QComboBox* qtTemplateComboBox = nullptr;
    QGroupBox* qtPoseGroupBox = nullptr;
    QLabel* qtTemplateLabel = nullptr;
    QPushButton* qtCancelButton = nullptr;
    QPushButton* qtImportButton = nullptr;
    QRadioButton* qtBindPoseRadioButton = nullptr;
    QRadioButton* qtCurrentPoseRadioButton = nullptr;
    QRadioButton* qtTPoseRadioButton = nullptr;
    QTableWidget* qtFMGoZBackFromZBrushTableWidget = nullptr;
};

} // namespace MV

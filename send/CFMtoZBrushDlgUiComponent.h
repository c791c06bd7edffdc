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

// Named widgets of FMtoZBrushDlg.ui.
class CFMtoZBrushDlgUiComponent : public CUiComponent
{
public:
    QV::Result SetupUi(QWidget* root) override;

    QWidget* FMtoZBrushDlg = nullptr;
    QTableWidget* qtFMGoZToZBrushTableWidget = nullptr;
    QComboBox* qtTemplateComboBox = nullptr;
    QLabel* qtTemplateLabel = nullptr;
    QGroupBox* qtSplitBodyPartGroupBox = nullptr;
    QCheckBox* qtEyeSockerCheckBox = nullptr;
    QCheckBox* qtEyewinkerCheckBox = nullptr;
    QCheckBox* qtFingerNailsCheckBox = nullptr;
    QCheckBox* qtMouthCheckBox = nullptr;
    QCheckBox* qtSkinArmCheckBox = nullptr;
    QCheckBox* qtSkinBodyCheckBox = nullptr;
    QCheckBox* qtSkinHeadCheckBox = nullptr;
    QCheckBox* qtSkinLegCheckBox = nullptr;
    QCheckBox* qtTearDuctsCheckBox = nullptr;
    QCheckBox* qtToeNailsCheckBox = nullptr;
    QGroupBox* qtPoseGroupBox = nullptr;
    QRadioButton* qtBindPoseRadioButton = nullptr;
    QRadioButton* qtCurrentPoseRadioButton = nullptr;
    QRadioButton* qtTPoseRadioButton = nullptr;
    QPushButton* qtGoZButton = nullptr;
    QPushButton* qtCancelButton = nullptr;
};

} // namespace MV

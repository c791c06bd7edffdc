#pragma once

#include "CUiComponent.h"

class QCheckBox;
class QLabel;
class QPushButton;
class QWidget;

namespace MV {

// Named widgets of ExpressionZBrushToFMDlg.ui.
class CExpressionZBrushToFMDlgUiComponent : public CUiComponent
{
public:
    QV::Result SetupUi(QWidget* root) override;

    QCheckBox* qtAdjustEyeOcclusionCheckBox = nullptr;
    QCheckBox* qtAdjustTearlineCheckBox = nullptr;
    QLabel* label = nullptr;
    QPushButton* qtCancelButton = nullptr;
    QPushButton* qtImportButton = nullptr;
};

} // namespace MV

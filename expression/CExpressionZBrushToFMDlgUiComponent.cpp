#include "CExpressionZBrushToFMDlgUiComponent.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>

namespace MV {

QV::Result CExpressionZBrushToFMDlgUiComponent::SetupUi(QWidget* root)
{
    ClearMissing();
    qtAdjustEyeOcclusionCheckBox = Find<QCheckBox>(root, "qtAdjustEyeOcclusionCheckBox");
    qtAdjustTearlineCheckBox = Find<QCheckBox>(root, "qtAdjustTearlineCheckBox");
    label = Find<QLabel>(root, "label");
    qtCancelButton = Find<QPushButton>(root, "qtCancelButton");
    qtImportButton = Find<QPushButton>(root, "qtImportButton");
    return MissingResult();
}

} // namespace MV

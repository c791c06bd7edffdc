#include "CZBrushToFMDlgUiComponent.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>

namespace MV {

QV::Result CZBrushToFMDlgUiComponent::SetupUi(QWidget* root)
{
    ClearMissing();
    ZBrushToFMDlg = Find<QWidget>(root, "ZBrushToFMDlg");
    qtAdjustEyeOcclusionCheckBox = Find<QCheckBox>(root, "qtAdjustEyeOcclusionCheckBox");
    qtAdjustTearlineCheckBox = Find<QCheckBox>(root, "qtAdjustTearlineCheckBox");
    qtDoAutoRigBox = Find<QCheckBox>(root, "qtDoAutoRigBox");
    qtTemplateComboBox = Find<QComboBox>(root, "qtTemplateComboBox");
    qtPoseGroupBox = Find<QGroupBox>(root, "qtPoseGroupBox");
    qtTemplateLabel = Find<QLabel>(root, "qtTemplateLabel");
    qtCancelButton = Find<QPushButton>(root, "qtCancelButton");
    qtImportButton = Find<QPushButton>(root, "qtImportButton");
    qtBindPoseRadioButton = Find<QRadioButton>(root, "qtBindPoseRadioButton");
    qtCurrentPoseRadioButton = Find<QRadioButton>(root, "qtCurrentPoseRadioButton");
    qtTPoseRadioButton = Find<QRadioButton>(root, "qtTPoseRadioButton");
    qtFMGoZBackFromZBrushTableWidget = Find<QTableWidget>(root, "qtFMGoZBackFromZBrushTableWidget");
    return MissingResult();
}

} // namespace MV

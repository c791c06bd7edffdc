#include "CFMtoZBrushDlgUiComponent.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>

namespace MV {

QV::Result CFMtoZBrushDlgUiComponent::SetupUi(QWidget* root)
{
    ClearMissing();
    FMtoZBrushDlg = Find<QWidget>(root, "FMtoZBrushDlg");
    qtFMGoZToZBrushTableWidget = Find<QTableWidget>(root, "qtFMGoZToZBrushTableWidget");
    qtTemplateComboBox = Find<QComboBox>(root, "qtTemplateComboBox");
    qtTemplateLabel = Find<QLabel>(root, "qtTemplateLabel");
    qtSplitBodyPartGroupBox = Find<QGroupBox>(root, "qtSplitBodyPartGroupBox");
    qtEyeSockerCheckBox = Find<QCheckBox>(root, "qtEyeSockerCheckBox");
    qtEyewinkerCheckBox = Find<QCheckBox>(root, "qtEyewinkerCheckBox");
    qtFingerNailsCheckBox = Find<QCheckBox>(root, "qtFingerNailsCheckBox");
    qtMouthCheckBox = Find<QCheckBox>(root, "qtMouthCheckBox");
    qtSkinArmCheckBox = Find<QCheckBox>(root, "qtSkinArmCheckBox");
    qtSkinBodyCheckBox = Find<QCheckBox>(root, "qtSkinBodyCheckBox");
    qtSkinHeadCheckBox = Find<QCheckBox>(root, "qtSkinHeadCheckBox");
    qtSkinLegCheckBox = Find<QCheckBox>(root, "qtSkinLegCheckBox");
    qtTearDuctsCheckBox = Find<QCheckBox>(root, "qtTearDuctsCheckBox");
    qtToeNailsCheckBox = Find<QCheckBox>(root, "qtToeNailsCheckBox");
    qtPoseGroupBox = Find<QGroupBox>(root, "qtPoseGroupBox");
    qtBindPoseRadioButton = Find<QRadioButton>(root, "qtBindPoseRadioButton");
    qtCurrentPoseRadioButton = Find<QRadioButton>(root, "qtCurrentPoseRadioButton");
    qtTPoseRadioButton = Find<QRadioButton>(root, "qtTPoseRadioButton");
    qtGoZButton = Find<QPushButton>(root, "qtGoZButton");
    qtCancelButton = Find<QPushButton>(root, "qtCancelButton");
    return MissingResult();
}

} // namespace MV

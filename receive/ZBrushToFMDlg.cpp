#include "ZBrushToFMDlg.h"

#include "DialogForm.h"

#include <QPushButton>
#include <QRadioButton>

namespace MV {

ZBrushToFMDlg::ZBrushToFMDlg(QWidget* parent) : CPluginDialog(parent, Qt::WindowFlags()) {}

ZBrushToFMDlg::~ZBrushToFMDlg() = default;

QV::Result ZBrushToFMDlg::Initialize(const QString& pluginFolder, const QString& secondPath, CMiravaInterface* host)
{
    if (host == nullptr) {
        return QV::kInvalidArg;
    }
    m_pHost = host;
    m_strPluginFolder = pluginFolder;
    m_strSecondPath = secondPath;
    const QV::Result result = LoadDialogForm(m_kWidgetBuilder, this, &m_kUi, host, "ZBrushToFMDlg.ui", secondPath);
    if (QV::Failed(result)) {
        return result;
    }
    m_bFormComplete = true;
    connect(m_kUi.qtCancelButton, &QPushButton::clicked, this, &QDialog::close);
    return QV::kOk;
}

void ZBrushToFMDlg::SetUiPoseOption(EGozPoseOption option)
{
    if (!m_bFormComplete) {
        return;
    }
    switch (option) {
    case EGozPoseOption::TPose:
        m_kUi.qtTPoseRadioButton->setChecked(true);
        break;
    case EGozPoseOption::BindPose:
        m_kUi.qtBindPoseRadioButton->setChecked(true);
        break;
    case EGozPoseOption::CurrentPose:
        m_kUi.qtCurrentPoseRadioButton->setChecked(true);
        break;
    case EGozPoseOption::None:
        break;
    }
}

} // namespace MV

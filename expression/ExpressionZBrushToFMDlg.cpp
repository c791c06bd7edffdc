#include "ExpressionZBrushToFMDlg.h"

#include "DialogForm.h"

#include <QPushButton>

namespace MV {

ExpressionZBrushToFMDlg::ExpressionZBrushToFMDlg(QWidget* parent) : CPluginDialog(parent, Qt::WindowFlags()) {}

ExpressionZBrushToFMDlg::~ExpressionZBrushToFMDlg() = default;

QV::Result ExpressionZBrushToFMDlg::Initialize(const QString& pluginFolder, const QString& secondPath,
                                               CMiravaInterface* host)
{
    if (host == nullptr) {
        return QV::kInvalidArg;
    }
    m_pHost = host;
    m_strPluginFolder = pluginFolder;
    const QV::Result result = LoadDialogForm(m_kWidgetBuilder, this, &m_kUi, host, "ExpressionZBrushToFMDlg.ui", secondPath);
    if (QV::Failed(result)) {
        return result;
    }
    m_bFormComplete = true;
    connect(m_kUi.qtCancelButton, &QPushButton::clicked, this, &QDialog::hide);
    return QV::kOk;
}

} // namespace MV

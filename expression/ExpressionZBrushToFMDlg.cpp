#include "ExpressionZBrushToFMDlg.h"

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
    m_kWidgetBuilder.SetFormPath(QStringLiteral(":/plugin/MVGoZBrush/ExpressionZBrushToFMDlg.ui"));
    m_kWidgetBuilder.SetSecondPath(secondPath);
    m_kWidgetBuilder.SetLayoutIniPath(QStringLiteral(":/plugin/MVGoZBrush/LayoutUI.ini"));
    const QV::Result result = m_kWidgetBuilder.InitUi(this, &m_kUi, host, true, true);
    if (QV::Failed(result)) {
        return result;
    }
    m_bFormComplete = true;
    connect(m_kUi.qtCancelButton, &QPushButton::clicked, this, &QDialog::hide);
    return QV::kOk;
}

} // namespace MV

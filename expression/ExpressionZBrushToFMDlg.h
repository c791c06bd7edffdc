#pragma once

#include "CCoreBase.h"
#include "CExpressionZBrushToFMDlgUiComponent.h"
#include "CPluginDialog.h"
#include "CWidgetBuilder.h"

class CMiravaInterface;

namespace MV {

// Takes sculpted expressions back while a character's expression is being edited.
class ExpressionZBrushToFMDlg : public CPluginDialog, public CCoreBase
{
    Q_OBJECT
public:
    explicit ExpressionZBrushToFMDlg(QWidget* parent);
    ~ExpressionZBrushToFMDlg() override;

    QV::Result Initialize(const QString& pluginFolder, const QString& secondPath, CMiravaInterface* host);
    bool IsFormComplete() const { return m_bFormComplete; }

private:
    CExpressionZBrushToFMDlgUiComponent m_kUi;
    CMiravaInterface* m_pHost = nullptr;
    CWidgetBuilder m_kWidgetBuilder;
    QString m_strPluginFolder;
    bool m_bFormComplete = false;
};

} // namespace MV

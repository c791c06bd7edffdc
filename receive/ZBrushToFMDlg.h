#pragma once

#include "CCoreBase.h"
#include "CPluginDialog.h"
#include "CWidgetBuilder.h"
#include "CZBrushToFMDlgUiComponent.h"
#include "GoZTypes.h"

class CMiravaInterface;

namespace MV {

// Lists the meshes ZBrush sent back and imports them.
class ZBrushToFMDlg : public CPluginDialog, public CCoreBase
{
    Q_OBJECT
public:
    explicit ZBrushToFMDlg(QWidget* parent);
    ~ZBrushToFMDlg() override;

    QV::Result Initialize(const QString& pluginFolder, const QString& secondPath, CMiravaInterface* host);
    void SetUiPoseOption(EGozPoseOption option);
    bool IsFormComplete() const { return m_bFormComplete; }
    const CZBrushToFMDlgUiComponent& Ui() const { return m_kUi; }

private:
    CMiravaInterface* m_pHost = nullptr;
    CZBrushToFMDlgUiComponent m_kUi;
    CWidgetBuilder m_kWidgetBuilder;
    QString m_strPluginFolder;
    QString m_strSecondPath;
    bool m_bFormComplete = false;
};

} // namespace MV

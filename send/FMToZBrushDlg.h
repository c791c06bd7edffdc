#pragma once

#include "CFMToZBrushMeshInfo.h"
#include "CFMtoZBrushDlgUiComponent.h"
#include "CGoZSendPipeline.h"
#include "CPluginDialog.h"
#include "CWidgetBuilder.h"
#include "GoZTypes.h"

#include <QPointer>
#include <QStringList>

#include <array>
#include <memory>

class CMiravaInterface;

namespace MV {

class ZBrushToFMDlg;

// Split bits of the send dialog's check boxes.
enum EGozSplit : unsigned int
{
    EyeWinker = 1,
    EyeSocket = 2,
    TearDucts = 4,
    Mouth = 8,
    FingerNails = 16,
    ToeNails = 32,
    SkinHead = 64,
    SkinBody = 128,
    SkinArm = 256,
    SkinLeg = 512,
    SkinRest = 1024,
};

// Reviews what is sent to ZBrush and sends it.
class FMToZBrushDlg : public CPluginDialog
{
    Q_OBJECT
public:
    explicit FMToZBrushDlg(QWidget* parent);
    ~FMToZBrushDlg() override;

    QV::Result Initialize(const QString& pluginFolder, const QString& secondPath, CMiravaInterface* host);
    void SetReceiveDialog(ZBrushToFMDlg* dialog);
    // Set by the commands just before the dialog runs: an expression send also saves the pose.
    void SetExpressionGoZ(bool expression) { m_bExportPose = expression; }
    bool IsExpressionGoZ() const { return m_bExportPose; }
    bool IsFormComplete() const { return m_bFormComplete; }
    const CFMtoZBrushDlgUiComponent& Ui() const { return m_kUi; }

    unsigned int GetGozSplitState() const;
    bool IsCheckSplitBodyMesh() const;
    static bool IsHideRelinkTemplateComboBox(const CFMToZBrushMeshInfoList& meshInfo);
    void SetAllActions(int index);
    void UpdateTemplateComboBox();
    void UpdateTable();
    QV::Result BuildMeshInfo(QV::CHandle* pick, CFMToZBrushMeshInfoList& meshInfo) const;
    QV::Result SetGozActionInfo(CFMToZBrushMeshInfoList& meshInfo, const QStringList& gozFileList) const;
    QV::Result PrepareSplit();
    QV::Result OnGoZ();

    const CFMToZBrushMeshInfoList& Records() const { return m_kMeshInfo; }
    QString PoseFilePath() const { return m_kPipeline ? m_kPipeline->PoseFilePath() : QString(); }
    const std::vector<std::wstring>& RenamedMeshes() const { return m_kRenamed; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    CSendOptions CurrentOptions() const;
    void UpdateOptions(const QV::CArrayList<QV::CHandle*>& picks);
    void ChooseRowAction(int row, std::size_t action);
    // Rows per active action, kept with every change so a row change costs no full scan.
    void CountActions();
    void CountAction(std::size_t action, int delta);

    CMiravaInterface* m_pHost = nullptr;
    CFMtoZBrushDlgUiComponent m_kUi;
    QString m_strPixologicRoot;
    bool m_bExportPose = false;
    CFMToZBrushMeshInfoList m_kMeshInfo;
    std::array<std::size_t, 3> m_aActionCount{};
    QStringList m_kProjectFiles;
    std::unique_ptr<CGoZSendPipeline> m_kPipeline;
    std::vector<std::wstring> m_kRenamed;
    QPointer<ZBrushToFMDlg> m_pReceiveDialog;
    CWidgetBuilder m_kWidgetBuilder;
    bool m_bFormComplete = false;
};

} // namespace MV

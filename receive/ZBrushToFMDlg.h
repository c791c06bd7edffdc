#pragma once

#include "CCoreBase.h"
#include "CGoZImporter.h"
#include "CGoZReturnReader.h"
#include "CPluginDialog.h"
#include "CReceiveRecordBuilder.h"
#include "CWidgetBuilder.h"
#include "CZBrushToFMDlgUiComponent.h"
#include "CZBrushToFMMeshInfo.h"
#include "GoZTypes.h"

#include <QPointer>

#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

class CMiravaInterface;
class QAbstractItemModel;
class QComboBox;
class QStringListModel;

namespace MV {

// Lists the meshes ZBrush sent back and imports them. The rules live in the record
// builder and the importer; this class maps them to widgets.
class ZBrushToFMDlg : public CPluginDialog, public CCoreBase
{
    Q_OBJECT
public:
    // Table columns.
    enum EColumn : int
    {
        MeshNameColumn = 0,
        ActionColumn = 1,
        TargetColumn = 2,
        MeshColumn = 3,
        TextureColumn = 4,
        TextureSizeColumn = 5,
    };

    explicit ZBrushToFMDlg(QWidget* parent);
    ~ZBrushToFMDlg() override;

    QV::Result Initialize(const QString& pluginFolder, const QString& secondPath, CMiravaInterface* host);
    bool IsFormComplete() const { return m_bFormComplete; }
    const CZBrushToFMDlgUiComponent& Ui() const { return m_kUi; }

    // Returned files.
    QV::Result ReadGoZMesh(QV::CArrayList<std::wstring>& files) const { return m_kReader.ReadGoZMesh(files); }
    QV::Result GetGoZRelatedMotionName(QV::CArrayList<std::wstring>& motions) const
    {
        return m_kReader.GetGoZRelatedMotionName(motions);
    }

    // Records.
    QV::Result InitialAvatarPartMeshName();
    QV::Result CollectSceneMeshInfo(CZBrushToFMMeshInfo& info) const;
    int GetDefaultActionOption() const;
    std::wstring GetMeshName(const ENodeType& nodeType) const;
    QV::CHandle* GetAvatarTeeth(QV::CHandle* avatar) const;
    QV::Result RemoveActionOption(CZBrushToFMMeshInfo* info) const;
    const CZBrushToFMMeshInfoList& Records() const { return m_kRecords; }
    // Keeps the records and fills the table from them, as a finished receive does.
    void SetRecords(const CZBrushToFMMeshInfoList& records);

    // Table and option widgets.
    void CreateTable(const CZBrushToFMMeshInfoList& records);
    void UpdateTableWidgetUI(int row);
    void UpdateTemplateUI();
    void UpdatePoseOptionUI();
    EGozPoseOption GetPoseOption() const;
    void SetUiPoseOption(EGozPoseOption option);
    bool CheckUiStateCanGoz() const;
    QV::Result CheckPoseSectionVisible(const CZBrushToFMMeshInfoList& records);
    QV::Result IsAutoRigCheckBoxEnable(const CZBrushToFMMeshInfoList& records);
    QV::Result SetEyeElementCheckBoxState(const CZBrushToFMMeshInfoList& records);

    // Cell slots, by row.
    void SwitchActionComboBox(int row);
    void SwitchTargetComboBox(int row);
    void SwitchTextureSizeComboBox(int row);
    void ToggleMeshCheckBox(int row);
    void ToggleTextureCheckBox(int row);
    QV::Result ResetTemplateCheckBox(int index);

    // Receive and import.
    QV::Result GoZDataUpdated();
    QV::Result ImportGoZMesh();
    QV::Result CheckIsExpressionGoZ(const CZBrushToFMMeshInfoList& records);
    QV::Result RebuildConform(QV::CHandle* avatar, const QV::CArrayList<QV::CHandle*>& objects);
    bool IsExpressionGoZ() const { return m_bExpressionGoZ; }
    CImportOptions CurrentImportOptions() const;

    // "[MVGoZBursh] Please Select", as the target combo boxes show it.
    static QString PleaseSelectText();

private:
    // Which template entry the rows' check boxes match now; 0 when none.
    int MatchingTemplate() const;
    static bool ApplyTemplate(CZBrushToFMMeshInfo& record, int index);
    void FillRow(int row, const CZBrushToFMMeshInfo& record);
    void SetCell(int row, int column, QWidget* widget);
    QComboBox* MakeActionComboBox(int row, const CZBrushToFMMeshInfo& record);
    QComboBox* MakeTargetComboBox(int row, const CZBrushToFMMeshInfo& record);
    QComboBox* MakeTextureSizeComboBox(int row, const CZBrushToFMMeshInfo& record);
    void RefreshCheckBoxes(int row);
    // All targets and "Please Select", one model per candidate list.
    QAbstractItemModel* CandidateModel(const std::shared_ptr<const CTargetCandidateList>& candidates);
    void ResetCandidateModels();
    template <typename T>
    T* CellWidget(int row, int column) const;
    bool IsCurrentCell(int row, int column, const QWidget* widget) const;
    CZBrushToFMMeshInfo* RecordAt(int row);
    void SetTemplateEntriesHidden(bool hidden);

    CMiravaInterface* m_pHost = nullptr;
    CZBrushToFMDlgUiComponent m_kUi;
    CWidgetBuilder m_kWidgetBuilder;
    QString m_strPluginFolder;
    QString m_strSecondPath;
    bool m_bFormComplete = false;

    CGoZReturnReader m_kReader;
    std::unique_ptr<CReceiveRecordBuilder> m_pBuilder;
    CZBrushToFMMeshInfoList m_kRecords;
    // Row -> the texture box's last state, to give back when the mesh is checked again.
    std::unordered_map<int, bool> m_kTextureState;
    bool m_bExpressionGoZ = false;

    // Rows that offer every target share one model of them; short lists are the rows' own.
    std::vector<std::pair<std::shared_ptr<const CTargetCandidateList>, QPointer<QStringListModel>>> m_kCandidateModels;
};

} // namespace MV

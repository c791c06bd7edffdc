#pragma once

#include "CCoreBase.h"
#include "CExpressionImporter.h"
#include "CExpressionMatcher.h"
#include "CExpressionZBrushToFMDlgUiComponent.h"
#include "CGoZReturnReader.h"
#include "CPluginDialog.h"
#include "CReceiveRecordBuilder.h"
#include "CWidgetBuilder.h"
#include "CZBrushToFMMeshInfo.h"

#include <memory>

class CMiravaInterface;

namespace MV {

// Takes sculpted expressions back while a character's expression is being edited. The rules
// live in the matcher and the importer; this class maps them to its two option boxes.
class ExpressionZBrushToFMDlg : public CPluginDialog, public CCoreBase
{
    Q_OBJECT
public:
    explicit ExpressionZBrushToFMDlg(QWidget* parent);
    ~ExpressionZBrushToFMDlg() override;

    QV::Result Initialize(const QString& pluginFolder, const QString& secondPath, CMiravaInterface* host);
    bool IsFormComplete() const { return m_bFormComplete; }
    const CExpressionZBrushToFMDlgUiComponent& Ui() const { return m_kUi; }

    // 1: the return is not for this dialog; 0: handled (shown, or a message given).
    QV::Result GoZDataUpdated();
    QV::Result ImportGoZMesh();
    QV::Result ImportMotion();
    QV::Result RebuildConform(QV::CHandle* avatar, const QV::CArrayList<QV::CHandle*>& objects);
    // Offers the eye options only when an Update record lands on the edited character.
    QV::Result SetEyeElementCheckBoxState(const CZBrushToFMMeshInfoList& infos);
    bool CheckUiStateCanGoz() const;
    void UpdateTemplateUI();

    const CZBrushToFMMeshInfoList& Records() const { return m_kRecords; }
    // Keeps the records as a finished check does.
    void SetRecords(const CZBrushToFMMeshInfoList& records);
    const std::wstring& ExpressionName() const;
    CExpressionMatcher* Matcher() const { return m_pMatcher.get(); }
    CExpressionImportOptions CurrentImportOptions() const;

private:
    CExpressionZBrushToFMDlgUiComponent m_kUi;
    CMiravaInterface* m_pHost = nullptr;
    CZBrushToFMMeshInfoList m_kRecords;
    CWidgetBuilder m_kWidgetBuilder;
    QString m_strPluginFolder;
    bool m_bFormComplete = false;

    CGoZReturnReader m_kReader;
    std::unique_ptr<CReceiveRecordBuilder> m_pBuilder;
    std::unique_ptr<CExpressionMatcher> m_pMatcher;
};

} // namespace MV

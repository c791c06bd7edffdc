#include "ExpressionZBrushToFMDlg.h"

#include "CEventSender.h"
#include "CMiravaInterface.h"
#include "DialogForm.h"

#include <QCheckBox>
#include <QDebug>
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
    m_pBuilder = std::make_unique<CReceiveRecordBuilder>(host);
    m_pMatcher = std::make_unique<CExpressionMatcher>(host, m_kReader, *m_pBuilder);
    const QV::Result result =
        LoadDialogForm(m_kWidgetBuilder, this, &m_kUi, host, "ExpressionZBrushToFMDlg.ui", secondPath);
    if (QV::Failed(result)) {
        return result;
    }
    m_bFormComplete = true;

    if (CEventSender* events = host->GetEventSender()) {
        // The dialog is the context: the connection ends with it, whoever outlives whom.
        connect(events, &CEventSender::GoZDataUpdated, this, [this]() { GoZDataUpdated(); });
    }
    connect(m_kUi.qtImportButton, &QPushButton::clicked, this, [this]() {
        const QV::Result imported = ImportGoZMesh();
        if (QV::Failed(imported)) {
            // As the 32-bit code it is: a negative int in base 16 would come out sign-extended to 64 bits.
            qDebug().noquote() << "Expression import failed: 0x" +
                                      QString::number(static_cast<quint32>(imported), 16).rightJustified(8, QLatin1Char('0'));
        }
    });
    connect(m_kUi.qtCancelButton, &QPushButton::clicked, this, &QDialog::hide);
    return QV::kOk;
}

const std::wstring& ExpressionZBrushToFMDlg::ExpressionName() const
{
    static const std::wstring kNone;
    return m_pMatcher ? m_pMatcher->ExpressionName() : kNone;
}

QV::Result ExpressionZBrushToFMDlg::GoZDataUpdated()
{
    if (m_pHost == nullptr || !m_bFormComplete) {
        return QV::kInvalidArg;
    }
    QV::CArrayList<std::wstring> files;
    QV::Result result = m_kReader.ReadGoZMesh(files);
    if (QV::Failed(result)) {
        return result;
    }
    result = m_pMatcher->InitialAvatarPartMeshName();
    if (QV::Failed(result)) {
        return result;
    }
    QV::CHandle* avatar = m_pHost->Avatar()->GetBlendShapeEditingAvatar();
    if (avatar == nullptr) {
        return QV::kNothingDone; // no expression is edited: the receive dialog's return
    }

    std::wstring teethMeshName;
    QV::CArrayList<std::wstring> teethFiles;
    result = m_pMatcher->GatherTeethReturn(avatar, files, teethMeshName, teethFiles);
    if (QV::Failed(result)) {
        return result;
    }
    CZBrushToFMMeshInfo templateRecord;
    result = m_pBuilder->MakeTemplateRecord(templateRecord);
    if (QV::Failed(result)) {
        return result;
    }
    CZBrushToFMMeshInfoList records;
    result = m_pBuilder->BuildRecords(templateRecord, files, records);
    if (QV::Failed(result)) {
        return result;
    }

    CExpressionMatcher::EVerdict verdict = CExpressionMatcher::EVerdict::NotExpression;
    result = m_pMatcher->CheckReturn(avatar, records, this, verdict);
    if (QV::Failed(result) || verdict != CExpressionMatcher::EVerdict::Accepted) {
        return result;
    }
    result = SetEyeElementCheckBoxState(records);
    if (QV::Failed(result)) {
        return result;
    }
    m_kRecords = std::move(records);
    setModal(true);
    show();
    UpdateTemplateUI();
    return QV::kOk;
}

QV::Result ExpressionZBrushToFMDlg::SetEyeElementCheckBoxState(const CZBrushToFMMeshInfoList& infos)
{
    if (m_pHost == nullptr || !m_bFormComplete) {
        return QV::kInvalidArg;
    }
    CQueryService* query = m_pHost->Query();
    QV::Result result = QV::kOk;
    bool show = false;
    QV::CHandle* edited = m_pHost->Avatar()->GetBlendShapeEditingAvatar();
    std::wstring editedName;
    if (edited != nullptr) {
        editedName = query->HandleName(result, edited);
        if (QV::Failed(result)) {
            return result;
        }
    }
    for (const CZBrushToFMMeshInfo& info : infos) {
        if (edited == nullptr) {
            break;
        }
        QV::CHandle* mesh = CExpressionMatcher::TargetMesh(info);
        if (info.m_eAction != ActionUpdate || mesh == nullptr) {
            continue;
        }
        QV::CHandle* object = nullptr;
        query->GetPickOwner(result, mesh, 0, object);
        if (QV::Failed(result)) {
            return result;
        }
        QV::CHandle* owner = query->GetOwningCharacter(object != nullptr ? object : mesh);
        if (owner == nullptr) {
            continue;
        }
        const std::wstring ownerName = query->HandleName(result, owner);
        if (QV::Failed(result)) {
            return result;
        }
        if (ownerName == editedName) {
            show = true;
            break;
        }
    }
    for (QCheckBox* box : {m_kUi.qtAdjustEyeOcclusionCheckBox, m_kUi.qtAdjustTearlineCheckBox}) {
        box->setVisible(show);
        if (show) {
            box->setEnabled(true);
        }
    }
    return QV::kOk;
}

bool ExpressionZBrushToFMDlg::CheckUiStateCanGoz() const
{
    return CExpressionMatcher::CheckUiStateCanGoz(m_kRecords);
}

void ExpressionZBrushToFMDlg::UpdateTemplateUI()
{
    // No template of its own: Import has something to do once there are records.
    if (m_bFormComplete) {
        m_kUi.qtImportButton->setEnabled(!m_kRecords.IsEmpty());
    }
}

void ExpressionZBrushToFMDlg::SetRecords(const CZBrushToFMMeshInfoList& records)
{
    m_kRecords = records;
    UpdateTemplateUI();
}

CExpressionImportOptions ExpressionZBrushToFMDlg::CurrentImportOptions() const
{
    CExpressionImportOptions options;
    if (!m_bFormComplete) {
        return options;
    }
    // "Visible" as the dialog shows it, also while the dialog itself is hidden.
    const QWidget* self = this;
    options.m_bAdjustEyeOcclusion =
        m_kUi.qtAdjustEyeOcclusionCheckBox->isChecked() && m_kUi.qtAdjustEyeOcclusionCheckBox->isVisibleTo(self);
    options.m_bAdjustTearline =
        m_kUi.qtAdjustTearlineCheckBox->isChecked() && m_kUi.qtAdjustTearlineCheckBox->isVisibleTo(self);
    return options;
}

QV::Result ExpressionZBrushToFMDlg::ImportGoZMesh()
{
    if (m_pHost == nullptr || !m_bFormComplete) {
        return QV::kInvalidArg;
    }
    if (!CheckUiStateCanGoz()) {
        QT_WARNING_PUSH
        QT_WARNING_DISABLE_DEPRECATED
        const QString text = trUtf8("[MVGoZBursh] Error target");
        QT_WARNING_POP
        m_pHost->Ui()->ShowMessageBox(text, QString(), nullptr, kMessageWarning, kMessageButtonOk, 0);
        return QV::kOk;
    }
    CExpressionImporter importer(m_pHost, m_kReader, *m_pMatcher);
    const QV::Result result = importer.Import(m_kRecords, m_pMatcher->ExpressionName(), CurrentImportOptions());
    if (QV::Failed(result)) {
        return result; // the dialog stays open
    }
    QV::Result ignored = QV::kOk;
    m_pHost->Ui()->RefreshView(ignored, 0);
    hide();
    return QV::kOk;
}

QV::Result ExpressionZBrushToFMDlg::ImportMotion()
{
    if (m_pHost == nullptr || !m_pMatcher) {
        return QV::kInvalidArg;
    }
    return CExpressionImporter(m_pHost, m_kReader, *m_pMatcher).ImportMotion(m_pMatcher->ExpressionName());
}

QV::Result ExpressionZBrushToFMDlg::RebuildConform(QV::CHandle* avatar, const QV::CArrayList<QV::CHandle*>& objects)
{
    if (m_pHost == nullptr || !m_pMatcher) {
        return QV::kInvalidArg;
    }
    return CExpressionImporter(m_pHost, m_kReader, *m_pMatcher).RebuildConform(avatar, objects);
}

} // namespace MV

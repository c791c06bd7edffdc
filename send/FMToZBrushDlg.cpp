#include "FMToZBrushDlg.h"

#include "CMiravaInterface.h"
#include "CSendRecordBuilder.h"
#include "DialogForm.h"
#include "GoZPaths.h"
#include "ZBrushToFMDlg.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QListView>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QTableWidget>

#include <algorithm>

namespace MV {

namespace {

constexpr int kColumnWidth = 120;
constexpr int kPropCollectionNodeType = 5;
constexpr int kRelinkTemplateRow = 1;

QTableWidgetItem* TextItem(const std::wstring& text)
{
    auto* item = new QTableWidgetItem(QString::fromStdWString(text));
    item->setTextAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    item->setToolTip(item->text()); // the notes are longer than their column
    return item;
}

} // namespace

FMToZBrushDlg::FMToZBrushDlg(QWidget* parent) : CPluginDialog(parent, Qt::WindowFlags()) {}

FMToZBrushDlg::~FMToZBrushDlg() = default;

void FMToZBrushDlg::SetReceiveDialog(ZBrushToFMDlg* dialog)
{
    m_pReceiveDialog = dialog;
}

QV::Result FMToZBrushDlg::Initialize(const QString& pluginFolder, const QString& secondPath, CMiravaInterface* host)
{
    Q_UNUSED(pluginFolder);
    if (host == nullptr) {
        return QV::kInvalidArg;
    }
    m_pHost = host;
    const QV::Result result = LoadDialogForm(m_kWidgetBuilder, this, &m_kUi, host, "FMtoZBrushDlg.ui", secondPath);
    if (QV::Failed(result)) {
        return result;
    }
    m_bFormComplete = true;
    // The table texts are translated once, now, not when the first row needs them.
    (void)GozExportActionTexts();
    (void)GozExportActionInfoTexts();
    m_strPixologicRoot = GoZPaths::PixologicRoot();
    m_kPipeline = std::make_unique<CGoZSendPipeline>(host, m_strPixologicRoot);
    m_kPipeline->SetRenameCallback([this](const std::wstring& name) { m_kRenamed.push_back(name); });

    connect(m_kUi.qtGoZButton, &QPushButton::clicked, this, [this](bool) { OnGoZ(); });
    connect(m_kUi.qtCancelButton, &QPushButton::clicked, this, &QDialog::hide);
    connect(m_kUi.qtTemplateComboBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &FMToZBrushDlg::SetAllActions);
    m_kUi.qtFMGoZToZBrushTableWidget->setColumnWidth(0, kColumnWidth);
    m_kUi.qtFMGoZToZBrushTableWidget->setColumnWidth(1, kColumnWidth);
    return QV::kOk;
}

unsigned int FMToZBrushDlg::GetGozSplitState() const
{
    if (!m_bFormComplete) {
        return 0;
    }
    const auto on = [](const QCheckBox* box) { return box->isChecked(); };
    const auto onAndEnabled = [](const QCheckBox* box) { return box->isEnabled() && box->isChecked(); };
    unsigned int state = 0;
    state |= on(m_kUi.qtEyewinkerCheckBox) ? EyeWinker : 0U;
    state |= on(m_kUi.qtEyeSockerCheckBox) ? EyeSocket : 0U;
    state |= on(m_kUi.qtTearDuctsCheckBox) ? TearDucts : 0U;
    state |= on(m_kUi.qtMouthCheckBox) ? Mouth : 0U;
    state |= on(m_kUi.qtFingerNailsCheckBox) ? FingerNails : 0U;
    state |= on(m_kUi.qtToeNailsCheckBox) ? ToeNails : 0U;
    state |= onAndEnabled(m_kUi.qtSkinHeadCheckBox) ? SkinHead : 0U;
    state |= onAndEnabled(m_kUi.qtSkinBodyCheckBox) ? SkinBody : 0U;
    state |= onAndEnabled(m_kUi.qtSkinArmCheckBox) ? SkinArm : 0U;
    state |= onAndEnabled(m_kUi.qtSkinLegCheckBox) ? SkinLeg : 0U;
    const unsigned int allSkin = SkinHead | SkinBody | SkinArm | SkinLeg;
    if ((state & allSkin) != allSkin) {
        state |= SkinRest;
    }
    return state;
}

bool FMToZBrushDlg::IsCheckSplitBodyMesh() const
{
    if (!m_bFormComplete || !m_kUi.qtSplitBodyPartGroupBox->isEnabled()) {
        return false;
    }
    const QCheckBox* boxes[] = {m_kUi.qtEyeSockerCheckBox, m_kUi.qtEyewinkerCheckBox, m_kUi.qtFingerNailsCheckBox,
                                m_kUi.qtMouthCheckBox,     m_kUi.qtSkinArmCheckBox,   m_kUi.qtSkinBodyCheckBox,
                                m_kUi.qtSkinHeadCheckBox,  m_kUi.qtSkinLegCheckBox,   m_kUi.qtTearDuctsCheckBox,
                                m_kUi.qtToeNailsCheckBox};
    return std::any_of(std::begin(boxes), std::end(boxes), [](const QCheckBox* box) { return box->isChecked(); });
}

bool FMToZBrushDlg::IsHideRelinkTemplateComboBox(const CFMToZBrushMeshInfoList& meshInfo)
{
    return std::any_of(meshInfo.begin(), meshInfo.end(),
                       [](const CFMToZBrushMeshInfo& info) { return !info.HasAction(Relink); });
}

void FMToZBrushDlg::SetAllActions(int index)
{
    if (index == Create || index == Relink) {
        for (CFMToZBrushMeshInfo& info : m_kMeshInfo) {
            if (info.ActiveAction() != Skip) {
                info.SelectAction(static_cast<std::size_t>(index));
            }
        }
    }
    UpdateTable();
}

void FMToZBrushDlg::UpdateTemplateComboBox()
{
    const std::size_t rows = m_kMeshInfo.size();
    const QSignalBlocker blocker(m_kUi.qtTemplateComboBox);
    if (m_aActionCount[Relink] == rows) {
        m_kUi.qtTemplateComboBox->setCurrentIndex(1);
    } else if (m_aActionCount[Create] == rows) {
        m_kUi.qtTemplateComboBox->setCurrentIndex(0);
    } else {
        m_kUi.qtTemplateComboBox->setCurrentIndex(2);
    }
}

void FMToZBrushDlg::CountActions()
{
    m_aActionCount.fill(0);
    for (const CFMToZBrushMeshInfo& info : m_kMeshInfo) {
        CountAction(info.ActiveAction(), 1);
    }
}

void FMToZBrushDlg::CountAction(std::size_t action, int delta)
{
    if (action < m_aActionCount.size()) {
        m_aActionCount[action] = static_cast<std::size_t>(static_cast<long long>(m_aActionCount[action]) + delta);
    }
}

void FMToZBrushDlg::ChooseRowAction(int row, std::size_t action)
{
    if (row < 0 || static_cast<std::size_t>(row) >= m_kMeshInfo.size()) {
        return;
    }
    CFMToZBrushMeshInfo& info = m_kMeshInfo[static_cast<std::size_t>(row)];
    CountAction(info.ActiveAction(), -1);
    info.SelectAction(action);
    CountAction(info.ActiveAction(), 1);
    QTableWidget* table = m_kUi.qtFMGoZToZBrushTableWidget;
    const bool noNote = info.m_eNodeType == 4 || info.m_eNodeType == 35 || info.m_eNodeType == 36;
    table->setItem(row, 2, TextItem(noNote ? std::wstring() : GozExportActionInfoText(info.ActiveInfo())));
    UpdateTemplateComboBox();
}

void FMToZBrushDlg::UpdateTable()
{
    CountActions();
    QTableWidget* table = m_kUi.qtFMGoZToZBrushTableWidget;
    // Rows inserted one by one into a shown table re-place every cell widget each time, and
    // each cell widget shown or hidden in a visible viewport clips against all its
    // siblings: size the table once, and fill it with its viewport hidden.
    QWidget* viewport = table->viewport();
    const bool viewportHidden = viewport->isHidden();
    viewport->hide();
    table->setRowCount(0);
    table->setRowCount(static_cast<int>(m_kMeshInfo.size()));
    for (std::size_t i = 0; i < m_kMeshInfo.size(); ++i) {
        const CFMToZBrushMeshInfo& info = m_kMeshInfo[i];
        const int row = static_cast<int>(i);
        table->setItem(row, 0, TextItem(info.m_strObjectName));

        auto* combo = new QComboBox(table);
        {
            const QSignalBlocker blocker(combo);
            if (!info.IsCheckable()) {
                combo->addItem(QString::fromStdWString(GozExportActionText(info.ActiveAction())),
                               QVariant::fromValue<qulonglong>(info.ActiveAction()));
                combo->setEnabled(false);
            } else {
                for (std::size_t action : {std::size_t(Create), std::size_t(Relink), std::size_t(Skip)}) {
                    if (info.HasAction(action)) {
                        combo->addItem(QString::fromStdWString(GozExportActionText(action)),
                                       QVariant::fromValue<qulonglong>(action));
                    }
                }
                connect(combo, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this, row, combo](int index) {
                    ChooseRowAction(row, static_cast<std::size_t>(combo->itemData(index).toULongLong()));
                });
                combo->setCurrentIndex(info.GetActionMapIndex());
            }
            if (info.ActiveAction() == Skip) {
                combo->setEnabled(false);
            }
        }
        combo->setToolTip(combo->currentText());
        connect(combo, &QComboBox::currentTextChanged, combo, &QComboBox::setToolTip);
        table->setCellWidget(row, 1, combo);

        const bool noNote = info.m_eNodeType == 4 || info.m_eNodeType == 35 || info.m_eNodeType == 36;
        table->setItem(row, 2, TextItem(noNote ? std::wstring() : GozExportActionInfoText(info.ActiveInfo())));
    }
    viewport->setHidden(viewportHidden);
}

QV::Result FMToZBrushDlg::BuildMeshInfo(QV::CHandle* pick, CFMToZBrushMeshInfoList& meshInfo) const
{
    return CSendRecordBuilder(m_pHost).BuildMeshInfo(pick, meshInfo);
}

QV::Result FMToZBrushDlg::SetGozActionInfo(CFMToZBrushMeshInfoList& meshInfo, const QStringList& gozFileList) const
{
    return CSendRecordBuilder(m_pHost).SetGozActionInfo(meshInfo, gozFileList);
}

void FMToZBrushDlg::showEvent(QShowEvent* event)
{
    CPluginDialog::showEvent(event);
    if (m_pHost == nullptr || !m_bFormComplete) {
        return;
    }
    const CSendRecordBuilder builder(m_pHost);
    QV::Result result = QV::kOk;
    QV::CArrayList<QV::CHandle*> picks;
    m_pHost->Query()->GetPickedObjects(result, picks, 1);

    CFMToZBrushMeshInfoList records;
    for (QV::CHandle* pick : picks) {
        builder.BuildMeshInfo(pick, records);
    }
    builder.MarkTeethMesh(records);
    m_kProjectFiles = CSendRecordBuilder::ListProjectFiles(m_kPipeline->ProjectFolder());
    builder.SetGozActionInfo(records, m_kProjectFiles);
    m_kMeshInfo = std::move(records);
    m_kRenamed.clear();
    UpdateTable();
    UpdateOptions(picks);
}

void FMToZBrushDlg::UpdateOptions(const QV::CArrayList<QV::CHandle*>& picks)
{
    QV::CHandle* avatar = m_pHost->Avatar()->GetCurrentAvatar();
    m_kUi.qtSplitBodyPartGroupBox->setEnabled(avatar != nullptr && picks.Contains(avatar));

    auto* view = qobject_cast<QListView*>(m_kUi.qtTemplateComboBox->view());
    if (view != nullptr) {
        view->setRowHidden(kRelinkTemplateRow, IsHideRelinkTemplateComboBox(m_kMeshInfo));
    }
    UpdateTemplateComboBox();

    m_kUi.qtGoZButton->setEnabled(std::any_of(m_kMeshInfo.begin(), m_kMeshInfo.end(), [](const CFMToZBrushMeshInfo& info) {
        return info.ActiveAction() != Skip;
    }));

    if (avatar == nullptr) {
        bool allCollections = true;
        for (QV::CHandle* pick : picks) {
            QV::Result ignored = QV::kOk;
            int nodeType = 0;
            m_pHost->Query()->GetNodeType(ignored, pick, nodeType);
            allCollections = allCollections && nodeType == kPropCollectionNodeType;
        }
        m_kUi.qtSplitBodyPartGroupBox->setVisible(allCollections);
        m_kUi.qtSplitBodyPartGroupBox->setEnabled(false);
        m_kUi.qtPoseGroupBox->setVisible(false);
        return;
    }

    QV::Result ignored = QV::kOk;
    int nodeType = 0;
    m_pHost->Query()->GetNodeType(ignored, avatar, nodeType);
    m_kUi.qtPoseGroupBox->setVisible(true);
    m_kUi.qtSplitBodyPartGroupBox->setVisible(nodeType == 4);
    const bool skin = m_pHost->Query()->IsSkinSplitSupported(avatar);
    for (QCheckBox* box : {m_kUi.qtSkinHeadCheckBox, m_kUi.qtSkinBodyCheckBox, m_kUi.qtSkinArmCheckBox,
                           m_kUi.qtSkinLegCheckBox}) {
        box->setEnabled(skin);
    }
    if (m_bExportPose) {
        return;
    }
    QRadioButton* bind = m_kUi.qtBindPoseRadioButton;
    if (nodeType == 1 || nodeType == 2) {
        if (bind->isChecked()) {
            m_kUi.qtTPoseRadioButton->setChecked(true);
        }
        bind->setEnabled(false);
        bind->setVisible(false);
    } else if (nodeType == 3) {
        m_kUi.qtCurrentPoseRadioButton->setChecked(true);
        bind->setEnabled(false);
        bind->setVisible(false);
    } else {
        // The dialog is reused: a character of another type gets the bind pose back.
        bind->setEnabled(true);
        bind->setVisible(true);
    }
}

CSendOptions FMToZBrushDlg::CurrentOptions() const
{
    CSendOptions options;
    options.m_bSplitGroupEnabled = m_kUi.qtSplitBodyPartGroupBox->isEnabled();
    options.m_bAnySplitChecked = IsCheckSplitBodyMesh();
    options.m_uSplitState = GetGozSplitState();
    options.m_bBindPose = m_kUi.qtBindPoseRadioButton->isChecked();
    options.m_bTPose = m_kUi.qtTPoseRadioButton->isChecked();
    options.m_bCurrentPose = m_kUi.qtCurrentPoseRadioButton->isChecked();
    return options;
}

QV::Result FMToZBrushDlg::PrepareSplit()
{
    return m_kPipeline->PrepareSplit(CurrentOptions());
}

QV::Result FMToZBrushDlg::OnGoZ()
{
    if (m_pHost == nullptr || !m_kPipeline) {
        return QV::kInvalidArg;
    }
    const CSendOptions options = CurrentOptions();
    // The pipeline drops Skip rows; a failed send must leave the table as it was.
    CFMToZBrushMeshInfoList records = m_kMeshInfo;
    QV::CArrayList<std::wstring> exported;
    m_kRenamed.clear();
    QV::Result result = m_kPipeline->Export(records, m_kProjectFiles, options, m_bExportPose, exported);
    if (QV::Failed(result)) {
        return result;
    }
    if (m_pReceiveDialog) {
        m_pReceiveDialog->SetUiPoseOption(CGoZSendPipeline::ReceivePoseOption(options));
    }
    m_kPipeline->WriteGoZExchangeFiles(result, exported);
    if (QV::Failed(result)) {
        return result;
    }
    m_kPipeline->ClearPoseFilePath();
    hide();
    return QV::kOk;
}

} // namespace MV

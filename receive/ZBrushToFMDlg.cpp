#include "ZBrushToFMDlg.h"

#include "CCellComboBox.h"
#include "CEventSender.h"
#include "CMiravaInterface.h"
#include "CTargetComboBox.h"
#include "DialogForm.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QStringListModel>
#include <QTableWidget>

#include <algorithm>
#include <unordered_map>

namespace MV {

namespace {

const int kColumnWidths[] = {179, 120, 179, 120, 120, 120};
constexpr int kCharacterAvatarType = 4;
// Template entries that take textures; shown only when some row has a texture.
constexpr int kTemplateMeshAndTexture = 1;
constexpr int kTemplateMeshOnly = 2;
constexpr int kTemplateTextureOnly = 3;

QString ToQString(const std::wstring& text)
{
    return QString::fromStdWString(text);
}

} // namespace

ZBrushToFMDlg::ZBrushToFMDlg(QWidget* parent) : CPluginDialog(parent, Qt::WindowFlags()) {}

ZBrushToFMDlg::~ZBrushToFMDlg()
{
    ResetCandidateModels();
}

QString ZBrushToFMDlg::PleaseSelectText()
{
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    const QString text = trUtf8("[MVGoZBursh] Please Select");
    QT_WARNING_POP
    return text;
}

QV::Result ZBrushToFMDlg::Initialize(const QString& pluginFolder, const QString& secondPath, CMiravaInterface* host)
{
    if (host == nullptr) {
        return QV::kInvalidArg;
    }
    m_pHost = host;
    m_strPluginFolder = pluginFolder;
    m_strSecondPath = secondPath;
    m_pBuilder = std::make_unique<CReceiveRecordBuilder>(host);
    const QV::Result result = LoadDialogForm(m_kWidgetBuilder, this, &m_kUi, host, "ZBrushToFMDlg.ui", secondPath);
    if (QV::Failed(result)) {
        return result;
    }
    m_bFormComplete = true;

    if (CEventSender* events = host->GetEventSender()) {
        // The dialog is the context: the connection ends with it, whoever outlives whom.
        connect(events, &CEventSender::GoZDataUpdated, this, [this]() { GoZDataUpdated(); });
    }
    connect(m_kUi.qtImportButton, &QPushButton::clicked, this, [this]() { ImportGoZMesh(); });
    connect(m_kUi.qtTemplateComboBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [this](int index) { ResetTemplateCheckBox(index); });
    connect(m_kUi.qtCancelButton, &QPushButton::clicked, this, &QDialog::close);

    QTableWidget* table = m_kUi.qtFMGoZBackFromZBrushTableWidget;
    for (int column = 0; column < static_cast<int>(std::size(kColumnWidths)); ++column) {
        table->setColumnWidth(column, kColumnWidths[column]);
    }
    return QV::kOk;
}

// ---------------------------------------------------------------------------------------
// Records

QV::Result ZBrushToFMDlg::InitialAvatarPartMeshName()
{
    return m_pBuilder ? m_pBuilder->InitialAvatarPartMeshName() : QV::kInvalidArg;
}

QV::Result ZBrushToFMDlg::CollectSceneMeshInfo(CZBrushToFMMeshInfo& info) const
{
    return m_pBuilder ? m_pBuilder->CollectSceneMeshInfo(info) : QV::kInvalidArg;
}

int ZBrushToFMDlg::GetDefaultActionOption() const
{
    return m_pBuilder ? m_pBuilder->GetDefaultActionOption() : QV::kInvalidArg;
}

std::wstring ZBrushToFMDlg::GetMeshName(const ENodeType& nodeType) const
{
    return m_pBuilder ? m_pBuilder->GetMeshName(nodeType) : std::wstring();
}

QV::CHandle* ZBrushToFMDlg::GetAvatarTeeth(QV::CHandle* avatar) const
{
    return m_pBuilder ? m_pBuilder->GetAvatarTeeth(avatar) : nullptr;
}

QV::Result ZBrushToFMDlg::RemoveActionOption(CZBrushToFMMeshInfo* info) const
{
    return m_pBuilder ? m_pBuilder->RemoveActionOption(info) : QV::kInvalidArg;
}

void ZBrushToFMDlg::SetRecords(const CZBrushToFMMeshInfoList& records)
{
    m_kRecords = records;
    CreateTable(m_kRecords);
    UpdateTemplateUI();
    UpdatePoseOptionUI();
}

CZBrushToFMMeshInfo* ZBrushToFMDlg::RecordAt(int row)
{
    return row >= 0 && row < m_kRecords.GetCount() ? &m_kRecords[row] : nullptr;
}

// ---------------------------------------------------------------------------------------
// Table

template <typename T>
T* ZBrushToFMDlg::CellWidget(int row, int column) const
{
    return m_bFormComplete ? qobject_cast<T*>(m_kUi.qtFMGoZBackFromZBrushTableWidget->cellWidget(row, column))
                           : nullptr;
}

bool ZBrushToFMDlg::IsCurrentCell(int row, int column, const QWidget* widget) const
{
    // A replaced cell widget lingers until the event loop deletes it; it speaks for no row.
    return m_bFormComplete && m_kUi.qtFMGoZBackFromZBrushTableWidget->cellWidget(row, column) == widget;
}

void ZBrushToFMDlg::ResetCandidateModels()
{
    // Deleted now, before the combo boxes that used them: a combo box leaving a model that
    // thousands of others still share searches all their connections, while one leaving a
    // deleted model has nothing to search.
    for (const auto& entry : m_kCandidateModels) {
        delete entry.second.data();
    }
    m_kCandidateModels.clear();
}

QAbstractItemModel* ZBrushToFMDlg::CandidateModel(const std::shared_ptr<const CTargetCandidateList>& candidates)
{
    for (const auto& entry : m_kCandidateModels) {
        if (entry.first == candidates && entry.second) {
            return entry.second;
        }
    }
    static const CTargetCandidateList kNone;
    const CTargetCandidateList& list = candidates ? *candidates : kNone;
    QStringList names;
    names.reserve(list.GetCount() + 1);
    for (const CTargetCandidate& candidate : list) {
        names << ToQString(candidate.first);
    }
    names << PleaseSelectText();
    auto* model = new QStringListModel(names, this);
    m_kCandidateModels.emplace_back(candidates, model);
    return model;
}

QComboBox* ZBrushToFMDlg::MakeActionComboBox(int row, const CZBrushToFMMeshInfo& record)
{
    QTableWidget* table = m_kUi.qtFMGoZBackFromZBrushTableWidget;
    QStringList names;
    names.reserve(record.m_kActionNames.GetCount());
    for (const std::wstring& name : record.m_kActionNames) {
        names << ToQString(name);
    }
    auto* combo = new CCellComboBox(table);
    combo->addItems(names);
    combo->setCurrentIndex(names.indexOf(ToQString(GetStringByActionOption(static_cast<EActionOption>(record.m_eAction)))));
    connect(combo, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this, row, combo]() {
        if (IsCurrentCell(row, ActionColumn, combo)) {
            SwitchActionComboBox(row);
        }
    });
    return combo;
}

QComboBox* ZBrushToFMDlg::MakeTargetComboBox(int row, const CZBrushToFMMeshInfo& record)
{
    QTableWidget* table = m_kUi.qtFMGoZBackFromZBrushTableWidget;
    const CTargetCandidateList& candidates = record.TargetCandidates();

    if (record.m_eAction == ActionUpdate && m_pBuilder->LinkedCandidate(record) < 0) {
        // Nothing in the scene is of this mesh's type: the row keeps what it has, unchangeable.
        auto* fixed = new CCellComboBox(table);
        const int chosen = record.ChosenCandidate();
        if (chosen >= 0) {
            fixed->addItem(ToQString(candidates[chosen].first));
        }
        fixed->setEnabled(false);
        return fixed;
    }

    auto* combo = new CTargetComboBox(table);
    if (record.NarrowsTargets()) {
        QStringList names;
        names.reserve(record.m_kOfferedTargets.GetCount() + 1);
        for (int i = 0; i < record.m_kOfferedTargets.GetCount(); ++i) {
            const int candidate = record.CandidateAt(i);
            names << (candidate >= 0 ? ToQString(candidates[candidate].first) : QString());
        }
        names << PleaseSelectText();
        combo->addItems(names);
    } else {
        combo->setModel(CandidateModel(record.m_pTargetCandidates));
    }
    const bool hasTarget = HasTarget(record) && record.ChosenCandidate() >= 0;
    combo->SetLastItemHidden(hasTarget);
    combo->setCurrentIndex(hasTarget ? record.m_iChosenTarget : combo->count() - 1);
    connect(combo, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this, row, combo]() {
        if (IsCurrentCell(row, TargetColumn, combo)) {
            SwitchTargetComboBox(row);
        }
    });
    return combo;
}

QComboBox* ZBrushToFMDlg::MakeTextureSizeComboBox(int row, const CZBrushToFMMeshInfo& record)
{
    QStringList names;
    names.reserve(record.m_kTextureSizes.GetCount());
    for (std::int32_t size : record.m_kTextureSizes) {
        // The sizes are numbers; only the "Custom" entry is a word to translate. Rows are read back by index.
        names << (size == kCustomTextureSize ? tr("Custom") : ToQString(GetTextureOptionName(size)));
    }
    auto* combo = new CCellComboBox(m_kUi.qtFMGoZBackFromZBrushTableWidget);
    combo->addItems(names);
    combo->setCurrentIndex(record.m_iChosenTextureSize);
    connect(combo, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this, row, combo]() {
        if (IsCurrentCell(row, TextureSizeColumn, combo)) {
            SwitchTextureSizeComboBox(row);
        }
    });
    return combo;
}

void ZBrushToFMDlg::SetCell(int row, int column, QWidget* widget)
{
    QTableWidget* table = m_kUi.qtFMGoZBackFromZBrushTableWidget;
    // A widget shown without a size of its own sizes itself to its contents first: for a
    // combo box that measures every item, thousands of targets on every row.
    widget->resize(table->columnWidth(column), table->verticalHeader()->defaultSectionSize());
    table->setCellWidget(row, column, widget);
}

void ZBrushToFMDlg::FillRow(int row, const CZBrushToFMMeshInfo& record)
{
    QTableWidget* table = m_kUi.qtFMGoZBackFromZBrushTableWidget;
    auto* item = new QTableWidgetItem(ToQString(record.m_strMeshName));
    item->setTextAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    table->setItem(row, MeshNameColumn, item);

    SetCell(row, ActionColumn, MakeActionComboBox(row, record));
    SetCell(row, TargetColumn, MakeTargetComboBox(row, record));

    auto* mesh = new QCheckBox(table);
    mesh->setChecked(record.m_bTakeMesh);
    connect(mesh, &QCheckBox::toggled, this, [this, row, mesh]() {
        if (IsCurrentCell(row, MeshColumn, mesh)) {
            ToggleMeshCheckBox(row);
        }
    });
    SetCell(row, MeshColumn, mesh);

    if (!GetTextureEnable(record)) {
        table->removeCellWidget(row, TextureColumn);
        table->removeCellWidget(row, TextureSizeColumn);
        return;
    }
    auto* texture = new QCheckBox(table);
    texture->setChecked(record.m_bTakeTexture);
    texture->setEnabled(record.m_eAction == ActionUpdate || record.m_bTakeMesh);
    connect(texture, &QCheckBox::toggled, this, [this, row, texture]() {
        if (IsCurrentCell(row, TextureColumn, texture)) {
            ToggleTextureCheckBox(row);
        }
    });
    SetCell(row, TextureColumn, texture);
    SetCell(row, TextureSizeColumn, MakeTextureSizeComboBox(row, record));
}

void ZBrushToFMDlg::CreateTable(const CZBrushToFMMeshInfoList& records)
{
    if (!m_bFormComplete || !m_pBuilder) {
        return;
    }
    QTableWidget* table = m_kUi.qtFMGoZBackFromZBrushTableWidget;
    // Sized once and filled unseen: rows inserted one by one into a shown table re-place
    // every cell widget each time. The whole table is hidden, not only its viewport: each
    // cell widget shown in a visible window queues a repaint of its own.
    table->setUpdatesEnabled(false);
    const bool tableHidden = table->isHidden();
    table->hide();

    table->clearContents();
    table->setRowCount(0);
    ResetCandidateModels();
    m_kTextureState.clear();
    table->setRowCount(records.GetCount());
    for (int row = 0; row < records.GetCount(); ++row) {
        const CZBrushToFMMeshInfo& record = records[row];
        FillRow(row, record);
        if (GetTextureEnable(record)) {
            m_kTextureState[row] = record.m_bTakeTexture;
        }
    }

    // Each cell widget placed over its cell before anything paints: a second return shown in
    // the open dialog would otherwise stack tens of thousands of widgets at the top left,
    // and Qt paints overlapping siblings recursively, one stack frame each.
    table->doItemsLayout();
    table->setHidden(tableHidden);
    table->setUpdatesEnabled(true);
}

void ZBrushToFMDlg::UpdateTableWidgetUI(int row)
{
    const CZBrushToFMMeshInfo* record = RecordAt(row);
    if (record == nullptr || !m_bFormComplete || row >= m_kUi.qtFMGoZBackFromZBrushTableWidget->rowCount()) {
        return;
    }
    FillRow(row, *record);
}

void ZBrushToFMDlg::RefreshCheckBoxes(int row)
{
    const CZBrushToFMMeshInfo* record = RecordAt(row);
    if (record == nullptr) {
        return;
    }
    if (auto* mesh = CellWidget<QCheckBox>(row, MeshColumn)) {
        const QSignalBlocker blocker(mesh);
        mesh->setChecked(record->m_bTakeMesh);
    }
    if (auto* texture = CellWidget<QCheckBox>(row, TextureColumn)) {
        const QSignalBlocker blocker(texture);
        texture->setChecked(record->m_bTakeTexture);
        texture->setEnabled(record->m_eAction == ActionUpdate || record->m_bTakeMesh);
    }
}

// ---------------------------------------------------------------------------------------
// Cell slots

void ZBrushToFMDlg::SwitchActionComboBox(int row)
{
    CZBrushToFMMeshInfo* record = RecordAt(row);
    auto* combo = CellWidget<QComboBox>(row, ActionColumn);
    if (record != nullptr && combo != nullptr) {
        record->m_eAction = GetActionOption(combo->currentText().toStdWString());
    }
    UpdateTableWidgetUI(row);
    UpdateTemplateUI();
    UpdatePoseOptionUI();
}

void ZBrushToFMDlg::SwitchTargetComboBox(int row)
{
    CZBrushToFMMeshInfo* record = RecordAt(row);
    auto* combo = CellWidget<QComboBox>(row, TargetColumn);
    if (record == nullptr || combo == nullptr) {
        UpdateTableWidgetUI(row);
        return;
    }
    const int oldCandidate = record->ChosenCandidate();
    const int index = combo->currentIndex();
    const bool pleaseSelect = index == combo->count() - 1 && combo->currentText() == PleaseSelectText();
    record->m_iChosenTarget = pleaseSelect ? -1 : index;
    const int newCandidate = record->ChosenCandidate();

    // Update targets are exclusive: a row that had the new target takes this row's old one.
    // Only the rows that changed are rebuilt; the others would come out the same.
    std::vector<int> changed{row};
    if (record->m_eAction == ActionUpdate && newCandidate >= 0) {
        for (int other = 0; other < m_kRecords.GetCount(); ++other) {
            CZBrushToFMMeshInfo& info = m_kRecords[other];
            if (other == row || info.m_eAction != ActionUpdate || !HasTarget(info) ||
                info.ChosenCandidate() != newCandidate) {
                continue;
            }
            info.m_iChosenTarget = info.ListIndexOf(oldCandidate);
            changed.push_back(other);
        }
    }
    for (int changedRow : changed) {
        UpdateTableWidgetUI(changedRow);
    }
}

void ZBrushToFMDlg::SwitchTextureSizeComboBox(int row)
{
    CZBrushToFMMeshInfo* record = RecordAt(row);
    auto* combo = CellWidget<QComboBox>(row, TextureSizeColumn);
    if (record != nullptr && combo != nullptr) {
        record->m_iChosenTextureSize = combo->currentIndex();
    }
}

void ZBrushToFMDlg::ToggleMeshCheckBox(int row)
{
    CZBrushToFMMeshInfo* record = RecordAt(row);
    auto* mesh = CellWidget<QCheckBox>(row, MeshColumn);
    if (record != nullptr && mesh != nullptr) {
        record->m_bTakeMesh = mesh->isChecked();
        if (GetTextureEnable(*record) && record->m_eAction != ActionUpdate) {
            if (!record->m_bTakeMesh) {
                record->m_bTakeTexture = false;
            } else {
                const auto remembered = m_kTextureState.find(row);
                if (remembered != m_kTextureState.end()) {
                    record->m_bTakeTexture = remembered->second;
                }
            }
        }
    }
    UpdateTableWidgetUI(row);
    UpdateTemplateUI();
}

void ZBrushToFMDlg::ToggleTextureCheckBox(int row)
{
    CZBrushToFMMeshInfo* record = RecordAt(row);
    auto* texture = CellWidget<QCheckBox>(row, TextureColumn);
    if (record != nullptr && texture != nullptr && GetTextureEnable(*record)) {
        m_kTextureState[row] = texture->isChecked();
        record->m_bTakeTexture = texture->isChecked();
    }
    UpdateTableWidgetUI(row);
    UpdateTemplateUI();
}

bool ZBrushToFMDlg::ApplyTemplate(CZBrushToFMMeshInfo& record, int index)
{
    const CZBrushToFMMeshInfo before = record;
    const bool texture = GetTextureEnable(record);
    switch (index) {
    case kTemplateMeshAndTexture:
        record.m_bTakeMesh = true;
        record.m_bTakeTexture = texture ? true : record.m_bTakeTexture;
        break;
    case kTemplateMeshOnly:
        record.m_bTakeMesh = true;
        record.m_bTakeTexture = texture ? false : record.m_bTakeTexture;
        break;
    case kTemplateTextureOnly:
        if (record.m_eAction == ActionUpdate) {
            record.m_bTakeMesh = false;
            record.m_bTakeTexture = texture ? true : record.m_bTakeTexture;
        }
        break;
    default:
        break;
    }
    return record.m_bTakeMesh != before.m_bTakeMesh || record.m_bTakeTexture != before.m_bTakeTexture;
}

QV::Result ZBrushToFMDlg::ResetTemplateCheckBox(int index)
{
    for (int row = 0; row < m_kRecords.GetCount(); ++row) {
        CZBrushToFMMeshInfo& record = m_kRecords[row];
        if (!ApplyTemplate(record, index)) {
            continue;
        }
        if (GetTextureEnable(record)) {
            m_kTextureState[row] = record.m_bTakeTexture;
        }
        RefreshCheckBoxes(row);
    }
    return QV::kOk;
}

int ZBrushToFMDlg::MatchingTemplate() const
{
    if (m_kRecords.IsEmpty()) {
        return 0;
    }
    const bool anyUpdate = std::any_of(m_kRecords.begin(), m_kRecords.end(), [](const CZBrushToFMMeshInfo& record) {
        return record.m_eAction == ActionUpdate;
    });
    for (int index : {kTemplateMeshAndTexture, kTemplateMeshOnly, kTemplateTextureOnly}) {
        if (index == kTemplateTextureOnly && !anyUpdate) {
            continue; // it would touch no row
        }
        const bool unchanged = std::all_of(m_kRecords.begin(), m_kRecords.end(), [index](CZBrushToFMMeshInfo record) {
            return !ApplyTemplate(record, index);
        });
        if (unchanged) {
            return index;
        }
    }
    return 0;
}

void ZBrushToFMDlg::UpdateTemplateUI()
{
    if (!m_bFormComplete) {
        return;
    }
    const QSignalBlocker templateBlocker(m_kUi.qtTemplateComboBox);
    const QSignalBlocker importBlocker(m_kUi.qtImportButton);
    m_kUi.qtImportButton->setEnabled(true);
    const bool anyRow = !m_kRecords.IsEmpty();
    m_kUi.qtTemplateComboBox->setEnabled(anyRow);
    m_kUi.qtTemplateLabel->setEnabled(anyRow);
    m_kUi.qtTemplateComboBox->setCurrentIndex(MatchingTemplate());
}

void ZBrushToFMDlg::SetTemplateEntriesHidden(bool hidden)
{
    auto* list = qobject_cast<QListView*>(m_kUi.qtTemplateComboBox->view());
    if (list == nullptr) {
        return;
    }
    list->setRowHidden(kTemplateMeshAndTexture, hidden);
    list->setRowHidden(kTemplateTextureOnly, hidden);
}

void ZBrushToFMDlg::UpdatePoseOptionUI()
{
    if (!m_bFormComplete) {
        return;
    }
    const bool enabled = std::all_of(m_kRecords.begin(), m_kRecords.end(), [](const CZBrushToFMMeshInfo& record) {
        return record.m_eAction == ActionCreateAcc || record.m_eAction == ActionCreateProp;
    });
    m_kUi.qtPoseGroupBox->setEnabled(enabled);
}

EGozPoseOption ZBrushToFMDlg::GetPoseOption() const
{
    if (!m_bFormComplete || m_pHost == nullptr || m_pHost->Avatar()->GetCurrentAvatar() == nullptr) {
        return EGozPoseOption::None;
    }
    if (m_kUi.qtBindPoseRadioButton->isChecked()) {
        return EGozPoseOption::BindPose;
    }
    if (m_kUi.qtTPoseRadioButton->isChecked() || !m_kUi.qtCurrentPoseRadioButton->isChecked()) {
        return EGozPoseOption::TPose;
    }
    return EGozPoseOption::CurrentPose;
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

bool ZBrushToFMDlg::CheckUiStateCanGoz() const
{
    return std::none_of(m_kRecords.begin(), m_kRecords.end(), [](const CZBrushToFMMeshInfo& record) {
        return record.m_eAction == ActionUpdate && !HasTarget(record);
    });
}

QV::Result ZBrushToFMDlg::CheckPoseSectionVisible(const CZBrushToFMMeshInfoList& records)
{
    if (!m_bFormComplete) {
        return QV::kInvalidArg;
    }
    m_kUi.qtPoseGroupBox->setVisible(false);
    for (const CZBrushToFMMeshInfo& record : records) {
        const int parentType = record.m_iParentType;
        if (record.m_eAction != ActionUpdate || !HasTarget(record) || parentType < 1 || parentType > 4) {
            continue;
        }
        if (parentType == 1 || parentType == 2) {
            SetUiPoseOption(EGozPoseOption::TPose);
        } else if (parentType == 3) {
            SetUiPoseOption(EGozPoseOption::CurrentPose);
        } else {
            m_kUi.qtPoseGroupBox->setVisible(true);
            QV::CHandle* parent = m_pHost->Query()->GetParentObject(record.ChosenTargetHandle());
            QRadioButton* bind = m_kUi.qtBindPoseRadioButton;
            if (m_pHost->Query()->IsBindPoseLocked(parent)) {
                if (bind->isChecked()) {
                    m_kUi.qtTPoseRadioButton->setChecked(true);
                }
                bind->setEnabled(false);
                bind->setVisible(false);
            } else {
                bind->setEnabled(true);
                bind->setVisible(true);
            }
        }
        break;
    }
    return QV::kOk;
}

QV::Result ZBrushToFMDlg::SetEyeElementCheckBoxState(const CZBrushToFMMeshInfoList& records)
{
    if (!m_bFormComplete) {
        return QV::kInvalidArg;
    }
    CQueryService* query = m_pHost->Query();
    bool fitEyes = false;
    for (const CZBrushToFMMeshInfo& record : records) {
        if (record.m_eAction != ActionUpdate || !HasTarget(record)) {
            continue;
        }
        QV::CHandle* target = record.ChosenTargetHandle();
        QV::CHandle* parent = target == nullptr ? nullptr : query->GetParentObject(target);
        if (parent != nullptr && query->IsBindPoseLocked(parent)) {
            fitEyes = true;
            break;
        }
    }
    QCheckBox* eye = m_kUi.qtAdjustEyeOcclusionCheckBox;
    QCheckBox* tear = m_kUi.qtAdjustTearlineCheckBox;
    eye->setVisible(fitEyes);
    tear->setVisible(fitEyes);
    eye->setEnabled(true);
    tear->setEnabled(true);

    // A returned eye element was sculpted by hand: fitting it again would undo that.
    const std::wstring eyeName = GetMeshName(static_cast<ENodeType>(CGoZImporter::kEyeOcclusion));
    const std::wstring tearName = GetMeshName(static_cast<ENodeType>(CGoZImporter::kTearLine));
    for (const CZBrushToFMMeshInfo& record : records) {
        if (!tearName.empty() && record.m_strMeshName.find(tearName) != std::wstring::npos) {
            tear->setEnabled(false);
        }
        if (!eyeName.empty() && record.m_strMeshName.find(eyeName) != std::wstring::npos) {
            eye->setEnabled(false);
        }
    }
    return QV::kOk;
}

QV::Result ZBrushToFMDlg::IsAutoRigCheckBoxEnable(const CZBrushToFMMeshInfoList& records)
{
    if (!m_bFormComplete) {
        return QV::kInvalidArg;
    }
    QCheckBox* autoRig = m_kUi.qtDoAutoRigBox;
    QV::CHandle* avatar = m_pHost->Avatar()->GetCurrentAvatar();
    if (avatar == nullptr) {
        autoRig->setVisible(false);
        return QV::kOk;
    }
    CQueryService* query = m_pHost->Query();
    QV::Result result = QV::kOk;
    int type = 0;
    query->GetAvatarType(result, avatar, type);
    if (QV::Failed(result)) {
        return result;
    }
    autoRig->setVisible(type == kCharacterAvatarType);

    QV::CArrayList<std::wstring> rigMeshes;
    m_pHost->Fitting()->ListAvatarRigMeshNames(result, avatar, rigMeshes);
    if (QV::Failed(result)) {
        return result;
    }
    std::unordered_map<std::wstring, int> remaining;
    for (const std::wstring& name : rigMeshes) {
        ++remaining[name];
    }
    for (const CZBrushToFMMeshInfo& record : records) {
        if (remaining.empty()) {
            break;
        }
        if (record.m_eAction != ActionUpdate || !HasTarget(record)) {
            continue;
        }
        const std::wstring name = query->HandleName(result, record.ChosenTargetHandle());
        if (QV::Failed(result)) {
            return result;
        }
        remaining.erase(name);
    }
    autoRig->setEnabled(remaining.empty());
    return QV::kOk;
}

// ---------------------------------------------------------------------------------------
// Receive and import

QV::Result ZBrushToFMDlg::CheckIsExpressionGoZ(const CZBrushToFMMeshInfoList& records)
{
    return CGoZImporter::CheckIsExpressionGoZ(m_kReader, records, m_bExpressionGoZ);
}

QV::Result ZBrushToFMDlg::RebuildConform(QV::CHandle* avatar, const QV::CArrayList<QV::CHandle*>& objects)
{
    if (m_pHost == nullptr || !m_pBuilder) {
        return QV::kInvalidArg;
    }
    return CGoZImporter(m_pHost, m_kReader, *m_pBuilder).RebuildConform(avatar, objects);
}

QV::Result ZBrushToFMDlg::GoZDataUpdated()
{
    if (m_pHost == nullptr || !m_pBuilder || !m_bFormComplete) {
        return QV::kInvalidArg;
    }
    QV::CHandle* avatar = m_pHost->Avatar()->GetCurrentAvatar();

    QV::CArrayList<std::wstring> files;
    QV::Result result = ReadGoZMesh(files);
    if (QV::Failed(result)) {
        return result;
    }
    result = InitialAvatarPartMeshName();
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

    result = CReceiveRecordBuilder::CheckRows(records);
    if (QV::Succeeded(result)) {
        result = IsAutoRigCheckBoxEnable(records);
    }
    if (QV::Succeeded(result)) {
        result = SetEyeElementCheckBoxState(records);
    }
    if (QV::Succeeded(result)) {
        result = CheckIsExpressionGoZ(records);
    }
    if (QV::Succeeded(result)) {
        result = CheckPoseSectionVisible(records);
    }
    if (QV::Failed(result)) {
        return result;
    }

    m_kRecords = std::move(records);
    const bool anyTexture = std::any_of(m_kRecords.begin(), m_kRecords.end(),
                                        [](const CZBrushToFMMeshInfo& record) { return GetTextureEnable(record); });
    SetTemplateEntriesHidden(!anyTexture);
    CreateTable(m_kRecords);
    UpdateTemplateUI();
    UpdatePoseOptionUI();
    setModal(true);

    if (m_pHost->Query()->ShouldSkipReceiveDialog(avatar)) {
        return QV::kNothingDone;
    }
    if (!m_bExpressionGoZ) {
        show();
    }
    return QV::kOk;
}

CImportOptions ZBrushToFMDlg::CurrentImportOptions() const
{
    CImportOptions options;
    if (!m_bFormComplete) {
        return options;
    }
    const QWidget* self = this;
    options.m_ePoseOption = GetPoseOption();
    options.m_bAutoRig = m_kUi.qtDoAutoRigBox->isEnabled() && m_kUi.qtDoAutoRigBox->isChecked();
    // "Visible" as the dialog shows it, also while the dialog itself is hidden.
    options.m_bAdjustEyeOcclusion =
        m_kUi.qtAdjustEyeOcclusionCheckBox->isChecked() && m_kUi.qtAdjustEyeOcclusionCheckBox->isVisibleTo(self);
    options.m_bAdjustTearline =
        m_kUi.qtAdjustTearlineCheckBox->isChecked() && m_kUi.qtAdjustTearlineCheckBox->isVisibleTo(self);
    options.m_bBindPose = m_kUi.qtBindPoseRadioButton->isChecked();
    return options;
}

QV::Result ZBrushToFMDlg::ImportGoZMesh()
{
    if (m_pHost == nullptr || !m_pBuilder || !m_bFormComplete) {
        return QV::kInvalidArg;
    }
    if (!CheckUiStateCanGoz()) {
        QT_WARNING_PUSH
        QT_WARNING_DISABLE_DEPRECATED
        const QString text = trUtf8("[MVGoZBursh] Error target");
        QT_WARNING_POP
        m_pHost->Ui()->ShowMessageBox(text, QString(), this, kMessageWarning, kMessageButtonOk, 0);
        return QV::kOk;
    }
    const CImportOptions options = CurrentImportOptions();
    CGoZImporter importer(m_pHost, m_kReader, *m_pBuilder);
    const QV::Result result = importer.ImportRows(m_kRecords, options);
    if (QV::Failed(result)) {
        return result;
    }
    hide();
    return importer.UpdateAvatar(options);
}

} // namespace MV

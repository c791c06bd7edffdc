#include "CTargetComboBox.h"
#include "ReceiveFixture.h"

#include <QGroupBox>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QRadioButton>
#include <QRect>

#include <vector>

using namespace MV;
using namespace MV::Test;

namespace {

QStringList Items(const QComboBox* combo)
{
    QStringList items;
    for (int i = 0; i < combo->count(); ++i) {
        items << combo->itemText(i);
    }
    return items;
}

class ReceiveDialog : public ReceiveFixture
{
public:
    void SetUp() override
    {
        ReceiveFixture::SetUp();
        StartDialog(kDialogScene);
    }

    void Choose(QComboBox* combo, int index) { ASSERT_NE(combo, nullptr); combo->setCurrentIndex(index); }
    void Check(QCheckBox* box, bool checked) { ASSERT_NE(box, nullptr); box->setChecked(checked); }
};

TEST(ReceiveDialogSetup, InitializeWithoutAHostIsRefused)
{
    ZBrushToFMDlg dialog(nullptr);
    EXPECT_EQ(dialog.Initialize(QString(), QString(), nullptr), QV::kInvalidArg);
    EXPECT_FALSE(dialog.IsFormComplete());
    EXPECT_EQ(dialog.GoZDataUpdated(), QV::kInvalidArg);
}

TEST_F(ReceiveDialog, TheHostsDataEventFillsAndShowsTheTable)
{
    WriteReturn(kDialogReturn);
    WriteFile(QLatin1String(kTextureSizeFile), kTextureSizes);
    m_pHost->RaiseGoZDataUpdated();
    ASSERT_EQ(Table()->rowCount(), 5);
    EXPECT_TRUE(m_pDialog->isVisible());
    EXPECT_TRUE(m_pDialog->isModal());
    EXPECT_FALSE(m_pDialog->IsExpressionGoZ());

    // name, action, target, whether the row has texture cells
    const struct { const char *name, *action, *target; bool texture; } rows[] = {
        {"Hero_Body", "Update", "Hero_Body", false}, {"RockOne", "Update", "Rock B", true},
        {"RockTwo", "Update", "Rock B", false},      {"Lamp", "Create Cloth", "Hero_Body", true},
        {"Vase", "Create Cloth", "Hero_Body", false},
    };
    for (int row = 0; row < 5; ++row) {
        SCOPED_TRACE(rows[row].name);
        ASSERT_NE(Table()->item(row, 0), nullptr);
        EXPECT_EQ(Table()->item(row, 0)->text(), rows[row].name);
        ASSERT_NE(ActionCombo(row), nullptr);
        EXPECT_EQ(ActionCombo(row)->currentText(), rows[row].action);
        ASSERT_NE(TargetCombo(row), nullptr);
        EXPECT_EQ(TargetCombo(row)->currentText(), rows[row].target);
        ASSERT_NE(MeshBox(row), nullptr);
        EXPECT_TRUE(MeshBox(row)->isChecked());
        EXPECT_EQ(TextureBox(row) != nullptr, rows[row].texture);
        EXPECT_EQ(SizeCombo(row) != nullptr, rows[row].texture);
    }
    EXPECT_EQ(Items(ActionCombo(BodyRow)), (QStringList{"Update", "Create Acc", "Create Prop"}));
    EXPECT_EQ(Items(ActionCombo(LampRow)), (QStringList{"Update", "Create Acc", "Create Cloth", "Create Prop"}));
    EXPECT_EQ(Items(SizeCombo(RockOneRow)), (QStringList{"512 x 512", "1024 x 1024", "Custom"}));
    EXPECT_EQ(SizeCombo(RockOneRow)->currentText(), "1024 x 1024");
    EXPECT_EQ(Items(TargetCombo(RockOneRow)), (QStringList{"Rock A", "Rock B", ZBrushToFMDlg::PleaseSelectText()}));
}

TEST_F(ReceiveDialog, RowsOfferingAllTargetsShareOneModel)
{
    ASSERT_EQ(Receive(), QV::kOk);
    auto* lamp = qobject_cast<CTargetComboBox*>(TargetCombo(LampRow));
    ASSERT_NE(lamp, nullptr);
    EXPECT_EQ(lamp->model(), TargetCombo(VaseRow)->model());
    EXPECT_EQ(Items(lamp), (QStringList{"Hero_Body", "Hero_Head", "Rock A", "Rock B", ZBrushToFMDlg::PleaseSelectText()}));
    EXPECT_TRUE(lamp->IsLastItemHidden()) << "a row with a target does not offer Please Select";
    EXPECT_NE(TargetCombo(RockOneRow)->model(), TargetCombo(RockTwoRow)->model()) << "narrowed lists are the row's own";
}

TEST_F(ReceiveDialog, UpdateTargetsSwapBetweenRows)
{
    ASSERT_EQ(Receive(), QV::kOk);
    QWidget* bodyCombo = TargetCombo(BodyRow);
    const auto chosen = [this]() {
        return std::vector<int>{Record(BodyRow).m_iChosenTarget, Record(RockOneRow).m_iChosenTarget,
                                Record(RockTwoRow).m_iChosenTarget};
    };
    Choose(TargetCombo(RockOneRow), 0); // Rock A; nobody had it
    EXPECT_EQ(chosen(), (std::vector<int>{0, 0, 1}));
    Choose(TargetCombo(RockTwoRow), 0); // Rock A, which RockOne has: they swap
    EXPECT_EQ(chosen(), (std::vector<int>{0, 1, 0}));
    EXPECT_EQ(TargetCombo(RockOneRow)->currentText(), "Rock B");
    EXPECT_EQ(TargetCombo(RockTwoRow)->currentText(), "Rock A");
    EXPECT_EQ(TargetCombo(BodyRow), bodyCombo) << "rows that did not change are not rebuilt";

    // A row without a target that takes another's leaves that one without.
    Choose(TargetCombo(RockOneRow), 2);
    EXPECT_EQ(Record(RockOneRow).m_iChosenTarget, -1);
    EXPECT_EQ(TargetCombo(RockOneRow)->currentText(), ZBrushToFMDlg::PleaseSelectText());
    EXPECT_FALSE(qobject_cast<CTargetComboBox*>(TargetCombo(RockOneRow))->IsLastItemHidden());
    Choose(TargetCombo(RockOneRow), 0);
    EXPECT_EQ(chosen(), (std::vector<int>{0, 0, -1}));
    EXPECT_EQ(TargetCombo(RockTwoRow)->currentText(), ZBrushToFMDlg::PleaseSelectText());
}

TEST_F(ReceiveDialog, AnUpdateRowWithNothingOfItsTypeKeepsItsTargetFixed)
{
    ASSERT_EQ(Receive(), QV::kOk);
    Choose(ActionCombo(VaseRow), 0); // Update: nothing in the scene is a vase
    ASSERT_FALSE(TargetCombo(VaseRow)->isEnabled());
    TargetCombo(VaseRow)->setCurrentIndex(-1);
    EXPECT_EQ(Record(VaseRow).m_iChosenTarget, 0) << "the fixed box is not connected";

    CZBrushToFMMeshInfoList records = m_pDialog->Records();
    records[VaseRow].m_iChosenTarget = -1;
    m_pDialog->SetRecords(records);
    EXPECT_EQ(TargetCombo(VaseRow)->count(), 0);
    EXPECT_FALSE(TargetCombo(VaseRow)->isEnabled());
}

TEST_F(ReceiveDialog, AnUpdateRowKeepsItsTextureWhateverTheMeshDoes)
{
    ASSERT_EQ(Receive(), QV::kOk);
    Check(TextureBox(RockOneRow), true);
    Check(MeshBox(RockOneRow), false);
    EXPECT_FALSE(Record(RockOneRow).m_bTakeMesh);
    EXPECT_TRUE(Record(RockOneRow).m_bTakeTexture);
    EXPECT_TRUE(TextureBox(RockOneRow)->isEnabled());
    Choose(SizeCombo(RockOneRow), 2);
    EXPECT_EQ(Record(RockOneRow).m_iChosenTextureSize, 2);
}

TEST_F(ReceiveDialog, ThePoseSectionIsForNewAccessoriesOrWithoutRows)
{
    ASSERT_EQ(Receive(), QV::kOk);
    const QGroupBox* pose = m_pDialog->Ui().qtPoseGroupBox;
    EXPECT_FALSE(pose->isEnabled()) << "Update and Create Cloth rows";
    m_pDialog->SetRecords(CZBrushToFMMeshInfoList{Record(LampRow)});
    Choose(ActionCombo(0), 1);
    EXPECT_EQ(Record(0).m_eAction, ActionCreateAcc);
    EXPECT_TRUE(pose->isEnabled());
    m_pDialog->SetRecords(CZBrushToFMMeshInfoList());
    EXPECT_TRUE(pose->isEnabled()) << "no rows";
}

TEST_F(ReceiveDialog, TemplateEntriesSetTheRowsCheckBoxes)
{
    ASSERT_EQ(Receive(), QV::kOk);
    const CZBrushToFMMeshInfoList initial = m_pDialog->Records();
    // Rows: Update without texture, Update textured, Update, Create Cloth textured, Create Cloth.
    const struct {
        int index;
        bool mesh[5], texture[5];
    } cases[] = {
        {0, {true, true, true, true, true}, {false, false, false, false, false}},
        {1, {true, true, true, true, true}, {false, true, false, true, false}},
        {2, {true, true, true, true, true}, {false, false, false, false, false}},
        {3, {false, false, false, true, true}, {false, true, false, false, false}},
        {7, {true, true, true, true, true}, {false, false, false, false, false}},
    };
    for (const auto& c : cases) {
        CZBrushToFMMeshInfoList start = initial;
        start[LampRow].m_bTakeTexture = c.index == 2; // something for "mesh only" to clear
        m_pDialog->SetRecords(start);
        EXPECT_EQ(m_pDialog->ResetTemplateCheckBox(c.index), QV::kOk);
        for (int row = 0; row < 5; ++row) {
            SCOPED_TRACE(::testing::Message() << "template " << c.index << ", row " << row);
            EXPECT_EQ(Record(row).m_bTakeMesh, c.mesh[row]);
            EXPECT_EQ(MeshBox(row)->isChecked(), c.mesh[row]);
            EXPECT_EQ(Record(row).m_bTakeTexture, c.texture[row]);
            if (TextureBox(row) != nullptr) {
                EXPECT_EQ(TextureBox(row)->isChecked(), c.texture[row]);
            }
        }
    }

    // Choosing an entry in the box applies it; the box then names what the rows match.
    m_pDialog->SetRecords(initial);
    m_pDialog->Ui().qtTemplateComboBox->setCurrentIndex(1);
    EXPECT_TRUE(Record(LampRow).m_bTakeTexture);
    Check(TextureBox(LampRow), false);
    EXPECT_EQ(m_pDialog->Ui().qtTemplateComboBox->currentIndex(), 0);
    Check(TextureBox(RockOneRow), false);
    EXPECT_EQ(m_pDialog->Ui().qtTemplateComboBox->currentIndex(), 2);
    EXPECT_FALSE(Record(LampRow).m_bTakeTexture) << "the update did not re-apply the entry";

    // Its texture entries show only while a row has a texture.
    auto* list = qobject_cast<QListView*>(m_pDialog->Ui().qtTemplateComboBox->view());
    ASSERT_NE(list, nullptr);
    EXPECT_FALSE(list->isRowHidden(1) || list->isRowHidden(2) || list->isRowHidden(3));
    ASSERT_EQ(Receive({"Hero_Body", "Vase"}), QV::kOk);
    EXPECT_TRUE(list->isRowHidden(1));
    EXPECT_FALSE(list->isRowHidden(2));
    EXPECT_TRUE(list->isRowHidden(3));
    ASSERT_EQ(Receive(), QV::kOk);
    EXPECT_FALSE(list->isRowHidden(1) || list->isRowHidden(3));

    // The box and its label are for rows: an empty return leaves both disabled.
    EXPECT_TRUE(m_pDialog->Ui().qtTemplateComboBox->isEnabled() && m_pDialog->Ui().qtTemplateLabel->isEnabled());
    ASSERT_EQ(Receive(QStringList()), QV::kOk);
    EXPECT_FALSE(m_pDialog->Ui().qtTemplateComboBox->isEnabled());
    EXPECT_FALSE(m_pDialog->Ui().qtTemplateLabel->isEnabled());
}

TEST_F(ReceiveDialog, UpdatingOneRowRebuildsOnlyThatRow)
{
    ASSERT_EQ(Receive(), QV::kOk);
    QWidget* before[5];
    for (int row = 0; row < 5; ++row) {
        before[row] = TargetCombo(row);
    }
    m_pDialog->UpdateTableWidgetUI(LampRow);
    m_pDialog->UpdateTableWidgetUI(99); // no such row: nothing happens
    for (int row = 0; row < 5; ++row) {
        EXPECT_EQ(TargetCombo(row) == before[row], row != LampRow) << row;
    }
    EXPECT_EQ(Table()->rowCount(), 5);
}

TEST_F(ReceiveDialog, PoseOptionIsReadFromTheRadioButtons)
{
    const CZBrushToFMDlgUiComponent& ui = m_pDialog->Ui();
    const struct {
        const char* avatar;
        QRadioButton* checked; // null: none checked
        EGozPoseOption expected;
    } cases[] = {
        {"hero", ui.qtBindPoseRadioButton, EGozPoseOption::BindPose},
        {"hero", ui.qtTPoseRadioButton, EGozPoseOption::TPose},
        {"hero", ui.qtCurrentPoseRadioButton, EGozPoseOption::CurrentPose},
        {"hero", nullptr, EGozPoseOption::TPose},
        {"", ui.qtBindPoseRadioButton, EGozPoseOption::None},
    };
    for (const auto& c : cases) {
        SetAvatar(QLatin1String(c.avatar));
        for (QRadioButton* button : {ui.qtBindPoseRadioButton, ui.qtTPoseRadioButton, ui.qtCurrentPoseRadioButton}) {
            button->setAutoExclusive(false);
            button->setChecked(button == c.checked);
            button->setAutoExclusive(true);
        }
        EXPECT_EQ(m_pDialog->GetPoseOption(), c.expected) << c.avatar << " " << (c.checked ? "checked" : "none");
    }
}

TEST_F(ReceiveDialog, ThePoseSectionShowsForTheFirstQualifyingUpdateRow)
{
    ASSERT_EQ(Receive(), QV::kOk);
    const CZBrushToFMDlgUiComponent& ui = m_pDialog->Ui();
    const CZBrushToFMMeshInfo body = Record(BodyRow);
    const struct {
        const char* what;
        int parentType, action, chosen;
        bool locked, shown, bindShown;
        EGozPoseOption pose;
    } cases[] = {
        {"parent type 1", 1, ActionUpdate, 0, true, false, true, EGozPoseOption::TPose},
        {"parent type 2", 2, ActionUpdate, 0, true, false, true, EGozPoseOption::TPose},
        {"parent type 3", 3, ActionUpdate, 0, true, false, true, EGozPoseOption::CurrentPose},
        {"character, bind pose locked", 4, ActionUpdate, 0, true, true, false, EGozPoseOption::TPose},
        {"character", 4, ActionUpdate, 0, false, true, true, EGozPoseOption::BindPose},
        {"not an update", 4, ActionCreateAcc, 0, true, false, true, EGozPoseOption::BindPose},
        {"no target", 4, ActionUpdate, -1, true, false, true, EGozPoseOption::BindPose},
        {"other parent type", 5, ActionUpdate, 0, true, false, true, EGozPoseOption::BindPose},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        SetObjectFlag("hero", &Host::CSceneObject::m_bBindPoseLocked, c.locked);
        ui.qtBindPoseRadioButton->setEnabled(true);
        ui.qtBindPoseRadioButton->setVisible(true);
        m_pDialog->SetUiPoseOption(EGozPoseOption::BindPose);
        CZBrushToFMMeshInfo record = body;
        record.m_iParentType = c.parentType;
        record.m_eAction = c.action;
        record.m_iChosenTarget = c.chosen;
        EXPECT_EQ(m_pDialog->CheckPoseSectionVisible(CZBrushToFMMeshInfoList{record}), QV::kOk);
        EXPECT_EQ(ui.qtPoseGroupBox->isVisibleTo(m_pDialog.get()), c.shown);
        // The section itself is disabled while Update rows are listed; the button's own state counts.
        EXPECT_EQ(ui.qtBindPoseRadioButton->isVisibleTo(ui.qtPoseGroupBox), c.bindShown);
        EXPECT_EQ(ui.qtBindPoseRadioButton->isEnabledTo(ui.qtPoseGroupBox), c.bindShown);
        EXPECT_EQ(m_pDialog->GetPoseOption(), c.pose);
    }
}

TEST_F(ReceiveDialog, AutoRigNeedsACharacterAndEveryRigMeshUpdated)
{
    QCheckBox* autoRig = m_pDialog->Ui().qtDoAutoRigBox;
    ASSERT_EQ(Receive(), QV::kOk);
    EXPECT_TRUE(autoRig->isVisibleTo(m_pDialog.get()));
    EXPECT_FALSE(autoRig->isEnabled()) << "Hero_Head is not updated";

    ASSERT_EQ(Receive({"Hero_Body", "Hero_Head", "Vase"}), QV::kOk);
    EXPECT_TRUE(autoRig->isEnabled());
    Choose(TargetCombo(1), 0); // Hero_Head's row takes Hero_Body: the two swap, both rigged still
    EXPECT_EQ(m_pDialog->IsAutoRigCheckBoxEnable(m_pDialog->Records()), QV::kOk);
    EXPECT_TRUE(autoRig->isEnabled());

    m_pHost->Scene().Object(m_pHost->Scene().IndexOf(QStringLiteral("hero"))).m_iAvatarType = 2;
    EXPECT_EQ(m_pDialog->IsAutoRigCheckBoxEnable(m_pDialog->Records()), QV::kOk);
    EXPECT_FALSE(autoRig->isVisibleTo(m_pDialog.get()));

    ASSERT_EQ(m_pHost->SetFailure(QStringLiteral("ListAvatarRigMeshNames"), QV::kOutOfRange), QV::kOk);
    EXPECT_EQ(m_pDialog->IsAutoRigCheckBoxEnable(m_pDialog->Records()), QV::kOutOfRange);
    m_pHost->ClearFailures();

    SetAvatar(QString());
    autoRig->setVisible(true);
    EXPECT_EQ(m_pDialog->IsAutoRigCheckBoxEnable(m_pDialog->Records()), QV::kOk);
    EXPECT_FALSE(autoRig->isVisibleTo(m_pDialog.get()));
}

TEST_F(ReceiveDialog, EyeElementBoxesShowForTheCharacterAndStepAsideForReturnedElements)
{
    QCheckBox* eye = m_pDialog->Ui().qtAdjustEyeOcclusionCheckBox;
    QCheckBox* tear = m_pDialog->Ui().qtAdjustTearlineCheckBox;
    const struct {
        const char* what;
        QStringList list;
        bool locked, shown, eyeEnabled, tearEnabled;
    } cases[] = {
        {"body updated", {"Hero_Body"}, true, true, true, true},
        {"check does not hold", {"Hero_Body"}, false, false, true, true},
        {"no update row", {"Vase"}, true, false, true, true},
        {"eye occlusion returned", {"Hero_Body", "Hero_EyeOcclusion"}, true, true, false, true},
        {"tear line returned", {"Hero_Body", "Hero_TearLine"}, true, true, true, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        SetObjectFlag("hero", &Host::CSceneObject::m_bBindPoseLocked, c.locked);
        ASSERT_EQ(Receive(c.list), QV::kOk);
        EXPECT_EQ(eye->isVisibleTo(m_pDialog.get()), c.shown);
        EXPECT_EQ(tear->isVisibleTo(m_pDialog.get()), c.shown);
        EXPECT_EQ(eye->isEnabled(), c.eyeEnabled);
        EXPECT_EQ(tear->isEnabled(), c.tearEnabled);
    }
}

TEST_F(ReceiveDialog, AReturnedExpressionOrTheHostsSkipKeepsTheDialogHidden)
{
    const struct {
        const char* what;
        const char* motion; // empty: none
        bool skip;
        QV::Result result;
        bool expression, shown;
    } cases[] = {
        {"a plain return", "", false, QV::kOk, false, true},
        {"pose named after the owning character", "Hero.mvMotionPlus", false, QV::kOk, true, false},
        {"pose named after a returned mesh", "RockOne.mvMotionPlus", false, QV::kOk, true, false},
        {"pose named in another case", "hero.mvMotionPlus", false, QV::kOk, false, true},
        {"pose of a mesh without targets", "Lamp.mvMotionPlus", false, QV::kOk, false, true},
        {"the host skips the dialog", "", true, QV::kNothingDone, false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        QDir(QLatin1String(kProjectFolder)).removeRecursively();
        if (*c.motion != 0) {
            WriteFile(QLatin1String(kProjectFolder) + QLatin1String(c.motion), "m");
        }
        SetObjectFlag("hero", &Host::CSceneObject::m_bSkipReceiveDialog, c.skip);
        m_pDialog->hide();
        EXPECT_EQ(Receive(), c.result);
        EXPECT_EQ(m_pDialog->IsExpressionGoZ(), c.expression);
        EXPECT_EQ(m_pDialog->isVisible(), c.shown);
        EXPECT_EQ(Table()->rowCount(), 5) << "the table is filled either way";
    }
}

TEST_F(ReceiveDialog, AFailedReceiveLeavesTheTableAsItWas)
{
    ASSERT_EQ(Receive({"Hero_Body", "Vase"}), QV::kOk);
    const CZBrushToFMMeshInfoList before = m_pDialog->Records();

    QFile::remove(QLatin1String(kAppFolder) + QStringLiteral("GoZ_Info.txt"));
    EXPECT_EQ(m_pDialog->GoZDataUpdated(), QV::kFail);
    for (const char* operation : {"FindObjectByName", "ListAvatarRigMeshNames", "GetGozExtraMeshNames"}) {
        m_pHost->ClearFailures();
        ASSERT_EQ(m_pHost->SetFailure(QLatin1String(operation), QV::kOutOfRange), QV::kOk);
        EXPECT_EQ(Receive(), QV::kOutOfRange) << operation;
    }
    m_pHost->ClearFailures();
    QFile::remove(QLatin1String(kTextureSizeFile));
    WriteList(kDialogReturn.join(QLatin1Char('\n')).toUtf8());
    EXPECT_EQ(m_pDialog->GoZDataUpdated(), QV::kOutOfMemory) << "no texture-size settings";

    EXPECT_EQ(m_pDialog->Records(), before);
    EXPECT_EQ(Table()->rowCount(), 2);
}

TEST_F(ReceiveDialog, ASecondReturnIntoTheOpenDialogPlacesEveryCellWidgetBeforeItPaints)
{
    // Cell widgets left unplaced pile up at the table's corner, and a large return painted
    // that way recurses once per widget.
    ASSERT_EQ(Receive(), QV::kOk);
    ASSERT_TRUE(m_pDialog->isVisible());
    QCoreApplication::processEvents();
    ASSERT_EQ(Receive(), QV::kOk);

    // Where each widget is, read before anything asks the table for a cell's place (which
    // would lay it out there and then).
    struct Cell { int row, column; QRect geometry; };
    std::vector<Cell> cells;
    for (int row = 0; row < Table()->rowCount(); ++row) {
        for (int column = 1; column < Table()->columnCount(); ++column) {
            if (const QWidget* widget = Table()->cellWidget(row, column)) {
                cells.push_back({row, column, widget->geometry()});
            }
        }
    }
    ASSERT_GE(cells.size(), 5u * 3);
    for (const Cell& cell : cells) {
        SCOPED_TRACE(testing::Message() << "row " << cell.row << ", column " << cell.column);
        EXPECT_TRUE(Table()->visualRect(Table()->model()->index(cell.row, cell.column)).contains(cell.geometry.center()));
    }
}

} // namespace

#include "SendFixture.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QListView>
#include <QPushButton>
#include <QRadioButton>

using namespace MV;
using namespace MV::Test;

namespace {

class SendDialog : public SendFixture
{
protected:
    void SetUp() override { Start(kSendScene); }

    QCheckBox* Box(QCheckBox* CFMtoZBrushDlgUiComponent::*member) const { return m_pDialog->Ui().*member; }
};

TEST_F(SendDialog, StandardCharacterGivesOneFixedCreateRow)
{
    SetAvatar(QStringLiteral("hero"));
    Pick({QStringLiteral("hero")});
    Open();
    ASSERT_EQ(m_pDialog->Records().size(), 1u);
    const CFMToZBrushMeshInfo& record = m_pDialog->Records()[0];
    EXPECT_EQ(record.m_kActionMap, (std::vector<CFMToZBrushMeshInfo::ActionPair>{{Create, NoInfo}}));
    EXPECT_FALSE(record.m_bTeethMesh);
    ASSERT_EQ(Table()->rowCount(), 1);
    EXPECT_EQ(Cell(0, 0), QStringLiteral("Hero"));
    EXPECT_EQ(Cell(0, 1), QStringLiteral("[MVGoZBursh] Create"));
    EXPECT_FALSE(RowCombo(0)->isEnabled());
    EXPECT_EQ(RowCombo(0)->count(), 1);
    EXPECT_TRUE(m_pDialog->Ui().qtGoZButton->isEnabled());
    EXPECT_TRUE(m_pDialog->Ui().qtSplitBodyPartGroupBox->isEnabled());
    EXPECT_TRUE(m_pDialog->Ui().qtSplitBodyPartGroupBox->isVisibleTo(m_pDialog.get()));
    EXPECT_TRUE(m_pDialog->Ui().qtPoseGroupBox->isVisibleTo(m_pDialog.get()));
}

TEST_F(SendDialog, RowsAndGroupsShowTheRulesOfThePick)
{
    Pick({QStringLiteral("box1"), QStringLiteral("box2"), QStringLiteral("star"), QStringLiteral("lamp")});
    Open();
    ASSERT_EQ(Table()->rowCount(), 4);
    const QString sameName = QStringLiteral("[MVGoZBursh] This content has some name mesh. It will auto rename.");
    EXPECT_EQ(Cell(0, 2), sameName);
    EXPECT_EQ(Cell(1, 2), sameName);
    EXPECT_FALSE(RowCombo(0)->isEnabled()) << "equal names offer no choice";
    EXPECT_EQ(Cell(2, 1), QStringLiteral("[MVGoZBursh] Skip"));
    EXPECT_EQ(Cell(2, 2), QStringLiteral("[MVGoZBursh] Mesh contain polygon that side of numbers more than 4, goz "
                                         "does not support."));
    EXPECT_FALSE(RowCombo(2)->isEnabled());
    EXPECT_EQ(Cell(3, 1), QStringLiteral("[MVGoZBursh] Create"));
    EXPECT_TRUE(RowCombo(3)->isVisible()) << "the filled table shows its cells";
    // No current character: no pose, and the split group is off.
    EXPECT_FALSE(m_pDialog->Ui().qtPoseGroupBox->isVisibleTo(m_pDialog.get()));
    EXPECT_FALSE(m_pDialog->Ui().qtSplitBodyPartGroupBox->isVisibleTo(m_pDialog.get()));
    EXPECT_FALSE(m_pDialog->Ui().qtSplitBodyPartGroupBox->isEnabled());
    auto* view = qobject_cast<QListView*>(m_pDialog->Ui().qtTemplateComboBox->view());
    EXPECT_TRUE(view->isRowHidden(1)) << "Relink can't apply to every row";

    // Prop collections alone show the split group, disabled.
    Pick({QStringLiteral("shelf")});
    Open();
    EXPECT_TRUE(m_pDialog->Ui().qtSplitBodyPartGroupBox->isVisibleTo(m_pDialog.get()));
    EXPECT_FALSE(m_pDialog->Ui().qtSplitBodyPartGroupBox->isEnabled());

    // Nothing picked: nothing to send, and Relink is offered.
    Pick({});
    Open();
    EXPECT_EQ(Table()->rowCount(), 0);
    EXPECT_FALSE(m_pDialog->Ui().qtGoZButton->isEnabled());
    EXPECT_FALSE(view->isRowHidden(1));
}

TEST_F(SendDialog, SplitStateFollowsTheBoxes)
{
    using Ui = CFMtoZBrushDlgUiComponent;
    struct Case
    {
        const char* name;
        std::vector<QCheckBox* Ui::*> checked;
        bool skinEnabled;
        unsigned int state;
    };
    const std::vector<Case> cases = {
        {"eyes and tear ducts", {&Ui::qtEyewinkerCheckBox, &Ui::qtEyeSockerCheckBox, &Ui::qtTearDuctsCheckBox}, true,
         1 | 2 | 4 | 1024},
        {"all skin", {&Ui::qtSkinHeadCheckBox, &Ui::qtSkinBodyCheckBox, &Ui::qtSkinArmCheckBox, &Ui::qtSkinLegCheckBox},
         true, 64 | 128 | 256 | 512},
        {"all skin but disabled", {&Ui::qtSkinHeadCheckBox, &Ui::qtSkinBodyCheckBox, &Ui::qtSkinArmCheckBox,
                                   &Ui::qtSkinLegCheckBox}, false, 1024},
        {"nothing", {}, true, 1024},
        {"mouth, nails", {&Ui::qtMouthCheckBox, &Ui::qtFingerNailsCheckBox, &Ui::qtToeNailsCheckBox}, true,
         8 | 16 | 32 | 1024},
    };
    const std::vector<QCheckBox* Ui::*> all = {&Ui::qtEyewinkerCheckBox, &Ui::qtEyeSockerCheckBox,
                                               &Ui::qtTearDuctsCheckBox, &Ui::qtMouthCheckBox,
                                               &Ui::qtFingerNailsCheckBox, &Ui::qtToeNailsCheckBox,
                                               &Ui::qtSkinHeadCheckBox, &Ui::qtSkinBodyCheckBox,
                                               &Ui::qtSkinArmCheckBox, &Ui::qtSkinLegCheckBox};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        for (auto member : all) {
            Box(member)->setChecked(false);
            Box(member)->setEnabled(true);
        }
        for (auto member : c.checked) {
            Box(member)->setChecked(true);
        }
        for (auto member : {&Ui::qtSkinHeadCheckBox, &Ui::qtSkinBodyCheckBox, &Ui::qtSkinArmCheckBox,
                            &Ui::qtSkinLegCheckBox}) {
            Box(member)->setEnabled(c.skinEnabled);
        }
        EXPECT_EQ(m_pDialog->GetGozSplitState(), c.state);
    }
}

TEST_F(SendDialog, PoseOptionsFollowTheCharacterType)
{
    struct Case
    {
        const char* avatar;
        bool expression;
        bool bindVisible;
        const char* checked;
    };
    const Case cases[] = {
        {"old", false, false, "qtTPoseRadioButton"},
        {"hero", false, true, "qtBindPoseRadioButton"},
        {"old", true, true, "qtBindPoseRadioButton"},
        {"doll", false, false, "qtCurrentPoseRadioButton"},
        {"hero", false, true, "qtBindPoseRadioButton"}, // the reused dialog gives the bind pose back
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.avatar);
        m_pDialog->Ui().qtBindPoseRadioButton->setChecked(true);
        SetAvatar(QLatin1String(c.avatar));
        Pick({QLatin1String(c.avatar)});
        m_pDialog->SetExpressionGoZ(c.expression);
        Open();
        EXPECT_EQ(m_pDialog->Ui().qtBindPoseRadioButton->isVisibleTo(m_pDialog.get()), c.bindVisible);
        auto* radio = m_pDialog->findChild<QRadioButton*>(QLatin1String(c.checked));
        ASSERT_NE(radio, nullptr);
        EXPECT_TRUE(radio->isChecked());
    }
}

TEST_F(SendDialog, SkinBoxesFollowTheHostsAnswer)
{
    for (const bool supported : {false, true, false}) {
        SCOPED_TRACE(supported);
        m_pHost->Scene().State().m_bSkinSplitSupported = supported;
        SetAvatar(QStringLiteral("hero"));
        Pick({QStringLiteral("hero")});
        Open();
        for (QCheckBox* box : {m_pDialog->Ui().qtSkinHeadCheckBox, m_pDialog->Ui().qtSkinBodyCheckBox,
                               m_pDialog->Ui().qtSkinArmCheckBox, m_pDialog->Ui().qtSkinLegCheckBox}) {
            EXPECT_EQ(box->isEnabled(), supported) << box->objectName().toStdString();
        }
        EXPECT_TRUE(m_pDialog->Ui().qtEyewinkerCheckBox->isEnabled()) << "only the skin boxes follow";
    }
}

TEST_F(SendDialog, CharacterHairAndTeethRowsHaveNoNote)
{
    // An earlier file under each name would give a prop the rename note.
    SetAvatar(QStringLiteral("hero"));
    for (const char* name : {"Hero", "Hero_Teeth", "Hero_Hair", "Crate"}) {
        WriteFile(Project() + QLatin1String(name) + QStringLiteral(".goz"), "earlier");
    }
    const struct
    {
        const char* id;
        const char* note;
    } cases[] = {
        {"hero", ""},
        {"hero_teeth", ""},
        {"hero_hair", ""},
        {"crate", "[MVGoZBursh] It will auto rename."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        Pick({QLatin1String(c.id)});
        Open();
        ASSERT_EQ(Table()->rowCount(), 1);
        EXPECT_EQ(m_pDialog->Records()[0].ActiveInfo(), std::size_t(AutoRename)) << "the note is held back, not absent";
        EXPECT_EQ(Cell(0, 2), QLatin1String(c.note));
        // The all-rows combo refills the table through the other path: to Relink and back.
        m_pDialog->Ui().qtTemplateComboBox->setCurrentIndex(1);
        m_pDialog->Ui().qtTemplateComboBox->setCurrentIndex(0);
        EXPECT_EQ(Cell(0, 2), QLatin1String(c.note)) << "after the all-rows combo";
    }
}

TEST_F(SendDialog, AllRowsComboSetsEveryRowButSkip)
{
    WriteFile(Project() + QStringLiteral("Desk Lamp.goz"), "earlier");
    WriteFile(Project() + QStringLiteral("Zoë Statue.goz"), "earlier");
    Pick({QStringLiteral("lamp"), QStringLiteral("statue"), QStringLiteral("star")});
    Open();
    EXPECT_EQ(m_pDialog->Ui().qtTemplateComboBox->currentIndex(), 2) << "Create, Create, Skip is mixed";
    EXPECT_EQ(Cell(0, 2), QStringLiteral("[MVGoZBursh] It will auto rename."));
    ASSERT_EQ(RowCombo(0)->count(), 2);
    EXPECT_TRUE(RowCombo(0)->isEnabled());

    m_pDialog->Ui().qtTemplateComboBox->setCurrentIndex(1);
    EXPECT_EQ(m_pDialog->Records()[0].ActiveAction(), std::size_t(Relink));
    EXPECT_EQ(m_pDialog->Records()[1].ActiveAction(), std::size_t(Relink));
    EXPECT_EQ(m_pDialog->Records()[2].ActiveAction(), std::size_t(Skip));
    EXPECT_EQ(Cell(0, 1), QStringLiteral("[MVGoZBursh] Relink"));

    EXPECT_TRUE(RowCombo(0)->isVisible()) << "the refilled table shows its cells";

    RowCombo(1)->setCurrentIndex(0);
    EXPECT_EQ(m_pDialog->Records()[1].ActiveAction(), std::size_t(Create));
    EXPECT_EQ(m_pDialog->Ui().qtTemplateComboBox->currentIndex(), 2);
}

TEST_F(SendDialog, AllRowsComboFollowsEveryRowChange)
{
    WriteFile(Project() + QStringLiteral("Desk Lamp.goz"), "earlier");
    WriteFile(Project() + QStringLiteral("Zoë Statue.goz"), "earlier");
    Pick({QStringLiteral("lamp"), QStringLiteral("statue")});
    Open();
    QComboBox* all = m_pDialog->Ui().qtTemplateComboBox;
    EXPECT_EQ(all->currentIndex(), 0) << "every row starts as Create";
    const struct
    {
        int row;
        int rowIndex;
        int allIndex;
    } steps[] = {{0, 1, 2}, {1, 1, 1}, {1, 0, 2}, {0, 0, 0}, {0, 0, 0}};
    for (const auto& step : steps) {
        SCOPED_TRACE(testing::Message() << "row " << step.row << " -> " << step.rowIndex);
        RowCombo(step.row)->setCurrentIndex(step.rowIndex);
        EXPECT_EQ(all->currentIndex(), step.allIndex);
    }
}

} // namespace

#include "ReceiveFixture.h"

#include <QRadioButton>

using namespace MV;
using namespace MV::Test;

namespace {

const QStringList kSceneChanges{
    "ImportGoZToObject", "CreatePropFromGoZ",       "FinishGoZImport", "UpdateAvatarAfterGoZ", "RebuildAvatarConform",
    "AutoRigAvatar",     "AdjustEyeElement",        "AdjustEyeOcclusion", "AdjustEyeOcclusionBlend", "AdjustTearline",
    "SaveAvatarMotion",  "ResetAvatarPose",         "LoadMotionFile", "CommitAvatarChange"};
const QString kLoadPose = QStringLiteral("LoadMotionFile(C:\\ProgramData\\Figmora\\Goz.mvmotion)");

class ReceiveImport : public ReceiveFixture
{
public:
    void SetUp() override
    {
        ReceiveFixture::SetUp();
        StartDialog(kDialogScene);
        ListenForAdded(m_pDialog.get());
    }

    // The dialog after a receive, with Lamp's texture taken and Vase made a prop.
    void PrepareRows()
    {
        ASSERT_EQ(Receive(), QV::kOk);
        TextureBox(LampRow)->setChecked(true);
        ActionCombo(VaseRow)->setCurrentIndex(3);
        ASSERT_EQ(Record(VaseRow).m_eAction, ActionCreateProp);
        m_pHost->CallLog().Clear();
    }

    QV::Result Import() { return m_pDialog->ImportGoZMesh(); }
    QStringList Changes() const { return CallSequence(kSceneChanges, 1); }
};

TEST_F(ReceiveImport, RowsAreAppliedInRowOrderThenTheAvatar)
{
    PrepareRows();
    ASSERT_EQ(Import(), QV::kOk);
    EXPECT_EQ(Changes(),
              (QStringList{"ImportGoZToObject(hero_body)", "ImportGoZToObject(rock_b)", "ImportGoZToObject(rock_b)",
                           "ImportGoZToObject(hero_body)", "CreatePropFromGoZ(Vase.GoZ)", "FinishGoZImport(hero)",
                           "UpdateAvatarAfterGoZ(hero)", "AdjustEyeElement(hero)", "AdjustEyeOcclusion(hero)",
                           "AdjustEyeOcclusionBlend(hero)", "AdjustEyeElement(hero)", "AdjustTearline(hero)",
                           "SaveAvatarMotion(hero)", "ResetAvatarPose(hero)", kLoadPose, "CommitAvatarChange(hero)"}));
    // target, file, take texture, pose, is cloth, texture size, flag
    const QList<Host::CCallRecord> imports = CallsOf("ImportGoZToObject");
    ASSERT_EQ(imports.size(), 4);
    EXPECT_EQ(imports[0].m_kArgs, (QStringList{"hero_body", "Hero_Body.GoZ", "false", "1", "false", "0", "1"}));
    EXPECT_EQ(imports[3].m_kArgs, (QStringList{"hero_body", "Lamp.GoZ", "true", "1", "true", "1024", "1"}));
    EXPECT_EQ(CallsOf("CreatePropFromGoZ").first().m_kArgs, (QStringList{"Vase.GoZ", "false", "0", "1"}));
    EXPECT_EQ(CallsOf("FinishGoZImport").first().m_kArgs.value(1), "[hero_body, rock_b, goz_prop_1]");
    EXPECT_EQ(CallSequence({"AdjustEyeElement"}), (QStringList{"AdjustEyeElement(hero, 49)", "AdjustEyeElement(hero, 50)"}));
    EXPECT_EQ(m_kAdded, QStringList{"goz_prop_1"});
    EXPECT_FALSE(m_pDialog->isVisible());
}

TEST_F(ReceiveImport, AFailingHostCallEndsTheImportAndLeavesLaterStepsUndone)
{
    // imports: ImportGoZToObject calls made, the failing one included; announced: the prop made
    // before the failure was announced.
    const struct {
        const char* operation;
        int nth, imports, props;
        QString last;
        bool announced, hidden;
    } cases[] = {
        {"ImportGoZToObject", 2, 2, 0, "ImportGoZToObject(rock_b)", false, false},
        {"CreatePropFromGoZ", 1, 4, 1, "CreatePropFromGoZ(Vase.GoZ)", false, false},
        {"FinishGoZImport", 1, 4, 1, "FinishGoZImport(hero)", true, false},
        {"UpdateAvatarAfterGoZ", 1, 4, 1, "UpdateAvatarAfterGoZ(hero)", true, true},
        {"AdjustEyeOcclusionBlend", 1, 4, 1, "AdjustEyeOcclusionBlend(hero)", true, true},
        {"ResetAvatarPose", 1, 4, 1, "ResetAvatarPose(hero)", true, true},
        {"LoadMotionFile", 1, 4, 1, kLoadPose, true, true},
        {"CommitAvatarChange", 1, 4, 1, "CommitAvatarChange(hero)", true, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.operation);
        m_kAdded.clear();
        PrepareRows();
        m_pDialog->show();
        ASSERT_EQ(m_pHost->SetFailure(QLatin1String(c.operation), QV::kOutOfRange, c.nth), QV::kOk);
        EXPECT_EQ(Import(), QV::kOutOfRange);
        m_pHost->ClearFailures();
        EXPECT_EQ(Count("ImportGoZToObject"), c.imports);
        EXPECT_EQ(Count("CreatePropFromGoZ"), c.props);
        EXPECT_EQ(Changes().value(Changes().size() - 1), c.last);
        EXPECT_EQ(!m_kAdded.isEmpty(), c.announced);
        EXPECT_EQ(m_pDialog->isVisible(), !c.hidden);
    }
}

TEST_F(ReceiveImport, AnUnsavedPoseIsNotLoadedBack)
{
    PrepareRows();
    ASSERT_EQ(m_pHost->SetFailure(QStringLiteral("SaveAvatarMotion"), QV::kFail), QV::kOk);
    ASSERT_EQ(Import(), QV::kOk);
    EXPECT_EQ(Changes().mid(Changes().size() - 3),
              (QStringList{"SaveAvatarMotion(hero)", "ResetAvatarPose(hero)", "CommitAvatarChange(hero)"}));
}

TEST_F(ReceiveImport, AutoRigRebuildsTheConformOverTheImportedObjects)
{
    ASSERT_EQ(Receive({"Hero_Body", "Hero_Head"}), QV::kOk);
    QCheckBox* autoRig = m_pDialog->Ui().qtDoAutoRigBox;
    ASSERT_TRUE(autoRig->isEnabled());
    autoRig->setChecked(true);
    m_pHost->CallLog().Clear();
    ASSERT_EQ(Import(), QV::kOk);
    EXPECT_EQ(Count("UpdateAvatarAfterGoZ"), 0);
    EXPECT_EQ(CallSequence({"RebuildAvatarConform", "AutoRigAvatar"}),
              (QStringList{"RebuildAvatarConform(hero, 0, [hero_body, hero_head])", "AutoRigAvatar(hero, 1)"}));
}

TEST_F(ReceiveImport, TheBindPoseKeepsThePoseAsItIs)
{
    SetObjectFlag("hero", &Host::CSceneObject::m_bBindPoseLocked, false);
    PrepareRows();
    ASSERT_TRUE(m_pDialog->Ui().qtBindPoseRadioButton->isChecked());
    ASSERT_EQ(Import(), QV::kOk);
    EXPECT_EQ(Count("SaveAvatarMotion"), 1);
    EXPECT_EQ(Count("ResetAvatarPose") + Count("LoadMotionFile") + Count("CommitAvatarChange"), 0);
    EXPECT_EQ(Count("AdjustEyeElement"), 0) << "the eye boxes are hidden for this character";
    EXPECT_EQ(CallsOf("ImportGoZToObject").first().m_kArgs.value(3), "2") << "bind pose";
}

TEST_F(ReceiveImport, AvatarPartsAreAppliedToTheAvatarAfterTheRows)
{
    ASSERT_EQ(Receive({"FM_Teeth", "Hero_Skin", "Vase", "Hero_TeethMesh", "Hero"}), QV::kOk);
    m_pHost->CallLog().Clear();
    ASSERT_EQ(Import(), QV::kOk);
    EXPECT_EQ(CallSequence({"ImportGoZToObject"}, 2),
              (QStringList{"ImportGoZToObject(hero_body, Vase.GoZ)", "ImportGoZToObject(hero, Hero_Skin.GoZ)",
                           "ImportGoZToObject(hero, Hero.GoZ)", "ImportGoZToObject(hero, FM_Teeth.GoZ)",
                           "ImportGoZToObject(hero, Hero_TeethMesh.GoZ)"}));
    EXPECT_EQ(CallsOf("FinishGoZImport").first().m_kArgs.value(1), "[hero_body, hero]");
}

TEST_F(ReceiveImport, WithoutAnAvatarOnlyTheRowsAreApplied)
{
    SetAvatar(QString());
    ASSERT_EQ(Receive({"Vase", "Lamp"}), QV::kOk);
    ASSERT_EQ(Record(0).m_eAction, ActionCreateProp);
    m_pHost->CallLog().Clear();
    ASSERT_EQ(Import(), QV::kOk);
    EXPECT_EQ(Changes(),
              (QStringList{"CreatePropFromGoZ(Vase.GoZ)", "CreatePropFromGoZ(Lamp.GoZ)", "FinishGoZImport(null)"}));
    EXPECT_EQ(m_kAdded, QStringList{"goz_prop_1,goz_prop_2"});
}

TEST_F(ReceiveImport, RowsWhoseFileIsNoLongerListedAreSkipped)
{
    PrepareRows();
    WriteList("Hero_Body\nVase\n");
    ASSERT_EQ(Import(), QV::kOk);
    EXPECT_EQ(Count("ImportGoZToObject"), 1);
    EXPECT_EQ(Count("CreatePropFromGoZ"), 1);

    // Without any object list nothing is imported.
    QFile::remove(QLatin1String(kAppFolder) + QStringLiteral("GoZ_Info.txt"));
    m_pHost->CallLog().Clear();
    EXPECT_EQ(Import(), QV::kFail);
    EXPECT_TRUE(Changes().isEmpty());
}

} // namespace

#include "CEventSender.h"
#include "ReceiveFixture.h"

#include <QPushButton>
#include <QRadioButton>

using namespace MV;
using namespace MV::Test;

namespace {

const QStringList kSceneChanges{"ImportGoZToObject",  "CreatePropFromGoZ",     "FinishGoZImport",
                                "UpdateAvatarAfterGoZ", "RebuildAvatarConform", "AutoRigAvatar",
                                "AdjustEyeElement",   "AdjustEyeOcclusion",    "AdjustEyeOcclusionBlend",
                                "AdjustTearline",     "SaveAvatarMotion",      "ResetAvatarPose",
                                "LoadMotionFile",     "CommitAvatarChange"};

class ReceiveImport : public ReceiveFixture
{
public:
    void SetUp() override
    {
        ReceiveFixture::SetUp();
        StartDialog(kDialogScene);
        QObject::connect(m_pHost->EventSender(), &CEventSender::ObjectAdded, m_pDialog.get(),
                         [this](const QV::CArrayList<QV::CHandle*>& objects) {
                             QStringList ids;
                             for (QV::CHandle* object : objects) {
                                 const Host::CSceneObject* found = m_pHost->Scene().Find(object);
                                 ids << (found != nullptr ? found->m_strId : QStringLiteral("?"));
                             }
                             m_kAdded << ids.join(QLatin1Char(','));
                         });
    }

    // The dialog after a receive of kDialogScene, with Lamp's texture taken and Vase made a prop.
    void PrepareRows()
    {
        ASSERT_EQ(Receive(), QV::kOk);
        TextureBox(LampRow)->setChecked(true);
        ActionCombo(VaseRow)->setCurrentIndex(3);
        ASSERT_EQ(Record(VaseRow).m_eAction, ActionCreateProp);
        m_pHost->CallLog().Clear();
    }

    QV::Result Import() { return m_pDialog->ImportGoZMesh(); }

    QStringList Changes() const { return CallSequence(kSceneChanges); }

    QStringList m_kAdded;
};

TEST_F(ReceiveImport, RowsAreAppliedInRowOrderThenTheAvatar)
{
    PrepareRows();
    ASSERT_EQ(Import(), QV::kOk);
    const QStringList expected{
        "ImportGoZToObject(hero_body)", "ImportGoZToObject(rock_b)",    "ImportGoZToObject(rock_b)",
        "ImportGoZToObject(hero_body)", "CreatePropFromGoZ(Vase.GoZ)", "FinishGoZImport(hero)",
        "UpdateAvatarAfterGoZ(hero)",   "AdjustEyeElement(hero)",      "AdjustEyeOcclusion(hero)",
        "AdjustEyeOcclusionBlend(hero)", "AdjustEyeElement(hero)",     "AdjustTearline(hero)",
        "SaveAvatarMotion(hero)",       "ResetAvatarPose(hero)",       "LoadMotionFile(C:\\ProgramData\\Figmora\\Goz.mvmotion)",
        "CommitAvatarChange(hero)"};
    EXPECT_EQ(Changes(), expected);

    const QList<Host::CCallRecord> imports = CallsOf("ImportGoZToObject");
    ASSERT_EQ(imports.size(), 4);
    // target, file, take texture, pose, is cloth, texture size, flag
    EXPECT_EQ(imports[0].m_kArgs, (QStringList{"hero_body", "Hero_Body.GoZ", "false", "1", "false", "0", "1"}));
    EXPECT_EQ(imports[3].m_kArgs, (QStringList{"hero_body", "Lamp.GoZ", "true", "1", "true", "1024", "1"}));
    EXPECT_EQ(CallsOf("CreatePropFromGoZ").first().m_kArgs, (QStringList{"Vase.GoZ", "false", "0", "1"}));
    EXPECT_EQ(CallsOf("FinishGoZImport").first().m_kArgs.value(1), "[hero_body, rock_b, goz_prop_1]");
    EXPECT_EQ(CallsOf("AdjustEyeElement").first().m_kArgs.value(1), "49");
    EXPECT_EQ(CallsOf("AdjustEyeElement").last().m_kArgs.value(1), "50");
    EXPECT_EQ(m_kAdded, QStringList{"goz_prop_1"});
    EXPECT_FALSE(m_pDialog->isVisible());
}

TEST_F(ReceiveImport, AFailingHostCallEndsTheImportAndLeavesLaterStepsUndone)
{
    const struct
    {
        const char* operation;
        int nth;
        int imports;      // ImportGoZToObject calls made, the failing one included
        int props;        // CreatePropFromGoZ calls
        const char* last; // the last scene change made
        bool announced;   // the prop made before the failure was announced
        bool hidden;
    } cases[] = {
        {"ImportGoZToObject", 2, 2, 0, "ImportGoZToObject(rock_b)", false, false},
        {"CreatePropFromGoZ", 1, 4, 1, "CreatePropFromGoZ(Vase.GoZ)", false, false},
        {"FinishGoZImport", 1, 4, 1, "FinishGoZImport(hero)", true, false},
        {"UpdateAvatarAfterGoZ", 1, 4, 1, "UpdateAvatarAfterGoZ(hero)", true, true},
        {"AdjustEyeOcclusionBlend", 1, 4, 1, "AdjustEyeOcclusionBlend(hero)", true, true},
        {"ResetAvatarPose", 1, 4, 1, "ResetAvatarPose(hero)", true, true},
        {"LoadMotionFile", 1, 4, 1, "LoadMotionFile(C:\\ProgramData\\Figmora\\Goz.mvmotion)", true, true},
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
        EXPECT_EQ(Calls("ImportGoZToObject"), c.imports);
        EXPECT_EQ(Calls("CreatePropFromGoZ"), c.props);
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
    const QStringList changes = Changes();
    EXPECT_EQ(changes.mid(changes.size() - 3),
              (QStringList{"SaveAvatarMotion(hero)", "ResetAvatarPose(hero)", "CommitAvatarChange(hero)"}));
}

TEST_F(ReceiveImport, AutoRigRebuildsTheConformOverTheImportedObjects)
{
    ASSERT_EQ(Receive("Hero_Body\nHero_Head\n"), QV::kOk);
    QCheckBox* autoRig = m_pDialog->Ui().qtDoAutoRigBox;
    ASSERT_TRUE(autoRig->isEnabled());
    autoRig->setChecked(true);
    m_pHost->CallLog().Clear();
    ASSERT_EQ(Import(), QV::kOk);
    EXPECT_EQ(Calls("UpdateAvatarAfterGoZ"), 0);
    ASSERT_EQ(Calls("RebuildAvatarConform"), 1);
    EXPECT_EQ(CallsOf("RebuildAvatarConform").first().m_kArgs,
              (QStringList{"hero", "0", "[hero_body, hero_head]"}));
    ASSERT_EQ(Calls("AutoRigAvatar"), 1);
    EXPECT_EQ(CallsOf("AutoRigAvatar").first().m_kArgs, (QStringList{"hero", "1"}));
}

TEST_F(ReceiveImport, TheBindPoseKeepsThePoseAsItIs)
{
    SetObjectFlag("hero", &Host::CSceneObject::m_bBindPoseLocked, false);
    PrepareRows();
    ASSERT_TRUE(m_pDialog->Ui().qtBindPoseRadioButton->isChecked());
    ASSERT_EQ(Import(), QV::kOk);
    EXPECT_EQ(Calls("SaveAvatarMotion"), 1);
    EXPECT_EQ(Calls("ResetAvatarPose") + Calls("LoadMotionFile") + Calls("CommitAvatarChange"), 0);
    EXPECT_EQ(Calls("AdjustEyeElement"), 0) << "the eye boxes are hidden for this character";
    EXPECT_EQ(CallsOf("ImportGoZToObject").first().m_kArgs.value(3), "2") << "bind pose";
}

TEST_F(ReceiveImport, AvatarPartsAreAppliedToTheAvatarAfterTheRows)
{
    ASSERT_EQ(Receive("FM_Teeth\nHero_Skin\nVase\nHero_TeethMesh\nHero\n"), QV::kOk);
    m_pHost->CallLog().Clear();
    ASSERT_EQ(Import(), QV::kOk);
    QStringList files;
    for (const Host::CCallRecord& call : CallsOf("ImportGoZToObject")) {
        files << call.m_kArgs.value(0) + QLatin1Char(':') + call.m_kArgs.value(1);
    }
    EXPECT_EQ(files, (QStringList{"hero_body:Vase.GoZ", "hero:Hero_Skin.GoZ", "hero:Hero.GoZ", "hero:FM_Teeth.GoZ",
                                  "hero:Hero_TeethMesh.GoZ"}));
    EXPECT_EQ(CallsOf("FinishGoZImport").first().m_kArgs.value(1), "[hero_body, hero]");
}

TEST_F(ReceiveImport, WithoutAnAvatarOnlyTheRowsAreApplied)
{
    SetAvatar(QString());
    ASSERT_EQ(Receive("Vase\nLamp\n"), QV::kOk);
    ASSERT_EQ(Record(0).m_eAction, ActionCreateProp);
    m_pHost->CallLog().Clear();
    ASSERT_EQ(Import(), QV::kOk);
    EXPECT_EQ(Changes(), (QStringList{"CreatePropFromGoZ(Vase.GoZ)", "CreatePropFromGoZ(Lamp.GoZ)", "FinishGoZImport(null)"}));
    EXPECT_EQ(m_kAdded, QStringList{"goz_prop_1,goz_prop_2"});
    EXPECT_EQ(CallsOf("ImportGoZToObject").size(), 0);
}

TEST_F(ReceiveImport, RowsWhoseFileIsNoLongerListedAreSkipped)
{
    PrepareRows();
    WriteReturn("Hero_Body\nVase\n");
    ASSERT_EQ(Import(), QV::kOk);
    EXPECT_EQ(Calls("ImportGoZToObject"), 1);
    EXPECT_EQ(Calls("CreatePropFromGoZ"), 1);

    // Without any object list nothing is imported.
    QFile::remove(QLatin1String(kAppFolder) + QStringLiteral("GoZ_Info.txt"));
    m_pHost->CallLog().Clear();
    EXPECT_EQ(Import(), QV::kFail);
    EXPECT_TRUE(Changes().isEmpty());
}

} // namespace

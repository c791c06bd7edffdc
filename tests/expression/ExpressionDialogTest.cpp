#include "CEventSender.h"
#include "ExpressionFixture.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QTranslator>

#include <functional>
#include <ostream>

using namespace MV;
using namespace MV::Test;

namespace {

// Shows which context and disambiguation a text was translated with.
class MarkingTranslator : public QTranslator
{
public:
    QString translate(const char* context, const char* sourceText, const char* disambiguation,
                      int n) const override
    {
        Q_UNUSED(n);
        return QString::fromLatin1(context) + QLatin1Char('|') + QString::fromUtf8(sourceText) + QLatin1Char('|') +
               QString::fromLatin1(disambiguation == nullptr ? "" : disambiguation);
    }
    bool isEmpty() const override { return false; }
};

const QString kContext = QStringLiteral("MV::ExpressionZBrushToFMDlg|");

TEST(ExpressionDialogSetup, WithoutAHostNothingIsBuilt)
{
    ExpressionZBrushToFMDlg dialog(nullptr);
    EXPECT_EQ(dialog.Initialize(QString(), QString(), nullptr), QV::kInvalidArg);
    EXPECT_FALSE(dialog.IsFormComplete());
    EXPECT_EQ(dialog.GoZDataUpdated(), QV::kInvalidArg);
    EXPECT_EQ(dialog.ImportGoZMesh(), QV::kInvalidArg);
}

class ExpressionDialog : public ExpressionFixture
{
public:
    QV::CHandle* Handle(const char* id) const { return m_pHost->Scene().HandleOf(QLatin1String(id)); }

    // Opens the dialog on a full return of the character's face, as ZBrush hands it back.
    void OpenOnFullReturn(const FaceScene& scene = FaceScene())
    {
        Start(scene);
        ASSERT_FALSE(HasFatalFailure());
        QStringList names = FullFaceReturn();
        if (!scene.m_bEyeOcclusion) {
            names.removeAll(QStringLiteral("Occlusion_Mesh"));
        }
        if (!scene.m_bTearLine) {
            names.removeAll(QStringLiteral("Tear_Mesh"));
        }
        WriteReturn(names, {QStringLiteral("Brow_Mesh")});
        ASSERT_EQ(m_pDialog->GoZDataUpdated(), QV::kOk);
        ASSERT_TRUE(m_pDialog->isVisible());
        m_pHost->CallLog().Clear();
    }

    QStringList UpdatedMeshes() const
    {
        QStringList updates;
        for (const Host::CCallRecord& call : Calls("UpdateMeshFromGoZ")) {
            updates << call.m_kArgs.value(0) + QLatin1Char(':') + call.m_kArgs.value(1);
        }
        return updates;
    }
};

TEST_F(ExpressionDialog, FormHoldsTheTwoOptionsAboveTheTextAndButtons)
{
    Start();
    EXPECT_TRUE(m_pDialog->IsFormComplete());
    EXPECT_EQ(m_pDialog->objectName(), QStringLiteral("ExpressionZBrushToFMDlg"));
    auto* outer = m_pDialog->findChild<QVBoxLayout*>(QStringLiteral("verticalLayout"));
    ASSERT_NE(outer, nullptr);
    ASSERT_EQ(outer->count(), 2);
    EXPECT_EQ(outer->itemAt(0)->layout()->objectName(), QStringLiteral("verticalLayout_2"));
    EXPECT_EQ(outer->itemAt(1)->layout()->objectName(), QStringLiteral("horizontalLayout"));
    QStringList options;
    for (int i = 0; i < outer->itemAt(0)->layout()->count(); ++i) {
        options << outer->itemAt(0)->layout()->itemAt(i)->widget()->objectName();
    }
    EXPECT_EQ(options, (QStringList{"qtAdjustEyeOcclusionCheckBox", "qtAdjustTearlineCheckBox"}));
    QStringList row;
    for (int i = 0; i < outer->itemAt(1)->layout()->count(); ++i) {
        row << outer->itemAt(1)->layout()->itemAt(i)->widget()->objectName();
    }
    EXPECT_EQ(row, (QStringList{"label", "qtImportButton", "qtCancelButton"}));
}

TEST_F(ExpressionDialog, HostNotificationAndCancelAreConnected)
{
    Start();
    WriteReturn(FullFaceReturn(), {"Brow_Mesh"});
    m_pHost->RaiseGoZDataUpdated();
    EXPECT_TRUE(m_pDialog->isVisible());
    EXPECT_TRUE(m_pDialog->isModal());
    m_pDialog->Ui().qtCancelButton->click();
    EXPECT_FALSE(m_pDialog->isVisible());
    EXPECT_EQ(Count("UpdateMeshFromGoZ"), 0) << "Cancel imports nothing";
}

// ---------------------------------------------------------------------------------------
// The checks when a return arrives

struct CheckCase
{
    const char* m_pName;
    FaceScene m_kScene;
    QStringList m_kReturn;
    QStringList m_kMotions;
    const char* m_pFailure; // an operation that fails, or null
    QV::Result m_iFailure;
    QV::Result m_iResult;
    bool m_bShown;
    QStringList m_kMessages;
    QString m_strExpressionName;
};

void PrintTo(const CheckCase& c, std::ostream* out)
{
    *out << c.m_pName;
}

FaceScene NotEditing()
{
    FaceScene scene;
    scene.m_bEditing = false;
    return scene;
}

const QString kNotInEditMode = kContext + "[MVGOZBursh] Expression GoZ: Not in Edit Expression Mode.|Expression goz";
const QString kNoExpression = kContext + "[MVGOZBursh] Expression GoZ: No Expression Goz.|Expression goz";
const QString kReturnAll = kContext + "[MVGOZBursh] Expression GoZ: Please return all Mesh|";
const QStringList kPartial = {"Brow_Mesh", "Occlusion_Mesh", "FM_Base_Upper_Teeth", "FM_Base_Lower_Teeth"};

const CheckCase kCheckCases[] = {
    {"ExpressionWhileEditingOpensTheDialog", FaceScene(), FullFaceReturn(), {"Occlusion_Mesh"}, nullptr, 0,
     QV::kOk, true, {}, "Occlusion_Mesh"},
    {"NoBlendShapeEditedLeavesTheReturnAlone", NotEditing(), FullFaceReturn(), {"Occlusion_Mesh"}, nullptr, 0,
     QV::kNothingDone, false, {}, ""},
    {"ExpressionOutsideEditModeIsRefused", FaceScene(), FullFaceReturn(), {"Occlusion_Mesh"}, "IsBlendShapeEditing",
     QV::kFail, QV::kNothingDone, false, {kNotInEditMode}, "Occlusion_Mesh"},
    {"NeitherEditingNorExpressionSaysNothing", FaceScene(), FullFaceReturn(), {}, "IsBlendShapeEditing", QV::kFail,
     QV::kNothingDone, false, {}, ""},
    {"EditingButNoExpressionIsRefused", FaceScene(), FullFaceReturn(), {"Ava"}, nullptr, 0, QV::kNothingDone, false,
     {kNoExpression}, ""},
    {"MissingFaceMeshIsRefused", FaceScene(), kPartial, {"Brow_Mesh"}, nullptr, 0, QV::kOk, false, {kReturnAll},
     "Brow_Mesh"},
    {"UnreadableObjectListIsAFailure", FaceScene(), {}, {"Brow_Mesh"}, nullptr, 0, QV::kFail, false, {}, ""},
    {"FailingPartNamesAreAFailure", FaceScene(), FullFaceReturn(), {"Brow_Mesh"}, "GetGozSplitMeshNames",
     QV::kOutOfRange, QV::kOutOfRange, false, {}, ""},
    {"FailingRecordQueryIsAFailure", FaceScene(), FullFaceReturn(), {"Brow_Mesh"}, "FindObjectByName",
     QV::kOutOfMemory, QV::kOutOfMemory, false, {}, ""},
};

class ExpressionChecks : public ExpressionDialog, public ::testing::WithParamInterface<CheckCase>
{
public:
    void SetUp() override
    {
        ExpressionDialog::SetUp();
        QCoreApplication::installTranslator(&m_kTranslator);
    }
    void TearDown() override
    {
        QCoreApplication::removeTranslator(&m_kTranslator);
        ExpressionDialog::TearDown();
    }

    MarkingTranslator m_kTranslator;
};

TEST_P(ExpressionChecks, RunInOrderWithTheirMessages)
{
    const CheckCase& c = GetParam();
    Start(c.m_kScene);
    if (c.m_kReturn.isEmpty()) {
        WriteFile(QLatin1String(kProjectFolder) + QStringLiteral("Brow_Mesh.mvMotionPlus"), "MOTION");
    } else {
        WriteReturn(c.m_kReturn, c.m_kMotions);
    }
    if (c.m_pFailure != nullptr) {
        ASSERT_EQ(m_pHost->SetFailure(QLatin1String(c.m_pFailure), c.m_iFailure), QV::kOk);
    }
    EXPECT_EQ(m_pDialog->GoZDataUpdated(), c.m_iResult);
    EXPECT_EQ(m_pDialog->isVisible(), c.m_bShown);
    EXPECT_EQ(MessageTexts(), c.m_kMessages);
    for (const Host::CCallRecord& call : Calls("ShowMessageBox")) {
        EXPECT_EQ(call.m_kArgs.mid(1), (QStringList{"", "ExpressionZBrushToFMDlg", "2", "1024", "0"}));
    }
    if (c.m_pFailure == nullptr || QV::Succeeded(c.m_iResult)) {
        EXPECT_EQ(QString::fromStdWString(m_pDialog->ExpressionName()), c.m_strExpressionName);
    }
    EXPECT_EQ(m_pDialog->Records().IsEmpty(), !c.m_bShown) << "records are kept only when the dialog opens";
    if (!c.m_kScene.m_bEditing) {
        EXPECT_EQ(Count("FindObjectByName"), 0) << "no records are built while nothing is edited";
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, ExpressionChecks, ::testing::ValuesIn(kCheckCases),
                         [](const ::testing::TestParamInfo<CheckCase>& info) { return info.param.m_pName; });

// ---------------------------------------------------------------------------------------
// The eye options

struct EyeStateCase
{
    const char* m_pName;
    const char* m_pTarget;
    std::int32_t m_eAction;
    int m_iChosen;
    bool m_bEditing;
    bool m_bShown;
};

TEST_F(ExpressionDialog, EyeOptionsOnlyForUpdatesOfTheEditedCharacter)
{
    const EyeStateCase cases[] = {
        {"OwnFaceMesh", "ava_brow", ActionUpdate, 0, true, true},
        {"OwnCharacterItself", "ava", ActionUpdate, 0, true, true},
        {"Prop", "hat", ActionUpdate, 0, true, false},
        {"OtherCharactersMesh", "bob_brow", ActionUpdate, 0, true, false},
        {"OwnFaceMeshAsProp", "ava_brow", ActionCreateProp, 0, true, false},
        {"OwnFaceMeshWithoutTarget", "ava_brow", ActionUpdate, -1, true, false},
        {"NothingEdited", "ava_brow", ActionUpdate, 0, false, false},
    };
    Start();
    for (const EyeStateCase& c : cases) {
        QString error;
        ASSERT_EQ(m_pHost->SetBlendShapeEditing(QStringLiteral("ava"), c.m_bEditing, error), QV::kOk);
        // Start from the other state, so that each row must set it.
        m_pDialog->Ui().qtAdjustEyeOcclusionCheckBox->setVisible(!c.m_bShown);
        m_pDialog->Ui().qtAdjustTearlineCheckBox->setVisible(!c.m_bShown);
        m_pDialog->Ui().qtAdjustEyeOcclusionCheckBox->setEnabled(false);
        m_pDialog->Ui().qtAdjustTearlineCheckBox->setEnabled(false);

        auto candidates = std::make_shared<CTargetCandidateList>();
        candidates->Add(CTargetCandidate(L"Target", Handle(c.m_pTarget)));
        CZBrushToFMMeshInfo info;
        info.m_pTargetCandidates = candidates;
        info.m_kOfferedTargets.Add(0);
        info.m_eAction = c.m_eAction;
        info.m_iChosenTarget = c.m_iChosen;
        ASSERT_EQ(m_pDialog->SetEyeElementCheckBoxState(CZBrushToFMMeshInfoList{info}), QV::kOk) << c.m_pName;
        for (const QCheckBox* box : {m_pDialog->Ui().qtAdjustEyeOcclusionCheckBox, m_pDialog->Ui().qtAdjustTearlineCheckBox}) {
            EXPECT_EQ(box->isVisibleTo(m_pDialog.get()), c.m_bShown) << c.m_pName;
            EXPECT_EQ(box->isEnabled(), c.m_bShown) << c.m_pName;
        }
    }
}

TEST_F(ExpressionDialog, RoundTripOfOtherObjectsHidesTheEyeOptionsAndFitsNothing)
{
    FaceScene scene;
    scene.m_bBrow = scene.m_bEyeOcclusion = scene.m_bTearLine = scene.m_bTeeth = false;
    Start(scene);
    // An earlier round offered the options, checked.
    auto candidates = std::make_shared<CTargetCandidateList>();
    candidates->Add(CTargetCandidate(L"Ava", Handle("ava")));
    CZBrushToFMMeshInfo own;
    own.m_pTargetCandidates = candidates;
    own.m_kOfferedTargets.Add(0);
    ASSERT_EQ(m_pDialog->SetEyeElementCheckBoxState(CZBrushToFMMeshInfoList{own}), QV::kOk);
    ASSERT_TRUE(m_pDialog->Ui().qtAdjustEyeOcclusionCheckBox->isVisibleTo(m_pDialog.get()));
    ASSERT_TRUE(m_pDialog->Ui().qtAdjustEyeOcclusionCheckBox->isChecked());
    ASSERT_TRUE(m_pDialog->Ui().qtAdjustTearlineCheckBox->isChecked());

    WriteReturn({"Hat"}, {"Hat"});
    ASSERT_EQ(m_pDialog->GoZDataUpdated(), QV::kOk);
    ASSERT_TRUE(m_pDialog->isVisible());
    EXPECT_FALSE(m_pDialog->Ui().qtAdjustEyeOcclusionCheckBox->isVisible());
    EXPECT_FALSE(m_pDialog->Ui().qtAdjustTearlineCheckBox->isVisible());

    m_pHost->CallLog().Clear();
    ASSERT_EQ(m_pDialog->ImportGoZMesh(), QV::kOk);
    EXPECT_EQ(UpdatedMeshes(), QStringList{"hat:Hat.GoZ"});
    EXPECT_EQ(CallSequence({"CollectChildObjects", "CreateEyeElement", "AdjustEyeOcclusion",
                            "AdjustEyeOcclusionBlend", "AdjustTearline"}),
              QStringList{"CollectChildObjects(ava, 36, 1)"})
        << "only the teeth are looked for";
}

// ---------------------------------------------------------------------------------------
// Import

TEST_F(ExpressionDialog, ImportLoadsTheMotionUpdatesTheFaceAndRefreshesTheCharacter)
{
    OpenOnFullReturn();
    int motionEvents = 0;
    int loadsBeforeEvent = -1;
    QObject::connect(m_pHost->FigmoraEventSender(), &CFigmoraEventSender::LoadExpressionGozMotion, [&]() {
        ++motionEvents;
        loadsBeforeEvent = Count("LoadFile");
    });
    int added = 0;
    QObject::connect(m_pHost->EventSender(), &CEventSender::ObjectAdded, [&]() { ++added; });

    m_pDialog->Ui().qtImportButton->click();

    EXPECT_FALSE(m_pDialog->isVisible());
    EXPECT_EQ(motionEvents, 1);
    EXPECT_EQ(loadsBeforeEvent, 0) << "the host hears of the motion before it is loaded";
    EXPECT_EQ(CallSequence({"LoadFile"}),
              QStringList{"LoadFile(C:/Users/Public/Pixologic/GoZProjects/Default/Brow_Mesh.mvMotionPlus, 33, true, "
                          "-1, -1)"});
    EXPECT_EQ(CallSequence({"UpdateMeshFromGoZ"}),
              (QStringList{"UpdateMeshFromGoZ(ava_brow, Brow_Mesh.GoZ, true, false, 0, 0, 3)",
                           "UpdateMeshFromGoZ(ava_occlusion, Occlusion_Mesh.GoZ, true, false, 0, 0, 3)",
                           "UpdateMeshFromGoZ(ava_tear, Tear_Mesh.GoZ, true, false, 0, 0, 3)",
                           "UpdateMeshFromGoZ(ava_teeth, FM_Base_Upper_Teeth.GoZ, true, false, 0, 0, 3)",
                           "UpdateMeshFromGoZ(ava_teeth, FM_Base_Lower_Teeth.GoZ, true, false, 0, 0, 3)"}));
    EXPECT_EQ(CallSequence({"RefreshAvatar", "RebuildAvatarConform", "ResetController", "Release",
                            "UpdateAvatarMorph", "CreateEyeElement", "AdjustEyeOcclusion", "AdjustEyeOcclusionBlend",
                            "AdjustTearline", "RefreshView"}),
              (QStringList{"RefreshAvatar(ava)", "RebuildAvatarConform(ava, 0, [ava_brow, ava_occlusion, ava_tear, ava_teeth])",
                           "ResetController(ava_spring, 0)", "Release(ava_spring)", "UpdateAvatarMorph(ava, true)",
                           "AdjustEyeOcclusion(ava)", "AdjustEyeOcclusionBlend(ava)", "AdjustTearline(ava)",
                           "RefreshView(0)"}));
    EXPECT_EQ(Count("PrepareObjectUpdate"), 0) << "no object of kind 19";
    EXPECT_EQ(added, 0) << "both eye elements were there";
}

TEST_F(ExpressionDialog, MissingMotionFileStillImportsTheMeshes)
{
    OpenOnFullReturn();
    ASSERT_TRUE(QFile::remove(QLatin1String(kProjectFolder) + QStringLiteral("Brow_Mesh.mvMotionPlus")));
    EXPECT_EQ(m_pDialog->ImportGoZMesh(), QV::kOk);
    EXPECT_EQ(Count("LoadFile"), 1);
    EXPECT_EQ(Count("UpdateMeshFromGoZ"), 5);
    EXPECT_FALSE(m_pDialog->isVisible());
}

TEST_F(ExpressionDialog, UpdateWithoutTargetShowsErrorTargetAndKeepsTheDialogOpen)
{
    FaceScene scene;
    scene.m_bTearLine = scene.m_bTeeth = false;
    Start(scene);
    WriteReturn({"Brow_Mesh", "Brow_Mesh"}, {"Brow_Mesh"});
    ASSERT_EQ(m_pDialog->GoZDataUpdated(), QV::kOk);
    ASSERT_EQ(m_pDialog->Records()[1].m_iChosenTarget, -1);
    m_pHost->CallLog().Clear();

    EXPECT_EQ(m_pDialog->ImportGoZMesh(), QV::kOk);
    EXPECT_EQ(MessageTexts(), QStringList{"[MVGoZBursh] Error target"});
    EXPECT_EQ(Calls("ShowMessageBox").value(0).m_kArgs.mid(1), (QStringList{"", "null", "2", "1024", "0"}));
    EXPECT_TRUE(m_pDialog->isVisible());
    EXPECT_EQ(Count("LoadFile"), 0);
    EXPECT_EQ(Count("UpdateMeshFromGoZ"), 0);
}

TEST_F(ExpressionDialog, MissingEyeOcclusionIsCreatedFittedAndAnnounced)
{
    FaceScene scene;
    scene.m_bEyeOcclusion = false;
    OpenOnFullReturn(scene);
    ASSERT_TRUE(m_pDialog->Ui().qtAdjustEyeOcclusionCheckBox->isChecked());
    QList<QV::CArrayList<QV::CHandle*>> announced;
    QObject::connect(m_pHost->EventSender(), &CEventSender::ObjectAdded,
                     [&](QV::CArrayList<QV::CHandle*> objects) { announced << objects; });

    ASSERT_EQ(m_pDialog->ImportGoZMesh(), QV::kOk);
    EXPECT_EQ(CallSequence({"CollectChildObjects", "CreateEyeElement", "AdjustEyeOcclusion", "AdjustEyeOcclusionBlend",
                            "AdjustTearline"}),
              (QStringList{"CollectChildObjects(ava, 36, 1)", "CollectChildObjects(ava, 49, 1)",
                           "CreateEyeElement(ava, 49)",
                           "CollectChildObjects(ava, 49, 1)", "AdjustEyeOcclusion(ava)", "AdjustEyeOcclusionBlend(ava)",
                           "CollectChildObjects(ava, 50, 1)", "AdjustTearline(ava)"}));
    ASSERT_EQ(announced.size(), 1);
    ASSERT_EQ(announced[0].GetCount(), 1);
    const Host::CSceneObject* made = m_pHost->Scene().Find(announced[0][0]);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->m_iNodeType, 49);
    EXPECT_EQ(made->m_strParent, QStringLiteral("ava"));
}

TEST_F(ExpressionDialog, UncheckedOrHiddenEyeOptionsFitNothing)
{
    FaceScene scene;
    scene.m_bEyeOcclusion = false;
    OpenOnFullReturn(scene);
    m_pDialog->Ui().qtAdjustEyeOcclusionCheckBox->setChecked(false);
    m_pDialog->Ui().qtAdjustTearlineCheckBox->setVisible(false);
    ASSERT_EQ(m_pDialog->ImportGoZMesh(), QV::kOk);
    EXPECT_EQ(Count("CreateEyeElement"), 0);
    EXPECT_EQ(Count("AdjustEyeOcclusion"), 0);
    EXPECT_EQ(Count("AdjustTearline"), 0);
}

TEST_F(ExpressionDialog, AvatarOfAnotherKindGetsNoConformRebuild)
{
    FaceScene scene;
    scene.m_iAvatarKind = 1;
    OpenOnFullReturn(scene);
    ASSERT_EQ(m_pDialog->ImportGoZMesh(), QV::kOk);
    EXPECT_EQ(Count("RebuildAvatarConform"), 0);
    EXPECT_EQ(Count("ResetController"), 0);
    EXPECT_EQ(CallSequence({"RefreshAvatar", "UpdateAvatarMorph"}),
              (QStringList{"RefreshAvatar(ava)", "UpdateAvatarMorph(ava, true)"}));
}

TEST_F(ExpressionDialog, ObjectOfKindNineteenIsPreparedBeforeItsUpdate)
{
    FaceScene scene;
    scene.m_iBrowOwnerKind = 19;
    OpenOnFullReturn(scene);
    ASSERT_EQ(m_pDialog->ImportGoZMesh(), QV::kOk);
    const QStringList sequence = CallSequence({"PrepareObjectUpdate", "UpdateMeshFromGoZ"});
    ASSERT_GE(sequence.size(), 2);
    EXPECT_EQ(sequence[0], QStringLiteral("PrepareObjectUpdate(ava_brow_group)"));
    EXPECT_TRUE(sequence[1].startsWith(QStringLiteral("UpdateMeshFromGoZ(ava_brow_group, Brow_Mesh.GoZ")));
    EXPECT_EQ(Count("PrepareObjectUpdate"), 1) << "the other face meshes are of kind 2";
}

struct FailureCase
{
    const char* m_pName;
    FaceScene m_kScene;
    const char* m_pOperation;
    int m_iNth;
    int m_iMeshUpdates; // UpdateMeshFromGoZ calls made, the failing one included
    QStringList m_kNotCalled;
};

void PrintTo(const FailureCase& c, std::ostream* out)
{
    *out << c.m_pName;
}

FaceScene WithoutOcclusion()
{
    FaceScene scene;
    scene.m_bEyeOcclusion = false;
    return scene;
}

const FailureCase kFailureCases[] = {
    {"SecondMeshUpdate", FaceScene(), "UpdateMeshFromGoZ", 2, 2, {"RefreshAvatar", "UpdateAvatarMorph", "RefreshView"}},
    {"ThirdObjectKind", FaceScene(), "GetObjectKind", 3, 2, {"RefreshAvatar", "RefreshView"}},
    {"TeethObjectLookup", FaceScene(), "GetPickOwner", 4, 3, {"RefreshAvatar", "RefreshView"}},
    {"AvatarRefresh", FaceScene(), "RefreshAvatar", 1, 5, {"RebuildAvatarConform", "UpdateAvatarMorph", "RefreshView"}},
    {"ConformRebuild", FaceScene(), "RebuildAvatarConform", 1, 5, {"UpdateAvatarMorph", "AdjustEyeOcclusion", "RefreshView"}},
    {"MorphUpdate", FaceScene(), "UpdateAvatarMorph", 1, 5, {"AdjustEyeOcclusion", "AdjustTearline", "RefreshView"}},
    {"EyeElementCreation", WithoutOcclusion(), "CreateEyeElement", 1, 4, {"AdjustEyeOcclusion", "AdjustTearline", "RefreshView"}},
    {"EyeOcclusionFit", FaceScene(), "AdjustEyeOcclusionBlend", 1, 5, {"AdjustTearline", "RefreshView"}},
    {"ReturnedListReadAgain", FaceScene(), nullptr, 0, 0, {"LoadFile", "RefreshAvatar", "RefreshView"}},
};

class ExpressionImportFailure : public ExpressionDialog, public ::testing::WithParamInterface<FailureCase>
{
};

TEST_P(ExpressionImportFailure, EndsTheImportThereAndKeepsTheDialogOpen)
{
    const FailureCase& c = GetParam();
    OpenOnFullReturn(c.m_kScene);
    QV::Result expected = QV::kFail;
    if (c.m_pOperation != nullptr) {
        expected = static_cast<QV::Result>(0x80000123u);
        ASSERT_EQ(m_pHost->SetFailure(QLatin1String(c.m_pOperation), expected, c.m_iNth), QV::kOk);
    } else {
        ASSERT_TRUE(QFile::remove(QLatin1String(kAppFolder) + QStringLiteral("GoZ_ObjectList.txt")));
    }
    EXPECT_EQ(m_pDialog->ImportGoZMesh(), expected);
    EXPECT_TRUE(m_pDialog->isVisible());
    EXPECT_EQ(Count("UpdateMeshFromGoZ"), c.m_iMeshUpdates) << "later records untouched";
    for (const QString& operation : c.m_kNotCalled) {
        EXPECT_EQ(m_pHost->CallLog().Count(operation), 0) << operation.toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, ExpressionImportFailure, ::testing::ValuesIn(kFailureCases),
                         [](const ::testing::TestParamInfo<FailureCase>& info) { return info.param.m_pName; });

TEST_F(ExpressionDialog, EyeElementMadeBeforeALaterFailureIsStillAnnounced)
{
    OpenOnFullReturn(WithoutOcclusion());
    int added = 0;
    QObject::connect(m_pHost->EventSender(), &CEventSender::ObjectAdded, [&]() { ++added; });
    ASSERT_EQ(m_pHost->SetFailure(QStringLiteral("AdjustTearline"), QV::kFail), QV::kOk);
    EXPECT_EQ(m_pDialog->ImportGoZMesh(), QV::kFail);
    EXPECT_EQ(added, 1);
}

} // namespace

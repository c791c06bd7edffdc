#include "CExpressionImporter.h"
#include "ExpressionFixture.h"

#include <QPushButton>
#include <QTranslator>

#include <ostream>

using namespace MV;
using namespace MV::Test;

namespace {

// Shows which context and disambiguation a text was translated with.
class MarkingTranslator : public QTranslator
{
public:
    QString translate(const char* context, const char* sourceText, const char* disambiguation, int) const override
    {
        return QString::fromLatin1(context) + QLatin1Char('|') + QString::fromUtf8(sourceText) + QLatin1Char('|') +
               QString::fromLatin1(disambiguation == nullptr ? "" : disambiguation);
    }
    bool isEmpty() const override { return false; }
};

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
    // Opens the dialog on a full return of the character's face, as ZBrush hands it back.
    void OpenOnFullReturn(const FaceScene& scene = FaceScene())
    {
        Start(scene);
        ASSERT_FALSE(HasFatalFailure());
        WriteReturn(scene.FullReturn(), {QStringLiteral("Brow_Mesh")});
        ASSERT_EQ(m_pExpression->GoZDataUpdated(), QV::kOk);
        ASSERT_TRUE(m_pExpression->isVisible());
        m_pHost->CallLog().Clear();
    }
};

TEST_F(ExpressionDialog, HostNotificationAndCancelAreConnected)
{
    Start();
    EXPECT_TRUE(m_pExpression->IsFormComplete());
    WriteReturn(FullFaceReturn(), {"Brow_Mesh"});
    m_pHost->RaiseGoZDataUpdated();
    EXPECT_TRUE(m_pExpression->isVisible());
    EXPECT_TRUE(m_pExpression->isModal());
    m_pExpression->Ui().qtCancelButton->click();
    EXPECT_FALSE(m_pExpression->isVisible());
    EXPECT_EQ(Count("UpdateMeshFromGoZ"), 0) << "Cancel imports nothing";
}

// ---------------------------------------------------------------------------------------
// The checks when a return arrives

struct CheckCase
{
    const char* m_pName;
    FaceScene m_kScene;
    QStringList m_kReturn; // empty: no object list, only a motion
    QStringList m_kMotions;
    const char* m_pFailure; // an operation that fails, or null
    QV::Result m_iFailure;
    QV::Result m_iResult;
    bool m_bShown;
    QStringList m_kMessages;
    QString m_strExpressionName;
};

// Keeps the case's name, not its bytes, in the listed test names.
void PrintTo(const CheckCase& c, std::ostream* out) { *out << c.m_pName; }

const QString kContext = QStringLiteral("MV::ExpressionZBrushToFMDlg|[MVGOZBursh] Expression GoZ: ");
const QString kNotInEditMode = kContext + "Not in Edit Expression Mode.|Expression goz";
const QString kNoExpression = kContext + "No Expression Goz.|Expression goz";
const QString kReturnAll = kContext + "Please return all Mesh|";
const QStringList kPartial = {"Brow_Mesh", "Occlusion_Mesh", "FM_Base_Upper_Teeth", "FM_Base_Lower_Teeth"};

const CheckCase kCheckCases[] = {
    {"ExpressionWhileEditingOpensTheDialog", FaceScene(), FullFaceReturn(), {"Occlusion_Mesh"}, nullptr, 0,
     QV::kOk, true, {}, "Occlusion_Mesh"},
    {"NoBlendShapeEditedLeavesTheReturnAlone", Without(&FaceScene::m_bEditing), FullFaceReturn(), {"Occlusion_Mesh"},
     nullptr, 0, QV::kNothingDone, false, {}, ""},
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
    EXPECT_EQ(m_pExpression->GoZDataUpdated(), c.m_iResult);
    EXPECT_EQ(m_pExpression->isVisible(), c.m_bShown);
    EXPECT_EQ(MessageTexts(), c.m_kMessages);
    for (const Host::CCallRecord& call : CallsOf("ShowMessageBox")) {
        EXPECT_EQ(call.m_kArgs.mid(1), (QStringList{"", "ExpressionZBrushToFMDlg", "2", "1024", "0"}));
    }
    if (c.m_pFailure == nullptr || QV::Succeeded(c.m_iResult)) {
        EXPECT_EQ(QString::fromStdWString(m_pExpression->ExpressionName()), c.m_strExpressionName);
    }
    EXPECT_EQ(m_pExpression->Records().IsEmpty(), !c.m_bShown) << "records are kept only when the dialog opens";
    if (!c.m_kScene.m_bEditing) {
        EXPECT_EQ(Count("FindObjectByName"), 0) << "no records are built while nothing is edited";
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, ExpressionChecks, ::testing::ValuesIn(kCheckCases),
                         [](const ::testing::TestParamInfo<CheckCase>& info) { return info.param.m_pName; });

TEST_F(ExpressionDialog, EyeOptionsOnlyForUpdatesOfTheEditedCharacter)
{
    const struct {
        const char *name, *target;
        std::int32_t action;
        int chosen;
        bool editing, shown;
    } cases[] = {
        {"OwnFaceMesh", "ava_brow", ActionUpdate, 0, true, true},
        {"OwnCharacterItself", "ava", ActionUpdate, 0, true, true},
        {"Prop", "hat", ActionUpdate, 0, true, false},
        {"OtherCharactersMesh", "bob_brow", ActionUpdate, 0, true, false},
        {"OwnFaceMeshAsProp", "ava_brow", ActionCreateProp, 0, true, false},
        {"OwnFaceMeshWithoutTarget", "ava_brow", ActionUpdate, -1, true, false},
        {"NothingEdited", "ava_brow", ActionUpdate, 0, false, false},
    };
    Start();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QString error;
        ASSERT_EQ(m_pHost->SetBlendShapeEditing(QStringLiteral("ava"), c.editing, error), QV::kOk);
        CZBrushToFMMeshInfo info;
        info.m_pTargetCandidates =
            std::make_shared<CTargetCandidateList>(CTargetCandidateList{CTargetCandidate(L"Target", Handle(c.target))});
        info.m_kOfferedTargets.Add(0);
        info.m_eAction = c.action;
        info.m_iChosenTarget = c.chosen;
        for (QCheckBox* box : {m_pExpression->Ui().qtAdjustEyeOcclusionCheckBox, m_pExpression->Ui().qtAdjustTearlineCheckBox}) {
            // Start from the other state, so that each row must set it.
            box->setVisible(!c.shown);
            box->setEnabled(false);
        }
        ASSERT_EQ(m_pExpression->SetEyeElementCheckBoxState(CZBrushToFMMeshInfoList{info}), QV::kOk);
        for (QCheckBox* box : {m_pExpression->Ui().qtAdjustEyeOcclusionCheckBox, m_pExpression->Ui().qtAdjustTearlineCheckBox}) {
            EXPECT_EQ(box->isVisibleTo(m_pExpression.get()), c.shown);
            EXPECT_EQ(box->isEnabled(), c.shown);
        }
    }
}

// ---------------------------------------------------------------------------------------
// Import

TEST_F(ExpressionDialog, ImportLoadsTheMotionUpdatesTheFaceAndRefreshesTheCharacter)
{
    OpenOnFullReturn();
    ListenForAdded(m_pExpression.get());
    int loadsBeforeEvent = -1;
    QObject::connect(m_pHost->FigmoraEventSender(), &CFigmoraEventSender::LoadExpressionGozMotion,
                     [&]() { loadsBeforeEvent = Count("LoadFile"); });

    m_pExpression->Ui().qtImportButton->click();

    EXPECT_FALSE(m_pExpression->isVisible());
    EXPECT_EQ(loadsBeforeEvent, 0) << "the host hears of the motion before it is loaded";
    EXPECT_EQ(CallSequence({"LoadFile", "UpdateMeshFromGoZ"}),
              (QStringList{"LoadFile(C:/Users/Public/Pixologic/GoZProjects/Default/Brow_Mesh.mvMotionPlus, 33, true, -1, -1)",
                           "UpdateMeshFromGoZ(ava_brow, Brow_Mesh.GoZ, true, false, 0, 0, 3)",
                           "UpdateMeshFromGoZ(ava_occlusion, Occlusion_Mesh.GoZ, true, false, 0, 0, 3)",
                           "UpdateMeshFromGoZ(ava_tear, Tear_Mesh.GoZ, true, false, 0, 0, 3)",
                           "UpdateMeshFromGoZ(ava_teeth, FM_Base_Upper_Teeth.GoZ, true, false, 0, 0, 3)",
                           "UpdateMeshFromGoZ(ava_teeth, FM_Base_Lower_Teeth.GoZ, true, false, 0, 0, 3)"}));
    EXPECT_EQ(CallSequence({"RefreshAvatar", "RebuildAvatarConform", "ResetController", "Release", "UpdateAvatarMorph",
                            "CreateEyeElement", "AdjustEyeOcclusion", "AdjustEyeOcclusionBlend", "AdjustTearline",
                            "RefreshView"}),
              (QStringList{"RefreshAvatar(ava)", "RebuildAvatarConform(ava, 0, [ava_brow, ava_occlusion, ava_tear, ava_teeth])",
                           "ResetController(ava_spring, 0)", "Release(ava_spring)", "UpdateAvatarMorph(ava, true)",
                           "AdjustEyeOcclusion(ava)", "AdjustEyeOcclusionBlend(ava)", "AdjustTearline(ava)",
                           "RefreshView(0)"}));
    EXPECT_EQ(Count("PrepareObjectUpdate"), 0) << "no object of kind 19";
    EXPECT_TRUE(m_kAdded.isEmpty()) << "both eye elements were there";
}

TEST_F(ExpressionDialog, AMissingEyeOcclusionIsMadeFittedAndAnnouncedByThatImportOnly)
{
    OpenOnFullReturn(Without(&FaceScene::m_bEyeOcclusion));
    ListenForAdded(m_pExpression.get());
    // One importer for two imports: what the first made is not the second's to announce.
    CGoZReturnReader reader;
    CExpressionImporter importer(m_pHost.get(), reader, *m_pExpression->Matcher());
    ASSERT_EQ(importer.Import(m_pExpression->Records(), L"Brow_Mesh", {true, true}), QV::kOk);
    EXPECT_EQ(CallSequence({"CollectChildObjects", "CreateEyeElement", "AdjustEyeOcclusion", "AdjustEyeOcclusionBlend",
                            "AdjustTearline"}),
              (QStringList{"CollectChildObjects(ava, 36, 1)", "CollectChildObjects(ava, 49, 1)", "CreateEyeElement(ava, 49)",
                           "CollectChildObjects(ava, 49, 1)", "AdjustEyeOcclusion(ava)", "AdjustEyeOcclusionBlend(ava)",
                           "CollectChildObjects(ava, 50, 1)", "AdjustTearline(ava)"}));
    ASSERT_EQ(m_kAdded.size(), 1);
    ASSERT_EQ(importer.AddedObjects().GetCount(), 1);
    const Host::CSceneObject* made = m_pHost->Scene().Find(importer.AddedObjects()[0]);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(m_kAdded[0], made->m_strId);
    EXPECT_EQ(made->m_iNodeType, 49);
    EXPECT_EQ(made->m_strParent, QStringLiteral("ava"));

    m_pHost->CallLog().Clear();
    ASSERT_EQ(importer.Import(m_pExpression->Records(), L"Brow_Mesh", {true, true}), QV::kOk);
    EXPECT_EQ(Count("CreateEyeElement"), 0) << "the eye occlusion is there now";
    EXPECT_EQ(Count("AdjustEyeOcclusion"), 1);
    EXPECT_TRUE(importer.AddedObjects().IsEmpty());
    EXPECT_EQ(m_kAdded.size(), 1) << "nothing new to announce";
}

TEST_F(ExpressionDialog, UncheckedOrHiddenEyeOptionsFitNothing)
{
    OpenOnFullReturn(Without(&FaceScene::m_bEyeOcclusion));
    m_pExpression->Ui().qtAdjustEyeOcclusionCheckBox->setChecked(false);
    m_pExpression->Ui().qtAdjustTearlineCheckBox->setVisible(false);
    ASSERT_EQ(m_pExpression->ImportGoZMesh(), QV::kOk);
    EXPECT_EQ(Count("CreateEyeElement") + Count("AdjustEyeOcclusion") + Count("AdjustTearline"), 0);
}

TEST_F(ExpressionDialog, ObjectOfKindNineteenIsPreparedBeforeItsUpdate)
{
    FaceScene scene;
    scene.m_iBrowOwnerKind = 19;
    OpenOnFullReturn(scene);
    ASSERT_EQ(m_pExpression->ImportGoZMesh(), QV::kOk);
    const QStringList sequence = CallSequence({"PrepareObjectUpdate", "UpdateMeshFromGoZ"}, 2);
    EXPECT_EQ(sequence.mid(0, 2), (QStringList{"PrepareObjectUpdate(ava_brow_group)",
                                               "UpdateMeshFromGoZ(ava_brow_group, Brow_Mesh.GoZ)"}));
    EXPECT_EQ(Count("PrepareObjectUpdate"), 1) << "the other face meshes are of kind 2";
}

struct FailureCase
{
    const char* m_pName;
    FaceScene m_kScene;
    const char* m_pOperation; // null: the object list is gone
    int m_iNth;
    int m_iMeshUpdates; // UpdateMeshFromGoZ calls made, the failing one included
    QStringList m_kNotCalled;
    int m_iAnnounced; // eye elements made before the failure, announced all the same
};

void PrintTo(const FailureCase& c, std::ostream* out) { *out << c.m_pName; }

const FailureCase kFailureCases[] = {
    {"SecondMeshUpdate", FaceScene(), "UpdateMeshFromGoZ", 2, 2, {"RefreshAvatar", "UpdateAvatarMorph", "RefreshView"}, 0},
    {"ThirdObjectKind", FaceScene(), "GetObjectKind", 3, 2, {"RefreshAvatar", "RefreshView"}, 0},
    {"TeethObjectLookup", FaceScene(), "GetPickOwner", 4, 3, {"RefreshAvatar", "RefreshView"}, 0},
    {"AvatarRefresh", FaceScene(), "RefreshAvatar", 1, 5, {"RebuildAvatarConform", "UpdateAvatarMorph", "RefreshView"}, 0},
    {"ConformRebuild", FaceScene(), "RebuildAvatarConform", 1, 5, {"UpdateAvatarMorph", "AdjustEyeOcclusion", "RefreshView"}, 0},
    {"MorphUpdate", FaceScene(), "UpdateAvatarMorph", 1, 5, {"AdjustEyeOcclusion", "AdjustTearline", "RefreshView"}, 0},
    {"EyeElementCreation", Without(&FaceScene::m_bEyeOcclusion), "CreateEyeElement", 1, 4,
     {"AdjustEyeOcclusion", "AdjustTearline", "RefreshView"}, 0},
    {"EyeOcclusionFit", FaceScene(), "AdjustEyeOcclusionBlend", 1, 5, {"AdjustTearline", "RefreshView"}, 0},
    {"TearLineFitAfterAnEyeElementWasMade", Without(&FaceScene::m_bEyeOcclusion), "AdjustTearline", 1, 4, {"RefreshView"}, 1},
    {"ReturnedListReadAgain", FaceScene(), nullptr, 0, 0, {"LoadFile", "RefreshAvatar", "RefreshView"}, 0},
};

class ExpressionImportFailure : public ExpressionDialog, public ::testing::WithParamInterface<FailureCase>
{
};

TEST_P(ExpressionImportFailure, EndsTheImportThereAndKeepsTheDialogOpen)
{
    const FailureCase& c = GetParam();
    OpenOnFullReturn(c.m_kScene);
    ListenForAdded(m_pExpression.get());
    QV::Result expected = QV::kFail;
    if (c.m_pOperation != nullptr) {
        expected = static_cast<QV::Result>(0x80000123u);
        ASSERT_EQ(m_pHost->SetFailure(QLatin1String(c.m_pOperation), expected, c.m_iNth), QV::kOk);
    } else {
        ASSERT_TRUE(QFile::remove(QLatin1String(kAppFolder) + QStringLiteral("GoZ_ObjectList.txt")));
    }
    EXPECT_EQ(m_pExpression->ImportGoZMesh(), expected);
    EXPECT_TRUE(m_pExpression->isVisible());
    EXPECT_EQ(Count("UpdateMeshFromGoZ"), c.m_iMeshUpdates) << "later records untouched";
    for (const QString& operation : c.m_kNotCalled) {
        EXPECT_EQ(m_pHost->CallLog().Count(operation), 0) << operation.toStdString();
    }
    EXPECT_EQ(m_kAdded.size(), c.m_iAnnounced);
}

INSTANTIATE_TEST_SUITE_P(Cases, ExpressionImportFailure, ::testing::ValuesIn(kFailureCases),
                         [](const ::testing::TestParamInfo<FailureCase>& info) { return info.param.m_pName; });

} // namespace

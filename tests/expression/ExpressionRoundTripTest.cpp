#include "CBridgeInstaller.h"
#include "ExpressionFixture.h"
#include "FMToZBrushDlg.h"
#include "GoZPaths.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QPushButton>
#include <QThread>

#include <ostream>

using namespace MV;
using namespace MV::Test;

namespace {

// ---------------------------------------------------------------------------------------
// One notification, two dialogs: exactly one of them takes a return.

enum class EOrder
{
    ReceiveFirst,
    ExpressionFirst,
};

struct ShareCase
{
    const char* m_pName;
    EOrder m_eOrder;
    bool m_bEditing;
    QStringList m_kReturn;
    QStringList m_kMotions;
    bool m_bExpressionShown;
    bool m_bReceiveShown;
    QStringList m_kMessages;
};

void PrintTo(const ShareCase& c, std::ostream* out)
{
    *out << c.m_pName;
}

const QStringList kOrdinary = {"Hat", "Brow_Mesh"};
const QString kNoExpression = QStringLiteral("[MVGOZBursh] Expression GoZ: No Expression Goz.");

const ShareCase kShareCases[] = {
    {"ExpressionReceiveFirst", EOrder::ReceiveFirst, true, FullFaceReturn(), {"Brow_Mesh"}, true, false, {}},
    {"ExpressionExpressionFirst", EOrder::ExpressionFirst, true, FullFaceReturn(), {"Brow_Mesh"}, true, false, {}},
    {"OrdinaryReceiveFirst", EOrder::ReceiveFirst, false, kOrdinary, {}, false, true, {}},
    {"OrdinaryExpressionFirst", EOrder::ExpressionFirst, false, kOrdinary, {}, false, true, {}},
    {"OrdinaryWhileEditingReceiveFirst", EOrder::ReceiveFirst, true, kOrdinary, {}, false, true, {kNoExpression}},
    {"OrdinaryWhileEditingExpressionFirst", EOrder::ExpressionFirst, true, kOrdinary, {}, false, true,
     {kNoExpression}},
};

class SharedNotification : public ExpressionFixture, public ::testing::WithParamInterface<ShareCase>
{
};

TEST_P(SharedNotification, ExactlyOneDialogTakesTheReturn)
{
    const ShareCase& c = GetParam();
    FaceScene scene;
    scene.m_bEditing = c.m_bEditing;
    StartHost(scene.Json());
    if (c.m_eOrder == EOrder::ReceiveFirst) {
        MakeReceiveDialog();
        MakeExpressionDialog();
    } else {
        MakeExpressionDialog();
        MakeReceiveDialog();
    }
    ASSERT_FALSE(HasFatalFailure());
    WriteReturn(c.m_kReturn, c.m_kMotions);

    m_pHost->RaiseGoZDataUpdated();

    EXPECT_EQ(m_pDialog->isVisible(), c.m_bExpressionShown);
    EXPECT_EQ(m_pReceive->isVisible(), c.m_bReceiveShown);
    EXPECT_EQ(m_pReceive->IsExpressionGoZ(), c.m_bExpressionShown);
    EXPECT_EQ(MessageTexts(), c.m_kMessages);
}

INSTANTIATE_TEST_SUITE_P(Cases, SharedNotification, ::testing::ValuesIn(kShareCases),
                         [](const ::testing::TestParamInfo<ShareCase>& info) { return info.param.m_pName; });

// ---------------------------------------------------------------------------------------
// The whole path of an expression: send, ZBrush's return, import, and a Relink send.

class ExpressionRoundTrip : public ExpressionFixture
{
public:
    ExpressionRoundTrip() { m_bInstallZBrush = true; }

    void SetUp() override
    {
        ExpressionFixture::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        StartHost(FaceScene().Json());
        ASSERT_FALSE(HasFatalFailure());
        QString error;
        ASSERT_EQ(m_pHost->WriteRegistryFile(m_kSandbox.RegistryFilePath(), error), QV::kOk) << error.toStdString();
        ASSERT_EQ(CBridgeInstaller(GoZPaths::PixologicRoot(), PluginFolder()).Install(QDir::currentPath()),
                  CBridgeInstaller::EStatus::Installed);
        // In the plug-in's order: receive, expression, send.
        MakeReceiveDialog();
        MakeExpressionDialog();
        m_pSend = std::make_unique<FMToZBrushDlg>(nullptr);
        ASSERT_EQ(m_pSend->Initialize(PluginFolder(), QString(), m_pHost.get()), QV::kOk);
        m_pSend->SetReceiveDialog(m_pReceive.get());
    }

    void TearDown() override
    {
        m_pSend.reset();
        ExpressionFixture::TearDown();
    }

    // The face meshes as the Expression GoZ command selects them, sent as an expression.
    void SendFace(bool relink)
    {
        QString error;
        ASSERT_EQ(m_pHost->SetPicks({"ava_occlusion", "ava_tear", "ava_brow", "ava_teeth"}, error), QV::kOk)
            << error.toStdString();
        m_pSend->SetExpressionGoZ(true);
        m_pSend->hide();
        m_pSend->show();
        if (relink) {
            m_pSend->Ui().qtTemplateComboBox->setCurrentIndex(1);
            // The teeth went out under the extra part names, so they offer no Relink and go
            // out again under new names; the face meshes relink.
            ASSERT_EQ(m_pSend->Records().size(), 4u);
            for (std::size_t row = 0; row < 3; ++row) {
                ASSERT_EQ(m_pSend->Records()[row].ActiveAction(), std::size_t(Relink)) << row;
            }
            ASSERT_TRUE(m_pSend->Records()[3].m_bTeethMesh);
        }
        ASSERT_EQ(m_pSend->OnGoZ(), QV::kOk);
    }

    // The bridge programs run detached; their run is logged before ZBrush would answer.
    void WaitForBridgePrograms(int count) const
    {
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < 10000) {
            if (ReadFile(m_kSandbox.ProcessLogPath()).count('\n') >= count) {
                return;
            }
            QThread::msleep(20);
        }
        ADD_FAILURE() << "the bridge programs did not run";
    }

    // As ZBrush does: every sent mesh comes back under the name it was sent as, its file
    // beside the sent one, and the object list names them.
    void ReturnWhatWasSent() const
    {
        const QByteArray sent = ReadFile(QLatin1String(kAppFolder) + QStringLiteral("GoZ_ObjectList.txt"));
        QByteArray names;
        for (const QByteArray& line : sent.split('\n')) {
            if (line.isEmpty()) {
                continue;
            }
            const QString name = QString::fromUtf8(line.mid(line.lastIndexOf('/') + 1));
            const QByteArray mesh = ReadFile(QString::fromUtf8(line) + QStringLiteral(".goz"));
            ASSERT_TRUE(mesh.startsWith("GOZ-STANDIN")) << name.toStdString() << " was not sent";
            WriteFile(QLatin1String(kProjectFolder) + name + QStringLiteral(".GoZ"), mesh);
            names += name.toUtf8() + '\n';
        }
        WriteFile(QLatin1String(kAppFolder) + QStringLiteral("GoZ_ObjectList.txt"), names);
    }

    QStringList PoseFiles() const
    {
        return QDir(QLatin1String(kProjectFolder)).entryList({"*.mvMotionPlus"}, QDir::Files, QDir::Name);
    }

    std::unique_ptr<FMToZBrushDlg> m_pSend;
};

TEST_F(ExpressionRoundTrip, PoseNamedAfterTheFirstFaceMeshIsFoundLoadedAndReplacedByRelink)
{
    SendFace(false);
    ASSERT_FALSE(HasFatalFailure());
    const QString pose = QLatin1String(kProjectFolder) + QStringLiteral("Occlusion_Mesh.mvMotionPlus");
    EXPECT_EQ(PoseFiles(), QStringList{"Occlusion_Mesh.mvMotionPlus"}) << "named after the first mesh sent";

    WaitForBridgePrograms(2);
    ReturnWhatWasSent();
    m_pHost->RaiseGoZDataUpdated();
    ASSERT_TRUE(m_pDialog->isVisible());
    EXPECT_FALSE(m_pReceive->isVisible());
    EXPECT_EQ(QString::fromStdWString(m_pDialog->ExpressionName()), QStringLiteral("Occlusion_Mesh"));

    m_pHost->CallLog().Clear();
    m_pDialog->Ui().qtImportButton->click();
    EXPECT_FALSE(m_pDialog->isVisible());
    EXPECT_EQ(CallSequence({"LoadFile"}), QStringList{"LoadFile(" + pose + ", 33, true, -1, -1)"});
    EXPECT_TRUE(QFileInfo(pose).isFile()) << "the host loads the pose the send saved";
    QStringList updated;
    for (const Host::CCallRecord& call : Calls("UpdateMeshFromGoZ")) {
        updated << call.m_kArgs.value(0);
    }
    EXPECT_EQ(updated, (QStringList{"ava_occlusion", "ava_tear", "ava_brow", "ava_teeth", "ava_teeth"}));

    // The next send of the same face relinks: its pose replaces the one ZBrush came back with.
    WriteFile(pose, "old pose");
    m_pHost->CallLog().Clear();
    SendFace(true);
    ASSERT_FALSE(HasFatalFailure());
    const QList<Host::CCallRecord> saves = Calls("SaveMotionFile");
    ASSERT_EQ(saves.size(), 1);
    EXPECT_EQ(saves[0].m_kArgs.value(1), pose);
    EXPECT_TRUE(ReadFile(pose).startsWith("MOTION-STANDIN")) << "the old pose is replaced";
    EXPECT_EQ(PoseFiles(), QStringList{"Occlusion_Mesh.mvMotionPlus"}) << "no second pose beside it";

    EXPECT_TRUE(ReadFile(QLatin1String(kAppFolder) + QStringLiteral("GoZ_ObjectList.txt"))
                    .contains("/FM_Base_Upper_Teeth_1\n"))
        << "the teeth went out again under new names";

    WaitForBridgePrograms(4);
    ReturnWhatWasSent();
    m_pDialog->hide();
    m_pHost->CallLog().Clear();
    m_pHost->RaiseGoZDataUpdated();
    ASSERT_TRUE(m_pDialog->isVisible()) << "the renamed teeth still hold their part names";
    EXPECT_EQ(QString::fromStdWString(m_pDialog->ExpressionName()), QStringLiteral("Occlusion_Mesh"));
    ASSERT_EQ(m_pDialog->ImportGoZMesh(), QV::kOk);
    EXPECT_EQ(CallSequence({"LoadFile"}), QStringList{"LoadFile(" + pose + ", 33, true, -1, -1)"});
    QStringList teethFiles;
    for (const Host::CCallRecord& call : Calls("UpdateMeshFromGoZ")) {
        if (call.m_kArgs.value(0) == QLatin1String("ava_teeth")) {
            teethFiles << call.m_kArgs.value(1);
        }
    }
    EXPECT_EQ(teethFiles, (QStringList{"FM_Base_Upper_Teeth_1.GoZ", "FM_Base_Lower_Teeth_1.GoZ"}));
}

} // namespace

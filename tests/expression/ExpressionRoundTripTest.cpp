#include "CBridgeInstaller.h"
#include "ExpressionFixture.h"
#include "FMToZBrushDlg.h"
#include "GoZPaths.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QPushButton>
#include <QThread>

using namespace MV;
using namespace MV::Test;

namespace {

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
        m_pSend->SetReceiveDialog(m_pDialog.get());
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
    ASSERT_TRUE(m_pExpression->isVisible());
    EXPECT_FALSE(m_pDialog->isVisible());
    EXPECT_EQ(QString::fromStdWString(m_pExpression->ExpressionName()), QStringLiteral("Occlusion_Mesh"));

    m_pHost->CallLog().Clear();
    m_pExpression->Ui().qtImportButton->click();
    EXPECT_FALSE(m_pExpression->isVisible());
    EXPECT_EQ(CallSequence({"LoadFile"}), QStringList{"LoadFile(" + pose + ", 33, true, -1, -1)"});
    EXPECT_TRUE(QFileInfo(pose).isFile()) << "the host loads the pose the send saved";
    EXPECT_EQ(CallSequence({"UpdateMeshFromGoZ"}, 1),
              (QStringList{"UpdateMeshFromGoZ(ava_occlusion)", "UpdateMeshFromGoZ(ava_tear)", "UpdateMeshFromGoZ(ava_brow)",
                           "UpdateMeshFromGoZ(ava_teeth)", "UpdateMeshFromGoZ(ava_teeth)"}));

    // The next send of the same face relinks: its pose replaces the one ZBrush came back with.
    WriteFile(pose, "old pose");
    m_pHost->CallLog().Clear();
    SendFace(true);
    ASSERT_FALSE(HasFatalFailure());
    const QList<Host::CCallRecord> saves = CallsOf("SaveMotionFile");
    ASSERT_EQ(saves.size(), 1);
    EXPECT_EQ(saves[0].m_kArgs.value(1), pose);
    EXPECT_TRUE(ReadFile(pose).startsWith("MOTION-STANDIN")) << "the old pose is replaced";
    EXPECT_EQ(PoseFiles(), QStringList{"Occlusion_Mesh.mvMotionPlus"}) << "no second pose beside it";

    EXPECT_TRUE(ReadFile(QLatin1String(kAppFolder) + QStringLiteral("GoZ_ObjectList.txt"))
                    .contains("/FM_Base_Upper_Teeth_1\n"))
        << "the teeth went out again under new names";

    WaitForBridgePrograms(4);
    ReturnWhatWasSent();
    m_pExpression->hide();
    m_pHost->CallLog().Clear();
    m_pHost->RaiseGoZDataUpdated();
    ASSERT_TRUE(m_pExpression->isVisible()) << "the renamed teeth still hold their part names";
    EXPECT_EQ(QString::fromStdWString(m_pExpression->ExpressionName()), QStringLiteral("Occlusion_Mesh"));
    ASSERT_EQ(m_pExpression->ImportGoZMesh(), QV::kOk);
    EXPECT_EQ(CallSequence({"LoadFile"}), QStringList{"LoadFile(" + pose + ", 33, true, -1, -1)"});
    EXPECT_EQ(CallSequence({"UpdateMeshFromGoZ"}, 2).filter("ava_teeth"),
              (QStringList{"UpdateMeshFromGoZ(ava_teeth, FM_Base_Upper_Teeth_1.GoZ)",
                           "UpdateMeshFromGoZ(ava_teeth, FM_Base_Lower_Teeth_1.GoZ)"}));
}

} // namespace

// The reference host's receive side: returned GoZ files change the scene whole or not at all,
// GoZ names lead back to their objects, and the character operations change its state.
#include "CDebugLogRecorder.h"
#include "CGoZReturnChannel.h"
#include "CGoZStandInFile.h"
#include "CReferenceFileService.h"
#include "CReferenceHost.h"
#include "CSandbox.h"
#include "CStandInTracker.h"
#include "CZBrushReturn.h"
#include "HostTestSupport.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLocalSocket>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace MV::Host;

namespace {

const QByteArray kMeshScene = R"({
    "objects": [
        {"id": "hero", "name": "Hero", "kind": 1, "node_type": 4, "avatar_type": 4, "pose": "Walk",
         "meshes": ["hero_body"], "mesh": {"vertices": [[0,0,0],[1,0,0],[0,1,0]], "faces": [[0,1,2]]}},
        {"id": "hero_body", "name": "Hero_Body", "parent": "hero",
         "mesh": {"vertices": [[0,0,0],[2,0,0],[0,2,0]], "faces": [[0,1,2]]}},
        {"id": "hero_eye", "name": "Hero_EyeOcclusion", "parent": "hero", "node_type": 49},
        {"id": "hero_tear", "name": "Hero_TearLine", "parent": "hero", "node_type": 50},
        {"id": "lamp", "name": "Desk Lamp", "kind": 3,
         "mesh": {"vertices": [[0,0,0],[1,0,0],[0,1,0],[0,0,1]], "faces": [[0,1,2],[0,1,3],[0,2,3],[1,2,3]]}}
    ],
    "current_avatar": "hero"
})";

const char kProject[] = "C:/Users/Public/Pixologic/GoZProjects/Default/";

class hostReceiveSide : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QString error;
        m_kSandbox.SetInstallZBrush(false);
        ASSERT_EQ(QV::kOk, m_kSandbox.Create(error)) << error.toStdString();
        auto scene = MV::Host::Test::ParseScene(kMeshScene);
        ASSERT_TRUE(scene);
        m_pHost = std::make_unique<CReferenceHost>(std::move(scene));
    }

    QV::CHandle* H(const char* id) const { return m_pHost->Scene().HandleOf(QString::fromUtf8(id)); }
    const CSceneObject& O(const char* id) const { return *m_pHost->Scene().Find(QString::fromUtf8(id)); }

    static QByteArray Sculpt(const CGoZMesh& mesh, const QString& name)
    {
        CGoZStandInFile file;
        file.SetValue(QStringLiteral("name"), name);
        file.m_kMesh = mesh;
        return file.Write();
    }

    static void Put(const QString& name, const QByteArray& bytes)
    {
        QString error;
        ASSERT_TRUE(CGoZStandInFile::Save(QLatin1String(kProject) + name, bytes, error)) << error.toStdString();
    }

    QString LastNote() const { return m_pHost->CallLog().Records().last().m_strNote; }

    CSandbox m_kSandbox;
    std::unique_ptr<CReferenceHost> m_pHost;
};

TEST_F(hostReceiveSide, ReturnedFilesChangeTheSceneWholeOrNotAtAll)
{
    const CGoZMesh sculpt = CZBrushReturn().Sculpt(O("lamp").m_kMesh);
    const QByteArray good = Sculpt(sculpt, QStringLiteral("Desk_Lamp"));
    const struct
    {
        const char* m_szCase;
        QByteArray m_kBytes; // null: no file
        QV::Result m_iResult;
        const char* m_szNote;
    } cases[] = {
        {"missing", QByteArray(), QV::kFail, "no file"},
        {"truncated", good.left(good.size() / 2), QV::kFail, "truncated"},
        {"malformed", "this is no mesh\n", QV::kFail, "not a GoZ stand-in file"},
        {"bad index", "GOZ-STANDIN 1\nvertices=1\nv 0 0 0\nfaces=1\nf 0 0 5\nend\n", QV::kFail, "names vertex"},
        {"good", good, QV::kOk, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_szCase);
        QFile::remove(QLatin1String(kProject) + QStringLiteral("Desk_Lamp.GoZ"));
        if (!c.m_kBytes.isNull()) {
            Put(QStringLiteral("Desk_Lamp.GoZ"), c.m_kBytes);
        }
        const int objects = m_pHost->Scene().ObjectCount();
        const CGoZMesh before = O("lamp").m_kMesh;

        QV::Result result = QV::kOk;
        m_pHost->File()->ImportGoZToObject(result, H("lamp"), L"Desk_Lamp.GoZ", CGoZImportOption());
        EXPECT_EQ(c.m_iResult, result);
        EXPECT_TRUE(LastNote().contains(QLatin1String(c.m_szNote))) << LastNote().toStdString();
        EXPECT_EQ(QV::Succeeded(c.m_iResult) ? sculpt : before, O("lamp").m_kMesh);

        QV::CHandle* created = nullptr;
        m_pHost->File()->CreatePropFromGoZ(result, L"Desk_Lamp", CGoZCreateOption(), created);
        EXPECT_EQ(c.m_iResult, result);
        EXPECT_EQ(QV::Succeeded(c.m_iResult) ? objects + 1 : objects, m_pHost->Scene().ObjectCount());
        EXPECT_EQ(QV::Succeeded(c.m_iResult), created != nullptr);

        CGoZMeshUpdateInfo info;
        info.m_strGoZFile = L"Desk_Lamp.GoZ";
        m_pHost->File()->UpdateMeshFromGoZ(result, info, H("hero"));
        EXPECT_EQ(c.m_iResult, result);
        EXPECT_EQ(QV::Succeeded(c.m_iResult) ? sculpt : O("hero").m_kMeshAtStart, O("hero").m_kMesh);
    }
    const CSceneObject& created = m_pHost->Scene().Object(m_pHost->Scene().ObjectCount() - 1);
    EXPECT_TRUE(created.m_bCreated);
    EXPECT_EQ(QStringLiteral("Desk_Lamp"), created.m_strName);
    EXPECT_EQ(sculpt, created.m_kMesh);
}

TEST_F(hostReceiveSide, GoZNamesAreFoundInTheProjectFolderWithOrWithoutTheirExtension)
{
    const struct
    {
        const wchar_t* m_szGiven;
        const char* m_szPath;
    } cases[] = {
        {L"Vase", "C:/Users/Public/Pixologic/GoZProjects/Default/Vase.GoZ"},
        {L"Vase.GoZ", "C:/Users/Public/Pixologic/GoZProjects/Default/Vase.GoZ"},
        {L"Vase.goz", "C:/Users/Public/Pixologic/GoZProjects/Default/Vase.goz"},
        {L"Vase.v2", "C:/Users/Public/Pixologic/GoZProjects/Default/Vase.v2.GoZ"},
        {L"D:\\Sculpts\\Vase.GoZ", "D:/Sculpts/Vase.GoZ"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(QString::fromUtf8(c.m_szPath), CReferenceFileService::ReturnedFilePath(c.m_szGiven));
    }
}

TEST_F(hostReceiveSide, ExportWritesEachNamedPartsMeshAndTheNameLeadsBack)
{
    QV::CArrayList<std::wstring> names;
    names.Add(L"Hero_Body");
    names.Add(L"Hero_Renamed_1");
    QV::Result result = QV::kFail;
    m_pHost->File()->ExportGoZ(result, H("hero"), std::wstring(L"C:\\Users\\Public\\Pixologic\\GoZProjects\\Default\\"),
                               0, names, 1);
    ASSERT_EQ(QV::kOk, result);
    CGoZStandInFile body;
    CGoZStandInFile renamed;
    QString error;
    ASSERT_TRUE(CGoZStandInFile::Read(QLatin1String(kProject) + QStringLiteral("Hero_Body.goz"), body, error));
    ASSERT_TRUE(CGoZStandInFile::Read(QLatin1String(kProject) + QStringLiteral("Hero_Renamed_1.goz"), renamed, error));
    EXPECT_EQ(O("hero_body").m_kMesh, body.m_kMesh) << "a part named like a mesh object sends that mesh";
    EXPECT_EQ(O("hero").m_kMesh, renamed.m_kMesh) << "another name sends the object's own mesh";
    EXPECT_EQ(QStringLiteral("hero"), renamed.Value(QStringLiteral("object")));

    // Names handed out for a copy, or written by an export, lead back to their object.
    EXPECT_EQ(L"Desk Lamp", m_pHost->Query()->MakeUniqueName(result, H("lamp"), L"Desk Lamp"));
    EXPECT_EQ(L"Desk Lamp_1", m_pHost->Query()->MakeUniqueName(result, H("lamp"), L"Desk Lamp"));
    const struct
    {
        const wchar_t* m_szName;
        const char* m_szFound; // null: nothing
    } cases[] = {
        {L"Desk Lamp", "lamp"},          {L"Desk Lamp_1", "lamp"}, {L"Hero_Renamed_1", "hero"},
        {L"Hero_Body", "hero_body"},     {L"Nobody", nullptr},     {L"desk lamp", nullptr},
    };
    for (const auto& c : cases) {
        QV::CHandle* found = H("hero_tear");
        m_pHost->File()->FindObjectByName(result, found, c.m_szName);
        EXPECT_EQ(QV::kOk, result);
        EXPECT_EQ(c.m_szFound == nullptr ? nullptr : H(c.m_szFound), found) << QString::fromWCharArray(c.m_szName).toStdString();
    }
}

TEST_F(hostReceiveSide, CharacterOperationsChangeTheCharactersState)
{
    QV::Result result = QV::kFail;
    const std::wstring motion = L"C:\\ProgramData\\Figmora\\Goz.mvmotion";
    ASSERT_EQ(QV::kOk, m_pHost->File()->SaveAvatarMotion(H("hero"), motion, 0));
    ASSERT_EQ(QV::kOk, m_pHost->Fitting()->ResetAvatarPose(H("hero"), H("hero"), 15));
    EXPECT_EQ(QStringLiteral("reset"), O("hero").m_strPose);
    ASSERT_EQ(QV::kOk, m_pHost->File()->LoadMotionFile(motion, 13, 0x4004, -1, -1));
    EXPECT_EQ(QStringLiteral("Walk"), O("hero").m_strPose) << "the saved pose comes back";

    EXPECT_EQ(QV::kOk, m_pHost->Query()->AutoRigAvatar(H("hero"), 1));
    m_pHost->Fitting()->RebuildAvatarConform(result, H("hero"), 0, QV::CArrayList<QV::CHandle*>{H("hero_body")});
    EXPECT_EQ(QV::kOk, m_pHost->Query()->UpdateAvatarAfterGoZ(H("hero")));
    EXPECT_EQ(QV::kOk, m_pHost->Avatar()->CommitAvatarChange(H("hero")));
    EXPECT_EQ(QV::kOk, m_pHost->Query()->AdjustEyeElement(H("hero"), 49));
    m_pHost->Fitting()->AdjustEyeOcclusion(result, H("hero"));
    m_pHost->Fitting()->AdjustTearline(result, H("hero"));
    m_pHost->Query()->FinishGoZImport(result, H("hero"), QV::CArrayList<QV::CHandle*>{H("hero_body"), H("lamp")});
    m_pHost->Query()->FinishGoZImport(result, nullptr, QV::CArrayList<QV::CHandle*>{H("lamp")});
    ASSERT_EQ(QV::kOk, result);

    const CSceneObject& hero = O("hero");
    EXPECT_TRUE(hero.m_bRigged);
    EXPECT_EQ(1, hero.m_iAutoRigs);
    EXPECT_EQ(1, hero.m_iConformRebuilds);
    EXPECT_EQ(1, hero.m_iGoZUpdates);
    EXPECT_EQ(1, hero.m_iCommits);
    EXPECT_EQ(1, hero.m_iFinishedImports);
    EXPECT_EQ((QStringList{QStringLiteral("hero_body"), QStringLiteral("lamp")}), hero.m_kLastImported);
    EXPECT_EQ(2, O("hero_eye").m_iFittings) << "AdjustEyeElement(49) and AdjustEyeOcclusion";
    EXPECT_EQ(1, O("hero_tear").m_iFittings);
    EXPECT_EQ(0, O("hero_body").m_iFittings);
    EXPECT_EQ(2, m_pHost->Scene().State().m_iFinishedImports) << "an import without a character is counted too";
    EXPECT_EQ(QStringList{QStringLiteral("lamp")}, m_pHost->Scene().State().m_kLastImported);

    // Failures change nothing.
    ASSERT_EQ(QV::kOk, m_pHost->SetFailure(QStringLiteral("AutoRigAvatar"), QV::kOutOfMemory));
    EXPECT_EQ(QV::kOutOfMemory, m_pHost->Query()->AutoRigAvatar(H("hero"), 1));
    EXPECT_EQ(1, O("hero").m_iAutoRigs);
    EXPECT_EQ(QV::kFail, m_pHost->File()->LoadMotionFile(L"C:\\nowhere.mvmotion", 13, 0x4004, -1, -1));
    EXPECT_TRUE(LastNote().startsWith(QStringLiteral("no file"))) << LastNote().toStdString();
}

TEST(hostReturnChannel, QueuesNoticesInArrivalOrderAndAnswersEach)
{
    QTemporaryDir folder;
    CGoZReturnChannel channel;
    QString error;
    ASSERT_TRUE(channel.Listen(folder.path(), error)) << error.toStdString();
    EXPECT_EQ(channel.ServerName().toLocal8Bit(), qgetenv(CGoZReturnChannel::kSocketVariable));

    auto send = [&](const QByteArray& line) {
        QLocalSocket socket;
        socket.connectToServer(channel.ServerName());
        EXPECT_TRUE(socket.waitForConnected(5000));
        socket.write(line);
        socket.flush();
        QByteArray answer;
        QElapsedTimer waited;
        waited.start();
        while (!answer.contains('\n') && waited.elapsed() < 5000) {
            QCoreApplication::processEvents();
            socket.waitForReadyRead(10);
            answer += socket.readAll();
        }
        return answer;
    };
    EXPECT_EQ("ok\n", send(R"({"notice": "GoZDataUpdated", "step": 4, "object_list": ["A", "B"]})" "\n"));
    EXPECT_EQ("error\n", send("hello\n"));
    EXPECT_EQ("ok\n", send(R"({"notice": "GoZDataUpdated", "object_list": []})" "\n"));

    ASSERT_EQ(2, channel.Notices().size());
    EXPECT_EQ(QStringList{QStringLiteral("hello")}, channel.InvalidLines());
    ASSERT_TRUE(channel.HasPending());
    const CGoZNotice first = channel.TakeNext(7);
    EXPECT_EQ(0, first.m_iIndex);
    EXPECT_EQ(4, first.m_kStep.toInt());
    EXPECT_EQ((QStringList{QStringLiteral("A"), QStringLiteral("B")}), first.m_kObjectList);
    EXPECT_EQ(1, channel.TakeNext(9).m_iIndex);
    EXPECT_FALSE(channel.HasPending());
    EXPECT_EQ(9, channel.Notices().at(1).m_iConsumedByStep);
}

TEST(hostStandInTracker, StopsOnlyTheProcessesOfItsOwnRun)
{
    QTemporaryDir folder;
    CStandInTracker tracker;
    QString error;
    ASSERT_TRUE(tracker.Start(folder.path(), error)) << error.toStdString();
    const QByteArray runId = qgetenv(CStandInTracker::kRunVariable);
    ASSERT_FALSE(runId.isEmpty());

    // One process of this run, one of another run, both marked as running.
    QProcess ours;
    QProcess foreign;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    ours.setProcessEnvironment(environment);
    environment.insert(QString::fromLatin1(CStandInTracker::kRunVariable), QStringLiteral("another-run"));
    foreign.setProcessEnvironment(environment);
    ours.start(QStringLiteral("sleep"), {QStringLiteral("30")});
    foreign.start(QStringLiteral("sleep"), {QStringLiteral("30")});
    ASSERT_TRUE(ours.waitForStarted() && foreign.waitForStarted());
    const QString running = folder.path() + QStringLiteral("/running/");
    for (const QProcess* process : {&ours, &foreign}) {
        QFile mark(running + QString::number(process->processId()));
        ASSERT_TRUE(mark.open(QIODevice::WriteOnly));
    }
    QFile stale(running + QStringLiteral("999999999"));
    ASSERT_TRUE(stale.open(QIODevice::WriteOnly));
    stale.close();

    EXPECT_EQ(QStringList{QString::number(ours.processId())}, tracker.Running());
    EXPECT_FALSE(QFile::exists(running + QStringLiteral("999999999"))) << "stale marks are dropped";
    const QStringList left = tracker.WaitForAll(100);
    EXPECT_EQ(QStringList{QString::number(ours.processId())}, tracker.Stop(left + QStringList{QString::number(foreign.processId())}));
    EXPECT_TRUE(ours.waitForFinished(5000));
    EXPECT_EQ(QProcess::Running, foreign.state()) << "another run's process is left alone";
    foreign.kill();
    foreign.waitForFinished();
    EXPECT_TRUE(tracker.Running().isEmpty());
}

TEST(hostDebugLog, RecordsDebugLinesWithTheirStep)
{
    int step = -1;
    {
        CDebugLogRecorder recorder([&step] { return step; });
        qDebug() << "Cant' read Object list path";
        step = 3;
        qInfo().noquote() << "an info line";
        qWarning() << "a warning passes on";
        const QList<CDebugLogRecorder::CLine> lines = recorder.Lines();
        ASSERT_EQ(2, lines.size());
        EXPECT_EQ(QStringLiteral("Cant' read Object list path"), lines[0].m_strText);
        EXPECT_EQ(-1, lines[0].m_iStep);
        EXPECT_EQ(QStringLiteral("debug"), lines[0].m_strType);
        EXPECT_EQ(3, lines[1].m_iStep);
        EXPECT_EQ(QStringLiteral("info"), lines[1].m_strType);
        EXPECT_FALSE(recorder.ToJson().at(0).toObject().contains(QStringLiteral("step")));
        EXPECT_EQ(3, recorder.ToJson().at(1).toObject().value(QStringLiteral("step")).toInt());
    }
    qDebug() << "after the recorder: not recorded, and no crash";
}

} // namespace

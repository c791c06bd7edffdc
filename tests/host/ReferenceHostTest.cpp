// The reference host's operations: exports and the names they choose, injected failures, and the
// receive side, where returned GoZ files change the scene whole or not at all.
#include "CGoZReturnChannel.h"
#include "CGoZStandInFile.h"
#include "CReferenceFileService.h"
#include "CStandInTracker.h"
#include "CZBrushReturn.h"
#include "HostTestSupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

using namespace MV::Host;

namespace {

const QByteArray kMeshScene = R"({"objects": [
    {"id": "hero", "name": "Hero", "kind": 1, "node_type": 4, "avatar_type": 4, "pose": "Walk",
     "meshes": ["hero_body"], "mesh": {"vertices": [[0,0,0],[1,0,0],[0,1,0]], "faces": [[0,1,2]]}},
    {"id": "hero_body", "name": "Hero_Body", "parent": "hero", "mesh": {"vertices": [[0,0,0],[2,0,0],[0,2,0]], "faces": [[0,1,2]]}},
    {"id": "hero_eye", "name": "Hero_EyeOcclusion", "parent": "hero", "node_type": 49},
    {"id": "hero_tear", "name": "Hero_TearLine", "parent": "hero", "node_type": 50},
    {"id": "lamp", "name": "Desk Lamp", "kind": 3,
     "mesh": {"vertices": [[0,0,0],[1,0,0],[0,1,0],[0,0,1]], "faces": [[0,1,2],[0,1,3],[0,2,3],[1,2,3]]}}
], "current_avatar": "hero"})";

const QString kProject = QStringLiteral("C:/Users/Public/Pixologic/GoZProjects/Default/");

// A host over a scene, in a sandbox without ZBrush: relative paths stay inside it.
class hostReferenceHost : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QString error;
        m_kSandbox.SetInstallZBrush(false);
        ASSERT_EQ(QV::kOk, m_kSandbox.Create(error)) << error.toStdString();
    }
    bool Start(const QByteArray& json)
    {
        auto scene = MV::Host::Test::ParseScene(json);
        m_pHost = std::make_unique<CReferenceHost>(std::move(scene));
        return m_pHost->Scene().ObjectCount() > 0;
    }
    QV::CHandle* H(const char* id) const { return m_pHost->Scene().HandleOf(QString::fromUtf8(id)); }
    const CSceneObject& O(const char* id) const { return *m_pHost->Scene().Find(QString::fromUtf8(id)); }
    QString LastNote() const { return m_pHost->CallLog().Records().last().m_strNote; }
    QString Unique(const char* id, const QString& base)
    {
        QV::Result result = QV::kFail;
        const std::wstring name = m_pHost->Query()->MakeUniqueName(result, H(id), base.toStdWString());
        EXPECT_EQ(QV::kOk, result);
        return QString::fromStdWString(name);
    }

    // Exports into folder; returns the part names as the host handed them back.
    QStringList Export(const char* id, const QString& folder, unsigned int mask, const QStringList& given, QV::Result& result)
    {
        QV::CArrayList<std::wstring> names;
        for (const QString& name : given) {
            names.Add(name.toStdWString());
        }
        m_pHost->File()->ExportGoZ(result, H(id), folder.toStdWString(), mask, names, 2);
        QStringList out;
        for (const std::wstring& name : names) {
            out << QString::fromStdWString(name);
        }
        return out;
    }

    CSandbox m_kSandbox;
    std::unique_ptr<CReferenceHost> m_pHost;
};

TEST_F(hostReferenceHost, ExportGoZChoosesTheNamesByTheMaskAndWritesEachFile)
{
    ASSERT_TRUE(Start(MV::Host::Test::kBasicScene));
    const struct { const char* m_szObject; unsigned int m_uMask; QStringList m_kGiven; QStringList m_kWritten; } cases[] = {
        {"box", 0u, {}, {"Box"}},
        {"box", 1u, {}, {"Box"}}, // split bits only apply to a character
        {"hero", 0u, {}, {"Hero"}},
        {"hero", 1u | 64u, {}, {"Body", "EyeWinker", "SkinHead"}},
        {"hero", 1024u, {}, {"Body"}},
        {"hero", 16777216u | 1u, {}, {"Body", "EyeWinker"}},
        {"hero_teeth", 16777216u, {}, {"FM_Base_Upper_Teeth", "FM_Base_Lower_Teeth"}},
        {"hero", 64u, {"Given_A", "Given B"}, {"Given_A", "Given B"}},
        {"statue", 0u, {}, {QStringLiteral("Ünïcödé Statue")}},
    };
    QV::Result result = QV::kFail;
    for (const auto& item : cases) {
        SCOPED_TRACE(std::string(item.m_szObject) + " mask " + std::to_string(item.m_uMask));
        QDir(QStringLiteral("out")).removeRecursively();
        // Into a folder that does not exist yet, given with backslashes.
        EXPECT_EQ(item.m_kWritten, Export(item.m_szObject, QStringLiteral("out\\sub\\"), item.m_uMask, item.m_kGiven, result));
        EXPECT_EQ(QV::kOk, result);
        QStringList files;
        for (const QString& name : item.m_kWritten) {
            files << name + QStringLiteral(".goz");
        }
        files.sort();
        EXPECT_EQ(files, QDir(QStringLiteral("out/sub")).entryList(QDir::Files, QDir::Name));
    }
    QFile file(QStringLiteral("out/sub/Ünïcödé Statue.goz"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(QByteArray("GOZ-STANDIN 1\nobject=statue\nname=\xc3\x9cn\xc3\xaf" "c\xc3\xb6" "d\xc3\xa9 Statue\nsplit=0\npose=2\nvertices=0\nfaces=0\nend\n"),
              file.readAll());

    // An export stops at a name no file can have, and refuses a handle that is not the scene's.
    EXPECT_EQ(QStringList{"Good"}, Export("box", QStringLiteral("bad"), 0u, {"Good", "Bad/Name", "Later"}, result));
    EXPECT_EQ(QV::kFail, result);
    EXPECT_EQ(QStringList{"Good.goz"}, QDir(QStringLiteral("bad")).entryList(QDir::Files));
    QV::CArrayList<std::wstring> names;
    QV::CHandle foreign(0);
    m_pHost->File()->ExportGoZ(result, &foreign, L"out", 0, names, 0);
    EXPECT_EQ(QV::kInvalidArg, result);
}

TEST_F(hostReferenceHost, ExportedPartsCarryTheirMeshAndUniqueNamesLeadBackToTheirObject)
{
    ASSERT_TRUE(Start(kMeshScene));
    QV::Result result = QV::kFail;
    Export("hero", QStringLiteral("C:\\Users\\Public\\Pixologic\\GoZProjects\\Default\\"), 0, {"Hero_Body", "Hero_Renamed_1"}, result);
    ASSERT_EQ(QV::kOk, result);
    CGoZStandInFile body;
    CGoZStandInFile renamed;
    QString error;
    ASSERT_TRUE(CGoZStandInFile::Read(kProject + QStringLiteral("Hero_Body.goz"), body, error));
    ASSERT_TRUE(CGoZStandInFile::Read(kProject + QStringLiteral("Hero_Renamed_1.goz"), renamed, error));
    EXPECT_EQ(O("hero_body").m_kMesh, body.m_kMesh) << "a part named like a mesh object sends that mesh";
    EXPECT_EQ(O("hero").m_kMesh, renamed.m_kMesh) << "another name sends the object's own mesh";
    EXPECT_EQ(QStringLiteral("hero"), renamed.Value(QStringLiteral("object")));

    // An object's own name is no conflict; another object's, one handed out before or an exported one is.
    EXPECT_EQ(QStringLiteral("Desk Lamp"), Unique("lamp", QStringLiteral("Desk Lamp")));
    EXPECT_EQ(QStringLiteral("Desk Lamp_1"), Unique("lamp", QStringLiteral("Desk Lamp")));
    EXPECT_EQ(QStringLiteral("Hero_1"), Unique("lamp", QStringLiteral("Hero")));
    EXPECT_EQ(QStringLiteral("Hero_Renamed_1_1"), Unique("hero", QStringLiteral("Hero_Renamed_1")));
    m_pHost->Query()->MakeUniqueName(result, H("lamp"), std::wstring());
    EXPECT_EQ(QV::kInvalidArg, result);
    const struct { const wchar_t* m_szName; const char* m_szFound; } cases[] = { // null: nothing
        {L"Desk Lamp", "lamp"},      {L"Desk Lamp_1", "lamp"}, {L"Hero_Renamed_1", "hero"},
        {L"Hero_Body", "hero_body"}, {L"Nobody", nullptr},     {L"desk lamp", nullptr},
    };
    for (const auto& c : cases) {
        QV::CHandle* found = H("hero_tear");
        m_pHost->File()->FindObjectByName(result, found, c.m_szName);
        EXPECT_EQ(QV::kOk, result);
        EXPECT_EQ(c.m_szFound == nullptr ? nullptr : H(c.m_szFound), found) << QString::fromWCharArray(c.m_szName).toStdString();
    }
}

TEST_F(hostReferenceHost, InjectedFailuresShapeEachKindOfAnswer)
{
    ASSERT_TRUE(Start(MV::Host::Test::kBasicScene));
    CQueryService* query = m_pHost->Query();
    QV::Result result = QV::kOk;
    int type = 77;
    // Each call answers as a failure would: its result, a null, an empty list, output left alone.
    const struct { const char* m_szOperation; std::function<bool()> m_kFailed; } cases[] = {
        {"GetAvatarType", [&] { query->GetAvatarType(result, H("hero"), type); return result == QV::kOutOfMemory && type == 77; }},
        {"IsPlaying", [&] { m_pHost->Scene().State().m_bPlaying = true; return !query->IsPlaying(); }},
        {"GetMainWindow", [&] { return query->GetMainWindow() == nullptr; }},
        {"GetOwningCharacter", [&] { return query->GetOwningCharacter(H("hero_clip")) == nullptr; }},
        {"GetObjectMeshes", [&] { return query->GetObjectMeshes(H("box")).IsEmpty(); }},
        {"GetObjectType", [&] { return query->GetObjectType(H("box")) == QV::kOutOfMemory; }},
        {"GetCurrentAvatar", [&] { return m_pHost->Avatar()->GetCurrentAvatar() == nullptr; }},
        {"ShowMessageBox", [&] { return m_pHost->Ui()->ShowMessageBox("t", QString(), nullptr, 2, 0x400, 0x400) == QV::kOutOfMemory; }},
        {"HandleName", [&] { return query->HandleName(result, H("box")).empty() && result == QV::kOutOfMemory; }},
    };
    for (const auto& item : cases) {
        SCOPED_TRACE(item.m_szOperation);
        const QString operation = QString::fromLatin1(item.m_szOperation);
        ASSERT_EQ(QV::kOk, m_pHost->SetFailure(operation, QV::kOutOfMemory));
        EXPECT_TRUE(item.m_kFailed()) << "did not fail";
        const CCallRecord last = m_pHost->CallLog().Records().last();
        EXPECT_EQ(operation, last.m_strOperation);
        EXPECT_TRUE(last.m_bInjected);
        EXPECT_EQ(QV::kOutOfMemory, last.m_iInjectedResult);
        m_pHost->ClearFailure(operation);
        EXPECT_FALSE(item.m_kFailed()) << "still fails after clearing";
    }

    // A failure for the nth call hits only that call.
    ASSERT_EQ(QV::kOk, m_pHost->SetFailure(QStringLiteral("GetNodeType"), QV::kFail, 2));
    QList<QV::Result> results;
    for (int i = 0; i < 4; ++i) {
        m_pHost->Query()->GetNodeType(result, H("hero"), type);
        results << result;
    }
    EXPECT_EQ((QList<QV::Result>{QV::kOk, QV::kFail, QV::kOk, QV::kOk}), results);
    // Unknown operations (the name is case-sensitive) and negative counts are refused.
    EXPECT_EQ(QV::kInvalidArg, m_pHost->SetFailure(QStringLiteral("ExportGoz"), QV::kFail));
    EXPECT_EQ(QV::kInvalidArg, m_pHost->SetFailure(QStringLiteral("ExportGoZ"), QV::kFail, -1));
}

TEST_F(hostReferenceHost, ReturnedFilesChangeTheSceneWholeOrNotAtAll)
{
    ASSERT_TRUE(Start(kMeshScene));
    const CGoZMesh sculpt = CZBrushReturn().Sculpt(O("lamp").m_kMesh);
    CGoZStandInFile returned;
    returned.SetValue(QStringLiteral("name"), QStringLiteral("Desk_Lamp"));
    returned.m_kMesh = sculpt;
    const QByteArray good = returned.Write();
    const struct { const char* m_szCase; QByteArray m_kBytes; const char* m_szNote; } cases[] = { // null bytes: no file
        {"missing", QByteArray(), "no file"},
        {"truncated", good.left(good.size() / 2), "truncated"},
        {"bad index", "GOZ-STANDIN 1\nvertices=1\nv 0 0 0\nfaces=1\nf 0 0 5\nend\n", "names vertex"},
        {"good", good, nullptr},
    };
    const QString path = kProject + QStringLiteral("Desk_Lamp.GoZ");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_szCase);
        QFile::remove(path);
        QString error;
        ASSERT_TRUE(c.m_kBytes.isNull() || CGoZStandInFile::Save(path, c.m_kBytes, error)) << error.toStdString();
        const bool ok = c.m_szNote == nullptr;
        const int objects = m_pHost->Scene().ObjectCount();
        const CGoZMesh before = O("lamp").m_kMesh;

        QV::Result result = QV::kOk;
        m_pHost->File()->ImportGoZToObject(result, H("lamp"), L"Desk_Lamp.GoZ", CGoZImportOption());
        EXPECT_EQ(ok ? QV::kOk : QV::kFail, result);
        EXPECT_TRUE(LastNote().contains(QLatin1String(c.m_szNote))) << LastNote().toStdString();
        EXPECT_EQ(ok ? sculpt : before, O("lamp").m_kMesh);

        QV::CHandle* created = nullptr;
        m_pHost->File()->CreatePropFromGoZ(result, L"Desk_Lamp", CGoZCreateOption(), created);
        EXPECT_EQ(ok ? QV::kOk : QV::kFail, result);
        EXPECT_EQ(ok ? objects + 1 : objects, m_pHost->Scene().ObjectCount());
        QV::CHandle* found = nullptr;
        m_pHost->File()->FindObjectByName(result, found, L"Desk_Lamp");
        EXPECT_EQ(created, found) << "a created prop is found by its name";

        CGoZMeshUpdateInfo info;
        info.m_strGoZFile = L"Desk_Lamp.GoZ";
        m_pHost->File()->UpdateMeshFromGoZ(result, info, H("hero"));
        EXPECT_EQ(ok ? QV::kOk : QV::kFail, result);
        EXPECT_EQ(ok ? sculpt : O("hero").m_kMeshAtStart, O("hero").m_kMesh);
    }
    const CSceneObject& created = m_pHost->Scene().Object(m_pHost->Scene().ObjectCount() - 1);
    EXPECT_TRUE(created.m_bCreated);
    EXPECT_EQ(QStringLiteral("Desk_Lamp"), created.m_strName);
    EXPECT_EQ(sculpt, created.m_kMesh);

    // GoZ names are found in the project folder, with or without their extension.
    const struct { const wchar_t* m_szGiven; const char* m_szPath; } names[] = {
        {L"Vase", "Vase.GoZ"}, {L"Vase.GoZ", "Vase.GoZ"}, {L"Vase.goz", "Vase.goz"}, {L"Vase.v2", "Vase.v2.GoZ"},
        {L"D:\\Sculpts\\Vase.GoZ", "D:/Sculpts/Vase.GoZ"},
    };
    for (const auto& c : names) {
        const QString expected = QString::fromUtf8(c.m_szPath);
        EXPECT_EQ(expected.contains(QLatin1Char('/')) ? expected : kProject + expected, CReferenceFileService::ReturnedFilePath(c.m_szGiven));
    }
}

TEST(hostReturnChannel, QueuesNoticesInArrivalOrderAndAnswersEach)
{
    QTemporaryDir folder;
    CGoZReturnChannel channel;
    QString error;
    ASSERT_TRUE(channel.Listen(folder.path(), error)) << error.toStdString();
    EXPECT_EQ(channel.ServerName().toLocal8Bit(), qgetenv(CGoZReturnChannel::kSocketVariable));
    QStringList answers;
    for (const QByteArray line : {QByteArray(R"({"notice": "GoZDataUpdated", "step": 4, "object_list": ["A", "B"]})" "\n"),
                                  QByteArray("hello\n"), QByteArray(R"({"notice": "GoZDataUpdated", "object_list": []})" "\n")}) {
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
        answers << QString::fromLatin1(answer);
    }
    EXPECT_EQ((QStringList{"ok\n", "error\n", "ok\n"}), answers);
    ASSERT_EQ(2, channel.Notices().size());
    EXPECT_EQ(QStringList{"hello"}, channel.InvalidLines());
    const CGoZNotice first = channel.TakeNext(7);
    EXPECT_EQ(4, first.m_kStep.toInt());
    EXPECT_EQ((QStringList{"A", "B"}), first.m_kObjectList);
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
    ASSERT_FALSE(qgetenv(CStandInTracker::kRunVariable).isEmpty());

    // One process of this run, one of another run, both marked as running, and a stale mark.
    QProcess ours;
    QProcess foreign;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QString::fromLatin1(CStandInTracker::kRunVariable), QStringLiteral("another-run"));
    foreign.setProcessEnvironment(environment);
    ours.start(QStringLiteral("sleep"), {QStringLiteral("30")});
    foreign.start(QStringLiteral("sleep"), {QStringLiteral("30")});
    ASSERT_TRUE(ours.waitForStarted() && foreign.waitForStarted());
    const QString running = folder.path() + QStringLiteral("/running/");
    for (const QString& mark : {QString::number(ours.processId()), QString::number(foreign.processId()), QStringLiteral("999999999")}) {
        ASSERT_TRUE(QFile(running + mark).open(QIODevice::WriteOnly));
    }
    const QStringList oursOnly{QString::number(ours.processId())};
    EXPECT_EQ(oursOnly, tracker.Running());
    EXPECT_FALSE(QFile::exists(running + QStringLiteral("999999999"))) << "stale marks are dropped";
    EXPECT_EQ(oursOnly, tracker.Stop(tracker.WaitForAll(100) + QStringList{QString::number(foreign.processId())}));
    EXPECT_TRUE(ours.waitForFinished(5000));
    EXPECT_EQ(QProcess::Running, foreign.state()) << "another run's process is left alone";
    foreign.kill();
    foreign.waitForFinished();
    EXPECT_TRUE(tracker.Running().isEmpty());
}

} // namespace

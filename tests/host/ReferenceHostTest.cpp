#include "CEventSender.h"
#include "CReferenceHost.h"
#include "HostTestSupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

using namespace MV::Host;

namespace {

class hostReferenceHost : public ::testing::Test
{
protected:
    void SetUp() override
    {
        auto scene = MV::Host::Test::ParseScene(MV::Host::Test::kBasicScene);
        ASSERT_TRUE(scene);
        m_pHost = std::make_unique<CReferenceHost>(std::move(scene));
        ASSERT_TRUE(m_kFolder.isValid());
    }

    QV::CHandle* H(const char* id) const { return m_pHost->Scene().HandleOf(QString::fromUtf8(id)); }

    QStringList Export(const char* id, unsigned int mask, const QStringList& given, QV::Result& result)
    {
        QV::CArrayList<std::wstring> names;
        for (const QString& name : given) {
            names.Add(name.toStdWString());
        }
        m_pHost->File()->ExportGoZ(result, H(id), m_kFolder.path().toStdWString(), mask, names, 2);
        QStringList out;
        for (const std::wstring& name : names) {
            out << QString::fromStdWString(name);
        }
        return out;
    }

    QStringList FilesWritten() const
    {
        return QDir(m_kFolder.path()).entryList(QDir::Files, QDir::Name);
    }

    QString Unique(const char* id, const QString& base)
    {
        QV::Result result = QV::kFail;
        const std::wstring name = m_pHost->Query()->MakeUniqueName(result, H(id), base.toStdWString());
        EXPECT_EQ(QV::kOk, result);
        return QString::fromStdWString(name);
    }

    std::unique_ptr<CReferenceHost> m_pHost;
    QTemporaryDir m_kFolder;
};

TEST_F(hostReferenceHost, ExportGoZChoosesTheNamesByTheMask)
{
    const struct
    {
        const char* m_szObject;
        unsigned int m_uMask;
        QStringList m_kGiven;
        QStringList m_kWritten;
    } cases[] = {
        {"box", 0u, {}, {QStringLiteral("Box")}},
        {"box", 1u, {}, {QStringLiteral("Box")}}, // split bits only apply to a character
        {"hero", 0u, {}, {QStringLiteral("Hero")}},
        {"hero", 1u | 64u, {}, {QStringLiteral("Body"), QStringLiteral("EyeWinker"), QStringLiteral("SkinHead")}},
        {"hero", 1024u, {}, {QStringLiteral("Body")}},
        {"hero", 16777216u | 1u, {}, {QStringLiteral("Body"), QStringLiteral("EyeWinker")}},
        {"hero_teeth", 16777216u, {}, {QStringLiteral("FM_Base_Upper_Teeth"), QStringLiteral("FM_Base_Lower_Teeth")}},
        {"hero", 64u, {QStringLiteral("Given_A"), QStringLiteral("Given B")}, {QStringLiteral("Given_A"), QStringLiteral("Given B")}},
        {"statue", 0u, {}, {QStringLiteral("Ünïcödé Statue")}},
    };
    for (const auto& item : cases) {
        QDir(m_kFolder.path()).removeRecursively();
        QV::Result result = QV::kFail;
        const QStringList written = Export(item.m_szObject, item.m_uMask, item.m_kGiven, result);
        EXPECT_EQ(QV::kOk, result) << item.m_szObject << " mask " << item.m_uMask;
        EXPECT_EQ(item.m_kWritten, written) << item.m_szObject << " mask " << item.m_uMask;
        QStringList expectedFiles;
        for (const QString& name : item.m_kWritten) {
            expectedFiles << name + QStringLiteral(".goz");
        }
        expectedFiles.sort();
        EXPECT_EQ(expectedFiles, FilesWritten()) << item.m_szObject << " mask " << item.m_uMask;
    }
}

TEST_F(hostReferenceHost, ExportGoZWritesTheHeaderIntoANewFolderGivenWithBackslashes)
{
    const QString folder = m_kFolder.path() + QStringLiteral("\\GoZProjects\\Default\\");
    QV::CArrayList<std::wstring> names;
    QV::Result result = QV::kFail;
    m_pHost->File()->ExportGoZ(result, H("lamp"), folder.toStdWString(), 16777216u, names, 3);
    ASSERT_EQ(QV::kOk, result);
    QFile file(m_kFolder.path() + QStringLiteral("/GoZProjects/Default/FM_Base_Upper_Teeth.goz"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(QByteArray("GOZ-STANDIN 1\nobject=lamp\nname=FM_Base_Upper_Teeth\nsplit=16777216\npose=3\n"
                         "vertices=0\nfaces=0\nend\n"),
              file.readAll());
}

TEST_F(hostReferenceHost, ExportGoZStopsAtANameNoFileCanHave)
{
    QV::Result result = QV::kOk;
    const QStringList written =
        Export("box", 0u, {QStringLiteral("Good"), QStringLiteral("Bad/Name"), QStringLiteral("Later")}, result);
    EXPECT_EQ(QV::kFail, result);
    EXPECT_EQ(QStringList{QStringLiteral("Good")}, written);
    EXPECT_EQ(QStringList{QStringLiteral("Good.goz")}, FilesWritten());

    QV::CArrayList<std::wstring> names;
    QV::CHandle foreign(0);
    m_pHost->File()->ExportGoZ(result, &foreign, m_kFolder.path().toStdWString(), 0, names, 0);
    EXPECT_EQ(QV::kInvalidArg, result);
}

TEST_F(hostReferenceHost, MakeUniqueNameAvoidsSceneNamesAndNamesGivenBefore)
{
    EXPECT_EQ(QStringLiteral("Fresh"), Unique("box", QStringLiteral("Fresh")));
    EXPECT_EQ(QStringLiteral("Fresh_1"), Unique("box", QStringLiteral("Fresh")));
    EXPECT_EQ(QStringLiteral("Fresh_2"), Unique("lamp", QStringLiteral("Fresh")));
    // An object's own name is no conflict; another object's is.
    EXPECT_EQ(QStringLiteral("Box"), Unique("box", QStringLiteral("Box")));
    EXPECT_EQ(QStringLiteral("Box_1"), Unique("box", QStringLiteral("Box")));
    EXPECT_EQ(QStringLiteral("Hero_1"), Unique("box", QStringLiteral("Hero")));
    EXPECT_EQ(QStringLiteral("Fresh_1_1"), Unique("box", QStringLiteral("Fresh_1")));

    QV::Result result = QV::kFail;
    Export("crate", 0u, {}, result);
    ASSERT_EQ(QV::kOk, result);
    EXPECT_EQ(QStringLiteral("Crate_1"), Unique("crate", QStringLiteral("Crate"))) << "an exported name counts as used";

    m_pHost->Query()->MakeUniqueName(result, H("box"), std::wstring());
    EXPECT_EQ(QV::kInvalidArg, result);
}

TEST_F(hostReferenceHost, InjectedFailuresShapeEachKindOfAnswer)
{
    CQueryService* query = m_pHost->Query();
    const struct
    {
        const char* m_szOperation;
        std::function<bool()> m_kFailed; // true when the call answered as a failure
    } cases[] = {
        {"GetAvatarType",
         [&] {
             QV::Result result = QV::kOk;
             int type = 77;
             query->GetAvatarType(result, H("hero"), type);
             return result == QV::kOutOfMemory && type == 77;
         }},
        {"IsPlaying", [&] { m_pHost->Scene().State().m_bPlaying = true; return !query->IsPlaying(); }},
        {"GetMainWindow", [&] { return query->GetMainWindow() == nullptr; }},
        {"GetOwningCharacter", [&] { return query->GetOwningCharacter(H("hero_clip")) == nullptr; }},
        {"GetObjectMeshes", [&] { return query->GetObjectMeshes(H("box")).IsEmpty(); }},
        {"GetObjectType", [&] { return query->GetObjectType(H("box")) == QV::kOutOfMemory; }},
        {"GetCurrentAvatar", [&] { return m_pHost->Avatar()->GetCurrentAvatar() == nullptr; }},
        {"AutoRigAvatar", [&] { return query->AutoRigAvatar(H("hero"), 1) == QV::kOutOfMemory; }},
        {"ShowMessageBox",
         [&] { return m_pHost->Ui()->ShowMessageBox(QStringLiteral("t"), QString(), nullptr, 2, 0x400, 0x400) == QV::kOutOfMemory; }},
        {"HandleName",
         [&] {
             QV::Result result = QV::kOk;
             return query->HandleName(result, H("box")).empty() && result == QV::kOutOfMemory;
         }},
    };
    for (const auto& item : cases) {
        const QString operation = QString::fromLatin1(item.m_szOperation);
        ASSERT_EQ(QV::kOk, m_pHost->SetFailure(operation, QV::kOutOfMemory)) << item.m_szOperation;
        EXPECT_TRUE(item.m_kFailed()) << item.m_szOperation << " did not fail";
        const CCallRecord last = m_pHost->CallLog().Records().last();
        EXPECT_EQ(operation, last.m_strOperation);
        EXPECT_TRUE(last.m_bInjected);
        EXPECT_EQ(QV::kOutOfMemory, last.m_iInjectedResult);
        m_pHost->ClearFailure(operation);
        EXPECT_FALSE(item.m_kFailed()) << item.m_szOperation << " still fails after clearing";
    }
}

TEST_F(hostReferenceHost, AFailureForTheNthCallHitsOnlyThatCall)
{
    ASSERT_EQ(QV::kOk, m_pHost->SetFailure(QStringLiteral("GetNodeType"), QV::kFail, 2));
    QList<QV::Result> results;
    for (int i = 0; i < 4; ++i) {
        QV::Result result = QV::kOk;
        int type = 0;
        m_pHost->Query()->GetNodeType(result, H("hero"), type);
        results << result;
    }
    EXPECT_EQ((QList<QV::Result>{QV::kOk, QV::kFail, QV::kOk, QV::kOk}), results);
    // Unknown operations (the name is case-sensitive) and negative counts are refused.
    EXPECT_EQ(QV::kInvalidArg, m_pHost->SetFailure(QStringLiteral("ExportGoz"), QV::kFail));
    EXPECT_EQ(QV::kInvalidArg, m_pHost->SetFailure(QStringLiteral("ExportGoZ"), QV::kFail, -1));
}

TEST_F(hostReferenceHost, LogsEveryCallUnderAKnownNameWithReadableArguments)
{
    // Operations whose names other tests look up or make fail are left out.
    QV::Result result = QV::kOk;
    QV::CArrayList<QV::CHandle*> list;
    QV::CArrayList<std::wstring> names;
    QV::CHandle* owner = nullptr;
    QV::CHandle* found = nullptr;
    int number = 0;
    unsigned int kind = 0;
    std::wstring tag;
    CQueryService* q = m_pHost->Query();
    q->GetObjectKind(result, H("hero"), kind);
    q->HasNodeType(H("hero"));
    q->IsExpressionEditing(H("hero"));
    q->CollectChildObjects(result, H("hero"), 49, 1, list);
    q->HandleName(result, nullptr);
    q->GetLodMeshes(result, H("lamp"), names);
    q->IsGoZPolygonSupported(H("crate"));
    q->ListSceneObjectsOfKind(result, nullptr, 1, list, 1);
    q->GetParentObject(H("hero_eye"));
    q->GetHostDataFolder(result, 8);
    q->GetPickedObjects(result, list, 1);
    q->GetPickOwner(result, H("lamp"), 0, owner);
    q->FindRelatedObjects(result, H("hero"), 36, 1, list);
    q->ListMeshObjects(list, H("hero"));
    q->ListMeshObjectsType6(list, H("hero"));
    q->MakeUniqueName(result, H("box"), L"Ünï");
    q->IsSkinSplitSupported(H("hero"));
    q->IsBindPoseLocked(H("hero"));
    q->IsBlendShapeEditing(H("hero"));
    q->GetBoundNode(result, H("hero"), 0, owner);
    q->ShouldSkipReceiveDialog(H("hero"));
    q->AdjustEyeElement(H("hero"), 49);
    q->UpdateAvatarAfterGoZ(H("hero"));
    q->FinishGoZImport(result, H("hero"), QV::CArrayList<QV::CHandle*>{H("hero_eye"), nullptr});
    q->GetMaterialCount(result, H("hero"), number);
    q->GetTextureSize(result, H("hero"), 2, number);
    CNodeController* controller = q->GetNodeController(H("spring"));
    ASSERT_NE(nullptr, controller);
    controller->ResetController(0);
    controller->Release();
    CFileService* f = m_pHost->File();
    f->GetFileHandle(found, L"C:/nowhere.mvx", CGetFileHandleOption());
    f->ImportGoZToObject(result, H("box"), L"Box.GoZ", CGoZImportOption());
    f->CreatePropFromGoZ(result, L"New.GoZ", CGoZCreateOption(), found);
    f->FindObjectByName(result, found, L"Box");
    f->UpdateMeshFromGoZ(result, CGoZMeshUpdateInfo(), H("box"));
    f->LoadMotionFile(L"C:/nowhere.mvMotion", 13, 0x4004, -1, -1);
    f->LoadFile(result, L"C:/nowhere.mvMotion", 33, CLoadFileOption());
    m_pHost->Edit()->PrepareObjectUpdate(result, H("box"));
    m_pHost->Edit()->RefreshAvatar(result, H("hero"));
    m_pHost->Edit()->UpdateAvatarMorph(result, H("hero"), true);
    m_pHost->Ui()->RefreshView(result, 0);
    m_pHost->Avatar()->GetGozSplitMeshNames(result, names, 1);
    m_pHost->Avatar()->GetGozExtraMeshNames(result, names);
    m_pHost->Avatar()->IsCharacterTagSupported(L"Standard", 4);
    m_pHost->Avatar()->GetBlendShapeEditingAvatar();
    m_pHost->Avatar()->CommitAvatarChange(H("hero"));
    m_pHost->Character()->GetCharacterTag(result, H("hero"), tag);
    m_pHost->Fitting()->RebuildAvatarConform(result, H("hero"), 0, list);
    m_pHost->Fitting()->ResetAvatarPose(H("hero"), H("hero"), 15);
    m_pHost->Fitting()->ListAvatarRigMeshNames(result, H("hero"), names);
    m_pHost->Fitting()->AdjustEyeOcclusion(result, H("hero"));
    m_pHost->Fitting()->AdjustEyeOcclusionBlend(result, H("hero"));
    m_pHost->Fitting()->AdjustTearline(result, H("hero"));
    m_pHost->Registry()->RegisterPluginValue(nullptr, 5);
    m_pHost->GetEventSender();
    m_pHost->GetFigmoraEventSender();

    for (const CCallRecord& record : m_pHost->CallLog().Records()) {
        EXPECT_TRUE(CReferenceHost::OperationNames().contains(record.m_strOperation))
            << record.m_strOperation.toStdString() << " is not a known operation";
    }
    const CCallRecord name = m_pHost->CallLog().Of(QStringLiteral("HandleName")).first();
    EXPECT_EQ(QStringList{QStringLiteral("null")}, name.m_kArgs);
    const CCallRecord unique = m_pHost->CallLog().Of(QStringLiteral("MakeUniqueName")).first();
    EXPECT_EQ((QStringList{QStringLiteral("box"), QStringLiteral("Ünï")}), unique.m_kArgs);
    const CCallRecord finish = m_pHost->CallLog().Of(QStringLiteral("FinishGoZImport")).first();
    EXPECT_EQ(QStringLiteral("[hero_eye, null]"), finish.m_kArgs.value(1));
    EXPECT_EQ(QStringList{QStringLiteral("spring")}, m_pHost->CallLog().Of(QStringLiteral("Release")).first().m_kArgs);
}

TEST_F(hostReferenceHost, CollectsDescendantsByNodeType)
{
    const struct
    {
        const char* m_szParent;
        int m_iType;
        QStringList m_kIds;
        QV::Result m_iResult;
    } cases[] = {
        {"hero", 36, {QStringLiteral("hero_clip"), QStringLiteral("hero_teeth")}, QV::kOk}, // grandchildren too
        {"hero_hair", 51, {QStringLiteral("spring")}, QV::kOk},
        {"box", 36, {}, QV::kOk},
        {"ghost", 36, {}, QV::kInvalidArg},
    };
    for (const auto& item : cases) {
        QV::CArrayList<QV::CHandle*> list;
        QV::Result result = QV::kOk;
        m_pHost->Query()->CollectChildObjects(result, H(item.m_szParent), item.m_iType, 1, list);
        QStringList ids;
        for (QV::CHandle* handle : list) {
            ids << m_pHost->Scene().Find(handle)->m_strId;
        }
        EXPECT_EQ(item.m_iResult, result) << item.m_szParent << " " << item.m_iType;
        EXPECT_EQ(item.m_kIds, ids) << item.m_szParent << " " << item.m_iType;
    }
}

TEST_F(hostReferenceHost, AnswersPickOwnersAndNodeControllers)
{
    QV::Result result = QV::kFail;
    QV::CHandle* owner = nullptr;
    m_pHost->Query()->GetPickOwner(result, H("lamp"), 0, owner);
    EXPECT_EQ(H("box"), owner);
    m_pHost->Query()->GetPickOwner(result, H("box"), 0, owner);
    EXPECT_EQ(H("box"), owner) << "an object without an owner owns itself";
    EXPECT_EQ(nullptr, m_pHost->Query()->GetNodeController(H("hero_hair"))) << "only spring and physics nodes";
}

TEST_F(hostReferenceHost, SelectObjectsReplacesTheSelectionAndTellsListeners)
{
    int changes = 0;
    QObject::connect(m_pHost->EventSender(), &CEventSender::ObjectSelectionChanged, [&changes] { ++changes; });
    QString error;
    ASSERT_EQ(QV::kOk, m_pHost->SetPicks({QStringLiteral("crate")}, error));
    QV::Result result = QV::kFail;
    m_pHost->Ui()->SelectObjects(result, QV::CArrayList<QV::CHandle*>{H("hero_eye"), H("hero_teeth")}, 0, 1);
    EXPECT_EQ(QV::kOk, result);
    const QStringList expected{QStringLiteral("hero_eye"), QStringLiteral("hero_teeth")};
    EXPECT_EQ(expected, m_pHost->Scene().State().m_kSelection);
    EXPECT_EQ(expected, m_pHost->Scene().PickedIds()) << "the picks follow a new selection";

    QV::CHandle foreign(0);
    m_pHost->Ui()->SelectObjects(result, QV::CArrayList<QV::CHandle*>{H("box"), &foreign}, 0, 1);
    EXPECT_EQ(QV::kInvalidArg, result);
    EXPECT_EQ(expected, m_pHost->Scene().State().m_kSelection);
    EXPECT_EQ(1, changes);
}

TEST_F(hostReferenceHost, RaisesTheHostEvents)
{
    // The other events are driven through the plug-in in the integration tests.
    int updates = 0;
    QObject::connect(m_pHost->EventSender(), &CEventSender::GoZDataUpdated, [&updates] { ++updates; });
    m_pHost->RaiseGoZDataUpdated();
    EXPECT_EQ(1, updates);
}

TEST_F(hostReferenceHost, WritesTheRegistryStandInFile)
{
    // The plain form reaches the plug-in in the integration tests; here a typed value and a default value.
    auto typed = MV::Host::Test::ParseScene(
        R"({"registry": {"K": {"Count": {"data": "3", "type": "REG_DWORD"}, "": "default"}}})");
    ASSERT_TRUE(typed);
    const QString path = m_kFolder.path() + QStringLiteral("/sub/registry.txt");
    QString error;
    ASSERT_EQ(QV::kOk, CReferenceHost(std::move(typed)).WriteRegistryFile(path, error)) << error.toStdString();
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(QByteArray("K\t\tdefault\nK\tCount\t3\tREG_DWORD\n"), file.readAll());
}

TEST_F(hostReferenceHost, RemoveLodsClearsAllOrNothing)
{
    QV::Result result = QV::kOk;
    QV::CHandle foreign(0);
    m_pHost->Edit()->RemoveLods(result, QV::CArrayList<QV::CHandle*>{H("lamp"), &foreign}, 1, 1, 0x401);
    EXPECT_EQ(QV::kInvalidArg, result);
    EXPECT_EQ(2, m_pHost->Scene().Find(QStringLiteral("lamp"))->m_kLodMeshes.size());
    m_pHost->Edit()->RemoveLods(result, QV::CArrayList<QV::CHandle*>{H("lamp")}, 1, 1, 0x401);
    EXPECT_EQ(QV::kOk, result);
    EXPECT_TRUE(m_pHost->Scene().Find(QStringLiteral("lamp"))->m_kLodMeshes.isEmpty());
}

TEST_F(hostReferenceHost, CreatedPropsCanBeFoundByName)
{
    const QString path = m_kFolder.path() + QStringLiteral("/Sculpt.GoZ");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("GOZ-STANDIN 1\nname=Sculpt\nvertices=3\nv 0 0 0\nv 1 0 0\nv 0 1 0\nfaces=1\nf 0 1 2\nend\n");
    file.close();
    QV::Result result = QV::kFail;
    QV::CHandle* created = nullptr;
    m_pHost->File()->CreatePropFromGoZ(result, path.toStdWString(), CGoZCreateOption(), created);
    ASSERT_EQ(QV::kOk, result);
    QV::CHandle* found = nullptr;
    m_pHost->File()->FindObjectByName(result, found, L"Sculpt");
    EXPECT_EQ(QV::kOk, result);
    EXPECT_TRUE(created != nullptr && created == found);
    // A name nobody has is a mesh new to the scene, not a failure.
    m_pHost->File()->FindObjectByName(result, found, L"Nothing");
    EXPECT_EQ(QV::kOk, result);
    EXPECT_EQ(nullptr, found);
}

} // namespace

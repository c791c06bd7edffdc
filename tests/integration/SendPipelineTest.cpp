#include "SendFixture.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QListView>
#include <QPushButton>
#include <QRadioButton>

#include <functional>

using namespace MV;
using namespace MV::Test;

namespace {

const QByteArray kProjectPrefix = "C:/Users/Public/Pixologic/GoZProjects/Default/";

class SendPipeline : public SendFixture
{
public:
    void SetUp() override { Start(kSendScene); }

    QByteArray ObjectList() const { return ReadFile(App() + QStringLiteral("GoZ_ObjectList.txt")); }
    QStringList ExportSplits() const
    {
        QStringList splits;
        for (const Host::CCallRecord& call : Calls("ExportGoZ")) {
            splits << call.m_kArgs.value(0) + QLatin1Char(':') + call.m_kArgs.value(2);
        }
        return splits;
    }
};

TEST_F(SendPipeline, CharacterSendWritesExchangeFilesByteForByte)
{
    SetAvatar(QStringLiteral("hero"));
    Pick({QStringLiteral("hero")});
    Open();
    ASSERT_EQ(m_pDialog->OnGoZ(), QV::kOk);
    EXPECT_FALSE(m_pDialog->isVisible()) << "a successful send closes the dialog";
    EXPECT_EQ(ReadFile(Root() + QStringLiteral("GoZBrush/GoZ_Application.txt")), "Figmora");
    EXPECT_EQ(ObjectList(), kProjectPrefix + "Hero\n");
    EXPECT_TRUE(ReadFile(App() + QStringLiteral("GoZ_Config.txt"))
                    .endsWith("\nPATH = \"C:\\Program Files\\Figmora\\Figmora.exe\"\n"));
    EXPECT_TRUE(QFileInfo::exists(Project() + QStringLiteral("Hero.goz")));
    EXPECT_EQ(ExportSplits(), QStringList{QStringLiteral("hero:0")});
    EXPECT_EQ(Calls("RecordUsageStep").size(), 1);
    EXPECT_EQ(Calls("RecordUsageStep").value(0).m_kArgs.value(0), QStringLiteral("AP-Step41"));

    const QJsonArray runs = WaitForProcesses(2);
    ASSERT_EQ(runs.size(), 2);
    QStringList programs;
    for (const QJsonValue& run : runs) {
        programs << run.toObject().value(QStringLiteral("program")).toString();
        EXPECT_TRUE(run.toObject().value(QStringLiteral("args")).toArray().isEmpty());
    }
    programs.sort();
    EXPECT_EQ(programs, (QStringList{QStringLiteral("GoZBrushFromApp.exe"), QStringLiteral("GoZMakeObjectPath.exe")}));
    // The bind pose went to the receive side too.
    EXPECT_TRUE(m_pReceive->Ui().qtBindPoseRadioButton->isChecked());
}

// Sent again, a mesh ZBrush has offers Relink, which keeps its name, spaces and all, and
// replaces its file; Create gives a new name without spaces. The LODs go once, after a message.
TEST_F(SendPipeline, SecondSendRelinksOrCreatesANewName)
{
    Pick({QStringLiteral("lamp")});
    Open();
    ASSERT_EQ(m_pDialog->OnGoZ(), QV::kOk);
    ASSERT_EQ(m_pHost->MessageBoxes().size(), 1);
    EXPECT_EQ(m_pHost->MessageBoxes()[0].m_strText, QStringLiteral("[MVGoZBursh] Lod mesh will remove."));
    EXPECT_EQ(m_pHost->MessageBoxes()[0].m_iButtons, 0x400);
    ASSERT_EQ(Calls("RemoveLods").size(), 1);
    EXPECT_EQ(Calls("RemoveLods")[0].m_kArgs.value(0), QStringLiteral("[lamp]"));
    WriteFile(Project() + QStringLiteral("Desk Lamp.goz"), "old mesh");

    Open();
    ASSERT_EQ(m_pDialog->Records().size(), 1u);
    EXPECT_EQ(m_pDialog->Records()[0].m_kActionMap,
              (std::vector<CFMToZBrushMeshInfo::ActionPair>{{Create, AutoRename}, {Relink, NoInfo}}));
    EXPECT_FALSE(qobject_cast<QListView*>(m_pDialog->Ui().qtTemplateComboBox->view())->isRowHidden(1))
        << "every row can relink";
    m_pDialog->Ui().qtTemplateComboBox->setCurrentIndex(1);
    ASSERT_EQ(m_pDialog->OnGoZ(), QV::kOk);
    EXPECT_TRUE(ReadFile(Project() + QStringLiteral("Desk Lamp.goz")).startsWith("GOZ-STANDIN"));
    EXPECT_EQ(ObjectList(), kProjectPrefix + "Desk Lamp\n");

    Open();
    ASSERT_EQ(m_pDialog->OnGoZ(), QV::kOk) << "Create is the default action";
    EXPECT_EQ(ObjectList(), kProjectPrefix + "Desk_Lamp_1\n");
    EXPECT_EQ(m_pDialog->RenamedMeshes(), std::vector<std::wstring>{L"Desk_Lamp_1"});
    EXPECT_EQ(Calls("ShowMessageBox").size(), 1);
    EXPECT_EQ(Calls("RemoveLods").size(), 1);
}

TEST_F(SendPipeline, SkippedDuplicateTeethAndNonAsciiMeshes)
{
    SetAvatar(QStringLiteral("hero"));
    Pick({QStringLiteral("star"), QStringLiteral("box1"), QStringLiteral("box2"), QStringLiteral("hero_teeth"),
          QStringLiteral("statue"), QStringLiteral("long"), QStringLiteral("idol")});
    Open();
    EXPECT_EQ(Cell(6, 1), QStringLiteral("[MVGoZBursh] Skip"));
    EXPECT_EQ(Cell(6, 2), QStringLiteral("[MVGoZBursh] Mesh name has characters that GoZ can not carry. Rename the "
                                         "mesh to send it."))
        << "a name the 8-bit object list can't carry is refused before the send";
    ASSERT_EQ(m_pDialog->OnGoZ(), QV::kOk);
    EXPECT_EQ(ExportSplits(), (QStringList{QStringLiteral("box1:0"), QStringLiteral("box2:0"),
                                           QStringLiteral("hero_teeth:16777216"), QStringLiteral("statue:0"),
                                           QStringLiteral("long:0")}));
    const QByteArray longName =
        "A_very_long_mesh_name_that_goes_on_and_on_past_ninety_five_bytes_of_text_for_the_object_list_x";
    EXPECT_EQ(ObjectList(), kProjectPrefix + "Box_1\n" + kProjectPrefix + "Box_2\n" + kProjectPrefix +
                                "FM_Base_Upper_Teeth\n" + kProjectPrefix + "FM_Base_Lower_Teeth\n" + kProjectPrefix +
                                "Zo\xEB_Statue\n" + kProjectPrefix + longName + "\n");
    EXPECT_FALSE(QFileInfo::exists(Project() + QStringLiteral("Star.goz")));
    EXPECT_EQ(m_pDialog->Records().size(), 7u) << "the table keeps its rows; only the send drops Skip";
}

TEST_F(SendPipeline, SplitBitsReachTheExportOnlyForTheCharacter)
{
    struct Case
    {
        const char* name;
        QStringList picks;
        std::vector<QCheckBox* CFMtoZBrushDlgUiComponent::*> checked;
        QString split;
        QByteArray list;
    };
    using Ui = CFMtoZBrushDlgUiComponent;
    const std::vector<Case> cases = {
        {"winker", {QStringLiteral("hero")}, {&Ui::qtEyewinkerCheckBox}, QStringLiteral("hero:1025"),
         kProjectPrefix + "Hero_Body\n" + kProjectPrefix + "Hero_EyeWinker\n" + kProjectPrefix + "Hero_SkinRest\n"},
        {"nothing checked", {QStringLiteral("hero")}, {}, QStringLiteral("hero:0"), kProjectPrefix + "Hero\n"},
        {"group disabled", {QStringLiteral("lamp")}, {&Ui::qtEyewinkerCheckBox}, QStringLiteral("lamp:0"),
         kProjectPrefix + "Desk_Lamp\n"},
    };
    SetAvatar(QStringLiteral("hero"));
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        QDir(Project()).removeRecursively();
        m_pHost->CallLog().Clear();
        Pick(c.picks);
        Open();
        for (QCheckBox* box : m_pDialog->findChildren<QCheckBox*>()) {
            box->setChecked(false);
        }
        for (auto member : c.checked) {
            (m_pDialog->Ui().*member)->setChecked(true);
        }
        ASSERT_EQ(m_pDialog->OnGoZ(), QV::kOk);
        EXPECT_EQ(ExportSplits(), QStringList{c.split});
        EXPECT_EQ(ObjectList(), c.list);
    }
}

TEST_F(SendPipeline, EverySkippedStillWritesExchangeFilesAndStartsBothPrograms)
{
    Pick({QStringLiteral("star")});
    Open();
    EXPECT_FALSE(m_pDialog->Ui().qtGoZButton->isEnabled());
    ASSERT_EQ(m_pDialog->OnGoZ(), QV::kOk);
    EXPECT_TRUE(Calls("ExportGoZ").isEmpty());
    EXPECT_EQ(ObjectList(), QByteArray());
    EXPECT_EQ(ReadFile(Root() + QStringLiteral("GoZBrush/GoZ_Application.txt")), "Figmora");
    EXPECT_EQ(WaitForProcesses(2).size(), 2);
}

TEST_F(SendPipeline, ExpressionSendSavesThePoseUnderTheFirstFaceMeshName)
{
    // As the Expression GoZ command sends: the character's face meshes, named unlike it.
    SetAvatar(QStringLiteral("hero"));
    Pick({QStringLiteral("hero_brow"), QStringLiteral("hero_teeth")});
    m_pDialog->SetExpressionGoZ(true);
    Open();
    ASSERT_EQ(m_pDialog->OnGoZ(), QV::kOk);
    const QList<Host::CCallRecord> saves = Calls("SaveMotionFile");
    ASSERT_EQ(saves.size(), 1);
    EXPECT_EQ(saves[0].m_kArgs.value(0), QStringLiteral("hero"));
    EXPECT_EQ(saves[0].m_kArgs.value(1), Project() + QStringLiteral("Hero_Brow.mvMotionPlus"));
    EXPECT_TRUE(QFileInfo::exists(Project() + QStringLiteral("Hero_Brow.mvMotionPlus")));
    EXPECT_TRUE(ObjectList().startsWith(kProjectPrefix + "Hero_Brow\n")) << "the pose is named as ZBrush names the mesh";
    EXPECT_TRUE(m_pDialog->PoseFilePath().isEmpty()) << "cleared after a successful send";
}

TEST_F(SendPipeline, ExportGetsThePoseTheDialogShows)
{
    const struct
    {
        const char* avatar;
        const char* radio;
        EGozPoseOption pose;
    } cases[] = {
        {"hero", "qtBindPoseRadioButton", EGozPoseOption::BindPose},
        {"hero", "qtTPoseRadioButton", EGozPoseOption::TPose},
        {"hero", "qtCurrentPoseRadioButton", EGozPoseOption::CurrentPose},
        {"doll", "qtTPoseRadioButton", EGozPoseOption::CurrentPose}, // forced for this character type
        {"", "qtTPoseRadioButton", EGozPoseOption::None},           // props alone carry no pose
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.avatar) + " " + c.radio);
        const QString id = *c.avatar ? QLatin1String(c.avatar) : QStringLiteral("crate");
        SetAvatar(QLatin1String(c.avatar));
        Pick({id});
        auto* radio = m_pDialog->findChild<QRadioButton*>(QLatin1String(c.radio));
        ASSERT_NE(radio, nullptr);
        radio->setChecked(true);
        Open();
        m_pHost->CallLog().Clear();
        ASSERT_EQ(m_pDialog->OnGoZ(), QV::kOk);
        const QList<Host::CCallRecord> exports = Calls("ExportGoZ");
        ASSERT_EQ(exports.size(), 1);
        EXPECT_EQ(exports[0].m_kArgs.value(4), QString::number(static_cast<int>(c.pose)));
    }
}

TEST_F(SendPipeline, PreviousObjectListIsReadWordByWord)
{
    WriteFile(QStringLiteral("C:/Users/Public/Pixologic/GoZApps/Figmora/GoZ_ObjectList.txt"),
              "C:/x/Body\n  C:/x/My Mesh\tC:/y/Eye.part\n");
    // A public folder moved elsewhere holds another list: the previous list is still read
    // through the fixed public path.
    const QString moved = QStringLiteral("D:/Shared/Pixologic/GoZApps/Figmora/");
    WriteFile(moved + QStringLiteral("GoZ_Info.txt"), "GOZ_OBJECT_LIST = GoZ_ObjectList.txt\n");
    WriteFile(moved + QStringLiteral("GoZ_ObjectList.txt"), "C:/x/Decoy\n");
    CGoZSendPipeline pipeline(m_pHost.get(), QStringLiteral("D:/Shared/Pixologic/"));
    QV::Result result = QV::kOk;
    QStringList files;
    pipeline.ReadPreviousObjectList(result, files);
    ASSERT_EQ(result, QV::kOk);
    EXPECT_EQ(files, (QStringList{QStringLiteral("C:/x/Body.GoZ"), QStringLiteral("C:/x/My.GoZ"),
                                  QStringLiteral("Mesh.GoZ"), QStringLiteral("C:/y/Eye.part.GoZ")}));
    std::vector<std::wstring> names = {L"Body", L"body", L"Mesh", L"Eye", L"Eye.part"};
    pipeline.FindPreviouslySentNames(result, names);
    EXPECT_EQ(names, (std::vector<std::wstring>{L"Body", L"Mesh", L"Eye.part"}));
}


// How the failure tables below make a send fail.
struct FailureCase
{
    const char* name;
    std::function<void(SendFixture&)> arrange;
    QV::Result result;
    bool kept; // SendFailure: the mesh was exported; RelinkFailure: ZBrush keeps the old files
    bool listWritten = false;
    int programs = 0;
};

void PrintTo(const FailureCase& c, std::ostream* out)
{
    *out << c.name;
}

std::string CaseName(const ::testing::TestParamInfo<FailureCase>& info)
{
    return info.param.name;
}

std::function<void(SendFixture&)> Fail(const char* operation, QV::Result code, int nth = 0)
{
    return [=](SendFixture& t) { t.m_pHost->SetFailure(QLatin1String(operation), code, nth); };
}

void DropRegistryValue(SendFixture& t)
{
    WriteFile(t.m_kSandbox.RegistryFilePath(), "");
}

void DropGoZBrushCommand(SendFixture& t)
{
    WriteFile(t.App() + QStringLiteral("GoZ_Info.txt"), "GOZ_OBJECT_LIST = \"GoZ_ObjectList.txt\"\n"
                                                        "MAKEOBJECTPATH_COMMAND = \"../../GoZBrush/GoZMakeObjectPath.exe\"\n");
}

const QV::Result kFileNotFound = static_cast<QV::Result>(0x80070002u);

// Failures stop at their step: the dialog stays open with its rows, and later files are not written.
class SendFailure : public SendPipeline, public ::testing::WithParamInterface<FailureCase>
{
};

TEST_P(SendFailure, StopsAtItsStep)
{
    const FailureCase& c = GetParam();
    SetAvatar(QStringLiteral("hero"));
    Pick({QStringLiteral("lamp"), QStringLiteral("star")});
    Open();
    c.arrange(*this);
    EXPECT_EQ(m_pDialog->OnGoZ(), c.result);
    EXPECT_TRUE(m_pDialog->isVisible());
    EXPECT_EQ(m_pDialog->Records().size(), 2u);
    EXPECT_EQ(QFileInfo::exists(Project() + QStringLiteral("Desk_Lamp.goz")), c.kept);
    EXPECT_EQ(QFileInfo(App() + QStringLiteral("GoZ_ObjectList.txt")).isFile(), c.listWritten);
    const QJsonArray runs = WaitForProcesses(c.programs);
    ASSERT_EQ(runs.size(), c.programs);
    if (c.programs > 0) {
        EXPECT_EQ(runs[0].toObject().value(QStringLiteral("program")).toString(),
                  QStringLiteral("GoZMakeObjectPath.exe"));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Send, SendFailure,
    ::testing::Values(
        FailureCase{"ExportFails", Fail("ExportGoZ", QV::kOutOfMemory), QV::kOutOfMemory, false, false, 0},
        FailureCase{"PoseSaveFails",
                    [](SendFixture& t) {
                        t.m_pDialog->SetExpressionGoZ(true);
                        t.m_pHost->SetFailure(QStringLiteral("SaveMotionFile"), QV::kFail);
                    },
                    QV::kFail, true, false, 0},
        FailureCase{"LodRemovalFails", Fail("RemoveLods", QV::kFail), QV::kFail, false, false, 0},
        FailureCase{"LodListingFails", Fail("GetLodMeshes", QV::kOutOfMemory), QV::kOutOfMemory, false, false, 0},
        FailureCase{"InfoFileMissing",
                    [](SendFixture& t) { QFile::remove(t.App() + QStringLiteral("GoZ_Info.txt")); }, QV::kFail,
                    true, false, 0},
        FailureCase{"InfoFileEmpty",
                    [](SendFixture& t) { WriteFile(t.App() + QStringLiteral("GoZ_Info.txt"), ""); }, QV::kFail,
                    true, false, 0},
        FailureCase{"RegistryValueMissing", DropRegistryValue, kFileNotFound, true, false, 0},
        FailureCase{"ObjectListUnwritable",
                    [](SendFixture& t) { QDir().mkpath(t.App() + QStringLiteral("GoZ_ObjectList.txt/x")); },
                    QV::kFail, true, false, 0},
        FailureCase{"GoZBrushCommandMissing", DropGoZBrushCommand, QV::kFail, true, true, 1}),
    CaseName);

// A Relink send replaces files that ZBrush's object list names. Until the new list is
// written, a failure must leave ZBrush exactly the files and the list it had.
const QByteArray kRelinkScene = R"({
  "objects": [
    {"id": "crate", "name": "Crate", "kind": 3},
    {"id": "vase", "name": "Vase", "kind": 3},
    {"id": "bowl", "name": "Bowl", "kind": 3}
  ],
  "registry": {"SOFTWARE\\Quorvane\\Figmora\\4.0": {"Main Program": "C:\\Figmora.exe"}}
})";

class RelinkFailure : public SendFixture, public ::testing::WithParamInterface<FailureCase>
{
public:
    const QStringList kFiles{QStringLiteral("Crate.goz"), QStringLiteral("Vase.goz"), QStringLiteral("Bowl.goz"),
                             QStringLiteral("Crate.mvMotionPlus")};
};

TEST_P(RelinkFailure, LeavesZBrushTheFilesItsListNames)
{
    const FailureCase& c = GetParam();
    Start(kRelinkScene);
    Pick({QStringLiteral("crate"), QStringLiteral("vase"), QStringLiteral("bowl")});
    Open();
    ASSERT_EQ(m_pDialog->OnGoZ(), QV::kOk);
    for (const QString& file : kFiles) {
        WriteFile(Project() + file, "old " + file.toUtf8());
    }
    // A name only the old list has tells the old list from the rewritten one.
    const QString listPath = App() + QStringLiteral("GoZ_ObjectList.txt");
    const QByteArray oldList = ReadFile(listPath) + kProjectPrefix + "Extra\n";
    WriteFile(listPath, oldList);

    Open();
    m_pDialog->Ui().qtTemplateComboBox->setCurrentIndex(1);
    ASSERT_EQ(m_pDialog->Records()[2].ActiveAction(), Relink);
    c.arrange(*this);
    EXPECT_EQ(m_pDialog->OnGoZ(), c.result);

    for (const QString& file : kFiles) {
        SCOPED_TRACE(file.toStdString());
        const QByteArray content = ReadFile(Project() + file);
        if (c.kept) {
            EXPECT_EQ(content, "old " + file.toUtf8());
        } else if (file.endsWith(QLatin1String(".goz"))) {
            EXPECT_TRUE(content.startsWith("GOZ-STANDIN")) << content.toStdString();
        } else {
            EXPECT_EQ(content, "<missing>") << "a relinked mesh loses its old pose file";
        }
    }
    EXPECT_EQ(ReadFile(listPath) == oldList, c.kept);
    EXPECT_FALSE(QFileInfo::exists(Project() + CRelinkSetAside::FolderName())) << "nothing set aside is left over";
}

INSTANTIATE_TEST_SUITE_P(
    Send, RelinkFailure,
    ::testing::Values(
        FailureCase{"Succeeds", [](SendFixture&) {}, QV::kOk, false},
        FailureCase{"FirstExportFails", Fail("ExportGoZ", QV::kFail, 1), QV::kFail, true},
        FailureCase{"LaterExportFails", Fail("ExportGoZ", QV::kFail, 3), QV::kFail, true},
        FailureCase{"RegistryValueMissing", DropRegistryValue, kFileNotFound, true},
        FailureCase{"ObjectListUnwritable",
                    [](SendFixture& t) {
                        // The list now lies in a folder that does not exist.
                        const QString info = t.App() + QStringLiteral("GoZ_Info.txt");
                        WriteFile(info, ReadFile(info).replace("GoZ_ObjectList.txt", "gone/GoZ_ObjectList.txt"));
                    },
                    QV::kFail, true},
        // After the list is rewritten nothing is rolled back.
        FailureCase{"GoZBrushCommandMissing", DropGoZBrushCommand, QV::kFail, false}),
    CaseName);

} // namespace

#include "CGoZStandInFile.h"
#include "CZBrushStandIn.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <ostream>

using namespace MV::Host;

namespace {

QByteArray Read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

void Write(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    ASSERT_EQ(file.write(bytes), bytes.size());
}

CGoZMesh Triangle(double size)
{
    CGoZMesh mesh;
    mesh.m_kVertices = {{{0.0, 0.0, 0.0}}, {{size, 0.0, 0.0}}, {{0.0, size, 0.0}}};
    mesh.m_kFaces = {{0, 1, 2}};
    return mesh;
}

// A public folder after the plug-in sent meshes: the bridge's info file, the sent .goz files
// and the object list of their paths, as the plug-in writes them.
class WindowStandIn : public ::testing::Test
{
public:
    void SetUp() override { ASSERT_TRUE(m_kFolder.isValid()); }

    QString Public() const { return m_kFolder.path() + QStringLiteral("/Public"); }
    QString Project() const { return Public() + QStringLiteral("/Pixologic/GoZProjects/Default/"); }
    QString App() const { return Public() + QStringLiteral("/Pixologic/GoZApps/Figmora/"); }
    QString List() const { return App() + QStringLiteral("GoZ_ObjectList.txt"); }

    void Send(const QStringList& names)
    {
        Write(App() + QStringLiteral("GoZ_Info.txt"), "GOZ_OBJECT_LIST = \"GoZ_ObjectList.txt\"\n");
        QByteArray list;
        for (int i = 0; i < names.size(); ++i) {
            CGoZStandInFile file;
            file.SetValue(QStringLiteral("name"), names.at(i));
            file.m_kMesh = Triangle(i + 1);
            Write(Project() + names.at(i) + QStringLiteral(".goz"), file.Write());
            list += (Project() + names.at(i)).toUtf8() + '\n';
        }
        Write(List(), list);
    }

    // The launcher: a script that notes it ran, then ends.
    void InstallLauncher()
    {
        const QString path = App() + QStringLiteral("GoZBrushToFM.exe");
        Write(path, "#!/bin/sh\necho ran > \"$(dirname \"$0\")/launcher-ran\"\n");
        QFile::setPermissions(path, QFile::permissions(path) | QFileDevice::ExeOwner);
    }

    QTemporaryDir m_kFolder;
};

// ---------------------------------------------------------------------------------------
// What comes back for a choice of meshes and return settings.

struct SculptCase
{
    const char* m_pName;
    QStringList m_kChosen;
    QJsonObject m_kSettings;
    QStringList m_kList; // the returned object list
    QStringList m_kWhole; // .GoZ files that read back as meshes
    QStringList m_kBroken; // .GoZ files written but unreadable
    QStringList m_kAbsent; // listed names without a file
};

void PrintTo(const SculptCase& c, std::ostream* out)
{
    *out << c.m_pName;
}

const SculptCase kSculptCases[] = {
    {"AllComeBack", {"Vase", "Lamp"}, {}, {"Vase", "Lamp"}, {"Vase", "Lamp"}, {}, {}},
    {"OnlyTheChosen", {"Lamp"}, {}, {"Lamp"}, {"Lamp"}, {}, {"Vase"}},
    {"RenamedWithAnExtra",
     {"Vase", "Lamp"},
     {{"rename", QJsonObject{{"Vase", "Vase_2"}}}, {"extra", QJsonArray{QJsonObject{{"name", "Rock"}}}}},
     {"Vase_2", "Lamp", "Rock"},
     {"Vase_2", "Lamp", "Rock"},
     {},
     {"Vase"}},
    {"Misbehaving",
     {"Vase", "Lamp"},
     {{"truncate", QJsonArray{"Vase"}}, {"missing", QJsonArray{"Lamp"}}},
     {"Vase", "Lamp"},
     {},
     {"Vase"},
     {"Lamp"}},
    {"MalformedFile", {"Lamp"}, {{"malformed", QJsonArray{"Lamp"}}}, {"Lamp"}, {}, {"Lamp"}, {}},
};

class SculptCases : public WindowStandIn, public ::testing::WithParamInterface<SculptCase>
{
};

TEST_P(SculptCases, WritesTheReturnAndTheListAsZBrushWould)
{
    const SculptCase& c = GetParam();
    Send({"Vase", "Lamp"});
    CZBrushReturn settings;
    QString error;
    ASSERT_TRUE(CZBrushReturn::FromJson(c.m_kSettings, settings, error)) << error.toStdString();
    settings.m_bLaunch = false;

    CZBrushStandIn standIn(Public());
    ASSERT_EQ(standIn.SentMeshes(), (QStringList{"Vase", "Lamp"}));
    const CSculptOutcome outcome = standIn.SculptAndSendBack(c.m_kChosen, settings);

    EXPECT_EQ(outcome.m_kReturned, c.m_kList);
    EXPECT_EQ(QString::fromUtf8(Read(List())).split('\n', Qt::SkipEmptyParts), c.m_kList);
    EXPECT_FALSE(outcome.m_bLauncherStarted);
    for (const QString& name : c.m_kWhole) {
        CGoZStandInFile file;
        ASSERT_TRUE(CGoZStandInFile::Read(Project() + name + ".GoZ", file, error)) << name.toStdString();
        EXPECT_EQ(file.Value("name"), name);
    }
    for (const QString& name : c.m_kBroken) {
        CGoZStandInFile file;
        EXPECT_TRUE(QFileInfo::exists(Project() + name + ".GoZ")) << name.toStdString();
        EXPECT_FALSE(CGoZStandInFile::Read(Project() + name + ".GoZ", file, error)) << name.toStdString();
    }
    for (const QString& name : c.m_kAbsent) {
        EXPECT_FALSE(QFileInfo::exists(Project() + name + ".GoZ")) << name.toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Window, SculptCases, ::testing::ValuesIn(kSculptCases),
                         [](const ::testing::TestParamInfo<SculptCase>& info) { return info.param.m_pName; });

TEST_F(WindowStandIn, SculptedMeshIsTheSentOneScaledAndMoved)
{
    Send({"Vase"});
    CZBrushReturn settings;
    settings.m_dScale = 2.0;
    settings.m_kOffset = {{0.0, 1.0, 0.0}};
    settings.m_bLaunch = false;
    CZBrushStandIn standIn(Public());
    ASSERT_TRUE(standIn.SculptAndSendBack({"Vase"}, settings).m_kProblems.isEmpty());

    CGoZStandInFile file;
    QString error;
    ASSERT_TRUE(CGoZStandInFile::Read(Project() + "Vase.GoZ", file, error)) << error.toStdString();
    CGoZMesh expected;
    expected.m_kVertices = {{{0.0, 1.0, 0.0}}, {{2.0, 1.0, 0.0}}, {{0.0, 3.0, 0.0}}};
    expected.m_kFaces = {{0, 1, 2}};
    EXPECT_EQ(file.m_kMesh, expected);
}

// ---------------------------------------------------------------------------------------
// Refusals: nothing is written, and the reason is given.

struct RefusalCase
{
    const char* m_pName;
    bool m_bSent;
    QStringList m_kChosen;
    const char* m_pProblem;
};

void PrintTo(const RefusalCase& c, std::ostream* out)
{
    *out << c.m_pName;
}

const RefusalCase kRefusals[] = {
    {"NothingSentYet", false, {"Vase"}, "nothing was sent to ZBrush yet"},
    {"ChosenNameWasNotSent", true, {"Vase", "Chair"}, "\"Chair\" was not sent"},
};

class Refusals : public WindowStandIn, public ::testing::WithParamInterface<RefusalCase>
{
};

TEST_P(Refusals, WriteNothing)
{
    const RefusalCase& c = GetParam();
    if (c.m_bSent) {
        Send({"Vase"});
    }
    const QByteArray listBefore = Read(List());
    CZBrushStandIn standIn(Public());
    const CSculptOutcome outcome = standIn.SculptAndSendBack(c.m_kChosen, CZBrushReturn());
    EXPECT_TRUE(outcome.m_kReturned.isEmpty());
    EXPECT_TRUE(outcome.m_kProblems.contains(QString::fromUtf8(c.m_pProblem))) << outcome.m_kProblems.join("; ").toStdString();
    EXPECT_EQ(Read(List()), listBefore);
    for (const QString& name : QDir(Project()).entryList(QDir::Files)) {
        EXPECT_FALSE(name.endsWith(QLatin1String(".GoZ"))) << name.toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Window, Refusals, ::testing::ValuesIn(kRefusals),
                         [](const ::testing::TestParamInfo<RefusalCase>& info) { return info.param.m_pName; });

// ---------------------------------------------------------------------------------------

TEST_F(WindowStandIn, SentMeshesSurviveTheReturnedListSoTheyCanComeBackAgain)
{
    Send({"Vase", "Lamp"});
    CZBrushReturn settings;
    settings.m_bLaunch = false;
    CZBrushStandIn standIn(Public());
    ASSERT_TRUE(standIn.SculptAndSendBack({"Vase"}, settings).m_kProblems.isEmpty());
    ASSERT_EQ(Read(List()), QByteArray("Vase\n")) << "the list now names the return";

    EXPECT_EQ(standIn.SentMeshes(), (QStringList{"Vase", "Lamp"}));
    const CSculptOutcome again = standIn.SculptAndSendBack({"Lamp"}, settings);
    EXPECT_TRUE(again.m_kProblems.isEmpty()) << again.m_kProblems.join("; ").toStdString();
    EXPECT_EQ(again.m_kReturned, QStringList{"Lamp"});
}

TEST_F(WindowStandIn, LauncherRunsInTheBackgroundAndIsReportedWhenItEnds)
{
    Send({"Vase"});
    InstallLauncher();
    CZBrushStandIn standIn(Public());
    QSignalSpy finished(&standIn, &CZBrushStandIn::LauncherFinished);
    const CSculptOutcome outcome = standIn.SculptAndSendBack({"Vase"}, CZBrushReturn());
    ASSERT_TRUE(outcome.m_kProblems.isEmpty()) << outcome.m_kProblems.join("; ").toStdString();
    EXPECT_TRUE(outcome.m_bLauncherStarted);
    ASSERT_TRUE(finished.wait(10000));
    EXPECT_EQ(finished.first().first().toString(), QStringLiteral("exit 0"));
    EXPECT_EQ(Read(App() + "launcher-ran"), QByteArray("ran\n"));
    EXPECT_FALSE(standIn.IsLauncherRunning());
}

TEST_F(WindowStandIn, MissingLauncherIsAProblemButTheReturnIsWritten)
{
    Send({"Vase"});
    CZBrushStandIn standIn(Public());
    const CSculptOutcome outcome = standIn.SculptAndSendBack({"Vase"}, CZBrushReturn());
    EXPECT_FALSE(outcome.m_bLauncherStarted);
    ASSERT_EQ(outcome.m_kProblems.size(), 1);
    EXPECT_TRUE(outcome.m_kProblems.first().startsWith("no return launcher")) << outcome.m_kProblems.first().toStdString();
    EXPECT_EQ(outcome.m_kWritten, QStringList{"Vase.GoZ"});
}

TEST_F(WindowStandIn, ProjectFilesTellSentReturnedAndPoseFilesWithTheirMeshes)
{
    Send({"Vase"});
    Write(Project() + "Vase.mvMotionPlus", "MOTION-STANDIN 1\n");
    Write(Project() + "Broken.GoZ", "GOZ-STANDIN 1\nvertices=3\n");
    CZBrushReturn settings;
    settings.m_bLaunch = false;
    CZBrushStandIn standIn(Public());
    ASSERT_TRUE(standIn.SculptAndSendBack({"Vase"}, settings).m_kProblems.isEmpty());

    QStringList seen;
    for (const CProjectFile& file : standIn.ProjectFiles()) {
        seen << QStringLiteral("%1 %2 %3/%4%5")
                    .arg(file.m_strName, CProjectFile::KindText(file.m_eKind))
                    .arg(file.m_iVertices)
                    .arg(file.m_iFaces)
                    .arg(file.m_strProblem.isEmpty() ? QString() : QStringLiteral(" unreadable"));
    }
    EXPECT_EQ(seen, (QStringList{"Broken.GoZ returned -1/-1 unreadable", "Vase.GoZ returned 3/1", "Vase.goz sent 3/1",
                                 "Vase.mvMotionPlus pose -1/-1"}));
}

} // namespace

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
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size())
        << path.toStdString();
}

// A public folder after the plug-in sent meshes: the bridge's info file, the sent .goz files
// and the object list of their paths, as the plug-in writes them.
struct CPublicFolder
{
    QTemporaryDir m_kFolder;
    QString Public() const { return m_kFolder.path() + QStringLiteral("/Public"); }
    QString Project() const { return Public() + QStringLiteral("/Pixologic/GoZProjects/Default/"); }
    QString App() const { return Public() + QStringLiteral("/Pixologic/GoZApps/Figmora/"); }
    QString List() const { return App() + QStringLiteral("GoZ_ObjectList.txt"); }

    void Send(const QStringList& names) const
    {
        Write(App() + QStringLiteral("GoZ_Info.txt"), "GOZ_OBJECT_LIST = \"GoZ_ObjectList.txt\"\n");
        QByteArray list;
        for (int i = 0; i < names.size(); ++i) {
            CGoZStandInFile file;
            file.SetValue(QStringLiteral("name"), names.at(i));
            file.m_kMesh.m_kVertices = {{{0.0, 0.0, 0.0}}, {{i + 1.0, 0.0, 0.0}}, {{0.0, i + 1.0, 0.0}}};
            file.m_kMesh.m_kFaces = {{0, 1, 2}};
            Write(Project() + names.at(i) + QStringLiteral(".goz"), file.Write());
            list += (Project() + names.at(i)).toUtf8() + '\n';
        }
        Write(List(), list);
    }
};

TEST(WindowStandIn, SculptWritesTheReturnAndTheListAsZBrushWould)
{
    const struct
    {
        const char* m_pName;
        QStringList m_kChosen;
        QJsonObject m_kSettings;
        QStringList m_kList; // the returned object list
        QStringList m_kWhole; // .GoZ files that read back as meshes
        QStringList m_kBroken; // .GoZ files written but unreadable
        QStringList m_kAbsent; // listed names without a file
    } cases[] = {
        {"AllComeBack", {"Vase", "Lamp"}, {}, {"Vase", "Lamp"}, {"Vase", "Lamp"}, {}, {}},
        {"OnlyTheChosen", {"Lamp"}, {}, {"Lamp"}, {"Lamp"}, {}, {"Vase"}},
        {"RenamedWithAnExtra", {"Vase", "Lamp"},
         {{"rename", QJsonObject{{"Vase", "Vase_2"}}}, {"extra", QJsonArray{QJsonObject{{"name", "Rock"}}}}},
         {"Vase_2", "Lamp", "Rock"}, {"Vase_2", "Lamp", "Rock"}, {}, {"Vase"}},
        {"Misbehaving", {"Vase", "Lamp"}, {{"truncate", QJsonArray{"Vase"}}, {"missing", QJsonArray{"Lamp"}}},
         {"Vase", "Lamp"}, {}, {"Vase"}, {"Lamp"}},
        {"MalformedFile", {"Lamp"}, {{"malformed", QJsonArray{"Lamp"}}}, {"Lamp"}, {}, {"Lamp"}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_pName);
        CPublicFolder folder;
        folder.Send({"Vase", "Lamp"});
        CZBrushReturn settings;
        QString error;
        ASSERT_TRUE(CZBrushReturn::FromJson(c.m_kSettings, settings, error)) << error.toStdString();
        settings.m_bLaunch = false;
        CZBrushStandIn standIn(folder.Public());
        ASSERT_EQ(standIn.SentMeshes(), (QStringList{"Vase", "Lamp"}));
        const CSculptOutcome outcome = standIn.SculptAndSendBack(c.m_kChosen, settings);
        EXPECT_EQ(outcome.m_kReturned, c.m_kList);
        EXPECT_EQ(QString::fromUtf8(Read(folder.List())).split('\n', Qt::SkipEmptyParts), c.m_kList);
        EXPECT_FALSE(outcome.m_bLauncherStarted);
        for (const QString& name : c.m_kWhole + c.m_kBroken) {
            CGoZStandInFile file;
            const bool whole = CGoZStandInFile::Read(folder.Project() + name + ".GoZ", file, error);
            EXPECT_EQ(whole, c.m_kWhole.contains(name)) << name.toStdString();
            EXPECT_TRUE(QFileInfo::exists(folder.Project() + name + ".GoZ")) << name.toStdString();
            EXPECT_TRUE(!whole || file.Value("name") == name) << name.toStdString();
        }
        for (const QString& name : c.m_kAbsent) {
            EXPECT_FALSE(QFileInfo::exists(folder.Project() + name + ".GoZ")) << name.toStdString();
        }
        // The sent meshes outlive the returned list, so they can come back again.
        EXPECT_EQ(standIn.SentMeshes(), (QStringList{"Vase", "Lamp"}));
    }
}

TEST(WindowStandIn, RefusalsWriteNothingAndSayWhy)
{
    const struct { bool m_bSent; QStringList m_kChosen; const char* m_pProblem; } cases[] = {
        {false, {"Vase"}, "nothing was sent to ZBrush yet"},
        {true, {"Vase", "Chair"}, "\"Chair\" was not sent"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_pProblem);
        CPublicFolder folder;
        if (c.m_bSent) {
            folder.Send({"Vase"});
        }
        const QByteArray listBefore = Read(folder.List());
        CZBrushStandIn standIn(folder.Public());
        const CSculptOutcome outcome = standIn.SculptAndSendBack(c.m_kChosen, CZBrushReturn());
        EXPECT_TRUE(outcome.m_kReturned.isEmpty());
        EXPECT_TRUE(outcome.m_kProblems.contains(c.m_pProblem)) << outcome.m_kProblems.join("; ").toStdString();
        EXPECT_EQ(Read(folder.List()), listBefore);
        EXPECT_TRUE(QDir(folder.Project()).entryList({"*.GoZ"}, QDir::Files | QDir::CaseSensitive).isEmpty());
    }
}

TEST(WindowStandIn, LauncherRunsInTheBackgroundAndAMissingOneIsAProblemButTheReturnIsWritten)
{
    CPublicFolder folder;
    folder.Send({"Vase", "Lamp"});
    CZBrushStandIn standIn(folder.Public());
    CSculptOutcome outcome = standIn.SculptAndSendBack({"Vase"}, CZBrushReturn());
    EXPECT_FALSE(outcome.m_bLauncherStarted);
    ASSERT_EQ(outcome.m_kProblems.size(), 1);
    EXPECT_TRUE(outcome.m_kProblems.first().startsWith("no return launcher")) << outcome.m_kProblems[0].toStdString();
    EXPECT_EQ(outcome.m_kWritten, QStringList{"Vase.GoZ"});

    // The launcher: a script that notes it ran, then ends.
    const QString launcher = folder.App() + QStringLiteral("GoZBrushToFM.exe");
    Write(launcher, "#!/bin/sh\necho ran > \"$(dirname \"$0\")/launcher-ran\"\n");
    QFile::setPermissions(launcher, QFile::permissions(launcher) | QFileDevice::ExeOwner);
    QSignalSpy finished(&standIn, &CZBrushStandIn::LauncherFinished);
    outcome = standIn.SculptAndSendBack({"Lamp"}, CZBrushReturn());
    ASSERT_TRUE(outcome.m_kProblems.isEmpty()) << outcome.m_kProblems.join("; ").toStdString();
    EXPECT_EQ(outcome.m_kReturned, QStringList{"Lamp"}) << "a mesh not chosen the first time still comes back";
    EXPECT_TRUE(outcome.m_bLauncherStarted);
    ASSERT_TRUE(finished.wait(10000));
    EXPECT_EQ(finished.first().first().toString(), QStringLiteral("exit 0"));
    EXPECT_EQ(Read(folder.App() + "launcher-ran"), QByteArray("ran\n"));
    EXPECT_FALSE(standIn.IsLauncherRunning());
}

TEST(WindowStandIn, ProjectFilesTellSentReturnedAndPoseFilesWithTheirMeshes)
{
    CPublicFolder folder;
    folder.Send({"Vase"});
    Write(folder.Project() + "Vase.mvMotionPlus", "MOTION-STANDIN 1\n");
    Write(folder.Project() + "Broken.GoZ", "GOZ-STANDIN 1\nvertices=3\n");
    CZBrushStandIn standIn(folder.Public());
    CZBrushReturn settings;
    settings.m_bLaunch = false;
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

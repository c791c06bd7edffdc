#include "CSandbox.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace MV::Host;

namespace {

TEST(hostSandbox, LaysOutTheWindowsFoldersAndRestoresTheProcessAfterwards)
{
    // That the stand-ins are installed and run is checked by every run that starts one.
    const QString before = QDir::currentPath();
    qputenv("PUBLIC", "outer");
    qunsetenv("public");
    QString work;
    {
        CSandbox sandbox;
        QString error;
        ASSERT_EQ(QV::kOk, sandbox.Create(error)) << error.toStdString();
        work = sandbox.WorkFolder();
        EXPECT_EQ(QDir(work).canonicalPath(), QDir::current().canonicalPath());
        EXPECT_EQ(QByteArray("C:/Users/Public"), qgetenv("PUBLIC"));
        EXPECT_EQ(QByteArray("C:/Users/Public"), qgetenv("public"));
        EXPECT_EQ(sandbox.ProcessLogPath().toLocal8Bit(), qgetenv("MVGOZ_PROCESS_LOG"));
        EXPECT_EQ(sandbox.RegistryFilePath().toLocal8Bit(), qgetenv("MVGOZ_REGISTRY_FILE"));
    }
    EXPECT_EQ(before, QDir::currentPath());
    EXPECT_EQ(QByteArray("outer"), qgetenv("PUBLIC"));
    EXPECT_FALSE(qEnvironmentVariableIsSet("public"));
    EXPECT_FALSE(QFileInfo::exists(work)) << "a temporary sandbox is removed";
    qunsetenv("PUBLIC");
}

TEST(hostSandbox, CanLeaveZBrushOutAndKeepsAGivenFolder)
{
    QTemporaryDir parent;
    ASSERT_TRUE(parent.isValid());
    const QString folder = parent.path() + QStringLiteral("/work");
    {
        CSandbox sandbox;
        sandbox.SetWorkFolder(folder);
        sandbox.SetInstallZBrush(false);
        QString error;
        ASSERT_EQ(QV::kOk, sandbox.Create(error)) << error.toStdString();
        EXPECT_TRUE(QFileInfo(QStringLiteral("C:/Users/Public/Pixologic")).isDir());
        EXPECT_FALSE(QFileInfo::exists(QStringLiteral("C:/Users/Public/Pixologic/GoZBrush")));
        EXPECT_EQ(QV::kFail, sandbox.Create(error));
    }
    EXPECT_TRUE(QFileInfo(folder + QStringLiteral("/C:/Users/Public/Pixologic")).isDir());
}

TEST(hostSandbox, MissingStandInsFailWithoutChangingTheProcess)
{
    QTemporaryDir empty;
    ASSERT_TRUE(empty.isValid());
    const QString before = QDir::currentPath();
    CSandbox sandbox;
    sandbox.SetToolsFolder(empty.path());
    QString error;
    EXPECT_EQ(QV::kFail, sandbox.Create(error));
    EXPECT_TRUE(error.contains(QStringLiteral("stand-in program not found"))) << error.toStdString();
    EXPECT_FALSE(sandbox.IsActive());
    EXPECT_EQ(before, QDir::currentPath());
    EXPECT_FALSE(qEnvironmentVariableIsSet("MVGOZ_PROCESS_LOG"));
}

} // namespace

#include "CBridgeInstaller.h"
#include "TestFiles.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <utime.h>

using MV::CBridgeInstaller;
using EStatus = MV::CBridgeInstaller::EStatus;
using MV::Test::ReadFile;
using MV::Test::WriteFile;

namespace {

void SetModified(const QString& path, const QDateTime& when)
{
    struct utimbuf times;
    times.actime = static_cast<time_t>(when.toSecsSinceEpoch());
    times.modtime = times.actime;
    ASSERT_EQ(utime(QFile::encodeName(path).constData(), &times), 0);
}

// A Pixologic folder with ZBrush installed and a plug-in folder with a payload.
class BridgeInstallerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_kTemp.isValid());
        m_strRoot = m_kTemp.path() + QStringLiteral("/Pixologic/");
        m_strPlugin = m_kTemp.path() + QStringLiteral("/plugin/");
        m_strTarget = m_strRoot + QStringLiteral("GoZApps/Figmora/");
        WriteFile(m_strRoot + QStringLiteral("GoZBrush/GoZBrushFromApp.exe"), "zbrush");
        WriteFile(Source("GoZBrushToFM.exe"), "launcher v2");
        WriteFile(Source("GoZ_Info.txt"), "GOZ_OBJECT_LIST = \"GoZ_ObjectList.txt\"\n");
        WriteFile(Source("GoZ_Config.txt"), "# comment\nPATH = \"old\"\nAPPLICATION = Figmora\n");
    }

    QString Source(const char* name) const { return m_strPlugin + QStringLiteral("Figmora/") + QLatin1String(name); }
    QString Target(const char* name) const { return m_strTarget + QLatin1String(name); }
    EStatus Install(const QString& cwd = QStringLiteral("C:/Apps/Host")) const
    {
        return CBridgeInstaller(m_strRoot, m_strPlugin).Install(cwd);
    }

    QTemporaryDir m_kTemp;
    QString m_strRoot;
    QString m_strPlugin;
    QString m_strTarget;
};

TEST_F(BridgeInstallerTest, FreshInstallCopiesEveryFileAndPointsConfigAtTheCurrentDirectory)
{
    ASSERT_EQ(Install(), EStatus::Installed);
    EXPECT_EQ(ReadFile(Target("GoZBrushToFM.exe")), "launcher v2");
    EXPECT_EQ(ReadFile(Target("GoZ_Info.txt")), ReadFile(Source("GoZ_Info.txt")));
    EXPECT_EQ(ReadFile(Target("GoZ_Config.txt")),
              "# comment\nPATH = \"C:\\Apps\\Host\\Figmora.exe\"\nAPPLICATION = Figmora\n");
    EXPECT_EQ(QDir(m_strTarget).entryList(QDir::Files).size(), 3);
}

TEST_F(BridgeInstallerTest, ConfigTemplateBytesAreKeptExceptThePathLine)
{
    const QByteArray path = "PATH = \"C:\\Apps\\Host\\Figmora.exe\"";
    // A lone CR far into the file lands wherever a buffered text-mode reader splits.
    QByteArray longText(20000, 'x');
    longText[16383] = '\r';
    struct Case
    {
        const char* name;
        QByteArray templ;
        QByteArray installed;
    };
    const Case cases[] = {
        {"CR inside a line", "A\rB\nPATH = old\n", "A\rB\n" + path + "\n"},
        {"CR before CR LF", "A\r\r\nPATH=x\n", "A\r\r\n" + path + "\n"},
        {"CRLF lines", "# c\r\nPATH = old\r\nA = 1\r\n", "# c\r\n" + path + "\r\nA = 1\r\n"},
        {"no final line end", "A = 1\nB = 2", "A = 1\nB = 2"},
        {"PATH last without line end", "A = 1\nPATH = old", "A = 1\n" + path},
        {"lone CR ending the file", "A = 1\r", "A = 1\r"},
        {"empty template", "", ""},
        {"blank lines kept", "\n\r\n\nPATH\n", "\n\r\n\n" + path + "\n"},
        {"long line with a CR at the buffer edge", longText + "\nPATH = old\n", longText + "\n" + path + "\n"},
        {"NUL byte kept", QByteArray("A\0B\n", 4), QByteArray("A\0B\n", 4)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_TRUE(QDir(m_strTarget).removeRecursively() || !QFileInfo::exists(m_strTarget));
        WriteFile(Source("GoZ_Config.txt"), c.templ);
        ASSERT_EQ(Install(), EStatus::Installed);
        EXPECT_EQ(ReadFile(Target("GoZ_Config.txt")), c.installed);
    }
}

TEST_F(BridgeInstallerTest, MissingZBrushChangesNothing)
{
    struct Case
    {
        const char* name;
        bool removeRoot;
    };
    for (const Case& c : {Case{"no Pixologic folder", true}, Case{"no GoZBrushFromApp.exe", false}}) {
        SCOPED_TRACE(c.name);
        if (c.removeRoot) {
            ASSERT_TRUE(QDir(m_strRoot).removeRecursively());
        } else {
            ASSERT_TRUE(QFile::remove(m_strRoot + QStringLiteral("GoZBrush/GoZBrushFromApp.exe")));
        }
        EXPECT_EQ(Install(), EStatus::ZBrushMissing);
        EXPECT_FALSE(QFileInfo::exists(m_strTarget));
        SetUp();
    }
}

TEST_F(BridgeInstallerTest, CurrentInstallIsLeftAloneEvenWhenPayloadAndDirectoryChange)
{
    ASSERT_EQ(Install(), EStatus::Installed);
    const QByteArray config = ReadFile(Target("GoZ_Config.txt"));
    WriteFile(Source("GoZBrushToFM.exe"), "launcher v3");
    WriteFile(Source("GoZ_Info.txt"), "changed");
    ASSERT_EQ(Install(QStringLiteral("D:/Elsewhere")), EStatus::Installed);
    EXPECT_EQ(ReadFile(Target("GoZBrushToFM.exe")), "launcher v2");
    EXPECT_EQ(ReadFile(Target("GoZ_Info.txt")), "GOZ_OBJECT_LIST = \"GoZ_ObjectList.txt\"\n");
    EXPECT_EQ(ReadFile(Target("GoZ_Config.txt")), config);
}

// A launcher older than the cut-off marks an install to refresh; one dated on it is current.
TEST_F(BridgeInstallerTest, LauncherOlderThanCutOffRefreshesEveryFile)
{
    for (const bool stale : {true, false}) {
        SCOPED_TRACE(stale ? "stale" : "on the cut-off");
        ASSERT_EQ(Install(), EStatus::Installed);
        WriteFile(Target("GoZBrushToFM.exe"), "launcher v1");
        SetModified(Target("GoZBrushToFM.exe"), QDateTime(QDate(2018, 8, stale ? 13 : 14), stale ? QTime(23, 59) : QTime(0, 0), Qt::LocalTime));
        WriteFile(Target("GoZ_Info.txt"), "user edit");
        WriteFile(Target("GoZ_Config.txt"), "PATH = \"stale\"\n");

        ASSERT_EQ(Install(QStringLiteral("C:/New")), EStatus::Installed);
        EXPECT_EQ(ReadFile(Target("GoZBrushToFM.exe")), stale ? "launcher v2" : "launcher v1");
        EXPECT_EQ(ReadFile(Target("GoZ_Info.txt")), stale ? ReadFile(Source("GoZ_Info.txt")) : "user edit");
        EXPECT_EQ(ReadFile(Target("GoZ_Config.txt")),
                  stale ? "# comment\nPATH = \"C:\\New\\Figmora.exe\"\nAPPLICATION = Figmora\n" : "PATH = \"stale\"\n");
    }
}

TEST_F(BridgeInstallerTest, MissingLauncherCopiesOnlyMissingFilesAndKeepsTheConfig)
{
    WriteFile(Target("GoZ_Config.txt"), "PATH = \"mine\"\n");
    WriteFile(Target("GoZ_Info.txt"), "mine");
    ASSERT_EQ(Install(), EStatus::Installed);
    EXPECT_EQ(ReadFile(Target("GoZBrushToFM.exe")), "launcher v2");
    EXPECT_EQ(ReadFile(Target("GoZ_Config.txt")), "PATH = \"mine\"\n");
    EXPECT_EQ(ReadFile(Target("GoZ_Info.txt")), "mine");
}

TEST_F(BridgeInstallerTest, MissingPayloadFolderIsNotAnError)
{
    ASSERT_TRUE(QDir(m_strPlugin).removeRecursively());
    EXPECT_EQ(Install(), EStatus::Installed);
    EXPECT_TRUE(QFileInfo(m_strTarget).isDir());
}

TEST_F(BridgeInstallerTest, UncreatableApplicationFolderIsReported)
{
    WriteFile(m_strRoot + QStringLiteral("GoZApps"), "a file where the folder should be");
    EXPECT_EQ(Install(), EStatus::CannotCreateFolder);
}

TEST_F(BridgeInstallerTest, FailedCopyStopsTheInstall)
{
    struct Case
    {
        const char* blocked;
    };
    for (const Case& c : {Case{"GoZ_Info.txt"}, Case{"GoZ_Config.txt"}}) {
        SCOPED_TRACE(c.blocked);
        ASSERT_TRUE(QDir(m_strTarget).removeRecursively() || !QFileInfo::exists(m_strTarget));
        WriteFile(Target("GoZBrushToFM.exe"), "old launcher");
        SetModified(Target("GoZBrushToFM.exe"), QDateTime(QDate(2017, 1, 1), QTime(0, 0), Qt::LocalTime));
        // A folder in the way cannot be removed or overwritten.
        ASSERT_TRUE(QDir().mkpath(Target(c.blocked) + QStringLiteral("/inner")));
        EXPECT_EQ(Install(), EStatus::CopyFailed);
        EXPECT_TRUE(QFileInfo(Target(c.blocked)).isDir());
    }
}

TEST_F(BridgeInstallerTest, NonAsciiFoldersWork)
{
    m_strRoot = m_kTemp.path() + QStringLiteral("/Öffentlich ü/Pixologic/");
    m_strTarget = m_strRoot + QStringLiteral("GoZApps/Figmora/");
    WriteFile(m_strRoot + QStringLiteral("GoZBrush/GoZBrushFromApp.exe"), "zbrush");
    ASSERT_EQ(Install(QStringLiteral("C:/Programme/Zoë")), EStatus::Installed);
    EXPECT_EQ(ReadFile(Target("GoZ_Config.txt")),
              "# comment\nPATH = \"C:\\Programme\\Zo\xEB\\Figmora.exe\"\nAPPLICATION = Figmora\n");
}

TEST(BridgeConfigLines, OnlyAnExactPathKeyIsReplaced)
{
    struct Case
    {
        const char* line;
        bool replaced;
    };
    const Case cases[] = {
        {"PATH = old", true},   {"  PATH=old", true},      {"\tPATH\t= x", true}, {"PATH", true},
        {"PATH = a = b", true}, {"Path = old", false},     {"XPATH = old", false}, {"PATHS = x", false},
        {"", false},            {"= PATH", false},         {"# PATH = x", false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(CBridgeInstaller::IsPathKeyLine(c.line), c.replaced) << c.line;
    }
}

TEST(BridgeConfigLines, PathLineUsesBackslashesAndQuotes)
{
    struct Case
    {
        const char* cwd;
        const char* line;
    };
    const Case cases[] = {
        {"C:/Apps/Host", "PATH = \"C:\\Apps\\Host\\Figmora.exe\""},
        {"C:/", "PATH = \"C:\\\\Figmora.exe\""},
        {"/work/sandbox", "PATH = \"\\work\\sandbox\\Figmora.exe\""},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(CBridgeInstaller::PathLine(QString::fromUtf8(c.cwd)), QByteArray(c.line)) << c.cwd;
    }
}

} // namespace

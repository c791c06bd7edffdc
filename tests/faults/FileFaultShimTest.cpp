// The campaign's instrument: the shim sees the file calls of Qt and of the C library in this
// process, and each fault does to a file what it says, at the touch it is armed for.
#include "FileFaultShim.h"
#include "QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdio>

using namespace MV::Faults;

namespace {

TEST(FileFaultShim, TemporaryFilesBelongToTheFileTheyReplace)
{
    const struct
    {
        const char* m_szPath;
        const char* m_szFamily;
    } cases[] = {
        {"/a/GoZ_ObjectList.txt", "/a/GoZ_ObjectList.txt"},
        {"/a/GoZ_ObjectList.txt.aB3dE9", "/a/GoZ_ObjectList.txt"},
        {"/a/GoZ_Config.txt.~mvgoz123-4", "/a/GoZ_Config.txt"},
        {"/a/Vase.mvMotionPlus", "/a/Vase.mvMotionPlus"},
        {"/a/notes.backup", "/a/notes.backup"},        // six letters, but no name with a suffix before them
        {"/a/GoZ_Info.txt.ab-def", "/a/GoZ_Info.txt.ab-def"}, // not Qt's letters and digits
    };
    for (const auto& c : cases) {
        EXPECT_EQ(std::string(c.m_szFamily), FamilyOf(c.m_szPath)) << c.m_szPath;
    }
}

class FileFaults : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_kFolder.isValid());
        m_strRoot = QFileInfo(m_kFolder.path()).canonicalFilePath();
        m_strFile = m_strRoot + QStringLiteral("/list.txt");
        Write(m_strFile, "old\n");
        StartRecording(m_strRoot.toStdString());
    }
    void TearDown() override
    {
        StopRecording();
        QFile::setPermissions(m_strFile, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    }

    static void Write(const QString& path, const QByteArray& bytes)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
    }
    static QByteArray Read(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
    }

    QTemporaryDir m_kFolder;
    QString m_strRoot;
    QString m_strFile;
};

TEST_F(FileFaults, MissingStrikesAtTheArmedTouchNotBefore)
{
    Arm(m_strFile.toStdString(), EFileFault::Missing, 2);
    EXPECT_TRUE(QFileInfo::exists(m_strFile)) << "the first touch sees the file";
    QFile file(m_strFile);
    EXPECT_FALSE(file.open(QIODevice::ReadOnly)) << "gone at the second";
    const CFired fired = Fired();
    EXPECT_TRUE(fired.m_bFired);
    EXPECT_TRUE(fired.m_bTargetExisted);
    EXPECT_EQ(ETouch::Read, fired.m_eTouch);
}

TEST_F(FileFaults, AFolderTakesTheFilesPlace)
{
    Arm(m_strFile.toStdString(), EFileFault::Directory, 1);
    QSaveFile file(m_strFile);
    const bool opened = file.open(QIODevice::WriteOnly); // Qt looks before it opens: the folder is there
    EXPECT_FALSE(opened && file.write("new\n") == 4 && file.commit());
    EXPECT_TRUE(QFileInfo(m_strFile).isDir());
}

TEST_F(FileFaults, AReadOnlyFileCanBeReadButNotWrittenReplacedOrDeleted)
{
    Arm(m_strFile.toStdString(), EFileFault::ReadOnly, 1);
    EXPECT_EQ(QByteArray("old\n"), Read(m_strFile));
    QFile direct(m_strFile);
    EXPECT_FALSE(direct.open(QIODevice::WriteOnly));
    QSaveFile replaced(m_strFile);
    ASSERT_TRUE(replaced.open(QIODevice::WriteOnly));
    replaced.write("new\n");
    EXPECT_FALSE(replaced.commit());
    EXPECT_FALSE(QFile::remove(m_strFile));
    EXPECT_EQ(QByteArray("old\n"), Read(m_strFile));
    EXPECT_EQ(QStringList{"list.txt"}, QDir(m_strRoot).entryList(QDir::Files | QDir::Hidden)) << "no temporary file left";
}

TEST_F(FileFaults, AFullDiskTakesHalfAWriteAndRefusesTheRest)
{
    Arm(m_strFile.toStdString(), EFileFault::WriteFails, 1);
    std::FILE* file = std::fopen(m_strFile.toLocal8Bit().constData(), "wb");
    ASSERT_NE(nullptr, file);
    EXPECT_EQ(5u, std::fwrite("0123456789", 1, 10, file));
    EXPECT_EQ(0u, std::fwrite("0123456789", 1, 10, file));
    std::fclose(file);
    EXPECT_EQ(QByteArray("01234"), Read(m_strFile));
    EXPECT_EQ(2, Fired().m_iFailedCalls);
}

TEST_F(FileFaults, QtsTemporaryFileIsNamedAndCountsAsTheFile)
{
    // Qt flushes on commit: the full disk shows there, on the named temporary file.
    Arm(m_strFile.toStdString(), EFileFault::WriteFails, 1);
    {
        QSaveFile file(m_strFile);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("a new list\n");
        EXPECT_FALSE(file.flush());
    }
    EXPECT_EQ(QByteArray("old\n"), Read(m_strFile));
    EXPECT_EQ(QStringList{"list.txt"}, QDir(m_strRoot).entryList(QDir::Files | QDir::Hidden));
    const std::vector<CTouch> touches = StopRecording();
    bool namedTemporary = false;
    for (const CTouch& touch : touches) {
        namedTemporary = namedTemporary || (touch.m_eKind == ETouch::Write && touch.m_strPath != touch.m_strFamily &&
                                            touch.m_strFamily == m_strFile.toStdString());
    }
    EXPECT_TRUE(namedTemporary);
}

TEST_F(FileFaults, NothingHappensOutsideARecording)
{
    StopRecording();
    Arm(m_strFile.toStdString(), EFileFault::Missing, 1);
    EXPECT_EQ(QByteArray("old\n"), Read(m_strFile));
    EXPECT_FALSE(Fired().m_bFired);
}

} // namespace

#include "KeyValueFile.h"
#include "KeyValueTestFiles.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <string>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

// How the file replacement behaves on a POSIX file system: rights, links, failed writes.
namespace {

using Names = std::vector<std::string>;

mode_t ModeOf(const std::string& path)
{
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 ? (info.st_mode & 07777) : 0;
}

TEST(KeyValueFilePosix, ReplacementKeepsAccessRights)
{
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    const std::string path = files.Write("config.txt", "A=1\n");
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);

    SetKeyValue(path.c_str(), "A", "2");
    EXPECT_EQ(CKeyValueTestFiles::Read(path), "A = 2\n");
    EXPECT_EQ(ModeOf(path), 0640u);
}

TEST(KeyValueFilePosix, SymbolicLinkStaysALink)
{
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    const std::string target = files.Write("real.txt", "A=1\n");
    const std::string link = files.Path("link.txt");
    ASSERT_EQ(::symlink(target.c_str(), link.c_str()), 0);

    SetKeyValue(link.c_str(), "B", "2");
    struct stat info {};
    ASSERT_EQ(::lstat(link.c_str(), &info), 0);
    EXPECT_TRUE(S_ISLNK(info.st_mode));
    EXPECT_EQ(CKeyValueTestFiles::Read(target), "A=1\nB = 2\n");
    EXPECT_EQ(files.Entries(), (Names{"link.txt", "real.txt"}));
}

TEST(KeyValueFilePosix, ReadOnlyFileLeftAlone)
{
    if (::geteuid() == 0) {
        GTEST_SKIP() << "root may write any file";
    }
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    const std::string path = files.Write("config.txt", "A=1\n");
    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);

    SetKeyValue(path.c_str(), "A", "2");
    EXPECT_EQ(CKeyValueTestFiles::Read(path), "A=1\n");
    EXPECT_EQ(files.Entries().size(), 1);
}

// Writes may fail part-way (disk full); a file-size limit makes that happen even for root.
void SetKeyValueWithFileSizeLimit(const std::string& path, rlim_t limit)
{
    std::signal(SIGXFSZ, SIG_IGN);
    const struct rlimit small = {limit, limit};
    if (::setrlimit(RLIMIT_FSIZE, &small) != 0) {
        std::_Exit(2);
    }
    SetKeyValue(path.c_str(), "A", "2");
    std::_Exit(0);
}

TEST(KeyValueFilePosix, FailedWriteLeavesOriginalWhole)
{
    // The child must work on this very file, so fork without re-running the test.
    GTEST_FLAG_SET(death_test_style, "fast");
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    std::string content = "A=1\n";
    while (content.size() < 64 * 1024) {
        content += "FILLER = " + std::string(70, 'f') + "\n";
    }
    const std::string path = files.Write("config.txt", content);

    EXPECT_EXIT(SetKeyValueWithFileSizeLimit(path, 4096), ::testing::ExitedWithCode(0), "");
    EXPECT_EQ(CKeyValueTestFiles::Read(path), content);
    EXPECT_EQ(files.Entries(), Names{"config.txt"});
}

} // namespace

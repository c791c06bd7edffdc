#include "KeyValueFile.h"
#include "KeyValueTestFiles.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

// How the file replacement behaves on a POSIX file system: rights, links, failed writes.
namespace {

using Names = std::vector<std::string>;

TEST(KeyValueFilePosix, LinkFollowedAndRightsKept)
{
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    const std::string target = files.Write("real.txt", "A=1\n");
    const std::string link = files.Path("link.txt");
    ASSERT_EQ(::chmod(target.c_str(), 0640), 0);
    ASSERT_EQ(::symlink(target.c_str(), link.c_str()), 0);

    SetKeyValue(link.c_str(), "B", "2");
    struct stat info {};
    ASSERT_EQ(::lstat(link.c_str(), &info), 0);
    EXPECT_TRUE(S_ISLNK(info.st_mode));
    ASSERT_EQ(::stat(target.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
    EXPECT_EQ(CKeyValueTestFiles::Read(target), "A=1\nB = 2\n");
    EXPECT_EQ(files.Entries(), (Names{"link.txt", "real.txt"}));
}

TEST(KeyValueFilePosix, PipeReadToItsEnd)
{
    // A pipe has no size to read by: its bytes come in as they are written, more than one
    // reading step's worth here.
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    const std::string pipe = files.Path("pipe.txt");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::string content;
    for (int i = 0; content.size() < 100000; ++i) {
        content += "LINE" + std::to_string(i) + " = x\r\n";
    }
    content += "LAST = \"end\"";

    // The writer waits for the reader to open the pipe, but not for ever.
    bool written = false;
    std::thread writer([&] {
        int fd = -1;
        for (int attempt = 0; attempt < 500 && fd < 0; ++attempt) {
            fd = ::open(pipe.c_str(), O_WRONLY | O_NONBLOCK);
            if (fd < 0) {
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            }
        }
        if (fd < 0) {
            // Let a reader that came too late see an empty pipe instead of waiting.
            ::close(::open(pipe.c_str(), O_RDWR | O_NONBLOCK));
            return;
        }
        ::fcntl(fd, F_SETFL, 0);
        std::size_t done = 0;
        while (done < content.size()) {
            const ssize_t count = ::write(fd, content.data() + done, content.size() - done);
            if (count <= 0) {
                break;
            }
            done += static_cast<std::size_t>(count);
        }
        written = done == content.size();
        ::close(fd);
    });
    char value[16] = {};
    const bool found = GetKeyValue(pipe.c_str(), "last", value, sizeof(value));
    writer.join();
    ASSERT_TRUE(written);
    EXPECT_TRUE(found);
    EXPECT_STREQ(value, "end");
}

// In a child process, as an unprivileged user (root may write any file) and with a file-size
// limit, so that a write can fail part-way as on a full disk.
void SetKeyValueInChild(const std::string& path, rlim_t sizeLimit)
{
    std::signal(SIGXFSZ, SIG_IGN);
    const struct rlimit limit = {sizeLimit, sizeLimit};
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0 || (::geteuid() == 0 && ::setuid(65534) != 0)) {
        std::_Exit(2);
    }
    if (::access(path.c_str(), R_OK) != 0) {
        std::_Exit(3);
    }
    SetKeyValue(path.c_str(), "A", "2");
    std::_Exit(0);
}

TEST(KeyValueFilePosix, FailedWriteLeavesOriginalWhole)
{
    // The child must work on this very file, so fork without re-running the test.
    GTEST_FLAG_SET(death_test_style, "fast");
    std::string big = "A=1\n";
    while (big.size() < 64 * 1024) {
        big += "FILLER = " + std::string(70, 'f') + "\n";
    }
    const struct
    {
        const char* name;
        std::string content;
        mode_t mode;
        rlim_t sizeLimit;
    } cases[] = {
        {"read-only file", "A=1\n", 0444, RLIM_INFINITY},
        {"disk full", big, 0666, 4096},
    };
    for (const auto& c : cases) {
        CKeyValueTestFiles files;
        ASSERT_TRUE(files.IsValid());
        // Only the file's own rights may stop the write, not the folder's.
        ASSERT_EQ(::chmod(files.Path("").c_str(), 0777), 0);
        const std::string path = files.Write("config.txt", c.content);
        ASSERT_EQ(::chmod(path.c_str(), c.mode), 0);

        EXPECT_EXIT(SetKeyValueInChild(path, c.sizeLimit), ::testing::ExitedWithCode(0), "") << c.name;
        EXPECT_EQ(CKeyValueTestFiles::Read(path), c.content) << c.name;
        EXPECT_EQ(files.Entries(), Names{"config.txt"}) << c.name;
    }
}

} // namespace

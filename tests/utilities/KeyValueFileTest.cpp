#include "KeyValueFile.h"
#include "KeyValueTestFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

namespace {

using namespace std::string_literals;
using Names = std::vector<std::string>;

const std::string kUntouched = "untouched";

// The line rules themselves are held to their plain reading in KeyValueDifferentialTest.cpp;
// here what the file functions add: the caller's buffer and the value as given.
TEST(KeyValueFile, GetReadsTheFirstAnsweringLine)
{
    const struct
    {
        const char* name;
        std::string content;
        std::string key;
        int valueSize;
        std::string value;
    } cases[] = {
        {"QuotedPathLosesQuotes", "GOZ_OBJECT_LIST = \"C:/a b/list.txt\"\r\n", "GOZ_OBJECT_LIST", 1024, "C:/a b/list.txt"},
        {"EarlierPrefixLineWins", "GOZ = short\nGOZ_OBJECT_LIST = long\n", "GOZ_OBJECT_LIST", 64, "short"},
        {"ValueCutToBuffer", "K = 0123456789\n", "K", 4, "012"},
        {"BufferOfOneGetsOnlyTerminator", "K = 0123456789\n", "K", 1, ""},
        {"LongValueCut", "K = \"" + std::string(5000, 'x') + "\"\n", "K", 512, std::string(511, 'x')},
    };
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = files.Write("info.txt", c.content);
        std::vector<char> buffer(1100, '#');
        std::strcpy(buffer.data(), kUntouched.c_str());
        EXPECT_TRUE(GetKeyValue(path.c_str(), c.key.c_str(), buffer.data(), c.valueSize));
        EXPECT_EQ(std::string(buffer.data()), c.value);
        // Nothing written past the given size.
        EXPECT_EQ(buffer[static_cast<std::size_t>(std::max(c.valueSize, 10))], '#');
    }
}

TEST(KeyValueFile, SetReplacesTheKeyAtTheEnd)
{
    const struct
    {
        const char* name;
        std::string content;
        std::string key;
        const char* value;
        std::string expected;
    } cases[] = {
        {"OtherLinesKeepCrLfValueAsGiven", "A=1\r\nB=2\r\n", "A", "\"x\"", "B=2\r\nA = \"x\"\n"},
        {"NullValue", "", "A", nullptr, "A = \n"},
        {"EmptyValue", "B=1\n", "A", "", "B=1\nA = \n"},
        {"PrefixLineDropped", "GOZ = x\nGOZ_OBJECT_LIST = y\nOTHER = z\n", "GOZ_OBJECT_LIST", "n",
         "OTHER = z\nGOZ_OBJECT_LIST = n\n"},
    };
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = files.Write("config.txt", c.content);
        SetKeyValue(path.c_str(), c.key.c_str(), c.value);
        EXPECT_EQ(CKeyValueTestFiles::Read(path), c.expected);
        EXPECT_EQ(files.Entries(), Names{"config.txt"});
    }
}

TEST(KeyValueFile, BadArgumentsAndMissingFilesAreHarmless)
{
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    const std::string path = files.Write("info.txt", "K = 1\n");
    const std::string missing = files.Path("missing.txt");
    const std::string folder = files.Path("sub");
    ASSERT_TRUE(std::filesystem::create_directory(folder));
    char buffer[16] = "untouched";
    const struct
    {
        const char* path;
        const char* key;
        char* value;
        int size;
        bool found;
    } gets[] = {
        // The result is told even when there is nowhere to put the value.
        {path.c_str(), "K", buffer, 0, true},      {path.c_str(), "K", buffer, -5, true},
        {path.c_str(), "K", nullptr, 16, true},    {path.c_str(), "X", buffer, 0, false},
        {nullptr, "K", buffer, 16, false},         {path.c_str(), nullptr, buffer, 16, false},
        {missing.c_str(), "K", buffer, 16, false}, {folder.c_str(), "K", buffer, 16, false},
    };
    for (std::size_t row = 0; row < std::size(gets); ++row) {
        const auto& c = gets[row];
        EXPECT_EQ(GetKeyValue(c.path, c.key, c.value, c.size), c.found) << "row " << row;
    }
    EXPECT_STREQ(buffer, "untouched");

    // Set never creates a file and leaves a folder alone.
    const char* const sets[][2] = {
        {nullptr, "K"}, {path.c_str(), nullptr}, {path.c_str(), ""}, {missing.c_str(), "K"}, {folder.c_str(), "K"}};
    for (const auto& c : sets) {
        SetKeyValue(c[0], c[1], "2");
    }
    EXPECT_EQ(CKeyValueTestFiles::Read(path), "K = 1\n");
    EXPECT_TRUE(std::filesystem::is_directory(folder));
    EXPECT_EQ(files.Entries(), (Names{"info.txt", "sub"}));
}

TEST(KeyValueFile, UnusualFileNamesUsedAsGiven)
{
    // UTF-8 "é" then a lone Latin-1 0xE9 that is not valid UTF-8; and a 250-byte name beside
    // which no longer name fits, so that the file has to be written in place.
    for (const std::string& name : {"caf\xc3\xa9 \xe9.txt"s, std::string(246, 'n') + ".txt"}) {
        CKeyValueTestFiles files;
        ASSERT_TRUE(files.IsValid());
        const std::string path = files.Write(name, "A=1\r\nB=1\r\n");
        char buffer[16] = {};

        SetKeyValue(path.c_str(), "A", "2");
        EXPECT_EQ(CKeyValueTestFiles::Read(path), "B=1\r\nA = 2\n") << name.size();
        EXPECT_TRUE(GetKeyValue(path.c_str(), "a", buffer, sizeof(buffer)));
        EXPECT_STREQ(buffer, "2");
        EXPECT_EQ(files.Entries(), Names{name});
    }
}

TEST(KeyValueFile, TenMegabyteFile)
{
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    std::string content = "FIRST = 1\r\n";
    for (int i = 0; content.size() < 10u * 1024u * 1024u; ++i) {
        content += "LINE" + std::to_string(i) + " = " + std::string(100, static_cast<char>('a' + i % 26)) + "\r\n";
    }
    content += "LAST = \"end\"";
    const std::string path = files.Write("big.txt", content);
    char buffer[16] = {};

    EXPECT_TRUE(GetKeyValue(path.c_str(), "last", buffer, sizeof(buffer)));
    EXPECT_STREQ(buffer, "end");

    SetKeyValue(path.c_str(), "FIRST", "2");
    const std::string expected = content.substr(std::strlen("FIRST = 1\r\n")) + "FIRST = 2\n";
    EXPECT_TRUE(CKeyValueTestFiles::Read(path) == expected) << "10 MB file not rewritten as expected";
}

} // namespace

#include "KeyValueFile.h"
#include "KeyValueTestFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

namespace {

using Names = std::vector<std::string>;

using namespace std::string_literals;

constexpr char kUntouched[] = "untouched";

struct GetCase
{
    const char* name;
    std::string content;
    std::string key;
    int valueSize;
    bool found;
    const char* value; // kUntouched: the buffer must keep its old text
};

std::string Repeat(char c, std::size_t count)
{
    return std::string(count, c);
}

std::vector<GetCase> GetCases()
{
    const std::string longKey = Repeat('k', 600);
    return {
        {"QuotedPathLosesQuotes", "GOZ_OBJECT_LIST = \"C:/a b/list.txt\"\r\n", "GOZ_OBJECT_LIST", 1024, true,
         "C:/a b/list.txt"},
        {"EmptyValue", "Key=\n", "Key", 64, true, ""},
        {"FirstOfTwoWins", "A = 1\nA = 2\n", "A", 64, true, "1"},
        {"CaseIgnored", "PATH = x\n", "path", 64, true, "x"},
        {"LongerLineKeyDoesNotAnswer", "PATHX = y\n", "PATH", 64, false, kUntouched},
        {"LineKeyIsPrefixOfRequest", "GOZ = x\n", "GOZ_OBJECT_LIST", 64, true, "x"},
        {"EarlierPrefixLineWins", "GOZ = short\nGOZ_OBJECT_LIST = long\n", "GOZ_OBJECT_LIST", 64, true, "short"},
        {"ValueCutToBuffer", "K = 0123456789\n", "K", 4, true, "012"},
        {"BufferOfOneGetsOnlyTerminator", "K = 0123456789\n", "K", 1, true, ""},
        {"CarriageReturnsOnly", "A=1\rB=2\rC=3", "B", 64, true, "2"},
        {"MixedLineEnds", "A=1\r\n\n\rB=2\n\r", "B", 64, true, "2"},
        {"NoLineEnd", "A = 1", "A", 64, true, "1"},
        {"BlanksTrimmed", "  \t Key \t =  \t value  \t \r\n", "Key", 64, true, "value"},
        {"InnerBlanksKept", "Key = a  b \n", "Key", 64, true, "a  b"},
        {"LoneQuoteKept", "K = \"\n", "K", 64, true, "\""},
        {"TwoQuotesGiveEmpty", "K = \"\"\n", "K", 64, true, ""},
        {"OpeningQuoteOnlyKept", "K = \"abc\n", "K", 64, true, "\"abc"},
        {"ClosingQuoteOnlyKept", "K = abc\"\n", "K", 64, true, "abc\""},
        {"InnerQuoteKept", "K = \"a\"b\"\n", "K", 64, true, "a\"b"},
        {"BlanksInsideQuotesKept", "K = \" spaced \" \t\n", "K", 64, true, " spaced "},
        {"ValueMayHoldEquals", "A = b=c\n", "A", 64, true, "b=c"},
        {"KeyWithInnerBlank", "My Key = v\n", "my key", 64, true, "v"},
        {"LineWithoutEqualsAnswersButKeepsBuffer", "Key\n", "Key", 64, true, kUntouched},
        {"WholeLineIsKeyWithoutEquals", "Key with blanks\n", "Key", 64, false, kUntouched},
        {"EmptyRequestMatchesNothing", "x = 1\n= 2\n", "", 64, false, kUntouched},
        {"LineStartingWithEqualsIgnored", "= 1\n=\nK=v", "K", 64, true, "v"},
        {"BlankLinesSkipped", "\n   \n\t\nK=v", "K", 64, true, "v"},
        {"EmptyFile", "", "K", 64, false, kUntouched},
        {"OnlyLineEnds", "\r\n\r\n", "K", 64, false, kUntouched},
        {"NulInsideLineKeyIsData", "A\0B = 1\nA = 2\n"s, "A", 64, true, "2"},
        {"BinaryLinesAround", "\xff\xfe=\x01\n\0\0\0\n K = v\n\x80"s, "K", 64, true, "v"},
        {"KeyOf600BytesComparesFirst511", longKey + " = long\n", longKey, 64, true, "long"},
        {"KeyCutTo511AnswersExact511", longKey + " = long\n", Repeat('k', 511), 64, true, "long"},
        {"KeyCutTo511AnswersLongerRequest", longKey + " = long\n", Repeat('k', 511) + "zz", 64, true, "long"},
        {"Request510ShorterThanCutKey", longKey + " = long\n", Repeat('k', 510), 64, false, kUntouched},
    };
}

void PrintTo(const GetCase& c, std::ostream* out)
{
    *out << c.name;
}

class GetKeyValueTable : public ::testing::TestWithParam<GetCase>
{
};

TEST_P(GetKeyValueTable, ReadsTheFirstAnsweringLine)
{
    const GetCase& c = GetParam();
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    const std::string path = files.Write("info.txt", c.content);

    std::vector<char> buffer(1100, '#');
    std::strcpy(buffer.data(), kUntouched);
    EXPECT_EQ(GetKeyValue(path.c_str(), c.key.c_str(), buffer.data(), c.valueSize), c.found);
    EXPECT_STREQ(buffer.data(), c.value);
    // Nothing written past the given size.
    EXPECT_EQ(buffer[static_cast<std::size_t>(std::max(c.valueSize, 10))], '#');
}

INSTANTIATE_TEST_SUITE_P(KeyValueFile, GetKeyValueTable, ::testing::ValuesIn(GetCases()),
                         [](const ::testing::TestParamInfo<GetCase>& info) { return std::string(info.param.name); });

struct SetCase
{
    const char* name;
    std::string content;
    const char* key;
    const char* value;
    std::string expected;
};

std::vector<SetCase> SetCases()
{
    return {
        {"DropsBothAndAppends", "A = 1\nB = 2\nA = 3\n", "A", "9", "B = 2\nA = 9\n"},
        {"OtherLinesKeepCrLf", "A=1\r\nB=2\r\n", "A", "x", "B=2\r\nA = x\n"},
        {"JoinsOntoLastLineWithoutEnd", "B=2", "A", "x", "B=2A = x\n"},
        {"EmptyFileGetsOneLine", "", "A", "x", "A = x\n"},
        {"NullValue", "", "A", nullptr, "A = \n"},
        {"EmptyValue", "B=1\n", "A", "", "B=1\nA = \n"},
        {"BlankLinesKept", "\n\n  \nA=1\n\n", "B", "v", "\n\n  \nA=1\n\nB = v\n"},
        {"DroppedLineTakesItsWholeLineEndRun", "A=1\r\n\r\nB=2", "A", "x", "B=2A = x\n"},
        {"PrefixLineDropped", "GOZ = x\nGOZ_OBJECT_LIST = y\nOTHER = z\n", "GOZ_OBJECT_LIST", "n",
         "OTHER = z\nGOZ_OBJECT_LIST = n\n"},
        {"CaseIgnoredLongerKeyKept", "path = a\nPATHX = b\n", "PATH", "c", "PATHX = b\nPATH = c\n"},
        {"IndentedLineDroppedWhole", "X=1\n   A = 1\t\nY=2\n", "A", "2", "X=1\nY=2\nA = 2\n"},
        {"BinaryKeptByteForByte", "\0\x01\xff\nA=1\n\0=\0\n"s, "A", "v", "\0\x01\xff\n\0=\0\nA = v\n"s},
        {"CarriageReturnsOnly", "A=1\rB=2\r", "B", "x", "A=1\rB = x\n"},
        {"LeadingLineEndsKept", "\r\nA=1", "A", "x", "\r\nA = x\n"},
        {"ValueWrittenAsGiven", "", "A", "\"q\"", "A = \"q\"\n"},
        {"LineStartingWithEqualsKept", "=1\nA=1\n", "A", "v", "=1\nA = v\n"},
        {"LineWithoutEqualsDropped", "A\nB=1\n", "A", "v", "B=1\nA = v\n"},
    };
}

void PrintTo(const SetCase& c, std::ostream* out)
{
    *out << c.name;
}

class SetKeyValueTable : public ::testing::TestWithParam<SetCase>
{
};

TEST_P(SetKeyValueTable, ReplacesTheKeyAtTheEnd)
{
    const SetCase& c = GetParam();
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    const std::string path = files.Write("config.txt", c.content);

    SetKeyValue(path.c_str(), c.key, c.value);
    EXPECT_EQ(CKeyValueTestFiles::Read(path), c.expected);
    EXPECT_EQ(files.Entries(), Names{"config.txt"});
}

INSTANTIATE_TEST_SUITE_P(KeyValueFile, SetKeyValueTable, ::testing::ValuesIn(SetCases()),
                         [](const ::testing::TestParamInfo<SetCase>& info) { return std::string(info.param.name); });

TEST(KeyValueFile, ValueBufferOptionalButResultStillTold)
{
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    const std::string path = files.Write("info.txt", "K = value\n");
    char buffer[16] = "untouched";
    const struct
    {
        char* value;
        int size;
        const char* key;
        bool found;
    } cases[] = {
        {buffer, 0, "K", true},   {buffer, -5, "K", true},   {nullptr, 16, "K", true},
        {buffer, 0, "X", false},  {nullptr, 0, "X", false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(GetKeyValue(path.c_str(), c.key, c.value, c.size), c.found) << c.key << " size " << c.size;
        EXPECT_STREQ(buffer, "untouched");
    }
}

TEST(KeyValueFile, BadArgumentsAreHarmless)
{
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    const std::string path = files.Write("info.txt", "K = 1\n");
    char buffer[16] = "untouched";

    EXPECT_FALSE(GetKeyValue(nullptr, "K", buffer, sizeof(buffer)));
    EXPECT_FALSE(GetKeyValue(path.c_str(), nullptr, buffer, sizeof(buffer)));
    EXPECT_FALSE(GetKeyValue(files.Path("missing.txt").c_str(), "K", buffer, sizeof(buffer)));
    EXPECT_STREQ(buffer, "untouched");

    SetKeyValue(nullptr, "K", "2");
    SetKeyValue(path.c_str(), nullptr, "2");
    SetKeyValue(path.c_str(), "", "2");
    EXPECT_EQ(CKeyValueTestFiles::Read(path), "K = 1\n");
    EXPECT_EQ(files.Entries(), Names{"info.txt"});
}

TEST(KeyValueFile, SetNeverCreatesAFile)
{
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    const std::string path = files.Path("missing.txt");

    SetKeyValue(path.c_str(), "K", "v");
    EXPECT_FALSE(CKeyValueTestFiles::Exists(path));
    EXPECT_TRUE(files.Entries().empty());
}

TEST(KeyValueFile, FolderIsNeitherReadNorReplaced)
{
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    const std::string folder = files.Path("sub");
    ASSERT_TRUE(std::filesystem::create_directory(folder));
    char buffer[16] = "untouched";

    EXPECT_FALSE(GetKeyValue(folder.c_str(), "K", buffer, sizeof(buffer)));
    SetKeyValue(folder.c_str(), "K", "v");
    EXPECT_TRUE(std::filesystem::is_directory(folder));
    EXPECT_EQ(files.Entries(), Names{"sub"});
}

TEST(KeyValueFile, NonAsciiPathBytesUsedAsGiven)
{
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    // UTF-8 "é", then a lone Latin-1 0xE9 that is not valid UTF-8.
    const std::string path = files.Write("caf\xc3\xa9 \xe9.txt", "A=1\r\n");
    char buffer[16] = {};

    SetKeyValue(path.c_str(), "B", "2");
    EXPECT_EQ(CKeyValueTestFiles::Read(path), "A=1\r\nB = 2\n");
    EXPECT_TRUE(GetKeyValue(path.c_str(), "b", buffer, sizeof(buffer)));
    EXPECT_STREQ(buffer, "2");
    EXPECT_EQ(files.Entries().size(), 1);
}

TEST(KeyValueFile, TenMegabyteFile)
{
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    std::string content = "FIRST = 1\r\n";
    std::string filler;
    for (int i = 0; content.size() < 10u * 1024u * 1024u; ++i) {
        filler = "LINE" + std::to_string(i) + " = " + std::string(100, static_cast<char>('a' + i % 26)) + "\r\n";
        content += filler;
    }
    content += "LAST = \"end\"";
    const std::string path = files.Write("big.txt", content);
    char buffer[16] = {};

    EXPECT_TRUE(GetKeyValue(path.c_str(), "last", buffer, sizeof(buffer)));
    EXPECT_STREQ(buffer, "end");

    SetKeyValue(path.c_str(), "FIRST", "2");
    const std::string rewritten = CKeyValueTestFiles::Read(path);
    EXPECT_EQ(rewritten.size(), content.size() - std::strlen("FIRST = 1\r\n") + std::strlen("FIRST = 2\n"));
    EXPECT_EQ(rewritten.substr(0, 8), "LINE0 = ");
    const std::string tail = "\nLAST = \"end\"FIRST = 2\n";
    EXPECT_EQ(rewritten.substr(rewritten.size() - tail.size()), tail);
}

TEST(KeyValueFile, TenMegabyteLineWithoutLineEnd)
{
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    const std::string content = "K" + std::string(10u * 1024u * 1024u, 'v');
    const std::string path = files.Write("one-line.txt", content);
    char buffer[16] = "untouched";

    EXPECT_FALSE(GetKeyValue(path.c_str(), "K", buffer, sizeof(buffer)));
    EXPECT_STREQ(buffer, "untouched");
    SetKeyValue(path.c_str(), "A", "1");
    EXPECT_EQ(CKeyValueTestFiles::Read(path), content + "A = 1\n");
}

TEST(KeyValueFile, LongValueCutWithoutOverrun)
{
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    const std::string value(5000, 'x');
    const std::string path = files.Write("info.txt", "K = \"" + value + "\"\n");
    std::vector<char> buffer(600, '#');

    EXPECT_TRUE(GetKeyValue(path.c_str(), "K", buffer.data(), 512));
    EXPECT_EQ(std::string(buffer.data()), std::string(511, 'x'));
    EXPECT_EQ(buffer[512], '#');
}

TEST(KeyValueFile, SetThenGetWithLongKey)
{
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    const std::string key(600, 'K');
    const std::string path = files.Write("info.txt", key + " = old\r\nOTHER = 1\r\n");
    char buffer[16] = {};

    SetKeyValue(path.c_str(), key.c_str(), "new");
    EXPECT_EQ(CKeyValueTestFiles::Read(path), "OTHER = 1\r\n" + key + " = new\n");
    EXPECT_TRUE(GetKeyValue(path.c_str(), key.c_str(), buffer, sizeof(buffer)));
    EXPECT_STREQ(buffer, "new");
}

TEST(KeyValueFile, FileTooLongForASecondNameIsWrittenInPlace)
{
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    // 250 bytes is a valid name, but no name beside it with a suffix fits.
    const std::string path = files.Write(std::string(246, 'n') + ".txt", "A=1\nB=2\n");

    SetKeyValue(path.c_str(), "A", "3");
    EXPECT_EQ(CKeyValueTestFiles::Read(path), "B=2\nA = 3\n");
    EXPECT_EQ(files.Entries().size(), 1);
}

} // namespace

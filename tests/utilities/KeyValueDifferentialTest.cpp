#include "KeyValueFile.h"
#include "KeyValueTestFiles.h"
#include "KeyValueText.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <fstream>
#include <iterator>
#include <ostream>
#include <random>
#include <string>
#include <vector>

// The line rules against a plain reading of them: lines split byte by byte, trimmed, keys
// compared through tolower one byte at a time. The fast reader must agree on every input.
namespace {

using namespace std::string_literals;

bool IsEnd(char c)
{
    return c == '\r' || c == '\n';
}

bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

struct CRefLine
{
    std::size_t m_nBegin = 0; // where the line starts
    std::size_t m_nNext = 0;  // past the CR/LF run after it
    std::string m_strKey;
    bool m_bHasValue = false;
    std::string m_strValue;
};

std::vector<CRefLine> RefLines(const std::string& text)
{
    std::vector<CRefLine> lines;
    std::size_t pos = 0;
    while (pos < text.size()) {
        CRefLine line;
        line.m_nBegin = pos;
        std::size_t end = pos;
        while (end < text.size() && !IsEnd(text[end])) {
            ++end;
        }
        line.m_nNext = end;
        while (line.m_nNext < text.size() && IsEnd(text[line.m_nNext])) {
            ++line.m_nNext;
        }
        std::string body = text.substr(pos, end - pos);
        while (!body.empty() && IsBlank(body.front())) {
            body.erase(0, 1);
        }
        while (!body.empty() && IsBlank(body.back())) {
            body.pop_back();
        }
        const std::size_t equals = body.find('=');
        line.m_strKey = body.substr(0, equals);
        while (!line.m_strKey.empty() && IsBlank(line.m_strKey.back())) {
            line.m_strKey.pop_back();
        }
        if (line.m_strKey.size() > 511) {
            line.m_strKey.resize(511);
        }
        if (equals != std::string::npos) {
            line.m_bHasValue = true;
            std::string value = body.substr(equals + 1);
            while (!value.empty() && IsBlank(value.front())) {
                value.erase(0, 1);
            }
            if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
                value = value.substr(1, value.size() - 2);
            }
            line.m_strValue = value;
        }
        lines.push_back(line);
        pos = line.m_nNext;
    }
    return lines;
}

bool RefMatches(const std::string& lineKey, const char* key)
{
    if (key == nullptr || lineKey.empty()) {
        return false;
    }
    for (std::size_t i = 0; i < lineKey.size(); ++i) {
        if (key[i] == '\0'
            || std::tolower(static_cast<unsigned char>(lineKey[i])) != std::tolower(static_cast<unsigned char>(key[i]))) {
            return false;
        }
    }
    return true;
}

struct CFound
{
    bool m_bFound = false;
    bool m_bHasValue = false;
    std::string m_strValue;

    bool operator==(const CFound& other) const
    {
        return m_bFound == other.m_bFound && m_bHasValue == other.m_bHasValue && m_strValue == other.m_strValue;
    }
};

void PrintTo(const CFound& found, std::ostream* out)
{
    *out << (found.m_bFound ? "found" : "not found") << (found.m_bHasValue ? " with value " : " without value ")
         << ::testing::PrintToString(found.m_strValue);
}

CFound RefFind(const std::string& text, const char* key)
{
    CFound found;
    for (const CRefLine& line : RefLines(text)) {
        if (RefMatches(line.m_strKey, key)) {
            found.m_bFound = true;
            found.m_bHasValue = line.m_bHasValue;
            found.m_strValue = line.m_strValue;
            break;
        }
    }
    return found;
}

std::string RefRemove(const std::string& text, const char* key)
{
    std::string kept;
    for (const CRefLine& line : RefLines(text)) {
        if (!RefMatches(line.m_strKey, key)) {
            kept += text.substr(line.m_nBegin, line.m_nNext - line.m_nBegin);
        }
    }
    return kept;
}

CFound Find(const std::string& text, const char* key)
{
    CFound found;
    found.m_bFound = MV::KeyValue::FindKeyValue(text.data(), text.size(), key, found.m_strValue, found.m_bHasValue);
    return found;
}

void ExpectSame(const std::string& text, const char* key)
{
    SCOPED_TRACE(::testing::Message() << "text " << ::testing::PrintToString(text) << " key "
                                      << (key != nullptr ? ::testing::PrintToString(std::string(key)) : "null"));
    EXPECT_EQ(Find(text, key), RefFind(text, key));
    EXPECT_EQ(MV::KeyValue::RemoveKeyLines(text.data(), text.size(), key), RefRemove(text, key));
}

// Texts where a fast reader could go wrong: line ends of every kind and in runs, keys at and
// around the 511-byte cut, bytes above 0x7f, NUL bytes, "=" in odd places, quotes, and lines
// that cross the 64-byte steps in which line ends are looked for.
std::vector<std::string> TrickyTexts()
{
    const std::string k510(510, 'k');
    const std::string k511(511, 'k');
    const std::string k512(512, 'k');
    std::vector<std::string> texts = {
        "",
        "\n",
        "\r\r\n\n\r",
        "k",
        "k=",
        "k=v",
        "K = v\r\n",
        "a=1\rk=2\rk=3",
        "a=1\r\n\r\n\n\rk=2\n\r\nk=3\r",
        "=k\n= k\n=\nk",
        "  \t k \t = \t \"v\" \t \r\n",
        "k = \"\n",
        "k = \"\"\n",
        "k = \"a\"b\"\n",
        "k\t=\"a b\"\r",
        "k x = 1\nk = 2\n",
        "kk = 1\nk = 2\n",
        "k=1\0k=2\n\0k=3\nk\0=4"s,
        "\0\n\0=\0\n"s,
        "\x80k=1\n\xc0=2\n\xe9t\xe9 = 3\n\xff\n",
        "K\xc9Y = upper\nk\xe9y = lower\n",
        "GOZ = short\nGOZ_OBJECT_LIST = long\n",
        "goz_object_list\nGOZ_OBJECT_LIST = 2\n",
        "PATHX = y\npath = x\n",
        "a=b=c\nk==v\nk = = v\n",
        k510 + " = 510\n" + k511 + " = 511\n" + k512 + " = 512\n",
        k512 + "x = long\r\n" + k511 + "\r\n",
        std::string(600, ' ') + "k = far\n",
        std::string(63, 'x') + "\nk=63\n",
        std::string(62, 'x') + "\r\nk=62\n",
        std::string(63, 'x') + "\r\nk=split run\n",
        std::string(64, 'x') + "\nk=64\n",
        std::string(127, '\n') + "k=127",
        std::string(128, '\r') + "k=128\r",
        std::string(65, 'k') + " = 65\n" + std::string(129, 'k') + "\n",
        "x\n" + std::string(61, ' ') + "k = blanks over the step\n",
        std::string(200, '=') + "\nk=after equals\n",
    };
    return texts;
}

std::vector<std::string> TrickyKeys()
{
    return {"k",
            "K",
            "kk",
            "k x",
            "k\t",
            "k=",
            "=",
            "=k",
            "\r",
            "k\nk",
            "x",
            "GOZ_OBJECT_LIST",
            "path",
            "k\xe9y",
            "K\xc9Y",
            "\x80k",
            "\xff",
            std::string(510, 'k'),
            std::string(511, 'k'),
            std::string(512, 'k'),
            std::string(700, 'K'),
            std::string(65, 'k'),
            std::string(129, 'k') + "z"};
}

TEST(KeyValueDifferential, TrickyTextsReadAndRemovedAsByTheRules)
{
    const std::vector<std::string> keys = TrickyKeys();
    for (const std::string& text : TrickyTexts()) {
        ExpectSame(text, nullptr);
        ExpectSame(text, "");
        for (const std::string& key : keys) {
            ExpectSame(text, key.c_str());
            // The same line again after a long run of others, well past the first steps.
            ExpectSame(std::string(300, '\n') + "a = 1\r\n" + text, key.c_str());
        }
    }
}

TEST(KeyValueDifferential, EveryBytePairComparesAsTolower)
{
    // Each byte of a line's key against each byte of the request, at the first position, the
    // second, and past a run of eight equal bytes.
    for (const std::string prefix : {""s, "a"s, "abcdefghijkl"s}) {
        for (int lineByte = 0; lineByte < 256; ++lineByte) {
            const std::string text = prefix + static_cast<char>(lineByte) + "=v\n";
            for (int keyByte = 1; keyByte < 256; ++keyByte) {
                const std::string key = prefix + static_cast<char>(keyByte);
                const bool expected = RefFind(text, key.c_str()).m_bFound;
                if (Find(text, key.c_str()).m_bFound != expected) {
                    ADD_FAILURE() << "line byte " << lineByte << ", request byte " << keyByte << ", after "
                                  << prefix.size() << " bytes";
                    return;
                }
            }
        }
    }
}

TEST(KeyValueDifferential, GeneratedTextsReadAndRemovedAsByTheRules)
{
    // Few distinct bytes so that keys, blanks, "=", quotes and line ends meet often, and texts
    // long enough to span several 64-byte steps.
    const std::string alphabet = "kKx  \t==\r\n\n\"\xe9\xc9"s + '\0';
    const std::vector<std::string> keys = {"k", "K", "kx", "kK", "k k", "k=", "xk", "\xe9", "kkkkkkkkkkkk"};
    std::mt19937 random(20261115u);
    for (int round = 0; round < 4000 && !HasFailure(); ++round) {
        std::string text;
        const int length = static_cast<int>(random() % 300);
        for (int i = 0; i < length; ++i) {
            text.push_back(alphabet[random() % alphabet.size()]);
        }
        ExpectSame(text, keys[random() % keys.size()].c_str());
    }
}

TEST(KeyValueDifferential, FilesReadAndRewrittenAsByTheRules)
{
    CKeyValueTestFiles files;
    ASSERT_TRUE(files.IsValid());
    const std::vector<std::string> keys = {"k", "K", "kk", "GOZ_OBJECT_LIST", std::string(511, 'k')};
    for (const std::string& text : TrickyTexts()) {
        for (const std::string& key : keys) {
            SCOPED_TRACE(::testing::Message() << "text " << ::testing::PrintToString(text) << " key " << key.size());
            const std::string path = files.Write("info.txt", text);
            const CFound expected = RefFind(text, key.c_str());
            char value[1024] = "untouched";
            ASSERT_EQ(GetKeyValue(path.c_str(), key.c_str(), value, sizeof(value)), expected.m_bFound);
            // The buffer holds a C string: the value up to its first NUL byte, cut to fit.
            const std::string expectedValue =
                expected.m_bHasValue ? std::string(expected.m_strValue.c_str()).substr(0, sizeof(value) - 1) : "untouched";
            EXPECT_EQ(std::string(value), expectedValue);

            SetKeyValue(path.c_str(), key.c_str(), "new");
            EXPECT_EQ(CKeyValueTestFiles::Read(path), RefRemove(text, key.c_str()) + key + " = new\n");
        }
    }
}

TEST(KeyValueDifferential, FileThatTellsNoSizeReadToItsEnd)
{
    // Such files say they are empty but are not; Linux has them under /proc.
    const char* path = "/proc/self/environ";
    std::ifstream in(path, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(in), {});
    const std::size_t equals = text.find('=');
    if (text.empty() || equals == 0 || equals == std::string::npos) {
        GTEST_SKIP() << path << " cannot be read here";
    }
    const std::string key = text.substr(0, equals);
    const CFound expected = RefFind(text, key.c_str());
    ASSERT_TRUE(expected.m_bFound);
    char value[1024] = {};
    EXPECT_TRUE(GetKeyValue(path, key.c_str(), value, sizeof(value)));
    EXPECT_EQ(std::string(value), std::string(expected.m_strValue.c_str()).substr(0, sizeof(value) - 1));
}

} // namespace

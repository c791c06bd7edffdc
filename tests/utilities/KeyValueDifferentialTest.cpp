#include "KeyValueFile.h"
#include "KeyValueReference.h"
#include "KeyValueTestFiles.h"
#include "KeyValueText.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include <fstream>
#include <iterator>
#include <ostream>
#include <random>
#include <string>
#include <vector>

// The fast reader and writer against the plain reading of the line rules that the fuzz
// targets use as their oracle. They must agree on every input.
namespace {

using namespace std::string_literals;
using namespace MV::Fuzz;

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

// A null request answers nothing, as an empty one does.
CFound RefFound(const std::string& text, const char* key)
{
    const std::vector<CRefLine> lines = RefLines(text);
    const CRefLine* line = RefFind(lines, key != nullptr ? key : "");
    return line != nullptr ? CFound{true, line->m_bHasValue, line->m_strValue} : CFound{};
}

std::string RefRemoved(const std::string& text, const char* key)
{
    return RefKept(text, RefLines(text), key != nullptr ? key : "");
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
    EXPECT_EQ(Find(text, key), RefFound(text, key));
    EXPECT_EQ(MV::KeyValue::RemoveKeyLines(text.data(), text.size(), key), RefRemoved(text, key));
}

// Texts where a fast reader could go wrong: line ends of every kind and in runs, keys at and
// around the 511-byte cut, bytes above 0x7f, NUL bytes, "=" in odd places, quotes, lines
// that cross the 64-byte steps in which line ends are looked for; then the inputs kept in
// tests/data/keyvalue/.
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
    const QDir folder(QStringLiteral(MVGOZ_KEYVALUE_DATA_DIR));
    const QStringList names = folder.entryList(QDir::Files, QDir::Name);
    EXPECT_FALSE(names.isEmpty()) << "no inputs in " << MVGOZ_KEYVALUE_DATA_DIR;
    for (const QString& name : names) {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
        texts.push_back(file.readAll().toStdString());
    }
    return texts;
}

TEST(KeyValueDifferential, TrickyTextsReadAndRemovedAsByTheRules)
{
    const std::vector<std::string> keys = {"k", "K", "kk", "k x", "k\t", "k=", "=", "=k", "\r", "k\nk", "x",
                                           "GOZ", "GOZ_OBJECT_LIST", "path", "k\xe9y", "K\xc9Y", "\x80k", "\xff",
                                           std::string(510, 'k'), std::string(511, 'k'), std::string(512, 'k'),
                                           std::string(700, 'K'), std::string(65, 'k'), std::string(129, 'k') + "z"};
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
                if (Find(text, key.c_str()).m_bFound != RefFound(text, key.c_str()).m_bFound) {
                    ADD_FAILURE() << "line byte " << lineByte << ", request byte " << keyByte << ", after "
                                  << prefix.size() << " bytes";
                    return;
                }
            }
        }
    }
}

TEST(KeyValueDifferential, GeneratedTextsReadRemovedAndRewrittenAsByTheRules)
{
    // Few distinct bytes so that keys, blanks, "=", quotes and line ends meet often, and texts
    // long enough to span several 64-byte steps.
    const std::string alphabet = "kKx  \t==\r\n\n\"\xe9\xc9"s + '\0';
    const std::vector<std::string> keys = {"k", "K", "kx", "kK", "k k", "k=", "xk", "\xe9", "kkkkkkkkkkkk"};
    const std::vector<std::string> values = {"", "v", "q\"", "x=y", "a b"};
    std::mt19937 random(20261115u);
    for (int round = 0; round < 4000 && !HasFailure(); ++round) {
        std::string text;
        const int length = static_cast<int>(random() % 300);
        for (int i = 0; i < length; ++i) {
            text.push_back(alphabet[random() % alphabet.size()]);
        }
        const std::string& key = keys[random() % keys.size()];
        ExpectSame(text, key.c_str());
        // The line a set appends after what is kept must read back as its value.
        const std::string kept = MV::KeyValue::RemoveKeyLines(text.data(), text.size(), key.c_str());
        const std::string& value = values[random() % values.size()];
        if (key.find_first_of("= ") == std::string::npos && (kept.empty() || RefIsEnd(kept.back()))) {
            EXPECT_EQ(Find(kept + key + " = " + value + "\n", key.c_str()), (CFound{true, true, value}))
                << ::testing::PrintToString(kept);
        }
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
            const CFound expected = RefFound(text, key.c_str());
            char value[1024] = "untouched";
            ASSERT_EQ(GetKeyValue(path.c_str(), key.c_str(), value, sizeof(value)), expected.m_bFound);
            // The buffer holds a C string: the value up to its first NUL byte, cut to fit.
            const std::string expectedValue =
                expected.m_bHasValue ? std::string(expected.m_strValue.c_str()).substr(0, sizeof(value) - 1) : "untouched";
            EXPECT_EQ(std::string(value), expectedValue);

            SetKeyValue(path.c_str(), key.c_str(), "new");
            EXPECT_EQ(CKeyValueTestFiles::Read(path), RefRemoved(text, key.c_str()) + key + " = new\n");
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
    const CFound expected = RefFound(text, key.c_str());
    ASSERT_TRUE(expected.m_bFound);
    char value[1024] = {};
    EXPECT_TRUE(GetKeyValue(path, key.c_str(), value, sizeof(value)));
    EXPECT_EQ(std::string(value), std::string(expected.m_strValue.c_str()).substr(0, sizeof(value) - 1));
}

} // namespace

#include "KeyValueText.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <QDir>
#include <QFile>

#include <cstring>
#include <random>
#include <string>
#include <vector>

// Properties of the line rules over many generated texts, plus replay of inputs kept in
// tests/data/keyvalue/.
namespace {

bool Find(const std::string& text, const std::string& key, std::string& value)
{
    bool hasValue = false;
    return MV::KeyValue::FindKeyValue(text.data(), text.size(), key.c_str(), value, hasValue);
}

std::string Remove(const std::string& text, const std::string& key)
{
    return MV::KeyValue::RemoveKeyLines(text.data(), text.size(), key.c_str());
}

bool EndsWithLineEndOrEmpty(const std::string& text)
{
    return text.empty() || text.back() == '\n' || text.back() == '\r';
}

// Checks that hold for any text and a plain key (no blanks at its ends, no "=", no line ends).
void CheckProperties(const std::string& text, const std::string& key, const std::string& value)
{
    const std::string kept = Remove(text, key);
    std::string found;
    EXPECT_LE(kept.size(), text.size());
    EXPECT_FALSE(Find(kept, key, found)) << "a line of the key survived";
    EXPECT_EQ(Remove(kept, key), kept);

    // What SetKeyValue writes must read back as the new value.
    const std::string written = kept + key + " = " + value + "\n";
    if (EndsWithLineEndOrEmpty(kept)) {
        ASSERT_TRUE(Find(written, key, found));
        EXPECT_EQ(found, value);
        EXPECT_EQ(Remove(written, key), kept);
    }
}

TEST(KeyValueText, KeyMatchesByPrefixIgnoringCase)
{
    const struct
    {
        const char* lineKey;
        const char* key;
        bool matches;
    } cases[] = {
        {"GOZ", "GOZ_OBJECT_LIST", true}, {"goz_object_list", "GOZ_OBJECT_LIST", true},
        {"GOZ_OBJECT_LISTS", "GOZ_OBJECT_LIST", false}, {"GOY", "GOZ", false},
        {"", "GOZ", false}, {"GOZ", "", false}, {"GOZ", nullptr, false},
        {"\xc9", "\xc9", true}, {"_", "\x7f", false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(MV::KeyValue::KeyMatches(c.lineKey, std::strlen(c.lineKey), c.key), c.matches)
            << c.lineKey << " / " << (c.key != nullptr ? c.key : "(null)");
    }
}

TEST(KeyValueText, LineWithoutEqualsHasNoValue)
{
    const std::string text = "A = 1\nKEY\nKEY = 2\n";
    std::string value = "old";
    bool hasValue = true;
    EXPECT_TRUE(MV::KeyValue::FindKeyValue(text.data(), text.size(), "key", value, hasValue));
    EXPECT_FALSE(hasValue);
    EXPECT_EQ(value, "old");
}

TEST(KeyValueText, GeneratedTextsKeepTheRules)
{
    // Few distinct bytes so that keys, blanks, quotes and line ends collide often.
    const std::string alphabet = std::string("aAbB=  \t\r\n\"\xff", 12) + std::string(1, '\0');
    const std::vector<std::string> keys = {"a", "A", "ab", "B", "aB", "ba", "aaa"};
    const std::vector<std::string> values = {"", "v", "q\"", "x=y", "a b"};
    std::mt19937 random(20261115u);
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        const int length = static_cast<int>(random() % 60);
        for (int i = 0; i < length; ++i) {
            text.push_back(alphabet[random() % alphabet.size()]);
        }
        const std::string& key = keys[random() % keys.size()];
        const std::string& value = values[random() % values.size()];
        SCOPED_TRACE(::testing::Message() << "round " << round << " text " << ::testing::PrintToString(text));
        CheckProperties(text, key, value);
        if (HasFailure()) {
            return;
        }
    }
}

TEST(KeyValueText, KeptInputsReplay)
{
    const QDir folder(QStringLiteral(MVGOZ_KEYVALUE_DATA_DIR));
    const QStringList names = folder.entryList(QDir::Files, QDir::Name);
    ASSERT_FALSE(names.isEmpty()) << "no inputs in " << MVGOZ_KEYVALUE_DATA_DIR;
    for (const QString& name : names) {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
        const QByteArray bytes = file.readAll();
        const std::string text(bytes.constData(), static_cast<std::size_t>(bytes.size()));
        SCOPED_TRACE(name.toStdString());
        for (const char* key : {"GOZ", "GOZ_OBJECT_LIST", "PATH", "k"}) {
            CheckProperties(text, key, "value");
        }
    }
}

} // namespace

#include "KeyValueText.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <QDir>
#include <QFile>

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

// Checks that hold for any text and a plain key (no blanks at its ends, no "=", no line ends).
void CheckProperties(const std::string& text, const std::string& key, const std::string& value)
{
    const std::string kept = Remove(text, key);
    std::string found;
    EXPECT_LE(kept.size(), text.size());
    EXPECT_FALSE(Find(kept, key, found)) << "a line of the key survived";
    EXPECT_EQ(Remove(kept, key), kept);

    // What SetKeyValue writes must read back as the new value.
    if (kept.empty() || kept.back() == '\n' || kept.back() == '\r') {
        const std::string written = kept + key + " = " + value + "\n";
        ASSERT_TRUE(Find(written, key, found));
        EXPECT_EQ(found, value);
        EXPECT_EQ(Remove(written, key), kept);
    }
}

TEST(KeyValueText, GeneratedTextsKeepTheRules)
{
    // Few distinct bytes so that keys, blanks, quotes and line ends collide often.
    const std::string alphabet = std::string("aAbB=  \t\r\n\"\xff", 12) + std::string(1, '\0');
    const std::vector<std::string> keys = {"a", "A", "ab", "B", "aB", "ba", "aaa"};
    const std::vector<std::string> values = {"", "v", "q\"", "x=y", "a b"};
    std::mt19937 random(20261115u);
    for (int round = 0; round < 3000 && !HasFailure(); ++round) {
        std::string text;
        const int length = static_cast<int>(random() % 60);
        for (int i = 0; i < length; ++i) {
            text.push_back(alphabet[random() % alphabet.size()]);
        }
        const std::string& key = keys[random() % keys.size()];
        const std::string& value = values[random() % values.size()];
        SCOPED_TRACE(::testing::Message() << "round " << round << " text " << ::testing::PrintToString(text));
        CheckProperties(text, key, value);
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
        SCOPED_TRACE(name.toStdString());
        for (const char* key : {"GOZ", "GOZ_OBJECT_LIST", "PATH", "k"}) {
            CheckProperties(bytes.toStdString(), key, "value");
        }
    }
}

} // namespace

#include "EnvironmentGuard.h"
#include "Platform.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QTemporaryDir>

#include <cstdio>
#include <ostream>
#include <string>
#include <vector>

namespace {

using namespace std::string_literals;
using MV::Platform::NarrowToWide;
using MV::Platform::WideToNarrow;

struct Latin1Case
{
    const char* name;
    std::wstring wide;
    std::string narrow;
};

void PrintTo(const Latin1Case& c, std::ostream* out)
{
    *out << c.name;
}

class WideToNarrowTable : public ::testing::TestWithParam<Latin1Case>
{
};

TEST_P(WideToNarrowTable, KeepsLatin1AndReplacesTheRest)
{
    EXPECT_EQ(WideToNarrow(GetParam().wide), GetParam().narrow);
}

INSTANTIATE_TEST_SUITE_P(
    Platform, WideToNarrowTable,
    ::testing::Values(Latin1Case{"Ascii", L"C:/Users/Public/a.txt", "C:/Users/Public/a.txt"},
                      Latin1Case{"Accents", L"caf\u00e9 \u00fc\u00df", "caf\xe9 \xfc\xdf"},
                      Latin1Case{"LastLatin1", L"\u00ff", "\xff"},
                      Latin1Case{"FirstBeyondLatin1", L"\u0100", "?"},
                      Latin1Case{"Cjk", L"a\u4e2db", "a?b"},
                      Latin1Case{"BeyondBmpIsOneCharacter", L"x\U0001F600y", "x?y"},
                      Latin1Case{"NegativeWcharNotTruncated", std::wstring(1, static_cast<wchar_t>(-1)), "?"},
                      Latin1Case{"EmbeddedZeroKept", std::wstring(L"a\0b", 3), "a\0b"s},
                      Latin1Case{"Empty", L"", ""}),
    [](const ::testing::TestParamInfo<Latin1Case>& info) { return std::string(info.param.name); });

TEST(Platform, NarrowToWideRoundTripsEveryByte)
{
    std::string bytes;
    for (int i = 0; i < 256; ++i) {
        bytes.push_back(static_cast<char>(i));
    }
    const std::wstring wide = NarrowToWide(bytes);
    ASSERT_EQ(wide.size(), 256u);
    for (int i = 0; i < 256; ++i) {
        EXPECT_EQ(static_cast<long>(wide[static_cast<std::size_t>(i)]), i);
    }
    EXPECT_EQ(WideToNarrow(wide), bytes);
}

class PlatformRegistry : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_kDir.isValid());
        m_strFile = m_kDir.filePath(QStringLiteral("registry.txt")).toStdString();
        m_kEnvironment.Set("MVGOZ_REGISTRY_FILE", QByteArray::fromStdString(m_strFile));
    }

    void WriteRegistry(const std::string& text)
    {
        std::FILE* file = std::fopen(m_strFile.c_str(), "wb");
        ASSERT_NE(file, nullptr);
        std::fwrite(text.data(), 1, text.size(), file);
        std::fclose(file);
    }

    QTemporaryDir m_kDir;
    std::string m_strFile;
    CEnvironmentGuard m_kEnvironment;
};

TEST_F(PlatformRegistry, ReadsEntriesByKeyAndName)
{
    WriteRegistry("# the reference host's entries\n"
                  "SOFTWARE\\Quorvane\\Figmora\\4.0\tMain Program\tC:\\Program Files\\Figmora\\Figmora.exe\n"
                  "software\\quorvane\\figmora\\4.0\tUnicode\tCaf\xc3\xa9 \xe4\xb8\xad\n"
                  "SOFTWARE\\Test\tDword\t42\tREG_DWORD\n"
                  "SOFTWARE\\Test\tTyped\tabc\treg_sz\n"
                  "SOFTWARE\\Test\tOverridden\tfirst\n"
                  "SOFTWARE\\Test\tOverridden\tsecond\n"
                  "SOFTWARE\\Test\tEmpty\t\n"
                  "SOFTWARE\\Test\t\tdefault\n"
                  "line without fields\n"
                  "SOFTWARE\\Test\tCrLf\tvalue\r\n"
                  "SOFTWARE\\Test\tTooMany\ta\tREG_SZ\textra\n");
    const struct
    {
        const wchar_t* subKey;
        const wchar_t* name;
        long result;
        const wchar_t* value; // nullptr: left as it was
    } cases[] = {
        {L"SOFTWARE\\Quorvane\\Figmora\\4.0", L"Main Program", 0, L"C:\\Program Files\\Figmora\\Figmora.exe"},
        {L"Software\\QUORVANE\\Figmora\\4.0", L"main program", 0, L"C:\\Program Files\\Figmora\\Figmora.exe"},
        {L"SOFTWARE\\Quorvane\\Figmora\\4.0", L"Unicode", 0, L"Caf\u00e9 \u4e2d"},
        {L"SOFTWARE\\Quorvane\\Figmora\\4.0", L"Missing", 2, nullptr},
        {L"SOFTWARE\\Quorvane\\Figmora", L"Main Program", 2, nullptr},
        {L"SOFTWARE\\Test", L"Dword", 1630, nullptr},
        {L"SOFTWARE\\Test", L"Typed", 0, L"abc"},
        {L"SOFTWARE\\Test", L"Overridden", 0, L"second"},
        {L"SOFTWARE\\Test", L"Empty", 0, L""},
        {L"SOFTWARE\\Test", L"", 0, L"default"},
        {L"SOFTWARE\\Test", L"CrLf", 0, L"value"},
        {L"SOFTWARE\\Test", L"TooMany", 2, nullptr},
    };
    for (const auto& c : cases) {
        std::wstring value = L"untouched";
        EXPECT_EQ(MV::Platform::ReadLocalMachineString(c.subKey, c.name, value), c.result)
            << WideToNarrow(c.subKey) << " / " << WideToNarrow(c.name);
        EXPECT_EQ(value, c.value != nullptr ? c.value : L"untouched") << WideToNarrow(c.name);
    }
}

TEST_F(PlatformRegistry, NothingSetReadsAsFileNotFound)
{
    std::wstring value = L"untouched";
    // Named file missing.
    EXPECT_EQ(MV::Platform::ReadLocalMachineString(L"SOFTWARE\\Test", L"Any", value), 2);
    m_kEnvironment.Set("MVGOZ_REGISTRY_FILE", QByteArray(""));
    EXPECT_EQ(MV::Platform::ReadLocalMachineString(L"SOFTWARE\\Test", L"Any", value), 2);
    m_kEnvironment.Unset("MVGOZ_REGISTRY_FILE");
    EXPECT_EQ(MV::Platform::ReadLocalMachineString(L"SOFTWARE\\Test", L"Any", value), 2);
    EXPECT_EQ(value, L"untouched");
}

TEST(Platform, EnvironmentNamesIgnoreCase)
{
    CEnvironmentGuard environment;
    environment.Set("MvGoZ_Test_Mixed", "mixed");
    environment.Set("MVGOZ_TEST_DUP", "upper");
    environment.Set("mvgoz_test_dup", "lower");
    environment.Set("MVGOZ_TEST_EMPTY", "");
    environment.Set("MVGOZ_TEST_UTF8", "Gr\xc3\xbc\xc3\x9f" "e \xe9");
    environment.Unset("MVGOZ_TEST_UNSET");
    const struct
    {
        const wchar_t* name;
        bool found;
        const wchar_t* value; // nullptr: left as it was
    } cases[] = {
        {L"MVGOZ_TEST_MIXED", true, L"mixed"},
        {L"mvgoz_test_mixed", true, L"mixed"},
        {L"MVGOZ_TEST_DUP", true, L"upper"},
        {L"mvgoz_test_dup", true, L"lower"},
        {L"MVGOZ_TEST_EMPTY", true, L""},
        {L"MVGOZ_TEST_UTF8", true, L"Gr\u00fc\u00dfe \u00e9"},
        {L"MVGOZ_TEST_UNSET", false, nullptr},
        {L"MVGOZ_TEST_MIXE", false, nullptr},
        {L"", false, nullptr},
    };
    for (const auto& c : cases) {
        std::wstring value = L"untouched";
        EXPECT_EQ(MV::Platform::GetEnvironmentValue(c.name, value), c.found) << WideToNarrow(c.name);
        EXPECT_EQ(value, c.value != nullptr ? c.value : L"untouched") << WideToNarrow(c.name);
    }
}

TEST(Platform, ExecutablePathIsThisProgram)
{
    const std::wstring path = MV::Platform::GetExecutablePath();
    const QString expected = QFileInfo(QCoreApplication::applicationFilePath()).canonicalFilePath();
    ASSERT_LT(expected.size(), 260) << "build folder too deep for this check";
    EXPECT_EQ(QString::fromStdWString(path), expected);
}

TEST(Platform, FileBesideIsNewAndPrivateToItsFolder)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const std::string target = dir.filePath(QStringLiteral("config.txt")).toStdString();
    std::FILE* original = std::fopen(target.c_str(), "wb");
    ASSERT_NE(original, nullptr);
    std::fputs("old", original);
    std::fclose(original);

    std::string first;
    std::string second;
    std::FILE* a = MV::Platform::CreateFileBeside(target, first);
    std::FILE* b = MV::Platform::CreateFileBeside(target, second);
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    EXPECT_NE(first, second);
    EXPECT_EQ(QFileInfo(QString::fromStdString(first)).absolutePath(), dir.path());
    std::fputs("new", a);
    EXPECT_TRUE(MV::Platform::CommitAndClose(a));
    EXPECT_TRUE(MV::Platform::CommitAndClose(b));

    EXPECT_TRUE(MV::Platform::MoveFileOver(first, target));
    QFile moved(QString::fromStdString(target));
    ASSERT_TRUE(moved.open(QIODevice::ReadOnly));
    EXPECT_EQ(moved.readAll(), QByteArray("new"));
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(first)));
    EXPECT_FALSE(MV::Platform::MoveFileOver(first, target));
    std::remove(second.c_str());
}

} // namespace

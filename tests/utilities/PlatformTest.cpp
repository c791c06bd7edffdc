#include "EnvironmentGuard.h"
#include "Platform.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QTemporaryDir>

#include <fstream>
#include <iterator>
#include <string>

namespace {

using namespace std::string_literals;
using MV::Platform::NarrowToWide;
using MV::Platform::WideToNarrow;

TEST(Platform, Latin1BothWays)
{
    const struct
    {
        std::wstring wide;
        std::string narrow;
        bool carried;
    } cases[] = {
        {L"caf\u00e9 \u00fc\u00df", "caf\xe9 \xfc\xdf", true},
        {L"\u00ff\u0100", "\xff?", false},
        {L"a\u4e2db", "a?b", false},
        {L"x\U0001F600y", "x?y", false}, // one character beyond the BMP, one '?'
        {std::wstring(1, static_cast<wchar_t>(-1)), "?", false},
        {std::wstring(L"a\0b", 3), "a\0b"s, true},
        {L"", "", true},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(WideToNarrow(c.wide), c.narrow);
        EXPECT_EQ(MV::Platform::IsNarrowText(c.wide), c.carried) << c.narrow;
    }

    std::string bytes;
    std::wstring codes;
    for (int i = 0; i < 256; ++i) {
        bytes.push_back(static_cast<char>(i));
        codes.push_back(static_cast<wchar_t>(i));
    }
    EXPECT_EQ(NarrowToWide(bytes), codes);
    EXPECT_EQ(WideToNarrow(codes), bytes);
}

TEST(Platform, RegistryStandInReadsEntriesByKeyAndName)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const std::string file = dir.filePath(QStringLiteral("registry.txt")).toStdString();
    CEnvironmentGuard environment;
    environment.Set("MVGOZ_REGISTRY_FILE", QByteArray::fromStdString(file));
    std::wstring value = L"untouched";
    EXPECT_EQ(MV::Platform::ReadLocalMachineString(L"SOFTWARE\\Test", L"Any", value), 2) << "file missing";

    std::ofstream(file, std::ios::binary)
        << "# the reference host's entries\n"
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
           "SOFTWARE\\Test\tTooMany\ta\tREG_SZ\textra\n";
    const struct
    {
        const wchar_t* subKey;
        const wchar_t* name;
        long result;
        const wchar_t* value; // nullptr: left as it was
    } cases[] = {
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
        value = L"untouched";
        EXPECT_EQ(MV::Platform::ReadLocalMachineString(c.subKey, c.name, value), c.result)
            << WideToNarrow(c.subKey) << " / " << WideToNarrow(c.name);
        EXPECT_EQ(value, c.value != nullptr ? c.value : L"untouched") << WideToNarrow(c.name);
    }

    // Without the variable (or with it empty) nothing is found.
    for (const bool set : {true, false}) {
        set ? environment.Set("MVGOZ_REGISTRY_FILE", QByteArray("")) : environment.Unset("MVGOZ_REGISTRY_FILE");
        EXPECT_EQ(MV::Platform::ReadLocalMachineString(L"SOFTWARE\\Test", L"Typed", value), 2) << set;
    }
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
    const QString expected = QFileInfo(QCoreApplication::applicationFilePath()).canonicalFilePath();
    ASSERT_LT(expected.size(), 260) << "build folder too deep for this check";
    EXPECT_EQ(QString::fromStdWString(MV::Platform::GetExecutablePath()), expected);
}

TEST(Platform, FileBesideIsNewAndMovesOver)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const std::string target = dir.filePath(QStringLiteral("config.txt")).toStdString();
    std::ofstream(target, std::ios::binary) << "old";

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
    std::ifstream moved(target, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(moved), {}), "new");
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(first)));
    EXPECT_FALSE(MV::Platform::MoveFileOver(first, target)) << "source is gone";
}

} // namespace

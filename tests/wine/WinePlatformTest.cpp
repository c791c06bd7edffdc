// The Windows platform layer and the key = value files, run under wine.
// run-wine-tests.sh fills the registry and the environment that these checks expect.

#include "KeyValueFile.h"
#include "MiniTest.h"
#include "Platform.h"

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

using MV::Platform::NarrowToWide;
using MV::Platform::WideToNarrow;

const wchar_t kTestKey[] = L"SOFTWARE\\MVGoZWineTest";

std::string Show(const std::wstring& text)
{
    return "\"" + WideToNarrow(text) + "\"";
}

std::string ReadBytes(const char* path)
{
    std::string bytes;
    std::FILE* file = std::fopen(path, "rb");
    if (file == nullptr) {
        return "<missing>";
    }
    char chunk[4096];
    std::size_t count = 0;
    while ((count = std::fread(chunk, 1, sizeof(chunk), file)) > 0) {
        bytes.append(chunk, count);
    }
    std::fclose(file);
    return bytes;
}

void WriteBytes(const char* path, const std::string& bytes)
{
    std::FILE* file = std::fopen(path, "wb");
    MINI_CHECK_MSG(file != nullptr, path);
    if (file != nullptr) {
        std::fwrite(bytes.data(), 1, bytes.size(), file);
        std::fclose(file);
    }
}

// Files that SetKeyValue put beside its target and did not clean up.
int LeftoverCount()
{
    WIN32_FIND_DATAA data;
    HANDLE find = FindFirstFileA("*.~mvgoz*", &data);
    if (find == INVALID_HANDLE_VALUE) {
        return 0;
    }
    int count = 0;
    do {
        ++count;
    } while (FindNextFileA(find, &data));
    FindClose(find);
    return count;
}

bool EndsWithIgnoringCase(const std::wstring& text, const std::wstring& tail)
{
    if (tail.size() > text.size()) {
        return false;
    }
    return CompareStringOrdinal(text.c_str() + (text.size() - tail.size()), static_cast<int>(tail.size()),
                                tail.c_str(), static_cast<int>(tail.size()), TRUE)
        == CSTR_EQUAL;
}

// Values that reg.exe cannot write: REG_SZ data without its terminator.
void WriteRawStringValue(const wchar_t* name, const void* data, DWORD bytes)
{
    HKEY key = nullptr;
    LONG result = RegCreateKeyExW(HKEY_LOCAL_MACHINE, kTestKey, 0, nullptr, 0, KEY_SET_VALUE | KEY_WOW64_64KEY,
                                  nullptr, &key, nullptr);
    MINI_CHECK_MSG(result == ERROR_SUCCESS, "RegCreateKeyExW " + std::to_string(result));
    if (result == ERROR_SUCCESS) {
        result = RegSetValueExW(key, name, 0, REG_SZ, static_cast<const BYTE*>(data), bytes);
        MINI_CHECK_MSG(result == ERROR_SUCCESS, "RegSetValueExW " + std::to_string(result));
        RegCloseKey(key);
    }
}

MINI_TEST(RegistryReadsStringsAndTellsFailures)
{
    const wchar_t noTerminator[] = {L'a', L'b', L'c'};
    WriteRawStringValue(L"NoTerminator", noTerminator, sizeof(noTerminator));
    WriteRawStringValue(L"OddByteCount", L"abc", 7);
    const std::wstring longValue(600, L'x');
    const struct
    {
        const wchar_t* subKey;
        const wchar_t* name;
        long result;
        std::wstring value; // L"untouched" when the read fails
    } cases[] = {
        {kTestKey, L"Main Program", 0, L"C:\\Program Files\\Figmora\\Figmora.exe"},
        {L"software\\mvgozwinetest", L"MAIN PROGRAM", 0, L"C:\\Program Files\\Figmora\\Figmora.exe"},
        {kTestKey, L"Accented", 0, L"Caf\u00e9 \u00fc\u00df"},
        {kTestKey, L"Empty", 0, L""},
        {kTestKey, L"Long", 0, longValue},
        {kTestKey, L"NoTerminator", 0, L"abc"},
        {kTestKey, L"OddByteCount", 0, L"abc"},
        {kTestKey, L"Missing", 2, L"untouched"},
        {L"SOFTWARE\\MVGoZWineTestMissing", L"Main Program", 2, L"untouched"},
        {kTestKey, L"Count", 1630, L"untouched"},
        {kTestKey, L"Expandable", 1630, L"untouched"},
        // Written to the 32-bit view only; the 64-bit view must not see it.
        {L"SOFTWARE\\MVGoZWineTest32", L"Only32", 2, L"untouched"},
    };
    for (const auto& c : cases) {
        std::wstring value = L"untouched";
        const long result = MV::Platform::ReadLocalMachineString(c.subKey, c.name, value);
        MINI_CHECK_MSG(result == c.result, WideToNarrow(c.name) + " gave " + std::to_string(result));
        MINI_CHECK_MSG(value == c.value, WideToNarrow(c.name) + " read " + Show(value));
    }
}

MINI_TEST(EnvironmentIgnoresCaseAndTellsUnsetFromEmpty)
{
    MINI_CHECK(SetEnvironmentVariableW(L"MVGOZ_WINE_EMPTY", L"") != 0);
    MINI_CHECK(SetEnvironmentVariableW(L"MVGOZ_WINE_UNSET", nullptr) != 0 || GetLastError() == ERROR_ENVVAR_NOT_FOUND);
    const std::wstring longValue(5000, L'v');
    MINI_CHECK(SetEnvironmentVariableW(L"MVGOZ_WINE_LONG", longValue.c_str()) != 0);
    const struct
    {
        const wchar_t* name;
        bool found;
        std::wstring value;
    } cases[] = {
        {L"MVGOZ_WINE_MIXED", true, L"mixed"}, // set as MvGoZ_Wine_Mixed by the script
        {L"mvgoz_wine_mixed", true, L"mixed"},
        {L"MVGOZ_WINE_EMPTY", true, L""},
        {L"MVGOZ_WINE_LONG", true, longValue},
        {L"MVGOZ_WINE_UNSET", false, L"untouched"},
        {L"", false, L"untouched"},
    };
    for (const auto& c : cases) {
        std::wstring value = L"untouched";
        MINI_CHECK_MSG(MV::Platform::GetEnvironmentValue(c.name, value) == c.found, WideToNarrow(c.name));
        MINI_CHECK_MSG(value == c.value, WideToNarrow(c.name) + " read " + Show(value.substr(0, 40)));
    }
    std::wstring publicFolder;
    MINI_CHECK(MV::Platform::GetEnvironmentValue(L"public", publicFolder));
    MINI_CHECK_MSG(!publicFolder.empty(), "public is " + Show(publicFolder));
}

MINI_TEST(ExecutablePathNamesThisProgram)
{
    const std::wstring path = MV::Platform::GetExecutablePath();
    MINI_CHECK_MSG(EndsWithIgnoringCase(path, L"\\mvgoz_wine_platform_test.exe"), Show(path));
    MINI_CHECK(path.size() < 260);
}

MINI_TEST(Latin1WithTwoByteWideCharacters)
{
    MINI_CHECK(sizeof(wchar_t) == 2);
    const struct
    {
        std::wstring wide;
        std::string narrow;
    } cases[] = {
        {L"caf\u00e9 \u00fc\u00df", "caf\xe9 \xfc\xdf"},
        {L"a\u4e2db", "a?b"},
        {L"\u00ff\u0100", "\xff?"},
        {L"x\U0001F600y", "x?y"},                      // a surrogate pair is one character
        {std::wstring(1, wchar_t(0xD800)) + L"a", "?a"}, // lone high surrogate
        {std::wstring(1, wchar_t(0xDC00)), "?"},         // lone low surrogate
        {std::wstring(L"a\0b", 3), std::string("a\0b", 3)},
    };
    for (const auto& c : cases) {
        MINI_CHECK_MSG(WideToNarrow(c.wide) == c.narrow, "gave " + WideToNarrow(c.wide));
    }
    std::string bytes;
    for (int i = 0; i < 256; ++i) {
        bytes.push_back(static_cast<char>(i));
    }
    const std::wstring wide = NarrowToWide(bytes);
    MINI_CHECK(wide.size() == 256 && wide[0xE9] == L'\u00e9' && wide[0xFF] == L'\u00ff');
    MINI_CHECK(WideToNarrow(wide) == bytes);
}

MINI_TEST(KeyValueReadsCrLfQuotesAndPrefixes)
{
    WriteBytes("info.txt", "GOZ_OBJECT_LIST = \"C:/a b/list.txt\"\r\nPATH = x\r\nPATHX = y\r\n\r\nLIST=0123456789");
    const struct
    {
        const char* key;
        int size;
        bool found;
        const char* value;
    } cases[] = {
        {"GOZ_OBJECT_LIST", 1024, true, "C:/a b/list.txt"},
        {"path", 64, true, "x"},
        {"LIST", 4, true, "012"},
        {"PATHXY", 64, true, "x"}, // PATH comes first and is a prefix
        {"PAT", 64, false, "untouched"},
    };
    for (const auto& c : cases) {
        char value[1024] = "untouched";
        MINI_CHECK_MSG(GetKeyValue("info.txt", c.key, value, c.size) == c.found, c.key);
        MINI_CHECK_MSG(std::strcmp(value, c.value) == 0, std::string(c.key) + " read " + value);
    }
    WriteBytes("prefix.txt", "GOZ = short\r\nGOZ_OBJECT_LIST = long\r\n");
    char value[64] = {};
    MINI_CHECK(GetKeyValue("prefix.txt", "GOZ_OBJECT_LIST", value, sizeof(value)));
    MINI_CHECK_MSG(std::strcmp(value, "short") == 0, value);
}

MINI_TEST(KeyValueSetAppendsWithLineFeed)
{
    WriteBytes("config.txt", "A=1\r\nB=2\r\nGOZ = x\r\n");
    SetKeyValue("config.txt", "A", "9");
    SetKeyValue("config.txt", "GOZ_OBJECT_LIST", "\"C:/list.txt\"");
    MINI_CHECK_MSG(ReadBytes("config.txt") == "B=2\r\nA = 9\nGOZ_OBJECT_LIST = \"C:/list.txt\"\n",
                   ReadBytes("config.txt"));
    char value[64] = {};
    MINI_CHECK(GetKeyValue("config.txt", "goz_object_list", value, sizeof(value)));
    MINI_CHECK_MSG(std::strcmp(value, "C:/list.txt") == 0, value);

    SetKeyValue("missing.txt", "A", "1");
    MINI_CHECK(GetFileAttributesA("missing.txt") == INVALID_FILE_ATTRIBUTES);
    MINI_CHECK(LeftoverCount() == 0);
}

MINI_TEST(KeyValueNonAsciiPathBytes)
{
    // Narrow paths are ANSI code page bytes: 0xE9 is U+00E9 in code page 1252.
    const char path[] = "caf\xe9.txt";
    WriteBytes(path, "K = v\n");
    SetKeyValue(path, "N", "1");
    MINI_CHECK_MSG(ReadBytes(path) == "K = v\nN = 1\n", ReadBytes(path));
    if (GetACP() == 1252) {
        MINI_CHECK(GetFileAttributesW(L"caf\u00e9.txt") != INVALID_FILE_ATTRIBUTES);
    }
    MINI_CHECK(LeftoverCount() == 0);
}

MINI_TEST(KeyValueFileInUse)
{
    WriteBytes("shared.txt", "A=1\n");
    // Open elsewhere without delete sharing: the file cannot be replaced, only written in place.
    HANDLE other = CreateFileW(L"shared.txt", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                               OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    MINI_CHECK(other != INVALID_HANDLE_VALUE);
    SetKeyValue("shared.txt", "A", "2");
    // The other handle sees the new bytes only if the file was written in place.
    char seen[16] = {};
    DWORD count = 0;
    MINI_CHECK(ReadFile(other, seen, sizeof(seen) - 1, &count, nullptr) != 0);
    MINI_CHECK_MSG(std::string(seen, count) == "A = 2\n", std::string(seen, count));
    CloseHandle(other);
    MINI_CHECK_MSG(ReadBytes("shared.txt") == "A = 2\n", ReadBytes("shared.txt"));

    // Open elsewhere without write sharing: nothing may change.
    WriteBytes("locked.txt", "A=1\n");
    HANDLE locker = CreateFileW(L"locked.txt", GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr);
    MINI_CHECK(locker != INVALID_HANDLE_VALUE);
    SetKeyValue("locked.txt", "A", "2");
    CloseHandle(locker);
    MINI_CHECK_MSG(ReadBytes("locked.txt") == "A=1\n", ReadBytes("locked.txt"));

    WriteBytes("readonly.txt", "A=1\n");
    MINI_CHECK(SetFileAttributesA("readonly.txt", FILE_ATTRIBUTE_READONLY) != 0);
    // wine run by root lets anyone write a read-only file; check only where it is enforced.
    HANDLE writer = CreateFileW(L"readonly.txt", GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                                nullptr);
    if (writer != INVALID_HANDLE_VALUE) {
        CloseHandle(writer);
        std::printf("  (read-only attribute not enforced here: check left out)\n");
    } else {
        SetKeyValue("readonly.txt", "A", "2");
        MINI_CHECK_MSG(ReadBytes("readonly.txt") == "A=1\n", ReadBytes("readonly.txt"));
    }
    SetFileAttributesA("readonly.txt", FILE_ATTRIBUTE_NORMAL);
    MINI_CHECK(LeftoverCount() == 0);
}

} // namespace

// What only Windows can show of the platform layer and the key = value files, run under wine.
// run-wine-tests.sh fills the registry and the environment that these checks expect.
// GoogleTest is not built for Windows: every check counts, the program prints
// "N passed, N failed" and exits non-zero when anything failed.

#include "KeyValueFile.h"
#include "Platform.h"

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

using MV::Platform::WideToNarrow;

int g_nPassed = 0;
int g_nFailed = 0;

void Check(bool condition, const char* expression, int line, const std::string& detail)
{
    if (condition) {
        ++g_nPassed;
        return;
    }
    ++g_nFailed;
    std::printf("  FAILED line %d: %s -- %s\n", line, expression, detail.c_str());
}

#define CHECK(condition, detail) Check((condition), #condition, __LINE__, (detail))

const wchar_t kTestKey[] = L"SOFTWARE\\MVGoZWineTest";

std::string ReadBytes(const char* path)
{
    std::ifstream in(path, std::ios::binary);
    return in ? std::string(std::istreambuf_iterator<char>(in), {}) : "<missing>";
}

void WriteBytes(const char* path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

// Files that SetKeyValue put beside its target and did not clean up.
int LeftoverCount()
{
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        count += entry.path().filename().wstring().find(L".~mvgoz") != std::wstring::npos ? 1 : 0;
    }
    return count;
}

// REG_SZ data that reg.exe cannot write: without its terminator, or an odd number of bytes.
// The data must go on with a non-zero character, or the system adds the "forgotten" terminator.
void WriteRawString(const wchar_t* name, const void* data, DWORD bytes)
{
    HKEY key = nullptr;
    LONG result = RegCreateKeyExW(HKEY_LOCAL_MACHINE, kTestKey, 0, nullptr, 0, KEY_SET_VALUE | KEY_WOW64_64KEY,
                                  nullptr, &key, nullptr);
    if (result == ERROR_SUCCESS) {
        result = RegSetValueExW(key, name, 0, REG_SZ, static_cast<const BYTE*>(data), bytes);
        RegCloseKey(key);
    }
    CHECK(result == ERROR_SUCCESS, "writing " + WideToNarrow(name) + " gave " + std::to_string(result));
}

void RegistryReadsStringsAndTellsFailures()
{
    WriteRawString(L"NoTerminator", L"abcX", 6);
    WriteRawString(L"OddByteCount", L"abcX", 7);
    const struct
    {
        const wchar_t* subKey;
        const wchar_t* name;
        long result;
        std::wstring value; // L"untouched" when the read fails
    } cases[] = {
        {kTestKey, L"Main Program", 0, L"C:\\Program Files\\Figmora\\Figmora.exe"},
        {kTestKey, L"Accented", 0, L"Caf\u00e9 \u00fc\u00df \u4e2d"},
        {kTestKey, L"Empty", 0, L""},
        {kTestKey, L"Long", 0, std::wstring(600, L'x')}, // more than the first 260-character read
        {kTestKey, L"NoTerminator", 0, L"abc"},
        {kTestKey, L"OddByteCount", 0, L"abc"},
        {kTestKey, L"Missing", 2, L"untouched"},
        {L"SOFTWARE\\MVGoZWineTestMissing", L"Main Program", 2, L"untouched"},
        {kTestKey, L"Count", 1630, L"untouched"},      // REG_DWORD
        {kTestKey, L"Expandable", 1630, L"untouched"}, // REG_EXPAND_SZ
    };
    for (const auto& c : cases) {
        std::wstring value = L"untouched";
        const long result = MV::Platform::ReadLocalMachineString(c.subKey, c.name, value);
        CHECK(result == c.result, WideToNarrow(c.name) + " gave " + std::to_string(result));
        CHECK(value == c.value, WideToNarrow(c.name) + " read \"" + WideToNarrow(value.substr(0, 40)) + "\"");
    }
}

void EnvironmentIgnoresCaseAndTellsUnsetFromEmpty()
{
    const std::wstring longValue(5000, L'v');
    SetEnvironmentVariableW(L"MVGOZ_WINE_EMPTY", L"");
    SetEnvironmentVariableW(L"MVGOZ_WINE_UNSET", nullptr);
    SetEnvironmentVariableW(L"MVGOZ_WINE_LONG", longValue.c_str());
    const struct
    {
        const wchar_t* name;
        bool found;
        std::wstring value;
    } cases[] = {
        {L"mvgoz_wine_mixed", true, L"mixed"}, // set as MvGoZ_Wine_Mixed by the script
        {L"MVGOZ_WINE_EMPTY", true, L""},
        {L"MVGOZ_WINE_LONG", true, longValue},
        {L"MVGOZ_WINE_UNSET", false, L"untouched"},
        {L"", false, L"untouched"},
    };
    for (const auto& c : cases) {
        std::wstring value = L"untouched";
        CHECK(MV::Platform::GetEnvironmentValue(c.name, value) == c.found, WideToNarrow(c.name));
        CHECK(value == c.value, WideToNarrow(c.name) + " read \"" + WideToNarrow(value.substr(0, 40)) + "\"");
    }
}

void ExecutablePathNamesThisProgram()
{
    const std::wstring path = MV::Platform::GetExecutablePath();
    const std::wstring tail = L"\\mvgoz_wine_platform_test.exe";
    CHECK(path.size() > tail.size() && path.size() < 260
              && CompareStringOrdinal(path.c_str() + path.size() - tail.size(), -1, tail.c_str(), -1, TRUE)
                  == CSTR_EQUAL,
          WideToNarrow(path));
}

void Latin1WithTwoByteWideCharacters()
{
    CHECK(sizeof(wchar_t) == 2, std::to_string(sizeof(wchar_t)));
    const struct
    {
        std::wstring wide;
        std::string narrow;
    } cases[] = {
        {L"caf\u00e9 \u00ff\u0100", "caf\xe9 \xff?"},
        {L"a\u4e2db", "a?b"},
        {L"x\U0001F600y", "x?y"},                        // a surrogate pair is one character
        {std::wstring(1, wchar_t(0xD800)) + L"a", "?a"}, // lone high surrogate
        {std::wstring(1, wchar_t(0xDC00)), "?"},         // lone low surrogate
    };
    for (const auto& c : cases) {
        CHECK(WideToNarrow(c.wide) == c.narrow, "gave " + WideToNarrow(c.wide));
    }
}

void KeyValueFilesAreBinary()
{
    // Text mode would turn CR LF into LF, end the file at Ctrl-Z and write LF as CR LF.
    WriteBytes("info.txt", "GOZ_OBJECT_LIST = \"C:/a b/list.txt\"\r\n\x1a\r\nB=2\r\n");
    char value[64] = {};
    CHECK(GetKeyValue("info.txt", "goz_object_list", value, sizeof(value)), "");
    CHECK(std::strcmp(value, "C:/a b/list.txt") == 0, value);
    CHECK(GetKeyValue("info.txt", "B", value, sizeof(value)), "");
    CHECK(std::strcmp(value, "2") == 0, value);

    SetKeyValue("info.txt", "GOZ_OBJECT_LIST", "\"C:/x.txt\"");
    CHECK(ReadBytes("info.txt") == "\x1a\r\nB=2\r\nGOZ_OBJECT_LIST = \"C:/x.txt\"\n", ReadBytes("info.txt"));
    SetKeyValue("missing.txt", "A", "1");
    CHECK(GetFileAttributesA("missing.txt") == INVALID_FILE_ATTRIBUTES, "missing.txt was created");

    // Narrow paths are ANSI code page bytes: 0xE9 is U+00E9 in code page 1252.
    WriteBytes("caf\xe9.txt", "K = v\n");
    SetKeyValue("caf\xe9.txt", "N", "1");
    CHECK(ReadBytes("caf\xe9.txt") == "K = v\nN = 1\n", ReadBytes("caf\xe9.txt"));
    CHECK(GetACP() != 1252 || GetFileAttributesW(L"caf\u00e9.txt") != INVALID_FILE_ATTRIBUTES, "");
    CHECK(LeftoverCount() == 0, std::to_string(LeftoverCount()));
}

void KeyValueFileInUse()
{
    // Open elsewhere without delete sharing: the file cannot be replaced, only written in place,
    // and the other handle then sees the new bytes.
    WriteBytes("shared.txt", "A=1\n");
    HANDLE other = CreateFileW(L"shared.txt", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                               OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    CHECK(other != INVALID_HANDLE_VALUE, "");
    SetKeyValue("shared.txt", "A", "2");
    char seen[16] = {};
    DWORD count = 0;
    CHECK(ReadFile(other, seen, sizeof(seen) - 1, &count, nullptr) != 0, "");
    CHECK(std::string(seen, count) == "A = 2\n", std::string(seen, count));
    CloseHandle(other);

    // Open elsewhere without write sharing: nothing may change.
    WriteBytes("locked.txt", "A=1\n");
    HANDLE locker = CreateFileW(L"locked.txt", GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr);
    CHECK(locker != INVALID_HANDLE_VALUE, "");
    SetKeyValue("locked.txt", "A", "2");
    CloseHandle(locker);
    CHECK(ReadBytes("locked.txt") == "A=1\n", ReadBytes("locked.txt"));
    CHECK(LeftoverCount() == 0, std::to_string(LeftoverCount()));
}

} // namespace

void Run(const char* name, void (*test)())
{
    const int failedBefore = g_nFailed;
    test();
    std::printf("[%s] %s\n", g_nFailed == failedBefore ? "ok" : "FAILED", name);
}

#define RUN(test) Run(#test, test)

int main()
{
    RUN(RegistryReadsStringsAndTellsFailures);
    RUN(EnvironmentIgnoresCaseAndTellsUnsetFromEmpty);
    RUN(ExecutablePathNamesThisProgram);
    RUN(Latin1WithTwoByteWideCharacters);
    RUN(KeyValueFilesAreBinary);
    RUN(KeyValueFileInUse);
    std::printf("%d passed, %d failed\n", g_nPassed, g_nFailed);
    std::fflush(stdout);
    return (g_nFailed == 0 && g_nPassed > 0) ? 0 : 1;
}

// mvgoz-doctor's Windows side, run under wine by tests/wine/run-wine-tests.sh: the registry
// value through the system's registry, the PUBLIC lookup, access lists, and sandboxes with and
// without a problem, in-process and through the built mvgoz-doctor.exe beside this program.
// Prints "N passed, N failed" and exits non-zero when anything failed.

#include "DoctorChecks.h"
#include "DoctorPlatform.h"
#include "DoctorStrings.h"
#include "Platform.h"

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

#include <aclapi.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using MV::Doctor::CDoctorFindings;
using MV::Doctor::ECheck;
using MV::Doctor::EncodeUtf8;

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

const wchar_t kRegistryKey[] = L"SOFTWARE\\Quorvane\\Figmora\\4.0";
const wchar_t kRegistryValue[] = L"Main Program";

bool SetRegistryProgram(const std::wstring& program)
{
    HKEY key = nullptr;
    LONG result = RegCreateKeyExW(HKEY_LOCAL_MACHINE, kRegistryKey, 0, nullptr, 0, KEY_SET_VALUE | KEY_WOW64_64KEY,
                                  nullptr, &key, nullptr);
    if (result == ERROR_SUCCESS) {
        result = RegSetValueExW(key, kRegistryValue, 0, REG_SZ, reinterpret_cast<const BYTE*>(program.c_str()),
                                static_cast<DWORD>((program.size() + 1) * sizeof(wchar_t)));
        RegCloseKey(key);
    }
    return result == ERROR_SUCCESS;
}

void DeleteRegistryProgram()
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kRegistryKey, 0, KEY_SET_VALUE | KEY_WOW64_64KEY, &key) == ERROR_SUCCESS) {
        RegDeleteValueW(key, kRegistryValue);
        RegCloseKey(key);
    }
}

void Write(const fs::path& path, const std::string& bytes)
{
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

void SetModified(const fs::path& path, WORD year)
{
    SYSTEMTIME local {};
    local.wYear = year;
    local.wMonth = 6;
    local.wDay = 1;
    local.wHour = 12;
    SYSTEMTIME utc {};
    FILETIME time {};
    TzSpecificLocalTimeToSystemTime(nullptr, &local, &utc);
    SystemTimeToFileTime(&utc, &time);
    const HANDLE file = CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    CHECK(file != INVALID_HANDLE_VALUE, EncodeUtf8(path.native()));
    if (file != INVALID_HANDLE_VALUE) {
        CHECK(SetFileTime(file, nullptr, nullptr, &time) != 0, "");
        CloseHandle(file);
    }
}

// Lets every user create files in folder, through its access list.
bool OpenToEveryone(const fs::path& folder)
{
    EXPLICIT_ACCESSW access {};
    access.grfAccessPermissions = FILE_ALL_ACCESS;
    access.grfAccessMode = SET_ACCESS;
    access.grfInheritance = SUB_CONTAINERS_AND_OBJECTS_INHERIT;
    access.Trustee.TrusteeForm = TRUSTEE_IS_NAME;
    access.Trustee.TrusteeType = TRUSTEE_IS_WELL_KNOWN_GROUP;
    wchar_t everyone[] = L"Everyone";
    access.Trustee.ptstrName = everyone;
    PACL dacl = nullptr;
    if (SetEntriesInAclW(1, &access, nullptr, &dacl) != ERROR_SUCCESS) {
        return false;
    }
    std::wstring name = folder.native();
    const DWORD result = SetNamedSecurityInfoW(&name[0], SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                                               dacl, nullptr);
    LocalFree(dacl);
    return result == ERROR_SUCCESS;
}

// A Pixologic folder as a working round trip leaves it, below publicFolder.
struct CWineSandbox
{
    fs::path m_kPublic;
    fs::path m_kRoot;
    fs::path m_kHost;

    explicit CWineSandbox(const fs::path& publicFolder)
        : m_kPublic(publicFolder), m_kRoot(fs::path(publicFolder.native() + L"/Pixologic/")),
          m_kHost(fs::absolute(publicFolder.parent_path() / L"host" / L"Figmora.exe"))
    {
        Write(In("GoZBrush/GoZBrushFromApp.exe"), "program");
        Write(In("GoZBrush/GoZMakeObjectPath.exe"), "program");
        Write(In("GoZApps/Figmora/GoZBrushToFM.exe"), "program");
        Write(In("GoZApps/Figmora/GoZ_Info.txt"),
              "GOZ_OBJECT_LIST = \"GoZ_ObjectList.txt\"\r\n"
              "MAKEOBJECTPATH_COMMAND = \"../../GoZBrush/GoZMakeObjectPath.exe\"\r\n"
              "GOZBRUSH_COMMAND = \"../../GoZBrush/GoZBrushFromApp.exe\"\r\n");
        Write(In("GoZApps/Figmora/GoZ_Config.txt"), "PATH = \"" + Narrow(m_kHost) + "\"\n");
        Write(In("GoZApps/Figmora/GoZ_ObjectList.txt"), "Body\nK\xf6rper\n"); // Latin-1, as the plug-in writes
        Write(In("GoZProjects/Default/Body.GoZ"), "mesh");
        Write(m_kRoot / L"GoZProjects" / L"Default" / L"K\u00f6rper.goz", "mesh");
        Write(m_kHost, "program");
        CHECK(SetRegistryProgram(m_kHost.native()), "");
    }

    fs::path In(const char* relative) const { return fs::path(m_kRoot.native() + fs::path(relative).native()); }

    static std::string Narrow(const fs::path& path) { return MV::Platform::WideToNarrow(path.native()); }

    MV::Doctor::CDoctorOptions Options() const
    {
        MV::Doctor::CDoctorOptions options;
        options.m_bHasPublicOverride = true;
        options.m_kPublicOverride = m_kPublic;
        options.m_kReturnRoot = m_kRoot;
        return options;
    }
};

std::vector<std::string> ProblemIds(const CDoctorFindings& findings)
{
    std::vector<std::string> ids;
    for (const auto& problem : findings.m_kProblems) {
        if (problem.m_eSeverity == MV::Doctor::ESeverity::Problem) {
            ids.push_back(problem.m_strId);
        }
    }
    return ids;
}

std::string Joined(const std::vector<std::string>& ids)
{
    std::string text;
    for (const std::string& id : ids) {
        text += (text.empty() ? "" : ", ") + id;
    }
    return "[" + text + "]";
}

void SandboxWithAndWithoutAProblem()
{
    const CWineSandbox sandbox(fs::absolute(L"one/P\u00fablic \u00fc"));
    CDoctorFindings f = MV::Doctor::RunChecks(sandbox.Options());
    CHECK(ProblemIds(f).empty(), Joined(ProblemIds(f)));
    CHECK(f.ExitCode() == 0, "");
    CHECK(f.m_nListedNames == 2 && f.m_nFoundNames == 2, std::to_string(f.m_nFoundNames));
    CHECK(f.m_eReturnRootSame == ECheck::Yes, "");
    // Windows file names ignore case: BODY.GOZ answers Body.
    fs::rename(sandbox.In("GoZProjects/Default/Body.GoZ"), sandbox.In("GoZProjects/Default/BODY.GOZ"));
    f = MV::Doctor::RunChecks(sandbox.Options());
    CHECK(f.m_nFoundNames == 2, std::to_string(f.m_nFoundNames));

    SetModified(sandbox.In("GoZApps/Figmora/GoZBrushToFM.exe"), 2017);
    f = MV::Doctor::RunChecks(sandbox.Options());
    CHECK(ProblemIds(f) == std::vector<std::string>{"launcher-stale"}, Joined(ProblemIds(f)));
    CHECK(f.ExitCode() == 1, "");
    CHECK(f.m_strLauncherTime.rfind("2017-06-01", 0) == 0, f.m_strLauncherTime);

    SetModified(sandbox.In("GoZApps/Figmora/GoZBrushToFM.exe"), 2019);
    fs::remove(sandbox.In("GoZProjects/Default/BODY.GOZ"));
    f = MV::Doctor::RunChecks(sandbox.Options());
    CHECK(ProblemIds(f) == std::vector<std::string>{"object-list-files-missing"}, Joined(ProblemIds(f)));
    CHECK(f.m_kMissingNames == std::vector<std::string>{"Body"}, "");
}

void RegistryValueThroughTheSystemRegistry()
{
    const CWineSandbox sandbox(fs::absolute(L"registry/public"));
    CDoctorFindings f = MV::Doctor::RunChecks(sandbox.Options());
    CHECK(f.m_nRegistryResult == 0, std::to_string(f.m_nRegistryResult));
    CHECK(f.m_strRegistryData == EncodeUtf8(sandbox.m_kHost.native()), f.m_strRegistryData);
    CHECK(f.m_kRegistryProgram.m_eKind == MV::Doctor::EEntryKind::File, "");

    CHECK(SetRegistryProgram(L"C:\\\u4e2d\\Figmora.exe"), "");
    f = MV::Doctor::RunChecks(sandbox.Options());
    const std::vector<std::string> wide{"registry-not-latin1", "registry-program-missing"};
    CHECK(ProblemIds(f) == wide, Joined(ProblemIds(f)));

    DeleteRegistryProgram();
    f = MV::Doctor::RunChecks(sandbox.Options());
    CHECK(f.m_nRegistryResult == ERROR_FILE_NOT_FOUND, std::to_string(f.m_nRegistryResult));
    CHECK(ProblemIds(f) == std::vector<std::string>{"registry-missing"}, Joined(ProblemIds(f)));
    SetRegistryProgram(sandbox.m_kHost.native());
}

void PublicLookupIgnoresCase()
{
    wchar_t saved[1024] = {};
    const DWORD savedLength = GetEnvironmentVariableW(L"PUBLIC", saved, 1024);
    const fs::path folder = fs::absolute(L"lookup");
    SetEnvironmentVariableW(L"PUBLIC", nullptr);
    SetEnvironmentVariableW(L"pUbLiC", folder.c_str());
    MV::Doctor::CDoctorOptions options;
    CDoctorFindings f = MV::Doctor::RunChecks(options);
    CHECK(f.m_ePublicSource == MV::Doctor::EPublicSource::Variable, "");
    CHECK(f.m_strPublicVariable == "pUbLiC", f.m_strPublicVariable);
    CHECK(f.m_strPublicFolder == EncodeUtf8(folder.native()), f.m_strPublicFolder);
    CHECK(f.m_kRoot.m_strPath == EncodeUtf8(folder.native()) + "/Pixologic/", f.m_kRoot.m_strPath);

    SetEnvironmentVariableW(L"pUbLiC", nullptr);
    f = MV::Doctor::RunChecks(options);
    CHECK(f.m_ePublicSource == MV::Doctor::EPublicSource::Default, "");
    CHECK(f.m_strPublicFolder == "C:\\users\\public", f.m_strPublicFolder);
    CHECK(f.m_strPublicVariable.empty(), f.m_strPublicVariable);

    if (savedLength > 0 && savedLength < 1024) {
        SetEnvironmentVariableW(L"PUBLIC", saved);
    }
}

void AccessListDecidesEveryoneWrite()
{
    const fs::path folder = fs::absolute(L"shared");
    fs::create_directories(folder);
    std::string detail;
    const ECheck before = MV::Doctor::System::ProbeEveryoneWrite(folder, detail);
    CHECK(before != ECheck::NotChecked, detail);
    CHECK(OpenToEveryone(folder), "");
    CHECK(MV::Doctor::System::ProbeEveryoneWrite(folder, detail) == ECheck::Yes, detail);
    CHECK(MV::Doctor::System::ProbeUserWrite(folder, detail) == ECheck::Yes, detail);
    CHECK(std::distance(fs::directory_iterator(folder), fs::directory_iterator()) == 0, "probe file left behind");
}

// Runs mvgoz-doctor.exe from this program's folder; its output goes to a file.
DWORD RunDoctor(const std::wstring& arguments, std::string& output)
{
    wchar_t self[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    const fs::path program = fs::path(self).parent_path() / L"mvgoz-doctor.exe";
    const fs::path outputFile = fs::absolute(L"doctor-output.txt");
    SECURITY_ATTRIBUTES inherit {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    const HANDLE out = CreateFileW(outputFile.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherit, CREATE_ALWAYS,
                                   FILE_ATTRIBUTE_NORMAL, nullptr);
    STARTUPINFOW startup {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = out;
    startup.hStdError = out;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    PROCESS_INFORMATION process {};
    std::wstring commandLine = L"\"" + program.native() + L"\" " + arguments;
    DWORD exitCode = 999;
    if (CreateProcessW(program.c_str(), &commandLine[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                       &process)) {
        WaitForSingleObject(process.hProcess, 60000);
        GetExitCodeProcess(process.hProcess, &exitCode);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    CloseHandle(out);
    std::ifstream in(outputFile, std::ios::binary);
    output.assign(std::istreambuf_iterator<char>(in), {});
    return exitCode;
}

void ProgramOnThePublicFolder()
{
    // Where the receive side really looks: the machine's own public folder, which it can only
    // find through the PUBLIC variable that wine sets.
    wchar_t publicFolder[1024] = {};
    const DWORD length = GetEnvironmentVariableW(L"PUBLIC", publicFolder, 1024);
    CHECK(length > 0 && length < 1024, "PUBLIC is not set");
    if (length == 0 || length >= 1024) {
        return;
    }
    const CWineSandbox sandbox{fs::path(publicFolder)};
    std::string output;
    DWORD exitCode = RunDoctor(L"--json", output);
    CHECK(exitCode == 0, std::to_string(exitCode) + "\n" + output);
    CHECK(output.find("\"canRoundTrip\": true") != std::string::npos, output);
    CHECK(output.find("\"sameAsRoot\": \"yes\"") != std::string::npos, output);

    exitCode = RunDoctor(L"", output);
    CHECK(exitCode == 0, std::to_string(exitCode));
    CHECK(output.find("Result: a round trip can work.") != std::string::npos, output);

    fs::remove(sandbox.In("GoZApps/Figmora/GoZ_Info.txt"));
    exitCode = RunDoctor(L"--json", output);
    CHECK(exitCode == 1, std::to_string(exitCode) + "\n" + output);
    CHECK(output.find("\"id\": \"info-missing\"") != std::string::npos, output);

    exitCode = RunDoctor(L"--public", output);
    CHECK(exitCode == 2, std::to_string(exitCode));

    std::error_code error;
    fs::remove_all(sandbox.m_kRoot, error);
}

void Run(const char* name, void (*test)())
{
    const int failedBefore = g_nFailed;
    try {
        test();
    } catch (const std::exception& error) {
        Check(false, "no exception", 0, error.what());
    }
    std::printf("[%s] %s\n", g_nFailed == failedBefore ? "ok" : "FAILED", name);
}

} // namespace

#define RUN(test) Run(#test, test)

int main()
{
    RUN(SandboxWithAndWithoutAProblem);
    RUN(RegistryValueThroughTheSystemRegistry);
    RUN(PublicLookupIgnoresCase);
    RUN(AccessListDecidesEveryoneWrite);
    RUN(ProgramOnThePublicFolder);
    DeleteRegistryProgram();
    std::printf("%d passed, %d failed\n", g_nPassed, g_nFailed);
    std::fflush(stdout);
    return (g_nFailed == 0 && g_nPassed > 0) ? 0 : 1;
}

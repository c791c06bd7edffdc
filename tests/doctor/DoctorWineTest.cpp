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

#include <sddl.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using MV::Doctor::CDoctorFindings;
using MV::Doctor::ECheck;
using MV::Doctor::EncodeUtf8;
using MV::Doctor::RunChecks;

int g_nPassed = 0;
int g_nFailed = 0;

void Check(bool condition, const char* expression, int line, const std::string& detail)
{
    condition ? ++g_nPassed : ++g_nFailed;
    if (!condition) {
        std::printf("  FAILED line %d: %s -- %s\n", line, expression, detail.c_str());
    }
}

#define CHECK(condition, detail) Check((condition), #condition, __LINE__, (detail))

const wchar_t kRegistryKey[] = L"SOFTWARE\\Quorvane\\Figmora\\4.0";
const wchar_t kRegistryValue[] = L"Main Program";

// Sets the host's "Main Program", or deletes it when program is null.
bool SetRegistryProgram(const std::wstring* program)
{
    const LSTATUS result =
        program == nullptr ? RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kRegistryKey, kRegistryValue)
                           : RegSetKeyValueW(HKEY_LOCAL_MACHINE, kRegistryKey, kRegistryValue, REG_SZ, program->c_str(),
                                             static_cast<DWORD>((program->size() + 1) * sizeof(wchar_t)));
    return result == ERROR_SUCCESS;
}

void Write(const fs::path& path, const std::string& bytes)
{
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

void SetModified(const fs::path& path, WORD year)
{
    const SYSTEMTIME local {year, 6, 0, 1, 12, 0, 0, 0};
    SYSTEMTIME utc {};
    FILETIME time {};
    const HANDLE file = CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    CHECK(file != INVALID_HANDLE_VALUE && TzSpecificLocalTimeToSystemTime(nullptr, &local, &utc) &&
              SystemTimeToFileTime(&utc, &time) && SetFileTime(file, nullptr, nullptr, &time),
          EncodeUtf8(path.native()));
    CloseHandle(file);
}

// Lets every user create files in folder, through its access list.
bool OpenToEveryone(const fs::path& folder)
{
    PSECURITY_DESCRIPTOR everyone = nullptr;
    const bool set = ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:(A;OICI;FA;;;WD)", SDDL_REVISION_1,
                                                                          &everyone, nullptr) &&
                     SetFileSecurityW(folder.c_str(), DACL_SECURITY_INFORMATION, everyone);
    LocalFree(everyone);
    return set;
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
        for (const char* program : {"GoZBrush/GoZBrushFromApp.exe", "GoZBrush/GoZMakeObjectPath.exe",
                                    "GoZApps/Figmora/GoZBrushToFM.exe"}) {
            Write(In(program), "program");
        }
        Write(In("GoZApps/Figmora/GoZ_Info.txt"),
              "GOZ_OBJECT_LIST = \"GoZ_ObjectList.txt\"\r\n"
              "MAKEOBJECTPATH_COMMAND = \"../../GoZBrush/GoZMakeObjectPath.exe\"\r\n"
              "GOZBRUSH_COMMAND = \"../../GoZBrush/GoZBrushFromApp.exe\"\r\n");
        const std::string host = MV::Platform::WideToNarrow(m_kHost.native());
        Write(In("GoZApps/Figmora/GoZ_Config.txt"), "PATH = \"" + host + "\"\n");
        Write(In("GoZApps/Figmora/GoZ_ObjectList.txt"), "Body\nK\xf6rper\n"); // Latin-1, as the plug-in writes
        Write(In("GoZProjects/Default/Body.GoZ"), "mesh");
        Write(m_kRoot / L"GoZProjects" / L"Default" / L"K\u00f6rper.goz", "mesh");
        Write(m_kHost, "program");
        CHECK(SetRegistryProgram(&m_kHost.native()), "");
    }

    fs::path In(const char* relative) const { return fs::path(m_kRoot.native() + fs::path(relative).native()); }

    MV::Doctor::CDoctorOptions Options() const
    {
        MV::Doctor::CDoctorOptions options;
        options.m_bHasPublicOverride = true;
        options.m_kPublicOverride = m_kPublic;
        options.m_kReturnRoot = m_kRoot;
        return options;
    }
};

// The ids of the problems (warnings left out), joined with ", ".
std::string Problems(const CDoctorFindings& findings)
{
    std::string ids;
    for (const auto& problem : findings.m_kProblems) {
        if (problem.m_eSeverity == MV::Doctor::ESeverity::Problem) {
            ids += (ids.empty() ? "" : ", ") + problem.m_strId;
        }
    }
    return ids;
}

void SandboxWithAndWithoutAProblem()
{
    const CWineSandbox sandbox(fs::absolute(L"one/P\u00fablic \u00fc"));
    CDoctorFindings f = RunChecks(sandbox.Options());
    CHECK(Problems(f).empty() && f.ExitCode() == 0, Problems(f));
    CHECK(f.m_nListedNames == 2 && f.m_nFoundNames == 2, std::to_string(f.m_nFoundNames));
    CHECK(f.m_eReturnRootSame == ECheck::Yes, "");
    // Windows file names ignore case: BODY.GOZ answers Body.
    fs::rename(sandbox.In("GoZProjects/Default/Body.GoZ"), sandbox.In("GoZProjects/Default/BODY.GOZ"));
    f = RunChecks(sandbox.Options());
    CHECK(f.m_nFoundNames == 2, std::to_string(f.m_nFoundNames));

    SetModified(sandbox.In("GoZApps/Figmora/GoZBrushToFM.exe"), 2017);
    f = RunChecks(sandbox.Options());
    CHECK(Problems(f) == "launcher-stale" && f.ExitCode() == 1, Problems(f));
    CHECK(f.m_strLauncherTime.rfind("2017-06-01", 0) == 0, f.m_strLauncherTime);

    SetModified(sandbox.In("GoZApps/Figmora/GoZBrushToFM.exe"), 2019);
    fs::remove(sandbox.In("GoZProjects/Default/BODY.GOZ"));
    f = RunChecks(sandbox.Options());
    CHECK(Problems(f) == "object-list-files-missing", Problems(f));
    CHECK(f.m_kMissingNames == std::vector<std::string>{"Body"}, "");
}

void RegistryValueThroughTheSystemRegistry()
{
    const CWineSandbox sandbox(fs::absolute(L"registry/public"));
    CDoctorFindings f = RunChecks(sandbox.Options());
    CHECK(f.m_nRegistryResult == 0, std::to_string(f.m_nRegistryResult));
    CHECK(f.m_strRegistryData == EncodeUtf8(sandbox.m_kHost.native()), f.m_strRegistryData);
    CHECK(f.m_kRegistryProgram.m_eKind == MV::Doctor::EEntryKind::File, "");

    const std::wstring wide = L"C:\\\u4e2d\\Figmora.exe";
    CHECK(SetRegistryProgram(&wide), "");
    f = RunChecks(sandbox.Options());
    CHECK(Problems(f) == "registry-not-latin1, registry-program-missing", Problems(f));

    SetRegistryProgram(nullptr);
    f = RunChecks(sandbox.Options());
    CHECK(f.m_nRegistryResult == ERROR_FILE_NOT_FOUND, std::to_string(f.m_nRegistryResult));
    CHECK(Problems(f) == "registry-missing", Problems(f));
    SetRegistryProgram(&sandbox.m_kHost.native());
}

void PublicLookupIgnoresCase()
{
    wchar_t saved[1024] = {};
    const DWORD savedLength = GetEnvironmentVariableW(L"PUBLIC", saved, 1024);
    const fs::path folder = fs::absolute(L"lookup");
    SetEnvironmentVariableW(L"PUBLIC", nullptr);
    SetEnvironmentVariableW(L"pUbLiC", folder.c_str());
    CDoctorFindings f = RunChecks({});
    CHECK(f.m_ePublicSource == MV::Doctor::EPublicSource::Variable, "");
    CHECK(f.m_strPublicVariable == "pUbLiC", f.m_strPublicVariable);
    CHECK(f.m_strPublicFolder == EncodeUtf8(folder.native()), f.m_strPublicFolder);
    CHECK(f.m_kRoot.m_strPath == EncodeUtf8(folder.native()) + "/Pixologic/", f.m_kRoot.m_strPath);

    SetEnvironmentVariableW(L"pUbLiC", nullptr);
    f = RunChecks({});
    CHECK(f.m_ePublicSource == MV::Doctor::EPublicSource::Default, "");
    CHECK(f.m_strPublicFolder == "C:\\users\\public" && f.m_strPublicVariable.empty(), f.m_strPublicFolder);
    if (savedLength > 0 && savedLength < 1024) {
        SetEnvironmentVariableW(L"PUBLIC", saved);
    }
}

void AccessListDecidesEveryoneWrite()
{
    const fs::path folder = fs::absolute(L"shared");
    fs::create_directories(folder);
    std::string detail;
    CHECK(MV::Doctor::System::ProbeEveryoneWrite(folder, detail) != ECheck::NotChecked, detail);
    CHECK(OpenToEveryone(folder), "");
    CHECK(MV::Doctor::System::ProbeEveryoneWrite(folder, detail) == ECheck::Yes, detail);
    CHECK(MV::Doctor::System::ProbeUserWrite(folder, detail) == ECheck::Yes, detail);
    CHECK(fs::is_empty(folder), "probe file left behind");
}

// Runs mvgoz-doctor.exe from this program's folder; output holds what it wrote to both streams.
int RunDoctor(const std::wstring& arguments, std::string& output)
{
    wchar_t self[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    const fs::path program = fs::path(self).parent_path() / L"mvgoz-doctor.exe";
    // cmd takes the outer quotes off.
    FILE* pipe = _wpopen((L"\"\"" + program.native() + L"\" " + arguments + L" 2>&1\"").c_str(), L"rb");
    char buffer[4096];
    output.clear();
    for (size_t count = 0; pipe != nullptr && (count = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
        output.append(buffer, count);
    }
    return pipe == nullptr ? -1 : _pclose(pipe);
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
    const struct
    {
        const wchar_t* arguments;
        int exitCode;
        std::vector<const char*> says;
        bool withoutInfo;
    } runs[] = {
        {L"--json", 0, {"\"canRoundTrip\": true", "\"sameAsRoot\": \"yes\""}, false},
        {L"", 0, {"Result: a round trip can work."}, false},
        {L"--public", 2, {"--public needs a folder"}, false},
        {L"--json", 1, {"\"id\": \"info-missing\""}, true},
    };
    for (const auto& run : runs) {
        if (run.withoutInfo) {
            fs::remove(sandbox.In("GoZApps/Figmora/GoZ_Info.txt"));
        }
        std::string output;
        const int exitCode = RunDoctor(run.arguments, output);
        CHECK(exitCode == run.exitCode, std::to_string(exitCode) + "\n" + output);
        for (const char* text : run.says) {
            CHECK(output.find(text) != std::string::npos, output);
        }
    }
    std::error_code error;
    fs::remove_all(sandbox.m_kRoot, error);
}

} // namespace

int main()
{
    for (void (*test)() : {SandboxWithAndWithoutAProblem, RegistryValueThroughTheSystemRegistry, PublicLookupIgnoresCase,
                           AccessListDecidesEveryoneWrite, ProgramOnThePublicFolder}) {
        try {
            test();
        } catch (const std::exception& error) {
            Check(false, "no exception", 0, error.what());
        }
    }
    SetRegistryProgram(nullptr);
    std::printf("%d passed, %d failed\n", g_nPassed, g_nFailed);
    std::fflush(stdout);
    return (g_nFailed == 0 && g_nPassed > 0) ? 0 : 1;
}

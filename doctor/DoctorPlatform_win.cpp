#include "DoctorPlatform.h"

#include "DoctorStrings.h"

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <aclapi.h>
#include <shellapi.h>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <vector>

namespace MV {
namespace Doctor {
namespace System {

namespace {

// The C runtime hands narrow names to the ANSI (or OEM) file functions; convert the same way.
std::wstring WideFromNarrow(const std::string& bytes)
{
    if (bytes.empty()) {
        return std::wstring();
    }
    const UINT codePage = AreFileApisANSI() ? CP_ACP : CP_OEMCP;
    const int size = static_cast<int>(bytes.size() > 0x7FFFFFFF ? 0x7FFFFFFF : bytes.size());
    const int length = MultiByteToWideChar(codePage, 0, bytes.data(), size, nullptr, 0);
    if (length <= 0) {
        return std::wstring();
    }
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(codePage, 0, bytes.data(), size, &wide[0], length);
    return wide;
}

std::wstring ErrorText(DWORD error)
{
    wchar_t* buffer = nullptr;
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM
                                            | FORMAT_MESSAGE_IGNORE_INSERTS,
                                        nullptr, error, 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
    std::wstring text = L"error " + std::to_wstring(error);
    if (length > 0 && buffer != nullptr) {
        std::wstring message(buffer, length);
        while (!message.empty() && (message.back() == L'\r' || message.back() == L'\n' || message.back() == L' ')) {
            message.pop_back();
        }
        text += L": " + message;
    }
    if (buffer != nullptr) {
        LocalFree(buffer);
    }
    return text;
}

bool IsEveryUserSid(PSID sid)
{
    static const SID_IDENTIFIER_AUTHORITY kWorld = SECURITY_WORLD_SID_AUTHORITY;
    static const SID_IDENTIFIER_AUTHORITY kNt = SECURITY_NT_AUTHORITY;
    if (!IsValidSid(sid)) {
        return false;
    }
    const SID_IDENTIFIER_AUTHORITY* authority = GetSidIdentifierAuthority(sid);
    const UCHAR count = *GetSidSubAuthorityCount(sid);
    const auto same = [authority](const SID_IDENTIFIER_AUTHORITY& other) {
        return std::equal(std::begin(authority->Value), std::end(authority->Value), std::begin(other.Value));
    };
    if (same(kWorld)) {
        return count == 1 && *GetSidSubAuthority(sid, 0) == SECURITY_WORLD_RID; // Everyone
    }
    if (!same(kNt)) {
        return false;
    }
    if (count == 1) {
        return *GetSidSubAuthority(sid, 0) == SECURITY_AUTHENTICATED_USER_RID;
    }
    return count == 2 && *GetSidSubAuthority(sid, 0) == SECURITY_BUILTIN_DOMAIN_RID
        && *GetSidSubAuthority(sid, 1) == DOMAIN_ALIAS_RID_USERS;
}

} // namespace

std::filesystem::path PathFromWide(const std::wstring& text)
{
    return std::filesystem::path(text);
}

std::filesystem::path PathFromNarrow(const std::string& bytes)
{
    return std::filesystem::path(WideFromNarrow(bytes));
}

std::filesystem::path ProgramPathFromWide(const std::wstring& text)
{
    return PathFromWide(text);
}

std::filesystem::path ProgramPathFromNarrow(const std::string& bytes)
{
    return PathFromNarrow(bytes);
}

std::string DisplayPath(const std::filesystem::path& path)
{
    return EncodeUtf8(path.native());
}

std::string DisplayNarrow(const std::string& bytes)
{
    return EncodeUtf8(WideFromNarrow(bytes));
}

std::string FileNameKey(const std::filesystem::path& name)
{
    std::wstring upper = name.native();
    if (!upper.empty()) {
        CharUpperBuffW(&upper[0], static_cast<DWORD>(upper.size()));
    }
    return EncodeUtf8(upper);
}

bool FindVariableSpelling(const std::wstring& name, std::string& spelling)
{
    wchar_t* block = GetEnvironmentStringsW();
    if (block == nullptr) {
        return false;
    }
    bool found = false;
    for (const wchar_t* entry = block; *entry != L'\0'; entry += wcslen(entry) + 1) {
        const wchar_t* equals = wcschr(entry + 1, L'='); // "=C:=C:\..." entries start with "="
        if (equals == nullptr || entry[0] == L'=') {
            continue;
        }
        const std::wstring entryName(entry, static_cast<std::size_t>(equals - entry));
        if (CompareStringOrdinal(entryName.c_str(), -1, name.c_str(), -1, TRUE) == CSTR_EQUAL) {
            spelling = EncodeUtf8(entryName);
            found = true;
            break;
        }
    }
    FreeEnvironmentStringsW(block);
    return found;
}

namespace {

bool FileIdentity(const std::filesystem::path& path, BY_HANDLE_FILE_INFORMATION& information)
{
    // Backup semantics opens folders too; no access beyond attributes is asked for.
    const HANDLE handle = CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return false;
    }
    const bool ok = GetFileInformationByHandle(handle, &information) != 0;
    CloseHandle(handle);
    return ok;
}

} // namespace

bool SameEntry(const std::filesystem::path& a, const std::filesystem::path& b)
{
    // std::filesystem::equivalent cannot tell on this runtime: it has no file numbers.
    BY_HANDLE_FILE_INFORMATION first {};
    BY_HANDLE_FILE_INFORMATION second {};
    return FileIdentity(a, first) && FileIdentity(b, second)
        && first.dwVolumeSerialNumber == second.dwVolumeSerialNumber && first.nFileIndexHigh == second.nFileIndexHigh
        && first.nFileIndexLow == second.nFileIndexLow;
}

bool LastModified(const std::filesystem::path& path, std::time_t& time)
{
    WIN32_FILE_ATTRIBUTE_DATA data {};
    if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) {
        return false;
    }
    const ULONGLONG ticks = (static_cast<ULONGLONG>(data.ftLastWriteTime.dwHighDateTime) << 32)
        | data.ftLastWriteTime.dwLowDateTime;
    // FILETIME counts 100 ns from 1601; time_t seconds from 1970.
    constexpr ULONGLONG kEpochDifference = 116444736000000000ull;
    if (ticks < kEpochDifference) {
        time = 0;
        return true;
    }
    time = static_cast<std::time_t>((ticks - kEpochDifference) / 10000000ull);
    return true;
}

ECheck ProbeUserWrite(const std::filesystem::path& folder, std::string& detail)
{
    static std::atomic<unsigned> s_nCounter{0};
    for (int attempt = 0; attempt < 16; ++attempt) {
        std::filesystem::path probe = folder;
        probe /= L".mvgoz-doctor-" + std::to_wstring(GetCurrentProcessId()) + L"-"
            + std::to_wstring(s_nCounter.fetch_add(1));
        const HANDLE file = CreateFileW(probe.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                        FILE_ATTRIBUTE_TEMPORARY, nullptr);
        if (file == INVALID_HANDLE_VALUE) {
            const DWORD error = GetLastError();
            if (error == ERROR_FILE_EXISTS) {
                continue;
            }
            detail = EncodeUtf8(ErrorText(error));
            return ECheck::No;
        }
        CloseHandle(file);
        if (!DeleteFileW(probe.c_str())) {
            detail = "could not remove " + DisplayPath(probe) + ": " + EncodeUtf8(ErrorText(GetLastError()));
        }
        return ECheck::Yes;
    }
    detail = "no free name for a test file";
    return ECheck::NotChecked;
}

ECheck ProbeEveryoneWrite(const std::filesystem::path& folder, std::string& detail)
{
    PACL dacl = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const DWORD result = GetNamedSecurityInfoW(folder.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                                               nullptr, &dacl, nullptr, &descriptor);
    if (result != ERROR_SUCCESS) {
        detail = EncodeUtf8(ErrorText(result));
        return ECheck::NotChecked;
    }
    ECheck answer = ECheck::No;
    if (dacl == nullptr) {
        answer = ECheck::Yes; // no access list: open to all
    } else {
        // The first entry that speaks of the right decides it, as the system's access check does.
        bool decided = false;
        for (DWORD i = 0; i < dacl->AceCount && !decided; ++i) {
            void* ace = nullptr;
            if (!GetAce(dacl, i, &ace) || ace == nullptr) {
                continue;
            }
            const ACE_HEADER* header = static_cast<const ACE_HEADER*>(ace);
            if ((header->AceFlags & INHERIT_ONLY_ACE) != 0) {
                continue;
            }
            if (header->AceType != ACCESS_ALLOWED_ACE_TYPE && header->AceType != ACCESS_DENIED_ACE_TYPE) {
                continue;
            }
            // Both kinds share the layout of ACCESS_ALLOWED_ACE.
            ACCESS_ALLOWED_ACE* entry = static_cast<ACCESS_ALLOWED_ACE*>(ace);
            if (!IsEveryUserSid(reinterpret_cast<PSID>(&entry->SidStart))) {
                continue;
            }
            const ACCESS_MASK mask = entry->Mask;
            if ((mask & (FILE_ADD_FILE | GENERIC_WRITE | GENERIC_ALL)) == 0) {
                continue;
            }
            answer = header->AceType == ACCESS_ALLOWED_ACE_TYPE ? ECheck::Yes : ECheck::No;
            decided = true;
        }
    }
    LocalFree(descriptor);
    return answer;
}

ECheck ProbeFileWrite(const std::filesystem::path& file)
{
    // Shared with everyone, so a program that has it open is not disturbed.
    const DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE handle = CreateFileW(file.c_str(), FILE_WRITE_DATA, share,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return ECheck::No;
    }
    CloseHandle(handle);
    return ECheck::Yes;
}

std::FILE* OpenForReading(const std::filesystem::path& path)
{
    return _wfopen(path.c_str(), L"rb");
}

std::filesystem::path ArgumentPath(int argc, char** argv, int index)
{
    int count = 0;
    wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    std::filesystem::path path;
    if (arguments != nullptr && count == argc && index >= 0 && index < count) {
        path = std::filesystem::path(arguments[index]);
    } else if (index >= 0 && index < argc && argv[index] != nullptr) {
        path = PathFromNarrow(argv[index]);
    }
    if (arguments != nullptr) {
        LocalFree(arguments);
    }
    return path;
}

void PrepareOutput()
{
    SetConsoleOutputCP(CP_UTF8);
}

} // namespace System
} // namespace Doctor
} // namespace MV

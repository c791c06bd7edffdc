#include "Platform.h"

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <atomic>
#include <cerrno>
#include <vector>

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

namespace MV {
namespace Platform {

namespace {

constexpr DWORD kPathBufferCharacters = 260;

// The C runtime hands narrow paths to the ANSI (or OEM) file functions; convert the same way.
bool ToWidePath(const std::string& path, std::wstring& wide)
{
    if (path.empty()) {
        return false;
    }
    const UINT codePage = AreFileApisANSI() ? CP_ACP : CP_OEMCP;
    const int size = static_cast<int>(path.size());
    const int length = MultiByteToWideChar(codePage, 0, path.data(), size, nullptr, 0);
    if (length <= 0) {
        return false;
    }
    wide.assign(static_cast<std::size_t>(length), L'\0');
    return MultiByteToWideChar(codePage, 0, path.data(), size, &wide[0], length) == length;
}

} // namespace

long ReadLocalMachineString(const std::wstring& subKey, const std::wstring& valueName, std::wstring& value)
{
    HKEY key = nullptr;
    LONG result = RegOpenKeyExW(HKEY_LOCAL_MACHINE, subKey.c_str(), 0, KEY_READ | KEY_WOW64_64KEY, &key);
    if (result != ERROR_SUCCESS) {
        return result;
    }
    std::vector<wchar_t> data(kPathBufferCharacters);
    // The value may grow between the size query and the read; try again a few times.
    for (int attempt = 0; attempt < 4; ++attempt) {
        DWORD type = REG_NONE;
        DWORD bytes = static_cast<DWORD>(data.size() * sizeof(wchar_t));
        result = RegQueryValueExW(key, valueName.c_str(), nullptr, &type, reinterpret_cast<LPBYTE>(data.data()),
                                  &bytes);
        if (result == ERROR_MORE_DATA) {
            data.resize(bytes / sizeof(wchar_t) + 1);
            continue;
        }
        if (result != ERROR_SUCCESS) {
            break;
        }
        if (type != REG_SZ) {
            result = ERROR_UNSUPPORTED_TYPE;
            break;
        }
        // REG_SZ data need not carry its terminator, nor an even byte count.
        const std::size_t count = bytes / sizeof(wchar_t);
        std::size_t length = 0;
        while (length < count && data[length] != L'\0') {
            ++length;
        }
        value.assign(data.data(), length);
        break;
    }
    RegCloseKey(key);
    return result;
}

std::wstring GetExecutablePath()
{
    wchar_t buffer[kPathBufferCharacters] = {};
    DWORD length = GetModuleFileNameW(nullptr, buffer, kPathBufferCharacters);
    if (length == 0) {
        return std::wstring();
    }
    // A cut path fills the buffer; older systems then leave out the terminator.
    if (length >= kPathBufferCharacters) {
        length = kPathBufferCharacters - 1;
    }
    std::size_t size = 0;
    while (size < length && buffer[size] != L'\0') {
        ++size;
    }
    return std::wstring(buffer, size);
}

bool GetEnvironmentValue(const std::wstring& name, std::wstring& value)
{
    if (name.empty()) {
        return false;
    }
    std::vector<wchar_t> buffer(kPathBufferCharacters);
    for (int attempt = 0; attempt < 4; ++attempt) {
        // 0 means unset or empty; only the error code tells them apart.
        SetLastError(ERROR_SUCCESS);
        const DWORD length = GetEnvironmentVariableW(name.c_str(), buffer.data(), static_cast<DWORD>(buffer.size()));
        if (length == 0) {
            if (GetLastError() == ERROR_ENVVAR_NOT_FOUND) {
                return false;
            }
            value.clear();
            return true;
        }
        if (length < buffer.size()) {
            value.assign(buffer.data(), length);
            return true;
        }
        buffer.resize(length);
    }
    return false;
}

std::string ResolveFilePath(const std::string& path)
{
    return path;
}

std::FILE* CreateFileBeside(const std::string& path, std::string& newPath)
{
    static std::atomic<unsigned> s_nCounter{0};
    for (int attempt = 0; attempt < 16; ++attempt) {
        const std::string candidate = path + ".~mvgoz" + std::to_string(GetCurrentProcessId()) + "-"
            + std::to_string(s_nCounter.fetch_add(1));
        const int fd = _open(candidate.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY | _O_NOINHERIT,
                             _S_IREAD | _S_IWRITE);
        if (fd < 0) {
            if (errno == EEXIST) {
                continue;
            }
            return nullptr;
        }
        std::FILE* file = _fdopen(fd, "wb");
        if (file == nullptr) {
            _close(fd);
            _unlink(candidate.c_str());
            return nullptr;
        }
        newPath = candidate;
        return file;
    }
    return nullptr;
}

bool CommitAndClose(std::FILE* file)
{
    if (file == nullptr) {
        return false;
    }
    bool ok = std::fflush(file) == 0;
    ok = _commit(_fileno(file)) == 0 && ok;
    ok = std::fclose(file) == 0 && ok;
    return ok;
}

bool MoveFileOver(const std::string& from, const std::string& to)
{
    std::wstring wideFrom;
    std::wstring wideTo;
    if (!ToWidePath(from, wideFrom) || !ToWidePath(to, wideTo)) {
        return false;
    }
    return MoveFileExW(wideFrom.c_str(), wideTo.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

} // namespace Platform
} // namespace MV

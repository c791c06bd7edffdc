#include "DoctorPlatform.h"

#include "DoctorStrings.h"

#include <atomic>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

extern char** environ;

namespace MV {
namespace Doctor {
namespace System {

namespace {

std::string SlashesForBackslashes(std::string text)
{
    for (char& c : text) {
        if (c == '\\') {
            c = '/';
        }
    }
    return text;
}

bool EqualsIgnoringAsciiCase(const std::string& a, const std::string& b)
{
    if (a.size() != b.size()) {
        return false;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        char x = a[i];
        char y = b[i];
        x = (x >= 'A' && x <= 'Z') ? static_cast<char>(x - 'A' + 'a') : x;
        y = (y >= 'A' && y <= 'Z') ? static_cast<char>(y - 'A' + 'a') : y;
        if (x != y) {
            return false;
        }
    }
    return true;
}

} // namespace

std::filesystem::path PathFromWide(const std::wstring& text)
{
    return std::filesystem::path(EncodeUtf8(text));
}

std::filesystem::path PathFromNarrow(const std::string& bytes)
{
    return std::filesystem::path(bytes);
}

std::filesystem::path ProgramPathFromWide(const std::wstring& text)
{
    return std::filesystem::path(SlashesForBackslashes(EncodeUtf8(text)));
}

std::filesystem::path ProgramPathFromNarrow(const std::string& bytes)
{
    return std::filesystem::path(SlashesForBackslashes(bytes));
}

std::string DisplayPath(const std::filesystem::path& path)
{
    return SanitizeUtf8(path.native());
}

std::string DisplayNarrow(const std::string& bytes)
{
    return SanitizeUtf8(bytes);
}

std::string FileNameKey(const std::filesystem::path& name)
{
    return name.native();
}

bool FindVariableSpelling(const std::wstring& name, std::string& spelling)
{
    // Same choice as the platform layer: the exact name wins, else the first that differs in case.
    const std::string wanted = EncodeUtf8(name);
    bool found = false;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const char* equals = std::strchr(*entry, '=');
        if (equals == nullptr || equals == *entry) {
            continue;
        }
        const std::string entryName(*entry, static_cast<std::size_t>(equals - *entry));
        if (entryName == wanted) {
            spelling = SanitizeUtf8(entryName);
            return true;
        }
        if (!found && EqualsIgnoringAsciiCase(entryName, wanted)) {
            spelling = SanitizeUtf8(entryName);
            found = true;
        }
    }
    return found;
}

bool SameEntry(const std::filesystem::path& a, const std::filesystem::path& b)
{
    struct stat first {};
    struct stat second {};
    return ::stat(a.c_str(), &first) == 0 && ::stat(b.c_str(), &second) == 0 && first.st_dev == second.st_dev
        && first.st_ino == second.st_ino;
}

bool LastModified(const std::filesystem::path& path, std::time_t& time)
{
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) {
        return false;
    }
    time = info.st_mtime;
    return true;
}

ECheck ProbeUserWrite(const std::filesystem::path& folder, std::string& detail)
{
    static std::atomic<unsigned> s_nCounter{0};
    for (int attempt = 0; attempt < 16; ++attempt) {
        std::filesystem::path probe = folder;
        probe /= ".mvgoz-doctor-" + std::to_string(::getpid()) + "-" + std::to_string(s_nCounter.fetch_add(1));
        const int fd = ::open(probe.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd < 0) {
            if (errno == EEXIST) {
                continue;
            }
            detail = std::strerror(errno);
            return ECheck::No;
        }
        ::close(fd);
        if (::unlink(probe.c_str()) != 0) {
            detail = "could not remove " + DisplayPath(probe) + ": " + std::strerror(errno);
        }
        return ECheck::Yes;
    }
    detail = "no free name for a test file";
    return ECheck::NotChecked;
}

ECheck ProbeEveryoneWrite(const std::filesystem::path& folder, std::string& detail)
{
    struct stat info {};
    if (::stat(folder.c_str(), &info) != 0) {
        detail = std::strerror(errno);
        return ECheck::NotChecked;
    }
    return (info.st_mode & S_IWOTH) != 0 ? ECheck::Yes : ECheck::No;
}

ECheck ProbeFileWrite(const std::filesystem::path& file)
{
    const int fd = ::open(file.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0) {
        return ECheck::No;
    }
    ::close(fd);
    return ECheck::Yes;
}

std::FILE* OpenForReading(const std::filesystem::path& path)
{
    return std::fopen(path.c_str(), "rb");
}

std::filesystem::path ArgumentPath(int argc, char** argv, int index)
{
    if (index < 0 || index >= argc || argv[index] == nullptr) {
        return std::filesystem::path();
    }
    return std::filesystem::path(argv[index]);
}

void PrepareOutput()
{
}

} // namespace System
} // namespace Doctor
} // namespace MV

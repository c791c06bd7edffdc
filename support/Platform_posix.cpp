#include "Platform.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

extern char** environ;

// Stand-in for the Windows layer, so that the plug-in, the reference host and the tests
// run on Linux. Text from the system is taken as UTF-8.

namespace MV {
namespace Platform {

namespace {

// GetModuleFileNameW's buffer holds 260 characters, the terminating zero included.
constexpr std::size_t kMaxPathCharacters = 259;

// A byte that is not part of valid UTF-8 keeps its Latin-1 meaning, so odd file names
// still round-trip through WideToNarrow.
std::wstring DecodeUtf8(const std::string& bytes)
{
    std::wstring text;
    text.reserve(bytes.size());
    std::size_t i = 0;
    while (i < bytes.size()) {
        const unsigned char lead = static_cast<unsigned char>(bytes[i]);
        std::size_t length = 0;
        unsigned long c = 0;
        unsigned long minimum = 0;
        if (lead < 0x80) {
            length = 1;
            c = lead;
        } else if ((lead & 0xE0) == 0xC0) {
            length = 2;
            c = lead & 0x1F;
            minimum = 0x80;
        } else if ((lead & 0xF0) == 0xE0) {
            length = 3;
            c = lead & 0x0F;
            minimum = 0x800;
        } else if ((lead & 0xF8) == 0xF0) {
            length = 4;
            c = lead & 0x07;
            minimum = 0x10000;
        }
        bool valid = length > 0 && i + length <= bytes.size();
        for (std::size_t k = 1; valid && k < length; ++k) {
            const unsigned char next = static_cast<unsigned char>(bytes[i + k]);
            if ((next & 0xC0) != 0x80) {
                valid = false;
            } else {
                c = (c << 6) | (next & 0x3F);
            }
        }
        if (valid && (c < minimum || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF))) {
            valid = false;
        }
        if (!valid) {
            text.push_back(static_cast<wchar_t>(lead));
            ++i;
            continue;
        }
        text.push_back(static_cast<wchar_t>(c));
        i += length;
    }
    return text;
}

wchar_t FoldAscii(wchar_t c)
{
    return (c >= L'A' && c <= L'Z') ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

bool EqualsIgnoringAsciiCase(const std::wstring& a, const std::wstring& b)
{
    if (a.size() != b.size()) {
        return false;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (FoldAscii(a[i]) != FoldAscii(b[i])) {
            return false;
        }
    }
    return true;
}

std::vector<std::string> SplitOnTabs(const std::string& line)
{
    std::vector<std::string> fields;
    std::size_t start = 0;
    for (;;) {
        const std::size_t tab = line.find('\t', start);
        if (tab == std::string::npos) {
            fields.push_back(line.substr(start));
            return fields;
        }
        fields.push_back(line.substr(start, tab - start));
        start = tab + 1;
    }
}

bool IsStringType(const std::string& type)
{
    return EqualsIgnoringAsciiCase(DecodeUtf8(type), L"REG_SZ");
}

} // namespace

long ReadLocalMachineString(const std::wstring& subKey, const std::wstring& valueName, std::wstring& value)
{
    const char* registryFile = std::getenv("MVGOZ_REGISTRY_FILE");
    if (registryFile == nullptr || *registryFile == '\0') {
        return kErrorFileNotFound;
    }
    std::ifstream in(registryFile, std::ios::binary);
    if (!in) {
        return kErrorFileNotFound;
    }
    // Later lines override earlier ones, so a test can append to a shared file.
    long result = kErrorFileNotFound;
    std::wstring found;
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (line.empty() || line[0] == '#') {
            continue;
        }
        const std::vector<std::string> fields = SplitOnTabs(line);
        if (fields.size() < 3 || fields.size() > 4) {
            continue;
        }
        if (!EqualsIgnoringAsciiCase(DecodeUtf8(fields[0]), subKey)
            || !EqualsIgnoringAsciiCase(DecodeUtf8(fields[1]), valueName)) {
            continue;
        }
        if (fields.size() == 4 && !IsStringType(fields[3])) {
            result = kErrorUnsupportedType;
            continue;
        }
        result = kErrorSuccess;
        found = DecodeUtf8(fields[2]);
    }
    if (result == kErrorSuccess) {
        value = found;
    }
    return result;
}

std::wstring GetExecutablePath()
{
    std::vector<char> buffer(PATH_MAX);
    for (;;) {
        const ssize_t length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
        if (length < 0) {
            return std::wstring();
        }
        if (static_cast<std::size_t>(length) < buffer.size()) {
            std::wstring path = DecodeUtf8(std::string(buffer.data(), static_cast<std::size_t>(length)));
            if (path.size() > kMaxPathCharacters) {
                path.resize(kMaxPathCharacters);
            }
            return path;
        }
        buffer.resize(buffer.size() * 2);
    }
}

bool GetEnvironmentValue(const std::wstring& name, std::wstring& value)
{
    if (name.empty() || environ == nullptr) {
        return false;
    }
    // Names that differ only in case can coexist here; the exact one wins, else the first.
    const char* firstMatch = nullptr;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const char* equals = std::strchr(*entry, '=');
        if (equals == nullptr || equals == *entry) {
            continue;
        }
        const std::wstring entryName = DecodeUtf8(std::string(*entry, static_cast<std::size_t>(equals - *entry)));
        if (entryName == name) {
            value = DecodeUtf8(equals + 1);
            return true;
        }
        if (firstMatch == nullptr && EqualsIgnoringAsciiCase(entryName, name)) {
            firstMatch = equals + 1;
        }
    }
    if (firstMatch == nullptr) {
        return false;
    }
    value = DecodeUtf8(firstMatch);
    return true;
}

std::string ResolveFilePath(const std::string& path)
{
    char* resolved = ::realpath(path.c_str(), nullptr);
    if (resolved == nullptr) {
        return path;
    }
    std::string result(resolved);
    std::free(resolved);
    return result;
}

std::FILE* CreateFileBeside(const std::string& path, std::string& newPath)
{
    static std::atomic<unsigned> s_nCounter{0};
    struct stat original {};
    const bool haveOriginal = ::stat(path.c_str(), &original) == 0;
    for (int attempt = 0; attempt < 16; ++attempt) {
        const std::string candidate = path + ".~mvgoz" + std::to_string(::getpid()) + "-"
            + std::to_string(s_nCounter.fetch_add(1));
        // Private until it has the original's owner and rights.
        const int fd = ::open(candidate.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd < 0) {
            if (errno == EEXIST) {
                continue;
            }
            return nullptr;
        }
        if (haveOriginal) {
            if (::fchown(fd, original.st_uid, original.st_gid) != 0) {
                // Only root may give a file away; the new file then stays ours.
            }
            ::fchmod(fd, original.st_mode & 07777);
        }
        std::FILE* file = ::fdopen(fd, "wb");
        if (file == nullptr) {
            ::close(fd);
            ::unlink(candidate.c_str());
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
    ok = ::fsync(::fileno(file)) == 0 && ok;
    ok = std::fclose(file) == 0 && ok;
    return ok;
}

bool MoveFileOver(const std::string& from, const std::string& to)
{
    return std::rename(from.c_str(), to.c_str()) == 0;
}

} // namespace Platform
} // namespace MV

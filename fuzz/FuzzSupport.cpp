#include "FuzzSupport.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include <unistd.h>

namespace MV {
namespace Fuzz {

void Check(bool ok, const char* invariant)
{
    if (!ok) {
        std::fprintf(stderr, "invariant broken: %s\n", invariant);
        std::fflush(stderr);
        std::abort();
    }
}

std::vector<std::string> Split(const std::uint8_t* data, std::size_t size, std::size_t count)
{
    std::vector<std::string> parts;
    const char* at = reinterpret_cast<const char*>(data);
    const char* end = at + size;
    while (parts.size() + 1 < count) {
        const char* zero = at == end ? nullptr : static_cast<const char*>(std::memchr(at, '\0', end - at));
        parts.emplace_back(at, zero != nullptr ? zero : end);
        at = zero != nullptr ? zero + 1 : end;
    }
    parts.emplace_back(at, end);
    return parts;
}

namespace {

std::string g_strSandbox;

void RemoveSandbox()
{
    if (!g_strSandbox.empty()) {
        std::error_code ignored;
        // Leave it first: the folder may be the current one.
        std::filesystem::current_path(std::filesystem::temp_directory_path(ignored), ignored);
        std::filesystem::remove_all(g_strSandbox, ignored);
    }
}

} // namespace

const std::string& SandboxFolder()
{
    if (g_strSandbox.empty()) {
        const char* tmp = std::getenv("TMPDIR");
        std::string pattern = std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") + "/mvgoz-fuzz.XXXXXX";
        Check(::mkdtemp(pattern.data()) != nullptr, "a sandbox folder can be made under TMPDIR");
        g_strSandbox = pattern;
        std::atexit(RemoveSandbox);
    }
    return g_strSandbox;
}

void EnterSandbox()
{
    Check(::chdir(SandboxFolder().c_str()) == 0, "the sandbox folder can be entered");
}

std::string SandboxPath(const std::string& name)
{
    return SandboxFolder() + "/" + name;
}

bool MakeFolders(const std::string& path)
{
    std::error_code error;
    std::filesystem::create_directories(path, error);
    return !error;
}

bool WriteFile(const std::string& path, const std::string& bytes)
{
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) {
        return false;
    }
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    return std::fclose(file) == 0 && written;
}

bool ReadFile(const std::string& path, std::string& bytes)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return false;
    }
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return !in.bad();
}

bool Exists(const std::string& path)
{
    std::error_code error;
    return std::filesystem::exists(std::filesystem::symlink_status(path, error));
}

std::vector<std::string> FolderEntries(const std::string& path)
{
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator it(path, error), end; !error && it != end; it.increment(error)) {
        names.push_back(it->path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> Words(const std::string& text)
{
    std::vector<std::string> words;
    std::string word;
    for (const char c : text) {
        if (c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r') {
            if (!word.empty()) {
                words.push_back(word);
                word.clear();
            }
        } else {
            word += c;
        }
    }
    if (!word.empty()) {
        words.push_back(word);
    }
    return words;
}

} // namespace Fuzz
} // namespace MV

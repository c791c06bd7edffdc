#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// What every fuzz target shares. Qt-free, so the key = value targets stay Qt-free too.
// The same entry functions run under libFuzzer (scripts/fuzz.sh) and under the replay main
// that CTest runs over tests/fuzz/corpus/<target>/.
namespace MV {
namespace Fuzz {

// Aborts with the broken invariant named, so libFuzzer keeps the input as a crash.
void Check(bool ok, const char* invariant);

// The input cut at its first count - 1 zero bytes; the last part is the rest, zero bytes and
// all. Missing parts are empty.
std::vector<std::string> Split(const std::uint8_t* data, std::size_t size, std::size_t count);

// A private folder under TMPDIR, made on first use and removed at exit. EnterSandbox also
// makes it the current folder, for code that reads the fixed "C:/..." paths, which are
// relative on POSIX.
const std::string& SandboxFolder();
void EnterSandbox();
std::string SandboxPath(const std::string& name);

bool MakeFolders(const std::string& path);
bool WriteFile(const std::string& path, const std::string& bytes);
bool ReadFile(const std::string& path, std::string& bytes);
bool Exists(const std::string& path);
// Names in a folder, sorted, without "." and "..".
std::vector<std::string> FolderEntries(const std::string& path);

// The words of an object list: runs of bytes between the white space bytes of the C locale.
std::vector<std::string> Words(const std::string& text);

} // namespace Fuzz
} // namespace MV

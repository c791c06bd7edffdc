#pragma once

#include <cstdio>
#include <string>

// The thin layer over the operating system. Windows code is in Platform_win.cpp, the
// stand-in for other systems in Platform_posix.cpp; the build picks one.
namespace MV {
namespace Platform {

// Win32 error codes the callers see.
constexpr long kErrorSuccess = 0;
constexpr long kErrorFileNotFound = 2;
constexpr long kErrorMoreData = 234;
constexpr long kErrorUnsupportedType = 1630;

// Reads a REG_SZ value under HKEY_LOCAL_MACHINE (64-bit view). Returns 0 or a Win32 error.
// The stand-in reads the file named by MVGOZ_REGISTRY_FILE (see docs/registry-standin.md).
// On failure value is left as it was.
long ReadLocalMachineString(const std::wstring& subKey, const std::wstring& valueName, std::wstring& value);

// Full path of the running program, as a 260-character buffer gives it (longer paths are cut).
std::wstring GetExecutablePath();

// Environment lookup that ignores the case of the name, as Windows does. False when unset.
bool GetEnvironmentValue(const std::wstring& name, std::wstring& value);

// Latin-1 both ways: bytes 0-255 are U+0000-U+00FF; any other character becomes '?'.
std::string WideToNarrow(const std::wstring& text);
std::wstring NarrowToWide(const std::string& text);
// True when WideToNarrow keeps every character, so the text comes back as it went out.
bool IsNarrowText(const std::wstring& text);

// Replacing a file without leaving it half-written. Paths are narrow and go to the C
// runtime as they are (the ANSI code page on Windows, plain bytes elsewhere).

// The file that a write to path really changes (a symbolic link is followed where the
// system has them). path itself when it cannot be resolved.
std::string ResolveFilePath(const std::string& path);

// Creates a new, empty file with a unique name in the folder of path, open for binary
// writing, with path's access rights where the system has them. Null when none can be made.
std::FILE* CreateFileBeside(const std::string& path, std::string& newPath);

// Flushes file to the disk and closes it. False when any of it failed; file is closed anyway.
bool CommitAndClose(std::FILE* file);

// Moves the file from over the existing file to in one step. False leaves both as they were.
bool MoveFileOver(const std::string& from, const std::string& to);

} // namespace Platform
} // namespace MV

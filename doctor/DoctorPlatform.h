#pragma once

#include "DoctorFindings.h"

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <string>

// What the doctor needs of the system beyond support/Platform.h. DoctorPlatform_win.cpp and
// DoctorPlatform_posix.cpp; the build picks one.
namespace MV {
namespace Doctor {
namespace System {

// The public folder's value from the platform layer, as a path.
std::filesystem::path PathFromWide(const std::wstring& text);
// Bytes from an exchange file, as the C runtime would take them for a file name (the ANSI
// code page on Windows, plain bytes elsewhere).
std::filesystem::path PathFromNarrow(const std::string& bytes);
// A Windows program path (the registry value, the PATH key). On POSIX its backslashes are
// read as separators, so the sandboxes name their programs as Windows does.
std::filesystem::path ProgramPathFromWide(const std::wstring& text);
std::filesystem::path ProgramPathFromNarrow(const std::string& bytes);

// UTF-8 for printing.
std::string DisplayPath(const std::filesystem::path& path);
std::string DisplayNarrow(const std::string& bytes);

// Equal keys name the same file in one folder (Windows ignores case).
std::string FileNameKey(const std::filesystem::path& name);

// The name of the environment variable that a case-insensitive lookup of name finds, spelled
// as it is set. False when none is set.
bool FindVariableSpelling(const std::wstring& name, std::string& spelling);

// Whether two paths name the same existing file or folder (links and case followed as the
// system follows them).
bool SameEntry(const std::filesystem::path& a, const std::filesystem::path& b);

// Last-modified time of a file. False when it cannot be had.
bool LastModified(const std::filesystem::path& path, std::time_t& time);

// Creates a new file in folder and removes it again.
ECheck ProbeUserWrite(const std::filesystem::path& folder, std::string& detail);
// Whether every user of the machine may create files in folder (POSIX: the other-write bit;
// Windows: the folder's access list, for Everyone, Authenticated Users and Users).
ECheck ProbeEveryoneWrite(const std::filesystem::path& folder, std::string& detail);
// Opens an existing file for writing without changing it.
ECheck ProbeFileWrite(const std::filesystem::path& file);

std::FILE* OpenForReading(const std::filesystem::path& path);

// Command-line argument index as a path, in full even where it is not ANSI text.
std::filesystem::path ArgumentPath(int argc, char** argv, int index);

// Lets UTF-8 output show on a console.
void PrepareOutput();

} // namespace System
} // namespace Doctor
} // namespace MV

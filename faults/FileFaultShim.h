#pragma once

#include <string>
#include <vector>

// File faults for the fault campaign, injected below the plug-in, Qt and the C library.
//
// The test program defines open/fopen/write/rename/... itself (FileFaultShim.cpp); the
// dynamic linker resolves every module of the process to the program's definitions first,
// so the plug-in module, Qt and the reference host all go through them, and they forward to
// the C library. Chosen over a hook in the platform layer because most of the plug-in's file
// work goes through Qt (QFile, QSaveFile, QDir), which no hook of ours sees; over an
// LD_PRELOAD library because nothing has to be set outside the program and the runs stay
// in-process. No privileges, no change to the code under test, off until a test turns it on.
namespace MV {
namespace Faults {

// What a call did to a path.
enum class ETouch
{
    Read,       // opened for reading
    Write,      // opened for writing or created
    Stat,       // looked at: stat, statx, access
    RenameFrom,
    RenameTo,
    Unlink,
    MakeDir,
    ListDir,
};

struct CTouch
{
    std::string m_strPath;   // absolute, as the call named it
    std::string m_strFamily; // FamilyOf(m_strPath)
    ETouch m_eKind;
};

enum class EFileFault
{
    Missing,    // the file is deleted just before the touch
    ReadOnly,   // made read-only just before the touch; as on Windows it can then be neither
                // opened for writing, replaced, renamed nor deleted
    Directory,  // replaced by an empty folder just before the touch
    WriteFails, // the file opened for writing by the touch takes half of its first write,
                // then the disk is full
};

const char* Name(EFileFault fault);
const char* Name(ETouch touch);

// The file a path belongs to: the path itself, or for a temporary file written beside a file
// to replace it ("name.XXXXXX" from Qt, "name.~mvgoz<pid>-<n>" from the key files), that file.
std::string FamilyOf(const std::string& path);

// Starts a new run: touches of paths below root are recorded from now on, counting afresh.
void StartRecording(const std::string& root);
// Stops recording and disarms; the touches since StartRecording, in order.
std::vector<CTouch> StopRecording();

// The fault happens at the nth touch (1-based, counted since StartRecording) of family; for
// WriteFails at its nth Write touch. Once per run.
void Arm(const std::string& family, EFileFault fault, int nth);

// What became of the armed fault.
struct CFired
{
    bool m_bFired = false;
    bool m_bTargetExisted = false; // the file was there when it fired (Missing, ReadOnly, Directory)
    ETouch m_eTouch = ETouch::Read;
    std::string m_strPath;          // the path the firing touch named
    int m_iFailedCalls = 0;         // calls the fault made fail (or cut short)
};
CFired Fired();

} // namespace Faults
} // namespace MV

// The C library's file calls, defined in the test program so that they come first for every
// module of the process (see FileFaultShim.h). Each forwards to the C library's own.
#include "FileFaultShim.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <set>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace MV {
namespace Faults {

namespace {

template <typename F>
F Real(F, const char* name)
{
    return reinterpret_cast<F>(::dlsym(RTLD_NEXT, name));
}
#define MVGOZ_REAL(name) static const auto real = Real(&::name, #name)

struct CState
{
    std::mutex m_kMutex;
    bool m_bRecording = false;
    std::string m_strRoot;
    std::vector<CTouch> m_kTouches;

    bool m_bArmed = false;
    std::string m_strFamily;
    EFileFault m_eFault = EFileFault::Missing;
    int m_iNth = 0;
    int m_iCount = 0;
    CFired m_kFired;

    std::string m_strReadOnly;  // the path made read-only, while it is
    std::set<int> m_kDoomed;    // descriptors the full disk lies under
    std::set<int> m_kCutShort;  // of those, the ones that took their half
};

// Read before anything else, without a lock or an allocation: off, a call goes straight
// through, even one made before the program's own start-up has run.
std::atomic<bool> g_bRecording{false};

CState& State()
{
    static CState* s_pState = new CState; // never destroyed: calls come until the very end
    return *s_pState;
}

// Set while a call of ours runs, so that what the C library does inside it is not counted.
thread_local bool t_bInside = false;

class CInside
{
public:
    CInside() : m_bWas(t_bInside) { t_bInside = true; }
    ~CInside() { t_bInside = m_bWas; }
    bool Nested() const { return m_bWas; }

private:
    bool m_bWas;
};

std::string Normalize(const std::string& path)
{
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (start <= path.size()) {
        std::size_t slash = path.find('/', start);
        if (slash == std::string::npos) {
            slash = path.size();
        }
        const std::string part = path.substr(start, slash - start);
        if (part == "..") {
            if (!parts.empty()) {
                parts.pop_back();
            }
        } else if (!part.empty() && part != ".") {
            parts.push_back(part);
        }
        start = slash + 1;
    }
    std::string result;
    for (const std::string& part : parts) {
        result += '/';
        result += part;
    }
    return result.empty() ? std::string("/") : result;
}

std::string Absolute(const char* path)
{
    if (path == nullptr || *path == '\0') {
        return std::string();
    }
    if (path[0] == '/') {
        return Normalize(path);
    }
    char cwd[4096];
    if (::getcwd(cwd, sizeof cwd) == nullptr) {
        return std::string();
    }
    return Normalize(std::string(cwd) + "/" + path);
}

bool IsRandomSuffix(const std::string& text)
{
    if (text.size() != 6) {
        return false;
    }
    for (const char c : text) {
        if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'))) {
            return false;
        }
    }
    return true;
}

bool Below(const std::string& path, const std::string& root)
{
    return !root.empty() && path.size() > root.size() && path.compare(0, root.size(), root) == 0 &&
           path[root.size()] == '/';
}

bool IsRegularFile(const std::string& path)
{
    MVGOZ_REAL(lstat);
    struct stat info {};
    return real(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

// What happens to a call before it goes to the C library.
struct CVerdict
{
    int m_iError = 0;     // fail the call with this errno
    bool m_bDoom = false; // the descriptor it opens gets the full disk
};

void Fire(CState& state, const std::string& path, ETouch kind, CVerdict& verdict)
{
    static const auto realUnlink = Real(&::unlink, "unlink");
    static const auto realMkdir = Real(&::mkdir, "mkdir");
    const std::string& target = state.m_strFamily;
    state.m_kFired.m_bFired = true;
    state.m_kFired.m_eTouch = kind;
    state.m_kFired.m_strPath = path;
    state.m_kFired.m_bTargetExisted = IsRegularFile(target);
    switch (state.m_eFault) {
    case EFileFault::Missing:
        if (state.m_kFired.m_bTargetExisted) {
            realUnlink(target.c_str());
        }
        break;
    case EFileFault::Directory:
        // Also where no file was yet: a folder stands where the file is to go.
        if (state.m_kFired.m_bTargetExisted) {
            realUnlink(target.c_str());
        }
        realMkdir(target.c_str(), 0755);
        break;
    case EFileFault::ReadOnly:
        if (state.m_kFired.m_bTargetExisted) {
            ::chmod(target.c_str(), 0444);
            state.m_strReadOnly = target;
        }
        break;
    case EFileFault::WriteFails:
        verdict.m_bDoom = true;
        break;
    }
}

CVerdict Touch(const char* rawPath, ETouch kind)
{
    CVerdict verdict;
    if (!g_bRecording.load(std::memory_order_acquire) || t_bInside) {
        return verdict;
    }
    CState& state = State();
    const CInside inside;
    const std::lock_guard<std::mutex> lock(state.m_kMutex);
    if (!state.m_bRecording) {
        return verdict;
    }
    const std::string path = Absolute(rawPath);
    if (!Below(path, state.m_strRoot)) {
        return verdict;
    }
    const std::string family = FamilyOf(path);
    state.m_kTouches.push_back(CTouch{path, family, kind});
    if (state.m_bArmed && !state.m_kFired.m_bFired && family == state.m_strFamily &&
        (state.m_eFault != EFileFault::WriteFails || kind == ETouch::Write)) {
        if (++state.m_iCount == state.m_iNth) {
            Fire(state, path, kind, verdict);
        }
    }
    if (!state.m_strReadOnly.empty() && path == state.m_strReadOnly &&
        (kind == ETouch::Write || kind == ETouch::RenameFrom || kind == ETouch::RenameTo || kind == ETouch::Unlink)) {
        verdict.m_iError = EACCES;
        ++state.m_kFired.m_iFailedCalls;
    }
    return verdict;
}

// Unnamed temporary files (O_TMPFILE) have no name to fault: refused below the root while
// recording, Qt then writes a named one beside the target, as it does on Windows.
bool RefuseUnnamed(const char* rawPath, int flags)
{
    if ((flags & O_TMPFILE) != O_TMPFILE || !g_bRecording.load(std::memory_order_acquire) || t_bInside) {
        return false;
    }
    CState& state = State();
    const CInside inside;
    const std::lock_guard<std::mutex> lock(state.m_kMutex);
    const std::string folder = Absolute(rawPath);
    return state.m_bRecording && (folder == state.m_strRoot || Below(folder, state.m_strRoot));
}

void Doom(int fd)
{
    if (fd < 0) {
        return;
    }
    CState& state = State();
    const std::lock_guard<std::mutex> lock(state.m_kMutex);
    state.m_kDoomed.insert(fd);
    state.m_kCutShort.erase(fd);
}

void Forget(int fd)
{
    if (fd < 0 || !g_bRecording.load(std::memory_order_acquire)) {
        return;
    }
    CState& state = State();
    const std::lock_guard<std::mutex> lock(state.m_kMutex);
    state.m_kDoomed.erase(fd);
    state.m_kCutShort.erase(fd);
}

enum class EWrite
{
    Normal,
    Half, // write half, then report the disk full
    Fail,
};

EWrite WriteFate(int fd)
{
    if (!g_bRecording.load(std::memory_order_acquire) || t_bInside) {
        return EWrite::Normal;
    }
    CState& state = State();
    const std::lock_guard<std::mutex> lock(state.m_kMutex);
    if (state.m_kDoomed.count(fd) == 0) {
        return EWrite::Normal;
    }
    ++state.m_kFired.m_iFailedCalls;
    return state.m_kCutShort.insert(fd).second ? EWrite::Half : EWrite::Fail;
}

ETouch OpenKind(int flags)
{
    return ((flags & O_ACCMODE) != O_RDONLY || (flags & (O_CREAT | O_TRUNC)) != 0) ? ETouch::Write : ETouch::Read;
}

ETouch FopenKind(const char* mode)
{
    return (mode != nullptr && std::strpbrk(mode, "wa+") != nullptr) ? ETouch::Write : ETouch::Read;
}

template <typename Open>
int OpenThrough(Open real, const char* path, int flags, mode_t mode)
{
    if (RefuseUnnamed(path, flags)) {
        errno = EOPNOTSUPP;
        return -1;
    }
    const CVerdict verdict = Touch(path, OpenKind(flags));
    if (verdict.m_iError != 0) {
        errno = verdict.m_iError;
        return -1;
    }
    const int fd = real(path, flags, mode);
    if (verdict.m_bDoom) {
        Doom(fd);
    }
    return fd;
}

template <typename Fopen>
std::FILE* FopenThrough(Fopen real, const char* path, const char* mode)
{
    const CVerdict verdict = Touch(path, FopenKind(mode));
    if (verdict.m_iError != 0) {
        errno = verdict.m_iError;
        return nullptr;
    }
    std::FILE* file = real(path, mode);
    if (verdict.m_bDoom && file != nullptr) {
        Doom(::fileno(file));
    }
    return file;
}

int Denied(const CVerdict& verdict)
{
    errno = verdict.m_iError;
    return -1;
}

mode_t ModeArgument(int flags, va_list args)
{
    return ((flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE) ? static_cast<mode_t>(va_arg(args, int)) : 0;
}

} // namespace

const char* Name(EFileFault fault)
{
    switch (fault) {
    case EFileFault::Missing:
        return "missing";
    case EFileFault::ReadOnly:
        return "read-only";
    case EFileFault::Directory:
        return "a directory";
    case EFileFault::WriteFails:
        return "write fails";
    }
    return "?";
}

const char* Name(ETouch touch)
{
    switch (touch) {
    case ETouch::Read:
        return "read";
    case ETouch::Write:
        return "write";
    case ETouch::Stat:
        return "stat";
    case ETouch::RenameFrom:
        return "rename-from";
    case ETouch::RenameTo:
        return "rename-to";
    case ETouch::Unlink:
        return "unlink";
    case ETouch::MakeDir:
        return "mkdir";
    case ETouch::ListDir:
        return "list";
    }
    return "?";
}

std::string FamilyOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    const std::size_t staged = name.find(".~mvgoz");
    if (staged != std::string::npos && staged > 0) {
        return folder + name.substr(0, staged);
    }
    const std::size_t dot = name.rfind('.');
    if (dot != std::string::npos && IsRandomSuffix(name.substr(dot + 1)) &&
        name.substr(0, dot).find('.') != std::string::npos) {
        name.resize(dot);
    }
    return folder + name;
}

void StartRecording(const std::string& root)
{
    CState& state = State();
    const std::lock_guard<std::mutex> lock(state.m_kMutex);
    state.m_bRecording = true;
    g_bRecording.store(true, std::memory_order_release);
    state.m_strRoot = Normalize(root);
    state.m_kTouches.clear();
    state.m_bArmed = false;
    state.m_iCount = 0;
    state.m_kFired = CFired();
    state.m_strReadOnly.clear();
    state.m_kDoomed.clear();
    state.m_kCutShort.clear();
}

std::vector<CTouch> StopRecording()
{
    CState& state = State();
    const std::lock_guard<std::mutex> lock(state.m_kMutex);
    state.m_bRecording = false;
    g_bRecording.store(false, std::memory_order_release);
    state.m_bArmed = false;
    state.m_strReadOnly.clear();
    state.m_kDoomed.clear();
    state.m_kCutShort.clear();
    std::vector<CTouch> touches;
    touches.swap(state.m_kTouches);
    return touches;
}

void Arm(const std::string& family, EFileFault fault, int nth)
{
    CState& state = State();
    const std::lock_guard<std::mutex> lock(state.m_kMutex);
    state.m_bArmed = true;
    state.m_strFamily = Normalize(family);
    state.m_eFault = fault;
    state.m_iNth = nth;
    state.m_iCount = 0;
    state.m_kFired = CFired();
}

CFired Fired()
{
    CState& state = State();
    const std::lock_guard<std::mutex> lock(state.m_kMutex);
    return state.m_kFired;
}

} // namespace Faults
} // namespace MV

using namespace MV::Faults;

// ---------------------------------------------------------------------------------------
// The interposed calls. Signatures as the C library declares them.

extern "C" {

int open(const char* path, int flags, ...)
{
    MVGOZ_REAL(open);
    va_list args;
    va_start(args, flags);
    const mode_t mode = ModeArgument(flags, args);
    va_end(args);
    return OpenThrough(real, path, flags, mode);
}

int open64(const char* path, int flags, ...)
{
    MVGOZ_REAL(open64);
    va_list args;
    va_start(args, flags);
    const mode_t mode = ModeArgument(flags, args);
    va_end(args);
    return OpenThrough(real, path, flags, mode);
}

int openat(int dirfd, const char* path, int flags, ...)
{
    MVGOZ_REAL(openat);
    va_list args;
    va_start(args, flags);
    const mode_t mode = ModeArgument(flags, args);
    va_end(args);
    if (dirfd != AT_FDCWD && path != nullptr && path[0] != '/') {
        return real(dirfd, path, flags, mode);
    }
    return OpenThrough([&](const char* p, int f, mode_t m) { return real(dirfd, p, f, m); }, path, flags, mode);
}

int openat64(int dirfd, const char* path, int flags, ...)
{
    MVGOZ_REAL(openat64);
    va_list args;
    va_start(args, flags);
    const mode_t mode = ModeArgument(flags, args);
    va_end(args);
    if (dirfd != AT_FDCWD && path != nullptr && path[0] != '/') {
        return real(dirfd, path, flags, mode);
    }
    return OpenThrough([&](const char* p, int f, mode_t m) { return real(dirfd, p, f, m); }, path, flags, mode);
}

FILE* fopen(const char* path, const char* mode)
{
    MVGOZ_REAL(fopen);
    return FopenThrough(real, path, mode);
}

FILE* fopen64(const char* path, const char* mode)
{
    MVGOZ_REAL(fopen64);
    return FopenThrough(real, path, mode);
}

ssize_t write(int fd, const void* buffer, size_t count)
{
    MVGOZ_REAL(write);
    switch (WriteFate(fd)) {
    case EWrite::Normal:
        break;
    case EWrite::Half:
        if (count / 2 > 0) {
            return real(fd, buffer, count / 2);
        }
        errno = ENOSPC;
        return -1;
    case EWrite::Fail:
        errno = ENOSPC;
        return -1;
    }
    return real(fd, buffer, count);
}

size_t fwrite(const void* buffer, size_t size, size_t count, FILE* stream)
{
    MVGOZ_REAL(fwrite);
    const int fd = stream != nullptr ? ::fileno(stream) : -1;
    switch (fd < 0 ? EWrite::Normal : WriteFate(fd)) {
    case EWrite::Normal:
        break;
    case EWrite::Half: {
        const size_t half = size * count / 2;
        const size_t written = half > 0 ? real(buffer, 1, half, stream) : 0;
        std::fflush(stream);
        errno = ENOSPC;
        return size > 0 ? written / size : 0;
    }
    case EWrite::Fail:
        errno = ENOSPC;
        return 0;
    }
    return real(buffer, size, count, stream);
}

int close(int fd)
{
    MVGOZ_REAL(close);
    Forget(fd);
    return real(fd);
}

int fclose(FILE* stream)
{
    MVGOZ_REAL(fclose);
    if (stream != nullptr) {
        Forget(::fileno(stream));
    }
    return real(stream);
}

int rename(const char* from, const char* to) __THROW
{
    MVGOZ_REAL(rename);
    const CVerdict source = Touch(from, ETouch::RenameFrom);
    const CVerdict target = Touch(to, ETouch::RenameTo);
    if (source.m_iError != 0) {
        return Denied(source);
    }
    if (target.m_iError != 0) {
        return Denied(target);
    }
    return real(from, to);
}

int renameat2(int fromDir, const char* from, int toDir, const char* to, unsigned int flags) __THROW
{
    MVGOZ_REAL(renameat2);
    if (fromDir == AT_FDCWD && toDir == AT_FDCWD) {
        const CVerdict source = Touch(from, ETouch::RenameFrom);
        const CVerdict target = Touch(to, ETouch::RenameTo);
        if (source.m_iError != 0) {
            return Denied(source);
        }
        if (target.m_iError != 0) {
            return Denied(target);
        }
    }
    return real(fromDir, from, toDir, to, flags);
}

int unlink(const char* path) __THROW
{
    MVGOZ_REAL(unlink);
    const CVerdict verdict = Touch(path, ETouch::Unlink);
    return verdict.m_iError != 0 ? Denied(verdict) : real(path);
}

int remove(const char* path) __THROW
{
    MVGOZ_REAL(remove);
    const CVerdict verdict = Touch(path, ETouch::Unlink);
    return verdict.m_iError != 0 ? Denied(verdict) : real(path);
}

int mkdir(const char* path, mode_t mode) __THROW
{
    MVGOZ_REAL(mkdir);
    Touch(path, ETouch::MakeDir);
    return real(path, mode);
}

int stat(const char* path, struct stat* buffer) __THROW
{
    MVGOZ_REAL(stat);
    Touch(path, ETouch::Stat);
    return real(path, buffer);
}

int stat64(const char* path, struct stat64* buffer) __THROW
{
    MVGOZ_REAL(stat64);
    Touch(path, ETouch::Stat);
    return real(path, buffer);
}

int lstat(const char* path, struct stat* buffer) __THROW
{
    MVGOZ_REAL(lstat);
    Touch(path, ETouch::Stat);
    return real(path, buffer);
}

int lstat64(const char* path, struct stat64* buffer) __THROW
{
    MVGOZ_REAL(lstat64);
    Touch(path, ETouch::Stat);
    return real(path, buffer);
}

int statx(int dirfd, const char* path, int flags, unsigned int mask, struct statx* buffer) __THROW
{
    MVGOZ_REAL(statx);
    if (dirfd == AT_FDCWD && path != nullptr && *path != '\0') {
        Touch(path, ETouch::Stat);
    }
    return real(dirfd, path, flags, mask, buffer);
}

int access(const char* path, int mode) __THROW
{
    MVGOZ_REAL(access);
    Touch(path, ETouch::Stat);
    return real(path, mode);
}

DIR* opendir(const char* path)
{
    MVGOZ_REAL(opendir);
    Touch(path, ETouch::ListDir);
    return real(path);
}

} // extern "C"

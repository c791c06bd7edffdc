#pragma once

#include <cstddef>
#include <string>
#include <vector>

// What the doctor found on this machine. Every text here is UTF-8, ready to print; the
// checks fill it (DoctorChecks.h), the renderers only read it (DoctorText.h, DoctorJson.h).
namespace MV {
namespace Doctor {

enum class EPublicSource
{
    Variable, // the PUBLIC variable, in whatever case its name is spelled
    Default,  // unset: C:\users\public
    Override, // --public on the command line
};

// What is at a path.
enum class EEntryKind
{
    Missing,
    File,
    Folder,
    Other,      // a device, a socket...
    Unreachable // the system would not say (no access to a parent folder, a bad name)
};

enum class ECheck
{
    Yes,
    No,
    NotChecked,
};

// How a small key = value file could be read.
enum class EReadState
{
    NotTried,
    Read,
    Missing,
    NotAFile,
    Unreadable,
    TooLarge,
};

enum class ESeverity
{
    Problem, // a round trip cannot work until it is fixed
    Warning, // works for this user, may fail for another
};

struct CEntry
{
    std::string m_strPath;
    EEntryKind m_eKind = EEntryKind::Missing;
};

// One key of GoZ_Config.txt or GoZ_Info.txt and the file its value names.
struct CKeyFinding
{
    std::string m_strKey;
    bool m_bFound = false;
    std::string m_strValue;     // as the plug-in reads it: quotes removed
    std::size_t m_nValueBytes = 0;
    bool m_bHasTarget = false;  // m_kTarget was looked at
    CEntry m_kTarget;
};

// Whether a public folder can take new files.
struct CFolderAccess
{
    std::string m_strName; // "Pixologic root", "GoZProjects/Default/", "GoZApps/Figmora/"
    CEntry m_kFolder;
    ECheck m_eUser = ECheck::NotChecked;
    ECheck m_eEveryone = ECheck::NotChecked;
    std::string m_strUserDetail;     // why a check failed, from the system
    std::string m_strEveryoneDetail;
};

struct CProblem
{
    std::string m_strId; // stable, for scripts and tests
    ESeverity m_eSeverity = ESeverity::Problem;
    std::string m_strText; // what is wrong and what to do, in sentences
};

struct CDoctorFindings
{
    // Where the exchange lives.
    std::string m_strPublicFolder;
    EPublicSource m_ePublicSource = EPublicSource::Default;
    std::string m_strPublicVariable; // the variable's name as set, when it came from there
    CEntry m_kRoot;                  // public folder + "/Pixologic/"
    CEntry m_kReturnRoot;            // the fixed folder the receive side reads from
    ECheck m_eReturnRootSame = ECheck::NotChecked;

    // ZBrush's side.
    CEntry m_kZBrushFromApp;

    // The host's GoZ application folder.
    CEntry m_kAppFolder;
    CEntry m_kLauncher;
    bool m_bLauncherTimeKnown = false;
    std::string m_strLauncherTime; // local time, "YYYY-MM-DD hh:mm"
    bool m_bLauncherStale = false;
    CEntry m_kConfig;
    EReadState m_eConfigRead = EReadState::NotTried;
    ECheck m_eConfigWritable = ECheck::NotChecked;
    CKeyFinding m_kConfigPath;
    CEntry m_kInfo;
    EReadState m_eInfoRead = EReadState::NotTried;
    std::vector<CKeyFinding> m_kInfoKeys; // GOZ_OBJECT_LIST, MAKEOBJECTPATH_COMMAND, GOZBRUSH_COMMAND

    // The host program as the registry names it.
    std::string m_strRegistryKey;
    std::string m_strRegistryValueName;
    long m_nRegistryResult = 0;
    std::string m_strRegistryData;
    CEntry m_kRegistryProgram;
    bool m_bRegistryFitsConfig = true; // Latin-1 text, as GoZ_Config.txt holds it

    std::vector<CFolderAccess> m_kFolders;

    // The last exchange: the object list against the files in GoZProjects/Default/.
    CEntry m_kProjects;
    CEntry m_kObjectList;
    EReadState m_eObjectListRead = EReadState::NotTried;
    ECheck m_eObjectListWritable = ECheck::NotChecked;
    std::size_t m_nListedNames = 0;
    std::size_t m_nFoundNames = 0;
    std::size_t m_nMissingNames = 0;
    std::vector<std::string> m_kMissingNames; // the first kMaxListedMissing of them
    std::size_t m_nSkippedNames = 0;          // too long or holding a NUL: the receive side drops them
    std::size_t m_nProjectFiles = 0;          // .goz/.GoZ files in the project folder
    std::size_t m_nUnlistedFiles = 0;

    std::vector<CProblem> m_kProblems;

    bool HasProblem(const std::string& id) const;
    std::size_t ProblemCount() const; // warnings not counted
    bool CanRoundTrip() const { return ProblemCount() == 0; }
    int ExitCode() const { return CanRoundTrip() ? 0 : 1; }
};

constexpr std::size_t kMaxListedMissing = 1000;

// "does not exist", "is a file, not a folder"...: completes a sentence that starts with a path.
std::string KindPhrase(EEntryKind kind, bool folderExpected);
// One word each, as the JSON output spells them.
const char* KindWord(EEntryKind kind);
const char* CheckWord(ECheck check);
const char* ReadWord(EReadState state);
const char* SourceWord(EPublicSource source);

} // namespace Doctor
} // namespace MV

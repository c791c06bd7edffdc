#include "DoctorChecks.h"

#include "DoctorPlatform.h"
#include "DoctorStrings.h"
#include "KeyValueText.h"
#include "Platform.h"

#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>
#include <string>
#include <system_error>
#include <unordered_set>
#include <vector>

namespace MV {
namespace Doctor {

namespace fs = std::filesystem;

namespace {

constexpr char kLauncherName[] = "GoZBrushToFM.exe";
constexpr char kConfigName[] = "GoZ_Config.txt";
constexpr char kInfoName[] = "GoZ_Info.txt";
constexpr char kFromAppPath[] = "GoZBrush/GoZBrushFromApp.exe";
constexpr char kProjectsPath[] = "GoZProjects/Default/";
constexpr char kAppFolderPath[] = "GoZApps/Figmora/";
constexpr char kObjectListKey[] = "GOZ_OBJECT_LIST";
constexpr char kMakeObjectPathKey[] = "MAKEOBJECTPATH_COMMAND";
constexpr char kGoZBrushKey[] = "GOZBRUSH_COMMAND";
const wchar_t kRegistryKey[] = L"SOFTWARE\\Quorvane\\Figmora\\4.0";
const wchar_t kRegistryValue[] = L"Main Program";
const wchar_t kDefaultPublic[] = L"C:\\users\\public";

// In the order the findings keep them.
constexpr const char* kInfoKeys[] = {kObjectListKey, kMakeObjectPathKey, kGoZBrushKey};

// root + relative, joined as the plug-in joins them: as text, no separator added.
fs::path Join(const fs::path& folder, const fs::path& relative)
{
    fs::path joined = folder;
    joined += relative;
    return joined;
}

fs::path Join(const fs::path& folder, const char* relative)
{
    fs::path joined = folder;
    joined += relative;
    return joined;
}

EEntryKind KindOf(const fs::path& path)
{
    // "a/b/" names b; a trailing separator on a file would read as "missing" otherwise.
    fs::path target = path;
    if (!target.has_filename() && target.has_relative_path()) {
        target = target.parent_path();
    }
    if (target.empty()) {
        return EEntryKind::Missing;
    }
    std::error_code error;
    const fs::file_status status = fs::status(target, error);
    if (error) {
        if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory) {
            return EEntryKind::Missing;
        }
        return EEntryKind::Unreachable;
    }
    switch (status.type()) {
    case fs::file_type::not_found:
        return EEntryKind::Missing;
    case fs::file_type::regular:
        return EEntryKind::File;
    case fs::file_type::directory:
        return EEntryKind::Folder;
    default:
        return EEntryKind::Other;
    }
}

CEntry Inspect(const fs::path& path)
{
    CEntry entry;
    entry.m_strPath = System::DisplayPath(path);
    entry.m_eKind = KindOf(path);
    return entry;
}

// The whole of a small file, or why not.
EReadState ReadSmallFile(const fs::path& path, EEntryKind kind, std::string& bytes)
{
    if (kind == EEntryKind::Missing) {
        return EReadState::Missing;
    }
    if (kind != EEntryKind::File) {
        return kind == EEntryKind::Unreachable ? EReadState::Unreadable : EReadState::NotAFile;
    }
    std::error_code error;
    const std::uintmax_t size = fs::file_size(path, error);
    if (!error && size > kMaxKeyFileBytes) {
        return EReadState::TooLarge;
    }
    std::FILE* file = System::OpenForReading(path);
    if (file == nullptr) {
        return EReadState::Unreadable;
    }
    // Read at most one byte past the limit, in case the file grew since its size was taken.
    std::vector<char> chunk(64 * 1024);
    bool tooLarge = false;
    for (;;) {
        const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), file);
        bytes.append(chunk.data(), count);
        if (bytes.size() > kMaxKeyFileBytes) {
            tooLarge = true;
            break;
        }
        if (count < chunk.size()) {
            break;
        }
    }
    const bool failed = std::ferror(file) != 0;
    std::fclose(file);
    if (tooLarge) {
        bytes.clear();
        return EReadState::TooLarge;
    }
    return failed ? EReadState::Unreadable : EReadState::Read;
}

// One key by the plug-in's line rules; the value in full, so an overlong one can be told.
CKeyFinding FindKey(const std::string& bytes, const char* key)
{
    CKeyFinding finding;
    finding.m_strKey = key;
    std::string value;
    bool hasValue = false;
    if (!bytes.empty() && KeyValue::FindKeyValue(bytes.data(), bytes.size(), key, value, hasValue)) {
        finding.m_bFound = true;
        // A line without "=" leaves the plug-in's zeroed buffer as it was: an empty value.
        if (!hasValue) {
            value.clear();
        }
        // The plug-in holds it as a C string.
        const std::size_t nul = value.find('\0');
        if (nul != std::string::npos) {
            value.resize(nul);
        }
        finding.m_nValueBytes = value.size();
        finding.m_strValue = value;
    }
    return finding;
}

std::string LocalTimeText(std::time_t time)
{
    const std::tm* local = std::localtime(&time);
    if (local == nullptr) {
        return "an unknown date";
    }
    char text[32] = {};
    if (std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M", local) == 0) {
        return "an unknown date";
    }
    return text;
}

// 2018-08-14 00:00 local time: launchers older than this mark the folder stale. Fixed on purpose.
std::time_t StaleCutOff()
{
    std::tm cutOff {};
    cutOff.tm_year = 2018 - 1900;
    cutOff.tm_mon = 8 - 1;
    cutOff.tm_mday = 14;
    cutOff.tm_isdst = -1;
    return std::mktime(&cutOff);
}

void FindPublicFolder(const CDoctorOptions& options, CDoctorFindings& findings, fs::path& publicFolder)
{
    if (options.m_bHasPublicOverride) {
        findings.m_ePublicSource = EPublicSource::Override;
        publicFolder = options.m_kPublicOverride;
    } else {
        std::wstring value;
        // The lookup the plug-in makes: case-insensitive, as Windows does.
        if (Platform::GetEnvironmentValue(L"public", value)) {
            findings.m_ePublicSource = EPublicSource::Variable;
            System::FindVariableSpelling(L"public", findings.m_strPublicVariable);
            publicFolder = System::PathFromWide(value);
        } else {
            findings.m_ePublicSource = EPublicSource::Default;
            publicFolder = System::PathFromWide(kDefaultPublic);
        }
    }
    findings.m_strPublicFolder = System::DisplayPath(publicFolder);
}

void CheckLauncher(const fs::path& appFolder, CDoctorFindings& findings)
{
    const fs::path launcher = Join(appFolder, kLauncherName);
    findings.m_kLauncher = Inspect(launcher);
    std::time_t modified = 0;
    if (findings.m_kLauncher.m_eKind == EEntryKind::File && System::LastModified(launcher, modified)) {
        findings.m_bLauncherTimeKnown = true;
        findings.m_strLauncherTime = LocalTimeText(modified);
        const std::time_t cutOff = StaleCutOff();
        findings.m_bLauncherStale = cutOff != static_cast<std::time_t>(-1) && modified < cutOff;
    }
}

void CheckConfig(const fs::path& appFolder, CDoctorFindings& findings)
{
    const fs::path config = Join(appFolder, kConfigName);
    findings.m_kConfig = Inspect(config);
    findings.m_kConfigPath.m_strKey = "PATH";
    std::string bytes;
    findings.m_eConfigRead = ReadSmallFile(config, findings.m_kConfig.m_eKind, bytes);
    if (findings.m_kConfig.m_eKind == EEntryKind::File) {
        findings.m_eConfigWritable = System::ProbeFileWrite(config);
    }
    if (findings.m_eConfigRead != EReadState::Read) {
        return;
    }
    CKeyFinding path = FindKey(bytes, "PATH");
    if (path.m_bFound && !path.m_strValue.empty()) {
        path.m_bHasTarget = true;
        path.m_kTarget = Inspect(System::ProgramPathFromNarrow(path.m_strValue));
    }
    path.m_strValue = System::DisplayNarrow(path.m_strValue);
    findings.m_kConfigPath = path;
}

void CheckInfo(const fs::path& appFolder, CDoctorFindings& findings, fs::path& objectList)
{
    const fs::path info = Join(appFolder, kInfoName);
    findings.m_kInfo = Inspect(info);
    std::string bytes;
    findings.m_eInfoRead = ReadSmallFile(info, findings.m_kInfo.m_eKind, bytes);
    findings.m_kInfoKeys.clear();
    for (const char* name : kInfoKeys) {
        CKeyFinding key = FindKey(bytes, name);
        // An overlong value is cut by the plug-in; that is the problem, not what the cut text names.
        if (key.m_bFound && !key.m_strValue.empty() && key.m_nValueBytes <= kMaxValueBytes) {
            // Relative to the application folder, appended as it stands.
            const fs::path target = Join(appFolder, System::PathFromNarrow(key.m_strValue));
            key.m_bHasTarget = true;
            key.m_kTarget = Inspect(target);
            if (std::strcmp(name, kObjectListKey) == 0) {
                objectList = target;
            }
        }
        key.m_strValue = System::DisplayNarrow(key.m_strValue);
        findings.m_kInfoKeys.push_back(key);
    }
}

void CheckRegistry(CDoctorFindings& findings)
{
    findings.m_strRegistryKey = EncodeUtf8(kRegistryKey);
    findings.m_strRegistryValueName = EncodeUtf8(kRegistryValue);
    std::wstring value;
    findings.m_nRegistryResult = Platform::ReadLocalMachineString(kRegistryKey, kRegistryValue, value);
    if (findings.m_nRegistryResult != Platform::kErrorSuccess) {
        return;
    }
    findings.m_strRegistryData = EncodeUtf8(value);
    findings.m_kRegistryProgram = Inspect(System::ProgramPathFromWide(value));
    // A send writes it into GoZ_Config.txt as Latin-1: anything beyond is lost there.
    findings.m_bRegistryFitsConfig = Platform::IsNarrowText(value);
}

void CheckFolder(const char* name, const fs::path& folder, CDoctorFindings& findings)
{
    CFolderAccess access;
    access.m_strName = name;
    access.m_kFolder = Inspect(folder);
    if (access.m_kFolder.m_eKind == EEntryKind::Folder) {
        access.m_eUser = System::ProbeUserWrite(folder, access.m_strUserDetail);
        access.m_eEveryone = System::ProbeEveryoneWrite(folder, access.m_strEveryoneDetail);
    }
    findings.m_kFolders.push_back(access);
}

// ".goz" in any case, compared in the system's own characters (no conversion that could fail).
bool HasGoZExtension(const fs::path& name)
{
    const auto extension = name.extension().native();
    const char wanted[] = ".goz";
    if (extension.size() != 4) {
        return false;
    }
    for (std::size_t i = 0; i < 4; ++i) {
        auto c = extension[i];
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<decltype(c)>(c - 'A' + 'a');
        }
        if (c != static_cast<decltype(c)>(wanted[i])) {
            return false;
        }
    }
    return true;
}

// The stems of the .goz/.GoZ files in the project folder, as file-name keys.
std::unordered_set<std::string> ProjectFiles(const fs::path& projects, CDoctorFindings& findings)
{
    std::unordered_set<std::string> stems;
    if (findings.m_kProjects.m_eKind != EEntryKind::Folder) {
        return stems;
    }
    std::error_code error;
    fs::directory_iterator it(projects, fs::directory_options::skip_permission_denied, error);
    const fs::directory_iterator end;
    while (!error && it != end) {
        std::error_code statusError;
        if (it->is_regular_file(statusError)) {
            const fs::path name = it->path().filename();
            if (HasGoZExtension(name)) {
                ++findings.m_nProjectFiles;
                stems.insert(System::FileNameKey(name.stem()));
            }
        }
        it.increment(error);
    }
    return stems;
}

bool IsNameSeparator(unsigned char c)
{
    // White space as "%s" reads it in the C locale.
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

void CheckObjectList(const fs::path& objectList, const fs::path& projects, CDoctorFindings& findings)
{
    const std::unordered_set<std::string> stems = ProjectFiles(projects, findings);
    if (objectList.empty()) {
        return;
    }
    findings.m_kObjectList = Inspect(objectList);
    const EEntryKind kind = findings.m_kObjectList.m_eKind;
    if (kind == EEntryKind::File) {
        findings.m_eObjectListWritable = System::ProbeFileWrite(objectList);
    }
    if (kind != EEntryKind::File) {
        findings.m_eObjectListRead = kind == EEntryKind::Missing ? EReadState::Missing
            : kind == EEntryKind::Unreachable                     ? EReadState::Unreadable
                                                                  : EReadState::NotAFile;
        return;
    }
    std::error_code sizeError;
    const std::uintmax_t size = fs::file_size(objectList, sizeError);
    if (!sizeError && size > kMaxObjectListBytes) {
        findings.m_eObjectListRead = EReadState::TooLarge;
        return;
    }
    std::FILE* file = System::OpenForReading(objectList);
    if (file == nullptr) {
        findings.m_eObjectListRead = EReadState::Unreadable;
        return;
    }

    std::unordered_set<std::string> matched;
    std::string word;
    bool tooLong = false;
    bool hasNul = false;
    const auto finishWord = [&]() {
        if (word.empty() && !tooLong) {
            return;
        }
        if (tooLong || hasNul) {
            ++findings.m_nSkippedNames;
        } else {
            ++findings.m_nListedNames;
            // The send side writes the project folder before each name; the file is in that folder.
            const std::size_t slash = word.find_last_of("/\\");
            const std::string base = slash == std::string::npos ? word : word.substr(slash + 1);
            const std::string key = base.empty() ? std::string() : System::FileNameKey(System::PathFromNarrow(base));
            if (!key.empty() && stems.count(key) != 0) {
                ++findings.m_nFoundNames;
                matched.insert(key);
            } else {
                ++findings.m_nMissingNames;
                if (findings.m_kMissingNames.size() < kMaxListedMissing) {
                    findings.m_kMissingNames.push_back(System::DisplayNarrow(word));
                }
            }
        }
        word.clear();
        tooLong = false;
        hasNul = false;
    };

    std::vector<char> chunk(64 * 1024);
    std::size_t total = 0;
    bool tooLarge = false;
    for (;;) {
        const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), file);
        total += count;
        if (total > kMaxObjectListBytes) {
            tooLarge = true;
            break;
        }
        for (std::size_t i = 0; i < count; ++i) {
            const unsigned char c = static_cast<unsigned char>(chunk[i]);
            if (IsNameSeparator(c)) {
                finishWord();
                continue;
            }
            if (word.size() < kMaxObjectNameBytes) {
                word.push_back(static_cast<char>(c));
                hasNul = hasNul || c == 0;
            } else {
                tooLong = true;
            }
        }
        if (count < chunk.size()) {
            break;
        }
    }
    const bool failed = std::ferror(file) != 0;
    std::fclose(file);
    if (tooLarge) {
        findings.m_eObjectListRead = EReadState::TooLarge;
        return;
    }
    finishWord();
    findings.m_eObjectListRead = failed ? EReadState::Unreadable : EReadState::Read;
    findings.m_nUnlistedFiles = stems.size() - matched.size();
}

void RunAll(const CDoctorOptions& options, CDoctorFindings& findings)
{
    fs::path publicFolder;
    FindPublicFolder(options, findings, publicFolder);
    const fs::path root = Join(publicFolder, "/Pixologic/");
    findings.m_kRoot = Inspect(root);

    findings.m_kReturnRoot = Inspect(options.m_kReturnRoot);
    if (findings.m_kRoot.m_eKind == EEntryKind::Folder) {
        const bool same = findings.m_kReturnRoot.m_eKind == EEntryKind::Folder
            && System::SameEntry(root, options.m_kReturnRoot);
        findings.m_eReturnRootSame = same ? ECheck::Yes : ECheck::No;
    }

    findings.m_kZBrushFromApp = Inspect(Join(root, kFromAppPath));

    const fs::path appFolder = Join(root, kAppFolderPath);
    const fs::path projects = Join(root, kProjectsPath);
    findings.m_kAppFolder = Inspect(appFolder);
    findings.m_kProjects = Inspect(projects);
    CheckLauncher(appFolder, findings);
    CheckConfig(appFolder, findings);
    fs::path objectList;
    CheckInfo(appFolder, findings, objectList);
    CheckRegistry(findings);

    CheckFolder("Pixologic root", root, findings);
    CheckFolder(kProjectsPath, projects, findings);
    CheckFolder(kAppFolderPath, appFolder, findings);

    CheckObjectList(objectList, projects, findings);
}

} // namespace

CDoctorFindings RunChecks(const CDoctorOptions& options)
{
    CDoctorFindings findings;
    try {
        RunAll(options, findings);
        DeriveProblems(findings);
    } catch (const std::exception& error) {
        // Out of memory or a library failure: say so rather than stop without a word.
        findings.m_kProblems.push_back({"check-failed", ESeverity::Problem,
                                        std::string("The checks stopped early (") + SanitizeUtf8(error.what())
                                            + "). Run the doctor again; if it stops again, report this message."});
    }
    return findings;
}

} // namespace Doctor
} // namespace MV

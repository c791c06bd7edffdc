#include "DoctorText.h"

#include "DoctorStrings.h"

#include <sstream>

namespace MV {
namespace Doctor {

namespace {

std::string P(const std::string& text)
{
    return Printable(text);
}

std::string Entry(const CEntry& entry, bool folderExpected)
{
    return P(entry.m_strPath) + " " + KindPhrase(entry.m_eKind, folderExpected);
}

std::string Target(const CKeyFinding& key)
{
    if (!key.m_bHasTarget) {
        return "";
    }
    return key.m_kTarget.m_eKind == EEntryKind::File ? " (" + P(key.m_kTarget.m_strPath) + " is there)"
                                                     : " (" + Entry(key.m_kTarget, false) + ")";
}

std::string KeyLine(const CKeyFinding& key)
{
    if (!key.m_bFound) {
        return key.m_strKey + ": no such line";
    }
    if (key.m_strValue.empty()) {
        return key.m_strKey + ": no value";
    }
    return key.m_strKey + " = " + P(key.m_strValue) + Target(key);
}

const char* ReadText(EReadState state)
{
    switch (state) {
    case EReadState::TooLarge:
        return "too large to be a GoZ file";
    case EReadState::NotAFile:
        return "not a file";
    case EReadState::Unreadable:
        return "cannot be read";
    default:
        return "";
    }
}

const char* Access(ECheck check)
{
    switch (check) {
    case ECheck::Yes:
        return "yes";
    case ECheck::No:
        return "no";
    case ECheck::NotChecked:
        break;
    }
    return "not checked";
}

void Where(std::ostringstream& out, const CDoctorFindings& f)
{
    out << "Public folder: " << P(f.m_strPublicFolder);
    switch (f.m_ePublicSource) {
    case EPublicSource::Variable:
        out << " (from the variable " << P(f.m_strPublicVariable) << ").\n";
        break;
    case EPublicSource::Default:
        out << " (the default: PUBLIC is not set).\n";
        break;
    case EPublicSource::Override:
        out << " (given with --public).\n";
        break;
    }
    out << "Pixologic root: " << Entry(f.m_kRoot, true) << ".\n";
    if (f.m_eReturnRootSame == ECheck::Yes) {
        out << "Returned meshes are read below " << P(f.m_kReturnRoot.m_strPath) << ", the same folder.\n";
    } else if (f.m_eReturnRootSame == ECheck::No) {
        out << "Returned meshes are read below " << P(f.m_kReturnRoot.m_strPath) << ", which is not that folder.\n";
    }
    out << "ZBrush: " << Entry(f.m_kZBrushFromApp, false) << ".\n";
}

void ApplicationFolder(std::ostringstream& out, const CDoctorFindings& f)
{
    out << "GoZ application folder: " << Entry(f.m_kAppFolder, true) << ".\n";
    if (f.m_kAppFolder.m_eKind != EEntryKind::Folder) {
        return;
    }
    out << "  Launcher: " << Entry(f.m_kLauncher, false);
    if (f.m_bLauncherTimeKnown) {
        out << ", dated " << f.m_strLauncherTime << (f.m_bLauncherStale ? " (stale: before 2018-08-14)" : " (current)");
    }
    out << ".\n";

    out << "  Settings: " << Entry(f.m_kConfig, false);
    if (f.m_eConfigRead == EReadState::Read) {
        out << "; " << KeyLine(f.m_kConfigPath);
        if (f.m_eConfigWritable == ECheck::No) {
            out << "; you cannot write it";
        }
    } else if (f.m_kConfig.m_eKind == EEntryKind::File) {
        out << " but " << ReadText(f.m_eConfigRead);
    }
    out << ".\n";

    out << "  Information: " << Entry(f.m_kInfo, false);
    if (f.m_eInfoRead == EReadState::Read) {
        out << ":\n";
        for (const CKeyFinding& key : f.m_kInfoKeys) {
            out << "    " << KeyLine(key) << "\n";
        }
    } else {
        if (f.m_kInfo.m_eKind == EEntryKind::File) {
            out << " but " << ReadText(f.m_eInfoRead);
        }
        out << ".\n";
    }
}

void Registry(std::ostringstream& out, const CDoctorFindings& f)
{
    out << "Registry: HKEY_LOCAL_MACHINE\\" << P(f.m_strRegistryKey) << " \"" << P(f.m_strRegistryValueName) << "\"";
    if (f.m_nRegistryResult != 0) {
        out << " cannot be read (error " << f.m_nRegistryResult << ").\n";
        return;
    }
    out << " = " << P(f.m_strRegistryData);
    if (f.m_kRegistryProgram.m_eKind == EEntryKind::File) {
        out << " (that program is there).\n";
    } else {
        out << " (which " << KindPhrase(f.m_kRegistryProgram.m_eKind, false) << ").\n";
    }
}

void Folders(std::ostringstream& out, const CDoctorFindings& f)
{
    out << "Can new files be made there (by you; by every user):\n";
    for (const CFolderAccess& folder : f.m_kFolders) {
        out << "  " << P(folder.m_kFolder.m_strPath) << ": ";
        if (folder.m_kFolder.m_eKind != EEntryKind::Folder) {
            out << KindPhrase(folder.m_kFolder.m_eKind, true) << ".\n";
            continue;
        }
        out << Access(folder.m_eUser) << "; " << Access(folder.m_eEveryone) << ".\n";
    }
}

void Exchange(std::ostringstream& out, const CDoctorFindings& f)
{
    out << "Last exchange: ";
    switch (f.m_eObjectListRead) {
    case EReadState::NotTried:
        out << "no object list is named, so none was looked at.\n";
        return;
    case EReadState::Missing:
        out << "the object list " << P(f.m_kObjectList.m_strPath) << " does not exist yet (nothing sent).\n";
        return;
    case EReadState::Read:
        break;
    default:
        out << "the object list " << P(f.m_kObjectList.m_strPath) << " is " << ReadText(f.m_eObjectListRead) << ".\n";
        return;
    }
    out << "the object list " << P(f.m_kObjectList.m_strPath) << " names " << f.m_nListedNames << " object"
        << (f.m_nListedNames == 1 ? "" : "s") << "; " << f.m_nFoundNames << " with a .GoZ file in "
        << P(f.m_kProjects.m_strPath) << ", " << f.m_nMissingNames << " without";
    if (f.m_nSkippedNames > 0) {
        out << ", " << f.m_nSkippedNames << " skipped as too long";
    }
    out << " (" << f.m_nProjectFiles << " .goz/.GoZ file" << (f.m_nProjectFiles == 1 ? "" : "s") << " there, "
        << f.m_nUnlistedFiles << " not listed).\n";
    const std::size_t shown = f.m_kMissingNames.size() < 10 ? f.m_kMissingNames.size() : 10;
    for (std::size_t i = 0; i < shown; ++i) {
        out << "  no file for " << P(f.m_kMissingNames[i]) << "\n";
    }
    if (f.m_nMissingNames > shown) {
        out << "  and " << (f.m_nMissingNames - shown) << " more\n";
    }
}

void Verdict(std::ostringstream& out, const CDoctorFindings& f)
{
    const std::size_t problems = f.ProblemCount();
    out << "\n";
    if (problems == 0) {
        out << "Result: a round trip can work.\n";
    } else {
        out << "Result: " << problems << (problems == 1 ? " problem stops" : " problems stop") << " a round trip:\n";
        std::size_t number = 0;
        for (const CProblem& problem : f.m_kProblems) {
            if (problem.m_eSeverity == ESeverity::Problem) {
                out << "  " << ++number << ". " << P(problem.m_strText) << "\n";
            }
        }
    }
    if (problems < f.m_kProblems.size()) {
        out << "Warnings:\n";
        for (const CProblem& problem : f.m_kProblems) {
            if (problem.m_eSeverity == ESeverity::Warning) {
                out << "  - " << P(problem.m_strText) << "\n";
            }
        }
    }
}

} // namespace

std::string RenderText(const CDoctorFindings& findings)
{
    std::ostringstream out;
    Where(out, findings);
    ApplicationFolder(out, findings);
    Registry(out, findings);
    Folders(out, findings);
    Exchange(out, findings);
    Verdict(out, findings);
    return out.str();
}

} // namespace Doctor
} // namespace MV

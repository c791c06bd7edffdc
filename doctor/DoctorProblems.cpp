#include "DoctorChecks.h"

#include <string>

// From the facts to sentences: what is wrong and what to do about it. Where one cause hides
// others (no Pixologic folder: nothing below it can be there), only the cause is told.
namespace MV {
namespace Doctor {

namespace {

void Add(CDoctorFindings& findings, const std::string& id, const std::string& text,
         ESeverity severity = ESeverity::Problem)
{
    findings.m_kProblems.push_back({id, severity, text});
}

std::string SourcePhrase(const CDoctorFindings& findings)
{
    switch (findings.m_ePublicSource) {
    case EPublicSource::Variable:
        return "from the variable " + findings.m_strPublicVariable;
    case EPublicSource::Default:
        return "the default, as PUBLIC is not set";
    case EPublicSource::Override:
        return "given with --public";
    }
    return "";
}

std::string ReadPhrase(EReadState state)
{
    switch (state) {
    case EReadState::TooLarge:
        return "is far larger than a GoZ settings file";
    case EReadState::NotAFile:
        return "is not a file";
    default:
        return "cannot be read";
    }
}

// "info-unreadable", "info-too-large"...
std::string ReadId(const char* subject, EReadState state)
{
    return std::string(subject) + (state == EReadState::TooLarge ? "-too-large" : "-unreadable");
}

std::string CountText(std::size_t count, const char* one, const char* many)
{
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

void RootProblems(CDoctorFindings& findings)
{
    Add(findings, "root-missing",
        "The Pixologic folder " + findings.m_kRoot.m_strPath + " " + KindPhrase(findings.m_kRoot.m_eKind, true)
            + ", so ZBrush's GoZ is not set up below the public folder " + findings.m_strPublicFolder + " ("
            + SourcePhrase(findings)
            + "). Install ZBrush, or set PUBLIC to the public folder that holds ZBrush's Pixologic folder.");
}

void ReturnRootProblems(CDoctorFindings& findings)
{
    if (findings.m_eReturnRootSame != ECheck::No) {
        return;
    }
    const std::string where = findings.m_kReturnRoot.m_eKind == EEntryKind::Folder
        ? "is not the folder " + findings.m_kRoot.m_strPath
        : KindPhrase(findings.m_kReturnRoot.m_eKind, true);
    Add(findings, "return-root-differs",
        "Meshes coming back from ZBrush are always read below " + findings.m_kReturnRoot.m_strPath + ", which "
            + where + ". Make " + findings.m_kReturnRoot.m_strPath + " lead to " + findings.m_kRoot.m_strPath
            + " (a directory junction, mklink /J, does it), or set PUBLIC so that both are the same folder.");
}

void ZBrushProblems(CDoctorFindings& findings)
{
    if (findings.m_kZBrushFromApp.m_eKind == EEntryKind::File) {
        return;
    }
    Add(findings, "zbrush-missing",
        "ZBrush's GoZ program " + findings.m_kZBrushFromApp.m_strPath + " "
            + KindPhrase(findings.m_kZBrushFromApp.m_eKind, false)
            + ", so the plug-in refuses to send. Install ZBrush (or repair its GoZ installation) for this "
              "public folder.");
}

void LauncherProblems(CDoctorFindings& findings)
{
    if (findings.m_kLauncher.m_eKind != EEntryKind::File) {
        Add(findings, "launcher-missing",
            "The return launcher " + findings.m_kLauncher.m_strPath + " "
                + KindPhrase(findings.m_kLauncher.m_eKind, false)
                + ", so ZBrush cannot hand meshes back to Figmora. Press GoZ in Figmora once to install it; if it "
                  "is still missing, reinstall the plug-in, which ships it.");
    } else if (findings.m_bLauncherStale) {
        Add(findings, "launcher-stale",
            "The return launcher " + findings.m_kLauncher.m_strPath + " dates from " + findings.m_strLauncherTime
                + ", before 2018-08-14, so the plug-in takes the whole folder for outdated and replaces its files at "
                  "every GoZ. Install a current plug-in and press GoZ once; that puts a current launcher there.");
    }
}

void ConfigProblems(CDoctorFindings& findings)
{
    const CEntry& config = findings.m_kConfig;
    if (config.m_eKind == EEntryKind::Missing) {
        Add(findings, "config-missing",
            "The launcher's settings " + config.m_strPath
                + " do not exist, so ZBrush cannot start Figmora with returned meshes. Press GoZ in Figmora once to "
                  "install them.");
        return;
    }
    if (findings.m_eConfigRead != EReadState::Read) {
        Add(findings, ReadId("config", findings.m_eConfigRead),
            "The launcher's settings " + config.m_strPath + " " + ReadPhrase(findings.m_eConfigRead)
                + ". Remove it and press GoZ in Figmora once to install it anew.");
        return;
    }
    if (findings.m_eConfigWritable == ECheck::No) {
        Add(findings, "config-not-writable",
            "You cannot write " + config.m_strPath
                + ", so a send cannot record Figmora's program in it. Clear its read-only mark or give your user "
                  "write access to it.");
    }
    const CKeyFinding& path = findings.m_kConfigPath;
    if (!path.m_bFound || path.m_strValue.empty()) {
        Add(findings, "config-path-missing",
            config.m_strPath
                + " names no program in a PATH line, so the return launcher cannot find Figmora. Press GoZ in "
                  "Figmora: every send writes that line from the registry.");
    } else if (path.m_kTarget.m_eKind != EEntryKind::File) {
        Add(findings, "config-program-missing",
            config.m_strPath + " says PATH = " + path.m_strValue + ", which "
                + KindPhrase(path.m_kTarget.m_eKind, false)
                + ", so the return launcher cannot start Figmora. Press GoZ in Figmora: every send sets PATH to the "
                  "program that the registry names.");
    }
}

std::string KeyId(const std::string& key)
{
    if (key == "GOZ_OBJECT_LIST") {
        return "object-list-key";
    }
    if (key == "MAKEOBJECTPATH_COMMAND") {
        return "make-object-path-key";
    }
    return "gozbrush-key";
}

void InfoProblems(CDoctorFindings& findings, bool zbrushThere)
{
    const CEntry& info = findings.m_kInfo;
    if (info.m_eKind == EEntryKind::Missing) {
        Add(findings, "info-missing",
            "The GoZ information file " + info.m_strPath
                + " does not exist, so a send cannot tell ZBrush what it sent. Press GoZ in Figmora once to install "
                  "it; if it is still missing, reinstall the plug-in, which ships it.");
        return;
    }
    if (findings.m_eInfoRead != EReadState::Read) {
        Add(findings, ReadId("info", findings.m_eInfoRead),
            "The GoZ information file " + info.m_strPath + " " + ReadPhrase(findings.m_eInfoRead)
                + ". Remove it and press GoZ in Figmora once to install it anew.");
        return;
    }
    for (const CKeyFinding& key : findings.m_kInfoKeys) {
        const std::string id = KeyId(key.m_strKey);
        if (!key.m_bFound || key.m_strValue.empty()) {
            Add(findings, id + "-missing",
                info.m_strPath + " gives no value for " + key.m_strKey
                    + ", so a send stops there. Remove the file and press GoZ in Figmora once to install the "
                      "shipped one.");
            continue;
        }
        if (key.m_nValueBytes > kMaxValueBytes) {
            Add(findings, id + "-too-long",
                "The " + key.m_strKey + " value in " + info.m_strPath + " is " + std::to_string(key.m_nValueBytes)
                    + " bytes long, and Figmora reads only the first " + std::to_string(kMaxValueBytes)
                    + ". Shorten it, or reinstall the shipped file.");
            continue;
        }
        // The object list is written by each send; only the two programs must be there beforehand.
        if (id == "object-list-key" || !zbrushThere || key.m_kTarget.m_eKind == EEntryKind::File) {
            continue;
        }
        Add(findings, id.substr(0, id.size() - 4) + "-program-missing",
            key.m_strKey + " in " + info.m_strPath + " names " + key.m_kTarget.m_strPath + ", which "
                + KindPhrase(key.m_kTarget.m_eKind, false)
                + ", so a send cannot start it. Repair ZBrush's GoZ installation, or correct " + key.m_strKey
                + " there.");
    }
}

std::string RegistryErrorText(long error)
{
    switch (error) {
    case 2:
        return "not found";
    case 5:
        return "access denied";
    case 1630:
        return "not a text value";
    default:
        return "error " + std::to_string(error);
    }
}

void RegistryProblems(CDoctorFindings& findings)
{
    const std::string where = "HKEY_LOCAL_MACHINE\\" + findings.m_strRegistryKey + ", value \""
        + findings.m_strRegistryValueName + "\"";
    if (findings.m_nRegistryResult != 0) {
        Add(findings, "registry-missing",
            "Figmora's program is not recorded in the registry (" + where + ": "
                + RegistryErrorText(findings.m_nRegistryResult)
                + "), so every send stops before it writes its files. Reinstall Figmora, which records it there.");
        return;
    }
    if (!findings.m_bRegistryFitsConfig) {
        Add(findings, "registry-not-latin1",
            "The registry names Figmora's program as " + findings.m_strRegistryData
                + ", with characters that GoZ_Config.txt cannot hold, so the return launcher will not find it. "
                  "Install Figmora in a folder whose path has only Western European letters.");
    }
    if (findings.m_kRegistryProgram.m_eKind != EEntryKind::File) {
        Add(findings, "registry-program-missing",
            "The registry (" + where + ") names " + findings.m_strRegistryData + " as Figmora's program, which "
                + KindPhrase(findings.m_kRegistryProgram.m_eKind, false)
                + ", so the return launcher would start nothing. Reinstall Figmora so that the registry names the "
                  "program where it is.");
    }
}

// What fails when a folder cannot take new files.
struct CFolderRole
{
    const char* m_pName;
    const char* m_pId;
    const char* m_pConsequence;
};
constexpr CFolderRole kFolderRoles[] = {
    {"Pixologic root", "root", "GoZ cannot set up its folders"},
    {"GoZProjects/Default/", "projects", "Figmora cannot export meshes there and ZBrush cannot write them back"},
    {"GoZApps/Figmora/", "app-folder", "a send cannot write its object list"},
};

void FolderProblems(CDoctorFindings& findings)
{
    for (const CFolderAccess& folder : findings.m_kFolders) {
        const CFolderRole* role = nullptr;
        for (const CFolderRole& candidate : kFolderRoles) {
            if (folder.m_strName == candidate.m_pName) {
                role = &candidate;
            }
        }
        if (role == nullptr || folder.m_kFolder.m_eKind != EEntryKind::Folder) {
            continue;
        }
        if (folder.m_eUser == ECheck::No) {
            Add(findings, std::string(role->m_pId) + "-not-writable",
                "You cannot create files in " + folder.m_kFolder.m_strPath
                    + (folder.m_strUserDetail.empty() ? std::string() : " (" + folder.m_strUserDetail + ")")
                    + ", so " + role->m_pConsequence
                    + ". Give your user write access to that folder (on Windows: Properties, Security).");
        } else if (folder.m_eEveryone == ECheck::No) {
            Add(findings, std::string(role->m_pId) + "-not-shared",
                "Not every user may create files in " + folder.m_kFolder.m_strPath
                    + ". If ZBrush or Figmora runs as another user (or as administrator), give every user write "
                      "access to it.",
                ESeverity::Warning);
        }
    }
}

void ProjectProblems(CDoctorFindings& findings)
{
    if (findings.m_kProjects.m_eKind == EEntryKind::Folder) {
        return;
    }
    Add(findings, "projects-missing",
        "The GoZ project folder " + findings.m_kProjects.m_strPath + " "
            + KindPhrase(findings.m_kProjects.m_eKind, true)
            + ", so meshes have nowhere to go. Start ZBrush once, which creates it, or create it yourself.");
}

void ObjectListProblems(CDoctorFindings& findings)
{
    const CEntry& list = findings.m_kObjectList;
    switch (findings.m_eObjectListRead) {
    case EReadState::NotTried:
    case EReadState::Missing:
        return; // no exchange yet: each send writes the list
    case EReadState::Read:
        break;
    default:
        Add(findings, ReadId("object-list", findings.m_eObjectListRead),
            "The object list " + list.m_strPath + " " + ReadPhrase(findings.m_eObjectListRead)
                + ", so returned meshes cannot be found. Remove it and send from ZBrush again.");
        return;
    }
    if (findings.m_eObjectListWritable == ECheck::No) {
        Add(findings, "object-list-not-writable",
            "You cannot write the object list " + list.m_strPath
                + ", so a send cannot tell ZBrush what it sent. Clear its read-only mark or remove it.");
    }
    // Without the project folder every name would count as missing; projects-missing says it.
    if (findings.m_nMissingNames > 0 && findings.m_kProjects.m_eKind == EEntryKind::Folder) {
        std::string names;
        const std::size_t shown = findings.m_kMissingNames.size() < 5 ? findings.m_kMissingNames.size() : 5;
        for (std::size_t i = 0; i < shown; ++i) {
            names += (i == 0 ? "" : ", ") + findings.m_kMissingNames[i];
        }
        if (findings.m_nMissingNames > shown) {
            names += " and " + std::to_string(findings.m_nMissingNames - shown) + " more";
        }
        Add(findings, "object-list-files-missing",
            "The object list " + list.m_strPath + " names "
                + CountText(findings.m_nMissingNames, "object", "objects") + " with no .GoZ file in "
                + findings.m_kProjects.m_strPath + ": " + names
                + ". Send them again from ZBrush (its GoZ button) or, if they went out from Figmora, press GoZ "
                  "there again.");
    }
    if (findings.m_nSkippedNames > 0) {
        Add(findings, "object-list-long-names",
            "The object list " + list.m_strPath + " holds "
                + CountText(findings.m_nSkippedNames, "name", "names") + " longer than "
                + std::to_string(kMaxObjectNameBytes)
                + " bytes (or with a zero byte), which Figmora skips. Give those subtools shorter names in ZBrush "
                  "and send them again.");
    }
}

} // namespace

void DeriveProblems(CDoctorFindings& findings)
{
    findings.m_kProblems.clear();
    if (findings.m_kRoot.m_eKind != EEntryKind::Folder) {
        RootProblems(findings);
        RegistryProblems(findings);
        return;
    }
    ReturnRootProblems(findings);
    ZBrushProblems(findings);
    const bool zbrushThere = findings.m_kZBrushFromApp.m_eKind == EEntryKind::File;
    if (findings.m_kAppFolder.m_eKind != EEntryKind::Folder) {
        Add(findings, "app-folder-missing",
            "The GoZ application folder " + findings.m_kAppFolder.m_strPath + " "
                + KindPhrase(findings.m_kAppFolder.m_eKind, true)
                + ". Press GoZ in Figmora once: the plug-in creates it and installs the bridge files there"
                + (findings.m_kAppFolder.m_eKind == EEntryKind::Missing ? std::string(".")
                                                                         : std::string(" once the file is removed.")));
    } else {
        LauncherProblems(findings);
        ConfigProblems(findings);
        InfoProblems(findings, zbrushThere);
    }
    RegistryProblems(findings);
    ProjectProblems(findings);
    FolderProblems(findings);
    ObjectListProblems(findings);
}

} // namespace Doctor
} // namespace MV

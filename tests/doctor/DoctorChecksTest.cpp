#include "DoctorChecks.h"
#include "DoctorSandbox.h"
#include "EnvironmentGuard.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include <unistd.h>

// The checks on sandboxes that each break one thing: which problems the doctor names, and
// that nothing else is named.
namespace {

namespace fs = std::filesystem;
using MV::Doctor::CDoctorFindings;
using MV::Doctor::CDoctorOptions;
using MV::Doctor::EPublicSource;
using Ids = std::vector<std::string>;
using Break = std::function<void(CDoctorSandbox&, CDoctorOptions&)>;

const char kLauncher[] = "GoZApps/Figmora/GoZBrushToFM.exe";
const char kConfig[] = "GoZApps/Figmora/GoZ_Config.txt";
const char kInfo[] = "GoZApps/Figmora/GoZ_Info.txt";
const char kList[] = "GoZApps/Figmora/GoZ_ObjectList.txt";
const char kMake[] = "MAKEOBJECTPATH_COMMAND = ../../GoZBrush/GoZMakeObjectPath.exe\n";
const char kFromApp[] = "GOZBRUSH_COMMAND = ../../GoZBrush/GoZBrushFromApp.exe\n";

Ids ProblemIds(const CDoctorFindings& findings)
{
    Ids ids;
    for (const auto& problem : findings.m_kProblems) {
        EXPECT_FALSE(problem.m_strText.empty()) << problem.m_strId;
        ids.push_back(problem.m_strId);
    }
    std::sort(ids.begin(), ids.end());
    return ids;
}

// Root may write anything, so checks about rights run with the rights of user 65534.
struct CAsNobody
{
    explicit CAsNobody(bool wanted) : m_bSwitched(wanted && ::geteuid() == 0)
    {
        EXPECT_TRUE(!m_bSwitched || (::setegid(65534) == 0 && ::seteuid(65534) == 0));
    }
    ~CAsNobody() { EXPECT_TRUE(!m_bSwitched || (::seteuid(0) == 0 && ::setegid(m_iGroup) == 0)); }
    const bool m_bSwitched;
    const gid_t m_iGroup = ::getegid();
};

using S = CDoctorSandbox;
using O = CDoctorOptions;
Break Gone(const std::string& r) { return [r](S& s, O&) { s.Remove(s.InRoot(r)); }; }
Break Put(const std::string& r, const std::string& bytes) { return [=](S& s, O&) { s.Write(s.InRoot(r), bytes); }; }
Break AsFolder(const std::string& r) { return [r](S& s, O&) { s.Remove(s.InRoot(r)), s.MakeFolder(s.InRoot(r)); }; }
Break Mode(const std::string& r, unsigned mode) { return [=](S& s, O&) { s.Chmod(s.InRoot(r), mode); }; }
Break Size(const std::string& r, std::uintmax_t size) { return [=](S& s, O&) { fs::resize_file(s.InRoot(r), size); }; }
Break LauncherFrom(int year, int month, int day, int hour, int minute)
{
    return [=](S& s, O&) { s.SetModified(s.InRoot(kLauncher), year, month, day, hour, minute); };
}

struct CSandboxCase
{
    const char* m_pName;
    Break m_kBreak;
    Ids m_kExpected; // sorted
    int m_nExitCode;
    bool m_bRights = false; // needs a user whom the rights stop
    const char* m_pPublicName = "public";
};

std::vector<CSandboxCase> SandboxCases()
{
    std::string binary;
    for (int i = 0; i < 4096; ++i) {
        binary.push_back(static_cast<char>((i * 37 + 11) % 256));
    }
    return {
        {"all fine", [](S&, O&) {}, {}, 0},
        {"no ZBrush", Gone("GoZBrush/GoZBrushFromApp.exe"), {"zbrush-missing"}, 1},
        {"Pixologic is a file", [](S& s, O&) { s.Remove(s.Root()), s.Write(s.Public() / "Pixologic", "x"); },
         {"root-missing"}, 1},
        {"public folder name longer than the system takes",
         [](S& s, O& o) { o.m_kPublicOverride = s.Folder() / std::string(5000, 'n'); }, {"root-missing"}, 1},
        {"returned meshes read elsewhere",
         [](S& s, O& o) { o.m_kReturnRoot = s.Folder() / "elsewhere", s.MakeFolder(o.m_kReturnRoot); },
         {"return-root-differs"}, 1},
        {"Figmora folder is a file",
         [](S& s, O&) { s.Remove(s.InRoot("GoZApps/Figmora")), s.Write(s.InRoot("GoZApps/Figmora"), "x"); },
         {"app-folder-missing"}, 1},
        {"launcher is a folder", AsFolder(kLauncher), {"launcher-missing"}, 1},
        {"launcher a minute before the cut-off", LauncherFrom(2018, 8, 13, 23, 59), {"launcher-stale"}, 1},
        {"launcher from the cut-off", LauncherFrom(2018, 8, 14, 0, 0), {}, 0},
        {"GoZ_Config.txt missing", Gone(kConfig), {"config-missing"}, 1},
        {"PATH to a missing program",
         [](S& s, O& o) { Put(kConfig, "PATH = \"" + (s.Folder() / "gone" / "Figmora.exe").string() + "\"\n")(s, o); },
         {"config-program-missing"}, 1},
        {"PATH with backslashes names the program", [](S& s, O& o) {
             std::string path = s.HostProgram().string();
             std::replace(path.begin(), path.end(), '/', '\\');
             Put(kConfig, "APPLICATION = Figmora\r\nPATH = \"" + path + "\"\r\n")(s, o);
         }, {}, 0},
        {"huge GoZ_Config.txt", Size(kConfig, 3 * 1024 * 1024), {"config-too-large"}, 1},
        {"no PATH line", Put(kConfig, "APPLICATION = Figmora\n"), {"config-path-missing"}, 1},
        {"GoZ_Info.txt missing", Gone(kInfo), {"info-missing"}, 1},
        {"GoZ_Info.txt is a folder", AsFolder(kInfo), {"info-unreadable"}, 1},
        {"GOZ_OBJECT_LIST without a value", Put(kInfo, std::string("GOZ_OBJECT_LIST\n") + kMake + kFromApp),
         {"object-list-key-missing"}, 1},
        {"binary GoZ_Info.txt", Put(kInfo, binary),
         {"gozbrush-key-missing", "make-object-path-key-missing", "object-list-key-missing"}, 1},
        {"value longer than the plug-in reads",
         Put(kInfo, "GOZ_OBJECT_LIST = " + std::string(2000, 'x') + "\n" + kMake + kFromApp),
         {"object-list-key-too-long"}, 1},
        {"make-object-path program missing", Gone("GoZBrush/GoZMakeObjectPath.exe"),
         {"make-object-path-program-missing"}, 1},
        {"registry value missing", [](S& s, O&) { s.Write(s.RegistryFile(), ""); }, {"registry-missing"}, 1},
        {"registry names a missing program", [](S& s, O&) { s.SetRegistryProgram((s.Folder() / "gone.exe").string()); },
         {"registry-program-missing"}, 1},
        {"registry path beyond Latin-1", [](S& s, O&) {
             const fs::path program = s.Folder() / "\xe4\xb8\xbb" / "Figmora.exe";
             s.MakeFolder(program.parent_path());
             s.Write(program, "program");
             s.SetRegistryProgram(program.string());
         }, {"registry-not-latin1"}, 1},
        {"object list naming a missing file", Gone("GoZProjects/Default/Eye.goz"), {"object-list-files-missing"}, 1},
        {"huge object list", Size(kList, MV::Doctor::kMaxObjectListBytes + 1), {"object-list-too-large"}, 1},
        {"no object list yet", Gone(kList), {}, 0},
        {"object list is a folder", AsFolder(kList), {"object-list-unreadable"}, 1},
        {"object name longer than 95 bytes", Put(kList, "Body\n" + std::string(300, 'n') + "\nEye\n"),
         {"object-list-long-names"}, 1},
        {"object name holding a zero byte", Put(kList, std::string("Bo\0dy\tEye Body", 14)),
         {"object-list-long-names"}, 1},
        {"project folder missing", Gone("GoZProjects"), {"projects-missing"}, 1},
        {"non-ASCII public folder and object names", [](S& s, O& o) {
             Put("GoZProjects/Default/K\xc3\xb6rper.GoZ", "mesh")(s, o);
             Put(kList, "Body\nK\xc3\xb6rper\n")(s, o);
         }, {}, 0, false, "P\xc3\xba" "blic \xc3\xbc"},
        {"folder not open to every user", Mode("GoZApps/Figmora", 0755), {"app-folder-not-shared"}, 0},
        {"unwritable project folder", Mode("GoZProjects/Default", 0555), {"projects-not-writable"}, 1, true},
        {"unreadable GoZ_Info.txt", Mode(kInfo, 0), {"info-unreadable"}, 1, true},
        {"read-only GoZ_Config.txt", Mode(kConfig, 0444), {"config-not-writable"}, 1, true},
        {"read-only object list", Mode(kList, 0444), {"object-list-not-writable"}, 1, true},
    };
}

TEST(DoctorSandboxes, EachBrokenThingIsNamedAndNothingElse)
{
    for (const CSandboxCase& c : SandboxCases()) {
        SCOPED_TRACE(c.m_pName);
        CDoctorSandbox sandbox(c.m_pPublicName);
        ASSERT_TRUE(sandbox.IsValid());
        CDoctorOptions options = sandbox.Options();
        c.m_kBreak(sandbox, options);
        const CAsNobody user(c.m_bRights);
        const CDoctorFindings findings = sandbox.Check(options);
        EXPECT_EQ(ProblemIds(findings), c.m_kExpected);
        EXPECT_EQ(findings.ExitCode(), c.m_nExitCode);
    }
}

TEST(DoctorSandboxes, ObjectListCountsEveryNameButKeepsOnlyTheFirstThousandMissing)
{
    CDoctorSandbox sandbox;
    ASSERT_TRUE(sandbox.IsValid());
    std::string list = "Body Body\t";
    for (int i = 0; i < 1500; ++i) {
        list += "Gone" + std::to_string(i) + "\n";
    }
    sandbox.Write(sandbox.InRoot(kList), list);
    const CDoctorFindings f = sandbox.Check();
    EXPECT_EQ(f.m_nListedNames, 1502u);
    EXPECT_EQ(f.m_nFoundNames, 2u); // a name listed twice counts twice
    EXPECT_EQ(f.m_nMissingNames, 1500u);
    ASSERT_EQ(f.m_kMissingNames.size(), MV::Doctor::kMaxListedMissing);
    EXPECT_EQ(f.m_kMissingNames.front(), "Gone0");
    EXPECT_EQ(f.m_nUnlistedFiles, 1u); // Eye
}

TEST(DoctorPublicFolder, IsFoundAsThePlugInFindsIt)
{
    const struct
    {
        const char* name;
        std::vector<std::pair<const char*, const char*>> variables;
        EPublicSource source;
        std::string spelling;
        std::string folder;
    } cases[] = {
        {"mixed case", {{"Public", "/p/mixed"}}, EPublicSource::Variable, "Public", "/p/mixed"},
        {"exact spelling wins", {{"PUBLIC", "/p/upper"}, {"public", "/p/lower"}}, EPublicSource::Variable, "public",
         "/p/lower"},
        {"unset", {}, EPublicSource::Default, "", "C:\\users\\public"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CEnvironmentGuard guard;
        for (const char* name : {"PUBLIC", "Public", "public", "pUBLIC"}) {
            guard.Unset(name);
        }
        for (const auto& variable : c.variables) {
            guard.Set(variable.first, variable.second);
        }
        CDoctorOptions options;
        options.m_kReturnRoot = "/nonexistent-return-root/";
        const CDoctorFindings f = MV::Doctor::RunChecks(options);
        EXPECT_EQ(f.m_ePublicSource, c.source);
        EXPECT_EQ(f.m_strPublicVariable, c.spelling);
        EXPECT_EQ(f.m_strPublicFolder, c.folder);
        EXPECT_EQ(f.m_kRoot.m_strPath, c.folder + "/Pixologic/");
        EXPECT_TRUE(f.HasProblem("root-missing"));
    }
}

} // namespace

#include "DoctorChecks.h"
#include "DoctorSandbox.h"
#include "EnvironmentGuard.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

// The checks on sandboxes that each break one thing: which problems the doctor names, and
// that nothing else is named.
namespace {

namespace fs = std::filesystem;
using MV::Doctor::CDoctorFindings;
using MV::Doctor::CDoctorOptions;
using MV::Doctor::ECheck;
using MV::Doctor::EEntryKind;
using MV::Doctor::EPublicSource;
using Ids = std::vector<std::string>;

constexpr uid_t kNobody = 65534;

Ids ProblemIds(const CDoctorFindings& findings)
{
    Ids ids;
    for (const auto& problem : findings.m_kProblems) {
        ids.push_back(problem.m_strId);
    }
    std::sort(ids.begin(), ids.end());
    return ids;
}

// Root may write anything, so checks about rights run in a child as an unprivileged user.
// The child sends back the problem ids and its exit code as the last line.
bool RunAsNobody(const CDoctorOptions& options, Ids& ids, int& exitCode, std::string& error)
{
    int fds[2];
    if (::pipe(fds) != 0) {
        error = "pipe failed";
        return false;
    }
    const pid_t child = ::fork();
    if (child < 0) {
        error = "fork failed";
        return false;
    }
    if (child == 0) {
        ::close(fds[0]);
        if (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0) {
            ::_exit(3);
        }
        const CDoctorFindings findings = MV::Doctor::RunChecks(options);
        std::string out;
        for (const std::string& id : ProblemIds(findings)) {
            out += id + "\n";
        }
        out += std::to_string(findings.ExitCode()) + "\n";
        const bool written = ::write(fds[1], out.data(), out.size()) == static_cast<ssize_t>(out.size());
        ::_exit(written ? 0 : 4);
    }
    ::close(fds[1]);
    std::string text;
    char buffer[4096];
    ssize_t count = 0;
    while ((count = ::read(fds[0], buffer, sizeof(buffer))) > 0) {
        text.append(buffer, static_cast<std::size_t>(count));
    }
    ::close(fds[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        error = "child ended with status " + std::to_string(status);
        return false;
    }
    ids.clear();
    std::size_t start = 0;
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', start)) {
        ids.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    if (ids.empty()) {
        error = "no answer from the child";
        return false;
    }
    exitCode = std::stoi(ids.back());
    ids.pop_back();
    return true;
}

struct CSandboxCase
{
    const char* m_pName;
    std::function<void(CDoctorSandbox&, CDoctorOptions&)> m_kBreak;
    Ids m_kExpected; // sorted
    int m_nExitCode;
    bool m_bRights = false; // needs a user whom the rights stop
    const char* m_pPublicName = "public";
};

std::string Info(const std::string& objectList, const std::string& makeObjectPath, const std::string& goZBrush)
{
    std::string text;
    if (!objectList.empty()) {
        text += "GOZ_OBJECT_LIST = " + objectList + "\n";
    }
    if (!makeObjectPath.empty()) {
        text += "MAKEOBJECTPATH_COMMAND = " + makeObjectPath + "\n";
    }
    if (!goZBrush.empty()) {
        text += "GOZBRUSH_COMMAND = " + goZBrush + "\n";
    }
    return text;
}

const char kMake[] = "../../GoZBrush/GoZMakeObjectPath.exe";
const char kFromApp[] = "../../GoZBrush/GoZBrushFromApp.exe";
const char kLauncher[] = "GoZApps/Figmora/GoZBrushToFM.exe";
const char kConfig[] = "GoZApps/Figmora/GoZ_Config.txt";
const char kInfo[] = "GoZApps/Figmora/GoZ_Info.txt";
const char kList[] = "GoZApps/Figmora/GoZ_ObjectList.txt";

std::vector<CSandboxCase> SandboxCases()
{
    using S = CDoctorSandbox;
    using O = CDoctorOptions;
    return {
        {"all fine", [](S&, O&) {}, {}, 0},
        {"no ZBrush", [](S& s, O&) { s.Remove(s.InRoot("GoZBrush/GoZBrushFromApp.exe")); }, {"zbrush-missing"}, 1},
        {"no Pixologic folder", [](S& s, O&) { s.Remove(s.Root()); }, {"root-missing"}, 1},
        {"Pixologic is a file", [](S& s, O&) {
             s.Remove(s.Root());
             s.Write(s.Public() / "Pixologic", "x");
         }, {"root-missing"}, 1},
        {"public folder name longer than the system takes", [](S& s, O& o) {
             o.m_kPublicOverride = s.Folder() / std::string(5000, 'n');
         }, {"root-missing"}, 1},
        {"returned meshes read elsewhere", [](S& s, O& o) {
             o.m_kReturnRoot = s.Folder() / "elsewhere";
             s.MakeFolder(o.m_kReturnRoot);
         }, {"return-root-differs"}, 1},
        {"missing Figmora folder", [](S& s, O&) { s.Remove(s.InRoot("GoZApps/Figmora")); }, {"app-folder-missing"}, 1},
        {"Figmora folder is a file", [](S& s, O&) {
             s.Remove(s.InRoot("GoZApps/Figmora"));
             s.Write(s.InRoot("GoZApps/Figmora"), "x");
         }, {"app-folder-missing"}, 1},
        {"launcher missing", [](S& s, O&) { s.Remove(s.InRoot(kLauncher)); }, {"launcher-missing"}, 1},
        {"launcher is a folder", [](S& s, O&) {
             s.Remove(s.InRoot(kLauncher));
             s.MakeFolder(s.InRoot(kLauncher));
         }, {"launcher-missing"}, 1},
        {"stale launcher from 2017", [](S& s, O&) { s.SetModified(s.InRoot(kLauncher), 2017, 6, 1, 12, 0); },
         {"launcher-stale"}, 1},
        {"launcher a minute before the cut-off", [](S& s, O&) {
             s.SetModified(s.InRoot(kLauncher), 2018, 8, 13, 23, 59);
         }, {"launcher-stale"}, 1},
        {"launcher from the cut-off", [](S& s, O&) { s.SetModified(s.InRoot(kLauncher), 2018, 8, 14, 0, 0); },
         {}, 0},
        {"GoZ_Config.txt missing", [](S& s, O&) { s.Remove(s.InRoot(kConfig)); }, {"config-missing"}, 1},
        {"PATH to a missing program", [](S& s, O&) {
             s.Write(s.InRoot(kConfig), "PATH = \"" + (s.Folder() / "gone" / "Figmora.exe").string() + "\"\n");
         }, {"config-program-missing"}, 1},
        {"PATH with backslashes names the program", [](S& s, O&) {
             std::string path = s.HostProgram().string();
             std::replace(path.begin(), path.end(), '/', '\\');
             s.Write(s.InRoot(kConfig), "APPLICATION = Figmora\r\nPATH = \"" + path + "\"\r\n");
         }, {}, 0},
        {"huge GoZ_Config.txt", [](S& s, O&) { fs::resize_file(s.InRoot(kConfig), 3 * 1024 * 1024); },
         {"config-too-large"}, 1},
        {"overlong PATH names nothing reachable", [](S& s, O&) {
             s.Write(s.InRoot(kConfig), "PATH = " + s.Folder().string() + "/" + std::string(5000, 'p') + "\n");
         }, {"config-program-missing"}, 1},
        {"no PATH line", [](S& s, O&) { s.Write(s.InRoot(kConfig), "APPLICATION = Figmora\n"); },
         {"config-path-missing"}, 1},
        {"GoZ_Info.txt missing", [](S& s, O&) { s.Remove(s.InRoot(kInfo)); }, {"info-missing"}, 1},
        {"GoZ_Info.txt is a folder", [](S& s, O&) {
             s.Remove(s.InRoot(kInfo));
             s.MakeFolder(s.InRoot(kInfo));
         }, {"info-unreadable"}, 1},
        {"missing GOZBRUSH_COMMAND", [](S& s, O&) {
             s.Write(s.InRoot(kInfo), Info("GoZ_ObjectList.txt", kMake, ""));
         }, {"gozbrush-key-missing"}, 1},
        {"GOZ_OBJECT_LIST without a value", [](S& s, O&) {
             s.Write(s.InRoot(kInfo), "GOZ_OBJECT_LIST\n" + Info("", kMake, kFromApp));
         }, {"object-list-key-missing"}, 1},
        {"binary GoZ_Info.txt", [](S& s, O&) {
             std::string bytes;
             for (int i = 0; i < 4096; ++i) {
                 bytes.push_back(static_cast<char>((i * 37 + 11) % 256));
             }
             s.Write(s.InRoot(kInfo), bytes);
         }, {"gozbrush-key-missing", "make-object-path-key-missing", "object-list-key-missing"}, 1},
        {"huge GoZ_Info.txt", [](S& s, O&) {
             s.Write(s.InRoot(kInfo), Info("GoZ_ObjectList.txt", kMake, kFromApp));
             fs::resize_file(s.InRoot(kInfo), 64 * 1024 * 1024);
         }, {"info-too-large"}, 1},
        {"value longer than the plug-in reads", [](S& s, O&) {
             s.Write(s.InRoot(kInfo), Info(std::string(2000, 'x'), kMake, kFromApp));
         }, {"object-list-key-too-long"}, 1},
        {"make-object-path program missing", [](S& s, O&) {
             s.Remove(s.InRoot("GoZBrush/GoZMakeObjectPath.exe"));
         }, {"make-object-path-program-missing"}, 1},
        {"registry value missing", [](S& s, O&) { s.Write(s.RegistryFile(), ""); }, {"registry-missing"}, 1},
        {"registry value of another type", [](S& s, O&) {
             s.Write(s.RegistryFile(), "SOFTWARE\\Quorvane\\Figmora\\4.0\tMain Program\t1\tREG_DWORD\n");
         }, {"registry-missing"}, 1},
        {"registry names a missing program", [](S& s, O&) {
             s.SetRegistryProgram((s.Folder() / "gone.exe").string());
         }, {"registry-program-missing"}, 1},
        {"registry path beyond Latin-1", [](S& s, O&) {
             const fs::path program = s.Folder() / "\xe4\xb8\xbb" / "Figmora.exe";
             s.MakeFolder(program.parent_path());
             s.Write(program, "program");
             s.SetRegistryProgram(program.string());
         }, {"registry-not-latin1"}, 1},
        {"object list naming a missing file", [](S& s, O&) { s.Remove(s.InRoot("GoZProjects/Default/Eye.goz")); },
         {"object-list-files-missing"}, 1},
        {"huge object list", [](S& s, O&) {
             fs::resize_file(s.InRoot(kList), MV::Doctor::kMaxObjectListBytes + 1);
         }, {"object-list-too-large"}, 1},
        {"no object list yet", [](S& s, O&) { s.Remove(s.InRoot(kList)); }, {}, 0},
        {"object list is a folder", [](S& s, O&) {
             s.Remove(s.InRoot(kList));
             s.MakeFolder(s.InRoot(kList));
         }, {"object-list-unreadable"}, 1},
        {"object name longer than 95 bytes", [](S& s, O&) {
             s.Write(s.InRoot(kList), "Body\n" + std::string(300, 'n') + "\nEye\n");
         }, {"object-list-long-names"}, 1},
        {"object name holding a zero byte", [](S& s, O&) {
             s.Write(s.InRoot(kList), std::string("Bo\0dy\tEye Body", 14));
         }, {"object-list-long-names"}, 1},
        {"project folder missing", [](S& s, O&) { s.Remove(s.InRoot("GoZProjects")); }, {"projects-missing"}, 1},
        {"non-ASCII public folder and object names", [](S& s, O&) {
             s.Write(s.InRoot("GoZProjects/Default/K\xc3\xb6rper.GoZ"), "mesh");
             s.Write(s.InRoot(kList), "Body\nK\xc3\xb6rper\n");
         }, {}, 0, false, "P\xc3\xba" "blic \xc3\xbc"},
        {"folder not open to every user", [](S& s, O&) { s.Chmod(s.InRoot("GoZApps/Figmora"), 0755); },
         {"app-folder-not-shared"}, 0},
        {"unwritable project folder", [](S& s, O&) { s.Chmod(s.InRoot("GoZProjects/Default"), 0555); },
         {"projects-not-writable"}, 1, true},
        {"unreadable GoZ_Info.txt", [](S& s, O&) { s.Chmod(s.InRoot(kInfo), 0); }, {"info-unreadable"}, 1, true},
        {"read-only GoZ_Config.txt", [](S& s, O&) { s.Chmod(s.InRoot(kConfig), 0444); }, {"config-not-writable"}, 1,
         true},
        {"read-only object list", [](S& s, O&) { s.Chmod(s.InRoot(kList), 0444); }, {"object-list-not-writable"}, 1,
         true},
    };
}

class DoctorSandboxes : public ::testing::Test
{
protected:
    void SetUp() override { m_kGuard.Unset("MVGOZ_REGISTRY_FILE"); }
    CEnvironmentGuard m_kGuard;
};

TEST_F(DoctorSandboxes, EachBrokenThingIsNamedAndNothingElse)
{
    for (const CSandboxCase& c : SandboxCases()) {
        SCOPED_TRACE(c.m_pName);
        CDoctorSandbox sandbox(c.m_pPublicName);
        ASSERT_TRUE(sandbox.IsValid());
        CDoctorOptions options = sandbox.Options();
        c.m_kBreak(sandbox, options);
        m_kGuard.Set("MVGOZ_REGISTRY_FILE", QByteArray::fromStdString(sandbox.RegistryFile().string()));

        Ids ids;
        int exitCode = -1;
        if (c.m_bRights && ::geteuid() == 0) {
            std::string error;
            ASSERT_TRUE(RunAsNobody(options, ids, exitCode, error)) << error;
        } else {
            const CDoctorFindings findings = MV::Doctor::RunChecks(options);
            ids = ProblemIds(findings);
            exitCode = findings.ExitCode();
            for (const auto& problem : findings.m_kProblems) {
                EXPECT_FALSE(problem.m_strText.empty()) << problem.m_strId;
            }
        }
        EXPECT_EQ(ids, c.m_kExpected);
        EXPECT_EQ(exitCode, c.m_nExitCode);
    }
}

TEST_F(DoctorSandboxes, HealthySandboxFindingsDescribeIt)
{
    CDoctorSandbox sandbox;
    ASSERT_TRUE(sandbox.IsValid());
    sandbox.Write(sandbox.InRoot("GoZProjects/Default/Extra.GoZ"), "mesh");
    sandbox.Write(sandbox.InRoot("GoZProjects/Default/notes.txt"), "not a mesh");
    m_kGuard.Set("MVGOZ_REGISTRY_FILE", QByteArray::fromStdString(sandbox.RegistryFile().string()));
    const CDoctorFindings f = MV::Doctor::RunChecks(sandbox.Options());

    EXPECT_EQ(f.m_ePublicSource, EPublicSource::Override);
    EXPECT_EQ(f.m_kRoot.m_strPath, sandbox.Root().string());
    EXPECT_EQ(f.m_kRoot.m_eKind, EEntryKind::Folder);
    EXPECT_EQ(f.m_eReturnRootSame, ECheck::Yes);
    EXPECT_EQ(f.m_kZBrushFromApp.m_eKind, EEntryKind::File);
    EXPECT_TRUE(f.m_bLauncherTimeKnown);
    EXPECT_FALSE(f.m_bLauncherStale);
    EXPECT_EQ(f.m_kConfigPath.m_strValue, sandbox.HostProgram().string());
    ASSERT_EQ(f.m_kInfoKeys.size(), 3u);
    EXPECT_EQ(f.m_kInfoKeys[0].m_strKey, "GOZ_OBJECT_LIST");
    EXPECT_EQ(f.m_kInfoKeys[0].m_strValue, "GoZ_ObjectList.txt"); // quotes removed
    EXPECT_EQ(f.m_kInfoKeys[1].m_kTarget.m_strPath, sandbox.InRoot("GoZApps/Figmora/").string() + kMake);
    EXPECT_EQ(f.m_nRegistryResult, 0);
    EXPECT_EQ(f.m_strRegistryData, sandbox.HostProgram().string());
    ASSERT_EQ(f.m_kFolders.size(), 3u);
    for (const auto& folder : f.m_kFolders) {
        EXPECT_EQ(folder.m_eUser, ECheck::Yes) << folder.m_strName;
        EXPECT_EQ(folder.m_eEveryone, ECheck::Yes) << folder.m_strName;
    }
    // The user-write probe leaves nothing behind.
    EXPECT_EQ(std::distance(fs::directory_iterator(sandbox.InRoot("GoZApps/Figmora")), fs::directory_iterator()), 4);
    EXPECT_EQ(f.m_nListedNames, 2u);
    EXPECT_EQ(f.m_nFoundNames, 2u);
    EXPECT_EQ(f.m_nMissingNames, 0u);
    EXPECT_EQ(f.m_nProjectFiles, 3u);
    EXPECT_EQ(f.m_nUnlistedFiles, 1u);
    EXPECT_TRUE(f.CanRoundTrip());
}

TEST_F(DoctorSandboxes, ObjectListCountsEveryNameButKeepsOnlyTheFirstThousandMissing)
{
    CDoctorSandbox sandbox;
    ASSERT_TRUE(sandbox.IsValid());
    std::string list = "Body Body\t";
    for (int i = 0; i < 1500; ++i) {
        list += "Gone" + std::to_string(i) + "\n";
    }
    sandbox.Write(sandbox.InRoot(kList), list);
    m_kGuard.Set("MVGOZ_REGISTRY_FILE", QByteArray::fromStdString(sandbox.RegistryFile().string()));
    const CDoctorFindings f = MV::Doctor::RunChecks(sandbox.Options());

    EXPECT_EQ(f.m_nListedNames, 1502u);
    EXPECT_EQ(f.m_nFoundNames, 2u); // a name listed twice counts twice
    EXPECT_EQ(f.m_nMissingNames, 1500u);
    ASSERT_EQ(f.m_kMissingNames.size(), MV::Doctor::kMaxListedMissing);
    EXPECT_EQ(f.m_kMissingNames.front(), "Gone0");
    EXPECT_EQ(f.m_nUnlistedFiles, 1u); // Eye
}

TEST_F(DoctorSandboxes, PublicFolderIsFoundAsThePlugInFindsIt)
{
    const struct
    {
        const char* name;
        std::vector<std::pair<const char*, const char*>> variables;
        EPublicSource source;
        std::string spelling;
        std::string folder;
    } cases[] = {
        {"upper case", {{"PUBLIC", "/p/upper"}}, EPublicSource::Variable, "PUBLIC", "/p/upper"},
        {"mixed case", {{"Public", "/p/mixed"}}, EPublicSource::Variable, "Public", "/p/mixed"},
        {"exact spelling wins", {{"PUBLIC", "/p/upper"}, {"public", "/p/lower"}}, EPublicSource::Variable, "public",
         "/p/lower"},
        {"set but empty", {{"PUBLIC", ""}}, EPublicSource::Variable, "PUBLIC", ""},
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

#include "DoctorSandbox.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

// The built mvgoz-doctor, run as a user runs it: in a folder that holds C:/Users/Public, as
// the fixed Windows paths resolve on Linux.
namespace {

struct CRun
{
    int m_nExitCode = -1;
    std::string m_strOut;
    std::string m_strErr;
};

std::string ReadAll(int fd)
{
    std::string text;
    char buffer[8192];
    ssize_t count = 0;
    while ((count = ::read(fd, buffer, sizeof(buffer))) > 0) {
        text.append(buffer, static_cast<std::size_t>(count));
    }
    return text;
}

// Runs the doctor in folder with the given variables (a null value unsets one).
CRun RunDoctor(const std::vector<std::string>& arguments, const std::filesystem::path& folder,
               const std::vector<std::pair<std::string, const char*>>& variables)
{
    CRun run;
    int out[2];
    int err[2];
    if (::pipe(out) != 0 || ::pipe(err) != 0) {
        return run;
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(out[1], 1);
        ::dup2(err[1], 2);
        ::close(out[0]);
        ::close(err[0]);
        if (::chdir(folder.c_str()) != 0) {
            ::_exit(120);
        }
        for (const auto& variable : variables) {
            variable.second ? ::setenv(variable.first.c_str(), variable.second, 1) : ::unsetenv(variable.first.c_str());
        }
        std::vector<char*> argv;
        std::string program = MVGOZ_DOCTOR_PROGRAM;
        argv.push_back(program.data());
        std::vector<std::string> copies = arguments;
        for (std::string& argument : copies) {
            argv.push_back(argument.data());
        }
        argv.push_back(nullptr);
        ::execv(program.c_str(), argv.data());
        ::_exit(121);
    }
    ::close(out[1]);
    ::close(err[1]);
    // Small outputs: reading one pipe to its end before the other cannot block the child.
    run.m_strOut = ReadAll(out[0]);
    run.m_strErr = ReadAll(err[0]);
    ::close(out[0]);
    ::close(err[0]);
    int status = 0;
    if (child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status)) {
        run.m_nExitCode = WEXITSTATUS(status);
    }
    return run;
}

TEST(DoctorProgram, JsonOnSandboxesParsesAndExitCodeTellsTheVerdict)
{
    const struct
    {
        const char* name;
        std::vector<std::string> arguments;
        const char* publicVariable; // value of PUBLIC, or null to unset it
        bool breakIt;
        int exitCode;
        const char* source;
    } cases[] = {
        {"healthy, --public", {"--json", "--public", "C:/Users/Public"}, nullptr, false, 0, "override"},
        {"healthy, PUBLIC", {"--json"}, "C:/Users/Public", false, 0, "variable"},
        {"stale launcher", {"--json"}, "C:/Users/Public", true, 1, "variable"},
        {"PUBLIC unset", {"--json"}, nullptr, false, 1, "default"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CDoctorSandbox sandbox("C:/Users/Public");
        ASSERT_TRUE(sandbox.IsValid());
        if (c.breakIt) {
            sandbox.SetModified(sandbox.InRoot("GoZApps/Figmora/GoZBrushToFM.exe"), 2017, 3, 1, 9, 0);
        }
        const std::string registry = sandbox.RegistryFile().string();
        const CRun run = RunDoctor(c.arguments, sandbox.Folder(),
                                   {{"MVGOZ_REGISTRY_FILE", registry.c_str()}, {"PUBLIC", c.publicVariable},
                                    {"Public", nullptr}, {"public", nullptr}});
        EXPECT_EQ(run.m_nExitCode, c.exitCode) << run.m_strErr;

        QJsonParseError error {};
        const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromStdString(run.m_strOut), &error);
        ASSERT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString() << "\n" << run.m_strOut;
        ASSERT_TRUE(document.isObject());
        const QJsonObject json = document.object();
        EXPECT_EQ(json["exitCode"].toInt(-1), c.exitCode);
        EXPECT_EQ(json["canRoundTrip"].toBool(), c.exitCode == 0);
        EXPECT_EQ(json["publicFolder"]["source"].toString(), c.source);
        EXPECT_EQ(json["returnRoot"]["sameAsRoot"].toString(), c.exitCode == 0 || c.breakIt ? "yes" : "not checked");
        bool stale = false;
        for (const QJsonValue& problem : json["problems"].toArray()) {
            stale = stale || problem["id"].toString() == "launcher-stale";
        }
        EXPECT_EQ(stale, c.breakIt);
    }
}

TEST(DoctorProgram, CommandLine)
{
    const struct
    {
        const char* name;
        std::vector<std::string> arguments;
        int exitCode;
        const char* outStart;
        const char* errPart;
    } cases[] = {
        {"help", {"--help"}, 0, "Usage: mvgoz-doctor", ""},
        {"sentences", {"--public", "C:/Users/Public"}, 0, "Public folder: C:/Users/Public (given with --public).", ""},
        {"--public without a folder", {"--json", "--public"}, 2, "", "--public needs a folder"},
        {"unknown argument", {"--jsn"}, 2, "", "unknown argument --jsn"},
    };
    CDoctorSandbox sandbox("C:/Users/Public");
    ASSERT_TRUE(sandbox.IsValid());
    const std::string registry = sandbox.RegistryFile().string();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const CRun run = RunDoctor(c.arguments, sandbox.Folder(), {{"MVGOZ_REGISTRY_FILE", registry.c_str()}});
        EXPECT_EQ(run.m_nExitCode, c.exitCode) << run.m_strOut << run.m_strErr;
        EXPECT_EQ(run.m_strOut.rfind(c.outStart, 0), 0u) << run.m_strOut;
        EXPECT_NE(run.m_strErr.find(c.errPart), std::string::npos) << run.m_strErr;
    }
}

} // namespace

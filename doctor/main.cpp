// mvgoz-doctor: tells why a GoZ round trip between Figmora and ZBrush does not work on this
// machine. It only looks; it changes nothing but a test file it makes and removes at once.

#include "DoctorChecks.h"
#include "DoctorJson.h"
#include "DoctorPlatform.h"
#include "DoctorText.h"

#include <cstdio>
#include <cstring>
#include <exception>
#include <string>

namespace {

constexpr int kUsageError = 2;

const char kUsage[] =
    "Usage: mvgoz-doctor [--json] [--public DIR]\n"
    "Checks the GoZ folders, files and registry value that a round trip between Figmora and\n"
    "ZBrush needs, and says what is wrong and what to do about it.\n"
    "\n"
    "  --json        print one JSON object instead of sentences\n"
    "  --public DIR  look below DIR instead of the PUBLIC folder\n"
    "  --help        print this text\n"
    "\n"
    "Exit code: 0 when a round trip can work, 1 when something stops it, 2 for a wrong command line.\n";

void Write(std::FILE* stream, const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

int Run(int argc, char** argv)
{
    MV::Doctor::CDoctorOptions options;
    bool json = false;
    for (int i = 1; i < argc; ++i) {
        const char* argument = argv[i] == nullptr ? "" : argv[i];
        if (std::strcmp(argument, "--help") == 0 || std::strcmp(argument, "-h") == 0) {
            Write(stdout, kUsage);
            return 0;
        }
        if (std::strcmp(argument, "--json") == 0) {
            json = true;
        } else if (std::strcmp(argument, "--public") == 0) {
            if (i + 1 >= argc) {
                Write(stderr, std::string("mvgoz-doctor: --public needs a folder\n") + kUsage);
                return kUsageError;
            }
            ++i;
            options.m_bHasPublicOverride = true;
            options.m_kPublicOverride = MV::Doctor::System::ArgumentPath(argc, argv, i);
        } else {
            Write(stderr, "mvgoz-doctor: unknown argument " + std::string(argument).substr(0, 200) + "\n" + kUsage);
            return kUsageError;
        }
    }
    MV::Doctor::System::PrepareOutput();
    const MV::Doctor::CDoctorFindings findings = MV::Doctor::RunChecks(options);
    Write(stdout, json ? MV::Doctor::RenderJson(findings) : MV::Doctor::RenderText(findings));
    return findings.ExitCode();
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        Write(stderr, std::string("mvgoz-doctor: stopped: ") + error.what() + "\n");
    } catch (...) {
        Write(stderr, "mvgoz-doctor: stopped\n");
    }
    return 1;
}

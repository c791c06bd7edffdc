#include "DoctorSandbox.h"

#include <cstdlib>
#include <ctime>
#include <fstream>
#include <system_error>

#include <sys/stat.h>
#include <sys/time.h>

namespace fs = std::filesystem;

CDoctorSandbox::CDoctorSandbox(const std::string& publicName) : m_strPublicName(publicName)
{
    std::string pattern = (fs::temp_directory_path() / "mvgoz-doctor-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        return;
    }
    m_kFolder = pattern;
    Chmod(m_kFolder, 0777);
    for (const char* folder : {"GoZBrush", "GoZApps/Figmora", "GoZProjects/Default"}) {
        MakeFolder(InRoot(folder));
    }
    MakeFolder(HostProgram().parent_path());
    for (const char* program : {"GoZBrush/GoZBrushFromApp.exe", "GoZBrush/GoZMakeObjectPath.exe",
                                "GoZApps/Figmora/GoZBrushToFM.exe"}) {
        Write(InRoot(program), "program");
    }
    Write(InRoot("GoZApps/Figmora/GoZ_Info.txt"), "GOZ_OBJECT_LIST = \"GoZ_ObjectList.txt\"\n"
                                                  "MAKEOBJECTPATH_COMMAND = \"../../GoZBrush/GoZMakeObjectPath.exe\"\n"
                                                  "GOZBRUSH_COMMAND = \"../../GoZBrush/GoZBrushFromApp.exe\"\n");
    Write(InRoot("GoZApps/Figmora/GoZ_Config.txt"), "PATH = \"" + HostProgram().string() + "\"\n");
    // As a send on Windows writes it: the project folder before each name. Spelled as there,
    // not with this sandbox's folder, which can be deep enough to pass the name limit.
    const std::string projects = "C:/Users/Public/Pixologic/GoZProjects/Default/";
    Write(InRoot("GoZApps/Figmora/GoZ_ObjectList.txt"), projects + "Body\n" + projects + "Eye\n");
    Write(InRoot("GoZProjects/Default/Body.GoZ"), "mesh");
    Write(InRoot("GoZProjects/Default/Eye.goz"), "mesh");
    Write(InRoot("GoZProjects/Default/Body.mvMotionPlus"), "pose");
    Write(HostProgram(), "program");
    SetRegistryProgram(HostProgram().string());
}

CDoctorSandbox::~CDoctorSandbox()
{
    if (!IsValid()) {
        return;
    }
    // Tests take rights away; give them back so everything can go.
    std::error_code error;
    for (fs::recursive_directory_iterator it(m_kFolder, error), end; !error && it != end; it.increment(error)) {
        ::chmod(it->path().c_str(), 0777);
    }
    fs::remove_all(m_kFolder, error);
}

fs::path CDoctorSandbox::InRoot(const std::string& relative) const
{
    fs::path path = Public();
    path += "/Pixologic/" + relative;
    return path;
}

void CDoctorSandbox::Write(const fs::path& path, const std::string& bytes) const
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
    ::chmod(path.c_str(), 0666);
}

void CDoctorSandbox::Remove(const fs::path& path) const
{
    std::error_code error;
    fs::remove_all(path, error);
}

void CDoctorSandbox::MakeFolder(const fs::path& path) const
{
    std::error_code error;
    fs::create_directories(path, error);
    // Every level below the sandbox, so another user can reach and write them.
    const std::string top = m_kFolder.string() + "/";
    for (fs::path level = path; level.string().rfind(top, 0) == 0; level = level.parent_path()) {
        if (level.has_filename()) {
            ::chmod(level.c_str(), 0777);
        }
    }
}

void CDoctorSandbox::Chmod(const fs::path& path, unsigned mode) const
{
    ::chmod(path.c_str(), static_cast<mode_t>(mode));
}

void CDoctorSandbox::SetModified(const fs::path& path, int year, int month, int day, int hour, int minute) const
{
    std::tm local {};
    local.tm_year = year - 1900, local.tm_mon = month - 1, local.tm_mday = day, local.tm_hour = hour, local.tm_min = minute;
    local.tm_isdst = -1;
    const std::time_t time = std::mktime(&local);
    const struct timeval times[2] = {{time, 0}, {time, 0}};
    ::utimes(path.c_str(), times);
}

void CDoctorSandbox::SetRegistryProgram(const std::string& program) const
{
    Write(RegistryFile(), "SOFTWARE\\Quorvane\\Figmora\\4.0\tMain Program\t" + program + "\n");
}

MV::Doctor::CDoctorOptions CDoctorSandbox::Options() const
{
    MV::Doctor::CDoctorOptions options;
    options.m_bHasPublicOverride = true;
    options.m_kPublicOverride = Public();
    options.m_kReturnRoot = Root();
    return options;
}

MV::Doctor::CDoctorFindings CDoctorSandbox::Check(const MV::Doctor::CDoctorOptions& options) const
{
    ::setenv("MVGOZ_REGISTRY_FILE", RegistryFile().c_str(), 1);
    const MV::Doctor::CDoctorFindings findings = MV::Doctor::RunChecks(options);
    ::unsetenv("MVGOZ_REGISTRY_FILE");
    return findings;
}

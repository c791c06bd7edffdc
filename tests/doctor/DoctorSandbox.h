#pragma once

#include "DoctorChecks.h"

#include <filesystem>
#include <string>

// A Pixologic folder in a temporary folder, laid out as a working round trip leaves it:
// ZBrush's programs, the installed GoZApps/Figmora/ folder, a last exchange of Body and Eye,
// a host program, and a registry stand-in file naming it. Tests break one thing at a time.
// Every folder is open to all users, so the checks can also run as another user.
class CDoctorSandbox
{
public:
    // publicName: the public folder, relative to the sandbox ("public", "C:/Users/Public"...).
    explicit CDoctorSandbox(const std::string& publicName = "public");
    ~CDoctorSandbox();
    CDoctorSandbox(const CDoctorSandbox&) = delete;
    CDoctorSandbox& operator=(const CDoctorSandbox&) = delete;

    bool IsValid() const { return !m_kFolder.empty(); }
    const std::filesystem::path& Folder() const { return m_kFolder; }
    std::filesystem::path Public() const { return m_kFolder / m_strPublicName; }
    // "<public>/Pixologic/" plus relative, spelled as the doctor joins them.
    std::filesystem::path InRoot(const std::string& relative = "") const;
    std::filesystem::path Root() const { return InRoot(); }
    std::filesystem::path HostProgram() const { return m_kFolder / "host" / "Figmora.exe"; }
    std::filesystem::path RegistryFile() const { return m_kFolder / "registry.txt"; }

    void Write(const std::filesystem::path& path, const std::string& bytes) const;
    void Remove(const std::filesystem::path& path) const;
    void MakeFolder(const std::filesystem::path& path) const;
    void Chmod(const std::filesystem::path& path, unsigned mode) const;
    // Local time.
    void SetModified(const std::filesystem::path& path, int year, int month, int day, int hour, int minute) const;
    // The registry stand-in names program as the host's "Main Program".
    void SetRegistryProgram(const std::string& program) const;
    // --public pointed at the sandbox, and the fixed return folder too.
    MV::Doctor::CDoctorOptions Options() const;
    // The checks with the registry stand-in of this sandbox.
    MV::Doctor::CDoctorFindings Check(const MV::Doctor::CDoctorOptions& options) const;
    MV::Doctor::CDoctorFindings Check() const { return Check(Options()); }

private:
    std::filesystem::path m_kFolder;
    std::string m_strPublicName;
};

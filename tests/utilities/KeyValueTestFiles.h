#pragma once

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

// Raw-byte files in a private temporary folder. Paths stay narrow byte strings, the way the
// key = value functions take them.
class CKeyValueTestFiles
{
public:
    // Qt cannot name files whose bytes do not decode; remove them here.
    ~CKeyValueTestFiles()
    {
        std::error_code ignored;
        std::filesystem::remove_all(Root(), ignored);
    }

    bool IsValid() const { return m_kDir.isValid(); }
    std::string Path(const std::string& name) const { return Root() + "/" + name; }

    std::string Write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(Path(name), std::ios::binary) << bytes;
        return Path(name);
    }

    static std::string Read(const std::string& path)
    {
        std::ifstream in(path, std::ios::binary);
        return in ? std::string(std::istreambuf_iterator<char>(in), {}) : "<missing>";
    }

    // Every entry in the folder, sorted, so a test can see that nothing was left behind.
    std::vector<std::string> Entries() const
    {
        std::vector<std::string> names;
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(Root(), error)) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::string Root() const { return QFile::encodeName(m_kDir.path()).toStdString(); }

    QTemporaryDir m_kDir;
};

#pragma once

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

// Raw-byte files in a private temporary folder. Paths stay narrow byte strings, the way the
// key = value functions take them.
class CKeyValueTestFiles
{
public:
    CKeyValueTestFiles() = default;
    CKeyValueTestFiles(const CKeyValueTestFiles&) = delete;
    CKeyValueTestFiles& operator=(const CKeyValueTestFiles&) = delete;

    // Qt cannot name files whose bytes do not decode; remove them here.
    ~CKeyValueTestFiles()
    {
        std::error_code ignored;
        std::filesystem::remove_all(Root(), ignored);
    }

    bool IsValid() const { return m_kDir.isValid(); }

    std::string Path(const std::string& name) const
    {
        return Root() + "/" + name;
    }

    std::string Write(const std::string& name, const std::string& bytes) const
    {
        const std::string path = Path(name);
        std::FILE* file = std::fopen(path.c_str(), "wb");
        if (file != nullptr) {
            std::fwrite(bytes.data(), 1, bytes.size(), file);
            std::fclose(file);
        }
        return path;
    }

    static bool Exists(const std::string& path)
    {
        std::FILE* file = std::fopen(path.c_str(), "rb");
        if (file == nullptr) {
            return false;
        }
        std::fclose(file);
        return true;
    }

    static std::string Read(const std::string& path)
    {
        std::string bytes;
        std::FILE* file = std::fopen(path.c_str(), "rb");
        if (file == nullptr) {
            return "<missing>";
        }
        char chunk[4096];
        std::size_t count = 0;
        while ((count = std::fread(chunk, 1, sizeof(chunk), file)) > 0) {
            bytes.append(chunk, count);
        }
        std::fclose(file);
        return bytes;
    }

    // Every entry in the folder as raw names, sorted, so a test can see that nothing was left behind.
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

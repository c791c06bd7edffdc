#include "KeyValueFile.h"

#include "KeyValueText.h"
#include "Platform.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>

namespace {

// The whole file as bytes. False when it cannot be opened or read (a folder opens on
// some systems but does not read).
bool ReadWholeFile(const char* path, std::string& bytes)
{
    std::FILE* file = std::fopen(path, "rb");
    if (file == nullptr) {
        return false;
    }
    char chunk[16384];
    for (;;) {
        const std::size_t count = std::fread(chunk, 1, sizeof(chunk), file);
        bytes.append(chunk, count);
        if (count < sizeof(chunk)) {
            break;
        }
    }
    const bool ok = std::ferror(file) == 0;
    std::fclose(file);
    return ok;
}

bool WriteAll(std::FILE* file, const std::string& bytes)
{
    return std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
}

void ReplaceContent(const char* path, const std::string& content)
{
    // Only a file that could be written in place is replaced.
    std::FILE* probe = std::fopen(path, "r+b");
    if (probe == nullptr) {
        return;
    }
    std::fclose(probe);

    const std::string target = MV::Platform::ResolveFilePath(path);
    std::string staged;
    std::FILE* file = MV::Platform::CreateFileBeside(target, staged);
    if (file != nullptr) {
        const bool written = WriteAll(file, content);
        if (!MV::Platform::CommitAndClose(file) || !written) {
            // Disk full or similar: writing in place would fail the same way, half done.
            std::remove(staged.c_str());
            return;
        }
        if (MV::Platform::MoveFileOver(staged, target)) {
            return;
        }
        std::remove(staged.c_str());
    }
    // No second file can be made or moved there (folder not writable, file in use).
    std::FILE* out = std::fopen(target.c_str(), "wb");
    if (out == nullptr) {
        return;
    }
    WriteAll(out, content);
    std::fclose(out);
}

} // namespace

bool GetKeyValue(const char* path, const char* key, char* value, int valueSize)
{
    if (path == nullptr || key == nullptr) {
        return false;
    }
    try {
        std::string bytes;
        if (!ReadWholeFile(path, bytes) || bytes.empty()) {
            return false;
        }
        std::string found;
        bool hasValue = false;
        if (!MV::KeyValue::FindKeyValue(bytes.data(), bytes.size(), key, found, hasValue)) {
            return false;
        }
        if (hasValue && value != nullptr && valueSize > 0) {
            const std::size_t length = std::min(found.size(), static_cast<std::size_t>(valueSize - 1));
            std::memcpy(value, found.data(), length);
            value[length] = '\0';
        }
        return true;
    } catch (const std::exception&) {
        // Out of memory for a huge file: treat it as unreadable.
        return false;
    }
}

void SetKeyValue(const char* path, const char* key, const char* value)
{
    if (path == nullptr || key == nullptr || *key == '\0') {
        return;
    }
    try {
        std::string bytes;
        if (!ReadWholeFile(path, bytes)) {
            return;
        }
        std::string content = MV::KeyValue::RemoveKeyLines(bytes.data(), bytes.size(), key);
        content += key;
        content += " = ";
        if (value != nullptr) {
            content += value;
        }
        content += '\n';
        ReplaceContent(path, content);
    } catch (const std::exception&) {
        // Out of memory: the file has not been touched yet.
    }
}

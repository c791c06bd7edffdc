#include "KeyValueFile.h"

#include "KeyValueText.h"
#include "Platform.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <string_view>

namespace {

// A file's bytes in one buffer, with room kept after them for what the caller adds.
class CFileBytes
{
public:
    // Reads file to its end. False on a read error (a folder opens on some systems but
    // does not read).
    bool Read(std::FILE* file, std::size_t spare)
    {
        // Unbuffered: the reads below go straight into our buffer.
        std::setvbuf(file, nullptr, _IONBF, 0);
        std::size_t size = 0;
        if (!SizeOf(file, size)) {
            return false;
        }
        // One byte more than the size, so that the read coming back short shows the end was
        // reached. An unknown size (a pipe), or 0 with bytes behind it, grows from one chunk.
        std::size_t room = size > 0 ? size + 1 : kChunk;
        for (;;) {
            Reserve(m_nSize + room + spare);
            const std::size_t count = std::fread(m_pData.get() + m_nSize, 1, room, file);
            m_nSize += count;
            if (count < room) {
                break;
            }
            room = std::max(m_nSize, kChunk);
        }
        return std::ferror(file) == 0;
    }

    // Within the room asked for in Read.
    void Append(const char* bytes, std::size_t count)
    {
        std::memcpy(m_pData.get() + m_nSize, bytes, count);
        m_nSize += count;
    }

    char* Data() { return m_pData.get(); }
    std::size_t Size() const { return m_nSize; }
    void Resize(std::size_t size) { m_nSize = size; }

private:
    static constexpr std::size_t kChunk = 16384;

    // 0 when the system cannot tell (a pipe) or tells something no file can be (a folder can
    // answer with the largest offset there is). False only when the file cannot be read from
    // its start again.
    static bool SizeOf(std::FILE* file, std::size_t& size)
    {
        if (std::fseek(file, 0, SEEK_END) != 0) {
            return true;
        }
        const long end = std::ftell(file);
        if (std::fseek(file, 0, SEEK_SET) != 0) {
            return false;
        }
        if (end > 0 && static_cast<std::uintmax_t>(end) < static_cast<std::uintmax_t>(PTRDIFF_MAX / 4)) {
            size = static_cast<std::size_t>(end);
        }
        return true;
    }

    void Reserve(std::size_t capacity)
    {
        if (capacity <= m_nCapacity) {
            return;
        }
        std::unique_ptr<char[]> data(new char[capacity]);
        if (m_nSize > 0) {
            std::memcpy(data.get(), m_pData.get(), m_nSize);
        }
        m_pData = std::move(data);
        m_nCapacity = capacity;
    }

    std::unique_ptr<char[]> m_pData;
    std::size_t m_nSize = 0;
    std::size_t m_nCapacity = 0;
};

bool ReadWholeFile(const char* path, CFileBytes& bytes, std::size_t spare)
{
    std::FILE* file = std::fopen(path, "rb");
    if (file == nullptr) {
        return false;
    }
    const bool ok = bytes.Read(file, spare);
    std::fclose(file);
    return ok;
}

// One write for the whole content.
bool WriteAll(std::FILE* file, const char* data, std::size_t size)
{
    std::setvbuf(file, nullptr, _IONBF, 0);
    return std::fwrite(data, 1, size, file) == size;
}

void ReplaceContent(const char* path, const char* data, std::size_t size)
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
        const bool written = WriteAll(file, data, size);
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
    WriteAll(out, data, size);
    std::fclose(out);
}

} // namespace

bool GetKeyValue(const char* path, const char* key, char* value, int valueSize)
{
    if (path == nullptr || key == nullptr) {
        return false;
    }
    try {
        CFileBytes bytes;
        if (!ReadWholeFile(path, bytes, 0) || bytes.Size() == 0) {
            return false;
        }
        std::string_view found;
        bool hasValue = false;
        if (!MV::KeyValue::FindKeyValue(bytes.Data(), bytes.Size(), key, found, hasValue)) {
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
        // The new line is added in the same buffer, so the whole file goes out in one write.
        const std::size_t keyLength = std::strlen(key);
        const std::size_t valueLength = value != nullptr ? std::strlen(value) : 0;
        CFileBytes bytes;
        if (!ReadWholeFile(path, bytes, keyLength + 3 + valueLength + 1)) {
            return;
        }
        bytes.Resize(MV::KeyValue::RemoveKeyLinesInPlace(bytes.Data(), bytes.Size(), key));
        bytes.Append(key, keyLength);
        bytes.Append(" = ", 3);
        if (valueLength > 0) {
            bytes.Append(value, valueLength);
        }
        bytes.Append("\n", 1);
        ReplaceContent(path, bytes.Data(), bytes.Size());
    } catch (const std::exception&) {
        // Out of memory: the file has not been touched yet.
    }
}

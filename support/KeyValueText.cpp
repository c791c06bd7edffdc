#include "KeyValueText.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace MV {
namespace KeyValue {

namespace {

bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

bool IsLineEnd(char c)
{
    return c == '\r' || c == '\n';
}

int Lower(char c)
{
    return std::tolower(static_cast<unsigned char>(c));
}

// One line, trimmed, with its key and value located.
struct CParsedLine
{
    const char* m_pKey = nullptr;
    std::size_t m_nKeyLength = 0;
    bool m_bHasValue = false;
    const char* m_pValue = nullptr;
    std::size_t m_nValueLength = 0;
};

CParsedLine ParseLine(const char* begin, const char* end)
{
    while (begin < end && IsBlank(*begin)) {
        ++begin;
    }
    while (end > begin && IsBlank(end[-1])) {
        --end;
    }
    CParsedLine line;
    const char* equals = static_cast<const char*>(std::memchr(begin, '=', static_cast<std::size_t>(end - begin)));
    const char* keyEnd = equals != nullptr ? equals : end;
    while (keyEnd > begin && IsBlank(keyEnd[-1])) {
        --keyEnd;
    }
    line.m_pKey = begin;
    line.m_nKeyLength = std::min(static_cast<std::size_t>(keyEnd - begin), kMaxKeyBytes);
    if (equals == nullptr) {
        return line;
    }
    const char* value = equals + 1;
    while (value < end && IsBlank(*value)) {
        ++value;
    }
    std::size_t length = static_cast<std::size_t>(end - value);
    if (length >= 2 && value[0] == '"' && end[-1] == '"') {
        ++value;
        length -= 2;
    }
    line.m_bHasValue = true;
    line.m_pValue = value;
    line.m_nValueLength = length;
    return line;
}

// Calls visit(lineBegin, lineEnd, next) for each line in order; next is past the CR/LF run
// that ends the line. visit returns false to stop.
template <typename Visit>
void ForEachLine(const char* text, std::size_t size, Visit visit)
{
    std::size_t pos = 0;
    while (pos < size) {
        std::size_t end = pos;
        while (end < size && !IsLineEnd(text[end])) {
            ++end;
        }
        std::size_t next = end;
        while (next < size && IsLineEnd(text[next])) {
            ++next;
        }
        if (!visit(pos, end, next)) {
            return;
        }
        pos = next;
    }
}

} // namespace

bool KeyMatches(const char* lineKey, std::size_t length, const char* key)
{
    if (key == nullptr || lineKey == nullptr || length == 0) {
        return false;
    }
    length = std::min(length, kMaxKeyBytes);
    for (std::size_t i = 0; i < length; ++i) {
        // The request may be longer than the line's key, never shorter.
        if (key[i] == '\0' || Lower(lineKey[i]) != Lower(key[i])) {
            return false;
        }
    }
    return true;
}

bool FindKeyValue(const char* text, std::size_t size, const char* key, std::string& value, bool& hasValue)
{
    if (text == nullptr || key == nullptr) {
        return false;
    }
    bool found = false;
    ForEachLine(text, size, [&](std::size_t begin, std::size_t end, std::size_t) {
        const CParsedLine line = ParseLine(text + begin, text + end);
        if (!KeyMatches(line.m_pKey, line.m_nKeyLength, key)) {
            return true;
        }
        found = true;
        hasValue = line.m_bHasValue;
        if (line.m_bHasValue) {
            value.assign(line.m_pValue, line.m_nValueLength);
        }
        return false;
    });
    return found;
}

std::string RemoveKeyLines(const char* text, std::size_t size, const char* key)
{
    std::string kept;
    if (text == nullptr) {
        return kept;
    }
    kept.reserve(size);
    ForEachLine(text, size, [&](std::size_t begin, std::size_t end, std::size_t next) {
        const CParsedLine line = ParseLine(text + begin, text + end);
        if (!KeyMatches(line.m_pKey, line.m_nKeyLength, key)) {
            kept.append(text + begin, next - begin);
        }
        return true;
    });
    return kept;
}

} // namespace KeyValue
} // namespace MV

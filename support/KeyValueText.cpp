#include "KeyValueText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

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

unsigned char Byte(char c)
{
    return static_cast<unsigned char>(c);
}

// tolower of every byte value, taken once. The program sets its locale at start-up, before
// any file is read, so the table answers what tolower would for each byte.
const unsigned char* LowerTable()
{
    static const std::array<unsigned char, 256> s_kTable = [] {
        std::array<unsigned char, 256> table{};
        for (int c = 0; c < 256; ++c) {
            table[static_cast<std::size_t>(c)] = static_cast<unsigned char>(std::tolower(c));
        }
        return table;
    }();
    return s_kTable.data();
}

bool KeyMatches(const char* lineKey, std::size_t length, const char* key, const unsigned char* lower)
{
    if (key == nullptr || lineKey == nullptr || length == 0) {
        return false;
    }
    length = std::min(length, kMaxKeyBytes);
    for (std::size_t i = 0; i < length; ++i) {
        // The request may be longer than the line's key, never shorter.
        if (key[i] == '\0' || lower[Byte(lineKey[i])] != lower[Byte(key[i])]) {
            return false;
        }
    }
    return true;
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

constexpr std::size_t kBlockBytes = 64;

// Bit i set when p[i] is CR or LF, for the count (at most 64) bytes at p.
std::uint64_t LineEndBits(const char* p, std::size_t count)
{
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < count; ++i) {
        bits |= static_cast<std::uint64_t>(IsLineEnd(p[i])) << i;
    }
    return bits;
}

#if defined(__SSE2__)
// The same for a whole block, sixteen bytes at a time.
inline std::uint64_t BlockLineEndBits(const char* p)
{
    const __m128i cr = _mm_set1_epi8('\r');
    const __m128i lf = _mm_set1_epi8('\n');
    const auto bits16 = [&](const char* at) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        const __m128i ends = _mm_or_si128(_mm_cmpeq_epi8(bytes, cr), _mm_cmpeq_epi8(bytes, lf));
        return static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(ends)));
    };
    return bits16(p) | bits16(p + 16) << 16 | bits16(p + 32) << 32 | bits16(p + 48) << 48;
}
#else
std::uint64_t BlockLineEndBits(const char* p)
{
    return LineEndBits(p, kBlockBytes);
}
#endif

// The lines of a text in order. Line ends are found 64 bytes at a time as a bit mask, so a
// line costs a few bit operations however long it is.
class CLineWalker
{
public:
    CLineWalker(const char* text, std::size_t size) : m_pText(text), m_nSize(size) { LoadBlock(); }

    // [begin, next) is the next line with the CR/LF run after it. False when the text is done.
    bool Next(const char*& begin, const char*& next)
    {
        if (m_nLine >= m_nSize) {
            return false;
        }
        begin = m_pText + m_nLine;
        m_nLine = NextStart();
        next = m_pText + m_nLine;
        return true;
    }

private:
    // A line starts at the text's first byte (even a line end: an empty first line) and at
    // every other byte that follows a line end and is none.
    std::size_t NextStart()
    {
        while (m_nStarts == 0) {
            m_nBlock += kBlockBytes;
            if (m_nBlock >= m_nSize) {
                return m_nSize;
            }
            LoadBlock();
        }
        const std::size_t start = m_nBlock + static_cast<std::size_t>(__builtin_ctzll(m_nStarts));
        m_nStarts &= m_nStarts - 1;
        return start;
    }

    void LoadBlock()
    {
        const std::size_t count = std::min(kBlockBytes, m_nSize - m_nBlock);
        const std::uint64_t ends =
            count == kBlockBytes ? BlockLineEndBits(m_pText + m_nBlock) : LineEndBits(m_pText + m_nBlock, count);
        // Past a short last block only the text's end can show up, which ends the walk anyway.
        m_nStarts = ~ends & ((ends << 1) | m_nEndBefore);
        m_nEndBefore = ends >> 63;
    }

    const char* m_pText;
    std::size_t m_nSize;
    std::size_t m_nLine = 0;
    std::size_t m_nBlock = 0;
    std::uint64_t m_nStarts = 0;
    std::uint64_t m_nEndBefore = 0;
};

// The end of the line [begin, next) without its CR/LF run.
const char* LineEnd(const char* begin, const char* next)
{
    while (next > begin && IsLineEnd(next[-1])) {
        --next;
    }
    return next;
}

// Tells which lines answer one request key, without taking apart the lines that do not.
class CKeyTest
{
public:
    explicit CKeyTest(const char* key) : m_pKey(key), m_nLength(std::min(std::strlen(key), kMaxKeyBytes))
    {
        const unsigned char* lower = LowerTable();
        m_nPlain = m_nLength;
        for (std::size_t i = 0; i < m_nLength; ++i) {
            m_kLowerKey[i] = lower[Byte(key[i])];
            if (m_nPlain == m_nLength
                && (m_kLowerKey[i] == lower[Byte('=')] || m_kLowerKey[i] == lower[Byte('\r')]
                    || m_kLowerKey[i] == lower[Byte('\n')])) {
                m_nPlain = i;
            }
        }
        m_pLower = lower;
    }

    // Whether the line [begin, next) answers: its key, cut to kMaxKeyBytes, is not empty and
    // equals the start of the request, case aside.
    bool Answers(const char* begin, const char* next) const
    {
        // A line that starts with neither a blank nor the request's first byte (case aside)
        // cannot answer, since that byte is its key's first: most lines end here.
        return begin < next && (m_pLower[Byte(*begin)] == m_kLowerKey[0] || IsBlank(*begin))
            && AnswersFully(begin, next);
    }

private:
    bool AnswersFully(const char* begin, const char* next) const
    {
        while (begin < next && IsBlank(*begin)) {
            ++begin;
        }
        if (m_nLength == 0 || begin == next || m_pLower[Byte(*begin)] != m_kLowerKey[0] || IsLineEnd(*begin)
            || *begin == '=') {
            return false;
        }
        // Walk both while they agree. Up to m_nPlain no byte that agrees can be an "=" or a
        // line end, so only the case-free compare is needed there.
        std::size_t i = 1;
        const std::size_t plain = std::min(m_nPlain, static_cast<std::size_t>(next - begin));
        // Eight bytes at a time while they are the request's exactly, as they mostly are.
        for (std::uint64_t line = 0, key = 0; i + 8 <= plain; i += 8) {
            std::memcpy(&line, begin + i, 8);
            std::memcpy(&key, m_pKey + i, 8);
            if (line != key) {
                break;
            }
        }
        while (i < plain && m_pLower[Byte(begin[i])] == m_kLowerKey[i]) {
            ++i;
        }
        if (i >= plain) {
            // The line's key ends at its first "=" or at the line end (blanks before either
            // do not count); reaching either here means it ended inside the part that agreed.
            for (; i < m_nLength; ++i) {
                if (begin + i == next) {
                    return true;
                }
                const char c = begin[i];
                if (IsLineEnd(c) || c == '=') {
                    return true;
                }
                if (m_pLower[Byte(c)] != m_kLowerKey[i]) {
                    break;
                }
            }
        }
        if (i == kMaxKeyBytes) {
            return true;
        }
        // Past the agreeing part, only blanks may follow before the "=" or the line end.
        const char* rest = begin + i;
        while (rest < next && IsBlank(*rest)) {
            ++rest;
        }
        return rest == next || IsLineEnd(*rest) || *rest == '=';
    }

    const char* m_pKey;
    std::size_t m_nLength;
    // Where the request has its first byte that a "=" or a line end would agree with.
    std::size_t m_nPlain = 0;
    const unsigned char* m_pLower = nullptr;
    unsigned char m_kLowerKey[kMaxKeyBytes + 1] = {};
};

} // namespace

bool KeyMatches(const char* lineKey, std::size_t length, const char* key)
{
    return KeyMatches(lineKey, length, key, LowerTable());
}

bool FindKeyValue(const char* text, std::size_t size, const char* key, std::string_view& value, bool& hasValue)
{
    if (text == nullptr || key == nullptr) {
        return false;
    }
    const CKeyTest test(key);
    CLineWalker lines(text, size);
    const char* begin = nullptr;
    const char* next = nullptr;
    while (lines.Next(begin, next)) {
        if (test.Answers(begin, next)) {
            const CParsedLine line = ParseLine(begin, LineEnd(begin, next));
            hasValue = line.m_bHasValue;
            if (line.m_bHasValue) {
                value = std::string_view(line.m_pValue, line.m_nValueLength);
            }
            return true;
        }
    }
    return false;
}

bool FindKeyValue(const char* text, std::size_t size, const char* key, std::string& value, bool& hasValue)
{
    std::string_view found;
    bool foundHasValue = false;
    if (!FindKeyValue(text, size, key, found, foundHasValue)) {
        return false;
    }
    hasValue = foundHasValue;
    if (foundHasValue) {
        value.assign(found.data(), found.size());
    }
    return true;
}

std::size_t RemoveKeyLinesInPlace(char* text, std::size_t size, const char* key)
{
    if (text == nullptr || key == nullptr) {
        return text == nullptr ? 0 : size;
    }
    const CKeyTest test(key);
    CLineWalker lines(text, size);
    const char* begin = nullptr;
    const char* next = nullptr;
    // Kept bytes are moved only once a line before them has gone.
    char* out = text;
    const char* keptFrom = text;
    while (lines.Next(begin, next)) {
        if (test.Answers(begin, next)) {
            const std::size_t kept = static_cast<std::size_t>(begin - keptFrom);
            if (out != keptFrom) {
                std::memmove(out, keptFrom, kept);
            }
            out += kept;
            keptFrom = next;
        }
    }
    const std::size_t kept = static_cast<std::size_t>(text + size - keptFrom);
    if (out != keptFrom) {
        std::memmove(out, keptFrom, kept);
    }
    return static_cast<std::size_t>(out - text) + kept;
}

std::string RemoveKeyLines(const char* text, std::size_t size, const char* key)
{
    if (text == nullptr) {
        return std::string();
    }
    std::string kept(text, size);
    kept.resize(RemoveKeyLinesInPlace(kept.data(), kept.size(), key));
    return kept;
}

} // namespace KeyValue
} // namespace MV

#include "Platform.h"

// The parts of the platform layer that are the same everywhere.

namespace MV {
namespace Platform {

namespace {

constexpr char kReplacement = '?';

bool IsHighSurrogate(unsigned long c)
{
    return c >= 0xD800 && c <= 0xDBFF;
}

bool IsLowSurrogate(unsigned long c)
{
    return c >= 0xDC00 && c <= 0xDFFF;
}

} // namespace

std::string WideToNarrow(const std::wstring& text)
{
    std::string narrow;
    narrow.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        // wchar_t can be signed; go through an unsigned 32-bit value before comparing.
        const unsigned long c = static_cast<unsigned long>(text[i]) & 0xFFFFFFFFul;
        if (c <= 0xFF) {
            narrow.push_back(static_cast<char>(c));
            continue;
        }
        // With 16-bit wchar_t a character beyond U+FFFF is a surrogate pair: one '?' for it,
        // just as a 32-bit wchar_t gives for the same text.
        if (sizeof(wchar_t) == 2 && IsHighSurrogate(c) && i + 1 < text.size()
            && IsLowSurrogate(static_cast<unsigned long>(text[i + 1]) & 0xFFFFul)) {
            ++i;
        }
        narrow.push_back(kReplacement);
    }
    return narrow;
}

bool IsNarrowText(const std::wstring& text)
{
    for (const wchar_t c : text) {
        if ((static_cast<unsigned long>(c) & 0xFFFFFFFFul) > 0xFF) {
            return false;
        }
    }
    return true;
}

std::wstring NarrowToWide(const std::string& text)
{
    std::wstring wide;
    wide.reserve(text.size());
    for (const char c : text) {
        wide.push_back(static_cast<wchar_t>(static_cast<unsigned char>(c)));
    }
    return wide;
}

} // namespace Platform
} // namespace MV

#include "DoctorStrings.h"

#include <cstdint>
#include <cstdio>

namespace MV {
namespace Doctor {

namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

void AppendCodePoint(std::string& out, std::uint32_t c)
{
    if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
        c = kReplacement;
    }
    if (c < 0x80) {
        out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (c >> 6)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (c >> 12)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (c >> 18)));
        out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
}

// Length of the valid UTF-8 sequence at i, or 0.
std::size_t ValidSequenceLength(const std::string& bytes, std::size_t i)
{
    const unsigned char lead = static_cast<unsigned char>(bytes[i]);
    std::size_t length = 0;
    std::uint32_t c = 0;
    std::uint32_t minimum = 0;
    if (lead < 0x80) {
        return 1;
    }
    if ((lead & 0xE0) == 0xC0) {
        length = 2;
        c = lead & 0x1Fu;
        minimum = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
        length = 3;
        c = lead & 0x0Fu;
        minimum = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
        length = 4;
        c = lead & 0x07u;
        minimum = 0x10000;
    } else {
        return 0;
    }
    if (i + length > bytes.size()) {
        return 0;
    }
    for (std::size_t k = 1; k < length; ++k) {
        const unsigned char next = static_cast<unsigned char>(bytes[i + k]);
        if ((next & 0xC0) != 0x80) {
            return 0;
        }
        c = (c << 6) | (next & 0x3Fu);
    }
    if (c < minimum || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
        return 0;
    }
    return length;
}

} // namespace

std::string EncodeUtf8(const std::wstring& text)
{
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::uint32_t c = static_cast<std::uint32_t>(text[i]);
        if (sizeof(wchar_t) == 2) {
            c &= 0xFFFFu;
            if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size()) {
                const std::uint32_t low = static_cast<std::uint32_t>(text[i + 1]) & 0xFFFFu;
                if (low >= 0xDC00 && low <= 0xDFFF) {
                    c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
                    ++i;
                }
            }
        }
        AppendCodePoint(out, c);
    }
    return out;
}

std::string SanitizeUtf8(const std::string& bytes)
{
    std::string out;
    out.reserve(bytes.size());
    std::size_t i = 0;
    while (i < bytes.size()) {
        const std::size_t length = ValidSequenceLength(bytes, i);
        if (length == 0) {
            AppendCodePoint(out, static_cast<unsigned char>(bytes[i]));
            ++i;
            continue;
        }
        out.append(bytes, i, length);
        i += length;
    }
    return out;
}

std::string JsonQuote(const std::string& utf8)
{
    const std::string text = SanitizeUtf8(utf8);
    std::string out;
    out.reserve(text.size() + 2);
    out.push_back('"');
    for (const char ch : text) {
        const unsigned char c = static_cast<unsigned char>(ch);
        switch (c) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            if (c < 0x20 || c == 0x7F) {
                char escaped[8];
                std::snprintf(escaped, sizeof(escaped), "\\u%04x", c);
                out += escaped;
            } else {
                out.push_back(ch);
            }
        }
    }
    out.push_back('"');
    return out;
}

std::string Printable(const std::string& utf8)
{
    const std::string text = SanitizeUtf8(utf8);
    std::string out;
    out.reserve(text.size());
    for (const char ch : text) {
        const unsigned char c = static_cast<unsigned char>(ch);
        if (c < 0x20 || c == 0x7F) {
            char escaped[8];
            std::snprintf(escaped, sizeof(escaped), "\\x%02X", c);
            out += escaped;
        } else {
            out.push_back(ch);
        }
    }
    return out;
}

} // namespace Doctor
} // namespace MV

#pragma once

#include <string>

// Text helpers shared by the checks and the two renderers.
namespace MV {
namespace Doctor {

// UTF-8 of wide text (UTF-16 with 2-byte wchar_t, UTF-32 with 4). A lone surrogate or a value
// beyond U+10FFFF becomes U+FFFD.
std::string EncodeUtf8(const std::wstring& text);

// bytes with valid UTF-8 kept and every other byte taken as its Latin-1 character, so the
// result is always valid UTF-8.
std::string SanitizeUtf8(const std::string& bytes);

// A JSON string literal, quotes included. Control characters are escaped.
std::string JsonQuote(const std::string& utf8);

// utf8 with control characters shown as \xNN, so a line of output stays one line.
std::string Printable(const std::string& utf8);

} // namespace Doctor
} // namespace MV

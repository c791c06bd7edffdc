#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// The line rules of the "key = value" files, applied to bytes in memory. KeyValueFile.h
// puts the file reading and writing around them.
//
// Lines are separated by any run of CR and LF bytes and trimmed of spaces and tabs. The
// key is the text before the first "=", and a line answers every requested key that
// starts with it (compared after tolower): "GOZ = x" answers GOZ_OBJECT_LIST. That prefix
// rule is deliberate; the GoZ files have always been read that way.
namespace MV {
namespace KeyValue {

// Bytes of a line's key that take part in a comparison; a longer key is cut there.
constexpr std::size_t kMaxKeyBytes = 511;

// Whether a line whose key is the length bytes at lineKey answers the request key.
// An empty line key and a null request match nothing.
bool KeyMatches(const char* lineKey, std::size_t length, const char* key);

// Looks for the first line that answers key. On a match, hasValue tells whether the line
// has an "=", and value holds its value with enclosing double quotes removed (a view into
// text for the first form).
bool FindKeyValue(const char* text, std::size_t size, const char* key, std::string_view& value, bool& hasValue);
bool FindKeyValue(const char* text, std::size_t size, const char* key, std::string& value, bool& hasValue);

// Removes the lines that answer key, each taken with the CR/LF bytes that follow it, by moving
// the rest forward; returns the size that is left. Everything else stays byte for byte.
std::size_t RemoveKeyLinesInPlace(char* text, std::size_t size, const char* key);

// The same on a copy.
std::string RemoveKeyLines(const char* text, std::size_t size, const char* key);

} // namespace KeyValue
} // namespace MV

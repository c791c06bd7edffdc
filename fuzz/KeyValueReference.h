#pragma once

#include <cctype>
#include <cstddef>
#include <string>
#include <vector>

// The key = value line rules read plainly, byte by byte, as the oracle the fuzz targets hold
// the fast reader and writer to: lines split at runs of CR/LF, trimmed of blanks, keys cut to
// 511 bytes and compared through tolower as a prefix of the request.
namespace MV {
namespace Fuzz {

struct CRefLine
{
    std::size_t m_nBegin = 0;
    std::size_t m_nNext = 0; // past the CR/LF run after the line
    std::string m_strKey;
    bool m_bHasValue = false;
    std::string m_strValue;
};

inline bool RefIsEnd(char c)
{
    return c == '\r' || c == '\n';
}

inline bool RefIsBlank(char c)
{
    return c == ' ' || c == '\t';
}

inline std::string RefTrim(std::string text)
{
    while (!text.empty() && RefIsBlank(text.front())) {
        text.erase(0, 1);
    }
    while (!text.empty() && RefIsBlank(text.back())) {
        text.pop_back();
    }
    return text;
}

inline std::vector<CRefLine> RefLines(const std::string& text)
{
    std::vector<CRefLine> lines;
    std::size_t pos = 0;
    while (pos < text.size()) {
        CRefLine line;
        line.m_nBegin = pos;
        std::size_t end = pos;
        while (end < text.size() && !RefIsEnd(text[end])) {
            ++end;
        }
        line.m_nNext = end;
        while (line.m_nNext < text.size() && RefIsEnd(text[line.m_nNext])) {
            ++line.m_nNext;
        }
        const std::string body = RefTrim(text.substr(pos, end - pos));
        const std::size_t equals = body.find('=');
        line.m_strKey = RefTrim(body.substr(0, equals)).substr(0, 511);
        if (equals != std::string::npos) {
            line.m_bHasValue = true;
            std::string value = RefTrim(body.substr(equals + 1));
            if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
                value = value.substr(1, value.size() - 2);
            }
            line.m_strValue = value;
        }
        lines.push_back(line);
        pos = line.m_nNext;
    }
    return lines;
}

inline bool RefAnswers(const CRefLine& line, const std::string& request)
{
    if (line.m_strKey.empty() || line.m_strKey.size() > request.size()) {
        return false;
    }
    for (std::size_t i = 0; i < line.m_strKey.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(line.m_strKey[i]))
            != std::tolower(static_cast<unsigned char>(request[i]))) {
            return false;
        }
    }
    return true;
}

// The first line that answers the request; null when none does.
inline const CRefLine* RefFind(const std::vector<CRefLine>& lines, const std::string& request)
{
    for (const CRefLine& line : lines) {
        if (RefAnswers(line, request)) {
            return &line;
        }
    }
    return nullptr;
}

// The text without the lines that answer the request, each taken with its CR/LF run.
inline std::string RefKept(const std::string& text, const std::vector<CRefLine>& lines, const std::string& request)
{
    std::string kept;
    for (const CRefLine& line : lines) {
        if (!RefAnswers(line, request)) {
            kept.append(text, line.m_nBegin, line.m_nNext - line.m_nBegin);
        }
    }
    return kept;
}

} // namespace Fuzz
} // namespace MV

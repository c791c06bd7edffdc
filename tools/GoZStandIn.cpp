// Stand-in for the ZBrush-side GoZ programs. It does no sculpting: it records that it was
// started, with what, and which objects the exchange files offered it, as one JSON line in
// the process log (MVGOZ_PROCESS_LOG, else processes.jsonl beside the program).

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <strings.h>
#include <unistd.h>

#ifndef MVGOZ_STANDIN_NAME
#define MVGOZ_STANDIN_NAME "GoZStandIn"
#endif
#ifndef MVGOZ_STANDIN_RETURN_LAUNCHER
#define MVGOZ_STANDIN_RETURN_LAUNCHER 0
#endif

extern char** environ;

namespace {

std::string JsonString(const std::string& text)
{
    // Valid UTF-8 passes through; any other byte is written as its Latin-1 character so
    // that the line stays valid JSON whatever the exchange files hold.
    std::string out = "\"";
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    const size_t size = text.size();
    size_t i = 0;
    while (i < size) {
        const unsigned char c = bytes[i];
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
            ++i;
            continue;
        }
        if (c < 0x20) {
            char buffer[8];
            std::snprintf(buffer, sizeof buffer, "\\u%04x", c);
            out += buffer;
            ++i;
            continue;
        }
        if (c < 0x80) {
            out += static_cast<char>(c);
            ++i;
            continue;
        }
        size_t length = 0;
        if ((c & 0xE0) == 0xC0 && c >= 0xC2) {
            length = 2;
        } else if ((c & 0xF0) == 0xE0) {
            length = 3;
        } else if ((c & 0xF8) == 0xF0 && c <= 0xF4) {
            length = 4;
        }
        bool valid = length > 0 && i + length <= size;
        for (size_t k = 1; valid && k < length; ++k) {
            valid = (bytes[i + k] & 0xC0) == 0x80;
        }
        if (valid) {
            out.append(text, i, length);
            i += length;
        } else {
            char buffer[8];
            std::snprintf(buffer, sizeof buffer, "\\u%04x", c);
            out += buffer;
            ++i;
        }
    }
    out += '"';
    return out;
}

std::string JsonArray(const std::vector<std::string>& items)
{
    std::string out = "[";
    for (size_t i = 0; i < items.size(); ++i) {
        if (i > 0) {
            out += ",";
        }
        out += JsonString(items[i]);
    }
    out += "]";
    return out;
}

std::string OwnPath(const char* argv0)
{
    char buffer[4096];
    const ssize_t length = readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    if (length > 0) {
        return std::string(buffer, static_cast<size_t>(length));
    }
    return argv0 != nullptr ? argv0 : "";
}

std::string FolderOf(const std::string& path)
{
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? std::string(".") : path.substr(0, slash);
}

std::string CurrentDirectory()
{
    std::vector<char> buffer(4096);
    while (getcwd(buffer.data(), buffer.size()) == nullptr) {
        if (errno != ERANGE || buffer.size() > (1u << 20)) {
            return "";
        }
        buffer.resize(buffer.size() * 2);
    }
    return buffer.data();
}

// Environment names are case-insensitive on the system these programs stand in for.
bool FindEnvironment(const char* name, std::string& value)
{
    const size_t nameLength = std::strlen(name);
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const char* text = *entry;
        const char* eq = std::strchr(text, '=');
        if (eq == nullptr || static_cast<size_t>(eq - text) != nameLength) {
            continue;
        }
        if (strncasecmp(text, name, nameLength) == 0) {
            value = eq + 1;
            return true;
        }
    }
    return false;
}

std::string Trim(const std::string& text)
{
    const size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) {
        return "";
    }
    const size_t last = text.find_last_not_of(" \t\r\n");
    return text.substr(first, last - first + 1);
}

bool SameKey(const std::string& a, const std::string& b)
{
    return a.size() == b.size() && strncasecmp(a.c_str(), b.c_str(), a.size()) == 0;
}

// "key = value" lines; the key compares without case, a quoted value loses its quotes.
bool ReadKey(const std::string& path, const std::string& key, std::string& value)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return false;
    }
    std::string line;
    while (std::getline(in, line)) {
        const std::string trimmed = Trim(line);
        const size_t eq = trimmed.find('=');
        if (eq == std::string::npos || !SameKey(Trim(trimmed.substr(0, eq)), key)) {
            continue;
        }
        std::string found = Trim(trimmed.substr(eq + 1));
        if (found.size() >= 2 && found.front() == '"' && found.back() == '"') {
            found = found.substr(1, found.size() - 2);
        }
        value = found;
        return true;
    }
    return false;
}

bool ReadLines(const std::string& path, std::vector<std::string>& lines)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return false;
    }
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (!line.empty()) {
            lines.push_back(line);
        }
    }
    return true;
}

bool AppendLine(const std::string& path, const std::string& line)
{
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    if (fd < 0) {
        return false;
    }
    // One write per record: concurrent runs append whole lines, never interleaved pieces.
    const std::string record = line + "\n";
    const ssize_t written = write(fd, record.data(), record.size());
    const bool closed = close(fd) == 0;
    return written == static_cast<ssize_t>(record.size()) && closed;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string ownPath = OwnPath(argc > 0 ? argv[0] : nullptr);
    std::vector<std::string> args;
    for (int i = 1; i < argc; ++i) {
        args.emplace_back(argv[i]);
    }

    std::ostringstream json;
    json << "{\"program\":" << JsonString(MVGOZ_STANDIN_NAME) << ",\"path\":" << JsonString(ownPath)
         << ",\"args\":" << JsonArray(args) << ",\"cwd\":" << JsonString(CurrentDirectory());

    std::string publicFolder;
    std::vector<std::string> problems;
    if (!FindEnvironment("PUBLIC", publicFolder)) {
        problems.emplace_back("PUBLIC is not set");
        json << ",\"info_file\":null,\"object_list_file\":null,\"object_list\":null";
    } else {
        const std::string appFolder = publicFolder + "/Pixologic/GoZApps/Figmora/";
        const std::string infoFile = appFolder + "GoZ_Info.txt";
        json << ",\"info_file\":" << JsonString(infoFile);
        std::string listName;
        if (!ReadKey(infoFile, "GOZ_OBJECT_LIST", listName)) {
            problems.emplace_back("no GOZ_OBJECT_LIST in " + infoFile);
            json << ",\"object_list_file\":null,\"object_list\":null";
        } else {
            // The value is appended to the folder as it stands, as the plug-in does.
            const std::string listFile = appFolder + listName;
            std::vector<std::string> lines;
            json << ",\"object_list_file\":" << JsonString(listFile);
            if (ReadLines(listFile, lines)) {
                json << ",\"object_list\":" << JsonArray(lines);
            } else {
                problems.emplace_back("cannot read " + listFile);
                json << ",\"object_list\":null";
            }
        }
    }

    if (MVGOZ_STANDIN_RETURN_LAUNCHER) {
        const std::string configFile = FolderOf(ownPath) + "/GoZ_Config.txt";
        std::string configPath;
        if (ReadKey(configFile, "PATH", configPath)) {
            json << ",\"config_path\":" << JsonString(configPath);
        } else {
            problems.emplace_back("no PATH in " + configFile);
            json << ",\"config_path\":null";
        }
    }
    json << ",\"problems\":" << JsonArray(problems) << "}";

    std::string logPath;
    if (!FindEnvironment("MVGOZ_PROCESS_LOG", logPath) || logPath.empty()) {
        logPath = FolderOf(ownPath) + "/processes.jsonl";
    }
    if (!AppendLine(logPath, json.str())) {
        std::fprintf(stderr, "%s: cannot append to the process log %s: %s\n", MVGOZ_STANDIN_NAME, logPath.c_str(),
                     std::strerror(errno));
        return 1;
    }
    return 0;
}

#include "FuzzSupport.h"
#include "KeyValueFile.h"
#include "KeyValueReference.h"
#include "KeyValueText.h"

#include <cstddef>
#include <cstdint>
#include <string>

using namespace MV::Fuzz;

namespace {

// A key and value that read back as they were written: the line rules trim blanks, stop a
// key at "=" and a line at CR/LF, and take enclosing quotes off a value.
bool ReadsBack(const std::string& key, const std::string& value)
{
    const auto clean = [](const std::string& text) {
        return text.find_first_of("\r\n") == std::string::npos
            && (text.empty() || (!RefIsBlank(text.front()) && !RefIsBlank(text.back())));
    };
    const bool quoted = value.size() >= 2 && value.front() == '"' && value.back() == '"';
    return !key.empty() && key.find('=') == std::string::npos && clean(key) && clean(value) && !quoted;
}

} // namespace

// Input: key, a zero byte, value, a zero byte, then the file's bytes. Setting a key keeps
// every other line byte for byte, grows the file by at most the new line, leaves no second
// file behind and never creates a missing file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::vector<std::string> parts = Split(data, size, 3);
    const std::string& key = parts[0];
    const std::string& value = parts[1];
    const std::string& text = parts[2];
    const std::string name = "GoZ_Config.txt";
    const std::string path = SandboxPath(name);
    Check(WriteFile(path, text), "the sandbox takes the file");

    SetKeyValue(path.c_str(), key.c_str(), value.c_str());
    std::string out;
    Check(ReadFile(path, out), "the file is still there after SetKeyValue");
    Check(FolderEntries(SandboxFolder()) == std::vector<std::string>{name},
          "SetKeyValue leaves no staged copy beside the file");

    if (key.empty()) {
        Check(out == text, "an empty key changes nothing");
    } else {
        const std::vector<CRefLine> lines = RefLines(text);
        const std::string kept = RefKept(text, lines, key);
        const std::string line = key + " = " + value + "\n";
        Check(MV::KeyValue::RemoveKeyLines(text.data(), text.size(), key.c_str()) == kept,
              "RemoveKeyLines drops exactly the lines that answer the key");
        Check(out.size() <= text.size() + line.size(), "the file grows by at most the new line");
        Check(out == kept + line, "every other line is kept byte for byte and the new line comes last");
        // Joined onto a last line without a line end, the new line reads as part of that one.
        if (ReadsBack(key, value) && (kept.empty() || RefIsEnd(kept.back()))) {
            std::string buffer(value.size() + 1, '\x7f');
            Check(GetKeyValue(path.c_str(), key.c_str(), buffer.data(), static_cast<int>(buffer.size()))
                      && buffer == value + '\0',
                  "a set key reads back with its value");
        }
    }

    const std::string missing = SandboxPath("missing.txt");
    SetKeyValue(missing.c_str(), key.c_str(), value.c_str());
    Check(!Exists(missing), "SetKeyValue never creates a file");
    return 0;
}

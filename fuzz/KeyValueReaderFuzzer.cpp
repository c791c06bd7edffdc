#include "FuzzSupport.h"
#include "KeyValueFile.h"
#include "KeyValueReference.h"
#include "KeyValueText.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

using namespace MV::Fuzz;

// Input: the requested key, a zero byte, then the file's bytes. The reader, in memory and
// through a file, must answer what the plain reading of the rules answers, and never write
// past the caller's buffer.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::vector<std::string> parts = Split(data, size, 2);
    const std::string& key = parts[0];
    const std::string& text = parts[1];
    const std::vector<CRefLine> lines = RefLines(text);
    const CRefLine* expected = RefFind(lines, key);

    std::string_view view;
    bool hasValue = false;
    const bool found = MV::KeyValue::FindKeyValue(text.data(), text.size(), key.c_str(), view, hasValue);
    Check(found == (expected != nullptr), "FindKeyValue finds a line exactly when one answers the key");
    if (found) {
        Check(hasValue == expected->m_bHasValue, "FindKeyValue tells whether the line has an \"=\"");
        Check(!hasValue || view == expected->m_strValue, "FindKeyValue gives the first answering line's value");
    }

    const std::string path = SandboxPath("GoZ_Info.txt");
    Check(WriteFile(path, text), "the sandbox takes the file");
    constexpr char kUntouched = '\x7f';
    // A roomy buffer and a tight one that cuts most values.
    for (const int valueSize : {1024, 1 + static_cast<int>(size % 8)}) {
        std::string buffer(static_cast<std::size_t>(valueSize) + 8, kUntouched);
        const bool got = GetKeyValue(path.c_str(), key.c_str(), buffer.data(), valueSize);
        Check(got == (!text.empty() && expected != nullptr), "GetKeyValue answers as the text does");
        std::size_t written = 0;
        if (got && expected->m_bHasValue) {
            const std::size_t length = std::min(expected->m_strValue.size(), static_cast<std::size_t>(valueSize - 1));
            Check(buffer.compare(0, length, expected->m_strValue, 0, length) == 0 && buffer[length] == '\0',
                  "GetKeyValue copies the value cut to the buffer, with a terminating zero");
            written = length + 1;
        }
        Check(std::all_of(buffer.begin() + static_cast<std::ptrdiff_t>(written), buffer.end(),
                          [](char c) { return c == kUntouched; }),
              "GetKeyValue writes nothing past the value and its zero");
    }
    return 0;
}

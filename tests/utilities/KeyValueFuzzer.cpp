#include "KeyValueText.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

// Input: the requested key up to the first zero byte, then the file's bytes. Aborts when
// a line of the key survives its removal or a removal is not final.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const char* bytes = reinterpret_cast<const char*>(data);
    const void* zero = std::memchr(bytes, '\0', size);
    const std::string key(bytes, zero != nullptr ? static_cast<const char*>(zero) - bytes : size);
    const std::size_t textStart = zero != nullptr ? key.size() + 1 : size;
    const std::string text(bytes + textStart, size - textStart);

    std::string value;
    bool hasValue = false;
    MV::KeyValue::FindKeyValue(text.data(), text.size(), key.c_str(), value, hasValue);
    const std::string kept = MV::KeyValue::RemoveKeyLines(text.data(), text.size(), key.c_str());
    if (kept.size() > text.size()
        || MV::KeyValue::FindKeyValue(kept.data(), kept.size(), key.c_str(), value, hasValue)
        || MV::KeyValue::RemoveKeyLines(kept.data(), kept.size(), key.c_str()) != kept) {
        std::abort();
    }
    return 0;
}

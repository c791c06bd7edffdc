#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

// Replays saved fuzz inputs through a target's entry function, compiled without libFuzzer:
// the seeds and every input that once crashed run with the normal compiler in every test run.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv)
{
    namespace fs = std::filesystem;
    // All paths first: a target may change the current folder.
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i) {
        std::error_code error;
        const fs::path given = fs::absolute(argv[i], error);
        if (fs::is_directory(given, error)) {
            for (const fs::directory_entry& entry : fs::directory_iterator(given, error)) {
                if (entry.is_regular_file()) {
                    inputs.push_back(entry.path());
                }
            }
        } else if (fs::is_regular_file(given, error)) {
            inputs.push_back(given);
        } else {
            std::fprintf(stderr, "no such file or folder: %s\n", argv[i]);
            return 2;
        }
    }
    if (inputs.empty()) {
        std::fprintf(stderr, "usage: %s <input or folder>...; no inputs found\n", argv[0]);
        return 2;
    }
    std::sort(inputs.begin(), inputs.end());
    for (const fs::path& input : inputs) {
        std::ifstream in(input, std::ios::binary);
        const std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        if (in.bad()) {
            std::fprintf(stderr, "cannot read %s\n", input.c_str());
            return 2;
        }
        // A crash names the input that caused it.
        std::fprintf(stderr, "replaying %s\n", input.filename().c_str());
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("%zu inputs replayed\n", inputs.size());
    return 0;
}

// GetKeyValue and SetKeyValue beside the least any reader or durable writer of the same file
// must do, at growing line counts. The key asked for is on the last line, so the whole file
// is searched. At the end the median ratio of each pair is printed (CPU time too: other
// programs on the machine disturb it less).
//   mvgoz_keyvalue_bench --benchmark_repetitions=5 --benchmark_enable_random_interleaving=true
#include "KeyValueFile.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

const char* const kKey = "GOZ_OBJECT_LIST";
const char* const kValue = "\"C:/Users/Public/Pixologic/GoZBrush/Temp/GoZ_ObjectList.txt\"";

// A private folder for the files, removed at exit.
class CBenchFolder
{
public:
    CBenchFolder()
    {
        const char* tmp = std::getenv("TMPDIR");
        std::string pattern = std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") + "/mvgoz-kvbench.XXXXXX";
        if (::mkdtemp(pattern.data()) != nullptr) {
            m_strPath = pattern;
        }
    }
    ~CBenchFolder()
    {
        for (const std::string& file : m_kFiles) {
            std::remove(file.c_str());
        }
        if (!m_strPath.empty()) {
            ::rmdir(m_strPath.c_str());
        }
    }

    // A file of lines as the GoZ files have them (CRLF, quoted paths) with the key asked for
    // on the last line. With shared keys every key starts with the first 11 bytes of the one
    // asked for, so that each line is compared that far; with varied keys the first two
    // letters run through the alphabet, so that most lines differ at once. Made once.
    std::string Make(const std::string& name, int lines, bool sharedKeys)
    {
        const std::string path = m_strPath + "/" + name + "-" + std::to_string(lines) + (sharedKeys ? "s" : "v") + ".txt";
        if (m_strPath.empty() || std::find(m_kFiles.begin(), m_kFiles.end(), path) != m_kFiles.end()) {
            return m_strPath.empty() ? std::string() : path;
        }
        std::string content;
        char line[160];
        for (int i = 1; i < lines; ++i) {
            const int length = std::snprintf(
                line, sizeof(line), "GOZ_OBJECT_%06d = \"C:/Users/Public/Pixologic/GoZProjects/Default/Object_%06d.GoZ\"\r\n", i, i);
            if (!sharedKeys) {
                line[0] = static_cast<char>('A' + i % 26);
                line[1] = static_cast<char>('A' + i / 26 % 26);
            }
            content.append(line, static_cast<std::size_t>(length));
        }
        content += std::string(kKey) + " = " + kValue + "\n";
        std::FILE* file = std::fopen(path.c_str(), "wb");
        if (file == nullptr) {
            return std::string();
        }
        const bool written = std::fwrite(content.data(), 1, content.size(), file) == content.size();
        if (std::fclose(file) != 0 || !written) {
            return std::string();
        }
        m_kFiles.push_back(path);
        return path;
    }

private:
    std::string m_strPath;
    std::vector<std::string> m_kFiles;
};

CBenchFolder& Folder()
{
    static CBenchFolder s_kFolder;
    return s_kFolder;
}

// The whole file in one allocation and one read, sized from the file.
bool ReadPlain(const std::string& path, std::unique_ptr<char[]>& data, long& size)
{
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        return false;
    }
    bool ok = std::fseek(file, 0, SEEK_END) == 0 && (size = std::ftell(file)) > 0 && std::fseek(file, 0, SEEK_SET) == 0;
    if (ok) {
        data.reset(new char[static_cast<std::size_t>(size)]);
        ok = std::fread(data.get(), 1, static_cast<std::size_t>(size), file) == static_cast<std::size_t>(size);
    }
    std::fclose(file);
    return ok;
}

void BM_GetKeyValue(benchmark::State& state)
{
    const std::string path = Folder().Make("get", static_cast<int>(state.range(0)), state.range(1) != 0);
    char value[1024];
    for (auto _ : state) {
        if (!GetKeyValue(path.c_str(), kKey, value, sizeof(value))) {
            state.SkipWithError("key not found");
            break;
        }
        benchmark::DoNotOptimize(value);
    }
}

// Floor of GetKeyValue: open, size, read whole, close.
void BM_GetFloor(benchmark::State& state)
{
    const std::string path = Folder().Make("getfloor", static_cast<int>(state.range(0)), state.range(1) != 0);
    for (auto _ : state) {
        std::unique_ptr<char[]> data;
        long size = 0;
        if (!ReadPlain(path, data, size)) {
            state.SkipWithError("read failed");
            break;
        }
        benchmark::DoNotOptimize(data.get());
    }
}

void BM_SetKeyValue(benchmark::State& state)
{
    const std::string path = Folder().Make("set", static_cast<int>(state.range(0)), state.range(1) != 0);
    char value[1024];
    if (path.empty() || !GetKeyValue(path.c_str(), kKey, value, sizeof(value))) {
        state.SkipWithError("no file");
        return;
    }
    for (auto _ : state) {
        // The same key and value every time: the file keeps its content and size.
        SetKeyValue(path.c_str(), kKey, kValue);
    }
}

// Floor of a durable SetKeyValue: read whole, write the same bytes to a new file beside,
// sync it, move it over.
void BM_SetFloor(benchmark::State& state)
{
    const std::string path = Folder().Make("setfloor", static_cast<int>(state.range(0)), state.range(1) != 0);
    const std::string beside = path + ".new";
    for (auto _ : state) {
        std::unique_ptr<char[]> data;
        long size = 0;
        if (!ReadPlain(path, data, size)) {
            state.SkipWithError("read failed");
            break;
        }
        std::FILE* out = std::fopen(beside.c_str(), "wb");
        if (out == nullptr) {
            state.SkipWithError("write failed");
            break;
        }
        bool ok = std::fwrite(data.get(), 1, static_cast<std::size_t>(size), out) == static_cast<std::size_t>(size);
        ok = std::fflush(out) == 0 && ::fsync(::fileno(out)) == 0 && ok;
        ok = std::fclose(out) == 0 && ok;
        if (!ok || std::rename(beside.c_str(), path.c_str()) != 0) {
            state.SkipWithError("write failed");
            break;
        }
    }
}

// Get on both kinds of keys; Set, where the disk dominates, on the shared ones.
void GetSizes(benchmark::internal::Benchmark* bench)
{
    bench->ArgNames({"lines", "shared"})->Unit(benchmark::kMicrosecond);
    for (const int lines : {10, 1000, 100000}) {
        bench->Args({lines, 1})->Args({lines, 0});
    }
}

void SetSizes(benchmark::internal::Benchmark* bench)
{
    bench->ArgNames({"lines", "shared"})->Unit(benchmark::kMicrosecond)->UseRealTime();
    for (const int lines : {10, 1000, 100000}) {
        bench->Args({lines, 1});
    }
}

BENCHMARK(BM_GetKeyValue)->Apply(GetSizes);
BENCHMARK(BM_GetFloor)->Apply(GetSizes);
BENCHMARK(BM_SetKeyValue)->Apply(SetSizes);
BENCHMARK(BM_SetFloor)->Apply(SetSizes);

// The console output, then per size the median time of each function over its floor's, in
// real time and in CPU time (which other programs on the machine disturb less), with the
// spread (max - min over median) of the real times.
class CRatioReporter : public benchmark::ConsoleReporter
{
public:
    CRatioReporter() : benchmark::ConsoleReporter(::isatty(::fileno(stdout)) != 0 ? OO_ColorTabular : OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& reports) override
    {
        benchmark::ConsoleReporter::ReportRuns(reports);
        for (const Run& run : reports) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                CTimes& times = m_kTimes[run.run_name.function_name][run.run_name.args];
                times.m_kReal.push_back(run.GetAdjustedRealTime());
                times.m_kCpu.push_back(run.GetAdjustedCPUTime());
            }
        }
    }

    void Finalize() override
    {
        benchmark::ConsoleReporter::Finalize();
        const char* const pairs[][2] = {{"BM_GetKeyValue", "BM_GetFloor"}, {"BM_SetKeyValue", "BM_SetFloor"}};
        std::printf("\nmedian over the floor's median     real    cpu   (spread of real times: own, floor)\n");
        for (const auto& pair : pairs) {
            for (const auto& [args, times] : m_kTimes[pair[0]]) {
                const auto floor = m_kTimes[pair[1]].find(args);
                if (floor == m_kTimes[pair[1]].end()) {
                    continue;
                }
                std::printf("%-12s %-22s %6.2fx %6.2fx   (%.0f%%, %.0f%%)\n", pair[0] + 3, args.c_str(),
                            Median(times.m_kReal) / Median(floor->second.m_kReal),
                            Median(times.m_kCpu) / Median(floor->second.m_kCpu), 100.0 * Spread(times.m_kReal),
                            100.0 * Spread(floor->second.m_kReal));
            }
        }
    }

private:
    struct CTimes
    {
        std::vector<double> m_kReal;
        std::vector<double> m_kCpu;
    };

    static double Median(std::vector<double> values)
    {
        std::sort(values.begin(), values.end());
        const std::size_t mid = values.size() / 2;
        return values.size() % 2 != 0 ? values[mid] : (values[mid - 1] + values[mid]) / 2;
    }

    static double Spread(const std::vector<double>& values)
    {
        const auto [low, high] = std::minmax_element(values.begin(), values.end());
        return (*high - *low) / Median(values);
    }

    std::map<std::string, std::map<std::string, CTimes>> m_kTimes;
};

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    CRatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}

// The expression dialog's duplicate-target step: the rule as first written (a copy of the
// list per contested pair) against the counted version, on the same record lists.
#include "CExpressionMatcher.h"
#include "LiteralTargetCheck.h"
#include "RandomRecords.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <random>

using namespace MV;

namespace {

// Half as many scene meshes as records and up to four candidates each: most records contest
// a target with another.
CZBrushToFMMeshInfoList Records(int count)
{
    std::mt19937 random(20261123u);
    return Test::MakeRandomRecords(random, count, count / 2 > 1 ? count / 2 : 2, 4);
}

template <QV::Result (*Check)(CZBrushToFMMeshInfoList&)>
void RunTargetCheck(benchmark::State& state)
{
    const CZBrushToFMMeshInfoList original = Records(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        CZBrushToFMMeshInfoList records = original;
        // Only the step is timed, not the copy it works on.
        const auto start = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(Check(records));
        const auto stop = std::chrono::steady_clock::now();
        state.SetIterationTime(std::chrono::duration<double>(stop - start).count());
        benchmark::DoNotOptimize(records);
    }
    state.SetComplexityN(state.range(0));
}

void BM_TargetCheckLiteral(benchmark::State& state)
{
    RunTargetCheck<&Test::Literal::CheckUpdateGozTargetObject>(state);
}

void BM_TargetCheckCounted(benchmark::State& state)
{
    RunTargetCheck<&CExpressionMatcher::CheckUpdateGozTargetObject>(state);
}

BENCHMARK(BM_TargetCheckLiteral)->Arg(10)->Arg(100)->Arg(1000)->UseManualTime()->Complexity()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TargetCheckCounted)->Arg(10)->Arg(100)->Arg(1000)->UseManualTime()->Complexity()->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();

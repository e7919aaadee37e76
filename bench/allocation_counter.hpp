// Counts the global operator new calls of the calling thread, to show that a path does not allocate.
#pragma once

#include "samples.hpp"

#include <benchmark/benchmark.h>

#include <cstdint>

namespace qxbench {

/// Operator new calls made so far by the calling thread, the library's own included: the
/// benchmark binary replaces the global operators. C code (ICU, glibc) calls malloc directly,
/// which is not counted.
std::uint64_t allocations_on_this_thread() noexcept;

/// Operator new calls per iteration since `before`, as a column of the console and the tables.
inline void count_allocations(benchmark::State& state, std::uint64_t before)
{
    const auto calls = static_cast<double>(allocations_on_this_thread() - before);
    state.counters["allocs"] = benchmark::Counter(calls, benchmark::Counter::kAvgIterations);
}

/// Times `convert(input.bytes)` after checking once that it gives `input.units`, counting
/// allocations and bytes.
template <class Convert>
void time_checked_conversion(benchmark::State& state, const sample& input, Convert&& convert)
{
    if (convert(input.bytes) != input.units) {
        state.SkipWithError("output differs from the expected text");
        return;
    }
    const std::uint64_t before = allocations_on_this_thread();
    for (auto _ : state) {
        ustring result = convert(input.bytes);
        benchmark::DoNotOptimize(result.data());
        benchmark::ClobberMemory();
    }
    count_allocations(state, before);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(input.bytes.size()));
}

}  // namespace qxbench

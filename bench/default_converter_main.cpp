// qxi18n_bench_internal: the three ways to get a converter for the global locale's encoding, timed
// on one short conversion each. The two library accessors are internal, so this binary links the
// library's objects rather than the shared library.
#include "locale/locale_context.hpp"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

namespace {

// 32 bytes of accented UTF-8, the encoding of the classic (and, before start-up, global) locale.
const std::string text = "Gr\xC3\xBC\xC3\x9F" "e aus K\xC3\xB6ln, \xC3\xA0 bient\xC3\xB4t!!";

void convert(UConverter* converter, benchmark::State& state)
{
    UChar out[64];
    UErrorCode status = U_ZERO_ERROR;
    const int32_t n = ucnv_toUChars(converter, out, 64, text.data(), static_cast<int32_t>(text.size()), &status);
    if (U_FAILURE(status))
        state.SkipWithError(u_errorName(status));
    benchmark::DoNotOptimize(n);
    benchmark::DoNotOptimize(out);
}

void thread_current(benchmark::State& state)
{
    for (auto _ : state)
        convert(fl::i18n::detail::thread_current_converter(), state);
}

void clone_current(benchmark::State& state)
{
    for (auto _ : state) {
        const fl::i18n::detail::converter_ptr converter = fl::i18n::detail::clone_current_converter();
        convert(converter.get(), state);
    }
}

void open_per_call(benchmark::State& state)
{
    for (auto _ : state) {
        UErrorCode status = U_ZERO_ERROR;
        const fl::i18n::detail::converter_ptr converter(ucnv_open("UTF-8", &status));
        convert(converter.get(), state);
    }
}

// Prints the usual table, then each accessor's time as a ratio to a fresh ucnv_open per call.
class ratio_reporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Iteration && !run.error_occurred)
                seconds_[run.benchmark_name().substr(0, run.benchmark_name().find("/min_time"))] =
                    run.GetAdjustedRealTime() * 1e-9;
    }

    void print_ratios() const
    {
        const auto peer = seconds_.find("default_converter/32B/ucnv_open_per_call");
        if (peer == seconds_.end())
            return;
        std::printf("\nDefault converter, 32 B of UTF-8: time per conversion and ratio to ucnv_open per call\n");
        for (const auto& [name, seconds] : seconds_)
            std::printf("  %-48s %8.1f ns  %.2f\n", name.c_str(), seconds * 1e9, seconds / peer->second);
    }

private:
    std::map<std::string, double> seconds_;
};

}  // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    benchmark::RegisterBenchmark("default_converter/32B/thread_current_converter", thread_current)
        ->MinTime(0.2);
    benchmark::RegisterBenchmark("default_converter/32B/clone_current_converter", clone_current)->MinTime(0.2);
    benchmark::RegisterBenchmark("default_converter/32B/ucnv_open_per_call", open_per_call)->MinTime(0.2);
    ratio_reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.print_ratios();
    benchmark::Shutdown();
    return 0;
}

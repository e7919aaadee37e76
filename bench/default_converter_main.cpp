// qxi18n_bench_internal: the ways to get a converter for the global locale's encoding, timed on
// short conversions. The library's accessors are internal, so this binary links the library's
// objects rather than the shared library.
#include "conversion/conversion_internal.hpp"
#include "locale/locale_context.hpp"

#include <fl/i18n/conversion.hpp>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

namespace {

using fl::i18n::detail::converter_ptr;

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
        const converter_ptr converter = fl::i18n::detail::clone_current_converter();
        convert(converter.get(), state);
    }
}

void open_per_call(benchmark::State& state)
{
    for (auto _ : state) {
        UErrorCode status = U_ZERO_ERROR;
        const converter_ptr converter(ucnv_open("UTF-8", &status));
        convert(converter.get(), state);
    }
}

// to_ustring(std::string) clones the default converter on every call; the same loop on the
// thread's own converter shows what the clone costs.
ustring through_thread_converter(const std::string& bytes)
{
    UConverter* converter = fl::i18n::detail::thread_current_converter();
    return fl::i18n::detail::convert_with_two_buffers<char16_t>(
        bytes.size(), [&](char16_t* buffer, unsigned long capacity) {
            return fl::i18n::detail::chunked_to_unicode(converter, buffer, capacity, bytes.data(), bytes.size());
        });
}

template <ustring (*Convert)(const std::string&)>
void default_to_ustring(benchmark::State& state, std::size_t size)
{
    std::string input;
    while (input.size() < size)
        input += text;
    input.resize(size);  // 16 and 1024 both end between characters
    if (Convert(input) != fl::i18n::utf8_to_ustring(input)) {
        state.SkipWithError("output differs from utf8_to_ustring");
        return;
    }
    for (auto _ : state) {
        ustring result = Convert(input);
        benchmark::DoNotOptimize(result.data());
        benchmark::ClobberMemory();
    }
}

ustring public_to_ustring(const std::string& bytes) { return fl::i18n::to_ustring(bytes); }

// Prints the usual table, then each group's times as ratios to the group's baseline.
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
        print_group("Default converter, 32 B of UTF-8: time per conversion and ratio to ucnv_open per call",
                    "default_converter/32B/", "ucnv_open_per_call");
        for (const char* size : {"16", "1024"})
            print_group(std::string("to_ustring(std::string), ") + size +
                            " B of UTF-8: ratio to the same loop on the thread's converter; the difference is the clone",
                        std::string("to_ustring_default/") + size + "/", "thread_current_converter");
    }

private:
    void print_group(const std::string& title, const std::string& prefix, const std::string& baseline) const
    {
        const auto peer = seconds_.find(prefix + baseline);
        if (peer == seconds_.end())
            return;
        std::printf("\n%s\n", title.c_str());
        for (auto it = seconds_.lower_bound(prefix); it != seconds_.end() && it->first.rfind(prefix, 0) == 0; ++it)
            std::printf("  %-58s %8.1f ns  %.2f  %+8.1f ns\n", it->first.c_str(), it->second * 1e9,
                        it->second / peer->second, (it->second - peer->second) * 1e9);
    }

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
    for (const std::size_t size : {16, 1024}) {
        const std::string prefix = "to_ustring_default/" + std::to_string(size) + "/";
        benchmark::RegisterBenchmark((prefix + "to_ustring").c_str(), default_to_ustring<public_to_ustring>, size)
            ->MinTime(0.2);
        benchmark::RegisterBenchmark((prefix + "thread_current_converter").c_str(),
                                     default_to_ustring<through_thread_converter>, size)
            ->MinTime(0.2);
    }
    ratio_reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.print_ratios();
    benchmark::Shutdown();
    return 0;
}

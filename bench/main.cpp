// qxi18n_bench: conversions, locales, encoding names, text, paths, charset detection, streaming, date-time text and time zones against ICU, Boost, glibc, utf8cpp, std::regex, std::filesystem, libuchardet.
#include "conversion_benchmarks.hpp"
#include "datetime_benchmarks.hpp"
#include "detection_benchmarks.hpp"
#include "encoding_names_benchmarks.hpp"
#include "filesystem_benchmarks.hpp"
#include "locale_benchmarks.hpp"
#include "streaming_benchmarks.hpp"
#include "text_benchmarks.hpp"
#include "timezone_benchmarks.hpp"

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <cstring>
#include <iostream>
#include <vector>

int main(int argc, char** argv)
{
    // Defaults that keep a full run near two and a half minutes; flags given on the command line
    // come later and win. Repetitions interleaved at random spread the load of other processes
    // evenly over the library and its peers, and the table takes the best of them.
    static char min_time[] = "--benchmark_min_time=0.1";
    static char repetitions[] = "--benchmark_repetitions=3";
    static char interleave[] = "--benchmark_enable_random_interleaving=true";
    std::vector<char*> args{argv[0], min_time, repetitions, interleave};
    bool default_malloc = false;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--default_malloc") == 0)
            default_malloc = true;
        else
            args.push_back(argv[i]);
    }
    int count = static_cast<int>(args.size());
    args.push_back(nullptr);

    // Big results would otherwise come from fresh mmap pages or from recycled heap depending on
    // the allocator's history, and the kernel's first-touch faults would swing 16 MiB timings by
    // a factor of two. Keeping all memory on the heap and never trimming it lets every
    // implementation reuse warm pages, so the timings measure conversion.
    if (!default_malloc) {
        mallopt(M_MMAP_MAX, 0);
        mallopt(M_TRIM_THRESHOLD, -1);
    }

    benchmark::Initialize(&count, args.data());
    if (benchmark::ReportUnrecognizedArguments(count, args.data())) {
        std::cerr << "qxi18n_bench also takes --default_malloc: keep glibc's mmap and trim settings\n";
        return 2;
    }

    qxbench::register_conversion_benchmarks();
    qxbench::register_locale_benchmarks();
    qxbench::register_encoding_name_benchmarks();
    qxbench::register_text_benchmarks();
    qxbench::register_filesystem_benchmarks();
    qxbench::register_detection_benchmarks();
    qxbench::register_streaming_benchmarks();
    qxbench::register_datetime_benchmarks();
    qxbench::register_timezone_benchmarks();
    qxbench::ratio_reporter reporter;
    for (auto family : {qxbench::conversion_family, qxbench::locale_family, qxbench::encoding_name_family,
                        qxbench::text_family, qxbench::filesystem_family, qxbench::detection_family,
                        qxbench::streaming_family, qxbench::datetime_family, qxbench::timezone_family})
        reporter.add(family());
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.print_tables(std::cout);
    benchmark::Shutdown();
    return 0;
}

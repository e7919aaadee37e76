// Registers the streaming-converter benchmarks and prints their table: the library and raw ICU
// run the same block loop on the same input, side by side.
#include "streaming_benchmarks.hpp"

#include "samples.hpp"

#include <fl/i18n/stream_codecvt.hpp>

#include <benchmark/benchmark.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace qxbench {
namespace {

constexpr std::size_t input_bytes = 1024 * 1024;
constexpr std::size_t block_bytes = 64 * 1024;
constexpr std::size_t pivot_units = 4096;
constexpr const char* prefix = "stream::";

struct ucnv_closer {
    void operator()(UConverter* c) const noexcept { ucnv_close(c); }
};
using converter_ptr = std::unique_ptr<UConverter, ucnv_closer>;

converter_ptr open(const char* encoding)
{
    UErrorCode status = U_ZERO_ERROR;
    converter_ptr cnv(ucnv_open(encoding, &status));
    if (U_FAILURE(status))
        throw std::runtime_error(std::string(encoding) + ": " + u_errorName(status));
    return cnv;
}

// true while output waits for room, as the library's converters answer.
bool more_output(UErrorCode status)
{
    if (status == U_BUFFER_OVERFLOW_ERROR)
        return true;
    if (U_FAILURE(status))
        throw std::runtime_error(u_errorName(status));
    return false;
}

// One conversion call of the block loop: (destination, its end, source, its end, flush) -> more.
template <class To, class From>
using step_function = std::function<bool(To**, To*, const From**, const From*, bool)>;

// Feeds `input` in blocks of 64 KiB into a destination of 64 KiB, the last block flushing;
// returns the units written and appends them to `kept` when it is given.
template <class To, class From>
std::size_t stream_all(const std::basic_string<From>& input, std::basic_string<To>& buffer,
                       const step_function<To, From>& step, std::basic_string<To>* kept)
{
    std::size_t written = 0;
    for (std::size_t begin = 0;; begin += block_bytes / sizeof(From)) {
        const std::size_t end = std::min(begin + block_bytes / sizeof(From), input.size());
        const From* next = input.data() + begin;
        for (bool more = true; more;) {
            To* target = buffer.data();
            more = step(&target, buffer.data() + buffer.size(), &next, input.data() + end, end == input.size());
            written += static_cast<std::size_t>(target - buffer.data());
            if (kept != nullptr)
                kept->append(buffer.data(), target);
        }
        if (end == input.size())
            return written;
    }
}

std::string to_utf8(const ustring& units)
{
    std::string out(units.size() * 3, '\0');
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    u_strToUTF8(out.data(), static_cast<int32_t>(out.size()), &length, units.data(),
                static_cast<int32_t>(units.size()), &status);
    more_output(status);
    out.resize(static_cast<std::size_t>(length));
    return out;
}

// Registers "stream::op/case/impl". `make` runs outside the timing loop and returns the step;
// the output is checked once against `expected`.
template <class To, class From, class Make>
void add(const std::string& op, const std::string& name, const char* impl, const std::basic_string<From>& input,
         const std::basic_string<To>& expected, Make make)
{
    register_row(prefix + op + "/" + name, impl, [&input, &expected, make](benchmark::State& state) {
        std::basic_string<To> buffer(block_bytes / sizeof(To), To());
        const step_function<To, From> step = make();
        std::basic_string<To> kept;
        stream_all(input, buffer, step, &kept);
        if (kept != expected) {
            state.SkipWithError("output differs from ICU's");
            return;
        }
        for (auto _ : state)
            benchmark::DoNotOptimize(stream_all<To, From>(input, buffer, step, nullptr));
        // The byte form of the text, about 1 MiB in every row, as in the table.
        state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(input_bytes));
    })->Unit(benchmark::kMicrosecond);
}

// Inputs live as long as the process: the benchmarks refer to them by reference.
struct streaming_case {
    std::string name;
    std::string encoding;
    sample text;  // bytes in `encoding`, and UTF-16
    std::string utf8;
};

const std::vector<streaming_case>& cases()
{
    static const std::vector<streaming_case> all = [] {
        std::vector<streaming_case> built;
        for (const text_source* t : {&utf8_texts()[1], &utf8_texts()[2], &codepage_texts()[0], &codepage_texts()[1]}) {
            const sample& s = sample_for(*t, input_bytes);
            const std::string name = std::string(t->icu_name) == "UTF-8" ? std::string("UTF-8 ") + t->label : t->label;
            built.push_back({name, t->icu_name, s, to_utf8(s.units)});
        }
        return built;
    }();
    return all;
}

// The library's converter for `encoding`, substituting as ICU's defaults do.
template <class Converter, class To, class From>
step_function<To, From> library_step(const char* encoding)
{
    auto cvt = std::make_shared<Converter>(encoding, true);
    return [cvt](To** d, To* de, const From** s, const From* se, bool flush) {
        return cvt->convert(d, de, s, se, flush);
    };
}

// Raw ucnv_toUnicode or ucnv_fromUnicode on one open converter, without offsets.
template <class To, class From>
using icu_stream_call = void (*)(UConverter*, To**, const To*, const From**, const From*, int32_t*, UBool,
                                 UErrorCode*);

template <class To, class From>
step_function<To, From> icu_step(const char* encoding, icu_stream_call<To, From> call)
{
    std::shared_ptr<UConverter> cnv = open(encoding);
    return [cnv, call](To** d, To* de, const From** s, const From* se, bool flush) {
        UErrorCode status = U_ZERO_ERROR;
        call(cnv.get(), d, de, s, se, nullptr, flush, &status);
        return more_output(status);
    };
}

void add_direct_rows(const streaming_case& c)
{
    using namespace fl::i18n;
    const char* e = c.encoding.c_str();
    const ustring& units = c.text.units;
    add("string_to_ustring", c.name, "qxi18n", c.text.bytes, units,
        [e] { return library_step<stream_codecvt_string_to_ustring, char16_t, char>(e); });
    add("string_to_ustring", c.name, "icu", c.text.bytes, units,
        [e] { return icu_step<char16_t, char>(e, ucnv_toUnicode); });
    add("ustring_to_string", c.name, "qxi18n", units, c.text.bytes,
        [e] { return library_step<stream_codecvt_ustring_to_string, char, char16_t>(e); });
    add("ustring_to_string", c.name, "icu", units, c.text.bytes,
        [e] { return icu_step<char, char16_t>(e, ucnv_fromUnicode); });
}

// Raw ucnv_convertEx between two open converters through a pivot kept between calls.
step_function<char, char> icu_pivoting(const char* target_name, const char* source_name)
{
    struct state {
        converter_ptr target, source;
        UChar pivot[pivot_units];
        UChar* pivot_source = pivot;
        UChar* pivot_target = pivot;
    };
    auto s = std::make_shared<state>();
    s->target = open(target_name);
    s->source = open(source_name);
    return [s](char** d, char* de, const char** src, const char* se, bool flush) {
        UErrorCode status = U_ZERO_ERROR;
        ucnv_convertEx(s->target.get(), s->source.get(), d, de, src, se, s->pivot, &s->pivot_source,
                       &s->pivot_target, s->pivot + pivot_units, false, flush, &status);
        return more_output(status);
    };
}

void add_multi_rows(const streaming_case& c)
{
    using namespace fl::i18n;
    const char* e = c.encoding.c_str();
    add("utf8string_to_string", c.name, "qxi18n", c.utf8, c.text.bytes,
        [e] { return library_step<stream_codecvt_utf8string_to_string, char, char>(e); });
    add("utf8string_to_string", c.name, "icu", c.utf8, c.text.bytes, [e] { return icu_pivoting(e, "UTF-8"); });
    add("string_to_utf8string", c.name, "qxi18n", c.text.bytes, c.utf8,
        [e] { return library_step<stream_codecvt_string_to_utf8string, char, char>(e); });
    add("string_to_utf8string", c.name, "icu", c.text.bytes, c.utf8, [e] { return icu_pivoting("UTF-8", e); });
}

bool is_streaming_row(const std::string& name)
{
    return name.rfind(prefix, 0) == 0;
}

int print_streaming_table(const cpu_run_table& table, std::ostream& out)
{
    char line[512];
    std::snprintf(line, sizeof line,
                  "\nStreaming rows: 1 MiB in 64 KiB blocks into a 64 KiB destination; qxi18n CPU time per\n"
                  "MiB of the byte form (best repetition), its throughput, and ratio = qxi18n / raw ICU in\n"
                  "the same loop.\n"
                  "Target: at most %.2f. ! marks a miss.\n\n",
                  icu_ratio_limit);
    out << line;
    const char* format = "%-30s %-18s %10s %10s %8s  %s\n";
    std::snprintf(line, sizeof line, format, "operation", "text", "qxi18n", "MB/s", "vs ICU ", "targets");
    out << line;
    int misses = 0;
    for (const std::string& row : table.rows()) {
        const std::size_t slash = row.rfind('/');
        const std::optional<double> ours = table.time_of(row, "qxi18n");
        const std::optional<double> icu = table.time_of(row, "icu");
        char ratio[16] = "- ";
        char speed[16] = "-";
        std::string verdict = ours ? "ok" : "no result";
        if (ours)
            std::snprintf(speed, sizeof speed, "%.0f", static_cast<double>(input_bytes) / *ours / 1e6);
        if (ours && icu) {
            const bool miss = *ours / *icu > icu_ratio_limit;
            std::snprintf(ratio, sizeof ratio, "%.2f%s", *ours / *icu, miss ? "!" : " ");
            if (miss) {
                verdict = "MISS ICU";
                ++misses;
            }
        }
        std::snprintf(line, sizeof line, format, row.substr(std::strlen(prefix), slash - std::strlen(prefix)).c_str(),
                      row.substr(slash + 1).c_str(), ours ? format_time(*ours).c_str() : "-", speed, ratio,
                      verdict.c_str());
        out << line;
    }
    out << "\n" << misses << " of " << table.size() << " streaming rows miss a target.\n";
    return misses;
}

}  // namespace

void register_streaming_benchmarks()
{
    for (const streaming_case& c : cases())
        if (c.encoding != "windows-1252")
            add_direct_rows(c);
    for (const streaming_case& c : cases())
        if (c.encoding != "UTF-8")
            add_multi_rows(c);
}

std::unique_ptr<table_family> streaming_family()
{
    return cpu_table_family(is_streaming_row, print_streaming_table);
}

}  // namespace qxbench

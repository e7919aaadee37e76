// Registers every conversion benchmark, the library and its peers side by side, and prints their ratio table.
#include "conversion_benchmarks.hpp"

#include "peers.hpp"
#include "samples.hpp"

#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace qxbench {
namespace {

// Checks the implementation once on the input (a wrong answer must not be timed), then times it.
// Throughput counts the byte-encoded form of the text in both directions, so that the two
// directions of one text and size read on the same scale.
template <class In, class Out, class Convert>
void measure(benchmark::State& state, const sample& input, const In& source, const Out& expected,
             Convert& convert)
{
    if (convert(source) != expected) {
        state.SkipWithError("output differs from the expected text");
        return;
    }
    for (auto _ : state) {
        Out result = convert(source);
        benchmark::DoNotOptimize(result.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(input.bytes.size()));
}

// Registers "op/text/size/impl". `make` opens whatever the implementation keeps between calls
// and returns the conversion; it runs outside the timing loop.
template <bool ToUtf16, class Make>
void add(const char* op, const text_source& text, const size_step& size, const char* impl, Make make)
{
    const std::string name = std::string(op) + "/" + text.label + "/" + size.label + "/" + impl;
    benchmark::RegisterBenchmark(name.c_str(), [&text, size, make](benchmark::State& state) {
        try {
            const sample& input = sample_for(text, size.bytes);
            auto convert = make(text);
            if constexpr (ToUtf16)
                measure(state, input, input.bytes, input.units, convert);
            else
                measure(state, input, input.units, input.bytes, convert);
        } catch (const std::exception& e) {
            state.SkipWithError(e.what());
        }
    });
}

const char* utf16() { return peer::iconv_codec::utf16_name(); }

void add_utf8_rows(const text_source& text, const size_step& size)
{
    constexpr const char* to = "utf8_to_ustring";
    add<true>(to, text, size, "qxi18n", [](const text_source&) {
        return [](const std::string& s) { return fl::i18n::utf8_to_ustring(s); };
    });
    add<true>(to, text, size, "icu", [](const text_source&) { return peer::icu_utf8_to_utf16; });
    add<true>(to, text, size, "iconv", [](const text_source&) {
        return [codec = peer::iconv_codec(utf16(), "UTF-8", 2)](const std::string& s) mutable {
            return codec.to_utf16(s);
        };
    });
    add<true>(to, text, size, "utf8cpp", [](const text_source&) { return peer::utf8cpp_utf8_to_utf16; });
}

void add_utf16_rows(const text_source& text, const size_step& size)
{
    constexpr const char* from = "ustring_to_utf8";
    add<false>(from, text, size, "qxi18n", [](const text_source&) {
        return [](const ustring& s) { return fl::i18n::ustring_to_utf8(s); };
    });
    add<false>(from, text, size, "icu", [](const text_source&) { return peer::icu_utf16_to_utf8; });
    add<false>(from, text, size, "iconv", [](const text_source&) {
        return [codec = peer::iconv_codec("UTF-8", utf16(), 3)](const ustring& s) mutable {
            return codec.from_utf16(s);
        };
    });
    add<false>(from, text, size, "utf8cpp", [](const text_source&) { return peer::utf8cpp_utf16_to_utf8; });
}

// The converters are built with substitution on, so that they and raw ICU run the same call-backs.
void add_codepage_to_rows(const text_source& text, const size_step& size)
{
    constexpr const char* to = "codecvt_string_to_ustring";
    add<true>(to, text, size, "qxi18n", [](const text_source& t) {
        return [cvt = fl::i18n::codecvt_string_to_ustring(t.icu_name, true)](const std::string& s) {
            return fl::i18n::to_ustring(s, cvt);
        };
    });
    add<true>(to, text, size, "icu", [](const text_source& t) {
        return [cnv = peer::icu_codepage(t.icu_name)](const std::string& s) { return cnv.to_utf16(s); };
    });
    add<true>(to, text, size, "iconv", [](const text_source& t) {
        return [codec = peer::iconv_codec(utf16(), t.iconv_name, 2)](const std::string& s) mutable {
            return codec.to_utf16(s);
        };
    });
}

void add_codepage_from_rows(const text_source& text, const size_step& size)
{
    constexpr const char* from = "codecvt_ustring_to_string";
    add<false>(from, text, size, "qxi18n", [](const text_source& t) {
        return [cvt = fl::i18n::codecvt_ustring_to_string(t.icu_name, true)](const ustring& s) {
            return fl::i18n::to_string(s, cvt);
        };
    });
    add<false>(from, text, size, "icu", [](const text_source& t) {
        return [cnv = peer::icu_codepage(t.icu_name)](const ustring& s) { return cnv.from_utf16(s); };
    });
    // One output byte per input byte is the worst case of both code pages (Shift_JIS: 2 per unit).
    add<false>(from, text, size, "iconv", [](const text_source& t) {
        return [codec = peer::iconv_codec(t.iconv_name, utf16(), 1)](const ustring& s) mutable {
            return codec.from_utf16(s);
        };
    });
}

// --- the table ---

struct peer_column {
    const char* key;    // last component of a benchmark name
    const char* title;
};

// Titles end in a space to sit over the digits of cells that end in a mark or a space.
constexpr peer_column peers[] = {{"icu", "vs ICU "}, {"iconv", "vs iconv "}, {"utf8cpp", "vs utf8cpp "}};

// Splits "op/text/size/impl" at its last '/'.
std::pair<std::string, std::string> split_name(const std::string& name)
{
    const std::size_t slash = name.rfind('/');
    if (slash == std::string::npos)
        return {name, ""};
    return {name.substr(0, slash), name.substr(slash + 1)};
}

std::string size_label_of(const std::string& row)
{
    return row.substr(row.rfind('/') + 1);
}

// The conversion rows on wall time. The family takes every benchmark no other family owns.
class conversion_table : public table_family {
public:
    bool owns(const std::string&) const override { return true; }
    std::vector<Run> record(const std::vector<Run>& runs) override;
    bool empty() const override { return !ran_; }
    /// One row per operation, text and size: our best time per call and its ratio to each
    /// peer (ours / peer, below 1 means we are faster), flagging rows that miss a target.
    int print(std::ostream& out) const override;

private:
    std::map<std::string, std::vector<double>> seconds_;  // per call, one entry per repetition
    std::map<std::string, int64_t> rows_;                 // "op/text/size" -> registration order
    bool ran_ = false;
};

std::vector<table_family::Run> conversion_table::record(const std::vector<Run>& runs)
{
    ran_ = true;
    std::vector<Run> shown;
    for (const Run& run : runs) {
        const bool repeated = run.repetitions > 1;
        if (run.run_type == Run::RT_Iteration && !run.error_occurred && run.iterations > 0) {
            const std::string& name = run.run_name.function_name;
            seconds_[name].push_back(run.real_accumulated_time / static_cast<double>(run.iterations));
            // Families are numbered in registration order, which random interleaving does not keep.
            const auto [row, added] = rows_.emplace(split_name(name).first, run.family_index);
            if (!added)
                row->second = std::min(row->second, run.family_index);
        }
        const bool is_median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
        if (run.error_occurred || !repeated || is_median)
            shown.push_back(run);
    }
    return shown;
}

int conversion_table::print(std::ostream& out) const
{
    auto time_of = [this](const std::string& row, const char* impl) -> std::optional<double> {
        auto found = seconds_.find(row + "/" + impl);
        if (found == seconds_.end())
            return std::nullopt;
        return best(found->second);
    };

    char line[256];
    std::snprintf(line, sizeof line,
                  "\nqxi18n time per call (best repetition) and ratio = qxi18n / peer; below 1 qxi18n is faster.\n"
                  "Targets: vs ICU <= %.2f at every size; vs iconv <= %.2f from 1KiB up; ! marks a miss.\n\n",
                  icu_ratio_limit, iconv_ratio_limit);
    out << line;
    std::snprintf(line, sizeof line, "%-27s %-13s %-6s %10s %8s %10s %12s  %s\n", "operation", "text",
                  "size", "qxi18n", peers[0].title, peers[1].title, peers[2].title, "targets");
    out << line;


    int misses = 0;
    for (const std::string& row : in_registration_order(rows_)) {
        const std::string label = size_label_of(row);
        const std::string head = row.substr(0, row.size() - label.size() - 1);
        const std::size_t slash = head.find('/');
        const std::optional<double> ours = time_of(row, "qxi18n");

        std::string ratios[3];
        std::string verdict;
        for (std::size_t i = 0; i < 3; ++i) {
            const std::optional<double> theirs = time_of(row, peers[i].key);
            if (!ours || !theirs) {
                ratios[i] = "- ";
                continue;
            }
            const double ratio = *ours / *theirs;
            const bool icu_miss = i == 0 && ratio > icu_ratio_limit;
            const bool iconv_miss =
                i == 1 && size_of_label(label) >= iconv_target_bytes && ratio > iconv_ratio_limit;
            // The mark tells a miss of 1.104 from a pass of 1.096, which print alike.
            char cell[16];
            std::snprintf(cell, sizeof cell, "%.2f%s", ratio, icu_miss || iconv_miss ? "!" : " ");
            ratios[i] = cell;
            if (icu_miss || iconv_miss)
                verdict += std::string(verdict.empty() ? "MISS " : ", ") + (i == 0 ? "ICU" : "iconv");
        }
        if (!ours)
            verdict = "no result";
        else if (verdict.empty())
            verdict = "ok";
        else
            ++misses;

        std::snprintf(line, sizeof line, "%-27s %-13s %-6s %10s %8s %10s %12s  %s\n",
                      head.substr(0, slash).c_str(), head.substr(slash + 1).c_str(), label.c_str(),
                      ours ? format_time(*ours).c_str() : "-", ratios[0].c_str(),
                      ratios[1].c_str(), ratios[2].c_str(), verdict.c_str());
        out << line;
    }
    out << "\n" << misses << " of " << rows_.size() << " rows miss a target.\n";
    return misses;
}

}  // namespace

void register_conversion_benchmarks()
{
    // Each peer runs right after the library on the same input, so that a change of machine
    // load between the two stays small.
    for (const text_source& text : utf8_texts())
        for (const size_step& size : sizes)
            add_utf8_rows(text, size);
    for (const text_source& text : utf8_texts())
        for (const size_step& size : sizes)
            add_utf16_rows(text, size);
    for (const text_source& text : codepage_texts())
        for (const size_step& size : sizes)
            add_codepage_to_rows(text, size);
    for (const text_source& text : codepage_texts())
        for (const size_step& size : sizes)
            add_codepage_from_rows(text, size);
}

std::unique_ptr<table_family> conversion_family()
{
    return std::make_unique<conversion_table>();
}

}  // namespace qxbench

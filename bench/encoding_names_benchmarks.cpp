// Registers the encoding-name benchmarks and prints their table: the library and raw ICU or its
// own UTF-8 entry point side by side.
#include "encoding_names_benchmarks.hpp"

#include "allocation_counter.hpp"
#include "samples.hpp"

#include <fl/i18n/conversion.hpp>
#include <fl/i18n/encoding_names.hpp>

#include <unicode/ucnv.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace qxbench {
namespace {

constexpr const char* name_op = "get_standard_encoding_name";
constexpr const char* default_op = "to_ustring(default)";

struct name_case {
    const char* name;
    const char* expected;  // the library's answer, checked before timing
};

// The first four are listed in the library's table (ICU's "ibm-964_P110-1999" as an alias of
// EUC-TW); ICU is asked about the last three, which it resolves to listed encodings or not.
const name_case name_cases[] = {
    {"UTF-8", "UTF-8"},
    {"Cp1252", "windows-1252"},
    {"eucjp", "EUC-JP"},
    {"ibm-964_P110-1999", "EUC-TW"},
    {"latin1", "ISO-8859-1"},
    {"ibm-5348_P100-1997", "windows-1252"},
    {"ISO-2022-JP", "ISO-2022-JP"},
};

// Raw ICU's cheapest standard name: its alias table searched for a MIME, IANA or WINDOWS name,
// without opening a converter and without the library's table.
const char* icu_alias_standard_name(const char* name)
{
    for (const char* standard : {"MIME", "IANA", "WINDOWS"}) {
        UErrorCode status = U_ZERO_ERROR;
        const char* found = ucnv_getStandardName(name, standard, &status);
        if (U_SUCCESS(status) && found != nullptr)
            return found;
    }
    return name;
}

void add_name_rows(const name_case& c)
{
    const std::string row = std::string(name_op) + "/" + c.name;
    benchmark::RegisterBenchmark((row + "/qxi18n").c_str(), [&c](benchmark::State& state) {
        const std::string name = c.name;
        if (fl::i18n::get_standard_encoding_name(name) != c.expected) {
            state.SkipWithError("unexpected standard name");
            return;
        }
        const std::uint64_t before = allocations_on_this_thread();
        for (auto _ : state) {
            std::string standard = fl::i18n::get_standard_encoding_name(name);
            benchmark::DoNotOptimize(standard.data());
        }
        count_allocations(state, before);
    });
    benchmark::RegisterBenchmark((row + "/icu").c_str(), [&c](benchmark::State& state) {
        const std::uint64_t before = allocations_on_this_thread();
        for (auto _ : state)
            benchmark::DoNotOptimize(icu_alias_standard_name(c.name));
        count_allocations(state, before);
    });
}

// The default encoding is UTF-8 until start-up, so utf8_to_ustring does the same conversion
// without a converter: the difference is the clone of the default converter and ICU's loop.
void add_default_rows(const size_step& size)
{
    const std::string row = std::string(default_op) + "/latin/" + size.label;
    const std::size_t bytes = size.bytes;
    benchmark::RegisterBenchmark((row + "/qxi18n").c_str(), [bytes](benchmark::State& state) {
        time_checked_conversion(state, sample_for(utf8_texts()[1], bytes),
                     [](const std::string& s) { return fl::i18n::to_ustring(s); });
    });
    benchmark::RegisterBenchmark((row + "/utf8_to_ustring").c_str(), [bytes](benchmark::State& state) {
        time_checked_conversion(state, sample_for(utf8_texts()[1], bytes),
                     [](const std::string& s) { return fl::i18n::utf8_to_ustring(s); });
    });
}

bool is_encoding_row(const std::string& name)
{
    return name.rfind(name_op, 0) == 0 || name.rfind(default_op, 0) == 0;
}

// The encoding-name rows on wall time, with our operator new calls per call; they have no
// target, so the table reports no misses.
class encoding_name_table : public table_family {
public:
    bool owns(const std::string& name) const override { return is_encoding_row(name); }
    std::vector<Run> record(const std::vector<Run>& runs) override;
    bool empty() const override { return rows_.empty(); }
    int print(std::ostream& out) const override;

private:
    struct result {
        std::vector<double> seconds;  // per call, one entry per repetition
        double allocations = -1;      // operator new calls per call; -1 when not counted
    };

    std::map<std::string, result> results_;  // "op/case/impl"
    std::map<std::string, int64_t> rows_;    // "op/case" -> registration order
};

std::vector<table_family::Run> encoding_name_table::record(const std::vector<Run>& runs)
{
    std::vector<Run> shown;
    for (const Run& run : runs) {
        const bool timed = run.run_type == Run::RT_Iteration && !run.error_occurred && run.iterations > 0;
        if (timed) {
            const auto allocs = run.counters.find("allocs");
            result& entry = results_[run.run_name.function_name];
            entry.seconds.push_back(run.real_accumulated_time / static_cast<double>(run.iterations));
            entry.allocations = allocs == run.counters.end() ? -1 : allocs->second.value;
            const std::string row = split_impl(run.run_name.function_name).first;
            rows_.emplace(row, run.family_index);
            rows_[row] = std::min(rows_[row], run.family_index);
        }
        if (run.error_occurred || run.repetitions <= 1 || run.aggregate_name == "median")
            shown.push_back(run);
    }
    return shown;
}

int encoding_name_table::print(std::ostream& out) const
{
    auto time_of = [this](const std::string& row, const char* impl) -> std::optional<double> {
        const auto found = results_.find(row + "/" + impl);
        if (found == results_.end())
            return std::nullopt;
        return best(found->second.seconds);
    };
    char line[256];
    out << "\nEncoding-name rows: qxi18n time per call (best repetition), its operator new calls per call,\n"
           "and ratio = qxi18n / peer. Peers: ucnv_getStandardName (ICU's alias table, no converter\n"
           "opened) and utf8_to_ustring (the same UTF-8 text without a converter).\n\n";
    const char* format = "%-27s %-24s %10s %7s %10s %8s  %s\n";
    std::snprintf(line, sizeof line, format, "operation", "case", "qxi18n", "allocs", "peer", "ratio", "peer");
    out << line;

    std::vector<std::pair<int64_t, std::string>> ordered;
    for (const auto& [row, order] : rows_)
        ordered.emplace_back(order, row);
    std::sort(ordered.begin(), ordered.end());
    for (const auto& [order, row] : ordered) {
        const std::size_t slash = row.find('/');
        const char* peer = row.rfind(name_op, 0) == 0 ? "icu" : "utf8_to_ustring";
        const std::optional<double> ours = time_of(row, "qxi18n");
        const std::optional<double> theirs = time_of(row, peer);
        const auto mine = results_.find(row + "/qxi18n");
        char allocs[16] = "-";
        if (mine != results_.end() && mine->second.allocations >= 0)
            std::snprintf(allocs, sizeof allocs, "%.1f", mine->second.allocations);
        char ratio[16] = "-";
        if (ours && theirs)
            std::snprintf(ratio, sizeof ratio, "%.2f", *ours / *theirs);
        std::snprintf(line, sizeof line, format, row.substr(0, slash).c_str(), row.substr(slash + 1).c_str(),
                      ours ? format_time(*ours).c_str() : "-", allocs, theirs ? format_time(*theirs).c_str() : "-",
                      ratio, peer);
        out << line;
    }
    return 0;
}

}  // namespace

void register_encoding_name_benchmarks()
{
    for (const name_case& c : name_cases)
        add_name_rows(c);
    for (const size_step& size : sizes)
        if (size.bytes <= 1024)
            add_default_rows(size);
}

std::unique_ptr<table_family> encoding_name_family()
{
    return std::make_unique<encoding_name_table>();
}

}  // namespace qxbench

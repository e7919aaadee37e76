// The ratio table printed after the benchmarks: our time per call against each peer's.
#include "ratio_reporter.hpp"

#include "samples.hpp"

#include <algorithm>
#include <cstdio>
#include <optional>

namespace qxbench {
namespace {

struct peer_column {
    const char* key;    // last component of a benchmark name
    const char* title;
};

// Titles end in a space to sit over the digits of cells that end in a mark or a space.
constexpr peer_column peers[] = {{"icu", "vs ICU "}, {"iconv", "vs iconv "}, {"utf8cpp", "vs utf8cpp "}};

}  // namespace

// Another process on a shared machine can only slow a repetition down, never speed it up, so
// the fastest repetition is the one closest to the code's own cost.
double best(const std::vector<double>& values)
{
    return *std::min_element(values.begin(), values.end());
}

std::string format_time(double seconds)
{
    char text[32];
    if (seconds < 1e-6)
        std::snprintf(text, sizeof text, "%.1f ns", seconds * 1e9);
    else if (seconds < 1e-3)
        std::snprintf(text, sizeof text, "%.2f us", seconds * 1e6);
    else
        std::snprintf(text, sizeof text, "%.2f ms", seconds * 1e3);
    return text;
}

namespace {

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

}  // namespace

ratio_reporter::ratio_reporter() : ConsoleReporter(OO_Tabular) {}

void ratio_reporter::ReportRuns(const std::vector<Run>& runs)
{
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
    if (!shown.empty())
        ConsoleReporter::ReportRuns(shown);
}

int ratio_reporter::print_table(std::ostream& out) const
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

std::vector<std::string> in_registration_order(const std::map<std::string, int64_t>& rows)
{
    std::vector<std::pair<int64_t, std::string>> ordered;
    for (const auto& [row, order] : rows)
        ordered.emplace_back(order, row);
    std::sort(ordered.begin(), ordered.end());
    std::vector<std::string> names;
    for (auto& entry : ordered)
        names.push_back(std::move(entry.second));
    return names;
}

std::pair<std::string, std::string> split_impl(const std::string& name)
{
    const std::size_t slash = name.rfind('/');
    return {name.substr(0, slash), name.substr(slash + 1)};
}

std::vector<benchmark::BenchmarkReporter::Run> cpu_run_table::record(
    const std::vector<benchmark::BenchmarkReporter::Run>& runs)
{
    using Run = benchmark::BenchmarkReporter::Run;
    std::vector<Run> shown;
    for (const Run& run : runs) {
        if (run.run_type == Run::RT_Iteration && !run.error_occurred && run.iterations > 0) {
            result& entry = results_[run.run_name.function_name];
            entry.seconds.push_back(run.cpu_accumulated_time / static_cast<double>(run.iterations));
            if (const auto items = run.counters.find("items"); items != run.counters.end())
                entry.items = items->second.value;
            if (const auto allocs = run.counters.find("allocs"); allocs != run.counters.end())
                entry.allocations = entry.allocations < 0 ? allocs->second.value
                                                          : std::min(entry.allocations, allocs->second.value);
            if (const auto limit = run.counters.find("alloc_limit"); limit != run.counters.end())
                entry.allocation_limit = limit->second.value;
            const auto [row, added] = rows_.emplace(split_impl(run.run_name.function_name).first, run.family_index);
            if (!added)
                row->second = std::min(row->second, run.family_index);
        }
        if (run.error_occurred || run.repetitions <= 1 || run.aggregate_name == "median")
            shown.push_back(run);
    }
    return shown;
}

const cpu_run_table::result* cpu_run_table::find(const std::string& row, const char* impl) const
{
    const auto found = results_.find(row + "/" + impl);
    return found == results_.end() ? nullptr : &found->second;
}

std::optional<double> cpu_run_table::time_of(const std::string& row, const char* impl) const
{
    const result* found = find(row, impl);
    if (found == nullptr)
        return std::nullopt;
    return best(found->seconds);
}

}  // namespace qxbench

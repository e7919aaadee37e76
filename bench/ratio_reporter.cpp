// The console reporter of the benchmarks, the helpers their tables share and the CPU-time table.
#include "ratio_reporter.hpp"

#include <algorithm>
#include <exception>
#include <cstdio>
#include <optional>
#include <utility>

namespace qxbench {

allocation_cells allocation_cells_of(const cpu_run_table::result* mine, int precision)
{
    allocation_cells cells;
    if (mine == nullptr)
        return cells;
    if (mine->allocations >= 0) {
        cells.over = mine->allocation_limit >= 0 && mine->allocations > mine->allocation_limit + 0.01;
        std::snprintf(cells.allocs, sizeof cells.allocs, "%.*f%s", precision, mine->allocations, cells.over ? "!" : "");
    }
    if (mine->allocation_limit >= 0)
        std::snprintf(cells.limit, sizeof cells.limit, "%.0f", mine->allocation_limit);
    return cells;
}

std::string verdict_of(bool ran, bool slow, const char* slow_label, bool allocates, bool targeted)
{
    if (!ran)
        return "no result";
    if (!slow && !allocates)
        return targeted ? "ok" : "ok, ratios informational";
    return std::string("MISS ") + (slow ? slow_label : "") + (slow && allocates ? ", " : "") +
           (allocates ? "allocations" : "");
}

benchmark::internal::Benchmark* register_row(const std::string& row, const char* impl,
                                             std::function<void(benchmark::State&)> body)
{
    const std::string name = row + "/" + impl;
    return benchmark::RegisterBenchmark(name.c_str(), [body = std::move(body)](benchmark::State& state) {
        try {
            body(state);
        } catch (const std::exception& e) {
            state.SkipWithError(e.what());
        }
    });
}

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

namespace {

class cpu_family : public table_family {
public:
    cpu_family(row_test test, table_printer printer) : owns_(test), print_(printer) {}

    bool owns(const std::string& name) const override { return owns_(name); }
    std::vector<Run> record(const std::vector<Run>& runs) override { return table_.record(runs); }
    bool empty() const override { return table_.empty(); }
    int print(std::ostream& out) const override { return print_(table_, out); }

private:
    row_test owns_;
    table_printer print_;
    cpu_run_table table_;
};

}  // namespace

std::unique_ptr<table_family> cpu_table_family(row_test owns, table_printer print)
{
    return std::make_unique<cpu_family>(owns, print);
}

ratio_reporter::ratio_reporter() : ConsoleReporter(OO_Tabular) {}

void ratio_reporter::add(std::unique_ptr<table_family> family)
{
    families_.push_back(std::move(family));
}

void ratio_reporter::ReportRuns(const std::vector<Run>& runs)
{
    if (runs.empty())
        return;
    const std::string& name = runs.front().run_name.function_name;
    for (auto family = families_.rbegin(); family != families_.rend(); ++family) {
        if (!(*family)->owns(name))
            continue;
        const std::vector<Run> shown = (*family)->record(runs);
        if (!shown.empty())
            ConsoleReporter::ReportRuns(shown);
        return;
    }
}

void ratio_reporter::Finalize()
{
    for (const auto& family : families_) {
        const std::vector<Run> held = family->take_held();
        if (!held.empty())
            ConsoleReporter::ReportRuns(held);
    }
    ConsoleReporter::Finalize();
}

int ratio_reporter::print_tables(std::ostream& out) const
{
    int misses = 0;
    for (const auto& family : families_)
        if (!family->empty())
            misses += family->print(out);
    return misses;
}

}  // namespace qxbench

// Console reporter that gives each benchmark's runs to its table family and ends with the families' tables.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace qxbench {

/// Targets of the library against its peers, as ratios of our time to theirs.
inline constexpr double icu_ratio_limit = 1.10;       // at every size
inline constexpr double iconv_ratio_limit = 0.5;      // from iconv_target_bytes up
inline constexpr std::size_t iconv_target_bytes = 1024;

/// The fastest of a benchmark's repetitions: the one closest to the code's own cost.
double best(const std::vector<double>& values);
/// A time per call as "12.3 ns", "4.56 us" or "7.89 ms".
std::string format_time(double seconds);

/// Row names in the order their benchmarks were registered.
std::vector<std::string> in_registration_order(const std::map<std::string, int64_t>& rows);

/// Registers the benchmark "row/impl"; an exception from `body` skips it with the message.
benchmark::internal::Benchmark* register_row(const std::string& row, const char* impl, std::function<void(benchmark::State&)> body);

/// "op/case/impl" split at its last '/' into the row and the implementation.
std::pair<std::string, std::string> split_impl(const std::string& name);

/// The runs of one table timed on CPU time: on a shared machine the wall clock also counts the
/// time other processes hold the core, which swings ratios of calls under a microsecond by a third.
class cpu_run_table {
public:
    struct result {
        std::vector<double> seconds;   // per call, one entry per repetition
        double items = 1;              // units of work per call (names of a listing), else 1
        double allocations = -1;       // operator new calls per item; -1 when not counted
        double allocation_limit = -1;  // most calls the row may make; -1 when it has no target
    };

    /// Keeps every measured repetition with its counters ("items", "allocs", "alloc_limit") and
    /// returns the runs the console shows: errors, single runs and medians.
    std::vector<benchmark::BenchmarkReporter::Run> record(const std::vector<benchmark::BenchmarkReporter::Run>& runs);
    /// The best time per call of "row/impl", if it ran.
    std::optional<double> time_of(const std::string& row, const char* impl) const;
    /// "row/impl" if it ran, else null.
    const result* find(const std::string& row, const char* impl) const;
    /// Row names in registration order.
    std::vector<std::string> rows() const { return in_registration_order(rows_); }
    bool empty() const { return rows_.empty(); }
    std::size_t size() const { return rows_.size(); }

private:
    std::map<std::string, result> results_;  // "op/case/impl"
    std::map<std::string, int64_t> rows_;    // "op/case" -> registration order
};

/// The allocation cells of a table row: operator new calls per item ("!" past the row's limit,
/// `precision` decimals) and the limit, "-" where not counted; `over` tells a miss.
struct allocation_cells {
    char allocs[16] = "-";
    char limit[16] = "-";
    bool over = false;
};
allocation_cells allocation_cells_of(const cpu_run_table::result* mine, int precision);

/// "ok" (or `informational` when the row has no target), "MISS <slow_label>, allocations" for
/// what missed, or "no result" when the library did not run.
std::string verdict_of(bool ran, bool slow, const char* slow_label, bool allocates, bool targeted);

/// The benchmarks of one family and the table printed after the run from their times.
class table_family {
public:
    using Run = benchmark::BenchmarkReporter::Run;

    virtual ~table_family() = default;
    /// Whether the benchmark of this name belongs to the family.
    virtual bool owns(const std::string& name) const = 0;
    /// Keeps the times of one benchmark's runs and returns the runs the console shows now.
    virtual std::vector<Run> record(const std::vector<Run>& runs) = 0;
    /// Runs held back from the console until every benchmark has run; the family forgets them.
    virtual std::vector<Run> take_held() { return {}; }
    /// Whether no benchmark of the family ran, so that it has no table.
    virtual bool empty() const = 0;
    /// Prints the table and returns the number of rows that miss a target.
    virtual int print(std::ostream& out) const = 0;
};

using row_test = bool (*)(const std::string& name);
using table_printer = int (*)(const cpu_run_table& table, std::ostream& out);

/// The family of the benchmarks `owns` accepts, timed in a cpu_run_table and printed by `print`.
std::unique_ptr<table_family> cpu_table_family(row_test owns, table_printer print);

/// Passes the per-benchmark lines to the console (only the median when repeated) and gives the
/// runs of each benchmark to the family that owns it.
class ratio_reporter : public benchmark::ConsoleReporter {
public:
    ratio_reporter();

    /// Adds a family; a family added later is asked first whether it owns a benchmark, so the
    /// first one added may own every name.
    void add(std::unique_ptr<table_family> family);

    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

    /// The table of every family that ran, in the order the families were added. Returns the
    /// number of rows that miss a target.
    int print_tables(std::ostream& out) const;

private:
    std::vector<std::unique_ptr<table_family>> families_;
};

}  // namespace qxbench

// Console reporter that keeps every measured time and ends the run with a table of ratios.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <map>
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

/// Passes the per-benchmark lines to the console (only the median when repeated) and records
/// the real time per call of every run, keyed by benchmark name "op/text/size/implementation".
/// Row names in the order their benchmarks were registered.
std::vector<std::string> in_registration_order(const std::map<std::string, int64_t>& rows);

class ratio_reporter : public benchmark::ConsoleReporter {
public:
    ratio_reporter();

    void ReportRuns(const std::vector<Run>& runs) override;

    /// One row per operation, text and size: our best time per call and its ratio to each
    /// peer (ours / peer, below 1 means we are faster), flagging rows that miss a target.
    /// Returns the number of rows that miss one.
    int print_table(std::ostream& out) const;

private:
    std::map<std::string, std::vector<double>> seconds_;  // per call, one entry per repetition
    std::map<std::string, int64_t> rows_;                 // "op/text/size" -> registration order
};

}  // namespace qxbench

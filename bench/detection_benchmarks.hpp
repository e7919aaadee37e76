// The charset-detection benchmarks: detect_charset against raw ICU ucsdet and libuchardet.
#pragma once

#include "filesystem_benchmarks.hpp"

#include <ostream>
#include <vector>

namespace qxbench {

/// Registers "detect/input/size/impl", the library first in each row: ASCII and UTF-8 text of
/// 1 KiB, 64 KiB and 1 MiB, and the labelled corpus (every file once per call). Peers: raw ICU
/// (ucsdet_open, setText, detectAll, getName of the top match, close) and libuchardet (new,
/// handle_data, data_end, get_charset, delete), both without a fast path of their own.
void register_detection_benchmarks();

/// The tables of filesystem_ratio_reporter, then the detection rows with their throughput, and
/// the accuracy of the library and of libuchardet per encoding of the corpus.
class detection_ratio_reporter : public filesystem_ratio_reporter {
public:
    /// Detection runs go to the console at once and are kept for the table; the others pass on.
    void ReportRuns(const std::vector<Run>& runs) override;

    /// The earlier tables, then the detection and accuracy tables when a detection row ran.
    /// Returns the number of rows that miss a target.
    int print_tables(std::ostream& out) const;

private:
    int print_detection_table(std::ostream& out) const;

    cpu_run_table table_;
};

}  // namespace qxbench

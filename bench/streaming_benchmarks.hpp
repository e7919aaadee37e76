// The streaming-converter benchmarks: the stream_codecvt classes against raw ICU streaming loops.
#pragma once

#include "detection_benchmarks.hpp"

#include <ostream>
#include <vector>

namespace qxbench {

/// Registers "stream::op/text/impl", the library first in each row: 1 MiB of text fed in blocks
/// of 64 KiB, each converted into a 64 KiB destination until the converter has no more, the
/// last block flushing. stream_codecvt_string_to_ustring and stream_codecvt_ustring_to_string on
/// UTF-8 and Shift_JIS (peer: ucnv_toUnicode / ucnv_fromUnicode in the same loop), and the two
/// multi-streaming converters between UTF-8 and windows-1252 or Shift_JIS (peer: ucnv_convertEx
/// with a pivot of the same 4096 units). Each output is checked against ICU before it is timed.
void register_streaming_benchmarks();

/// The tables of detection_ratio_reporter, then one of the streaming rows with their throughput.
class streaming_ratio_reporter : public detection_ratio_reporter {
public:
    /// Streaming runs go to the console at once and are kept for the table; the others pass on.
    void ReportRuns(const std::vector<Run>& runs) override;

    /// The earlier tables, then the streaming table when one of its rows ran. Returns the number
    /// of rows that miss a target.
    int print_tables(std::ostream& out) const;

private:
    int print_streaming_table(std::ostream& out) const;

    cpu_run_table table_;
};

}  // namespace qxbench

// The text-engine benchmarks: transforms, comparison, search and pattern matching against raw ICU.
#pragma once

#include "encoding_names_benchmarks.hpp"

#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace qxbench {

/// Registers "op/text/size/impl" on Latin, Greek and CJK text of 16, 1024 and 65536 UTF-16 units:
/// do_transform_impl with to_upper, to_nfc, to_nfd and to_no_diacritics, compare with
/// case_insensitive and normalized_case_insensitive, find with case_insensitive (peers: the raw
/// ICU calls doing the same work), and pattern_match::match on a wildcard and a character-class
/// pattern (peers: uregex and std::wregex); the library first in each row.
void register_text_benchmarks();

/// The tables of encoding_ratio_reporter, followed by one of the text rows with an allocation
/// column, since the text rows have their own targets.
class text_ratio_reporter : public encoding_ratio_reporter {
public:
    /// Text runs go to the console at once and are kept for the table; the others pass on.
    void ReportRuns(const std::vector<Run>& runs) override;

    /// The earlier tables, then the text table when one of its rows ran. Returns the number of
    /// rows that miss a target.
    int print_tables(std::ostream& out) const;

private:
    int print_text_table(std::ostream& out) const;

    cpu_run_table table_;
};

}  // namespace qxbench

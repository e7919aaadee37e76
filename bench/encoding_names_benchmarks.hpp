// The encoding-name and default-encoding benchmarks: get_standard_encoding_name against raw ICU,
// to_ustring in the default encoding against utf8_to_ustring.
#pragma once

#include "locale_benchmarks.hpp"

#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace qxbench {

/// Registers "op/case/impl": get_standard_encoding_name on names the library lists and on names
/// only ICU knows (peer: ucnv_getStandardName), and to_ustring(std::string) in the default
/// encoding at 16 B and 1 KiB (peer: utf8_to_ustring); the library first in each row.
void register_encoding_name_benchmarks();

/// The tables of locale_ratio_reporter, followed by one of the encoding-name rows.
class encoding_ratio_reporter : public locale_ratio_reporter {
public:
    /// Encoding-name runs go to the console at once and are kept for the table; the others pass on.
    void ReportRuns(const std::vector<Run>& runs) override;

    /// The conversion and locale tables, then the encoding-name table when one of its rows ran.
    /// Returns the number of rows that miss a target.
    int print_tables(std::ostream& out) const;

private:
    struct result {
        std::vector<double> seconds;  // per call, one entry per repetition
        double allocations = -1;      // operator new calls per call; -1 when not counted
    };

    std::map<std::string, result> results_;  // "op/case/impl"
    std::map<std::string, int64_t> rows_;    // "op/case" -> registration order
};

}  // namespace qxbench

// The locale benchmarks: createLocale, QxLocale::global and the global locale's default converter.
#pragma once

#include "ratio_reporter.hpp"

#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace qxbench {

/// Registers "op/case/impl" for createLocale on groups of names (peers: ICU, glibc newlocale),
/// QxLocale::global (peer: a bare mutex) and a short conversion through the default converter
/// (peer: raw ICU); the library first in each row.
void register_locale_benchmarks();

/// The conversion table of ratio_reporter, followed by a table of the locale rows, whose peers,
/// targets and allocation counts are not those of the conversions.
class locale_ratio_reporter : public ratio_reporter {
public:
    /// Locale runs are held back and shown together by Finalize, in registration order: their
    /// counters differ from the conversions', and interleaved they would repeat the header often.
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

    /// The conversion table when a conversion benchmark ran, then the locale table when a locale
    /// benchmark ran. Returns the number of rows that miss a target.
    int print_tables(std::ostream& out) const;

private:
    struct result {
        std::vector<double> seconds;  // per call, one entry per repetition
        double allocations = -1;      // operator new calls per call; -1 when not counted
        double failing = 0;           // names of the group that the implementation refuses
    };

    int print_locale_table(std::ostream& out) const;

    std::map<std::string, result> results_;  // "op/case/impl"
    std::map<std::string, int64_t> rows_;    // "op/case" -> registration order
    std::vector<Run> held_;                  // locale runs for the console, shown by Finalize
    bool conversions_ran_ = false;
};

}  // namespace qxbench

// The time-zone benchmarks: time_zone::from_utc and to_utc against raw ICU and libc's localtime_r.
#pragma once

#include "datetime_benchmarks.hpp"

#include <ostream>
#include <vector>

namespace qxbench {

/// Registers "tz::op/zone/impl", the library first in each row, each call converting the same 64
/// instants of 2024 (with fractions of a second) in Europe/Berlin, America/New_York, Asia/Kolkata
/// and Australia/Lord_Howe: from_utc (peers: ICU's getOffset with the same arithmetic by hand, and
/// localtime_r with TZ set for the run of that benchmark and restored after it), to_utc (peer:
/// getOffset of local time by hand), and the construction of a timezone (peer: createTimeZone).
/// Every answer is checked before it is timed.
void register_timezone_benchmarks();

/// The tables of datetime_ratio_reporter, then one of the time-zone rows.
class timezone_ratio_reporter : public datetime_ratio_reporter {
public:
    /// Time-zone runs go to the console at once and are kept for the table; the others pass on.
    void ReportRuns(const std::vector<Run>& runs) override;

    /// The earlier tables, then the time-zone table when one of its rows ran. Returns the number
    /// of rows that miss a target.
    int print_tables(std::ostream& out) const;

private:
    int print_timezone_table(std::ostream& out) const;

    cpu_run_table table_;
};

}  // namespace qxbench

// The time-zone benchmarks: time_zone::from_utc and to_utc against raw ICU and libc's localtime_r.
#pragma once

#include "ratio_reporter.hpp"

#include <memory>

namespace qxbench {

/// Registers "tz::op/zone/impl", the library first in each row, each call converting the same 64
/// instants of 2024 (with fractions of a second) in Europe/Berlin, America/New_York, Asia/Kolkata
/// and Australia/Lord_Howe: from_utc (peers: ICU's getOffset with the same arithmetic by hand, and
/// localtime_r with TZ set for the run of that benchmark and restored after it), to_utc (peer:
/// getOffset of local time by hand), and the construction of a timezone (peer: createTimeZone).
/// Every answer is checked before it is timed.
void register_timezone_benchmarks();

/// The time-zone table.
std::unique_ptr<table_family> timezone_family();

}  // namespace qxbench

// The date-time text benchmarks: date_time::to_ustring and to_ptime against raw Boost and libc.
#pragma once

#include "ratio_reporter.hpp"

#include <memory>

namespace qxbench {

/// Registers "dt::op/format/impl", the library first in each row, each call handling the same
/// eight times (1400 to 9999, with microseconds, some before 1970): to_ustring with
/// date_format_iso_extended (peers: boost::posix_time::to_iso_extended_string, gmtime_r with
/// strftime) and date_format_utc_stamp (peers: a std::ostringstream with Boost's time_facet,
/// strftime), and to_ptime in each DateFormat (peers: time_from_string, from_iso_string,
/// from_iso_extended_string, a std::istringstream with Boost's time_input_facet, strptime with
/// timegm). Every answer is checked before it is timed.
void register_datetime_benchmarks();

/// The date-time table.
std::unique_ptr<table_family> datetime_family();

}  // namespace qxbench

// The locale benchmarks: createLocale, QxLocale::global and the global locale's default converter.
#pragma once

#include "ratio_reporter.hpp"

#include <memory>

namespace qxbench {

/// Registers "op/case/impl" for createLocale on groups of names (peers: ICU, glibc newlocale),
/// QxLocale::global (peer: a bare mutex) and a short conversion through the default converter
/// (peer: raw ICU); the library first in each row.
void register_locale_benchmarks();

/// The table of the locale rows, whose peers, targets and allocation counts are not those of the
/// conversions; their console lines come together after every other benchmark's.
std::unique_ptr<table_family> locale_family();

}  // namespace qxbench

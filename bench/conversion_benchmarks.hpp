// The conversion benchmarks of qxi18n and its peers.
#pragma once

#include "ratio_reporter.hpp"

#include <memory>

namespace qxbench {

/// Registers "op/text/size/impl" for every operation, text, size and implementation; rows of
/// one operation, text and size are registered together, the library first.
void register_conversion_benchmarks();

/// The ratio table of the conversions, timed on wall time; it owns every benchmark name.
std::unique_ptr<table_family> conversion_family();

}  // namespace qxbench

// The encoding-name and default-encoding benchmarks: get_standard_encoding_name against raw ICU,
// to_ustring in the default encoding against utf8_to_ustring.
#pragma once

#include "ratio_reporter.hpp"

#include <memory>

namespace qxbench {

/// Registers "op/case/impl": get_standard_encoding_name on names the library lists and on names
/// only ICU knows (peer: ucnv_getStandardName), and to_ustring(std::string) in the default
/// encoding at 16 B and 1 KiB (peer: utf8_to_ustring); the library first in each row.
void register_encoding_name_benchmarks();

/// The table of the encoding-name rows.
std::unique_ptr<table_family> encoding_name_family();

}  // namespace qxbench

// The text-engine benchmarks: transforms, comparison, search and pattern matching against raw ICU.
#pragma once

#include "ratio_reporter.hpp"

#include <memory>

namespace qxbench {

/// Registers "op/text/size/impl" on Latin, Greek and CJK text of 16, 1024 and 65536 UTF-16 units:
/// do_transform_impl with to_upper, to_nfc, to_nfd and to_no_diacritics, compare with
/// case_insensitive and normalized_case_insensitive, find with case_insensitive (peers: the raw
/// ICU calls doing the same work), and pattern_match::match on a wildcard and a character-class
/// pattern (peers: uregex and std::wregex); the library first in each row.
void register_text_benchmarks();

/// The text table, with an allocation column, since the text rows have their own targets.
std::unique_ptr<table_family> text_family();

}  // namespace qxbench

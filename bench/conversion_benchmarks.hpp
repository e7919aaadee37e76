// The conversion benchmarks of qxi18n and its peers.
#pragma once

namespace qxbench {

/// Registers "op/text/size/impl" for every operation, text, size and implementation; rows of
/// one operation, text and size are registered together, the library first.
void register_conversion_benchmarks();

}  // namespace qxbench

// Counts the global operator new calls of the calling thread, to show that a path does not allocate.
#pragma once

#include <cstdint>

namespace qxbench {

/// Operator new calls made so far by the calling thread, the library's own included: the
/// benchmark binary replaces the global operators. C code (ICU, glibc) calls malloc directly,
/// which is not counted.
std::uint64_t allocations_on_this_thread() noexcept;

}  // namespace qxbench

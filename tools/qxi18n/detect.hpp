// Reading the leading block of an input for charset detection, shared by `qxi18n detect` and
// any command that guesses an input's encoding.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace qxi18n_tool {

/// Default number of leading bytes looked at.
inline constexpr std::size_t default_detection_bytes = 64 * 1024;

/// How many of the `size` bytes at `data` to keep so that the block does not end inside a UTF-8
/// sequence: an incomplete sequence at the end (a lead byte and fewer continuation bytes than it
/// announces) is dropped. Anything else is kept whole.
std::size_t cut_at_utf8_boundary(const char* data, std::size_t size);

/// Up to `limit` leading bytes of `in`. When the input holds more, the block is cut back with
/// cut_at_utf8_boundary, so that a cut through a character does not fail the UTF-8 test.
/// `name` is for messages; throws read_error when reading fails.
std::string read_leading_block(std::FILE* in, const std::string& name, std::size_t limit);

}  // namespace qxi18n_tool

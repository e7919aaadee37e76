// The streaming-converter benchmarks: the stream_codecvt classes against raw ICU streaming loops.
#pragma once

#include "ratio_reporter.hpp"

#include <memory>

namespace qxbench {

/// Registers "stream::op/text/impl", the library first in each row: 1 MiB of text fed in blocks
/// of 64 KiB, each converted into a 64 KiB destination until the converter has no more, the
/// last block flushing. stream_codecvt_string_to_ustring and stream_codecvt_ustring_to_string on
/// UTF-8 and Shift_JIS (peer: ucnv_toUnicode / ucnv_fromUnicode in the same loop), and the two
/// multi-streaming converters between UTF-8 and windows-1252 or Shift_JIS (peer: ucnv_convertEx
/// with a pivot of the same 4096 units). Each output is checked against ICU before it is timed.
void register_streaming_benchmarks();

/// The streaming rows with their throughput.
std::unique_ptr<table_family> streaming_family();

}  // namespace qxbench

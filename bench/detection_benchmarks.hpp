// The charset-detection benchmarks: detect_charset against raw ICU ucsdet and libuchardet.
#pragma once

#include "ratio_reporter.hpp"

#include <memory>

namespace qxbench {

/// Registers "detect/input/size/impl", the library first in each row: ASCII and UTF-8 text of
/// 1 KiB, 64 KiB and 1 MiB, and the labelled corpus (every file once per call). Peers: raw ICU
/// (ucsdet_open, setText, detectAll, getName of the top match, close) and libuchardet (new,
/// handle_data, data_end, get_charset, delete), both without a fast path of their own.
void register_detection_benchmarks();

/// The detection rows with their throughput, and the accuracy of the library and of libuchardet
/// per encoding of the corpus.
std::unique_ptr<table_family> detection_family();

}  // namespace qxbench

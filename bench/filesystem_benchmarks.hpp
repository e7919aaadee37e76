// The path and file benchmarks: directory iteration, path comparison and fopen against libc, ICU and std::filesystem.
#pragma once

#include "ratio_reporter.hpp"

#include <memory>

namespace qxbench {

/// Registers "fs::op/case/impl", the library first in each row: upath_directory_iterator over
/// 10,000 files with non-ASCII names (peers: std::filesystem::directory_iterator, and opendir /
/// readdir with u_strFromUTF8 into a stack buffer), upath_recursive_directory_iterator over a
/// tree of 100,000 entries five levels deep (peer: std::filesystem::recursive_directory_iterator),
/// compare with default_mode and normalized_compose_mode on short absolute paths (peers:
/// u_strCompare, unorm_compare), and fopen of a UTF-16 name (peer: ::fopen of its bytes), each
/// open followed by fclose. The trees are made in a temporary directory by the first of these
/// benchmarks that runs and removed when the process exits.
void register_filesystem_benchmarks();

/// The path and file table, with per-item allocations, since a directory row times a whole listing.
std::unique_ptr<table_family> filesystem_family();

}  // namespace qxbench

// The path and file benchmarks: directory iteration, path comparison and fopen against libc, ICU and std::filesystem.
#pragma once

#include "text_benchmarks.hpp"

#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <vector>

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

/// The tables of text_ratio_reporter, followed by one of the path and file rows with per-item
/// allocations, since a directory row times a whole listing.
class filesystem_ratio_reporter : public text_ratio_reporter {
public:
    /// Path and file runs go to the console at once and are kept for the table; the others pass on.
    void ReportRuns(const std::vector<Run>& runs) override;

    /// The earlier tables, then the path and file table when one of its rows ran. Returns the
    /// number of rows that miss a target.
    int print_tables(std::ostream& out) const;

private:
    int print_filesystem_table(std::ostream& out) const;

    cpu_run_table table_;
};

}  // namespace qxbench

// Helpers of the tool tests: run the built qxi18n in a child process, check what it did, scratch
// files, reference conversions by raw ICU and environment settings for the child.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace qx_cli_test {

using args = std::vector<std::string>;

/// What one run of the tool did. `status` is the exit status, or -1 if it died of a signal.
struct run_result {
    int status = -1;
    int signal = 0;
    std::string out, err;
    long max_rss_kib = 0;  ///< the child's peak resident memory
};

/// Runs the tool with `call` (not including the program name) and `input` as standard input
/// (none: /dev/null). Standard output goes to `stdout_path` if given, else into `out`.
run_result run_tool(const args& call, const std::optional<std::string>& input = std::nullopt,
                    const std::string& stdout_path = "");

/// Runs the tool and expects `status`, exactly `out` on standard output, and on standard error
/// nothing (`err` empty) or one line that starts with `err`.
void expect_run(const args& call, int status, const std::string& out, const std::string& err = "",
                const std::optional<std::string>& input = std::nullopt);

/// Sets (a value) or unsets (nullopt) environment variables, which the tool inherits, for a scope.
class scoped_env {
public:
    using values = std::vector<std::pair<std::string, std::optional<std::string>>>;
    explicit scoped_env(const values& changes);
    scoped_env(const std::string& name, const std::string& value) : scoped_env(values{{name, value}}) {}
    ~scoped_env();
    scoped_env(const scoped_env&) = delete;
    scoped_env& operator=(const scoped_env&) = delete;

private:
    values saved_;
};

/// Writes `bytes` to `name` in this process's scratch directory and returns the full path.
std::string scratch_file(const std::string& name, const std::string& bytes);
const std::string& scratch_dir();
std::string read_file(const std::string& path);
std::string sample_path(const std::string& name);

/// `bytes` converted from `from` to `to` by raw ICU (ucnv_convert, ICU's default substitution).
std::string icu_convert(const char* to, const char* from, const std::string& bytes);

std::size_t count_lines(const std::string& text);

/// The "  label   value" lines of one block of output, by label.
using fields = std::map<std::string, std::string>;
/// Each block of a command's output (blocks are separated by empty lines) by its first line.
std::map<std::string, fields> parse_blocks(const std::string& out);

}  // namespace qx_cli_test

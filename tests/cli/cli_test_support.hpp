// Helpers of the tool tests: run the built qxi18n in a child process, scratch files, and
// reference conversions by raw ICU.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qx_cli_test {

/// What one run of the tool did. `status` is the exit status, or -1 if it died of a signal.
struct run_result {
    int status = -1;
    int signal = 0;
    std::string out;
    std::string err;
    long max_rss_kib = 0;  ///< the child's peak resident memory
};

/// Runs the tool with `args` (not including the program name), standard input from the file
/// `stdin_path`; standard output and error are collected whole.
run_result run_tool(const std::vector<std::string>& args, const std::string& stdin_path = "/dev/null");

/// Runs the tool with its standard output sent to `stdout_path` (`out` stays empty).
run_result run_tool_writing_to(const std::vector<std::string>& args, const std::string& stdout_path);

/// Runs the tool with `input` as its standard input.
run_result run_tool_with_input(const std::vector<std::string>& args, const std::string& input);

/// A scratch directory of this test process, created on first use.
const std::string& scratch_dir();
/// Writes `bytes` to `name` in the scratch directory and returns the full path.
std::string scratch_file(const std::string& name, const std::string& bytes);
/// The bytes of a file; a failed read fails the test.
std::string read_file(const std::string& path);
/// The full path of a bundled sample.
std::string sample_path(const std::string& name);

/// `bytes` converted from `from` to `to` by raw ICU (ucnv_convert, ICU's default
/// substitution); the reference the tool is compared with.
std::string icu_convert(const char* to, const char* from, const std::string& bytes);

/// Counts the lines of `text` (line ends "\n").
std::size_t count_lines(const std::string& text);

/// `text` with every byte outside printable ASCII shown as \xNN, for failure messages.
std::string printable(const std::string& text);

}  // namespace qx_cli_test

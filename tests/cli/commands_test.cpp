// The tool's commands as a whole: help, usage errors and their exit statuses,
// list-encodings against raw ICU, and the demo.
#include "cli_test_support.hpp"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace {

using namespace qx_cli_test;

TEST(CliCommandHelp, EveryCommandHasHelp)
{
    const std::vector<std::vector<std::string>> calls = {
        {"--help"}, {"-h"}, {"convert", "--help"}, {"convert", "-f", "UTF-8", "-h"},
        {"list-encodings", "--help"}, {"demo", "--help"}};
    for (const auto& args : calls) {
        SCOPED_TRACE(args.front() + " " + args.back());
        const run_result r = run_tool(args);
        EXPECT_EQ(r.status, 0);
        EXPECT_EQ(r.err, "");
        EXPECT_EQ(r.out.rfind("Usage: qxi18n", 0), 0u) << r.out;
    }
}

struct usage_case {
    std::vector<std::string> args;
    int status;
    const char* message;  // what stderr must hold, on one line
};

const usage_case usage_cases[] = {
    {{}, 2, "qxi18n: missing command"},
    {{"frobnicate"}, 2, "qxi18n: unknown command 'frobnicate'"},
    {{"convert", "-t", "UTF-8"}, 2, "qxi18n: convert: missing -f ENCODING"},
    {{"convert", "-f", "UTF-8"}, 2, "qxi18n: convert: missing -t ENCODING"},
    {{"convert", "-f", "UTF-8", "-t"}, 2, "qxi18n: convert: option '-t' needs a value"},
    {{"convert", "-f", "", "-t", "UTF-8"}, 2, "qxi18n: convert: empty encoding name"},
    {{"convert", "-f", "UTF-8", "-t", "UTF-8", "--bogus"}, 2, "qxi18n: convert: unknown option '--bogus'"},
    {{"convert", "-f", "UTF-8", "-t", "UTF-8", "--on-error=ignore"}, 2,
     "qxi18n: convert: unknown error mode 'ignore'"},
    {{"convert", "-f", "UTF-8", "-t", "UTF-8", "--piece-size=0"}, 2, "qxi18n: convert: piece size"},
    {{"convert", "-f", "no-such-encoding", "-t", "UTF-8"}, 2,
     "qxi18n: convert: unknown encoding 'no-such-encoding'"},
    {{"convert", "-f", "UTF-8", "-t", "no-such-encoding"}, 2,
     "qxi18n: convert: unknown encoding 'no-such-encoding'"},
    {{"list-encodings", "extra"}, 2, "qxi18n: list-encodings: unexpected argument 'extra'"},
    {{"demo", "--samples"}, 2, "qxi18n: demo: option '--samples' needs a value"},
    {{"demo", "--samples", "/nonexistent/qxi18n"}, 1, "qxi18n: demo: no sample directory at"},
};

TEST(CliCommandUsage, ErrorsAreOneLineWithTheirStatus)
{
    for (const usage_case& c : usage_cases) {
        SCOPED_TRACE(c.message);
        const run_result r = run_tool(c.args);
        EXPECT_EQ(r.status, c.status);
        EXPECT_EQ(r.out, "");
        EXPECT_EQ(r.err.rfind(c.message, 0), 0u) << r.err;
        EXPECT_EQ(count_lines(r.err), 1u) << r.err;
    }
}

// A full disk is a data error, reported once, for every command.
TEST(CliCommandOutput, WriteErrorIsReportedOnce)
{
    if (::access("/dev/full", W_OK) != 0)
        GTEST_SKIP() << "no writable /dev/full on this system";
    const std::string big = scratch_file("big.txt", std::string(300 * 1024, 'a'));
    const std::vector<std::vector<std::string>> calls = {
        {"--help"}, {"convert", "--help"}, {"list-encodings"}, {"demo"},
        {"convert", "-f", "UTF-8", "-t", "UTF-16", sample_path("beyond-latin1.utf-8.txt")},
        {"convert", "-f", "UTF-8", "-t", "UTF-16LE", big}};
    for (const auto& args : calls) {
        SCOPED_TRACE(args.front() + " " + args.back());
        const run_result r = run_tool_writing_to(args, "/dev/full");
        EXPECT_EQ(r.status, 1);
        EXPECT_EQ(r.err, "qxi18n: write error on standard output: No space left on device\n");
    }
}

// One line per converter ICU can open, in ICU's order, each with all its other aliases.
TEST(CliListEncodings, MatchesIcu)
{
    const run_result r = run_tool({"list-encodings"});
    ASSERT_EQ(r.status, 0) << r.err;
    const int32_t count = ucnv_countAvailable();
    ASSERT_EQ(count_lines(r.out), static_cast<std::size_t>(count));
    std::size_t start = 0;
    for (int32_t i = 0; i < count; ++i) {
        const std::string line = r.out.substr(start, r.out.find('\n', start) - start);
        start += line.size() + 1;
        const std::string name = ucnv_getAvailableName(i);
        ASSERT_EQ(line.rfind(name + ":", 0), 0u) << line;
        UErrorCode ec = U_ZERO_ERROR;
        const uint16_t aliases = ucnv_countAliases(name.c_str(), &ec);
        for (uint16_t j = 0; j < aliases; ++j) {
            const std::string alias = ucnv_getAlias(name.c_str(), j, &ec);
            if (alias != name) {
                EXPECT_NE((line + " ").find(" " + alias + " "), std::string::npos)
                    << name << ": " << alias;
            }
        }
    }
    EXPECT_NE(("\n" + r.out).find("\nUTF-8: ibm-1208 "), std::string::npos);
}

// The demo finds the samples staged in the build tree by itself, and every round trip holds.
TEST(CliDemo, RunsOnTheStagedSamples)
{
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{"demo"},
          std::vector<std::string>{"demo", "--samples", std::string(QXI18N_TEST_DATA_DIR) + "/samples"}}) {
        const run_result r = run_tool(args);
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(r.err, "");
        EXPECT_EQ(r.out.find("DIFFERENT"), std::string::npos) << r.out;
        EXPECT_EQ(r.out.find("NOT equal"), std::string::npos) << r.out;
        EXPECT_NE(r.out.find("identical"), std::string::npos);
        EXPECT_NE(r.out.find("&#x20AC;"), std::string::npos);
        EXPECT_NE(r.out.find("line 3  throws CvtInvalidCharacter"), std::string::npos);
    }
}

}  // namespace

// The tool's commands as a whole: help, usage errors and their exit statuses, write errors,
// list-encodings against raw ICU, and the demo with each of its sections.
#include "cli_test_support.hpp"

#include <unicode/ucnv.h>
#include <unistd.h>

namespace {

using namespace qx_cli_test;

TEST(CliCommandUsage, HelpAndErrorsAreOneLineWithTheirStatus)
{
    for (const args& help : {args{"--help"}, args{"-h"}, args{"convert", "-f", "UTF-8", "-h"}, args{"locale", "de_DE", "--help"},
                             args{"convert", "--help"}, args{"list-encodings", "--help"}, args{"demo", "--help"},
                             args{"encoding", "--help"}, args{"info", "--help"}, args{"ls", "--help"}, args{"path", "--help"},
                             args{"tmp", "--help"}, args{"detect", "--help"}, args{"text", "--help"}, args{"time", "--help"}}) {
        const run_result r = run_tool(help);
        EXPECT_EQ(r.status, 0);
        EXPECT_EQ(r.err, "");
        EXPECT_EQ(r.out.rfind("Usage: qxi18n " + (help.size() > 1 ? help[0] : "COMMAND"), 0), 0u) << r.out;
    }
    const std::string convert = "qxi18n: convert: ", utf8 = "UTF-8";
    const std::tuple<args, int, std::string> cases[] = {
        {{}, 2, "qxi18n: missing command"},
        {{"frobnicate"}, 2, "qxi18n: unknown command 'frobnicate'"},
        {{"convert", "-t", utf8}, 2, convert + "missing -f ENCODING"},
        {{"convert", "-f", utf8}, 2, convert + "missing -t ENCODING"},
        {{"convert", "-f", utf8, "-t"}, 2, convert + "option '-t' needs a value"},
        {{"convert", "-f", utf8, "-t", utf8, "--bogus"}, 2, convert + "unknown option '--bogus'"},
        {{"convert", "-f", utf8, "-t", utf8, "--on-error=ignore"}, 2, convert + "unknown error mode 'ignore'"},
        {{"convert", "-f", utf8, "-t", utf8, "--piece-size=0"}, 2, convert + "piece size"},
        {{"convert", "-f", "no-such-encoding", "-t", utf8}, 2, convert + "unknown encoding 'no-such-encoding'"},
        {{"convert", "-f", "", "-t", "no-such-encoding"}, 2, convert + "unknown encoding 'no-such-encoding'"},
        {{"list-encodings", "extra"}, 2, "qxi18n: list-encodings: unexpected argument 'extra'"},
        {{"info", "extra"}, 2, "qxi18n: info: unexpected argument 'extra'"},
        {{"info", "--bogus"}, 2, "qxi18n: info: unknown option '--bogus'"},
        {{"locale"}, 2, "qxi18n: locale: missing locale name"},
        {{"locale", "de_DE", "--bogus"}, 2, "qxi18n: locale: unknown option '--bogus'"},
        {{"encoding"}, 2, "qxi18n: encoding: missing encoding name"},
        {{"encoding", "UTF-8", "-x"}, 2, "qxi18n: encoding: unknown option '-x'"},
        {{"encoding", "no-such-encoding"}, 1, "qxi18n: encoding: 'no-such-encoding': unknown to the library and to ICU"},
        {{"demo", "--samples"}, 2, "qxi18n: demo: option '--samples' needs a value"},
        {{"demo", "--samples", "/nonexistent/qxi18n"}, 1, "qxi18n: demo: no sample directory at"},
        {{"tmp", "extra"}, 2, "qxi18n: tmp: unexpected argument 'extra'"},
    };
    for (const auto& [call, status, message] : cases)
        expect_run(call, status, "", message);
}

// A full disk is a data error, reported once, for every command.
TEST(CliCommandOutput, WriteErrorIsReportedOnce)
{
    if (::access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no writable /dev/full on this system";
    const std::string big = scratch_file("big.txt", std::string(300 * 1024, 'a'));
    for (const args& call : {args{"--help"}, args{"convert", "--help"}, args{"list-encodings"}, args{"demo"},
                             args{"encoding", "Cp1252"},
                             args{"convert", "-f", "UTF-8", "-t", "UTF-16", sample_path("beyond-latin1.utf-8.txt")},
                             args{"convert", "-f", "UTF-8", "-t", "UTF-16LE", big}}) {
        const run_result r = run_tool(call, std::nullopt, "/dev/full");
        EXPECT_EQ(r.status, 1) << call.back();
        EXPECT_EQ(r.err, "qxi18n: write error on standard output: No space left on device\n");
    }
}

// One line per converter ICU can open, in ICU's order, each with all its other aliases.
TEST(CliListEncodings, MatchesIcu)
{
    const run_result r = run_tool({"list-encodings"});
    ASSERT_EQ(r.status, 0) << r.err;
    ASSERT_EQ(count_lines(r.out), static_cast<std::size_t>(ucnv_countAvailable()));
    std::size_t start = 0;
    for (int32_t i = 0; i < ucnv_countAvailable(); ++i) {
        const std::string line = r.out.substr(start, r.out.find('\n', start) - start) + " ";
        start += line.size();
        const std::string name = ucnv_getAvailableName(i);
        ASSERT_EQ(line.rfind(name + ":", 0), 0u) << line;
        UErrorCode ec = U_ZERO_ERROR;
        for (uint16_t j = 0; j < ucnv_countAliases(name.c_str(), &ec); ++j) {
            const std::string alias = ucnv_getAlias(name.c_str(), j, &ec);
            EXPECT_TRUE(alias == name || line.find(" " + alias + " ") != std::string::npos) << name << ": " << alias;
        }
    }
}

// The demo finds the samples staged in the build tree by itself, every round trip holds, and
// each section shows the library's answers.
TEST(CliDemo, RunsOnTheStagedSamples)
{
    for (const args& call : {args{"demo"}, args{"demo", "--samples", std::string(QXI18N_TEST_DATA_DIR) + "/samples"}}) {
        const run_result r = run_tool(call);
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(r.err, "");
        for (const char* absent : {"DIFFERENT", "NOT equal", "generate.sh"})
            EXPECT_EQ(r.out.find(absent), std::string::npos) << absent;
        for (const char* expected : {
                 "identical", "&#x20AC;", "line 3  throws CvtInvalidCharacter", "zh_HK -> zh -> en",
                 "xx_YY              throws QxLcInvLcName (\"Invalid locale name.\", detail \"xx_YY\")",
                 "  ISO-2022-JP         ISO-2022-JP    no         -\n",
                 "  corpus/korean.txt as EUC-KR              EUC-KR        EUC-KR        right\n",
                 "STRASSE (one letter becomes two)", "ISTANBUL / İSTANBUL", "position 4 of the upper-cased text",
                 "\"*.txt\" finds 9 samples", "case_insensitive_mode    equal", "32  \"/data/\"",
                 "Australia/Lord_Howe    2024-07-01T22:30:00.123456",
                 "throws fl::i18n::timezone::invalid_timezone_id (\"Invalid timezone id.\")"})
            EXPECT_NE(r.out.find(expected), std::string::npos) << expected;
    }
}

}  // namespace

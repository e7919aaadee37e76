// `qxi18n convert` on the bundled samples and on crafted inputs: round trips, error modes,
// reports of the first bad line, missing files and exit statuses.
#include "cli_test_support.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace qx_cli_test;

struct sample_case {
    const char* file;
    const char* encoding;
};

const sample_case samples[] = {
    {"french.windows-1252.txt", "windows-1252"}, {"russian.koi8-r.txt", "KOI8-R"},
    {"japanese.shift_jis.txt", "Shift_JIS"},     {"japanese.euc-jp.txt", "EUC-JP"},
    {"chinese.gb18030.txt", "GB18030"},          {"greek.iso-8859-7.txt", "ISO-8859-7"},
    {"mixed.utf-16le-bom.txt", "UTF-16"},        {"beyond-latin1.utf-8.txt", "UTF-8"},
};

// Each sample to UTF-8 (from a file) equals raw ICU, and back (from standard input) gives the
// sample byte for byte; tiny pieces must not change either result.
TEST(CliConvertSamples, RoundTripIsByteExact)
{
    for (const sample_case& s : samples) {
        for (const char* piece : {"65536", "5"}) {
            SCOPED_TRACE(std::string(s.file) + " piece " + piece);
            const std::string original = read_file(sample_path(s.file));
            const std::string piece_option = std::string("--piece-size=") + piece;
            const run_result there = run_tool(
                {"convert", "-f", s.encoding, "-t", "UTF-8", piece_option, sample_path(s.file)});
            EXPECT_EQ(there.status, 0) << there.err;
            EXPECT_EQ(there.err, "");
            EXPECT_EQ(there.out, icu_convert("UTF-8", s.encoding, original));
            EXPECT_GE(count_lines(there.out), 1u);

            const run_result back = run_tool_with_input(
                {"convert", "--from=UTF-8", "--to", s.encoding, piece_option}, there.out);
            EXPECT_EQ(back.status, 0) << back.err;
            EXPECT_EQ(printable(back.out), printable(original));
        }
    }
}

TEST(CliConvertSamples, JapaneseEncodingsHoldTheSameText)
{
    const run_result sjis = run_tool({"convert", "-f", "Shift_JIS", "-t", "UTF-8",
                                      sample_path("japanese.shift_jis.txt")});
    const run_result euc = run_tool({"convert", "-fEUC-JP", "-tUTF-8", sample_path("japanese.euc-jp.txt")});
    ASSERT_EQ(sjis.status, 0);
    ASSERT_EQ(euc.status, 0);
    EXPECT_FALSE(sjis.out.empty());
    EXPECT_EQ(sjis.out, euc.out);
}

struct mode_case {
    const char* mode;
    const char* to;
    std::string input;
    int status;
    std::string out;
};

// "né € 🙂": é fits Latin-1, the euro sign and the supplementary character do not.
const std::string unmappable = "ok\nn\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x99\x82\n";
// A byte that is never valid UTF-8: every mode but stop reads it as U+FFFD.
const std::string malformed = "a\xFF" "b\n";

const mode_case mode_cases[] = {
    {"stop", "ISO-8859-1", unmappable, 1, "ok\n"},
    {"substitute", "ISO-8859-1", unmappable, 0, "ok\nn\xE9 \x1A \x1A\n"},
    {"escape-icu", "ISO-8859-1", unmappable, 0, "ok\nn\xE9 %U20AC %UD83D%UDE42\n"},
    {"escape-java", "ISO-8859-1", unmappable, 0, "ok\nn\xE9 \\u20AC \\uD83D\\uDE42\n"},
    {"escape-c", "ISO-8859-1", unmappable, 0, "ok\nn\xE9 \\u20AC \\U0001F642\n"},
    {"escape-xml-dec", "ISO-8859-1", unmappable, 0, "ok\nn\xE9 &#8364; &#128578;\n"},
    {"escape-xml-hex", "ISO-8859-1", unmappable, 0, "ok\nn\xE9 &#x20AC; &#x1F642;\n"},
    {"escape-unicode", "ISO-8859-1", unmappable, 0, "ok\nn\xE9 {U+20AC} {U+1F642}\n"},
    {"escape-css2", "ISO-8859-1", unmappable, 0, "ok\nn\xE9 \\20AC  \\1F642 \n"},
    {"stop", "UTF-16BE", malformed, 1, ""},
    {"substitute", "UTF-16BE", malformed, 0, std::string("\0a\xFF\xFD\0b\0\n", 8)},
    {"substitute", "ISO-8859-1", malformed, 0, "a\x1A" "b\n"},
    {"escape-xml-hex", "US-ASCII", malformed, 0, "a&#xFFFD;b\n"},
    {"escape-c", "UTF-8", malformed, 0, "a\xEF\xBF\xBD" "b\n"},
};

TEST(CliConvertErrorModes, EachModeGivesItsOutput)
{
    for (const mode_case& c : mode_cases) {
        SCOPED_TRACE(std::string(c.mode) + " to " + c.to + " of " + printable(c.input));
        const run_result r = run_tool_with_input(
            {"convert", "-f", "UTF-8", "-t", c.to, std::string("--on-error=") + c.mode}, c.input);
        EXPECT_EQ(r.status, c.status) << r.err;
        EXPECT_EQ(printable(r.out), printable(c.out));
        EXPECT_EQ(r.err.empty(), c.status == 0) << r.err;
    }
}

TEST(CliConvertStop, ReportsFileAndLineAndKeepsEarlierLines)
{
    const std::string path = sample_path("malformed.utf-8.txt");
    const run_result r = run_tool({"convert", "-f", "UTF-8", "-t", "UTF-16LE", path});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "qxi18n: " + path + ":3: invalid or unmappable character sequence\n");
    const std::string original = read_file(path);
    const std::string first_two = original.substr(0, original.find("The third"));
    EXPECT_EQ(r.out, icu_convert("UTF-16LE", "UTF-8", first_two));
}

TEST(CliConvertStop, TruncatedSequenceAtEndIsAnError)
{
    const run_result r = run_tool_with_input({"convert", "-f", "UTF-8", "-t", "UTF-16LE"},
                                             "ok\nabc\xE2\x82");
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, std::string("o\0k\0\n\0", 6));
    EXPECT_EQ(r.err, "qxi18n: <stdin>:2: incomplete or unconvertible character sequence\n");

    const run_result odd = run_tool_with_input({"convert", "-f", "UTF-16LE", "-t", "UTF-8"},
                                               std::string("a\0\n\0b", 5));
    EXPECT_EQ(odd.status, 1);
    EXPECT_EQ(odd.out, "a\n");
    EXPECT_EQ(odd.err, "qxi18n: <stdin>:2: incomplete or unconvertible character sequence\n");

    const run_result lenient = run_tool_with_input(
        {"convert", "-f", "UTF-8", "-t", "UTF-8", "--on-error=substitute"}, "abc\xE2\x82");
    EXPECT_EQ(lenient.status, 0) << lenient.err;
    EXPECT_EQ(lenient.out, "abc\xEF\xBF\xBD");
}

// In stop mode the first bad file ends the run; a missing file is reported and skipped.
TEST(CliConvertFiles, ProcessedInOrder)
{
    const std::string good = scratch_file("good.txt", "g\xC3\xBCt\n");
    const std::string missing = scratch_dir() + "/no-such-file.txt";
    const std::string bad = sample_path("malformed.utf-8.txt");

    const run_result skipped = run_tool({"convert", "-f", "UTF-8", "-t", "ISO-8859-1", missing, good, "-"});
    EXPECT_EQ(skipped.status, 1);
    EXPECT_EQ(skipped.out, "g\xFCt\n");
    EXPECT_EQ(skipped.err, "qxi18n: " + missing + ": No such file or directory\n");

    const run_result stopped = run_tool({"convert", "-f", "UTF-8", "-t", "UTF-8", good, bad, good});
    EXPECT_EQ(stopped.status, 1);
    const std::string bad_text = read_file(bad);
    EXPECT_EQ(stopped.out, "g\xC3\xBCt\n" + bad_text.substr(0, bad_text.find("The third")));
    EXPECT_EQ(stopped.err, "qxi18n: " + bad + ":3: invalid or unmappable character sequence\n");

    const run_result directory = run_tool({"convert", "-f", "UTF-8", "-t", "UTF-8", scratch_dir(), good});
    EXPECT_EQ(directory.status, 1);
    EXPECT_EQ(directory.out, "g\xC3\xBCt\n");
    EXPECT_EQ(directory.err, "qxi18n: " + scratch_dir() + ": Is a directory\n");
}

// Several inputs make one output: a byte order mark or an opening shift appears once.
TEST(CliConvertFiles, OneMarkForSeveralInputs)
{
    const std::string a = scratch_file("a.txt", "\xCE\xB1\n");
    for (const char* to : {"UTF-16", "UTF-32", "HZ", "ISO-2022-KR"}) {
        SCOPED_TRACE(to);
        const run_result r = run_tool({"convert", "-f", "UTF-8", "-t", to, a, a, a});
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(icu_convert("UTF-8", to, r.out), "\xCE\xB1\n\xCE\xB1\n\xCE\xB1\n");
    }
}

TEST(CliConvertInput, EmptyInputGivesEmptyOutput)
{
    const std::string empty = scratch_file("empty.txt", "");
    for (const char* from : {"UTF-8", "UTF-16", "UTF-32", "ISO-2022-JP", "Shift_JIS"}) {
        for (const char* to : {"UTF-8", "UTF-16", "HZ"}) {
            SCOPED_TRACE(std::string(from) + " -> " + to);
            const run_result by_file = run_tool({"convert", "-f", from, "-t", to, empty});
            EXPECT_EQ(by_file.status, 0) << by_file.err;
            EXPECT_EQ(by_file.out, "");
            const run_result by_stdin = run_tool({"convert", "-f", from, "-t", to});
            EXPECT_EQ(by_stdin.status, 0) << by_stdin.err;
            EXPECT_EQ(by_stdin.out, "");
            EXPECT_EQ(by_stdin.err, "");
        }
    }
}

// Stateful encodings are converted in one piece; the bad line is still found.
TEST(CliConvertStateful, RoundTripAndBadLine)
{
    const std::string japanese = read_file(sample_path("japanese.shift_jis.txt"));
    const std::string utf8 = icu_convert("UTF-8", "Shift_JIS", japanese);
    for (const char* stateful : {"ISO-2022-JP", "UTF-7", "HZ", "SCSU", "BOCU-1"}) {
        SCOPED_TRACE(stateful);
        const run_result there = run_tool_with_input(
            {"convert", "-f", "UTF-8", "-t", stateful, "--piece-size=3", "--on-error=substitute"}, utf8);
        EXPECT_EQ(there.status, 0) << there.err;
        EXPECT_EQ(printable(there.out), printable(icu_convert(stateful, "UTF-8", utf8)));
        const run_result back = run_tool_with_input(
            {"convert", "-f", stateful, "-t", "UTF-8", "--piece-size=3", "--on-error=substitute"}, there.out);
        EXPECT_EQ(back.status, 0) << back.err;
        EXPECT_EQ(back.out, icu_convert("UTF-8", stateful, there.out));
    }
    // Line 3 holds a two-byte JIS X 0208 code that is not assigned (0x7F is never valid).
    const std::string iso2022 = "one\n\x1B$B$\"\x1B(B two\nthree \x1B$B\x7F\x7F\x1B(B\nfour\n";
    const run_result r = run_tool_with_input({"convert", "-f", "ISO-2022-JP", "-t", "UTF-8"}, iso2022);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "one\n\xE3\x81\x82 two\n");
    EXPECT_EQ(r.err, "qxi18n: <stdin>:3: invalid or unmappable character sequence\n");
}

}  // namespace

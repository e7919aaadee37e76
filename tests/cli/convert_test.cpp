// `qxi18n convert` on the bundled samples and on crafted inputs: round trips, error modes,
// reports of the first bad line, several and missing files, empty input, stateful encodings, auto.
#include "cli_test_support.hpp"

#include <tuple>

namespace {

using namespace qx_cli_test;

std::string bad_at(const std::string& where, int line, bool incomplete = false)
{
    return "qxi18n: " + where + ":" + std::to_string(line) +
           (incomplete ? ": incomplete or unconvertible character sequence\n" : ": invalid or unmappable character sequence\n");
}

// Each sample to UTF-8 (from a file) equals raw ICU, and back (from standard input) gives the
// sample byte for byte; tiny pieces must not change either result.
TEST(CliConvertSamples, RoundTripIsByteExact)
{
    const std::pair<const char*, const char*> samples[] = {
        {"french.windows-1252.txt", "windows-1252"}, {"russian.koi8-r.txt", "KOI8-R"},
        {"japanese.shift_jis.txt", "Shift_JIS"},     {"japanese.euc-jp.txt", "EUC-JP"},
        {"chinese.gb18030.txt", "GB18030"},          {"greek.iso-8859-7.txt", "ISO-8859-7"},
        {"mixed.utf-16le-bom.txt", "UTF-16"},        {"beyond-latin1.utf-8.txt", "UTF-8"},
    };
    for (const auto& [file, encoding] : samples) {
        const std::string original = read_file(sample_path(file)), utf8 = icu_convert("UTF-8", encoding, original);
        for (const std::string piece : {"--piece-size=65536", "--piece-size=5"}) {
            expect_run({"convert", "-f", encoding, "-t", "UTF-8", piece, sample_path(file)}, 0, utf8);
            expect_run({"convert", "--from=UTF-8", "--to", encoding, piece}, 0, original, "", utf8);
        }
    }
}

// "né € 🙂": é fits Latin-1, the euro sign and the supplementary character do not.
const std::string unmappable = "ok\nn\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x99\x82\n";
// A byte that is never valid UTF-8: every mode but stop reads it as U+FFFD.
const std::string malformed = "a\xFF" "b\n";
const std::string long_line = "short\n" + std::string(200 * 1024, 'x');

// Every --on-error mode, and stop reporting the first bad line of standard input after writing
// every line before it, also with a line longer than a piece, in a stateful encoding, and at a
// text that ends inside a character.
TEST(CliConvertErrorModes, EachModeGivesItsOutput)
{
    const std::string in = "<stdin>";
    // from, to, mode, input, output, error (none: exit status 0, else 1)
    const std::tuple<const char*, const char*, const char*, std::string, std::string, std::string> cases[] = {
        {"UTF-8", "ISO-8859-1", "stop", unmappable, "ok\n", bad_at(in, 2)},
        {"UTF-8", "ISO-8859-1", "substitute", unmappable, "ok\nn\xE9 \x1A \x1A\n", ""},
        {"UTF-8", "ISO-8859-1", "escape-icu", unmappable, "ok\nn\xE9 %U20AC %UD83D%UDE42\n", ""},
        {"UTF-8", "ISO-8859-1", "escape-java", unmappable, "ok\nn\xE9 \\u20AC \\uD83D\\uDE42\n", ""},
        {"UTF-8", "ISO-8859-1", "escape-c", unmappable, "ok\nn\xE9 \\u20AC \\U0001F642\n", ""},
        {"UTF-8", "ISO-8859-1", "escape-xml-dec", unmappable, "ok\nn\xE9 &#8364; &#128578;\n", ""},
        {"UTF-8", "ISO-8859-1", "escape-xml-hex", unmappable, "ok\nn\xE9 &#x20AC; &#x1F642;\n", ""},
        {"UTF-8", "ISO-8859-1", "escape-unicode", unmappable, "ok\nn\xE9 {U+20AC} {U+1F642}\n", ""},
        {"UTF-8", "ISO-8859-1", "escape-css2", unmappable, "ok\nn\xE9 \\20AC  \\1F642 \n", ""},
        {"UTF-8", "UTF-16BE", "stop", malformed, "", bad_at(in, 1)},
        {"UTF-8", "UTF-16BE", "substitute", malformed, std::string("\0a\xFF\xFD\0b\0\n", 8), ""},
        {"UTF-8", "ISO-8859-1", "substitute", malformed, "a\x1A" "b\n", ""},
        {"UTF-8", "US-ASCII", "escape-xml-hex", malformed, "a&#xFFFD;b\n", ""},
        {"UTF-8", "UTF-8", "escape-c", malformed, "a\xEF\xBF\xBD" "b\n", ""},
        {"UTF-8", "UTF-16LE", "stop", "ok\nabc\xE2\x82", std::string("o\0k\0\n\0", 6), bad_at(in, 2, true)},
        {"UTF-16LE", "UTF-8", "stop", std::string("a\0\n\0b", 5), "a\n", bad_at(in, 2, true)},
        {"UTF-8", "UTF-8", "substitute", "abc\xE2\x82", "abc\xEF\xBF\xBD", ""},
        {"UTF-8", "UTF-16LE", "substitute", "abc\xE2\x82", std::string("a\0b\0c\0\xFD\xFF", 8), ""},
        {"Shift_JIS", "UTF-8", "stop", "ok\n\x82\xA0\x82", "ok\n", bad_at(in, 2, true)},
        {"UTF-8", "UTF-8", "stop", long_line + "\xFF\nafter\n", "short\n", bad_at(in, 2)},
        {"UTF-8", "UTF-16BE", "stop", long_line + "\xC3\xA9\nafter\n", icu_convert("UTF-16BE", "UTF-8", long_line + "\xC3\xA9\nafter\n"), ""},
        // Line 3 holds a two-byte JIS X 0208 code that is not assigned (0x7F is never valid).
        {"ISO-2022-JP", "UTF-8", "stop", "one\n\x1B$B$\"\x1B(B two\nthree \x1B$B\x7F\x7F\x1B(B\nfour\n",
         "one\n\xE3\x81\x82 two\n", bad_at(in, 3)},
    };
    for (const auto& [from, to, mode, input, out, err] : cases)
        expect_run({"convert", "-f", from, "-t", to, std::string("--on-error=") + mode}, err.empty() ? 0 : 1, out, err, input);
}

// Files in order: a missing file or a directory is reported and skipped; in stop mode the first
// bad file ends the run after the lines before its bad one. Several inputs make one output, with
// one byte order mark or opening shift; empty input gives empty output.
TEST(CliConvertFiles, ProcessedInOrderIntoOneOutput)
{
    const std::string good = scratch_file("good.txt", "g\xC3\xBCt\n");
    const std::string missing = scratch_dir() + "/no-such-file.txt", bad = sample_path("malformed.utf-8.txt");
    const std::string bad_head = read_file(bad).substr(0, read_file(bad).find("The third"));
    const std::tuple<args, std::string, std::string> cases[] = {
        {{"-t", "ISO-8859-1", missing, good, "-"}, "g\xFCt\n", "qxi18n: " + missing + ": No such file or directory\n"},
        {{"-t", "UTF-8", good, bad, good}, "g\xC3\xBCt\n" + bad_head, bad_at(bad, 3)},
        {{"-t", "UTF-16LE", bad}, icu_convert("UTF-16LE", "UTF-8", bad_head), bad_at(bad, 3)},
        {{"-t", "UTF-8", scratch_dir(), good}, "g\xC3\xBCt\n", "qxi18n: " + scratch_dir() + ": Is a directory\n"},
    };
    for (const auto& [rest, out, err] : cases) {
        args call{"convert", "-f", "UTF-8"};
        call.insert(call.end(), rest.begin(), rest.end());
        expect_run(call, 1, out, err);
    }
    const std::string alpha = scratch_file("a.txt", "\xCE\xB1\n");
    for (const char* to : {"UTF-16", "UTF-32", "HZ", "ISO-2022-KR"}) {
        const run_result r = run_tool({"convert", "-f", "UTF-8", "-t", to, alpha, alpha, alpha});
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(icu_convert("UTF-8", to, r.out), "\xCE\xB1\n\xCE\xB1\n\xCE\xB1\n") << to;
    }
    const std::string empty = scratch_file("empty.txt", "");
    for (const char* from : {"UTF-8", "UTF-16", "UTF-32", "ISO-2022-JP", "Shift_JIS"})
        for (const char* to : {"UTF-8", "UTF-16", "HZ"}) {
            expect_run({"convert", "-f", from, "-t", to, empty}, 0, "");
            expect_run({"convert", "-f", from, "-t", to}, 0, "");
        }
}

// Stateful encodings stream like the others, whatever the piece size, and match ICU byte for
// byte, the shift back at the end of a text without a final line feed included; only SCSU's
// encoder looks ahead as far as its input reaches and may choose other windows in tiny pieces,
// so its output must decode to the text.
TEST(CliConvertStateful, RoundTripMatchesIcu)
{
    std::string utf8 = icu_convert("UTF-8", "Shift_JIS", read_file(sample_path("japanese.shift_jis.txt")));
    utf8.pop_back();
    for (const std::string stateful : {"ISO-2022-JP", "UTF-7", "HZ", "SCSU", "BOCU-1"}) {
        SCOPED_TRACE(stateful);
        const run_result there =
            run_tool({"convert", "-f", "UTF-8", "-t", stateful, "--piece-size=3", "--on-error=substitute"}, utf8);
        EXPECT_EQ(there.status, 0) << there.err;
        const std::string decoded = icu_convert("UTF-8", stateful.c_str(), there.out);
        EXPECT_TRUE(stateful == "SCSU" ? decoded == utf8 : there.out == icu_convert(stateful.c_str(), "UTF-8", utf8));
        expect_run({"convert", "-f", stateful, "-t", "UTF-8", "--piece-size=3", "--on-error=substitute"}, 0, decoded, "",
                   there.out);
    }
}

// -f auto guesses each input on its own, so inputs in different encodings make one UTF-8 text;
// the guess is the one the explicit name would give, byte order mark read and dropped.
TEST(CliConvertAuto, EachInputIsDetected)
{
    const std::pair<const char*, const char*> samples[] = {
        {"japanese.shift_jis.txt", "Shift_JIS"}, {"japanese.euc-jp.txt", "EUC-JP"},
        {"chinese.gb18030.txt", "GB18030"},      {"mixed.utf-16le-bom.txt", "UTF-16"},
        {"beyond-latin1.utf-8.txt", "UTF-8"},
    };
    args call{"convert", "-f", "auto", "-t", "UTF-8"};
    std::string expected;
    for (const auto& [file, encoding] : samples) {
        call.push_back(sample_path(file));
        expected += icu_convert("UTF-8", encoding, read_file(sample_path(file)));
    }
    expect_run(call, 0, expected);
}

// The guess reads the first 64 KiB; a UTF-8 character that this cut splits is left out of the
// guess, which therefore validates the text as UTF-8 (a split character would fail that test).
TEST(CliConvertAuto, CutCharacterIsLeftOutOfTheGuess)
{
    const scoped_env diagnostics("QX_CHARSET_DETECT_DIAG", "1");
    const std::string line = "\xD0\xA1\xD1\x82\xD1\x80\xD0\xBE\xD0\xBA\xD0\xB0 text\n";
    for (const std::size_t lead_at : {std::size_t{65535}, std::size_t{65534}, std::size_t{65533}}) {
        std::string text;
        while (text.size() + line.size() <= lead_at) text += line;
        text.append(lead_at - text.size(), 'a');
        text += "\xF0\x9F\x99\x82" + line;
        expect_run({"convert", "-f", "auto", "-t", "UTF-16LE", scratch_file("cut.txt", text)}, 0,
                   icu_convert("UTF-16LE", "UTF-8", text), "Validated encoding: UTF-8\n");
    }
}

}  // namespace

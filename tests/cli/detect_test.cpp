// `qxi18n detect` end to end: results per file, the cut of the leading block, the diagnostics of
// --diag, stdin, and the failure paths.
#include "cli_test_support.hpp"

#include <stdlib.h>

#include <tuple>

namespace {

using namespace qx_cli_test;
using args = std::vector<std::string>;

std::string repeat(const std::string& s, int n)
{
    std::string out;
    while (n-- > 0)
        out += s;
    return out;
}

TEST(CliDetect, NamesTheEncodingOfEachFile)
{
    // Valid UTF-8 and ASCII are settled by rule; a byte order mark and Shift_JIS make ICU certain.
    const std::tuple<std::string, std::string> cases[] = {
        {sample_path("beyond-latin1.utf-8.txt"), "UTF-8"},
        {sample_path("japanese.shift_jis.txt"), "Shift_JIS"},
        {sample_path("mixed.utf-16le-bom.txt"), "UTF-16LE"},
        {scratch_file("ascii.txt", "plain text\n"), "UTF-8"},
        {scratch_file("empty.txt", ""), "UTF-8"},
    };
    args call{"detect"};
    std::string expected;
    for (const auto& [path, encoding] : cases) {
        call.push_back(path);
        expected += path + ": " + encoding + "\n";
    }
    const run_result r = run_tool(call);
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, expected);
    EXPECT_EQ(r.err, "");
}

TEST(CliDetect, CutsALongFileAtACharacterBoundary)
{
    const std::string validated = "Validated encoding: UTF-8\n", ascii = "";
    const std::string detector = "Autodetecting encoding for ";
    // content, --bytes, how the diagnostics start: the UTF-8 test passes only on whole characters
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"a" + repeat("\xC3\xA9", 10), "2", ascii},                  // one byte of two dropped
        {"a" + repeat("\xC3\xA9", 10), "4", validated},              // again, after a whole one
        {repeat("\xE4\xB8\xAD", 10), "4", validated},               // one byte of three
        {repeat("\xE4\xB8\xAD", 10), "5", validated},               // two bytes of three
        {repeat("\xF0\x9F\x98\x80", 10), "7", validated},           // three bytes of four
        {repeat("\xF0\x9F\x98\x80", 10), "8", validated},           // a whole character
        {"a\xC3", "2", detector},                                    // the whole file: not cut
        {"ab\xC3", "3", detector},
    };
    int n = 0;
    for (const auto& [content, bytes, start] : cases) {
        const std::string path = scratch_file("cut" + std::to_string(n++) + ".txt", content);
        const run_result r = run_tool({"detect", "--diag", "--bytes", bytes, path});
        EXPECT_EQ(r.status, 0) << r.err;
        if (start == detector) {
            EXPECT_EQ(r.out.rfind(detector + path + "\n", 0), 0u) << r.out;
        } else {
            EXPECT_EQ(r.out, start + path + ": UTF-8\n") << bytes;
        }
    }
}

TEST(CliDetect, ShowsTheDiagnosticsOnlyWithDiag)
{
    const std::string path = sample_path("japanese.shift_jis.txt");
    const run_result shown = run_tool({"detect", "--diag", path});
    EXPECT_EQ(shown.status, 0) << shown.err;
    EXPECT_EQ(shown.out.rfind("Autodetecting encoding for " + path + "\nMatch[0] (100) Shift_JIS\n", 0), 0u)
        << shown.out;
    const std::string tail = "Detected encoding: Shift_JIS\n" + path + ": Shift_JIS\n";
    EXPECT_EQ(shown.out.substr(shown.out.size() - std::min(tail.size(), shown.out.size())), tail) << shown.out;

    // The variable alone turns nothing on in the tool.
    ::setenv("QX_CHARSET_DETECT_DIAG", "1", 1);
    const run_result hidden = run_tool({"detect", path});
    ::unsetenv("QX_CHARSET_DETECT_DIAG");
    EXPECT_EQ(hidden.out, path + ": Shift_JIS\n");
}

TEST(CliDetect, ReadsStandardInput)
{
    const std::string sjis = "\x93\xfa\x96\x7b\x8c\xea\x82\xcc\x95\xb6\x8f\xcd\x82\xc5\x82\xb7\x81\x42";
    for (const args& call : {args{"detect"}, args{"detect", "-"}}) {
        const run_result r = run_tool(call, repeat("caf\xC3\xA9\n", 3));
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(r.out, "<stdin>: UTF-8\n");
    }
    EXPECT_EQ(run_tool({"detect", "-"}, repeat(sjis, 20)).out, "<stdin>: Shift_JIS\n");
}

TEST(CliDetect, ReportsUnreadableFilesAndGoesOn)
{
    const std::string good = sample_path("beyond-latin1.utf-8.txt");
    const std::string missing = scratch_dir() + "/no-such-file";
    const run_result r = run_tool({"detect", missing, scratch_dir(), good});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, good + ": UTF-8\n");
    EXPECT_EQ(count_lines(r.err), 2u) << r.err;
    EXPECT_NE(r.err.find("detect: " + missing + ": No such file or directory"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("detect: " + scratch_dir() + ": Is a directory"), std::string::npos) << r.err;
}

TEST(CliDetect, RefusesABadCommandLine)
{
    const args calls[] = {
        {"detect", "--bytes", "0"},         {"detect", "--bytes", "abc"},  {"detect", "--bytes", "-5"},
        {"detect", "--bytes=1073741825"},   {"detect", "--bytes", "12k"},  {"detect", "--bytes"},
        {"detect", "--nope", "x"},
    };
    for (const args& call : calls) {
        const run_result r = run_tool(call);
        EXPECT_EQ(r.status, 2) << call.back();
        EXPECT_EQ(r.out, "");
        EXPECT_EQ(count_lines(r.err), 1u) << r.err;
    }
    const run_result help = run_tool({"detect", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.out.rfind("Usage: qxi18n detect", 0), 0u);
}

TEST(CliDetect, DemoSectionNamesTheCertainSamples)
{
    const run_result r = run_tool({"demo"});
    ASSERT_EQ(r.status, 0) << r.err;
    const std::size_t section = r.out.find(". Charset detection\n");
    ASSERT_NE(section, std::string::npos) << r.out;
    const std::string text = r.out.substr(section, r.out.find("\n\n9. ", section) - section);
    for (const char* sample : {"beyond-latin1.utf-8.txt", "japanese.shift_jis.txt", "mixed.utf-16le-bom.txt",
                               "corpus/korean.txt as EUC-KR"}) {
        const std::size_t line = text.find("  " + std::string(sample) + " ");
        ASSERT_NE(line, std::string::npos) << sample << " not in\n" << text;
        EXPECT_EQ(text.substr(text.find('\n', line) - 5, 5), "right") << text.substr(line, 80);
    }
}

}  // namespace

// `qxi18n detect` end to end: results per file and for stdin, the cut of the leading block, the
// diagnostics of --diag, and the failure paths.
#include "cli_test_support.hpp"

#include <tuple>

namespace {

using namespace qx_cli_test;

std::string repeat(const std::string& s, int n)
{
    std::string out;
    while (n-- > 0) out += s;
    return out;
}

// Valid UTF-8 and ASCII are settled by rule; a byte order mark and Shift_JIS make ICU certain. A
// file that cannot be read is reported and the others are still shown.
TEST(CliDetect, NamesTheEncodingOfEachFile)
{
    const std::string missing = scratch_dir() + "/no-such-file";
    args call{"detect", missing};
    std::string expected;
    for (const auto& [path, encoding] : std::initializer_list<std::pair<std::string, std::string>>{
             {sample_path("beyond-latin1.utf-8.txt"), "UTF-8"},  {sample_path("japanese.shift_jis.txt"), "Shift_JIS"},
             {sample_path("mixed.utf-16le-bom.txt"), "UTF-16LE"}, {scratch_file("ascii.txt", "plain text\n"), "UTF-8"},
             {scratch_file("empty.txt", ""), "UTF-8"}}) {
        call.push_back(path);
        expected += path + ": " + encoding + "\n";
    }
    call.push_back(scratch_dir());
    const run_result r = run_tool(call);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, expected);
    EXPECT_EQ(r.err, "qxi18n: detect: " + missing + ": No such file or directory\nqxi18n: detect: " + scratch_dir() +
                         ": Is a directory\n");

    const std::string sjis = "\x93\xfa\x96\x7b\x8c\xea\x82\xcc\x95\xb6\x8f\xcd\x82\xc5\x82\xb7\x81\x42";
    expect_run({"detect"}, 0, "<stdin>: UTF-8\n", "", repeat("caf\xC3\xA9\n", 3));
    expect_run({"detect", "-"}, 0, "<stdin>: Shift_JIS\n", "", repeat(sjis, 20));
}

TEST(CliDetect, CutsALongFileAtACharacterBoundary)
{
    const std::string validated = "Validated encoding: UTF-8\n", detector = "Autodetecting encoding for ";
    // content, --bytes, how the diagnostics start: the UTF-8 test passes only on whole characters
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"a" + repeat("\xC3\xA9", 10), "2", ""},              // one byte of two dropped: ASCII
        {"a" + repeat("\xC3\xA9", 10), "4", validated},       // again, after a whole one
        {repeat("\xE4\xB8\xAD", 10), "4", validated},        // one byte of three
        {repeat("\xE4\xB8\xAD", 10), "5", validated},        // two bytes of three
        {repeat("\xF0\x9F\x98\x80", 10), "7", validated},    // three bytes of four
        {repeat("\xF0\x9F\x98\x80", 10), "8", validated},    // a whole character
        {"a\xC3", "2", detector},                             // the whole file: not cut
        {"ab\xC3", "3", detector},
    };
    int n = 0;
    for (const auto& [content, bytes, start] : cases) {
        const std::string path = scratch_file("cut" + std::to_string(n++) + ".txt", content);
        const run_result r = run_tool({"detect", "--diag", "--bytes", bytes, path});
        EXPECT_EQ(r.status, 0) << r.err;
        if (start == detector)
            EXPECT_EQ(r.out.rfind(detector + path + "\n", 0), 0u) << r.out;
        else
            EXPECT_EQ(r.out, start + path + ": UTF-8\n") << bytes;
    }
}

// The variable alone turns nothing on in the tool.
TEST(CliDetect, ShowsTheDiagnosticsOnlyWithDiag)
{
    const std::string path = sample_path("japanese.shift_jis.txt");
    const run_result shown = run_tool({"detect", "--diag", path});
    EXPECT_EQ(shown.status, 0) << shown.err;
    EXPECT_EQ(shown.out.rfind("Autodetecting encoding for " + path + "\nMatch[0] (100) Shift_JIS\n", 0), 0u) << shown.out;
    const std::string tail = "Detected encoding: Shift_JIS\n" + path + ": Shift_JIS\n";
    EXPECT_EQ(shown.out.substr(shown.out.size() - std::min(tail.size(), shown.out.size())), tail) << shown.out;
    const scoped_env diagnostics("QX_CHARSET_DETECT_DIAG", "1");
    expect_run({"detect", path}, 0, path + ": Shift_JIS\n");
}

TEST(CliDetect, RefusesABadCommandLine)
{
    for (const std::string bytes : {"--bytes=0", "--bytes=abc", "--bytes=-5", "--bytes=1073741825", "--bytes=12k"})
        expect_run({"detect", bytes}, 2, "", "qxi18n: detect: --bytes must be a number from 1 to 1073741824");
    expect_run({"detect", "--bytes"}, 2, "", "qxi18n: detect: option '--bytes' needs a value");
    expect_run({"detect", "--nope", "x"}, 2, "", "qxi18n: detect: unknown option '--nope'");
}

}  // namespace

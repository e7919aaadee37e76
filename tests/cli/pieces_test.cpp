// `qxi18n convert` reads in pieces cut at line ends: inputs larger than a piece, UTF-16 and
// UTF-32 units that hold the byte 0A, lines longer than a piece, and seeded random input.
#include "cli_test_support.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace qx_cli_test;

// Lines of 1 to 120 characters drawn from ASCII, Latin, Greek, CJK and a supplementary
// character; "ਅ一" puts 0A 00 at an odd offset in UTF-16LE, "Ċ" 0A 01 at an even one.
std::string random_utf8_lines(std::mt19937& rng, std::size_t min_bytes)
{
    const char* const pieces[] = {"a", "Z", " ", "\xC3\xA9", "\xCE\xA9", "\xE4\xB8\x80",
                                  "\xE0\xA8\x85\xE4\xB8\x80", "\xC4\x8A", "\xE0\xA8\x8A",
                                  "\xF0\x9F\x99\x82"};
    std::uniform_int_distribution<std::size_t> pick(0, std::size(pieces) - 1);
    std::uniform_int_distribution<int> length(1, 120);
    std::string text;
    while (text.size() < min_bytes) {
        for (int n = length(rng); n > 0; --n)
            text += pieces[pick(rng)];
        text += '\n';
    }
    return text;
}

struct large_case {
    const char* to;
    const char* piece_size;
};

// A few hundred KiB through the default pieces and through odd small ones, in UTF-8 and in
// UTF-16 and UTF-32 with and without a byte order mark.
TEST(CliConvertPieces, LargeInputMatchesIcu)
{
    const unsigned seed = 20240611;
    std::mt19937 rng(seed);
    const std::string text = random_utf8_lines(rng, 300 * 1024);
    const std::string input = scratch_file("large.utf8", text);
    const large_case cases[] = {{"UTF-16LE", "65536"}, {"UTF-16BE", "4097"}, {"UTF-16", "65536"},
                                {"UTF-32", "65535"},   {"GB18030", "1000"},  {"UTF-8", "65536"}};
    for (const large_case& c : cases) {
        SCOPED_TRACE(std::string(c.to) + " piece " + c.piece_size + " seed " + std::to_string(seed));
        const std::string opt = std::string("--piece-size=") + c.piece_size;
        const run_result there = run_tool({"convert", "-f", "UTF-8", "-t", c.to, opt, input});
        ASSERT_EQ(there.status, 0) << there.err;
        ASSERT_EQ(there.out, icu_convert(c.to, "UTF-8", text));
        const std::string encoded = scratch_file("large.encoded", there.out);
        const run_result back = run_tool({"convert", "-f", c.to, "-t", "UTF-8", opt, encoded});
        ASSERT_EQ(back.status, 0) << back.err;
        EXPECT_TRUE(back.out == text) << "first difference at byte "
                                       << std::mismatch(back.out.begin(), back.out.end(),
                                                        text.begin(), text.end()).first - back.out.begin();
    }
}

// Every piece size from 1 to 13 bytes on a short text: each cut falls somewhere else.
TEST(CliConvertPieces, EveryCutOfAShortText)
{
    const std::string text = "\xE0\xA8\x85\xE4\xB8\x80\n\nab\xF0\x9F\x99\x82\n\xC4\x8A\xE0\xA8\x8A\nlast";
    for (const char* encoding : {"UTF-8", "UTF-16LE", "UTF-16BE", "UTF-32LE", "GB18030"}) {
        const std::string encoded = icu_convert(encoding, "UTF-8", text);
        const std::string path = scratch_file("short.encoded", encoded);
        for (int piece = 1; piece <= 13; ++piece) {
            SCOPED_TRACE(std::string(encoding) + " piece " + std::to_string(piece));
            const run_result r = run_tool({"convert", "-f", encoding, "-t", "UTF-8",
                                           "--piece-size=" + std::to_string(piece), path});
            EXPECT_EQ(r.status, 0) << r.err;
            EXPECT_EQ(printable(r.out), printable(text));
        }
    }
}

// A line longer than several pieces is kept whole; lines after it still count.
TEST(CliConvertPieces, LineLongerThanAPiece)
{
    const std::string long_line(200 * 1024, 'x');
    const std::string text = "short\n" + long_line + "\xC3\xA9\nafter\n";
    const run_result r = run_tool_with_input({"convert", "-f", "UTF-8", "-t", "UTF-16BE"}, text);
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(r.out == icu_convert("UTF-16BE", "UTF-8", text));

    const std::string bad = "short\n" + long_line + "\xFF\nafter\n";
    const run_result stop = run_tool_with_input({"convert", "-f", "UTF-8", "-t", "UTF-8"}, bad);
    EXPECT_EQ(stop.status, 1);
    EXPECT_EQ(stop.out, "short\n");
    EXPECT_EQ(stop.err, "qxi18n: <stdin>:2: invalid or unmappable character sequence\n");
}

// The reported line counts every piece before the bad one, and all lines before it are written.
TEST(CliConvertPieces, BadLineFarIntoTheInput)
{
    std::mt19937 rng(7);
    const std::string head = random_utf8_lines(rng, 250 * 1024);
    const std::size_t lines = count_lines(head);
    struct bad_case {
        const char* from;
        std::string bad_line;
    } const cases[] = {
        {"UTF-8", "bad \xED\xA0\x80 surrogate\n"},
        {"UTF-16LE", std::string("\x3D\xD8!\0\n\0", 6)},  // a lead surrogate before "!"
    };
    for (const bad_case& c : cases) {
        SCOPED_TRACE(c.from);
        const std::string good = icu_convert(c.from, "UTF-8", head);
        const std::string tail = icu_convert(c.from, "UTF-8", "more\n");
        const std::string path = scratch_file("far.txt", good + c.bad_line + tail);
        const run_result r = run_tool({"convert", "-f", c.from, "-t", "UTF-8", path});
        EXPECT_EQ(r.status, 1);
        EXPECT_EQ(r.err, "qxi18n: " + path + ":" + std::to_string(lines + 1)
                             + ": invalid or unmappable character sequence\n");
        EXPECT_TRUE(r.out == head) << "wrote " << r.out.size() << " of " << head.size() << " bytes";
    }
}

// Memory stays small however large the input: 24 MiB pass through in pieces, while holding
// the input whole would take more than that by itself.
TEST(CliConvertPieces, MemoryStaysSmall)
{
#ifdef QXI18N_TOOL_SANITIZED
    GTEST_SKIP() << "the sanitizers' shadow memory makes peak memory meaningless here";
#endif
    std::mt19937 rng(3);
    const std::string path = scratch_file("huge.txt", "");
    {
        // Written block by block: the child's peak memory counts this process's too until exec.
        const std::string block = random_utf8_lines(rng, 1024 * 1024);
        std::ofstream out(path, std::ios::binary);
        for (int i = 0; i < 24; ++i)
            out.write(block.data(), static_cast<std::streamsize>(block.size()));
        ASSERT_TRUE(out.good());
    }
    const run_result r = run_tool_writing_to({"convert", "-f", "UTF-8", "-t", "UTF-16LE", path}, "/dev/null");
    std::remove(path.c_str());
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_LT(r.max_rss_kib, 16 * 1024) << "peak resident memory in KiB";
}

// Random bytes with line feeds never crash the tool: every run ends with 0 or 1 and at most
// one line on stderr; the lenient modes always succeed.
TEST(CliConvertRobustness, RandomBytes)
{
    const unsigned seed = 99;
    std::mt19937 rng(seed);
    std::uniform_int_distribution<int> byte(0, 255);
    const char* const encodings[] = {"UTF-8", "UTF-16", "UTF-32", "Shift_JIS", "ISO-2022-JP",
                                     "UTF-7", "GB18030", "SCSU", "IMAP-mailbox-name"};
    for (int round = 0; round < 18; ++round) {
        std::string input;
        for (int i = 0; i < 3000; ++i)
            input += (i % 37 == 0) ? '\n' : static_cast<char>(byte(rng));
        const char* from = encodings[static_cast<std::size_t>(round) % std::size(encodings)];
        for (const char* mode : {"stop", "substitute", "escape-c"}) {
            SCOPED_TRACE(std::string(from) + " " + mode + " round " + std::to_string(round)
                         + " seed " + std::to_string(seed));
            const run_result r = run_tool_with_input(
                {"convert", "-f", from, "-t", "windows-1252", "--piece-size=101",
                 std::string("--on-error=") + mode}, input);
            EXPECT_EQ(r.signal, 0);
            EXPECT_TRUE(r.status == 0 || r.status == 1) << r.status;
            EXPECT_LE(count_lines(r.err), 1u) << r.err;
            if (std::string(mode) != "stop") {
                EXPECT_EQ(r.status, 0) << r.err;
            }
        }
    }
}

// Cutting at line ends changes nothing for encodings without state: random bytes read in
// tiny pieces and substituted give exactly what raw ICU gives for the whole input.
TEST(CliConvertRobustness, LenientPiecesMatchIcuOnRandomBytes)
{
    const unsigned seed = 4242;
    std::mt19937 rng(seed);
    std::uniform_int_distribution<int> byte(0, 255);
    const char* const encodings[] = {"UTF-8",     "UTF-16LE", "UTF-16BE", "UTF-32LE", "UTF-16",
                                     "Shift_JIS", "EUC-JP",   "GB18030",  "Big5",     "ibm-037"};
    for (const char* from : encodings) {
        std::string input;
        for (int i = 0; i < 4000; ++i)
            input += (i % 29 == 0) ? '\n' : static_cast<char>(byte(rng));
        const std::string path = scratch_file("random.bin", input);
        const std::string expected = icu_convert("UTF-8", from, input);
        for (const char* piece : {"1", "7", "100"}) {
            SCOPED_TRACE(std::string(from) + " piece " + piece + " seed " + std::to_string(seed));
            const run_result r = run_tool({"convert", "-f", from, "-t", "UTF-8", "--on-error=substitute",
                                           std::string("--piece-size=") + piece, path});
            EXPECT_EQ(r.status, 0) << r.err;
            EXPECT_TRUE(r.out == expected) << "first difference at byte "
                                           << std::mismatch(r.out.begin(), r.out.end(), expected.begin(),
                                                            expected.end()).first - r.out.begin();
        }
    }
}

}  // namespace

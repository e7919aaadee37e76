// `qxi18n convert` streams input read in blocks cut anywhere: inputs larger than a block, UTF-16
// and UTF-32 units that hold the byte 0A, every block size on a short text, the same report at
// every block size, memory, and seeded random input.
#include "cli_test_support.hpp"

#include <fstream>
#include <random>

namespace {

using namespace qx_cli_test;

// Lines of 1 to 120 characters drawn from ASCII, Latin, Greek, CJK and a supplementary
// character; "ਅ一" puts 0A 00 at an odd offset in UTF-16LE, "Ċ" 0A 01 at an even one.
std::string random_utf8_lines(std::mt19937& rng, std::size_t min_bytes)
{
    const char* const pieces[] = {"a", "Z", " ", "\xC3\xA9", "\xCE\xA9", "\xE4\xB8\x80", "\xE0\xA8\x85\xE4\xB8\x80",
                                  "\xC4\x8A", "\xE0\xA8\x8A", "\xF0\x9F\x99\x82"};
    std::string text;
    while (text.size() < min_bytes) {
        for (auto n = std::uniform_int_distribution<int>(1, 120)(rng); n > 0; --n)
            text += pieces[std::uniform_int_distribution<std::size_t>(0, std::size(pieces) - 1)(rng)];
        text += '\n';
    }
    return text;
}

// A few hundred KiB through the default pieces and odd small ones, with and without a byte
// order mark; then every piece size from 1 to 13 bytes on a short text, each cut elsewhere.
TEST(CliConvertPieces, LargeInputAndEveryCutMatchIcu)
{
    std::mt19937 rng(20240611);
    const std::string large = random_utf8_lines(rng, 300 * 1024);
    const std::string small = "\xE0\xA8\x85\xE4\xB8\x80\n\nab\xF0\x9F\x99\x82\n\xC4\x8A\xE0\xA8\x8A\nlast";
    std::vector<std::tuple<const std::string*, const char*, int>> cases = {
        {&large, "UTF-16LE", 65536}, {&large, "UTF-16BE", 4097}, {&large, "UTF-16", 65536},
        {&large, "UTF-32", 65535},   {&large, "GB18030", 1000},  {&large, "UTF-8", 65536}};
    for (const char* encoding : {"UTF-8", "UTF-16LE", "UTF-16BE", "UTF-32LE", "GB18030"})
        for (int piece = 1; piece <= 13; ++piece) cases.emplace_back(&small, encoding, piece);
    for (const auto& [text, encoding, piece] : cases) {
        const std::string size = "--piece-size=" + std::to_string(piece);
        const std::string there = icu_convert(encoding, "UTF-8", *text);
        expect_run({"convert", "-f", "UTF-8", "-t", encoding, size, scratch_file("text.utf8", *text)}, 0, there);
        expect_run({"convert", "-f", encoding, "-t", "UTF-8", size, scratch_file("enc", there)}, 0, *text);
    }
}

// Stop mode gives the same output and the same report whatever the block size, in the UTF-16
// stage and the lenient UTF-8 path alike, with the bad sequence split by a block boundary too:
// the reported line counts every block before the bad one, and all lines before it are written.
TEST(CliConvertPieces, EveryBlockSizeGivesTheSameResult)
{
    std::mt19937 rng(11);
    const std::string head = random_utf8_lines(rng, 20 * 1024);
    const std::string input = scratch_file("blocks.txt", head + "tail \xE2\x82\xAC \xF0\x9F\x99\n\xC3\xA9\n");
    const std::string report = "qxi18n: " + input + ":" + std::to_string(count_lines(head) + 1) + ": invalid or unmappable character sequence\n";
    for (const std::string piece : {"1", "2", "3", "7", "4093", "65537"}) {
        expect_run({"convert", "-f", "UTF-8", "-t", "GB18030", "--piece-size=" + piece, input}, 1,
                   icu_convert("GB18030", "UTF-8", head), report);
        expect_run({"convert", "-f", "UTF-8", "-t", "UTF-8", "--on-error=escape-c", "--piece-size=" + piece, input}, 0,
                   icu_convert("UTF-8", "UTF-8", read_file(input)));
    }
}

// Memory stays small however large the input: 24 MiB pass through in blocks, while holding
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
        for (int i = 0; i < 24; ++i) out.write(block.data(), static_cast<std::streamsize>(block.size()));
        ASSERT_TRUE(out.good());
    }
    const run_result r = run_tool({"convert", "-f", "UTF-8", "-t", "UTF-16LE", path}, std::nullopt, "/dev/null");
    std::remove(path.c_str());
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_LT(r.max_rss_kib, 16 * 1024) << "peak resident memory in KiB";
}

// Random bytes with line feeds never crash the tool: every run ends with 0 or 1 and at most one
// line on stderr. Substituting in tiny blocks gives what raw ICU gives for the whole input, in
// stateful encodings too.
TEST(CliConvertRobustness, RandomBytes)
{
    std::mt19937 rng(4242);
    for (const char* from : {"UTF-8", "UTF-16LE", "UTF-16BE", "UTF-32LE", "UTF-16", "UTF-32", "Shift_JIS", "EUC-JP",
                             "GB18030", "Big5", "ibm-037", "ISO-2022-JP", "UTF-7", "SCSU", "IMAP-mailbox-name"}) {
        std::string input;
        for (int i = 0; i < 3000; ++i) input += (i % 29 == 0) ? '\n' : static_cast<char>(rng() & 0xFF);
        const std::string path = scratch_file("random.bin", input), expected = icu_convert("UTF-8", from, input);
        for (const std::string mode : {"stop", "substitute", "escape-c"})
            for (const std::string piece : {"1", "7", "101"}) {
                SCOPED_TRACE(std::string(from) + " " + mode + " piece " + piece);
                const run_result r = run_tool({"convert", "-f", from, "-t", mode == "substitute" ? "UTF-8" : "windows-1252",
                                               "--on-error=" + mode, "--piece-size=" + piece, path});
                EXPECT_EQ(r.signal, 0);
                EXPECT_TRUE(r.status == 0 || (r.status == 1 && mode == "stop")) << r.status << " " << r.err;
                EXPECT_LE(count_lines(r.err), 1u) << r.err;
                EXPECT_TRUE(mode != "substitute" || r.out == expected);
            }
    }
}

}  // namespace

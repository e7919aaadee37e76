// `qxi18n detect`: the encoding of each file, guessed by the library from its leading bytes.
#include "detect.hpp"

#include "cli.hpp"

#include <fl/i18n/charset_detection.hpp>
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <vector>

namespace qxi18n_tool {

namespace {

constexpr std::size_t max_detection_bytes = std::size_t{1} << 30;

void print_help()
{
    std::printf(
        "Usage: qxi18n detect [--diag] [--bytes N] [FILE...]\n\n"
        "Guesses the encoding of each FILE with detect_charset and prints \"FILE: ENCODING\".\n"
        "With no FILE, or for \"-\", reads standard input (shown as <stdin>).\n\n"
        "Only the first N bytes are looked at. When a file is longer, the block is cut back\n"
        "so that it does not end inside a UTF-8 character, which would fail the UTF-8 test.\n"
        "Pure ASCII gives UTF-8 (or the system's encoding when QX_USE_DEFAULT_CHARSET_FOR_ASCII\n"
        "is set), valid UTF-8 gives UTF-8, and the rest is left to ICU's detector: its best\n"
        "match is taken only when it is certain or leads clearly, else the answer is the\n"
        "system locale's encoding. The QX_CHARSET_DETECT_* variables tune this.\n\n"
        "Options:\n"
        "      --diag       show the detection's steps and ICU's matches before each result.\n"
        "                   It sets QX_CHARSET_DETECT_DIAG for this process, since the library\n"
        "                   reads that variable once, at its first detection; without --diag\n"
        "                   nothing is shown even when the variable is set. With\n"
        "                   QX_NO_CHARSET_DETECTION set there is nothing to show.\n"
        "      --bytes=N    leading bytes to look at, 1 to 1073741824 (default 65536)\n"
        "  -h, --help       show this help\n\n"
        "A FILE that cannot be read is reported and skipped; the others are still shown and\n"
        "the exit status is 1.\n\n"
        "Exit status: 0 success, 1 a file could not be read, 2 bad usage.\n");
}

std::size_t parse_bytes(const std::string& text)
{
    char* end = nullptr;
    errno = 0;
    const unsigned long long value = text.empty() || text[0] == '-' ? 0 : std::strtoull(text.c_str(), &end, 10);
    if (value == 0 || errno != 0 || *end != '\0' || value > max_detection_bytes)
        throw usage_error("detect", "--bytes must be a number from 1 to 1073741824");
    return static_cast<std::size_t>(value);
}

struct file_closer {
    void operator()(std::FILE* f) const noexcept { std::fclose(f); }
};

// Returns false after reporting a file that cannot be read.
bool detect_one(const std::string& operand, std::size_t limit, std::ostream& diagnostics)
{
    const bool standard_input = operand == "-";
    const std::string name = standard_input ? "<stdin>" : operand;
    std::unique_ptr<std::FILE, file_closer> file;
    if (!standard_input) {
        file.reset(std::fopen(operand.c_str(), "rb"));
        if (!file) {
            report("detect: " + name + ": " + std::strerror(errno));
            return false;
        }
    }
    std::string block;
    try {
        block = read_leading_block(standard_input ? stdin : file.get(), name, limit);
    } catch (const read_error& e) {
        report(std::string("detect: ") + e.what());
        return false;
    }
    // The name only labels the diagnostics: bytes the locale cannot decode are substituted.
    const std::u16string label = fl::i18n::to_ustring(name, fl::i18n::codecvt_string_to_ustring("", true));
    const std::string encoding = fl::i18n::detect_charset(block.data(), block.size(), diagnostics, label);
    diagnostics.flush();
    std::printf("%s: %s\n", name.c_str(), encoding.c_str());
    return true;
}

}  // namespace

std::size_t cut_at_utf8_boundary(const char* data, std::size_t size)
{
    std::size_t start = size;
    while (start > 0 && size - start < 3 && (static_cast<unsigned char>(data[start - 1]) & 0xC0) == 0x80)
        --start;
    if (start == 0)
        return size;
    const auto lead = static_cast<unsigned char>(data[start - 1]);
    const std::size_t length = lead >= 0xC2 && lead <= 0xDF ? 2 : lead >= 0xE0 && lead <= 0xEF ? 3
                               : lead >= 0xF0 && lead <= 0xF4 ? 4 : 0;
    const std::size_t present = size - start + 1;
    return length != 0 && present < length ? start - 1 : size;
}

std::string read_leading_block(std::FILE* in, const std::string& name, std::size_t limit)
{
    // One byte more than asked tells whether the block is all of the input.
    std::string block(limit + 1, '\0');
    std::size_t got = 0;
    while (got < block.size()) {
        const std::size_t n = std::fread(block.data() + got, 1, block.size() - got, in);
        got += n;
        if (n == 0)
            break;
    }
    if (std::ferror(in))
        throw read_error(name + ": " + std::strerror(errno));
    block.resize(got > limit ? cut_at_utf8_boundary(block.data(), limit) : got);
    return block;
}

int run_detect(int argc, char** argv)
{
    arguments args(argc, argv, "detect");
    bool diag = false;
    std::size_t limit = default_detection_bytes;
    std::string value;
    std::vector<std::string> files;
    while (args.more()) {
        if (args.help()) {
            print_help();
            return exit_ok;
        }
        if (args.flag(nullptr, "--diag"))
            diag = true;
        else if (args.option(nullptr, "--bytes", value))
            limit = parse_bytes(value);
        else
            files.push_back(args.operand());
    }
    if (files.empty())
        files.emplace_back("-");
    // The library reads the variable once, at the first detection of the process: set it before.
    if (diag)
        ::setenv("QX_CHARSET_DETECT_DIAG", "1", 1);
    std::ostream discard(nullptr);
    std::ostream& diagnostics = diag ? std::cout : discard;

    int status = exit_ok;
    for (const std::string& file : files)
        if (!detect_one(file, limit, diagnostics))
            status = exit_data_error;
    return status;
}

}  // namespace qxi18n_tool

// `qxi18n convert`: text from one encoding to another, in bounded pieces, with a chosen error policy.
#include "cli.hpp"
#include "transcoder.hpp"

#include <fl/i18n/conversion_error.hpp>
#include <fl/i18n/locale.hpp>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace qxi18n_tool {

namespace {

using namespace fl::i18n;

constexpr std::size_t max_piece_size = std::size_t{1} << 30;

void print_help()
{
    std::printf(
        "Usage: qxi18n convert -f FROM -t TO [--on-error=MODE] [--piece-size=BYTES] [FILE...]\n\n"
        "Converts each FILE from the encoding FROM to the encoding TO and writes the\n"
        "result to standard output. With no FILE, or for \"-\", reads standard input.\n"
        "Encoding names and aliases are ICU's: see 'qxi18n list-encodings'. An empty\n"
        "name (-f '') is the library's default encoding, that of its global locale.\n"
        "-f auto guesses the encoding of each input from its first 64 KiB.\n\n"
        "Options:\n"
        "  -f, --from=ENCODING     encoding of the input, or auto\n"
        "  -t, --to=ENCODING       encoding of the output\n"
        "      --on-error=MODE     what happens to a malformed or unmappable sequence:\n"
        "        stop              (default) stop at the first one, report it as\n"
        "                          FILE:LINE and exit with status 1; every line\n"
        "                          before it is written\n"
        "        substitute        replace it: U+FFFD when reading, the substitution\n"
        "                          character of TO when writing\n"
        "        escape-icu        %%Uhhhh\n"
        "        escape-java       \\uhhhh\n"
        "        escape-c          \\uhhhh, \\Uhhhhhhhh\n"
        "        escape-xml-dec    &#DDDD;\n"
        "        escape-xml-hex    &#xhhhh;\n"
        "        escape-unicode    {U+hhhh}\n"
        "        escape-css2       \\hhhh and a space\n"
        "                          escapes apply when writing; a malformed input\n"
        "                          sequence becomes U+FFFD, escaped if TO lacks it\n"
        "      --piece-size=BYTES  bytes read at a time (default 65536)\n"
        "  -h, --help              show this help\n\n"
        "Input is streamed: read in blocks cut anywhere, with a character split between\n"
        "two blocks carried over, so memory stays small however large the input is, in\n"
        "every encoding, stateful ones (ISO-2022-*, HZ, UTF-7, ...) included. The byte\n"
        "order mark of \"UTF-16\" or \"UTF-32\" input is read at the start of each file.\n"
        "All inputs make one output stream: a mark or an opening shift of TO is written\n"
        "once. Lines are counted by line feeds (U+000A) of the decoded text. In stop\n"
        "mode an unfinished line is held back until its end; a line of more than\n"
        "524288 UTF-16 units goes out in parts, so its beginning may be written before\n"
        "a bad sequence in it is reported.\n\n"
        "A missing or unreadable FILE is reported and skipped; the other files are\n"
        "still converted and the exit status is 1. In stop mode the first bad sequence\n"
        "ends the run.\n\n"
        "Exit status: 0 success, 1 bad data or a file error, 2 bad usage or an unknown\n"
        "encoding.\n");
}

codecvt_call_back_mode parse_mode(const std::string& name)
{
    for (const error_mode& m : error_modes)
        if (name == m.name)
            return m.mode;
    throw usage_error("convert", "unknown error mode '" + name + "'");
}

std::size_t parse_piece_size(const std::string& text)
{
    std::size_t value = 0;
    bool valid = !text.empty() && text.size() <= 10;
    for (const char c : text) {
        valid = valid && c >= '0' && c <= '9';
        if (valid)
            value = value * 10 + static_cast<std::size_t>(c - '0');
    }
    if (!valid || value == 0 || value > max_piece_size)
        throw usage_error("convert", "piece size must be a number of bytes from 1 to 1073741824");
    return value;
}

struct file_closer {
    void operator()(std::FILE* f) const noexcept { std::fclose(f); }
};
using file_ptr = std::unique_ptr<std::FILE, file_closer>;

// Converts the files in order; in stop mode the first bad sequence ends the run.
int convert_files(transcoder& engine, const std::vector<std::string>& files)
{
    int status = exit_ok;
    for (const std::string& name : files) {
        try {
            if (name == "-") {
                if (!engine.run(stdin, "<stdin>"))
                    return exit_data_error;
                continue;
            }
            const file_ptr file(std::fopen(name.c_str(), "rb"));
            if (!file) {
                report(name + ": " + std::strerror(errno));
                status = exit_data_error;
                continue;
            }
            if (!engine.run(file.get(), name))
                return exit_data_error;
        } catch (const read_error& e) {
            report(e.what());
            status = exit_data_error;
        } catch (const CvtInvalidEncodingName& e) {
            report(name + ": cannot open the encoding '" + e.get_encoding_name() + "'");
            status = exit_data_error;
        }
    }
    return status;
}

}  // namespace

int run_convert(int argc, char** argv)
{
    arguments args(argc, argv, "convert");
    convert_settings settings;
    bool have_from = false;
    bool have_to = false;
    std::string value;
    std::vector<std::string> files;
    while (args.more()) {
        if (args.help()) {
            print_help();
            return exit_ok;
        }
        if (args.option("-f", "--from", settings.from))
            have_from = true;
        else if (args.option("-t", "--to", settings.to))
            have_to = true;
        else if (args.option(nullptr, "--on-error", value))
            settings.mode = parse_mode(value);
        else if (args.option(nullptr, "--piece-size", value))
            settings.block_size = parse_piece_size(value);
        else
            files.push_back(args.operand());
    }
    if (!have_from || !have_to)
        throw usage_error("convert", have_from ? "missing -t ENCODING" : "missing -f ENCODING");
    // An empty name is the library's default encoding, that of the global locale.
    for (std::string* encoding : {&settings.from, &settings.to})
        if (encoding->empty())
            *encoding = QxLocale::global().getEncoding();

    std::unique_ptr<transcoder> engine;
    try {
        engine = std::make_unique<transcoder>(settings, stdout);
    } catch (const CvtInvalidEncodingName& e) {
        report("convert: unknown encoding '" + e.get_encoding_name()
               + "' (see 'qxi18n list-encodings')");
        return exit_usage_error;
    }
    if (files.empty())
        files.emplace_back("-");

    const int status = convert_files(*engine, files);
    return engine->finish() ? status : exit_data_error;
}

}  // namespace qxi18n_tool

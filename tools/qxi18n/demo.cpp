// `qxi18n demo`: a short tour of the library on the sample texts shipped with it.
#include "demo.hpp"

#include "cli.hpp"

#include <fl/filesystem/foundation/install_path.hpp>
#include <fl/i18n/conversion.hpp>

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace qxi18n_tool {

namespace demo {

namespace {

struct file_closer {
    void operator()(std::FILE* f) const noexcept { std::fclose(f); }
};
using file_ptr = std::unique_ptr<std::FILE, file_closer>;

}  // namespace

std::string read_sample(const context& ctx, const std::string& file)
{
    const std::string path = ctx.samples + "/" + file;
    const file_ptr in(std::fopen(path.c_str(), "rb"));
    if (!in)
        throw read_error(path + ": " + std::strerror(errno));
    std::string bytes;
    char buffer[4096];
    std::size_t got = 0;
    while ((got = std::fread(buffer, 1, sizeof buffer, in.get())) > 0)
        bytes.append(buffer, got);
    if (std::ferror(in.get()))
        throw read_error(path + ": " + std::strerror(errno));
    return bytes;
}

std::string first_line(const ustring& text)
{
    return fl::i18n::ustring_to_utf8(text.substr(0, text.find(u'\n')));
}

std::string show_latin1(const std::string& bytes)
{
    std::string shown;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || (byte >= 0x7F && byte < 0xA0)) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
            shown += escaped;
        } else if (byte >= 0xA0) {
            shown += static_cast<char>(0xC0 | (byte >> 6));
            shown += static_cast<char>(0x80 | (byte & 0x3F));
        } else {
            shown += c;
        }
    }
    return shown;
}

}  // namespace demo

namespace {

void print_help()
{
    std::printf("Usage: qxi18n demo [--samples DIR]\n\n"
                "A short tour of libqxi18n on the sample texts shipped with it: round trips\n"
                "through ustring in several encodings, byte order marks, and what each error\n"
                "mode does with characters that cannot be converted or bytes that are malformed.\n\n"
                "Options:\n"
                "  --samples DIR   read the samples from DIR instead of\n"
                "                  <installation>/share/qxi18n/samples\n"
                "  -h, --help      show this help\n");
}

bool is_directory(const std::string& path)
{
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

}  // namespace

int run_demo(int argc, char** argv)
{
    arguments args(argc, argv, "demo");
    demo::context ctx;
    while (args.more()) {
        if (args.help()) {
            print_help();
            return exit_ok;
        }
        if (!args.option(nullptr, "--samples", ctx.samples))
            throw usage_error("demo", "unexpected argument '" + args.operand() + "'");
    }
    if (ctx.samples.empty()) {
        const ustring root = fl::filesystem::get_install_path();
        ctx.samples = fl::i18n::ustring_to_utf8(root) + "/share/qxi18n/samples";
    }
    if (!is_directory(ctx.samples)) {
        report("demo: no sample directory at " + ctx.samples + " (try --samples DIR)");
        return exit_data_error;
    }

    std::printf("qxi18n demo: samples from %s\n", ctx.samples.c_str());
    for (std::size_t i = 0; i < demo::section_count; ++i) {
        std::printf("\n%zu. %s\n\n", i + 1, demo::sections[i].title);
        demo::sections[i].show(ctx);
    }
    return exit_ok;
}

}  // namespace qxi18n_tool

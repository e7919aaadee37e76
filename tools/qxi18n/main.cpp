// qxi18n: the command-line face of libqxi18n; this file only dispatches to the subcommands.
#include "cli.hpp"

#include <fl/i18n/initialize.hpp>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <string>

namespace {

using namespace qxi18n_tool;

struct command {
    const char* name;
    const char* summary;
    int (*run)(int argc, char** argv);
};

const command commands[] = {
    {"convert", "convert text from one encoding to another", run_convert},
    {"detect", "guess the encoding of files from their leading bytes", run_detect},
    {"list-encodings", "list the encodings ICU can open, with their aliases", run_list_encodings},
    {"locale", "what the library makes of locale names", run_locale},
    {"encoding", "the standard, ICU and JVM names of encoding names", run_encoding},
    {"info", "what locale management made of this process (status, locales, event log)", run_info},
    {"text", "case, normal forms, diacritics, classes, comparison, search, matching, trimming", run_text},
    {"ls", "list directories, one level or a whole tree, with a wildcard filter", run_ls},
    {"path", "compare paths and validate names by the rules of a volume", run_path},
    {"tmp", "a fresh temporary file name, or a freshly created temporary file", run_tmp},
    {"time", "date-time text, wall-clock times between time zones, zone ids", run_time},
    {"demo", "a short tour of the library on the bundled sample texts", run_demo},
};

void print_help()
{
    std::printf("Usage: qxi18n COMMAND [OPTIONS] [ARGUMENTS]\n"
                "       qxi18n COMMAND --help\n\n"
                "Commands:\n");
    for (const command& c : commands)
        std::printf("  %-16s %s\n", c.name, c.summary);
    std::printf("\nResults go to standard output, errors to standard error, one line each.\n"
                "Exit status: 0 success, 1 bad data or a file that cannot be read or written,\n"
                "2 bad usage (unknown command or option, unknown encoding).\n");
}

// Whatever escapes a subcommand still ends as one line on stderr and a meaningful status.
int run_guarded(const command& c, int argc, char** argv)
{
    try {
        // Every command sees the process as a host would: after the library's start-up.
        fl::i18n::initialize();
        return c.run(argc, argv);
    } catch (const usage_error& e) {
        report(e.what());
        return exit_usage_error;
    } catch (const io_error& e) {
        report(e.what());
        return exit_data_error;
    } catch (const std::bad_alloc&) {
        report(std::string(c.name) + ": out of memory");
        return exit_data_error;
    } catch (const std::exception& e) {
        report(std::string(c.name) + ": " + e.what());
        return exit_data_error;
    }
}

// Output still buffered must reach its destination too; a failure there is a data error,
// reported unless the command already failed (and said so).
int finish(int status)
{
    if (std::fflush(stdout) == 0 && !std::ferror(stdout))
        return status;
    if (status == exit_ok)
        report(std::string("write error on standard output: ") + std::strerror(errno));
    return status == exit_ok ? exit_data_error : status;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        report("missing command (see 'qxi18n --help')");
        return exit_usage_error;
    }
    const std::string name = argv[1];
    if (name == "-h" || name == "--help") {
        print_help();
        return finish(exit_ok);
    }
    for (const command& c : commands)
        if (name == c.name)
            return finish(run_guarded(c, argc - 1, argv + 1));
    report("unknown command '" + name + "' (see 'qxi18n --help')");
    return exit_usage_error;
}

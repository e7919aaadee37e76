// `qxi18n path` (comparing paths and validating names by the rules of a volume) and `qxi18n tmp`
// (temporary names and files), with the file-name helpers the file commands share.
#include "cli.hpp"

#include <fl/filesystem/file_name_conversion.hpp>
#include <fl/filesystem/file_open.hpp>
#include <fl/filesystem/foundation/filesystem_error.hpp>
#include <fl/filesystem/path_rules.hpp>
#include <fl/i18n/character_handling.hpp>
#include <fl/i18n/conversion.hpp>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace qxi18n_tool {

namespace fs = fl::filesystem;

std::u16string file_name_argument(const std::string& arg)
{
    return fl::i18n::to_ustring(arg, fs::codecvt_filesystem_to_ustring(false));
}

std::string describe_failure(const fs::FsysExceptionBase& e)
{
    const std::u16string& path = e.get_path();
    return path.empty() ? e.what() : std::string(e.what()) + ": " + fl::i18n::ustring_to_utf8(path);
}

namespace {

void print_path_help()
{
    std::printf("Usage: qxi18n path compare A B [--mode MASK]\n"
                "       qxi18n path validate NAME [--checks BITS]\n\n"
                "compare   prints \"less\", \"equal\" or \"greater\". Without --mode, A and B must be\n"
                "          absolute; they are put in native form (\"//\" and \".\" go) and compared\n"
                "          unit by unit. With --mode, the names are compared as they stand by MASK,\n"
                "          0 to 31 (decimal or 0x hex): 0 binary, 1 case insensitive, 2 normalised,\n"
                "          3 both, 16 and 17 normalisation insensitive; the locale bit 8 counts only\n"
                "          beside another bit. A pair or mask the library refuses (a relative path,\n"
                "          8 alone, 18) is reported with the library's key and gives status 1.\n"
                "validate  prints \"ok\", or the first check NAME fails: no-null (4), encodable\n"
                "          (1, always checked), path-length (16: 4096 bytes or more) or\n"
                "          component-length (32: a component of 256 bytes or more), counted in\n"
                "          bytes of the file-system encoding. --checks is the sum of the checks to\n"
                "          run (default 53, all of them); a failed check gives status 1.\n\n"
                "Options:\n"
                "  --mode MASK    compare: the character handling mode\n"
                "  --checks BITS  validate: the checks, a sum of 1, 4, 16, 32\n"
                "  -h, --help     show this help\n\n"
                "Exit status: 0 success, 1 a refused comparison or a failed check, 2 bad usage.\n");
}

void print_tmp_help()
{
    std::printf("Usage: qxi18n tmp [--dir D] [--prefix P] [--ext E] [--create]\n\n"
                "Prints a fresh temporary name: D, \"/\", P, 19 random hexadecimal digits and\n"
                "dashes, and \".E\" (no second dot when E starts with one). Nothing is created\n"
                "unless --create is given; then the file is created empty and left in place.\n\n"
                "Options:\n"
                "  --dir D        the directory (default: TMPDIR, TMP, TEMP or /tmp, the first that\n"
                "                 is a writable directory)\n"
                "  --prefix P     text before the random part\n"
                "  --ext E        the extension\n"
                "  --create       create the file (removing it is the caller's business)\n"
                "  -h, --help     show this help\n\n"
                "Exit status: 0 success, 1 no usable directory or the file cannot be created,\n"
                "2 bad usage.\n");
}

unsigned long parse_number(const std::string& command, const char* what, const std::string& text)
{
    errno = 0;
    char* end = nullptr;
    const unsigned long value = std::strtoul(text.c_str(), &end, 0);
    if (text.empty() || *end != '\0' || errno != 0 || text[0] == '-')
        throw usage_error(command, std::string(what) + " '" + text + "' is not a number");
    return value;
}

const char* order(int result) { return result < 0 ? "less" : result > 0 ? "greater" : "equal"; }

int run_compare(const std::vector<std::string>& operands, const std::string& mode)
{
    if (operands.size() != 2)
        throw usage_error("path", "compare takes two paths, A and B");
    const std::u16string a = file_name_argument(operands[0]), b = file_name_argument(operands[1]);
    if (mode.empty()) {
        std::printf("%s\n", order(fs::compare(a, b)));
        return exit_ok;
    }
    const unsigned long mask = parse_number("path", "mode", mode);
    if (mask > 31)
        throw usage_error("path", "mode " + mode + " is above 31");
    std::printf("%s\n", order(fs::compare(a, b, fl::i18n::character_handling_mode_context(static_cast<unsigned>(mask)))));
    return exit_ok;
}

struct check {
    fs::validation_id bit;
    const char* name;
};
const check checks[] = {{fs::validate_encodable, "encodable"},
                        {fs::validate_no_null, "no-null"},
                        {fs::validate_path_length, "path-length"},
                        {fs::validate_component_length, "component-length"}};

int run_validate(const std::vector<std::string>& operands, const std::string& bits)
{
    if (operands.size() != 1)
        throw usage_error("path", "validate takes one NAME");
    unsigned long mask = 0;
    for (const check& c : checks)
        mask |= c.bit;
    if (!bits.empty()) {
        const unsigned long given = parse_number("path", "checks", bits);
        if ((given & ~mask) != 0)
            throw usage_error("path", "checks " + bits + " is not a sum of 1, 4, 16 and 32");
        mask = given;
    }
    const unsigned failed = fs::validate_pathname(file_name_argument(operands[0]), static_cast<fs::validation_id>(mask),
                                                  fl::i18n::character_handling_mode_context(0));
    for (const check& c : checks)
        if (failed == c.bit) {
            std::printf("%s (%u)\n", c.name, failed);
            return exit_data_error;
        }
    std::printf("ok\n");
    return exit_ok;
}

}  // namespace

int run_path(int argc, char** argv)
{
    arguments args(argc, argv, "path");
    std::string operation, mode, bits;
    std::vector<std::string> operands;
    while (args.more()) {
        if (args.help()) {
            print_path_help();
            return exit_ok;
        }
        if (args.option(nullptr, "--mode", mode) || args.option(nullptr, "--checks", bits))
            continue;
        if (operation.empty())
            operation = args.operand();
        else
            operands.push_back(args.operand());
    }
    if (operation.empty())
        throw usage_error("path", "missing operation");
    if (operation != "compare" && operation != "validate")
        throw usage_error("path", "unknown operation '" + operation + "'");
    if (!mode.empty() && operation != "compare")
        throw usage_error("path", "option --mode applies to compare only");
    if (!bits.empty() && operation != "validate")
        throw usage_error("path", "option --checks applies to validate only");
    try {
        return operation == "compare" ? run_compare(operands, mode) : run_validate(operands, bits);
    } catch (const fs::FsysExceptionBase& e) {
        report("path: " + operation + ": " + describe_failure(e));
        return exit_data_error;
    }
}

int run_tmp(int argc, char** argv)
{
    arguments args(argc, argv, "tmp");
    std::string dir, prefix, extension;
    bool create = false;
    while (args.more()) {
        if (args.help()) {
            print_tmp_help();
            return exit_ok;
        }
        if (args.option(nullptr, "--dir", dir) || args.option(nullptr, "--prefix", prefix)
            || args.option(nullptr, "--ext", extension))
            continue;
        if (args.flag(nullptr, "--create")) {
            create = true;
            continue;
        }
        throw usage_error("tmp", "unexpected argument '" + args.operand() + "'");
    }
    try {
        const std::u16string directory = file_name_argument(dir), head = file_name_argument(prefix),
                             tail = file_name_argument(extension);
        std::u16string name;
        if (!create) {
            name = fs::tmpnam(directory, head, tail);
        } else {
            std::FILE* file = fs::tmpfile(name, directory, head, tail);
            if (file == nullptr) {
                const int error = errno;
                report("tmp: cannot create a temporary file in " + (dir.empty() ? std::string("the temporary directory") : dir)
                       + (error != 0 ? std::string(": ") + std::strerror(error) : std::string(": every name tried failed")));
                return exit_data_error;
            }
            if (std::fclose(file) != 0)
                throw io_error("tmp: cannot close " + fl::i18n::ustring_to_utf8(name) + ": " + std::strerror(errno));
        }
        std::printf("%s\n", fl::i18n::ustring_to_utf8(name).c_str());
        return exit_ok;
    } catch (const fs::FsysExceptionBase& e) {
        report("tmp: " + describe_failure(e));
        return exit_data_error;
    }
}

}  // namespace qxi18n_tool

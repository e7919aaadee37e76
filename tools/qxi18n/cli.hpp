// Shared pieces of the qxi18n tool: exit statuses, one-line diagnostics, argument walking.
#pragma once

#include <fl/i18n/codecvt.hpp>

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace fl::filesystem {
class FsysExceptionBase;
}

namespace qxi18n_tool {

/// Exit statuses of every subcommand.
enum exit_status : int {
    exit_ok = 0,
    exit_data_error = 1,   ///< bad input data, a missing file, a failed read or write
    exit_usage_error = 2,  ///< a bad command line or an unknown encoding name
};

/// Flushes standard output first, so nothing already produced is lost or reordered, then
/// writes "qxi18n: MESSAGE" as one line on standard error.
void report(const std::string& message);

/// The names of the --on-error modes and the call-back mode each selects on the output side.
struct error_mode {
    const char* name;
    fl::i18n::codecvt_call_back_mode mode;
};
inline constexpr error_mode error_modes[] = {
    {"stop", fl::i18n::cvt_call_back_stop},
    {"substitute", fl::i18n::cvt_call_back_default},
    {"escape-icu", fl::i18n::cvt_call_back_escape_icu},
    {"escape-java", fl::i18n::cvt_call_back_escape_java},
    {"escape-c", fl::i18n::cvt_call_back_escape_c},
    {"escape-xml-dec", fl::i18n::cvt_call_back_escape_xml_dec},
    {"escape-xml-hex", fl::i18n::cvt_call_back_escape_xml_hex},
    {"escape-unicode", fl::i18n::cvt_call_back_escape_unicode},
    {"escape-css2", fl::i18n::cvt_call_back_escape_css2},
};

/// A bad command line of `command`; main reports it in one line and exits with status 2.
class usage_error : public std::runtime_error {
public:
    usage_error(const std::string& command, const std::string& message);
};

/// A failed read or write; the message names the file and the system's reason.
class io_error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A failed read of one input: the other inputs can still be converted.
class read_error : public io_error {
public:
    using io_error::io_error;
};

/// Walks the arguments of one subcommand. Options take values as "-f X", "-fX", "--from X" or
/// "--from=X"; "--" ends the options; "-" alone is an operand (standard input).
class arguments {
public:
    /// `argv[0]` is the subcommand's name.
    arguments(int argc, char** argv, std::string command);

    bool empty() const { return position_ == args_.size(); }
    /// Consumes any "--" and tells whether arguments remain: the loop condition of every command.
    bool more()
    {
        while (end_of_options()) {
        }
        return !empty();
    }
    /// Consumes the next argument if it asks for help ("-h" or "--help").
    bool help() { return flag("-h", "--help"); }
    /// Consumes a "--"; true if there was one.
    bool end_of_options();
    /// Consumes the next argument if it is this flag.
    bool flag(const char* short_name, const char* long_name);
    /// Consumes the next argument if it is this option and stores its value; a missing value
    /// is a usage_error.
    bool option(const char* short_name, const char* long_name, std::string& value);
    /// Consumes the next argument as an operand; an unknown option is a usage_error.
    std::string operand();
    const std::string& command() const { return command_; }

private:
    std::vector<std::string> args_;
    std::size_t position_ = 0;
    bool operands_only_ = false;
    std::string command_;
};

int run_convert(int argc, char** argv);
int run_detect(int argc, char** argv);
int run_list_encodings(int argc, char** argv);
int run_locale(int argc, char** argv);
int run_encoding(int argc, char** argv);
int run_info(int argc, char** argv);
int run_text(int argc, char** argv);
int run_demo(int argc, char** argv);
int run_ls(int argc, char** argv);
int run_path(int argc, char** argv);
int run_tmp(int argc, char** argv);
int run_time(int argc, char** argv);

/// A file name from the command line, bytes of the default encoding, as UTF-16; bytes that do
/// not decode throw the converter's exception.
std::u16string file_name_argument(const std::string& arg);
/// The key of a file-system exception and, when it names one, its path in UTF-8.
std::string describe_failure(const fl::filesystem::FsysExceptionBase& e);

/// The JVM's name of an encoding the library supports, given by its standard name; empty when
/// the library does not support it.
std::string jvm_encoding_name(const std::string& standard);

}  // namespace qxi18n_tool

// `qxi18n encoding`: the library's standard name of each encoding name, whether the library
// supports it, its ICU converter and its JVM name.
#include "cli.hpp"

#include <fl/i18n/encoding_names.hpp>
#include <fl/i18n/locale.hpp>

#include <unicode/ucnv.h>

#include <cstdio>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace qxi18n_tool {

namespace {

using namespace fl::i18n;

void print_help()
{
    std::printf("Usage: qxi18n encoding NAME...\n\n"
                "Shows what the library makes of each encoding NAME, given in any dialect: POSIX\n"
                "suffixes (\"eucjp\", \"ISO88591\"), Windows code pages (\"1252\"), JVM names\n"
                "(\"Cp1252\", \"MS932\") or ICU's names (\"ibm-964_P110-1999\", \"latin1\"):\n\n"
                "  standard name   the library's spelling (get_standard_encoding_name); names\n"
                "                  the library lists are matched ignoring ASCII case, others are\n"
                "                  resolved by ICU and give ICU's preferred name\n"
                "  supported       whether the library lists the encoding (is_supported_encoding);\n"
                "                  ICU may still convert one that is not\n"
                "  ICU converter   the converter ICU opens for NAME\n"
                "  JVM name        the encoding's name for a Java VM, for supported encodings\n\n"
                "A NAME that neither the library nor ICU knows is reported on standard error; the\n"
                "other names are still shown and the exit status is 1.\n\n"
                "Options:\n"
                "  -h, --help    show this help\n\n"
                "Exit status: 0 success, 1 a name is unknown, 2 bad usage (no NAME).\n");
}

struct ucnv_closer {
    void operator()(UConverter* converter) const noexcept { ucnv_close(converter); }
};

std::string icu_converter_name(const std::string& name)
{
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UConverter, ucnv_closer> converter(ucnv_open(name.c_str(), &status));
    const char* icu_name = U_SUCCESS(status) ? ucnv_getName(converter.get(), &status) : nullptr;
    return U_SUCCESS(status) && icu_name != nullptr ? icu_name : "";
}

void add_line(std::string& block, const char* label, const std::string& value)
{
    char line[128];
    std::snprintf(line, sizeof line, "  %-16s", label);
    block.append(line).append(value.empty() ? "(none)" : value).append("\n");
}

}  // namespace

std::string jvm_encoding_name(const std::string& standard)
{
    if (!lcmgmt::is_supported_encoding(standard))
        return "";
    // The library answers JVM names through a locale: one whose codeset is this encoding.
    try {
        const auto locale = QxLocale::createLocale("en_US." + standard);
        if (locale->getEncoding() == standard)
            return std::get<std::string>(locale->getLocaleData(QxLcOptDataCtx::jvmencoding));
    } catch (const QxLcMgmtExceptionBase&) {
        // An encoding ICU cannot open makes no locale, and then has no JVM name to show.
    }
    return "";
}

int run_encoding(int argc, char** argv)
{
    arguments args(argc, argv, "encoding");
    std::vector<std::string> names;
    while (args.more()) {
        if (args.help()) {
            print_help();
            return exit_ok;
        }
        names.push_back(args.operand());
    }
    if (names.empty())
        throw usage_error("encoding", "missing encoding name");

    int status = exit_ok;
    bool first = true;
    for (const std::string& name : names) {
        const std::string standard = get_standard_encoding_name(name);
        if (standard.empty()) {
            report("encoding: '" + name + "': unknown to the library and to ICU");
            status = exit_data_error;
            continue;
        }
        std::string block = name + "\n";
        add_line(block, "standard name", standard);
        add_line(block, "supported", lcmgmt::is_supported_encoding(name) ? "yes" : "no");
        add_line(block, "ICU converter", icu_converter_name(name));
        add_line(block, "JVM name", jvm_encoding_name(standard));
        std::fputs(first ? "" : "\n", stdout);
        std::fputs(block.c_str(), stdout);
        first = false;
    }
    return status;
}

}  // namespace qxi18n_tool

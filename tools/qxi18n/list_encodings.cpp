// `qxi18n list-encodings`: every converter ICU can open, with its aliases, one per line.
#include "cli.hpp"

#include <unicode/ucnv.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace qxi18n_tool {

namespace {

void print_help()
{
    std::printf("Usage: qxi18n list-encodings\n\n"
                "Lists the encodings that ICU can open, one per line: the canonical name, a colon\n"
                "and its aliases, e.g. \"UTF-8: ibm-1208 ibm-1209 ...\". Any of these names can\n"
                "be given to 'qxi18n convert -f' and '-t'. The order is ICU's.\n\n"
                "Options:\n"
                "  -h, --help    show this help\n");
}

}  // namespace

int run_list_encodings(int argc, char** argv)
{
    arguments args(argc, argv, "list-encodings");
    while (args.more()) {
        if (args.help()) {
            print_help();
            return exit_ok;
        }
        throw usage_error("list-encodings", "unexpected argument '" + args.operand() + "'");
    }

    const int32_t count = ucnv_countAvailable();
    std::string line;
    for (int32_t i = 0; i < count; ++i) {
        const char* name = ucnv_getAvailableName(i);
        if (name == nullptr)
            continue;
        line.assign(name).append(":");
        UErrorCode status = U_ZERO_ERROR;
        const uint16_t aliases = ucnv_countAliases(name, &status);
        for (uint16_t j = 0; U_SUCCESS(status) && j < aliases; ++j) {
            const char* alias = ucnv_getAlias(name, j, &status);
            // The first alias is usually the canonical name itself.
            if (U_SUCCESS(status) && alias != nullptr && std::strcmp(alias, name) != 0)
                line.append(" ").append(alias);
        }
        line.append("\n");
        std::fputs(line.c_str(), stdout);
    }
    return exit_ok;
}

}  // namespace qxi18n_tool

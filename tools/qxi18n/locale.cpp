// `qxi18n locale`: what the library makes of locale names: categories, encodings, fallback chain.
#include "cli.hpp"

#include <fl/i18n/conversion.hpp>
#include <fl/i18n/locale.hpp>
#include <fl/i18n/locale_name.hpp>

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
    std::printf("Usage: qxi18n locale NAME...\n"
                "       qxi18n locale --parse NAME...\n\n"
                "Builds a locale from each NAME with QxLocale::createLocale and shows what it\n"
                "holds: the canonical name of each category, the modifiers, the encoding, the\n"
                "default encoding of the language and territory, the JVM and terminal encodings,\n"
                "the paper size and unit type, and the fallback chain of the messages category.\n\n"
                "A NAME is \"language[-Script][_TERRITORY][.codeset][@modifier...]\", for example\n"
                "\"de_DE.UTF-8@euro\", \"sr-Latn_BA\" or \"ja_JP.eucjp\"; \"C\" and \"POSIX\" are\n"
                "\"en_US_POSIX\".\n\n"
                "A NAME the library refuses is reported with the exception's message, identifier\n"
                "and detail; the other names are still shown and the exit status is 1.\n\n"
                "With --parse, each NAME is only split into its parts by the grammar (language,\n"
                "script, territory, codeset, modifiers, variants, extensions, private use), in\n"
                "the letter case given; a NAME outside the grammar is refused.\n\n"
                "Options:\n"
                "  -p, --parse   show the parts of each NAME instead of building a locale\n"
                "  -h, --help    show this help\n\n"
                "Exit status: 0 success, 1 a name was refused, 2 bad usage (no NAME).\n");
}

constexpr QxLocale::LcCategory categories[] = {
    QxLocale::lc_ctype,   QxLocale::lc_collate,  QxLocale::lc_time,
    QxLocale::lc_numeric, QxLocale::lc_monetary, QxLocale::lc_messages,
};

void add_line(std::string& block, const std::string& label, const std::string& value)
{
    constexpr std::size_t label_width = 19;
    block.append("  ").append(label);
    block.append(label.size() < label_width ? label_width - label.size() : 1, ' ');
    block.append(value.empty() ? "(none)" : value).append("\n");
}

std::string data_string(const QxLocale& locale, QxLcOptDataCtx::LcOptDataType type)
{
    return std::get<std::string>(locale.getLocaleData(type));
}

std::string paper_size(const QxLocale& locale)
{
    const auto paper = std::get<QxLocale::PaperSize>(locale.getLocaleData(QxLcOptDataCtx::papersize));
    return paper == QxLocale::paper_a4 ? "A4" : "other";
}

std::string unit_type(const QxLocale& locale)
{
    switch (std::get<QxLocale::UnitType>(locale.getLocaleData(QxLcOptDataCtx::unittype))) {
    case QxLocale::unit_si:
        return "SI";
    case QxLocale::unit_uk:
        return "UK";
    default:
        return "other";
    }
}

std::string fallback_chain(const QxLocale& locale)
{
    std::string chain;
    for (const ustring& name : get_fallback_locales(locale))
        chain.append(chain.empty() ? "" : " -> ").append(ustring_to_utf8(name));
    return chain;
}

// The whole block is built before anything is written, so a failure leaves no half block.
std::string describe(const std::string& name, const QxLocale& locale)
{
    std::string block = name + "\n";
    for (const QxLocale::LcCategory c : categories)
        add_line(block, QxLocale::getLcCategoryName(c), locale.getName(c));
    add_line(block, "modifiers", locale.getModifiers(QxLocale::lc_ctype));
    add_line(block, "encoding", locale.getEncoding());
    add_line(block, "default encoding", locale.getDefaultEncoding());
    add_line(block, "JVM encoding", data_string(locale, QxLcOptDataCtx::jvmencoding));
    add_line(block, "terminal encoding", data_string(locale, QxLcOptDataCtx::termencoding));
    add_line(block, "terminal input", data_string(locale, QxLcOptDataCtx::terminputencoding));
    add_line(block, "terminal output", data_string(locale, QxLcOptDataCtx::termoutputencoding));
    add_line(block, "paper size", paper_size(locale));
    add_line(block, "unit type", unit_type(locale));
    add_line(block, "fallback chain", fallback_chain(locale));
    return block;
}

std::string joined(const std::vector<std::string>& parts, const char* separator)
{
    std::string out;
    for (const std::string& part : parts)
        out.append(out.empty() ? "" : separator).append(part.empty() ? "\"\"" : part);
    return out;
}

std::string describe_parts(const std::string& name, const parsed_locale_name& parts)
{
    std::string extensions;
    for (const locale_extension& e : parts.extensions)
        extensions.append(extensions.empty() ? "" : " ").append(1, e.singleton).append("=").append(e.value);
    std::string block = name + "\n";
    add_line(block, "language", parts.language);
    add_line(block, "script", parts.script);
    add_line(block, "territory", parts.territory);
    add_line(block, "codeset", parts.codeset);
    add_line(block, "modifiers", joined(parts.modifiers, " "));
    add_line(block, "variants", joined(parts.variants, " "));
    add_line(block, "extensions", extensions);
    add_line(block, "private use",
             parts.private_use.empty() ? "" : parts.private_singleton + ": " + joined(parts.private_use, " "));
    return block;
}

// A name's block, or an exception from the library when it refuses the name.
std::string block_for(const std::string& name, bool parse_only)
{
    if (!parse_only)
        return describe(name, *QxLocale::createLocale(name));
    const parsed_locale_name parts = parse_locale_name(name);
    if (!parts.valid())
        throw QxLcInvLcName(name);
    return describe_parts(name, parts);
}

}  // namespace

int run_locale(int argc, char** argv)
{
    arguments args(argc, argv, "locale");
    std::vector<std::string> names;
    bool parse_only = false;
    while (args.more()) {
        if (args.help()) {
            print_help();
            return exit_ok;
        }
        if (args.flag("-p", "--parse")) {
            parse_only = true;
            continue;
        }
        names.push_back(args.operand());
    }
    if (names.empty())
        throw usage_error("locale", "missing locale name");

    int status = exit_ok;
    bool first = true;
    for (const std::string& name : names) {
        try {
            const std::string block = block_for(name, parse_only);
            if (!first)
                std::fputc('\n', stdout);
            std::fputs(block.c_str(), stdout);
            first = false;
        } catch (const QxLcMgmtExceptionBase& e) {
            std::string message = "locale: '" + name + "': " + e.getMessage() + " (" + e.getIdentifier();
            if (!e.getDetail().empty())
                message += ", detail '" + e.getDetail() + "'";
            report(message + ")");
            status = exit_data_error;
        }
    }
    return status;
}

}  // namespace qxi18n_tool

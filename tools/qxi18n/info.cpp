// `qxi18n info`: what locale management made of this process, for a support engineer: status,
// system and global locales, the JVM context, the user's original settings, the event log.
#include "cli.hpp"

#include <fl/i18n/locale.hpp>
#include <fl/i18n/locale_management.hpp>

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace qxi18n_tool {

namespace {

using namespace fl::i18n;

void print_help()
{
    std::printf("Usage: qxi18n info [--json]\n\n"
                "Shows what locale management made of this process's LANG, LC_* and QXLOCALE_*\n"
                "settings: the start-up status and its message, the warning, the system and the\n"
                "global locale per category with their encodings, whether localisation is on, the\n"
                "context a Java VM must be given, the settings the user had before start-up, the\n"
                "locale database's path and the event log.\n\n"
                "Options:\n"
                "  --json       print the same as one JSON object\n"
                "  -h, --help   show this help\n\n"
                "Exit status: 0 success, 2 bad usage.\n");
}

using entries = std::vector<std::pair<std::string, std::string>>;

struct section {
    std::string title;
    entries values;
};

constexpr QxLocale::LcCategory categories[] = {
    QxLocale::lc_ctype,   QxLocale::lc_collate,  QxLocale::lc_time,
    QxLocale::lc_numeric, QxLocale::lc_monetary, QxLocale::lc_messages,
};

std::string data_string(const QxLocale& locale, QxLcOptDataCtx::LcOptDataType type)
{
    return std::get<std::string>(locale.getLocaleData(type));
}

section locale_section(const std::string& title, const QxLocale& locale)
{
    section out{title, {}};
    for (const QxLocale::LcCategory c : categories) {
        const std::string modifiers = locale.getModifiers(c);
        out.values.emplace_back(QxLocale::getLcCategoryName(c),
                                locale.getName(c) + (modifiers.empty() ? "" : "@" + modifiers));
    }
    out.values.emplace_back("encoding", locale.getEncoding());
    out.values.emplace_back("terminal encoding", data_string(locale, QxLcOptDataCtx::termencoding));
    out.values.emplace_back("JVM encoding", data_string(locale, QxLcOptDataCtx::jvmencoding));
    return out;
}

std::vector<section> collect()
{
    std::vector<section> sections;
    sections.push_back({"status",
                        {{"status", std::to_string(QxLcUtil::getLcStatus())},
                         {"message", QxLcUtil::getInitStatusMsg()},
                         {"warning", QxLcUtil::getInitWarningMsg()},
                         {"localisation", get_l10n_resource_status() ? "on" : "off"}}});
    sections.push_back(locale_section("system locale", QxLocale::system()));
    sections.push_back(locale_section("global locale", QxLocale::global()));
    const jvm_init_context jvm = get_javavm_init_context();
    sections.push_back({"JVM context",
                        {{"language", jvm.language},
                         {"territory", jvm.territory},
                         {"display language", jvm.display_language},
                         {"display territory", jvm.display_territory},
                         {"format language", jvm.format_language},
                         {"format territory", jvm.format_territory},
                         {"encoding", jvm.encoding}}});
    section user{"user setting", {}};
    for (const auto& [key, value] : QxLcUtil::getLocaleInformation())
        user.values.emplace_back(key, value);
    sections.push_back(std::move(user));
    section paths{"data paths", {}};
    for (const auto& [key, value] : QxLcUtil::getDataPathNames())
        paths.values.emplace_back(key, value);
    sections.push_back(std::move(paths));
    return sections;
}

std::string json_string(const std::string& text)
{
    std::string out = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out.append(1, '\\').append(1, c);
        } else if (byte < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", byte);
            out += escape;
        } else {
            out += c;
        }
    }
    return out + "\"";
}

std::string as_json(const std::vector<section>& sections, const std::vector<std::string>& log)
{
    std::string out = "{";
    for (const section& s : sections) {
        out.append("\n  ").append(json_string(s.title)).append(": {");
        for (std::size_t i = 0; i < s.values.size(); ++i)
            out.append(i == 0 ? "\n    " : ",\n    ")
                .append(json_string(s.values[i].first))
                .append(": ")
                .append(json_string(s.values[i].second));
        out.append(s.values.empty() ? "}," : "\n  },");
    }
    out.append("\n  \"event log\": [");
    for (std::size_t i = 0; i < log.size(); ++i)
        out.append(i == 0 ? "\n    " : ",\n    ").append(json_string(log[i]));
    out.append(log.empty() ? "]\n}\n" : "\n  ]\n}\n");
    return out;
}

std::string as_text(const std::vector<section>& sections, const std::vector<std::string>& log)
{
    std::string out;
    for (const section& s : sections) {
        out.append(out.empty() ? "" : "\n").append(s.title).append("\n");
        if (s.values.empty())
            out.append("  (none)\n");
        std::size_t width = 0;
        for (const auto& entry : s.values)
            width = std::max(width, entry.first.size());
        for (const auto& [key, value] : s.values)
            out.append("  ").append(key).append(width + 2 - key.size(), ' ').append(value.empty() ? "(none)" : value)
                .append("\n");
    }
    out.append("\nevent log\n");
    const std::size_t width = std::to_string(log.size()).size();
    for (std::size_t i = 0; i < log.size(); ++i) {
        const std::string number = std::to_string(i + 1);
        out.append("  ").append(number).append(width + 2 - number.size(), ' ').append(log[i]).append("\n");
    }
    return out;
}

}  // namespace

int run_info(int argc, char** argv)
{
    arguments args(argc, argv, "info");
    bool json = false;
    while (args.more()) {
        if (args.help()) {
            print_help();
            return exit_ok;
        }
        if (args.flag(nullptr, "--json")) {
            json = true;
            continue;
        }
        throw usage_error("info", "unexpected argument '" + args.operand() + "'");
    }
    const std::vector<section> sections = collect();
    const std::vector<std::string> log = QxLcUtil::getEventLog();
    const std::string text = json ? as_json(sections, log) : as_text(sections, log);
    std::fputs(text.c_str(), stdout);
    return exit_ok;
}

}  // namespace qxi18n_tool

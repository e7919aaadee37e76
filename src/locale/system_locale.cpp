// The system locale resolver: what the user's settings are, what the library makes of them,
// and the environment that start-up leaves behind.
#include "system_locale.hpp"

#include "locale_context.hpp"
#include "locale_name.hpp"

#include "conversion/encoding_names.hpp"

#include <clocale>
#include <cstdlib>
#include <langinfo.h>
#include <locale>
#include <stdexcept>

namespace fl::i18n::detail {

const posix_category posix_categories[posix_category_count] = {
    {LC_CTYPE, "LC_CTYPE", "Ctype"},
    {LC_COLLATE, "LC_COLLATE", "Collate"},
    {LC_TIME, "LC_TIME", "Time"},
    {LC_NUMERIC, "LC_NUMERIC", "Numeric"},
    {LC_MONETARY, "LC_MONETARY", "Monetary"},
    {LC_MESSAGES, "LC_MESSAGES", "Messages"},
    {LC_PAPER, "LC_PAPER", "Paper"},
    {LC_NAME, "LC_NAME", "Name"},
    {LC_ADDRESS, "LC_ADDRESS", "Address"},
    {LC_TELEPHONE, "LC_TELEPHONE", "Telephone"},
    {LC_MEASUREMENT, "LC_MEASUREMENT", "Measurement"},
    {LC_IDENTIFICATION, "LC_IDENTIFICATION", "Identification"},
};

const char* variable_name(std::size_t index) noexcept
{
    if (index < posix_category_count)
        return posix_categories[index].variable;
    if (index == lc_all_index)
        return "LC_ALL";
    return index == lang_index ? "LANG" : nullptr;
}

namespace {

constexpr std::size_t numeric_index = QxLocale::lc_numeric;
constexpr std::size_t messages_index = QxLocale::lc_messages;

std::string text_or_empty(const char* text) { return text ? text : std::string(); }

std::string canonical_of(const locale_registry& registry, const std::string& name)
{
    return canonical_locale_name(registry, strip_name(name));
}

// What follows the first "@", or empty.
std::string modifiers_after_at(const std::string& name)
{
    const auto at = name.find('@');
    return at == std::string::npos ? std::string() : name.substr(at + 1);
}

}  // namespace

const char* codeset_standard_name(const locale_registry& registry, const std::string& codeset)
{
    return registry.find_standard_encoding(icu_standard_name(codeset));
}

system_locale_resolver::system_locale_resolver(const locale_registry& registry, QxLocaleImpl& system_locale,
                                               QxLocaleCtx& context, system_setting_context& setting) noexcept
    : registry_(registry), system_locale_(system_locale), context_(context), setting_(setting)
{
}

void system_locale_resolver::read_settings()
{
    for (std::size_t i = 0; i < posix_category_count; ++i)
        setting_.xpg_initial[i] = text_or_empty(std::setlocale(posix_categories[i].constant, nullptr));
    for (std::size_t i = 0; i < posix_category_count; ++i) {
        std::setlocale(posix_categories[i].constant, "");
        setting_.xpg_current[i] = text_or_empty(std::setlocale(posix_categories[i].constant, nullptr));
    }
    for (std::size_t i = 0; i < variable_count; ++i)
        setting_.xpg_env[i] = text_or_empty(std::getenv(variable_name(i)));
    setting_.xpg_encoding = text_or_empty(nl_langinfo(CODESET));
}

// Clears every category equal to the base locale; false when one differs.
bool system_locale_resolver::compare_with_base()
{
    bool uniform = true;
    for (std::string& value : setting_.differing) {
        if (value.empty())
            continue;
        if (value == setting_.base_locale)
            value.clear();
        else
            uniform = false;
    }
    return uniform;
}

void system_locale_resolver::run()
{
    context_.status = 0;
    read_settings();

    setting_.base_locale = setting_.xpg_current[0];
    setting_.differing = setting_.xpg_current;
    setting_.uniform = compare_with_base();

    const std::string base_canonical = canonical_of(registry_, setting_.base_locale);
    // The base keeps its "@", unlike a differing category's modifiers, which start after it.
    const auto at = setting_.base_locale.find('@');
    const std::string base_modifiers = at == std::string::npos ? std::string() : setting_.base_locale.substr(at);
    bool encoding_ok = codeset_standard_name(registry_, setting_.xpg_encoding) != nullptr;

    for (std::size_t c = 0; c < setting_.resolved.size(); ++c) {
        const char* fallback = c == messages_index ? "en_US" : "en_US_POSIX";
        auto& resolved = setting_.resolved[c];
        if (!setting_.differing[c].empty()) {
            resolved = {canonical_of(registry_, setting_.differing[c]), modifiers_after_at(setting_.differing[c])};
            if (resolved.first.empty()) {
                resolved = {fallback, std::string()};
                setting_.differing[c] = "C";
                encoding_ok = false;
            }
        } else {
            resolved = {base_canonical, base_modifiers};
            if (resolved.first.empty()) {
                resolved = {fallback, std::string()};
                setting_.base_locale = "C";
                encoding_ok = false;
            }
        }
    }
    for (std::size_t i = setting_.resolved.size(); i < posix_category_count; ++i)
        if (canonical_of(registry_, setting_.differing[i]).empty())
            setting_.differing[i].clear();

    // The host's printf and strtod must keep reading "1.5": numbers always follow "C".
    setting_.differing[numeric_index] = "C";
    if (!compare_with_base())
        setting_.uniform = false;
    setting_.posix_name = setting_.base_locale;

    setting_.target_env.fill(std::string());
    setting_.target_env[lang_index] = setting_.base_locale;
    if (!setting_.uniform)
        for (std::size_t i = 0; i < posix_category_count; ++i)
            if (!setting_.differing[i].empty())
                setting_.target_env[i] = setting_.differing[i];

    if (setting_.l10n_state == 2 && setting_.base_locale != "C")
        setting_.messages_target = "C";

    setting_.encoding = "UTF-8";
    if (!encoding_ok) {
        context_.status = 3;
        context_.init_warning = "Invalid locale name.";
        setting_.terminal_encoding = "UTF-8";
    } else {
        const char* terminal = codeset_standard_name(registry_, setting_.xpg_encoding);
        const bool ascii = terminal != nullptr && std::string_view(terminal).substr(0, 8) == "US-ASCII";
        setting_.terminal_encoding = terminal == nullptr || ascii ? "UTF-8" : terminal;
    }

    if (setting_.l10n_state == 0) {
        const std::string disable = registry_.get_option(setting_.resolved[messages_index].first, "disable_l10n");
        setting_.l10n_state = disable.find('L') != std::string::npos ? 2 : 0;
    }

    for (std::size_t c = 0; c < setting_.resolved.size(); ++c)
        system_locale_.set_category(setting_.resolved[c].first, setting_.resolved[c].second,
                                    static_cast<QxLocale::LcCategory>(c));
    system_locale_.set_encoding(setting_.encoding);
    system_locale_.set_terminal_encoding(setting_.terminal_encoding);
}

void write_target_environment(const system_setting_context& setting)
{
    for (std::size_t i = 0; i < variable_count; ++i)
        ::unsetenv(variable_name(i));
    for (std::size_t i = 0; i < variable_count; ++i)
        if (!setting.target_env[i].empty())
            ::setenv(variable_name(i), setting.target_env[i].c_str(), 1);
}

void system_locale_resolver::apply_environment()
{
    write_target_environment(setting_);
    std::setlocale(LC_ALL, "");
}

void system_locale_resolver::disable_messages()
{
    ::unsetenv("LC_MESSAGES");
    if (setting_.l10n_state == 2) {
        if (setting_.posix_name != "C") {
            setting_.messages_target = "C";
            ::setenv("LC_MESSAGES", "C", 1);
        } else {
            setting_.messages_target.clear();
        }
    } else if (!setting_.differing[messages_index].empty()) {
        setting_.messages_target = setting_.differing[messages_index];
        ::setenv("LC_MESSAGES", setting_.messages_target.c_str(), 1);
    }
    std::setlocale(LC_MESSAGES, "");
}

std::vector<int> std_locale_failures()
{
    std::vector<int> failures;
    for (const int mask : {std::locale::ctype, std::locale::collate, std::locale::time, std::locale::numeric,
                           std::locale::monetary, std::locale::messages}) {
        try {
            std::locale(std::locale::classic(), "", mask);
        } catch (const std::runtime_error&) {
            failures.push_back(mask);
        }
    }
    if (failures.empty()) {
        try {
            std::locale("");
        } catch (const std::runtime_error&) {
            failures.push_back(std::locale::all);
        }
    }
    return failures;
}

}  // namespace fl::i18n::detail

// What a host can read back from locale management: status, the user's original settings, the
// event log, the JVM start-up context, and the standard library's view of the locale.
#include "locale_context.hpp"

#include <fl/i18n/locale_management.hpp>

namespace fl::i18n {

int QxLcUtil::getLcStatus() { return detail::locale_context().status; }

std::string QxLcUtil::getInitStatusMsg()
{
    switch (getLcStatus()) {
    case 0:
    case 3: return "Corvane locale management system initialized.";
    case 1: return "Failed to load Corvane locale database. Using Corvane default locale setting instead.";
    case 2: return "Corvane locale management system not initialized.";
    default: return {};
    }
}

std::string QxLcUtil::getInitWarningMsg() { return detail::locale_context().init_warning; }

std::map<std::string, std::string> QxLcUtil::getLocaleInformation()
{
    const auto& setting = detail::locale_context().system_setting;
    std::map<std::string, std::string> out;
    for (std::size_t i = 0; i < detail::posix_category_count; ++i) {
        const std::string word = detail::posix_categories[i].word;
        out["InitialXpgLc" + word] = setting.xpg_initial[i];
        out["XpgLc" + word] = setting.xpg_current[i];
        out["XpgEnvLc" + word] = setting.xpg_env[i];
    }
    out["XpgEnvLcAll"] = setting.xpg_env[detail::lc_all_index];
    out["XpgEnvLang"] = setting.xpg_env[detail::lang_index];
    out["XpgEncoding"] = setting.xpg_encoding;
    for (std::size_t i = 0; i < setting.error_events.size(); ++i)
        out["ErrorEvent" + std::to_string(i)] = setting.error_events[i];
    return out;
}

std::map<std::string, std::string> QxLcUtil::getDataPathNames()
{
    const std::string& path = detail::locale_context().lcdata_path;
    if (path.empty())
        return {};
    return {{"xml_locale_database_path", path}};
}

std::vector<std::string> QxLcUtil::getEventLog()
{
    auto& context = detail::locale_context();
    // Taken even though the log is meant to be read after start-up: a copy must not tear.
    std::lock_guard<std::mutex> lock(context.global_mutex);
    return context.event_log;
}

jvm_init_context get_javavm_init_context()
{
    jvm_init_context out;
    const QxLocale& system = QxLocale::system();
    out.language = system.getLanguage(QxLocale::lc_messages, 0);
    out.territory = system.getTerritory(QxLocale::lc_messages);

    // Each read of the global locale locks on its own; a change in between mixes two locales.
    const std::string format_language = QxLocale::global().getLanguage(QxLocale::lc_ctype, 0);
    const std::string format_territory = QxLocale::global().getTerritory(QxLocale::lc_ctype);
    const bool enabled = get_l10n_resource_status();
    const bool same_as_system = format_language == out.language && format_territory == out.territory && enabled;
    if (!enabled) {
        out.display_language = QxLocale::global().getLanguage(QxLocale::lc_messages, 0);
        out.display_territory = QxLocale::global().getTerritory(QxLocale::lc_messages);
    }
    if (!same_as_system) {
        out.format_language = format_language;
        out.format_territory = format_territory;
    }
    out.encoding = std::get<std::string>(QxLocale::global().getLocaleData(QxLcOptDataCtx::jvmencoding));
    return out;
}

namespace lcmgmt {

bool is_std_locale_valid()
{
    auto& context = detail::locale_context();
    std::lock_guard<std::mutex> lock(context.global_mutex);
    return detail::std_locale_failures().empty();
}

void fix_invalid_std_locale()
{
    auto& context = detail::locale_context();
    std::lock_guard<std::mutex> lock(context.global_mutex);
    if (!detail::std_locale_failures().empty())
        detail::write_target_environment(context.system_setting);
}

system_setting_context get_original_user_locale_setting()
{
    auto& context = detail::locale_context();
    std::lock_guard<std::mutex> lock(context.global_mutex);
    const auto& stored = context.system_setting;
    system_setting_context out;
    out.encoding = stored.xpg_encoding;
    for (std::size_t i = 0; i < detail::variable_count; ++i)
        if (!stored.xpg_env[i].empty())
            out.user_environment.emplace_back(detail::variable_name(i), stored.xpg_env[i]);
    for (std::size_t i = 0; i < detail::posix_category_count; ++i)
        if (!stored.xpg_current[i].empty())
            out.user_categories.emplace_back(detail::posix_categories[i].constant, stored.xpg_current[i]);
    return out;
}

}  // namespace lcmgmt
}  // namespace fl::i18n

// Process-wide locale management: start-up from the user's settings, the global locale's state
// machine, the JVM start-up context and diagnostics.
#pragma once

#include <fl/i18n/export.hpp>
#include <fl/i18n/locale.hpp>

#include <array>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace fl::i18n {

/// Reads the control variables and the locale database, resolves the user's LANG and LC_*,
/// rewrites the environment and pushes the global locale. Runs once per process; a call that
/// throws leaves it to the next call. Other threads wait until the running call ends.
QXI18N_API void initLcMgmtSystem();

/// Pushes a new global locale built from the system locale, and locks the global setting. The
/// argument only decides whether messages turn to "en_US" (localisation off); it is not installed.
/// Does nothing once the setting is locked or localisation is off.
QXI18N_API void change_global_locale(const QxLocale& locale);

/// Gives the global locale a new messages category, once per process. False when nothing
/// changed: localisation is off, or `name` is already the messages category. Throws
/// QxLcInvLcName for a name that cannot be canonicalised.
QXI18N_API bool set_lc_messages(const std::string& name);

/// Turns localisation off for good: messages become "en_US" unless they already are.
QXI18N_API void disable_l10n_resource();

/// Whether localisation is still on.
QXI18N_API bool get_l10n_resource_status();

/// Locks the global locale against change_global_locale, for good.
QXI18N_API void lock_global_locale_setting();

namespace experimental {
/// Makes `name` the global locale, keeping the system encoding and the numeric category. Not
/// stopped by the lock or by localisation being off. False when `name` is already the
/// messages category; throws QxLcInvLcName / QxLcInvLcArgument for a bad name.
QXI18N_API bool set_global_locale(const std::string& name);
}  // namespace experimental

namespace lcmgmt {

/// What the process's settings were and what start-up made of them. The twelve POSIX categories
/// run LC_CTYPE, LC_COLLATE, LC_TIME, LC_NUMERIC, LC_MONETARY, LC_MESSAGES, LC_PAPER, LC_NAME,
/// LC_ADDRESS, LC_TELEPHONE, LC_MEASUREMENT, LC_IDENTIFICATION ("category order"); the fourteen
/// variable names are those twelve, then LC_ALL and LANG ("name order").
struct system_setting_context {
    std::map<std::string, std::string> env_cache;  ///< the QXLOCALE_ variables, read once
    std::array<std::string, 12> xpg_current;       ///< setlocale(c, "") results, category order
    std::array<std::string, 12> xpg_initial;       ///< setlocale(c, NULL) before that
    std::array<std::string, 14> xpg_env;           ///< getenv of each name, name order
    std::string xpg_encoding;                      ///< nl_langinfo(CODESET)
    std::array<std::pair<std::string, std::string>, 6> resolved;  ///< {name, modifiers} per LcCategory
    std::string encoding;
    std::string terminal_encoding;
    bool uniform = true;  ///< every category as LC_CTYPE
    std::string base_locale;
    std::array<std::string, 12> differing;   ///< categories that differ from base_locale
    std::array<std::string, 14> target_env;  ///< what the environment is to hold, name order
    std::string messages_target;
    std::string posix_name;
    std::vector<std::string> error_events;
    int l10n_state = 0;  ///< 2 when localisation stays off for the user's locale

    /// Filled only by get_original_user_locale_setting: the variables that were set, in name
    /// order, and the categories setlocale reported, as {setlocale constant, value}.
    std::vector<std::pair<std::string, std::string>> user_environment;
    std::vector<std::pair<int, std::string>> user_categories;
};

/// Whether the C++ standard library accepts the process's locale in every category.
QXI18N_API bool is_std_locale_valid();

/// When the standard library refuses the process's locale, rewrites LC_* and LANG to the
/// values start-up resolved (no setlocale call).
QXI18N_API void fix_invalid_std_locale();

/// What the user had before start-up: the codeset, the variables that were set and the
/// categories setlocale gave; the other fields are empty.
QXI18N_API system_setting_context get_original_user_locale_setting();

}  // namespace lcmgmt

/// What a host must give a Java VM so that it agrees with this library.
struct jvm_init_context {
    std::string language;
    std::string territory;
    std::string display_language;   ///< set only when localisation is off
    std::string display_territory;  ///< likewise
    std::string format_language;    ///< empty when formats follow the system locale
    std::string format_territory;   ///< likewise
    std::string encoding;           ///< the JVM's name of the global encoding
};

QXI18N_API jvm_init_context get_javavm_init_context();

/// Diagnostics of locale management.
class QXI18N_API QxLcUtil {
public:
    /// 2 before start-up, 0 after it, 3 when the user's locale was not understood.
    static int getLcStatus();
    static std::string getInitStatusMsg();
    /// The text of a failed locale database, or "Invalid locale name."; empty otherwise.
    static std::string getInitWarningMsg();
    /// The user's original settings under fixed keys ("InitialXpgLcCtype", "XpgEnvLang", ...).
    static std::map<std::string, std::string> getLocaleInformation();
    /// {"xml_locale_database_path", path} once a database path was chosen; else empty.
    static std::map<std::string, std::string> getDataPathNames();
    static std::vector<std::string> getEventLog();
};

}  // namespace fl::i18n

// Discovery of the user's locale from setlocale and the environment, and the rewriting of the
// environment so that libc, the standard library and ICU agree with what was resolved.
#pragma once

#include "locale_impl.hpp"
#include "locale_registry.hpp"

#include <fl/i18n/locale_management.hpp>

#include <cstddef>
#include <string>
#include <vector>

namespace fl::i18n::detail {

class QxLocaleCtx;
using lcmgmt::system_setting_context;

/// A POSIX category: its setlocale constant, its variable and the word diagnostics use.
struct posix_category {
    int constant;
    const char* variable;
    const char* word;
};
inline constexpr std::size_t posix_category_count = 12;
/// The twelve categories in the order the locale layer keeps them; the first six are LcCategory.
extern const posix_category posix_categories[posix_category_count];
/// The fourteen variables: the twelve categories, then LC_ALL and LANG.
inline constexpr std::size_t variable_count = 14;
inline constexpr std::size_t lc_all_index = 12;
inline constexpr std::size_t lang_index = 13;
const char* variable_name(std::size_t index) noexcept;

class system_locale_resolver {
public:
    system_locale_resolver(const locale_registry& registry, QxLocaleImpl& system_locale, QxLocaleCtx& context,
                           system_setting_context& setting) noexcept;

    /// Reads setlocale, the environment and the codeset, resolves each category (a name the
    /// registry cannot place falls back to "en_US_POSIX", "en_US" for messages) and fills the
    /// system locale. Caller holds global_mutex.
    void run();
    /// Replaces LANG and LC_* by the resolved targets and calls setlocale(LC_ALL, "").
    void apply_environment();
    /// Points LC_MESSAGES at "C" when localisation is off for the user's locale, else at the
    /// user's own differing messages locale, and calls setlocale(LC_MESSAGES, "").
    void disable_messages();

private:
    void read_settings();
    bool compare_with_base();

    const locale_registry& registry_;
    QxLocaleImpl& system_locale_;
    QxLocaleCtx& context_;
    system_setting_context& setting_;
};

/// The registry's standard name for ICU's standard name of `codeset`, or null.
const char* codeset_standard_name(const locale_registry& registry, const std::string& codeset);

/// The standard library's categories that refuse the process's locale, as category bits;
/// a refusal of the whole locale adds std::locale::all.
std::vector<int> std_locale_failures();

/// Replaces the fourteen variables by the non-empty targets of `setting`.
void write_target_environment(const system_setting_context& setting);

}  // namespace fl::i18n::detail

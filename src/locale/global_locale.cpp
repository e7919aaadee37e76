// The global locale's state machine: changes, the messages category, localisation off and the
// lock. Flags only ever move one way.
#include "startup.hpp"

#include <fl/i18n/locale_management.hpp>

namespace fl::i18n {
namespace {

constexpr std::string_view change_source = "QxLocaleCtx::QxLocaleCtx::change_current_locale";
constexpr std::string_view disable_source = "QxLocaleCtx::QxLocaleCtx::disable_l10n_rsc";
constexpr std::string_view messages_source = "QxLocaleCtx::QxLocaleCtx::set_lc_messages";
constexpr std::string_view set_source = "QxLocaleCtx::setLocale";
constexpr std::string_view no_operation = "No operation was performed.";

const QxLocaleImpl& global_of(const detail::QxLocaleCtx& context)
{
    return *context.locale_stack.back()->locale;
}

bool is_english_messages(const std::string& name) { return name == "en_US" || name == "en_US_POSIX"; }

}  // namespace

void change_global_locale(const QxLocale& locale)
{
    // Read before the lock: a foreign implementation may call back into the library.
    const std::string messages = locale.getName(QxLocale::lc_messages);
    auto& context = detail::locale_context();
    std::lock_guard<std::mutex> lock(context.global_mutex);
    if (context.global_locked == 1 || context.l10n_enabled == 0) {
        context.log(change_source, no_operation);
        return;
    }
    bool disable = false;
    if (messages == "en_US" && !is_english_messages(global_of(context).name_ref(QxLocale::lc_messages))) {
        disable = true;
        context.l10n_control = 2;
        detail::disable_messages(context);
        context.l10n_enabled = 0;
    }
    // Only the messages test looks at the argument: the new global locale comes from the system's.
    detail::push_global_locale(context, disable);
    context.global_locked = 1;
    context.log(change_source, "Locale setting was changed to disable L10n.");
}

bool set_lc_messages(const std::string& name)
{
    auto& context = detail::locale_context();
    std::lock_guard<std::mutex> lock(context.global_mutex);
    if (context.l10n_enabled == 0) {
        context.log(messages_source, no_operation);
        return false;
    }
    const QxLocaleImpl& global = global_of(context);
    if (name == global.name_ref(QxLocale::lc_messages)) {
        context.log(messages_source, "Provided locale is same as current locale");
        return false;
    }
    try {
        auto copy = std::make_unique<QxLocaleImpl>(context.registry, global);
        copy->set_category(name, std::string(), QxLocale::lc_messages);
        context.push_entry(std::move(copy));
    } catch (...) {
        context.log(messages_source, "No operation was performed");
        throw;
    }
    context.l10n_enabled = 0;
    return true;
}

bool experimental::set_global_locale(const std::string& name)
{
    auto& context = detail::locale_context();
    std::lock_guard<std::mutex> lock(context.global_mutex);
    const QxLocaleImpl& global = global_of(context);
    if (name == global.name_ref(QxLocale::lc_messages)) {
        context.log(set_source, "Provided locale is same as current locale");
        return false;
    }
    try {
        auto fresh = std::make_unique<QxLocaleImpl>(context.registry, name);
        fresh->set_encoding(context.system_locale->encoding_ref());
        fresh->set_terminal_encoding(std::get<std::string>(global.getLocaleData(QxLcOptDataCtx::termencoding)));
        fresh->set_category(global.name_ref(QxLocale::lc_numeric), std::string(), QxLocale::lc_numeric);
        context.push_entry(std::move(fresh));
    } catch (...) {
        context.log(set_source, no_operation);
        throw;
    }
    context.log(set_source, "Global Locale setting was changed.");
    return true;
}

void disable_l10n_resource()
{
    auto& context = detail::locale_context();
    std::lock_guard<std::mutex> lock(context.global_mutex);
    if (context.l10n_enabled == 0) {
        context.log(disable_source, no_operation);
        return;
    }
    context.l10n_enabled = 0;
    if (is_english_messages(global_of(context).name_ref(QxLocale::lc_messages))) {
        context.log(disable_source, "No need to perform disable operation.");
        return;
    }
    detail::push_global_locale(context, true);
    context.l10n_control = 2;
    detail::disable_messages(context);
    context.log(disable_source, "L10n was disabled.");
}

bool get_l10n_resource_status()
{
    auto& context = detail::locale_context();
    std::lock_guard<std::mutex> lock(context.global_mutex);
    return context.l10n_enabled != 0;
}

void lock_global_locale_setting()
{
    auto& context = detail::locale_context();
    std::lock_guard<std::mutex> lock(context.global_mutex);
    context.global_locked = 1;
}

}  // namespace fl::i18n

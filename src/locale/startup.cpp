// initLcMgmtSystem: the control variables, the locale database, the user's locale and the
// first global locale, in one region that a failure leaves open for the next call.
#include "startup.hpp"

#include "locale_database.hpp"

#include "common/retry_once.hpp"

#include <fl/filesystem/foundation/install_path.hpp>
#include <fl/filesystem/foundation/pathname.hpp>
#include <fl/filesystem/foundation/pathname_encoding.hpp>
#include <fl/i18n/locale_database_error.hpp>
#include <fl/i18n/locale_management.hpp>

#include <unicode/locid.h>
#include <unicode/ucnv.h>

#include <stdexcept>

namespace fl::i18n {
namespace detail {
namespace {

constexpr std::string_view management_source = "QxLocaleCtx::initLocaleMgmt";
constexpr std::string_view path_source = "get_lcdata_path";
constexpr std::string_view parse_source = "QxLocaleCtx::initLocaleMgmt::parseLcData";
constexpr std::string_view global_source = "QxLocaleCtx::initGlobalLocale";

fl::detail::retry_once_flag startup_region;

// Any object of this library: its address says where the library was loaded from.
const char library_anchor = 0;

std::string cached(const QxLocaleCtx& context, const char* variable)
{
    const auto& cache = context.system_setting.env_cache;
    const auto found = cache.find(variable);
    return found == cache.end() ? std::string() : found->second;
}

int l10n_control_of(std::string value)
{
    for (char& c : value)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return value == "on" ? 1 : value == "off" ? 2 : 0;
}

// The log text of each database failure, by the exception's code; null for a code we pass over.
const char* database_failure_text(int code) noexcept
{
    switch (code) {
    case 2: return "Failed to open the XML locale database.";
    case 3: return "Failed to read the XML locale database.";
    case 4: return "Failed to create the parser for the XML locale database.";
    case 5: return "invalid XML locale database.";
    default: return nullptr;
    }
}

void initGlobalLocale(QxLocaleCtx& context)
{
    context.resolver = std::make_unique<system_locale_resolver>(context.registry, *context.system_locale, context,
                                                                context.system_setting);
    // The resolver starts by setting the status to 0, which also clears a failed database's 1:
    // only the warning text keeps that failure.
    context.resolver->run();
    context.system_locale_ref.exchange(context.system_locale.get());

    switch (context.l10n_control) {
    case 1:
        context.global_locked = 1;
        push_global_locale(context, false);
        break;
    case 2:
        push_global_locale(context, true);
        context.l10n_control = 2;
        context.resolver->disable_messages();
        context.l10n_enabled = 0;
        break;
    default:
        push_global_locale(context, false);
        break;
    }
    context.resolver->apply_environment();

    ucnv_setDefaultName(context.system_locale->encoding_ref().c_str());
    UErrorCode status = U_ZERO_ERROR;
    const std::string language = context.system_locale->getLanguage(QxLocale::lc_ctype, 0);
    icu::Locale::setDefault(icu::Locale(language.c_str()), status);
    if (U_FAILURE(status))
        context.log(global_source, "Failed to set default locale", static_cast<long>(status));
}

void initLocaleMgmt(QxLocaleCtx& context)
{
    std::lock_guard<std::mutex> lock(context.global_mutex);
    context.log(management_source, "LcMgmt initialization has started.");
    context.l10n_control = l10n_control_of(cached(context, "QXLOCALE_L10N_CONTROL"));

    const std::string path = locale_database_path(context);
    if (path.empty()) {
        context.log(management_source, "No XML locale database was loaded.");
    } else {
        context.lcdata_path = path;
        try {
            load_locale_database(context.registry, context.event_log, path);
            context.log(management_source, "XML locale database was loaded.");
        } catch (const LcRscExceptionBase& failure) {
            // Whatever was read before the failure stays in use: the database only adds.
            if (const char* text = database_failure_text(failure.getCode())) {
                context.log(parse_source, text);
                context.status = 1;
                context.init_warning = failure.getMessage();
            }
        }
    }
    initGlobalLocale(context);
}

}  // namespace

std::string locale_database_path(QxLocaleCtx& context)
{
    using narrow_traits = fl::filesystem::detail::path_traits<char, char>;
    std::string directory;
    if (std::string variable = cached(context, "QXLOCALE_LCDATA_PATH"); !variable.empty()) {
        context.log(path_source, "XML locale data path was retrieved from QXLOCALE_LCDATA_PATH.");
        directory = narrow_traits::make_native_form(variable, true);
    } else {
        const fl::filesystem::ustring base = fl::filesystem::detail::get_base_path(const_cast<char*>(&library_anchor));
        if (base.empty()) {
            context.log(path_source, "Failed to get the install path");
            return {};
        }
        const std::string native =
            narrow_traits::make_native_form(fl::filesystem::pathname_traits<char16_t>::to_filesystem(base), true);
        directory = narrow_traits::concatenate_pathname(native, "bin");
    }
    std::string file = cached(context, "QXLOCALE_LCDATA_FILENAME");
    if (!file.empty())
        context.log(path_source, "XML locale data file name was retrieved from QXLOCALE_LCDATA_FILENAME.");
    else
        file = "lcdata.xml";
    return narrow_traits::concatenate_pathname(directory, file);
}

void push_global_locale(QxLocaleCtx& context, bool disable_l10n)
{
    auto locale = std::make_unique<QxLocaleImpl>(context.registry, *context.system_locale);
    // Numbers never follow the user: the host parses and prints them the portable way.
    locale->set_category("en_US_POSIX", std::string(), QxLocale::lc_numeric);
    if (disable_l10n)
        locale->set_category("en_US", std::string(), QxLocale::lc_messages);
    locale->set_encoding(context.system_locale->encoding_ref());
    context.push_entry(std::move(locale));
}

void disable_messages(QxLocaleCtx& context)
{
    // Before start-up nothing was resolved, so there is no environment to repair.
    if (context.resolver)
        context.resolver->disable_messages();
}

}  // namespace detail

void initLcMgmtSystem()
{
    detail::startup_region.call([] { detail::initLocaleMgmt(detail::locale_context()); });
}

}  // namespace fl::i18n

// Creation of the locale context on first use, its event log and the default converters.
#include "locale_context.hpp"

#include "common/retry_once.hpp"
#include "common/throw_exception.hpp"

#include <fl/i18n/conversion_error.hpp>

#include <unicode/locid.h>

#include <cstdlib>

namespace fl::i18n::detail {
namespace {

constexpr std::string_view context_source = "QxLocaleCtx::initQxLcCtx";

fl::detail::retry_once<QxLocaleCtx> context_region;

// Opens the prototype on `encoding`; a refused encoding leaves the converter null without error.
std::unique_ptr<converter_prototype> open_prototype(const std::string& encoding)
{
    auto prototype = std::make_unique<converter_prototype>();
    prototype->name = encoding;
    UErrorCode status = U_ZERO_ERROR;
    prototype->converter.reset(ucnv_open(encoding.c_str(), &status));
    if (U_FAILURE(status))
        prototype->converter.reset();
    return prototype;
}

converter_ptr clone_of(const converter_prototype* prototype)
{
    if (prototype == nullptr || !prototype->converter)
        return nullptr;
    UErrorCode status = U_ZERO_ERROR;
    converter_ptr clone(ucnv_clone(prototype->converter.get(), &status));
    if (U_FAILURE(status))
        clone.reset();
    return clone;
}

}  // namespace

QxLocaleCtx::QxLocaleCtx()
{
    // Read once: a later change of the environment does not reach the context.
    for (const char* variable : {"QXLOCALE_LCDATA_PATH", "QXLOCALE_LCDATA_FILENAME", "QXLOCALE_L10N_CONTROL",
                                 "QXLOCALE_TERMINAL_ENCODING"}) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0')
            system_setting.env_cache.emplace(variable, value);
    }
    try {
        initQxLcCtx();
    } catch (...) {
        // A failed creation leaves nothing behind; the next caller starts afresh.
        for (locale_entry* entry : locale_stack)
            delete entry;
        throw;
    }
}

void QxLocaleCtx::initQxLcCtx()
{
    auto classic = std::make_unique<QxLocaleImpl>(registry, "en_US_POSIX");
    const QxLocale* classic_ref = classic.get();
    push_entry(std::move(classic));
    system_locale_ref.store(classic_ref);

    system_locale = std::make_unique<QxLocaleImpl>(registry, "en_US_POSIX");
    system_locale->set_terminal_encoding("UTF-8");

    ucnv_setDefaultName("UTF-8");
    UErrorCode icu_status = U_ZERO_ERROR;
    icu::Locale::setDefault(icu::Locale("en_US_POSIX"), icu_status);
    if (U_FAILURE(icu_status))
        log(context_source, "Failed to set default locale", static_cast<long>(icu_status));

    static constexpr const char* category_names[] = {"ctype", "collate", "time", "numeric", "monetary", "messages"};
    for (int c = QxLocale::lc_ctype; c <= QxLocale::lc_messages; ++c) {
        const auto category = static_cast<QxLocale::LcCategory>(c);
        category_by_name.emplace(category_names[c], category);
        name_by_category.emplace(category, category_names[c]);
    }
    static constexpr const char* opt_names[] = {"jvmencoding", "termencoding", "terminputencoding",
                                                "termoutputencoding", "papersize", "unittype"};
    for (int t = QxLcOptDataCtx::jvmencoding; t <= QxLcOptDataCtx::unittype; ++t)
        opt_data_by_name.emplace(opt_names[t], static_cast<QxLcOptDataCtx::LcOptDataType>(t));

    log(context_source, "Locale context was initialized.");
}

void QxLocaleCtx::log(std::string_view source, std::string_view message)
{
    std::string entry(source);
    entry.append(" - ").append(message);
    event_log.push_back(std::move(entry));
}

void QxLocaleCtx::log(std::string_view source, std::string_view message, long number)
{
    log(source, std::string(message) + std::to_string(number));
}

locale_entry& QxLocaleCtx::push_entry(std::unique_ptr<QxLocaleImpl> locale)
{
    auto entry = std::make_unique<locale_entry>();
    entry->prototype = open_prototype(locale->encoding_ref());
    entry->locale = std::move(locale);
    locale_stack.reserve(locale_stack.size() + 1);
    // Deliberately never freed: references to its locale are handed out for the process's life.
    locale_entry* immortal = entry.release();
    locale_stack.push_back(immortal);
    current_entry.exchange(immortal);
    return *immortal;
}

locale_entry& QxLocaleCtx::current()
{
    std::lock_guard<std::mutex> lock(global_mutex);
    return *locale_stack.back();
}

QxLocaleCtx& locale_context()
{
    // Never destroyed: locale references handed out must outlive every caller.
    return context_region.get([] { return new QxLocaleCtx(); });
}

converter_ptr clone_current_converter()
{
    locale_entry& entry = locale_context().current();
    if (converter_ptr clone = clone_of(entry.prototype.get()))
        return clone;
    UErrorCode status = U_ZERO_ERROR;
    converter_ptr opened(ucnv_open(entry.locale->encoding_ref().c_str(), &status));
    if (U_FAILURE(status) || !opened)
        fl::detail::throw_exception(CvtConversionFailure());
    return opened;
}

UConverter* thread_current_converter()
{
    locale_entry& entry = locale_context().current();
    if (converter_prototype* mine = entry.thread_converter.get())
        return mine->converter.get();
    converter_ptr clone = clone_of(entry.prototype.get());
    if (!clone)
        fl::detail::throw_exception(CvtConversionFailure());
    auto record = std::make_unique<converter_prototype>();
    record->converter = std::move(clone);
    record->name = entry.prototype->name;
    entry.thread_converter.reset(record.release());
    return entry.thread_converter->converter.get();
}

}  // namespace fl::i18n::detail

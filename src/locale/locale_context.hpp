// The process-wide locale context and the default converters that other subsystems draw from it.
#pragma once

#include "locale_impl.hpp"
#include "locale_registry.hpp"
#include "system_locale.hpp"

#include "conversion/converter_state.hpp"

#include <fl/i18n/locale.hpp>

#include <boost/thread/tss.hpp>

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace fl::i18n::detail {

/// An ICU converter opened on a locale's encoding, with that encoding's name.
struct converter_prototype {
    converter_ptr converter;  // null when ICU could not open the encoding
    std::string name;
};

/// One record of the locale stack. Records are never freed, so references to their locales
/// stay valid for the life of the process.
struct locale_entry {
    std::unique_ptr<QxLocaleImpl> locale;
    std::unique_ptr<converter_prototype> prototype;
    // One clone of the prototype per thread: ICU converters must not be shared between threads.
    boost::thread_specific_ptr<converter_prototype> thread_converter;
};

class QxLocaleCtx {
public:
    QxLocaleCtx();
    QxLocaleCtx(const QxLocaleCtx&) = delete;
    QxLocaleCtx& operator=(const QxLocaleCtx&) = delete;

    std::int32_t status = 2;
    std::string init_warning;
    std::string lcdata_path;
    locale_registry registry;
    system_setting_context system_setting;
    std::unique_ptr<QxLocaleImpl> system_locale;
    std::vector<locale_entry*> locale_stack;  // [0] classic, back() global; guarded by global_mutex
    std::atomic<locale_entry*> current_entry{nullptr};
    std::atomic<const QxLocale*> system_locale_ref{nullptr};
    std::unique_ptr<system_locale_resolver> resolver;  // made by start-up
    std::uint8_t l10n_enabled = 1;
    std::uint8_t global_locked = 0;
    std::mutex global_mutex;
    std::vector<std::string> event_log;
    std::map<std::string, QxLocale::LcCategory> category_by_name;
    std::map<QxLocale::LcCategory, std::string> name_by_category;
    std::map<std::string, QxLcOptDataCtx::LcOptDataType> opt_data_by_name;
    std::int32_t l10n_control = 0;

    /// Appends "source - message" to the event log. Caller holds global_mutex (or is creating).
    void log(std::string_view source, std::string_view message);
    /// Appends "source - message" followed at once by the number.
    void log(std::string_view source, std::string_view message, long number);

    /// Appends a record for `locale` with a converter prototype on its encoding and makes it the
    /// global locale. Caller holds global_mutex (or is creating).
    locale_entry& push_entry(std::unique_ptr<QxLocaleImpl> locale);

    /// The record of the global locale, read under global_mutex.
    locale_entry& current();

private:
    void initQxLcCtx();
};

/// The context, created on first use. A failed creation throws and leaves the next call to retry.
QxLocaleCtx& locale_context();

/// A private converter for the global locale's encoding; the caller owns it.
/// Throws CvtConversionFailure when no converter can be made.
converter_ptr clone_current_converter();

/// The calling thread's converter for the global locale's encoding. Do not close it and do not
/// keep it past the call. Throws CvtConversionFailure when the prototype cannot be cloned.
UConverter* thread_current_converter();

}  // namespace fl::i18n::detail

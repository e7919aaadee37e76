// Construction, comparison and queries of the locale object.
#include "locale_impl.hpp"

#include "locale_name.hpp"

#include "common/throw_exception.hpp"
#include "conversion/encoding_names.hpp"

#include <unicode/ulocdata.h>

namespace fl::i18n {
namespace {

constexpr const char* posix_name = "en_US_POSIX";

// The name under which the messages of the POSIX locale are looked up.
const std::string& slot_name_for(QxLocale::LcCategory category, const std::string& name)
{
    static const std::string en_us = "en_US";
    return category == QxLocale::lc_messages && name == posix_name ? en_us : name;
}

std::string canonical_or_throw(const detail::locale_registry& registry, const std::string& name)
{
    if (name.empty())
        detail::throw_invalid_argument();
    const std::string base(detail::strip_name(name));
    std::string canonical = detail::canonical_locale_name(registry, base);
    if (canonical.empty())
        detail::throw_invalid_name(base);
    return canonical;
}

// ICU's data for a locale id, retried with the POSIX locale on an error; 0 when both fail.
template <class Query>
int query_with_retry(const std::string& locale, Query query)
{
    for (const std::string& id : {locale, std::string(posix_name)}) {
        UErrorCode status = U_ZERO_ERROR;
        const int value = query(id.c_str(), &status);
        if (U_SUCCESS(status))
            return value;
    }
    return 0;
}

}  // namespace

namespace detail {

std::string resolve_codeset(const locale_registry& registry, const std::string& codeset)
{
    const std::string icu_name = icu_standard_name(codeset);
    const char* standard = icu_name.empty() ? nullptr : registry.find_standard_encoding(icu_name);
    if (standard == nullptr)
        throw_invalid_name(codeset);
    return standard;
}

}  // namespace detail

QxLocale::~QxLocale() = default;

QxLocaleImpl::QxLocaleImpl(const detail::locale_registry& registry) noexcept : registry_(&registry) {}

QxLocaleImpl::QxLocaleImpl(const detail::locale_registry& registry, const std::string& name)
    : registry_(&registry)
{
    if (name.empty())
        detail::throw_invalid_argument();
    const std::string_view base = detail::strip_name(name);
    const detail::canonical_result canonical = detail::canonicalize(registry, base);
    if (canonical.name.empty())
        detail::throw_invalid_name(std::string(base));
    // A name that is already canonical needs no second check: the check would repeat the
    // lookup just made, and its default encoding follows from the row just found.
    const bool settled = !canonical.from_alias && canonical.name == base;
    const bool bare = base.size() == name.size();
    const detail::parsed_locale_name parsed = bare ? detail::parsed_locale_name{} : detail::parse_locale_name(name);
    std::string modifiers = detail::compose_modifiers(parsed);
    if (!settled)
        set_category(canonical.name, modifiers, lc_ctype);
    settings_[0] = {canonical.name, std::move(modifiers)};
    setting_of_.fill(0);
    if (canonical.name == posix_name)
        store(lc_messages, canonical.name, settings_[0].modifiers);

    if (!parsed.codeset.empty())
        encoding_ = detail::resolve_codeset(registry, parsed.codeset);
    else if (canonical.name == posix_name)
        encoding_ = "UTF-8";
    else if (settled)
        encoding_ = registry.default_encoding_of_row(canonical.name, canonical.row);
    else
        encoding_ = registry.default_encoding_of(canonical.name);
}

QxLocaleImpl::QxLocaleImpl(const detail::locale_registry& registry, const QxLocale& base) : registry_(&registry)
{
    if (const auto* impl = dynamic_cast<const QxLocaleImpl*>(&base)) {
        settings_ = impl->settings_;
        setting_of_ = impl->setting_of_;
        encoding_ = impl->encoding_;
        terminal_encoding_ = impl->terminal_encoding_.empty() ? impl->encoding_ : impl->terminal_encoding_;
        return;
    }
    for (int c = lc_ctype; c <= lc_messages; ++c) {
        const auto category = static_cast<LcCategory>(c);
        store(category, base.getName(category), base.getModifiers(category));
    }
    encoding_ = base.getEncoding();
    terminal_encoding_ = std::get<std::string>(base.getLocaleData(QxLcOptDataCtx::termencoding));
}

void QxLocaleImpl::set_category(const std::string& name, const std::string& modifiers, LcCategory category)
{
    const std::string base(detail::strip_name(name));
    if (detail::canonical_locale_name(*registry_, base).empty())
        detail::throw_invalid_name(base);
    store(category, name, modifiers);
}

namespace detail {

category_setting parse_category_name(const locale_registry& registry, const std::string& text)
{
    category_setting out;
    out.canonical = canonical_or_throw(registry, text);
    const parsed_locale_name parsed = parse_locale_name(text);
    if (!parsed.codeset.empty())
        out.encoding = resolve_codeset(registry, parsed.codeset);
    out.modifiers = compose_modifiers(parsed);
    return out;
}

}  // namespace detail

void QxLocaleImpl::set_category_from_name(LcCategory category, const std::string& text)
{
    // The name's codeset is checked and then dropped: a category has no encoding of its own.
    const detail::category_setting parsed = detail::parse_category_name(*registry_, text);
    set_category(parsed.canonical, parsed.modifiers, category);
}

bool QxLocaleImpl::shared_by_another(std::size_t setting, std::size_t category) const noexcept
{
    for (std::size_t c = 0; c < setting_of_.size(); ++c)
        if (c != category && setting_of_[c] == setting)
            return true;
    return false;
}

void QxLocaleImpl::store(LcCategory category, const std::string& name, const std::string& modifiers)
{
    const auto index = static_cast<std::size_t>(category);
    if (index >= setting_of_.size())
        detail::throw_invalid_argument();
    const std::string& stored = slot_name_for(category, name);
    for (std::size_t s = 0; s < settings_.size(); ++s) {
        if (shared_by_another(s, index) && settings_[s].name == stored && settings_[s].modifiers == modifiers) {
            setting_of_[index] = static_cast<std::uint8_t>(s);
            return;
        }
    }
    // The category's own entry when no other category uses it, else a free one: five other
    // categories can hold at most five of the six entries.
    for (std::size_t s = setting_of_[index];; s = (s + 1) % settings_.size()) {
        if (!shared_by_another(s, index)) {
            settings_[s] = {stored, modifiers};
            setting_of_[index] = static_cast<std::uint8_t>(s);
            return;
        }
    }
}

const QxLocaleImpl::category_slot& QxLocaleImpl::slot(LcCategory category) const
{
    if (category < lc_ctype || category > lc_messages)
        detail::throw_invalid_argument();
    return settings_[setting_of_[static_cast<std::size_t>(category)]];
}

bool QxLocaleImpl::operator==(const QxLocale& other) const
{
    for (int c = lc_ctype; c <= lc_messages; ++c) {
        const auto category = static_cast<LcCategory>(c);
        const auto& mine = slot(category);
        if (mine.name != other.getName(category) || mine.modifiers != other.getModifiers(category))
            return false;
    }
    return encoding_ == other.getEncoding();
}

bool QxLocaleImpl::operator!=(const QxLocale& other) const { return !(*this == other); }

std::string QxLocaleImpl::getName(LcCategory category) const { return slot(category).name; }

std::string QxLocaleImpl::getLanguage(LcCategory category, int form) const
{
    const auto parsed = detail::parse_locale_name(slot(category).name);
    return form == 1 ? parsed.language : detail::compose_language(parsed);
}

std::string QxLocaleImpl::getTerritory(LcCategory category) const
{
    return detail::parse_locale_name(slot(category).name).territory;
}

std::string QxLocaleImpl::getModifiers(LcCategory category) const { return slot(category).modifiers; }

std::string QxLocaleImpl::getExtras(LcCategory category) const
{
    return detail::compose_extras(detail::parse_locale_name(slot(category).name));
}

std::string QxLocaleImpl::getEncoding() const { return encoding_; }

std::string QxLocaleImpl::getDefaultEncoding() const
{
    const char* encoding = registry_->default_encoding_of(slot(lc_ctype).name);
    return encoding ? encoding : std::string();
}

QxLocale::LocaleData QxLocaleImpl::getLocaleData(QxLcOptDataCtx::LcOptDataType type) const
{
    switch (type) {
    case QxLcOptDataCtx::jvmencoding:
        // An encoding outside the registry has no name to give; std::string refuses the null.
        return std::string(registry_->find_jvm_encoding(encoding_));
    case QxLcOptDataCtx::termencoding:
    case QxLcOptDataCtx::terminputencoding:
    case QxLcOptDataCtx::termoutputencoding:
        return terminal_encoding_.empty() ? encoding_ : terminal_encoding_;
    case QxLcOptDataCtx::papersize: {
        const int a4 = query_with_retry(slot(lc_time).name, [](const char* id, UErrorCode* status) {
            int32_t height = 0;
            int32_t width = 0;
            ulocdata_getPaperSize(id, &height, &width, status);
            return height == 297 && width == 210 ? 1 : 0;
        });
        return a4 == 1 ? paper_a4 : paper_other;
    }
    case QxLcOptDataCtx::unittype: {
        const int system = query_with_retry(slot(lc_time).name, [](const char* id, UErrorCode* status) {
            const UMeasurementSystem measurement = ulocdata_getMeasurementSystem(id, status);
            return measurement == UMS_SI ? 1 : measurement == UMS_UK ? 2 : 0;
        });
        return static_cast<UnitType>(system);
    }
    }
    detail::throw_invalid_argument();
}

}  // namespace fl::i18n

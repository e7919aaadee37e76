// The one implementation of QxLocale: six category slots, an encoding and a terminal encoding.
#pragma once

#include "locale_registry.hpp"

#include <fl/i18n/locale.hpp>

#include <array>
#include <cstdint>
#include <string>

namespace fl::i18n {

class QxLocaleImpl final : public QxLocale {
public:
    /// All slots and encodings empty.
    explicit QxLocaleImpl(const detail::locale_registry& registry) noexcept;
    /// From a locale name: every category takes its canonical name and modifiers; the encoding is
    /// the codeset of the name or the locale's default. Throws QxLcInvLcArgument / QxLcInvLcName.
    QxLocaleImpl(const detail::locale_registry& registry, const std::string& name);
    /// A copy through the virtual interface, without validation.
    QxLocaleImpl(const detail::locale_registry& registry, const QxLocale& base);

    bool operator==(const QxLocale& other) const override;
    bool operator!=(const QxLocale& other) const override;
    std::string getName(LcCategory category) const override;
    std::string getLanguage(LcCategory category, int form) const override;
    std::string getTerritory(LcCategory category) const override;
    std::string getModifiers(LcCategory category) const override;
    std::string getExtras(LcCategory category) const override;
    std::string getEncoding() const override;
    std::string getDefaultEncoding() const override;
    LocaleData getLocaleData(QxLcOptDataCtx::LcOptDataType type) const override;

    /// Stores `name` and `modifiers` in a slot after checking that the name canonicalises;
    /// the messages slot stores "en_US" for "en_US_POSIX". The encoding is left alone.
    void set_category(const std::string& name, const std::string& modifiers, LcCategory category);
    /// Sets a slot from a caller's "name[.codeset][@modifiers]"; the codeset is checked, then dropped.
    void set_category_from_name(LcCategory category, const std::string& text);
    void set_encoding(std::string encoding) { encoding_ = std::move(encoding); }
    void set_terminal_encoding(std::string encoding) { terminal_encoding_ = std::move(encoding); }

    const std::string& name_ref(LcCategory category) const { return slot(category).name; }
    const std::string& encoding_ref() const noexcept { return encoding_; }

private:
    struct category_slot {
        std::string name;
        std::string modifiers;  // without a leading "@"
    };

    const category_slot& slot(LcCategory category) const;
    void store(LcCategory category, const std::string& name, const std::string& modifiers);
    bool shared_by_another(std::size_t setting, std::size_t category) const noexcept;

    const detail::locale_registry* registry_;
    // Most locales give all six categories one setting, so the distinct settings are kept once
    // and each category points at its own; an entry no category points at is free.
    std::array<category_slot, 6> settings_;
    std::array<std::uint8_t, 6> setting_of_{};
    std::string encoding_;
    std::string terminal_encoding_;
};

namespace detail {

/// A caller's "name[.codeset][@modifiers]" for one category, checked like a locale name.
struct category_setting {
    std::string canonical;
    std::string encoding;  // empty when the name has no codeset
    std::string modifiers;
};
category_setting parse_category_name(const locale_registry& registry, const std::string& text);

/// The registry's standard name of a codeset as ICU understands it; throws QxLcInvLcName(codeset)
/// when ICU cannot open it or the registry does not know it.
std::string resolve_codeset(const locale_registry& registry, const std::string& codeset);

/// Throws a locale exception through the library's one throwing helper.
[[noreturn]] void throw_invalid_name(const std::string& name);
[[noreturn]] void throw_invalid_argument();
[[noreturn]] void throw_data_not_found();

}  // namespace detail
}  // namespace fl::i18n

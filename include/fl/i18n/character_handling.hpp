// How an operation treats case, normalisation and locale, and the tag classes that pick a
// variant of transform, compare, find and scan.
#pragma once

#include <fl/i18n/export.hpp>

#include <cstdint>

namespace fl::i18n {

class QxLocale;

/// A mask of handling bits: 1 case insensitive, 2 normalised, 4 (with 2) decomposed rather than
/// composed, 8 locale dependent, 16 normalisation insensitive. Immutable once built.
class QXI18N_API character_handling_mode_context {
public:
    static const unsigned int default_mode;                    // 0
    static const unsigned int case_insensitive_mode;           // 1
    static const unsigned int normalized_compose_mode;         // 2
    static const unsigned int normalized_decompose_mode;       // 6
    static const unsigned int locale_mode;                     // 8
    static const unsigned int normalization_insensitive_mode;  // 16

    /// Throws CtypeInvalidArgument for a mask above 31. Every value from 0 to 31 is kept,
    /// including combinations a particular operation refuses later.
    explicit character_handling_mode_context(unsigned int mask);
    ~character_handling_mode_context();

    bool is_case_sensitive_mode() const noexcept { return (mask_ & 1U) == 0; }
    bool is_normalized_compose_mode() const noexcept { return (mask_ & 6U) == 2U; }
    bool is_normalized_decompose_mode() const noexcept { return (mask_ & 6U) == 6U; }
    bool is_locale_dependent_mode() const noexcept { return (mask_ & 8U) != 0; }
    bool is_normalization_insensitive_mode() const noexcept { return (mask_ & 16U) != 0; }
    /// The mask as given.
    std::uint32_t get_mask() const noexcept { return mask_; }

private:
    std::uint32_t mask_;
};

// Transform tags.
struct to_lower {};
struct to_upper {};
/// Case mapping with the rules of a locale's ctype category; the caller keeps the locale alive.
struct to_lower_locale {
    explicit to_lower_locale(const QxLocale& l) noexcept : locale(&l) {}
    const QxLocale* locale;
};
struct to_upper_locale {
    explicit to_upper_locale(const QxLocale& l) noexcept : locale(&l) {}
    const QxLocale* locale;
};
struct to_nfc {};
struct to_nfd {};
struct to_nfkc {};
struct to_nfkd {};
/// Decomposes, removes non-spacing marks and recomposes.
struct to_no_diacritics {};

// Comparison and search tags.
struct case_sensitive {};
struct case_insensitive {};
struct normalized_case_sensitive {};
struct normalized_case_insensitive {};
struct normalized_compatibility_case_sensitive {};
struct normalized_compatibility_case_insensitive {};

// Scan predicates: a code point in (is_posix) or out of (is_not_posix) the classes of a mask.
struct is_posix {};
struct is_not_posix {};

}  // namespace fl::i18n

// Comparison and search of UTF-16 text by case and normalisation.
#pragma once

#include <fl/i18n/character_handling.hpp>
#include <fl/i18n/export.hpp>

#include <string_view>

namespace fl::i18n::detail {

// Negative, zero or positive. A null or empty text orders before any other; lengths of 2^31
// units or more throw CtypeSizeTooLarge (b's before a's), ICU failures CtypeStrCompFailure.
QXI18N_API int compare(const char16_t* a, unsigned long a_length, const char16_t* b,
                       unsigned long b_length, const case_sensitive& tag);
QXI18N_API int compare(const char16_t* a, unsigned long a_length, const char16_t* b,
                       unsigned long b_length, const case_insensitive& tag);
QXI18N_API int compare(const char16_t* a, unsigned long a_length, const char16_t* b,
                       unsigned long b_length, const normalized_case_sensitive& tag);
QXI18N_API int compare(const char16_t* a, unsigned long a_length, const char16_t* b,
                       unsigned long b_length, const normalized_case_insensitive& tag);
QXI18N_API int compare(const char16_t* a, unsigned long a_length, const char16_t* b,
                       unsigned long b_length, const normalized_compatibility_case_sensitive& tag);
QXI18N_API int compare(const char16_t* a, unsigned long a_length, const char16_t* b,
                       unsigned long b_length, const normalized_compatibility_case_insensitive& tag);

/// Returned by find when the needle does not occur.
inline constexpr unsigned long npos = static_cast<unsigned long>(-1);

// The position of the needle in the haystack, counted in units of the transformed haystack
// (upper-cased and/or NFC), or npos. An empty needle is found at 0.
QXI18N_API unsigned long find(std::u16string_view haystack, std::u16string_view needle,
                              const case_sensitive& tag);
QXI18N_API unsigned long find(std::u16string_view haystack, std::u16string_view needle,
                              const case_insensitive& tag);
QXI18N_API unsigned long find(std::u16string_view haystack, std::u16string_view needle,
                              const normalized_case_sensitive& tag);
QXI18N_API unsigned long find(std::u16string_view haystack, std::u16string_view needle,
                              const normalized_case_insensitive& tag);

}  // namespace fl::i18n::detail

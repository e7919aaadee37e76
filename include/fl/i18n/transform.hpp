// Case mapping, normalisation and removal of diacritics over UTF-16 text.
#pragma once

#include <fl/i18n/character_handling.hpp>
#include <fl/i18n/export.hpp>
#include <fl/i18n/ustring.hpp>

namespace fl::i18n::detail {

// Each writes the transformed `src` to `dest` (not terminated) and returns the length the whole
// output needs, fitted or not. A null or empty source returns 0 without calling ICU; a null
// `dest` is a pre-flight. Lengths of 2^31 units or more throw CtypeSizeTooLarge, ICU failures
// CtypeTransformFailure.
QXI18N_API unsigned long transform(char16_t* dest, unsigned long dest_capacity, const char16_t* src,
                                   unsigned long src_length, const to_lower& tag);
QXI18N_API unsigned long transform(char16_t* dest, unsigned long dest_capacity, const char16_t* src,
                                   unsigned long src_length, const to_upper& tag);
QXI18N_API unsigned long transform(char16_t* dest, unsigned long dest_capacity, const char16_t* src,
                                   unsigned long src_length, const to_lower_locale& tag);
QXI18N_API unsigned long transform(char16_t* dest, unsigned long dest_capacity, const char16_t* src,
                                   unsigned long src_length, const to_upper_locale& tag);
QXI18N_API unsigned long transform(char16_t* dest, unsigned long dest_capacity, const char16_t* src,
                                   unsigned long src_length, const to_nfc& tag);
QXI18N_API unsigned long transform(char16_t* dest, unsigned long dest_capacity, const char16_t* src,
                                   unsigned long src_length, const to_nfd& tag);
QXI18N_API unsigned long transform(char16_t* dest, unsigned long dest_capacity, const char16_t* src,
                                   unsigned long src_length, const to_nfkc& tag);
QXI18N_API unsigned long transform(char16_t* dest, unsigned long dest_capacity, const char16_t* src,
                                   unsigned long src_length, const to_nfkd& tag);
/// Copies min(result, capacity) units and returns max(result, capacity): a return equal to the
/// capacity does not tell the length. Prefer do_transform, which returns the string.
QXI18N_API unsigned long transform(char16_t* dest, unsigned long dest_capacity, const char16_t* src,
                                   unsigned long src_length, const to_no_diacritics& tag);

/// The text without diacritics. A null `src` with a non-zero length throws std::logic_error.
QXI18N_API ustring do_transform(const char16_t* src, unsigned long length, const to_no_diacritics& tag);
/// Removes diacritics in place; on failure the text is partly processed.
QXI18N_API ustring& do_transform(ustring& text, const to_no_diacritics& tag);

}  // namespace fl::i18n::detail

namespace foundation::ustring::detail {

/// The transformed text as a string: one pass through a 1024-unit stack buffer, a second pass
/// into the result only when the output is longer.
template <class CharT, class Tag>
std::basic_string<CharT> do_transform_impl(const CharT* src, unsigned long length, const Tag& tag)
{
    constexpr unsigned long inline_capacity = 1024;
    CharT buffer[inline_capacity];
    const unsigned long needed = fl::i18n::detail::transform(buffer, inline_capacity, src, length, tag);
    if (needed == 0)
        return {};
    if (needed <= inline_capacity)
        return std::basic_string<CharT>(buffer, needed);
    std::basic_string<CharT> result(needed, CharT());
    result.resize(fl::i18n::detail::transform(result.data(), needed, src, length, tag));
    return result;
}

/// Removal of diacritics reports capacity rather than length, so it goes through do_transform.
template <>
inline std::basic_string<char16_t> do_transform_impl<char16_t, fl::i18n::to_no_diacritics>(
    const char16_t* src, unsigned long length, const fl::i18n::to_no_diacritics& tag)
{
    return fl::i18n::detail::do_transform(src, length, tag);
}

extern template QXI18N_API std::basic_string<char16_t>
do_transform_impl<char16_t, fl::i18n::to_nfc>(const char16_t*, unsigned long, const fl::i18n::to_nfc&);
extern template QXI18N_API std::basic_string<char16_t>
do_transform_impl<char16_t, fl::i18n::to_upper>(const char16_t*, unsigned long, const fl::i18n::to_upper&);

}  // namespace foundation::ustring::detail

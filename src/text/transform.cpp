// Case mapping and normalisation of UTF-16 text through ICU, with the library's buffer protocol.
#include <fl/i18n/transform.hpp>

#include "no_diacritics.hpp"
#include "text_internal.hpp"

#include <fl/i18n/locale.hpp>

#include <unicode/unorm2.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstdint>
#include <string>

namespace fl::i18n::detail {
namespace {

using case_mapping = int32_t (*)(UChar*, int32_t, const UChar*, int32_t, const char*, UErrorCode*);
using normalizer_instance = const UNormalizer2* (*)(UErrorCode*);

// A null destination asks only for the size, whatever capacity comes with it.
unsigned long checked_capacity(const char16_t* dest, unsigned long dest_capacity)
{
    if (dest == nullptr)
        return 0;
    check_text_size(dest_capacity);
    return dest_capacity;
}

// A buffer too small and every warning are success: the caller sees the needed length.
unsigned long needed_length(int32_t length, UErrorCode status)
{
    if (U_FAILURE(status) && status != U_BUFFER_OVERFLOW_ERROR)
        fl::detail::throw_exception(CtypeTransformFailure(status));
    return static_cast<unsigned long>(length);
}

unsigned long map_case(case_mapping mapping, const char* locale, char16_t* dest, unsigned long dest_capacity,
                       const char16_t* src, unsigned long src_length)
{
    if (is_empty_text(src, src_length))
        return 0;
    check_text_size(src_length);
    const unsigned long capacity = checked_capacity(dest, dest_capacity);
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = mapping(dest, static_cast<int32_t>(capacity), src, static_cast<int32_t>(src_length),
                                   locale, &status);
    return needed_length(length, status);
}

unsigned long normalize(normalizer_instance instance, char16_t* dest, unsigned long dest_capacity,
                        const char16_t* src, unsigned long src_length)
{
    if (is_empty_text(src, src_length))
        return 0;
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* normalizer = instance(&status);
    if (U_FAILURE(status))
        fl::detail::throw_exception(CtypeTransformFailure(status));
    const unsigned long capacity = checked_capacity(dest, dest_capacity);
    check_text_size(src_length);
    status = U_ZERO_ERROR;
    const int32_t length = unorm2_normalize(normalizer, src, static_cast<int32_t>(src_length), dest,
                                            static_cast<int32_t>(capacity), &status);
    return needed_length(length, status);
}

// The root locale: no language-specific rule such as Turkish dotted i.
constexpr const char* root_locale = "";

}  // namespace

unsigned long transform(char16_t* dest, unsigned long dest_capacity, const char16_t* src, unsigned long src_length,
                        const to_lower&)
{
    return map_case(u_strToLower, root_locale, dest, dest_capacity, src, src_length);
}

unsigned long transform(char16_t* dest, unsigned long dest_capacity, const char16_t* src, unsigned long src_length,
                        const to_upper&)
{
    return map_case(u_strToUpper, root_locale, dest, dest_capacity, src, src_length);
}

// The locale is asked for its name before anything else, so a bad locale fails even on empty text.
unsigned long transform(char16_t* dest, unsigned long dest_capacity, const char16_t* src, unsigned long src_length,
                        const to_lower_locale& tag)
{
    const std::string name = tag.locale->getName(QxLocale::lc_ctype);
    return map_case(u_strToLower, name.c_str(), dest, dest_capacity, src, src_length);
}

unsigned long transform(char16_t* dest, unsigned long dest_capacity, const char16_t* src, unsigned long src_length,
                        const to_upper_locale& tag)
{
    const std::string name = tag.locale->getName(QxLocale::lc_ctype);
    return map_case(u_strToUpper, name.c_str(), dest, dest_capacity, src, src_length);
}

unsigned long transform(char16_t* dest, unsigned long dest_capacity, const char16_t* src, unsigned long src_length,
                        const to_nfc&)
{
    return normalize(unorm2_getNFCInstance, dest, dest_capacity, src, src_length);
}

unsigned long transform(char16_t* dest, unsigned long dest_capacity, const char16_t* src, unsigned long src_length,
                        const to_nfd&)
{
    return normalize(unorm2_getNFDInstance, dest, dest_capacity, src, src_length);
}

unsigned long transform(char16_t* dest, unsigned long dest_capacity, const char16_t* src, unsigned long src_length,
                        const to_nfkc&)
{
    return normalize(unorm2_getNFKCInstance, dest, dest_capacity, src, src_length);
}

unsigned long transform(char16_t* dest, unsigned long dest_capacity, const char16_t* src, unsigned long src_length,
                        const to_nfkd&)
{
    return normalize(unorm2_getNFKDInstance, dest, dest_capacity, src, src_length);
}

// Reports max(length, capacity) rather than the length: a result equal to the capacity may
// have been cut.
unsigned long transform(char16_t* dest, unsigned long dest_capacity, const char16_t* src, unsigned long src_length,
                        const to_no_diacritics& tag)
{
    const ustring result = do_transform(src, src_length, tag);
    const unsigned long capacity = dest == nullptr ? 0 : dest_capacity;
    std::copy_n(result.data(), std::min<unsigned long>(result.size(), capacity), dest);
    return std::max<unsigned long>(result.size(), capacity);
}

}  // namespace fl::i18n::detail

namespace foundation::ustring::detail {

template QXI18N_API std::basic_string<char16_t>
do_transform_impl<char16_t, fl::i18n::to_nfc>(const char16_t*, unsigned long, const fl::i18n::to_nfc&);
template QXI18N_API std::basic_string<char16_t>
do_transform_impl<char16_t, fl::i18n::to_upper>(const char16_t*, unsigned long, const fl::i18n::to_upper&);

}  // namespace foundation::ustring::detail

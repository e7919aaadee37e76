// Mapping of ICU status codes to the conversion exceptions.
#include "conversion_internal.hpp"

namespace fl::i18n::detail {

[[noreturn]] void throw_icu_conversion_error(UErrorCode status)
{
    if (status == U_INVALID_CHAR_FOUND || status == U_ILLEGAL_CHAR_FOUND)
        fl::detail::throw_exception(CvtInvalidCharacter());
    fl::detail::throw_exception(CvtConversionFailure());
}

[[noreturn]] void throw_utf_error(UErrorCode status, unsigned long source_length, unsigned long limit)
{
    if (source_length > limit)
        fl::detail::throw_exception(CvtSizeTooLarge());
    throw_icu_conversion_error(status);
}

}  // namespace fl::i18n::detail

// Direct (unchunked) ICU UTF calls wrapped in the size and error check of the conversion layer.
#pragma once

#include "conversion_internal.hpp"

namespace fl::i18n::detail {

/// Longest source each direction takes in one direct call.
constexpr unsigned long from_utf16_limit = 0x3FFFFFFFUL;
constexpr unsigned long to_utf16_limit = 0x7FFFFFFFUL;

/// Runs `call(destination, capacity, &length, &status)` for an ICU function of the
/// u_strToUTF8 family and returns the length the whole source needs. A buffer overflow is
/// not an error: the needed length is the answer.
template <class Call>
unsigned long checked_utf_call(unsigned long source_length, unsigned long capacity, unsigned long limit, Call&& call)
{
    check_icu_sizes(source_length, capacity);
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    call(static_cast<int32_t>(capacity), &length, &status);
    if (status > U_ZERO_ERROR && status != U_BUFFER_OVERFLOW_ERROR)
        throw_utf_error(status, source_length, limit);
    if (length < 0)
        fl::detail::throw_exception(CvtSizeTooLarge());
    return static_cast<unsigned long>(length);
}

}  // namespace fl::i18n::detail

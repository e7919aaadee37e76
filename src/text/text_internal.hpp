// Internal tools of the text engine's transforms and comparisons: the empty-text rule and the
// 31-bit size check.
#pragma once

#include "common/throw_exception.hpp"
#include "conversion/conversion_internal.hpp"

#include <fl/i18n/ctype_error.hpp>

namespace fl::i18n::detail {

/// A null pointer or a zero length: the text is empty whatever the other says.
inline bool is_empty_text(const char16_t* text, unsigned long length) noexcept
{
    return text == nullptr || length == 0;
}

/// Throws CtypeSizeTooLarge for a length that ICU's int32_t interfaces cannot take.
inline void check_text_size(unsigned long length)
{
    if (length >= icu_length_limit)
        fl::detail::throw_exception(CtypeSizeTooLarge());
}

}  // namespace fl::i18n::detail

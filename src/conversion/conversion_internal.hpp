// Internal tools of the conversion layer, shared with the other subsystems: ICU error mapping,
// the two-buffer rule and the chunked conversion loop.
#pragma once

#include "common/throw_exception.hpp"

#include <fl/i18n/conversion_error.hpp>

#include <unicode/ucnv.h>
#include <unicode/utypes.h>

#include <algorithm>
#include <memory>
#include <string>

namespace fl::i18n::detail {

/// Lengths at or above this do not fit ICU's int32_t interfaces.
constexpr unsigned long icu_length_limit = 0x80000000UL;

/// Maps a failed ICU status: 10 and 12 are bad characters; everything else, U_TRUNCATED_CHAR_FOUND
/// (11) included, is a general failure.
[[noreturn]] void throw_icu_conversion_error(UErrorCode status);

/// The size and error check around a direct UTF call: `limit` is the direction's longest source.
[[noreturn]] void throw_utf_error(UErrorCode status, unsigned long source_length, unsigned long limit);

/// Throws CvtSizeTooLarge unless both sizes fit ICU's 31 bits.
inline void check_icu_sizes(unsigned long source_length, unsigned long destination_capacity)
{
    if (source_length >= icu_length_limit || destination_capacity >= icu_length_limit)
        fl::detail::throw_exception(CvtSizeTooLarge());
}

constexpr unsigned long stack_buffer_units = 1024;
constexpr unsigned long heap_buffer_units = 32768;

/// Runs `op(destination, capacity) -> needed` under the two-buffer rule: a stack buffer for short
/// sources, a bounded heap buffer for long ones, and an exact second pass only when output grew.
template <class To, class Op>
std::basic_string<To> convert_with_two_buffers(unsigned long source_length, Op&& op)
{
    unsigned long needed;
    if (source_length <= stack_buffer_units) {
        To buffer[stack_buffer_units];
        needed = op(buffer, stack_buffer_units);
        if (needed <= stack_buffer_units)
            return std::basic_string<To>(buffer, needed);
    } else {
        const unsigned long capacity = std::min(source_length, heap_buffer_units);
        std::unique_ptr<To[]> buffer(new To[capacity]);
        needed = op(buffer.get(), capacity);
        if (needed <= capacity)
            return std::basic_string<To>(buffer.get(), needed);
    }
    std::basic_string<To> result(needed, To());
    op(result.data(), needed);
    return result;
}

/// Converts with `converter` through ICU in spans that each fit 31 bits, writing at most
/// `capacity` units to `destination` (which may be null) and counting the rest in a scratch
/// buffer. Returns the size of the complete output. The converter is reset afterwards, also
/// when it throws.
unsigned long chunked_to_unicode(UConverter* converter, char16_t* destination, unsigned long capacity,
                                 const char* source, unsigned long length);
unsigned long chunked_from_unicode(UConverter* converter, char* destination, unsigned long capacity,
                                   const char16_t* source, unsigned long length);

}  // namespace fl::i18n::detail

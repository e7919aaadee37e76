// Conversions between UTF-16 and 32-bit code points, without ICU; shared by the free functions
// and the wide converters.
#pragma once

#include <fl/i18n/ustring.hpp>

#include <cstdint>
#include <string>

namespace fl::i18n::detail {

inline bool is_lead(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
inline bool is_trail(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

/// Calls `sink(code_point)` for each code point of UTF-16 text; an unpaired surrogate gives U+FFFD
/// and the unit after an unpaired lead is looked at afresh.
template <class Sink>
void for_each_code_point(const char16_t* source, unsigned long length, Sink&& sink)
{
    for (unsigned long i = 0; i < length; ++i) {
        const char16_t unit = source[i];
        if (is_lead(unit)) {
            if (i + 1 < length && is_trail(source[i + 1])) {
                sink((static_cast<std::uint32_t>(unit) << 10) + source[i + 1] - ((0xD800u << 10) + 0xDC00u - 0x10000u));
                ++i;
            } else {
                sink(0xFFFDu);
            }
        } else if (is_trail(unit)) {
            sink(0xFFFDu);
        } else {
            sink(static_cast<std::uint32_t>(unit));
        }
    }
}

/// Number of code points in UTF-16 text, counting each unpaired surrogate as one.
unsigned long count_code_points(const char16_t* source, unsigned long length);

/// UTF-16 to code points, as to_u32string does.
std::u32string utf16_to_u32string(const char16_t* source, unsigned long length);

/// UTF-16 units needed for 32-bit values: two for each value above 0xFFFF.
template <class CodePoint>
unsigned long count_utf16_units(const CodePoint* source, unsigned long length)
{
    unsigned long units = length;
    for (unsigned long i = 0; i < length; ++i)
        units += static_cast<std::uint32_t>(source[i]) > 0xFFFF;
    return units;
}

/// Writes one 32-bit value as UTF-16 without validation; returns the units written (1 or 2).
inline unsigned put_utf16(std::uint32_t value, char16_t* out)
{
    if (value > 0xFFFF) {
        out[0] = static_cast<char16_t>((value >> 10) + 0xD7C0);
        out[1] = static_cast<char16_t>((value & 0x3FF) | 0xDC00);
        return 2;
    }
    out[0] = static_cast<char16_t>(value);
    return 1;
}

/// 32-bit values to UTF-16: short text is written into a worst-case string in one pass,
/// long text is counted first so that the string is allocated exactly.
template <class CodePoint>
ustring code_points_to_utf16(const CodePoint* source, unsigned long length)
{
    constexpr unsigned long short_text = 1024;
    ustring result(length <= short_text ? 2 * length : count_utf16_units(source, length), u'\0');
    unsigned long written = 0;
    for (unsigned long i = 0; i < length; ++i)
        written += put_utf16(static_cast<std::uint32_t>(source[i]), &result[written]);
    result.resize(written);
    return result;
}

}  // namespace fl::i18n::detail

// Per-character classification and case mapping, their ASCII-only twins, surrogate helpers and
// comparisons of NUL-terminated UTF-16 strings.
#pragma once

#include <fl/i18n/export.hpp>

#include <cstdint>

namespace fl::i18n {

namespace lcctype {

/// Class bits of ascii_class_table; detail::scan takes a mask of the same bits.
namespace ascii_class {
inline constexpr std::uint16_t alpha = 0x001;
inline constexpr std::uint16_t digit = 0x002;
inline constexpr std::uint16_t cntrl = 0x004;
inline constexpr std::uint16_t punct = 0x008;
inline constexpr std::uint16_t space = 0x010;
inline constexpr std::uint16_t xdigit = 0x020;
inline constexpr std::uint16_t lower = 0x040;
inline constexpr std::uint16_t upper = 0x080;
inline constexpr std::uint16_t print = 0x100;
inline constexpr std::uint16_t blank = 0x200;
}  // namespace ascii_class

/// The classes of each code point 0 to 127. Every entry is non-zero.
inline constexpr std::uint16_t ascii_class_table[128] = {
    // 0 to 31: control characters; 9 is also space and blank, 10 to 13 also space.
    0x004, 0x004, 0x004, 0x004, 0x004, 0x004, 0x004, 0x004,
    0x004, 0x214, 0x014, 0x014, 0x014, 0x014, 0x004, 0x004,
    0x004, 0x004, 0x004, 0x004, 0x004, 0x004, 0x004, 0x004,
    0x004, 0x004, 0x004, 0x004, 0x004, 0x004, 0x004, 0x004,
    // 32 to 63: space, punctuation, digits.
    0x310, 0x108, 0x108, 0x108, 0x108, 0x108, 0x108, 0x108,
    0x108, 0x108, 0x108, 0x108, 0x108, 0x108, 0x108, 0x108,
    0x122, 0x122, 0x122, 0x122, 0x122, 0x122, 0x122, 0x122,
    0x122, 0x122, 0x108, 0x108, 0x108, 0x108, 0x108, 0x108,
    // 64 to 95: '@', upper-case letters (A to F also hex digits), punctuation.
    0x108, 0x1A1, 0x1A1, 0x1A1, 0x1A1, 0x1A1, 0x1A1, 0x181,
    0x181, 0x181, 0x181, 0x181, 0x181, 0x181, 0x181, 0x181,
    0x181, 0x181, 0x181, 0x181, 0x181, 0x181, 0x181, 0x181,
    0x181, 0x181, 0x181, 0x108, 0x108, 0x108, 0x108, 0x108,
    // 96 to 127: '`', lower-case letters (a to f also hex digits), punctuation, DEL.
    0x108, 0x161, 0x161, 0x161, 0x161, 0x161, 0x161, 0x141,
    0x141, 0x141, 0x141, 0x141, 0x141, 0x141, 0x141, 0x141,
    0x141, 0x141, 0x141, 0x141, 0x141, 0x141, 0x141, 0x141,
    0x141, 0x141, 0x141, 0x108, 0x108, 0x108, 0x108, 0x004,
};

// Unicode classifiers, answering 0 or 1 from ICU's character properties.
QXI18N_API bool iscntrl(char32_t c);
/// The White_Space property: no-break spaces count.
QXI18N_API bool isspace(char32_t c);
/// Like isspace, but no-break spaces (U+00A0, U+2007, U+202F) are not breakable.
QXI18N_API bool isbreakable_space(char32_t c);
/// ICU's answer widened with its sign.
QXI18N_API int isblank(char32_t c);
QXI18N_API bool isalpha(char32_t c);
/// Any decimal digit, not only 0 to 9.
QXI18N_API bool isdigit(char32_t c);
QXI18N_API bool isalnum(char32_t c);
QXI18N_API bool ispunct(char32_t c);
QXI18N_API bool isxdigit(char32_t c);
/// Letters, marks, numbers, punctuation and symbols; format, space and private-use characters
/// are not graphic.
QXI18N_API bool isgraph(char32_t c);
QXI18N_API bool isprint(char32_t c);
QXI18N_API bool islower(char32_t c);
QXI18N_API bool isupper(char32_t c);
/// Simple one-to-one case mappings, independent of locale.
QXI18N_API char32_t tolower(char32_t c);
QXI18N_API char32_t toupper(char32_t c);

// ASCII twins: no ICU call; any argument above 127 answers false.
inline bool isascii_character(char32_t c) noexcept { return c < 128; }

namespace detail {
inline bool ascii_has(char32_t c, std::uint16_t bits) noexcept
{
    return c < 128 && (ascii_class_table[c] & bits) != 0;
}
}  // namespace detail

inline bool isspace_ascii(char32_t c) noexcept { return detail::ascii_has(c, ascii_class::space); }
inline bool isblank_ascii(char32_t c) noexcept { return detail::ascii_has(c, ascii_class::blank); }
inline bool isalpha_ascii(char32_t c) noexcept { return detail::ascii_has(c, ascii_class::alpha); }
inline bool isdigit_ascii(char32_t c) noexcept { return detail::ascii_has(c, ascii_class::digit); }
inline bool isalnum_ascii(char32_t c) noexcept
{
    return detail::ascii_has(c, ascii_class::alpha | ascii_class::digit);
}
inline bool islower_ascii(char32_t c) noexcept { return detail::ascii_has(c, ascii_class::lower); }
inline bool isupper_ascii(char32_t c) noexcept { return detail::ascii_has(c, ascii_class::upper); }

// Code points and surrogates.
/// A Unicode scalar value: at most 0x10FFFF and not a surrogate. U+FFFE and U+FFFF count.
QXI18N_API bool is_valid_utf32(char32_t c);
/// Fits one code unit; surrogates pass.
QXI18N_API bool is_valid_uchar(char32_t c);
/// Joins a high and a low surrogate; any other pair gives U+FFFD.
QXI18N_API char32_t make_utf32_from_uchar(char16_t high, char16_t low);
/// Writes one or two code units to `out` (room for two) and returns how many. Validates nothing:
/// a surrogate value is written as one unit.
QXI18N_API std::uint64_t make_uchar_from_utf32(char32_t c, char16_t* out);

/// Compares with default case folding.
QXI18N_API int strcasecmp(const char16_t* a, const char16_t* b);
/// As strcasecmp over at most `n` units; `n` above 0x7FFFFFFF returns -1 without reading.
QXI18N_API int strncasecmp(const char16_t* a, const char16_t* b, unsigned long n);

}  // namespace lcctype

/// Code-unit order comparison of NUL-terminated strings.
QXI18N_API int strcmp(const char16_t* a, const char16_t* b);
/// As strcmp over at most `n` units; `n` above 0x7FFFFFFF returns -1 without reading.
QXI18N_API int strncmp(const char16_t* a, const char16_t* b, unsigned long n);
/// Units before the first NUL, inspecting at most `n`: `n` when none of them is NUL.
QXI18N_API unsigned long strlen_lim(const char16_t* s, unsigned long n);

}  // namespace fl::i18n

// Per-character classification and case mapping on ICU's property tables, surrogate helpers and
// comparisons of NUL-terminated UTF-16 strings.
#include <fl/i18n/lcctype.hpp>

#include "conversion/conversion_internal.hpp"

#include <unicode/uchar.h>
#include <unicode/ustring.h>

namespace fl::i18n {

namespace {

using detail::icu_length_limit;

// ICU takes a signed code point; values above 0x7FFFFFFF become negative, which ICU rejects.
UChar32 icu_char(char32_t c) noexcept { return static_cast<UChar32>(c); }

// One bit per general category, as u_charType numbers them.
bool category_in(std::uint32_t categories, char32_t c) noexcept
{
    return ((categories >> static_cast<unsigned>(u_charType(icu_char(c)))) & 1U) != 0;
}

// Lu Ll Lt Lm Lo Mn Me Mc Nd Nl No Pd Ps Pe Pc Po Sm Sc Sk So Pi Pf: ICU's u_isgraph would also
// count format characters (Cf) and private use, which are invisible here.
constexpr std::uint32_t graphic_categories = 0x7FF80FFE;

}  // namespace

namespace lcctype {

bool iscntrl(char32_t c) { return u_iscntrl(icu_char(c)) != 0; }
bool isspace(char32_t c) { return u_isUWhiteSpace(icu_char(c)) != 0; }
bool isbreakable_space(char32_t c) { return u_isWhitespace(icu_char(c)) != 0; }
int isblank(char32_t c) { return u_isblank(icu_char(c)); }
bool isalpha(char32_t c) { return u_isalpha(icu_char(c)) != 0; }
bool isdigit(char32_t c) { return u_isdigit(icu_char(c)) != 0; }
bool isalnum(char32_t c) { return u_isalnum(icu_char(c)) != 0; }
bool ispunct(char32_t c) { return u_ispunct(icu_char(c)) != 0; }
bool isxdigit(char32_t c) { return u_isxdigit(icu_char(c)) != 0; }
bool isgraph(char32_t c) { return category_in(graphic_categories, c); }
bool isprint(char32_t c) { return u_isprint(icu_char(c)) != 0; }
bool islower(char32_t c) { return u_islower(icu_char(c)) != 0; }
bool isupper(char32_t c) { return u_isupper(icu_char(c)) != 0; }

char32_t tolower(char32_t c) { return static_cast<char32_t>(u_tolower(icu_char(c))); }
char32_t toupper(char32_t c) { return static_cast<char32_t>(u_toupper(icu_char(c))); }

bool is_valid_utf32(char32_t c) { return c <= 0xD7FF || (c >= 0xE000 && c <= 0x10FFFF); }
bool is_valid_uchar(char32_t c) { return c < 0x10000; }

char32_t make_utf32_from_uchar(char16_t high, char16_t low)
{
    if (high < 0xD800 || high > 0xDBFF || low < 0xDC00 || low > 0xDFFF)
        return 0xFFFD;
    return (static_cast<char32_t>(high) << 10) + low - 0x35FDC00;
}

std::uint64_t make_uchar_from_utf32(char32_t c, char16_t* out)
{
    if (c <= 0xFFFF) {
        out[0] = static_cast<char16_t>(c);
        return 1;
    }
    out[1] = static_cast<char16_t>((c & 0x3FF) | 0xDC00);
    out[0] = static_cast<char16_t>((c >> 10) + 0xD7C0);
    return 2;
}

int strcasecmp(const char16_t* a, const char16_t* b) { return u_strcasecmp(a, b, 0); }

int strncasecmp(const char16_t* a, const char16_t* b, unsigned long n)
{
    if (n >= icu_length_limit)
        return -1;
    return u_strncasecmp(a, b, static_cast<int32_t>(n), 0);
}

}  // namespace lcctype

int strcmp(const char16_t* a, const char16_t* b) { return u_strcmp(a, b); }

int strncmp(const char16_t* a, const char16_t* b, unsigned long n)
{
    if (n >= icu_length_limit)
        return -1;
    return u_strncmp(a, b, static_cast<int32_t>(n));
}

unsigned long strlen_lim(const char16_t* s, unsigned long n)
{
    unsigned long length = 0;
    while (length < n && s[length] != 0)
        ++length;
    return length;
}

}  // namespace fl::i18n

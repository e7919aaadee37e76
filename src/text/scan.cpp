// Scanning UTF-16 text for the first code point in, or out of, a set of POSIX-like classes.
#include <fl/i18n/lcctype.hpp>
#include <fl/i18n/scan.hpp>

#include "conversion/code_points.hpp"

#include <unicode/uchar.h>

namespace fl::i18n::detail {

namespace {

namespace cls = lcctype::ascii_class;

// Pd Ps Pe Pc Po Sm Sc Sk Pi Pf: punctuation and symbols, but not So, so that a sign such as
// U+00A9 does not end a run of ordinary text.
constexpr std::uint32_t punct_categories = 0x37F80000;

bool is_punct(UChar32 c) noexcept
{
    return ((punct_categories >> static_cast<unsigned>(u_charType(c))) & 1U) != 0;
}

bool has(unsigned int mask, unsigned int bits) noexcept { return (mask & bits) == bits; }

constexpr bool wanted(const is_posix&) noexcept { return true; }
constexpr bool wanted(const is_not_posix&) noexcept { return false; }

// Decodes code points in the direction `It` moves, joining a unit with the next one read when
// the first is a high and the second a low surrogate. With `Bounded` false the unit after the
// range is read too, so a pair that straddles `last` is still joined; that unit must exist.
template <bool Bounded, class It>
It find_code_point(unsigned int mask, It first, It last, bool in_set)
{
    while (first < last) {
        char32_t c = *first;
        int width = 1;
        if (is_lead(*first)) {
            const It next = first + 1;
            if ((!Bounded || next < last) && is_trail(*next)) {
                c = lcctype::make_utf32_from_uchar(*first, *next);
                width = 2;
            }
        }
        if (char_matches_mask(mask, c) == in_set)
            return first;
        first += width;
    }
    return last;
}

template <class Char, class Pred>
Char* scan_pointers(unsigned int mask, Char* first, Char* last, const Pred& pred)
{
    if (first == nullptr || last == nullptr)
        return last;
    return find_code_point<false>(mask, first, last, wanted(pred));
}

// Runs on the string's buffer, where the unit at end() is the terminator and may be read; the
// iterator end() itself may not be dereferenced.
template <class It, class Pred>
It scan_forward(unsigned int mask, It first, It last, const Pred& pred)
{
    if (!(first < last))
        return last;
    const auto* begin = &*first;
    return first + (find_code_point<false>(mask, begin, begin + (last - first), wanted(pred)) - begin);
}

// Read backwards, the unit after the range may lie before the string's first unit (past rend(),
// which cannot be told from here), so a pair is joined only when both halves are in the range.
template <class It, class Pred>
It scan_reverse(unsigned int mask, It first, It last, const Pred& pred)
{
    return find_code_point<true>(mask, first, last, wanted(pred));
}

}  // namespace

bool char_matches_mask(unsigned int mask, char32_t code_point)
{
    const auto c = static_cast<UChar32>(code_point);
    if (has(mask, cls::cntrl) && u_iscntrl(c))
        return true;
    if (has(mask, cls::print) && u_isprint(c))
        return true;
    if (has(mask, cls::alpha | cls::digit | cls::punct)) {
        if (u_isgraph(c) || is_punct(c))
            return true;
    } else if (has(mask, cls::punct) && is_punct(c)) {
        return true;
    }
    if (has(mask, cls::blank) && u_isblank(c))
        return true;
    if (has(mask, cls::space) && u_isUWhiteSpace(c))
        return true;
    if (has(mask, cls::alpha | cls::digit)) {
        if (u_isalnum(c) || u_isalpha(c))
            return true;
    } else if (has(mask, cls::alpha) && u_isalpha(c)) {
        return true;
    }
    if (has(mask, cls::xdigit) && u_digit(c, 16) >= 0)
        return true;
    if (has(mask, cls::digit) && u_isdigit(c))
        return true;
    if (has(mask, cls::lower) && u_islower(c))
        return true;
    return has(mask, cls::upper) && u_isupper(c);
}

char16_t* scan(unsigned int mask, char16_t* first, char16_t* last, const is_posix& pred)
{
    return scan_pointers(mask, first, last, pred);
}
char16_t* scan(unsigned int mask, char16_t* first, char16_t* last, const is_not_posix& pred)
{
    return scan_pointers(mask, first, last, pred);
}
const char16_t* scan(unsigned int mask, const char16_t* first, const char16_t* last, const is_posix& pred)
{
    return scan_pointers(mask, first, last, pred);
}
const char16_t* scan(unsigned int mask, const char16_t* first, const char16_t* last, const is_not_posix& pred)
{
    return scan_pointers(mask, first, last, pred);
}

ustring::iterator scan(unsigned int mask, ustring::iterator first, ustring::iterator last, const is_posix& pred)
{
    return scan_forward(mask, first, last, pred);
}
ustring::iterator scan(unsigned int mask, ustring::iterator first, ustring::iterator last,
                       const is_not_posix& pred)
{
    return scan_forward(mask, first, last, pred);
}
ustring::const_iterator scan(unsigned int mask, ustring::const_iterator first, ustring::const_iterator last,
                             const is_posix& pred)
{
    return scan_forward(mask, first, last, pred);
}
ustring::const_iterator scan(unsigned int mask, ustring::const_iterator first, ustring::const_iterator last,
                             const is_not_posix& pred)
{
    return scan_forward(mask, first, last, pred);
}

ustring::reverse_iterator scan(unsigned int mask, ustring::reverse_iterator first, ustring::reverse_iterator last,
                               const is_posix& pred)
{
    return scan_reverse(mask, first, last, pred);
}
ustring::reverse_iterator scan(unsigned int mask, ustring::reverse_iterator first, ustring::reverse_iterator last,
                               const is_not_posix& pred)
{
    return scan_reverse(mask, first, last, pred);
}
ustring::const_reverse_iterator scan(unsigned int mask, ustring::const_reverse_iterator first,
                                     ustring::const_reverse_iterator last, const is_posix& pred)
{
    return scan_reverse(mask, first, last, pred);
}
ustring::const_reverse_iterator scan(unsigned int mask, ustring::const_reverse_iterator first,
                                     ustring::const_reverse_iterator last, const is_not_posix& pred)
{
    return scan_reverse(mask, first, last, pred);
}

}  // namespace fl::i18n::detail

// ctype_facet<char16_t>: classification and case mapping by ICU, narrowing and widening through a
// converter opened for each call.
#include "conversion_internal.hpp"
#include "converter_state.hpp"

#include <fl/i18n/facet.hpp>
#include <fl/i18n/lcctype.hpp>
#include <fl/i18n/scan.hpp>

#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace fl::i18n::facet {

namespace {

using std_mask = std::ctype_base::mask;
namespace cls = lcctype::ascii_class;

// Each std::ctype_base bit with the library's classes that answer it. libstdc++'s graph and
// alnum are unions of other bits; glibc's own graph and alnum bits are answered as those unions.
struct mask_bit {
    std_mask std_bit;
    unsigned int classes;
};
constexpr std::array<mask_bit, 12> mask_bits{{
    {std::ctype_base::upper, cls::upper},
    {std::ctype_base::lower, cls::lower},
    {std::ctype_base::alpha, cls::alpha},
    {std::ctype_base::digit, cls::digit},
    {std::ctype_base::xdigit, cls::xdigit},
    {std::ctype_base::space, cls::space},
    {std::ctype_base::print, cls::print},
    {std::ctype_base::cntrl, cls::cntrl},
    {std::ctype_base::punct, cls::punct},
    {std::ctype_base::blank, cls::blank},
    {static_cast<std_mask>(_ISgraph), cls::alpha | cls::digit | cls::punct},
    {static_cast<std_mask>(_ISalnum), cls::alpha | cls::digit},
}};

unsigned int classes_of(std_mask m)
{
    unsigned int classes = 0;
    for (const mask_bit& bit : mask_bits)
        if ((m & bit.std_bit) != 0)
            classes |= bit.classes;
    return classes;
}

// A character has the mask when any test of the asked classes holds for it.
bool has_mask(std_mask m, UChar32 c)
{
    return detail::char_matches_mask(classes_of(m), static_cast<char32_t>(c));
}

std_mask full_mask(UChar32 c)
{
    std_mask result = 0;
    for (const mask_bit& bit : mask_bits)
        if (detail::char_matches_mask(bit.classes, static_cast<char32_t>(c)))
            result = static_cast<std_mask>(result | bit.std_bit);
    return result;
}

// The code point at `low`: a surrogate pair inside the range is joined, anything else is one unit.
std::pair<UChar32, std::ptrdiff_t> next_code_point(const char16_t* low, const char16_t* high)
{
    if (U16_IS_LEAD(*low) && high - low > 1 && U16_IS_TRAIL(low[1]))
        return {U16_GET_SUPPLEMENTARY(low[0], low[1]), 2};
    return {*low, 1};
}

const char16_t* scan(std_mask m, const char16_t* low, const char16_t* high, bool wanted)
{
    while (low < high) {
        const auto [c, width] = next_code_point(low, high);
        if (has_mask(m, c) == wanted)
            return low;
        low += width;
    }
    return high;
}

template <class Map>
const char16_t* map_case(char16_t* low, const char16_t* high, Map map)
{
    while (low < high) {
        const auto [c, width] = next_code_point(low, high);
        const UChar32 mapped = map(c);
        // Simple case mappings stay in their plane, so a pair maps to a pair.
        if (width == 1) {
            *low = static_cast<char16_t>(mapped);
        } else if (U_IS_SUPPLEMENTARY(mapped)) {
            low[0] = U16_LEAD(mapped);
            low[1] = U16_TRAIL(mapped);
        }
        low += width;
    }
    return high;
}

template <class To, class From>
using icu_conversion = int32_t (*)(UConverter*, To*, int32_t, const From*, int32_t, UErrorCode*);

// A buffer overflow only tells the size; every other failure is the layer's usual exception.
void check(UErrorCode status)
{
    if (U_FAILURE(status) && status != U_BUFFER_OVERFLOW_ERROR)
        detail::throw_icu_conversion_error(status);
}

// Converts `length` units with a converter opened for this call alone, into at most `capacity`
// units; with `preflight`, ICU first measures the whole output. Returns the units written.
template <class To, class From>
int32_t convert(const std::string& encoding, icu_conversion<To, From> conversion, To* to, int32_t capacity,
                const From* source, int32_t length, bool preflight)
{
    detail::converter_state state(encoding);
    UErrorCode status = U_ZERO_ERROR;
    if (preflight) {
        conversion(state.get(), nullptr, 0, source, length, &status);
        check(status);
        status = U_ZERO_ERROR;
    }
    const int32_t written = conversion(state.get(), to, capacity, source, length, &status);
    check(status);
    return std::min(written, capacity);
}

// The range form: one output unit per input unit, the units ICU leaves over set to `filler`.
template <class To, class From>
void convert_range(const std::string& encoding, icu_conversion<To, From> conversion, const From* low,
                   const From* high, To* to, To filler)
{
    const auto units = static_cast<unsigned long>(high - low);
    detail::check_icu_sizes(units, units);
    const auto length = static_cast<int32_t>(units);
    const int32_t written = convert(encoding, conversion, to, length, low, length, true);
    std::fill(to + written, to + length, filler);
}

// The one-character form: the first unit out, or 0 if none came out.
template <class To, class From>
To convert_one(const std::string& encoding, icu_conversion<To, From> conversion, From c)
{
    To buffer[16];
    return convert(encoding, conversion, buffer, 16, &c, 1, false) > 0 ? buffer[0] : To();
}

}  // namespace

ctype_facet<char16_t>::ctype_facet(const std::string& encoding, std::size_t refs)
    : std::ctype_byname<char16_t>("", refs), encoding_(encoding)
{
}

ctype_facet<char16_t>::~ctype_facet() = default;

bool ctype_facet<char16_t>::do_is(mask m, char16_t c) const { return has_mask(m, c); }

const char16_t* ctype_facet<char16_t>::do_is(const char16_t* low, const char16_t* high, mask* vec) const
{
    while (low < high) {
        const auto [c, width] = next_code_point(low, high);
        const mask m = full_mask(c);
        for (std::ptrdiff_t i = 0; i < width; ++i)
            *vec++ = m;
        low += width;
    }
    return high;
}

const char16_t* ctype_facet<char16_t>::do_scan_is(mask m, const char16_t* low, const char16_t* high) const
{
    return scan(m, low, high, true);
}

const char16_t* ctype_facet<char16_t>::do_scan_not(mask m, const char16_t* low, const char16_t* high) const
{
    return scan(m, low, high, false);
}

char16_t ctype_facet<char16_t>::do_toupper(char16_t c) const { return static_cast<char16_t>(u_toupper(c)); }

const char16_t* ctype_facet<char16_t>::do_toupper(char16_t* low, const char16_t* high) const
{
    return map_case(low, high, u_toupper);
}

char16_t ctype_facet<char16_t>::do_tolower(char16_t c) const { return static_cast<char16_t>(u_tolower(c)); }

const char16_t* ctype_facet<char16_t>::do_tolower(char16_t* low, const char16_t* high) const
{
    return map_case(low, high, u_tolower);
}

char16_t ctype_facet<char16_t>::do_widen(char c) const { return convert_one(encoding_, ucnv_toUChars, c); }

const char* ctype_facet<char16_t>::do_widen(const char* low, const char* high, char16_t* to) const
{
    // Multi-byte characters leave units over; they are zeroed rather than left undefined.
    convert_range(encoding_, ucnv_toUChars, low, high, to, u'\0');
    return high;
}

char ctype_facet<char16_t>::do_narrow(char16_t c, char) const { return convert_one(encoding_, ucnv_fromUChars, c); }

const char16_t* ctype_facet<char16_t>::do_narrow(const char16_t* low, const char16_t* high,
                                                 char default_value, char* to) const
{
    // Output shorter than the range (a pair to one byte) leaves bytes over; they take the default.
    convert_range(encoding_, ucnv_fromUChars, low, high, to, default_value);
    return high;
}

}  // namespace fl::i18n::facet

// Tests of char_matches_mask against a flat reference on raw ICU, of the twelve scan overloads and
// of the trim family.
#include <fl/i18n/lcctype.hpp>
#include <fl/i18n/scan.hpp>
#include <fl/i18n/trim.hpp>

#include <gtest/gtest.h>
#include <unicode/uchar.h>

#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using namespace fl::i18n;
namespace cls = lcctype::ascii_class;

// The classes of a mask as one disjunction; the combined classes graph (alpha, digit and punct)
// and alnum add u_isgraph and u_isalnum.
bool reference_matches(unsigned int mask, char32_t code_point)
{
    const auto c = static_cast<UChar32>(code_point);
    const auto on = [mask](unsigned int bits) { return (mask & bits) == bits; };
    // Punctuation, and every symbol but So.
    const bool punct = (U_GET_GC_MASK(c) & (U_GC_P_MASK | U_GC_SM_MASK | U_GC_SC_MASK | U_GC_SK_MASK)) != 0;
    return (on(cls::cntrl) && u_iscntrl(c)) || (on(cls::print) && u_isprint(c)) ||
           (on(cls::alpha | cls::digit | cls::punct) && u_isgraph(c)) || (on(cls::punct) && punct) ||
           (on(cls::blank) && u_isblank(c)) || (on(cls::space) && u_isUWhiteSpace(c)) ||
           (on(cls::alpha | cls::digit) && u_isalnum(c)) || (on(cls::alpha) && u_isalpha(c)) ||
           (on(cls::xdigit) && u_digit(c, 16) >= 0) || (on(cls::digit) && u_isdigit(c)) ||
           (on(cls::lower) && u_islower(c)) || (on(cls::upper) && u_isupper(c));
}

TEST(CharMatchesMask, AgreesWithReferenceForEveryMask)
{
    std::vector<char32_t> sample;
    for (char32_t c = 0; c < 0x300; ++c)
        sample.push_back(c);
    for (char32_t c : {0x378U, 0xA9U, 0x660U, 0x1680U, 0x2007U, 0x2028U, 0x20ACU, 0x3000U, 0xD800U, 0xD835U, 0xDBFFU,
                       0xDC00U, 0xDFFFU, 0xE000U, 0xFF10U, 0xFF21U, 0xFFFDU, 0xFFFEU, 0x1D400U, 0x1F600U, 0x10FFFFU,
                       0x110000U, 0xFFFFFFFFU})
        sample.push_back(c);
    const unsigned seed = 20240611;
    std::mt19937 random(seed);
    std::uniform_int_distribution<char32_t> any(0, 0x10FFFF);
    for (int i = 0; i < 2000; ++i)
        sample.push_back(any(random));
    for (unsigned int mask = 0; mask <= 0x3FF; ++mask)
        for (char32_t c : sample)
            if (detail::char_matches_mask(mask, c) != reference_matches(mask, c))
                FAIL() << "mask " << mask << ", code point " << c << ", seed " << seed;
}

// The ways of passing a text to scan, one for each pair of overloads. Results are compared as
// offsets from `first` in reading order: the range's length when nothing matched.
struct pointer_form {
    static auto range(std::u16string& s) { return std::pair(s.data(), s.data() + s.size()); }
};
struct const_pointer_form {
    static auto range(std::u16string& s) { return std::pair(s.c_str(), s.c_str() + s.size()); }
};
struct iterator_form {
    static auto range(std::u16string& s) { return std::pair(s.begin(), s.end()); }
};
struct const_iterator_form {
    static auto range(std::u16string& s) { return std::pair(s.cbegin(), s.cend()); }
};
struct reverse_form {
    static auto range(std::u16string& s) { return std::pair(s.rbegin(), s.rend()); }
};
struct const_reverse_form {
    static auto range(std::u16string& s) { return std::pair(s.crbegin(), s.crend()); }
};

struct scan_case {
    std::u16string text;
    unsigned int mask;
    bool in_set;
    long forward;   // position found reading forwards
    long backward;  // position found reading backwards, counted from the end
    long length;    // of the range scanned: the first units, or the last ones backwards
};

const scan_case scan_cases[] = {
    {u"ab1", cls::digit, true, 2, 0, 3},     {u"ab1", cls::alpha, false, 2, 0, 3}, {u"", cls::alpha, true, 0, 0, 0},
    {u"\u00A9$", cls::punct, true, 1, 0, 2}, {u"\u00A9", cls::punct, true, 1, 1, 1},
    // A well-ordered pair is one letter forwards and two lone surrogates backwards.
    {u"\U0001D400", cls::alpha, true, 0, 2, 2},
    {u"\U0001D400", cls::alpha, false, 2, 0, 2},
    {u"1\U0001D400", cls::alpha, true, 1, 3, 3},
    // A pair stored in reverse is one letter backwards only.
    {u"1\xDC00\xD835", cls::alpha, true, 3, 0, 3},
    {u"\xD835\xD835\xDC00", cls::alpha, true, 1, 3, 3},
    // Forwards, a pair that straddles the end is joined with the unit after the range; backwards
    // the unit after the range is never read, and a high surrogate there stays alone.
    {u"1\U0001D400", cls::alpha, true, 1, 2, 2},
    {u"\xDC00\xD835", cls::alpha, true, 1, 1, 1},
    {u"\xD835" + std::u16string(199, u'x'), cls::alpha, false, 0, 199, 200},
};

template <class Form>
class ScanForms : public ::testing::Test {};
using forms = ::testing::Types<pointer_form, const_pointer_form, iterator_form, const_iterator_form, reverse_form,
                               const_reverse_form>;
TYPED_TEST_SUITE(ScanForms, forms);

TYPED_TEST(ScanForms, FindTheFirstCodePointInOrOutOfTheClasses)
{
    constexpr bool backwards = std::is_same_v<TypeParam, reverse_form> || std::is_same_v<TypeParam, const_reverse_form>;
    for (const scan_case& c : scan_cases) {
        std::u16string text = c.text;
        auto [first, last] = TypeParam::range(text);
        last = first + c.length;
        const long found = c.in_set ? detail::scan(c.mask, first, last, is_posix()) - first
                                    : detail::scan(c.mask, first, last, is_not_posix()) - first;
        EXPECT_EQ(found, backwards ? c.backward : c.forward) << "case " << &c - scan_cases;
    }
}

TEST(Scan, NullEmptyOrBackwardsRangesGiveLast)
{
    char16_t text[] = u"a1";
    const char16_t* ctext = text;
    EXPECT_EQ(detail::scan(cls::alpha, nullptr, text + 2, is_posix()), text + 2);
    EXPECT_EQ(detail::scan(cls::alpha, text, static_cast<char16_t*>(nullptr), is_not_posix()), nullptr);
    EXPECT_EQ(detail::scan(cls::alpha, static_cast<const char16_t*>(nullptr), ctext + 1, is_posix()), ctext + 1);
    EXPECT_EQ(detail::scan(cls::alpha, text, text, is_posix()), text);
    EXPECT_EQ(detail::scan(cls::digit, ctext + 1, ctext + 1, is_posix()), ctext + 1);
    std::u16string s = u"a1";
    EXPECT_EQ(detail::scan(cls::alpha, s.begin() + 1, s.begin(), is_not_posix()), s.begin());
    EXPECT_EQ(detail::scan(cls::alpha, s.cend(), s.cbegin(), is_posix()), s.cbegin());
    EXPECT_EQ(detail::scan(cls::alpha, s.rend(), s.rbegin(), is_posix()), s.rbegin());
    EXPECT_EQ(detail::scan(cls::digit, s.crbegin(), s.crbegin(), is_posix()), s.crbegin());
}

TEST(Trim, AllSixForms)
{
    struct row {
        std::u16string text, set, both, left, right;
    };
    const row rows[] = {
        {u"", u" ", u"", u"", u""},         {u"", u"", u"", u"", u""},       {u"a", u"", u"a", u"a", u"a"},
        {u"  ", u" ", u"", u"", u""},       {u"xyx", u"yx", u"", u"", u""},  {u"aab", u"a", u"b", u"b", u"aab"},
        {u"abc", u"b", u"abc", u"abc", u"abc"}, {u" \tab c\t ", u"\t ", u"ab c", u"ab c\t ", u" \tab c"},
        // A pair in the set stands for its halves: only the high one is in this set.
        {u"\U0001F600a\U0001F600", u"\xD83D", u"\xDE00" u"a\U0001F600", u"\xDE00" u"a\U0001F600",
         u"\U0001F600a\U0001F600"},
    };
    for (const row& r : rows) {
        const auto name = ::testing::PrintToString(r.text) + " less " + ::testing::PrintToString(r.set);
        EXPECT_EQ(trim_copy(r.text, r.set), r.both) << name;
        EXPECT_EQ(trim_copy_left(r.text, r.set), r.left) << name;
        EXPECT_EQ(trim_copy_right(r.text, r.set), r.right) << name;
        using in_place = ustring& (*)(ustring&, const ustring&);
        const std::pair<in_place, const std::u16string*> in_place_forms[] = {
            {trim, &r.both}, {trim_left, &r.left}, {trim_right, &r.right}};
        for (auto [fn, expected] : in_place_forms) {
            ustring text = r.text;
            EXPECT_EQ(&fn(text, r.set), &text);
            EXPECT_EQ(text, *expected) << name;
        }
    }
}

}  // namespace

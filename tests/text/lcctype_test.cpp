// Tests of lcctype: every classifier and case mapping against raw ICU over all code points, the
// ASCII twins against the C library, surrogate helpers and the bounded string helpers.
#include <fl/i18n/lcctype.hpp>

#include <gtest/gtest.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cctype>
#include <string>
#include <vector>

namespace {

using namespace fl::i18n;

// Counts the arguments on which `lib` and `ref` differ and names the first: every code point, and
// values beyond the last one that must not confuse ICU.
template <class Lib, class Ref>
void expect_same_everywhere(const char* name, Lib lib, Ref ref)
{
    unsigned long mismatches = 0;
    char32_t first = 0;
    const auto check = [&](char32_t c) {
        if (lib(c) != ref(static_cast<UChar32>(c)) && mismatches++ == 0)
            first = c;
    };
    for (char32_t c = 0; c <= 0x10FFFF; ++c)
        check(c);
    for (char32_t c : {0x110000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU})
        check(c);
    EXPECT_EQ(mismatches, 0UL) << name << ", first at U+" << std::hex << static_cast<unsigned long>(first);
}

TEST(LcctypeClassifiers, AgreeWithIcuOnEveryCodePoint)
{
    const struct {
        const char* name;
        bool (*lib)(char32_t);
        UBool (*icu)(UChar32);
    } table[] = {
        {"iscntrl", lcctype::iscntrl, u_iscntrl},    {"isspace", lcctype::isspace, u_isUWhiteSpace},
        {"isbreakable_space", lcctype::isbreakable_space, u_isWhitespace},
        {"isalpha", lcctype::isalpha, u_isalpha},    {"isdigit", lcctype::isdigit, u_isdigit},
        {"isalnum", lcctype::isalnum, u_isalnum},    {"ispunct", lcctype::ispunct, u_ispunct},
        {"isxdigit", lcctype::isxdigit, u_isxdigit}, {"isprint", lcctype::isprint, u_isprint},
        {"islower", lcctype::islower, u_islower},    {"isupper", lcctype::isupper, u_isupper},
    };
    for (const auto& e : table)
        expect_same_everywhere(e.name, e.lib, [&](UChar32 c) { return e.icu(c) == 1; });
    expect_same_everywhere("isblank", lcctype::isblank, [](UChar32 c) { return int{u_isblank(c)}; });
    expect_same_everywhere("tolower", lcctype::tolower, [](UChar32 c) { return static_cast<char32_t>(u_tolower(c)); });
    expect_same_everywhere("toupper", lcctype::toupper, [](UChar32 c) { return static_cast<char32_t>(u_toupper(c)); });
    // Graphic: letters, marks, numbers, punctuation and symbols, without ICU's format and private use.
    const auto graphic = U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK | U_GC_P_MASK | U_GC_S_MASK;
    expect_same_everywhere("isgraph", lcctype::isgraph, [&](UChar32 c) { return (U_GET_GC_MASK(c) & graphic) != 0; });
}

TEST(LcctypeAsciiTwins, AgreeWithTheCLocaleBelow128AndAnswerFalseAbove)
{
    namespace cls = lcctype::ascii_class;
    // Each class bit of the table against <cctype> in the "C" locale, which no test here changes.
    const struct {
        std::uint16_t bits;
        int (*c_class)(int);
        bool (*twin)(char32_t);
    } rows[] = {
        {cls::alpha, ::isalpha, lcctype::isalpha_ascii}, {cls::digit, ::isdigit, lcctype::isdigit_ascii},
        {cls::alpha | cls::digit, ::isalnum, lcctype::isalnum_ascii}, {cls::space, ::isspace, lcctype::isspace_ascii},
        {cls::blank, ::isblank, lcctype::isblank_ascii}, {cls::lower, ::islower, lcctype::islower_ascii},
        {cls::upper, ::isupper, lcctype::isupper_ascii}, {cls::cntrl, ::iscntrl, nullptr},
        {cls::punct, ::ispunct, nullptr}, {cls::xdigit, ::isxdigit, nullptr}, {cls::print, ::isprint, nullptr},
    };
    for (const auto& r : rows) {
        for (char32_t c = 0; c < 128; ++c) {
            const bool expected = r.c_class(static_cast<int>(c)) != 0;
            EXPECT_EQ((lcctype::ascii_class_table[c] & r.bits) != 0, expected) << r.bits << " " << c;
            EXPECT_TRUE(r.twin == nullptr || r.twin(c) == expected) << r.bits << " " << c;
            EXPECT_TRUE(lcctype::isascii_character(c));
        }
        for (char32_t c : {0x80U, 0xA0U, 0xE9U, 0x660U, 0x3000U, 0xFF21U, 0x10FFFFU, 0xFFFFFFFFU}) {
            EXPECT_FALSE(r.twin != nullptr && r.twin(c)) << r.bits << " " << static_cast<unsigned long>(c);
            EXPECT_FALSE(lcctype::isascii_character(c)) << static_cast<unsigned long>(c);
        }
    }
}

TEST(LcctypeSurrogates, Validity)
{
    const struct {
        char32_t c;
        bool utf32, uchar;
    } rows[] = {
        {0, true, true},         {0xD7FF, true, true},   {0xD800, false, true},      {0xDFFF, false, true},
        {0xE000, true, true},    {0xFFFE, true, true},   {0xFFFF, true, true},       {0x10000, true, false},
        {0x10FFFF, true, false}, {0x110000, false, false}, {0xFFFFFFFF, false, false},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(lcctype::is_valid_utf32(r.c), r.utf32) << static_cast<unsigned long>(r.c);
        EXPECT_EQ(lcctype::is_valid_uchar(r.c), r.uchar) << static_cast<unsigned long>(r.c);
    }
}

TEST(LcctypeSurrogates, JoinAgreesWithIcuForEveryPairAndRejectsTheRest)
{
    unsigned long mismatches = 0;
    for (char16_t high = 0xD800; high <= 0xDBFF; ++high)
        for (char16_t low = 0xDC00; low <= 0xDFFF; ++low)
            mismatches += lcctype::make_utf32_from_uchar(high, low) != char32_t(U16_GET_SUPPLEMENTARY(high, low));
    EXPECT_EQ(mismatches, 0UL);
    const char16_t bad[][2] = {{0xDE00, 0xD83D}, {0xD83D, 0xD83D}, {0xDE00, 0xDE00}, {u'a', 0xDE00},
                               {0xD83D, u'a'},   {0xD7FF, 0xDC00}, {0xDC00, 0xDC00}, {0xDBFF, 0xE000}};
    for (const auto& pair : bad)
        EXPECT_EQ(lcctype::make_utf32_from_uchar(pair[0], pair[1]), 0xFFFDU) << pair[0] << " " << pair[1];
}

TEST(LcctypeSurrogates, SplitAgreesWithIcuAndValidatesNothing)
{
    char16_t out[2];
    unsigned long mismatches = 0;
    for (char32_t c = 0x10000; c <= 0x10FFFF; ++c)
        mismatches += lcctype::make_uchar_from_utf32(c, out) != 2 || out[0] != U16_LEAD(c) || out[1] != U16_TRAIL(c);
    EXPECT_EQ(mismatches, 0UL);
    for (char32_t c : {0U, 0x41U, 0xD800U, 0xDFFFU, 0xFFFFU}) {
        out[1] = 0x1234;
        EXPECT_EQ(lcctype::make_uchar_from_utf32(c, out), 1U);
        EXPECT_EQ(out[0], c);
        EXPECT_EQ(out[1], 0x1234) << "second unit untouched";
    }
}

// `units` at the very end of a readable page that an inaccessible page follows, so that reading
// one unit too far faults.
class guarded_units {
public:
    explicit guarded_units(const std::u16string& units)
    {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t readable = (units.size() * sizeof(char16_t) + page - 1) / page * page;
        size_ = readable + page;
        void* map = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (map == MAP_FAILED)
            return;
        base_ = static_cast<char*>(map);
        if (mprotect(base_ + readable, page, PROT_NONE) != 0)
            return;
        data_ = reinterpret_cast<char16_t*>(base_ + readable) - units.size();
        units.copy(data_, units.size());
    }
    ~guarded_units()
    {
        if (base_)
            munmap(base_, size_);
    }
    guarded_units(const guarded_units&) = delete;
    guarded_units& operator=(const guarded_units&) = delete;
    char16_t* data() const { return data_; }

private:
    std::size_t size_ = 0;
    char* base_ = nullptr;
    char16_t* data_ = nullptr;
};

TEST(StrlenLim, StopsAtTheFirstNulOrTheBoundAndReadsNoFurther)
{
    const struct {
        std::u16string units;
        unsigned long n;
        unsigned long expected;
    } rows[] = {
        {u"abc", 3, 3}, {u"abc", 2, 2},   {u"abc", 0, 0},          {std::u16string(u"ab\0c", 4), 4, 2},
        {u"", 0, 0},    {std::u16string(1, u'\0'), 1, 0}, {std::u16string(5000, u'x'), 5000, 5000},
    };
    for (const auto& r : rows) {
        guarded_units text(r.units);
        ASSERT_TRUE(text.data()) << "mmap failed";
        EXPECT_EQ(strlen_lim(text.data(), r.n), r.expected) << r.units.size() << " units, bound " << r.n;
    }
    EXPECT_EQ(strlen_lim(nullptr, 0), 0UL);
}

TEST(StringCompare, AgreesWithIcuAndRefusesLengthsBeyond31BitsUnread)
{
    const struct {
        const char16_t* a;
        const char16_t* b;
        unsigned long n;
    } rows[] = {
        {u"", u"a", 1},       {u"abc", u"abd", 2}, {u"ABC", u"abc", 3},         {u"abc", u"ab", 5},
        {u"\uFF21", u"\U0001F600", 2}, {u"\u03A3", u"\u03C2", 1}, {u"b", u"a", 0x7FFFFFFF},
    };
    const auto sign = [](int v) { return (v > 0) - (v < 0); };
    for (const auto& r : rows) {
        const auto n = static_cast<int32_t>(r.n);
        EXPECT_EQ(sign(strcmp(r.a, r.b)), sign(u_strcmp(r.a, r.b)));
        EXPECT_EQ(sign(strncmp(r.a, r.b, r.n)), sign(u_strncmp(r.a, r.b, n)));
        EXPECT_EQ(sign(lcctype::strcasecmp(r.a, r.b)), sign(u_strcasecmp(r.a, r.b, 0)));
        EXPECT_EQ(sign(lcctype::strncasecmp(r.a, r.b, r.n)), sign(u_strncasecmp(r.a, r.b, n, 0)));
    }
    // Equal strings placed so that any read faults: the answer must come before the first read.
    guarded_units nothing(u"");
    ASSERT_TRUE(nothing.data()) << "mmap failed";
    for (unsigned long n : {0x80000000UL, 0xFFFFFFFFUL, ~0UL}) {
        EXPECT_EQ(strncmp(nothing.data(), nothing.data(), n), -1) << n;
        EXPECT_EQ(lcctype::strncasecmp(nothing.data(), nothing.data(), n), -1) << n;
    }
}

}  // namespace

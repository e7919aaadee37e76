// Tests of lcctype: every classifier and case mapping against raw ICU over all code points, the
// ASCII twins, surrogate helpers and the bounded string helpers.
#include <fl/i18n/lcctype.hpp>

#include <gtest/gtest.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <initializer_list>
#include <string>
#include <vector>

namespace {

using namespace fl::i18n;

// Every code point, and values beyond the last one that must not confuse ICU.
std::vector<char32_t> all_arguments()
{
    std::vector<char32_t> values;
    for (char32_t c = 0; c <= 0x10FFFF; ++c)
        values.push_back(c);
    for (char32_t c : {0x110000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU})
        values.push_back(c);
    return values;
}

std::string hex(char32_t c)
{
    char text[16];
    std::snprintf(text, sizeof text, "U+%04X", static_cast<unsigned>(c));
    return text;
}

// Counts the arguments on which `lib` and `ref` differ and names the first.
template <class Lib, class Ref>
void expect_same_everywhere(const char* name, Lib lib, Ref ref)
{
    static const std::vector<char32_t> values = all_arguments();
    unsigned long mismatches = 0;
    std::string first;
    for (char32_t c : values) {
        if (lib(c) == ref(c)) continue;
        if (mismatches++ == 0) first = hex(c);
    }
    EXPECT_EQ(mismatches, 0UL) << name << ", first at " << first;
}

bool in_categories(char32_t c, std::initializer_list<UCharCategory> categories)
{
    const auto k = u_charType(static_cast<UChar32>(c));
    for (UCharCategory category : categories)
        if (k == category) return true;
    return false;
}

TEST(LcctypeClassifiers, AgreeWithIcuOnEveryCodePoint)
{
    struct entry {
        const char* name;
        bool (*lib)(char32_t);
        UBool (*icu)(UChar32);
    };
    const entry table[] = {
        {"iscntrl", lcctype::iscntrl, u_iscntrl},   {"isspace", lcctype::isspace, u_isUWhiteSpace},
        {"isbreakable_space", lcctype::isbreakable_space, u_isWhitespace},
        {"isalpha", lcctype::isalpha, u_isalpha},   {"isdigit", lcctype::isdigit, u_isdigit},
        {"isalnum", lcctype::isalnum, u_isalnum},   {"ispunct", lcctype::ispunct, u_ispunct},
        {"isxdigit", lcctype::isxdigit, u_isxdigit}, {"isprint", lcctype::isprint, u_isprint},
        {"islower", lcctype::islower, u_islower},   {"isupper", lcctype::isupper, u_isupper},
    };
    for (const entry& e : table)
        expect_same_everywhere(e.name, e.lib, [&](char32_t c) { return e.icu(static_cast<UChar32>(c)) == 1; });
    expect_same_everywhere("isblank", lcctype::isblank,
                           [](char32_t c) { return static_cast<int>(u_isblank(static_cast<UChar32>(c))); });
    expect_same_everywhere("tolower", lcctype::tolower,
                           [](char32_t c) { return static_cast<char32_t>(u_tolower(static_cast<UChar32>(c))); });
    expect_same_everywhere("toupper", lcctype::toupper,
                           [](char32_t c) { return static_cast<char32_t>(u_toupper(static_cast<UChar32>(c))); });
}

TEST(LcctypeClassifiers, GraphIsLettersMarksNumbersPunctuationAndSymbols)
{
    expect_same_everywhere("isgraph", lcctype::isgraph, [](char32_t c) {
        return in_categories(c, {U_UPPERCASE_LETTER, U_LOWERCASE_LETTER, U_TITLECASE_LETTER, U_MODIFIER_LETTER,
                                 U_OTHER_LETTER, U_NON_SPACING_MARK, U_ENCLOSING_MARK, U_COMBINING_SPACING_MARK,
                                 U_DECIMAL_DIGIT_NUMBER, U_LETTER_NUMBER, U_OTHER_NUMBER, U_DASH_PUNCTUATION,
                                 U_START_PUNCTUATION, U_END_PUNCTUATION, U_CONNECTOR_PUNCTUATION,
                                 U_OTHER_PUNCTUATION, U_MATH_SYMBOL, U_CURRENCY_SYMBOL, U_MODIFIER_SYMBOL,
                                 U_OTHER_SYMBOL, U_INITIAL_PUNCTUATION, U_FINAL_PUNCTUATION});
    });
}

TEST(LcctypeClassifiers, NamedCases)
{
    EXPECT_TRUE(lcctype::isspace(0xA0));
    EXPECT_FALSE(lcctype::isbreakable_space(0xA0));
    EXPECT_FALSE(lcctype::isgraph(0xAD)) << "format character";
    EXPECT_FALSE(lcctype::isgraph(0xE000)) << "private use";
    EXPECT_TRUE(lcctype::isgraph(0x20AC));
    EXPECT_TRUE(lcctype::isdigit(0x660));
    EXPECT_EQ(lcctype::isblank(U'\t'), 1);
    EXPECT_EQ(lcctype::toupper(U'\u00DF'), U'\u00DF') << "simple mapping keeps sharp s";
}

// Entries of the class table by ranges, as documented: the twins must answer from exactly these.
std::uint16_t documented_entry(char32_t c)
{
    struct range {
        char32_t from, to;
        std::uint16_t entry;
    };
    static const range ranges[] = {
        {0, 8, 0x004},     {9, 9, 0x214},     {10, 13, 0x014},   {14, 31, 0x004},  {32, 32, 0x310},
        {33, 47, 0x108},   {48, 57, 0x122},   {58, 64, 0x108},   {65, 70, 0x1A1},  {71, 90, 0x181},
        {91, 96, 0x108},   {97, 102, 0x161},  {103, 122, 0x141}, {123, 126, 0x108}, {127, 127, 0x004},
    };
    for (const range& r : ranges)
        if (c >= r.from && c <= r.to) return r.entry;
    return 0;
}

TEST(LcctypeAsciiTwins, AnswerFromTheTableBelow128AndFalseAbove)
{
    namespace cls = lcctype::ascii_class;
    struct twin {
        const char* name;
        bool (*fn)(char32_t);
        std::uint16_t bits;
    };
    const twin twins[] = {
        {"isspace_ascii", lcctype::isspace_ascii, cls::space}, {"isblank_ascii", lcctype::isblank_ascii, cls::blank},
        {"isalpha_ascii", lcctype::isalpha_ascii, cls::alpha}, {"isdigit_ascii", lcctype::isdigit_ascii, cls::digit},
        {"isalnum_ascii", lcctype::isalnum_ascii, cls::alpha | cls::digit},
        {"islower_ascii", lcctype::islower_ascii, cls::lower}, {"isupper_ascii", lcctype::isupper_ascii, cls::upper},
    };
    for (char32_t c = 0; c < 128; ++c) {
        ASSERT_EQ(lcctype::ascii_class_table[c], documented_entry(c)) << c;
        EXPECT_TRUE(lcctype::isascii_character(c));
        for (const twin& t : twins)
            EXPECT_EQ(t.fn(c), (documented_entry(c) & t.bits) != 0) << t.name << " " << c;
    }
    for (char32_t c : {0x80U, 0xA0U, 0xE9U, 0x660U, 0x3000U, 0xFF21U, 0x10FFFFU, 0xFFFFFFFFU}) {
        EXPECT_FALSE(lcctype::isascii_character(c)) << hex(c);
        for (const twin& t : twins)
            EXPECT_FALSE(t.fn(c)) << t.name << " " << hex(c);
    }
}

TEST(LcctypeSurrogates, Validity)
{
    for (char32_t c : {0xD800U, 0xDFFFU, 0x110000U, 0xFFFFFFFFU})
        EXPECT_FALSE(lcctype::is_valid_utf32(c)) << hex(c);
    for (char32_t c : {0U, 0xD7FFU, 0xE000U, 0xFFFEU, 0xFFFFU, 0x10FFFFU})
        EXPECT_TRUE(lcctype::is_valid_utf32(c)) << hex(c);
    for (char32_t c : {0U, 0xD800U, 0xDFFFU, 0xFFFFU})
        EXPECT_TRUE(lcctype::is_valid_uchar(c)) << hex(c);
    for (char32_t c : {0x10000U, 0x10FFFFU, 0xFFFFFFFFU})
        EXPECT_FALSE(lcctype::is_valid_uchar(c)) << hex(c);
}

TEST(LcctypeSurrogates, JoinAgreesWithIcuForEveryPairAndRejectsTheRest)
{
    unsigned long mismatches = 0;
    for (char32_t high = 0xD800; high <= 0xDBFF; ++high)
        for (char32_t low = 0xDC00; low <= 0xDFFF; ++low)
            mismatches += lcctype::make_utf32_from_uchar(static_cast<char16_t>(high), static_cast<char16_t>(low)) !=
                          static_cast<char32_t>(U16_GET_SUPPLEMENTARY(high, low));
    EXPECT_EQ(mismatches, 0UL);
    EXPECT_EQ(lcctype::make_utf32_from_uchar(0xD83D, 0xDE00), 0x1F600U);
    const char16_t bad[][2] = {{0xDE00, 0xD83D}, {0xD83D, 0xD83D}, {0xDE00, 0xDE00}, {u'a', 0xDE00},
                               {0xD83D, u'a'},   {0xD7FF, 0xDC00}, {0xDC00, 0xDC00}, {0xDBFF, 0xE000}};
    for (const auto& pair : bad)
        EXPECT_EQ(lcctype::make_utf32_from_uchar(pair[0], pair[1]), 0xFFFDU) << pair[0] << " " << pair[1];
}

TEST(LcctypeSurrogates, SplitAgreesWithIcuAndValidatesNothing)
{
    char16_t out[2];
    unsigned long mismatches = 0;
    for (char32_t c = 0x10000; c <= 0x10FFFF; ++c) {
        out[0] = out[1] = 0;
        mismatches += lcctype::make_uchar_from_utf32(c, out) != 2 || out[0] != U16_LEAD(c) || out[1] != U16_TRAIL(c);
    }
    EXPECT_EQ(mismatches, 0UL);
    for (char32_t c : {0U, 0x41U, 0xD800U, 0xDFFFU, 0xFFFFU}) {
        out[1] = 0x1234;
        EXPECT_EQ(lcctype::make_uchar_from_utf32(c, out), 1U);
        EXPECT_EQ(out[0], c);
        EXPECT_EQ(out[1], 0x1234) << "second unit untouched";
    }
    // Beyond the last code point the arithmetic still runs.
    EXPECT_EQ(lcctype::make_uchar_from_utf32(0x110000, out), 2U);
    EXPECT_EQ(out[0], static_cast<char16_t>((0x110000 >> 10) + 0xD7C0));
    EXPECT_EQ(out[1], 0xDC00);
}

// `units` code units at the very end of a readable page, followed by an inaccessible page, so
// that reading one unit too far faults.
class guarded_units {
public:
    explicit guarded_units(const std::u16string& units)
    {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t readable = (units.size() * sizeof(char16_t) + page - 1) / page * page;
        size_ = readable + page;
        void* map = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (map == MAP_FAILED) return;
        if (mprotect(static_cast<char*>(map) + readable, page, PROT_NONE) != 0) {
            munmap(map, size_);
            return;
        }
        base_ = static_cast<char*>(map);
        data_ = reinterpret_cast<char16_t*>(base_ + readable) - units.size();
        units.copy(data_, units.size());
    }
    ~guarded_units()
    {
        if (base_) munmap(base_, size_);
    }
    guarded_units(const guarded_units&) = delete;
    guarded_units& operator=(const guarded_units&) = delete;
    char16_t* data() const { return data_; }
    bool ok() const { return base_ != nullptr; }

private:
    std::size_t size_ = 0;
    char* base_ = nullptr;
    char16_t* data_ = nullptr;
};

TEST(StrlenLim, StopsAtTheFirstNulOrTheBoundAndReadsNoFurther)
{
    struct row {
        std::u16string units;
        unsigned long n;
        unsigned long expected;
    };
    const row rows[] = {
        {u"abc", 3, 3}, {u"abc", 2, 2},   {u"abc", 0, 0},          {std::u16string(u"ab\0c", 4), 4, 2},
        {u"", 0, 0},    {std::u16string(1, u'\0'), 1, 0}, {std::u16string(5000, u'x'), 5000, 5000},
    };
    for (const row& r : rows) {
        guarded_units text(r.units);
        ASSERT_TRUE(text.ok()) << "mmap failed";
        EXPECT_EQ(strlen_lim(text.data(), r.n), r.expected) << r.units.size() << " units, bound " << r.n;
    }
    EXPECT_EQ(strlen_lim(nullptr, 0), 0UL);
}

TEST(StringCompare, AgreesWithIcuAndRefusesLengthsBeyond31BitsUnread)
{
    struct row {
        const char16_t* a;
        const char16_t* b;
        unsigned long n;
    };
    const row rows[] = {
        {u"", u"", 0},          {u"", u"a", 1},         {u"abc", u"abd", 3},    {u"abc", u"abd", 2},
        {u"ABC", u"abc", 3},    {u"abc", u"ab", 5},     {u"Stra\u00DFe", u"STRASSE", 7},
        {u"\uFF21", u"\U0001F600", 2}, {u"\u03A3", u"\u03C2", 1}, {u"b", u"a", 0x7FFFFFFF},
    };
    const auto sign = [](int v) { return (v > 0) - (v < 0); };
    for (const row& r : rows) {
        const auto n = static_cast<int32_t>(r.n);
        EXPECT_EQ(sign(strcmp(r.a, r.b)), sign(u_strcmp(r.a, r.b)));
        EXPECT_EQ(sign(strncmp(r.a, r.b, r.n)), sign(u_strncmp(r.a, r.b, n)));
        EXPECT_EQ(sign(lcctype::strcasecmp(r.a, r.b)), sign(u_strcasecmp(r.a, r.b, 0)));
        EXPECT_EQ(sign(lcctype::strncasecmp(r.a, r.b, r.n)), sign(u_strncasecmp(r.a, r.b, n, 0)));
    }
    // Equal strings placed so that any read faults: the answer must come before the first read.
    guarded_units nothing(u"");
    ASSERT_TRUE(nothing.ok()) << "mmap failed";
    for (unsigned long n : {0x80000000UL, 0xFFFFFFFFUL, ~0UL}) {
        EXPECT_EQ(strncmp(nothing.data(), nothing.data(), n), -1) << n;
        EXPECT_EQ(lcctype::strncasecmp(nothing.data(), nothing.data(), n), -1) << n;
    }
    EXPECT_EQ(strncmp(u"same", u"same", 0x80000000UL), -1);
}

}  // namespace

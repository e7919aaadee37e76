// ctype_facet<char16_t> against raw ICU: classification of every BMP unit and of surrogate pairs,
// case mapping, narrowing and widening in several encodings, and the failures.
#include <fl/i18n/conversion_error.hpp>
#include <fl/i18n/facet.hpp>

#include "conversion_test_support.hpp"

#include <unicode/uchar.h>

#include <array>
#include <locale>

namespace {

using namespace fl::i18n;
using namespace qx_test;
using facet_type = facet::ctype_facet<char16_t>;
using mask = std::ctype_base::mask;

// A locale owning a facet for `encoding`, and the facet in it.
struct owned_facet {
    explicit owned_facet(const std::string& encoding) : locale(std::locale::classic(), new facet_type(encoding)) {}
    const facet_type* operator->() const { return &std::use_facet<facet_type>(locale); }
    std::locale locale;
};

bool icu_punct(UChar32 c) { return ((0x37F80000u >> u_charType(c)) & 1u) != 0; }

struct class_row {
    const char* name;
    mask bits;
    bool (*icu)(UChar32);
    bool single_bit;  // libstdc++'s graph and alnum are unions of other bits
};

const std::array<class_row, 12> class_rows{{
    {"cntrl", std::ctype_base::cntrl, [](UChar32 c) { return u_iscntrl(c) != 0; }, true},
    {"print", std::ctype_base::print, [](UChar32 c) { return u_isprint(c) != 0; }, true},
    {"graph", std::ctype_base::graph, [](UChar32 c) { return u_isgraph(c) || icu_punct(c); }, false},
    {"punct", std::ctype_base::punct, icu_punct, true},
    {"blank", std::ctype_base::blank, [](UChar32 c) { return u_isblank(c) != 0; }, true},
    {"space", std::ctype_base::space, [](UChar32 c) { return u_isUWhiteSpace(c) != 0; }, true},
    {"alnum", std::ctype_base::alnum, [](UChar32 c) { return u_isalnum(c) != 0; }, false},
    {"alpha", std::ctype_base::alpha, [](UChar32 c) { return u_isalpha(c) != 0; }, true},
    {"xdigit", std::ctype_base::xdigit, [](UChar32 c) { return u_digit(c, 16) >= 0; }, true},
    {"digit", std::ctype_base::digit, [](UChar32 c) { return u_isdigit(c) != 0; }, true},
    {"lower", std::ctype_base::lower, [](UChar32 c) { return u_islower(c) != 0; }, true},
    {"upper", std::ctype_base::upper, [](UChar32 c) { return u_isupper(c) != 0; }, true},
}};

ustring pair_of(UChar32 c) { return encode_code_points(std::u32string(1, static_cast<char32_t>(c))); }

// Every BMP unit, one by one, in classification and case mapping.
TEST(ctype_facet, classifies_and_maps_every_bmp_unit_as_icu_does)
{
    const owned_facet f("UTF-8");
    for (const class_row& row : class_rows) {
        int mismatches = 0;
        for (UChar32 c = 0; c <= 0xFFFF && mismatches < 5; ++c)
            if (f->is(row.bits, static_cast<char16_t>(c)) != row.icu(c)) {
                ADD_FAILURE() << row.name << " of U+" << std::hex << c;
                ++mismatches;
            }
    }
    EXPECT_TRUE(f->is(std::ctype_base::alpha | std::ctype_base::space, u' '));
    EXPECT_FALSE(f->is(mask(0), u'a'));
    for (UChar32 c = 0; c <= 0xFFFF; ++c) {
        ASSERT_EQ(f->toupper(static_cast<char16_t>(c)), static_cast<char16_t>(u_toupper(c))) << std::hex << c;
        ASSERT_EQ(f->tolower(static_cast<char16_t>(c)), static_cast<char16_t>(u_tolower(c))) << std::hex << c;
    }
}

// Letters of each case, a digit, an emoji, a format character, then every 0x3F1th code point;
// each between two letters, so that a pair inside a range is one character.
TEST(ctype_facet, range_forms_take_a_surrogate_pair_as_one_character)
{
    const owned_facet f("UTF-8");
    std::vector<UChar32> points{0x1D400, 0x1D41A, 0x1D7CE, 0x10428, 0x1F600, 0xE0001, 0x20000};
    for (UChar32 c = 0x10000; c <= 0x10FFFF; c += 0x3F1) points.push_back(c);
    for (const UChar32 c : points) {
        const ustring text = u"a" + pair_of(c) + u"b";
        mask vec[4] = {};
        f->is(text.data(), text.data() + text.size(), vec);
        EXPECT_EQ(vec[1], vec[2]) << std::hex << c;
        for (const class_row& row : class_rows)
            if (row.single_bit) {
                EXPECT_EQ((vec[1] & row.bits) != 0, row.icu(c)) << row.name << " of U+" << std::hex << c;
            }
        const char16_t *pair = text.data() + 1, *pair_end = pair + 2;
        EXPECT_EQ(f->scan_is(std::ctype_base::upper, pair, pair_end), u_isupper(c) ? pair : pair_end) << std::hex << c;
        EXPECT_EQ(f->scan_not(std::ctype_base::upper, pair, pair_end), u_isupper(c) ? pair_end : pair) << std::hex << c;
    }
    // U+1D400 is an upper-case letter; with its trail outside the range the lead stands alone.
    const ustring text = u"ab" + pair_of(0x1D400);
    const char16_t* begin = text.data();
    EXPECT_EQ(f->scan_is(std::ctype_base::upper, begin, begin + 4), begin + 2);
    EXPECT_EQ(f->scan_is(std::ctype_base::upper, begin, begin + 3), begin + 3);
    EXPECT_EQ(f->scan_not(std::ctype_base::lower, begin, begin + 3), begin + 2);
    EXPECT_EQ(f->scan_is(std::ctype_base::upper, begin, begin), begin);
}

TEST(ctype_facet, range_case_mapping_keeps_pairs_and_lone_surrogates)
{
    const owned_facet f("UTF-8");
    const std::tuple<ustring, std::size_t, ustring, ustring> rows[] = {
        // text, units of it in the range, upper, lower
        {pair_of(0x10428), 2, pair_of(0x10400), pair_of(0x10428)},
        {u"x" + pair_of(0x1E922) + u"y", 4, u"X" + pair_of(0x1E900) + u"Y", u"x" + pair_of(0x1E922) + u"y"},
        {u"a\xD801", 2, u"A\xD801", u"a\xD801"},                    // lead at the end of the range
        {u"\xDC28z", 2, u"\xDC28Z", u"\xDC28z"},                    // trail without a lead
        {pair_of(0x10428), 1, pair_of(0x10428), pair_of(0x10428)},  // pair cut by the range
        {u"\u00DF\u01C5", 2, u"\u00DF\u01C4", u"\u00DF\u01C6"},     // no full or title mapping
    };
    for (const auto& [text, length, upper, lower] : rows) {
        ustring up = text, down = text;
        EXPECT_EQ(f->toupper(up.data(), up.data() + length), up.data() + length);
        f->tolower(down.data(), down.data() + length);
        EXPECT_EQ(up, upper);
        EXPECT_EQ(down, lower);
    }
}

TEST(ctype_facet, widens_and_narrows_through_icu)
{
    std::string all_bytes;
    for (int b = 0; b < 256; ++b) all_bytes.push_back(static_cast<char>(b));
    const ustring latin1 = icu_to_uchars("ISO-8859-1", all_bytes);
    const owned_facet f("ISO-8859-1");
    ustring widened(256, u'\0');
    f->widen(all_bytes.data(), all_bytes.data() + 256, widened.data());
    EXPECT_TRUE(same_text(widened, latin1));
    for (std::size_t b = 0; b < 256; ++b) EXPECT_EQ(f->widen(all_bytes[b]), latin1[b]);

    const std::pair<const char*, ustring> rows[] = {
        {"ISO-8859-1", u"\u00E9\u20AC" + pair_of(0x1F600) + u"z"},  // unmappable: the encoding's substitute
        {"UTF-8", u"a\u00E9" + pair_of(0x1F600)},                    // output longer than the range
        {"Shift_JIS", u"\u65E5\u672Ckana"},
        {"windows-1252", u"\u20AC\u2122"},
    };
    for (const auto& [encoding, text] : rows) {
        const owned_facet g(encoding);
        const std::string reference = icu_from_uchars(encoding, text);
        std::string narrowed(text.size(), '\0');
        g->narrow(text.data(), text.data() + text.size(), '#', narrowed.data());
        const std::size_t kept = std::min(reference.size(), narrowed.size());
        EXPECT_EQ(narrowed.substr(0, kept), reference.substr(0, kept)) << encoding;
        EXPECT_EQ(narrowed.substr(kept), std::string(narrowed.size() - kept, '#')) << encoding;
        EXPECT_EQ(g->narrow(text[0], '#'), icu_from_uchars(encoding, text.substr(0, 1))[0]) << encoding;
    }

    const owned_facet utf8("UTF-8");
    const std::string two_bytes = "\xC3\xA9";
    ustring out(2, u'x');
    utf8->widen(two_bytes.data(), two_bytes.data() + 2, out.data());
    EXPECT_EQ(out, ustring(u"\u00E9\0", 2));
    EXPECT_EQ(utf8->widen('\xC3'), icu_to_uchars("UTF-8", "\xC3")[0]);
    EXPECT_EQ(utf8->narrow(u'\u00E9', '#'), '\xC3');
    EXPECT_EQ(utf8->widen(two_bytes.data(), two_bytes.data(), out.data()), two_bytes.data());
}

TEST(ctype_facet, failures_throw_the_conversion_exceptions)
{
    const owned_facet bad("no-such-encoding");
    EXPECT_EQ(thrown_id([&] { bad->widen('a'); }), cvt_invalid_encoding_name);
    EXPECT_EQ(thrown_id([&] { bad->narrow(u'a', '#'); }), cvt_invalid_encoding_name);
    EXPECT_TRUE(bad->is(std::ctype_base::alpha, u'a'));  // classification needs no converter

    // Ranges of 2^31 units over zero pages: refused before ICU reads any or anything is written.
    const std::size_t units = 0x80000000UL;
    const zero_region region(units * 2);
    if (!region) GTEST_SKIP() << "cannot reserve 4 GiB of address space";
    const owned_facet f("UTF-8");
    char* bytes = region.as<char>();
    char16_t* wide = region.as<char16_t>();
    EXPECT_EQ(thrown_id([&] { f->widen(bytes, bytes + units, wide); }), cvt_size_too_large);
    EXPECT_EQ(thrown_id([&] { f->narrow(wide, wide + units, '#', bytes); }), cvt_size_too_large);
}

}  // namespace

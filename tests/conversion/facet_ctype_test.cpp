// ctype_facet<char16_t> against raw ICU: classification of every BMP unit and of surrogate pairs,
// case mapping, narrowing and widening in several encodings, and the failures; plus the plain
// std::ctype / std::numpunct char16_t bases that libqxi18n supplies.
#include <fl/i18n/conversion_error.hpp>
#include <fl/i18n/facet.hpp>

#include "conversion_test_support.hpp"

#include <unicode/uchar.h>

#include <sys/mman.h>

#include <array>
#include <locale>
#include <string>
#include <vector>

namespace {

using namespace fl::i18n;
using namespace qx_test;
using facet_type = facet::ctype_facet<char16_t>;
using mask = std::ctype_base::mask;

// A locale owning a facet for `encoding`, and the facet in it.
struct owned_facet {
    explicit owned_facet(const std::string& encoding) : locale(std::locale::classic(), new facet_type(encoding)) {}
    const facet_type& get() const { return std::use_facet<facet_type>(locale); }
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

TEST(ctype_facet, classifies_every_bmp_unit_as_icu_does)
{
    const owned_facet f("UTF-8");
    for (const class_row& row : class_rows) {
        int mismatches = 0;
        for (UChar32 c = 0; c <= 0xFFFF && mismatches < 5; ++c)
            if (f.get().is(row.bits, static_cast<char16_t>(c)) != row.icu(c)) {
                ADD_FAILURE() << row.name << " of U+" << std::hex << c;
                ++mismatches;
            }
    }
    EXPECT_TRUE(f.get().is(std::ctype_base::alpha | std::ctype_base::space, u' '));
    EXPECT_FALSE(f.get().is(mask(0), u'a'));
}

TEST(ctype_facet, range_forms_take_a_surrogate_pair_as_one_character)
{
    const owned_facet f("UTF-8");
    // Letters of each case, a digit, an emoji, a format character, then every 0x3F1th code point;
    // each between two letters.
    std::vector<UChar32> points{0x1D400, 0x1D41A, 0x1D7CE, 0x10428, 0x1F600, 0xE0001, 0x20000};
    for (UChar32 c = 0x10000; c <= 0x10FFFF; c += 0x3F1)
        points.push_back(c);
    for (const UChar32 c : points) {
        const ustring text = u"a" + pair_of(c) + u"b";
        mask vec[4] = {};
        f.get().is(text.data(), text.data() + text.size(), vec);
        EXPECT_EQ(vec[1], vec[2]) << std::hex << c;
        for (const class_row& row : class_rows) {
            if (!row.single_bit)
                continue;
            EXPECT_EQ((vec[1] & row.bits) != 0, row.icu(c)) << row.name << " of U+" << std::hex << c;
        }
        const char16_t* found = f.get().scan_is(std::ctype_base::upper, text.data() + 1, text.data() + 3);
        EXPECT_EQ(found, u_isupper(c) ? text.data() + 1 : text.data() + 3) << std::hex << c;
        const char16_t* other = f.get().scan_not(std::ctype_base::upper, text.data() + 1, text.data() + 3);
        EXPECT_EQ(other, u_isupper(c) ? text.data() + 3 : text.data() + 1) << std::hex << c;
    }
}

TEST(ctype_facet, scans_stop_at_the_range_end)
{
    const owned_facet f("UTF-8");
    // U+1D400 is an upper-case letter; with its trail outside the range the lead stands alone.
    const ustring text = u"ab" + pair_of(0x1D400);
    const char16_t* begin = text.data();
    EXPECT_EQ(f.get().scan_is(std::ctype_base::upper, begin, begin + 4), begin + 2);
    EXPECT_EQ(f.get().scan_is(std::ctype_base::upper, begin, begin + 3), begin + 3);
    EXPECT_EQ(f.get().scan_not(std::ctype_base::lower, begin, begin + 3), begin + 2);
    EXPECT_EQ(f.get().scan_is(std::ctype_base::upper, begin, begin), begin);
}

TEST(ctype_facet, maps_case_as_icu_does)
{
    const owned_facet f("UTF-8");
    for (UChar32 c = 0; c <= 0xFFFF; ++c) {
        const auto unit = static_cast<char16_t>(c);
        ASSERT_EQ(f.get().toupper(unit), static_cast<char16_t>(u_toupper(c))) << std::hex << c;
        ASSERT_EQ(f.get().tolower(unit), static_cast<char16_t>(u_tolower(c))) << std::hex << c;
    }
    struct row {
        ustring text;
        std::size_t length;  // units of `text` in the range
        ustring upper;
        ustring lower;
    };
    const row rows[] = {
        {pair_of(0x10428), 2, pair_of(0x10400), pair_of(0x10428)},
        {u"x" + pair_of(0x1E922) + u"y", 4, u"X" + pair_of(0x1E900) + u"Y", u"x" + pair_of(0x1E922) + u"y"},
        {u"a\xD801", 2, u"A\xD801", u"a\xD801"},          // lead at the end of the range
        {u"\xDC28z", 2, u"\xDC28Z", u"\xDC28z"},          // trail without a lead
        {pair_of(0x10428), 1, pair_of(0x10428), pair_of(0x10428)},  // pair cut by the range
        {u"\u00DF\u01C5", 2, u"\u00DF\u01C4", u"\u00DF\u01C6"},    // no full or title mapping
    };
    for (const row& r : rows) {
        ustring upper = r.text;
        ustring lower = r.text;
        EXPECT_EQ(f.get().toupper(upper.data(), upper.data() + r.length), upper.data() + r.length);
        f.get().tolower(lower.data(), lower.data() + r.length);
        EXPECT_EQ(upper, r.upper);
        EXPECT_EQ(lower, r.lower);
    }
}

TEST(ctype_facet, widens_and_narrows_through_icu)
{
    std::string all_bytes;
    for (int b = 0; b < 256; ++b)
        all_bytes.push_back(static_cast<char>(b));
    const ustring latin1 = icu_to_uchars("ISO-8859-1", all_bytes);
    const owned_facet f("ISO-8859-1");
    ustring widened(256, u'\0');
    f.get().widen(all_bytes.data(), all_bytes.data() + 256, widened.data());
    EXPECT_TRUE(same_text(widened, latin1));
    for (int b = 0; b < 256; ++b)
        EXPECT_EQ(f.get().widen(all_bytes[static_cast<std::size_t>(b)]), latin1[static_cast<std::size_t>(b)]);

    struct row {
        const char* encoding;
        ustring text;
    };
    const row rows[] = {
        {"ISO-8859-1", u"\u00E9\u20AC" + pair_of(0x1F600) + u"z"},  // unmappable: the encoding's substitute
        {"UTF-8", u"a\u00E9" + pair_of(0x1F600)},                    // output longer than the range
        {"Shift_JIS", u"\u65E5\u672Ckana"},
        {"windows-1252", u"\u20AC\u2122"},
    };
    for (const row& r : rows) {
        const owned_facet g(r.encoding);
        const std::string reference = icu_from_uchars(r.encoding, r.text);
        std::string narrowed(r.text.size(), '\0');
        g.get().narrow(r.text.data(), r.text.data() + r.text.size(), '#', narrowed.data());
        const std::size_t kept = std::min(reference.size(), narrowed.size());
        EXPECT_EQ(narrowed.substr(0, kept), reference.substr(0, kept)) << r.encoding;
        EXPECT_EQ(narrowed.substr(kept), std::string(narrowed.size() - kept, '#')) << r.encoding;
        EXPECT_EQ(g.get().narrow(r.text[0], '#'), icu_from_uchars(r.encoding, r.text.substr(0, 1))[0]) << r.encoding;
    }

    const owned_facet utf8("UTF-8");
    const std::string two_bytes = "\xC3\xA9";
    ustring out(2, u'x');
    utf8.get().widen(two_bytes.data(), two_bytes.data() + 2, out.data());
    EXPECT_EQ(out, ustring(u"\u00E9\0", 2));
    EXPECT_EQ(utf8.get().widen('\xC3'), icu_to_uchars("UTF-8", "\xC3")[0]);
    EXPECT_EQ(utf8.get().narrow(u'\u00E9', '#'), '\xC3');
    const char* empty = "";
    EXPECT_EQ(utf8.get().widen(empty, empty, out.data()), empty);
}

TEST(ctype_facet, failures_throw_the_conversion_exceptions)
{
    const owned_facet bad("no-such-encoding");
    EXPECT_EQ(thrown_id([&] { bad.get().widen('a'); }), cvt_invalid_encoding_name);
    EXPECT_EQ(thrown_id([&] { bad.get().narrow(u'a', '#'); }), cvt_invalid_encoding_name);
    EXPECT_TRUE(bad.get().is(std::ctype_base::alpha, u'a'));  // classification needs no converter

    // Ranges of 2^31 units over reserved, inaccessible memory: refused before ICU reads any.
    const std::size_t units = 0x80000000UL;
    void* region = mmap(nullptr, units * 2, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (region == MAP_FAILED)
        GTEST_SKIP() << "cannot reserve 4 GiB of address space";
    const owned_facet f("UTF-8");
    auto* bytes = static_cast<char*>(region);
    auto* wide = static_cast<char16_t*>(region);
    EXPECT_EQ(thrown_id([&] { f.get().widen(bytes, bytes + units, wide); }), cvt_size_too_large);
    EXPECT_EQ(thrown_id([&] { f.get().narrow(wide, wide + units, '#', bytes); }), cvt_size_too_large);
    munmap(region, units * 2);
}

TEST(std_char16_bases, classify_and_punctuate_as_the_c_locale)
{
    const std::locale plain(std::locale(std::locale::classic(), new std::ctype<char16_t>()),
                            new std::numpunct<char16_t>());
    const auto& ct = std::use_facet<std::ctype<char16_t>>(plain);
    EXPECT_TRUE(ct.is(std::ctype_base::alpha, u'q'));
    EXPECT_FALSE(ct.is(std::ctype_base::alpha, u'\u00E9'));
    EXPECT_TRUE(ct.is(std::ctype_base::space, u'\t'));
    EXPECT_EQ(ct.toupper(u'q'), u'Q');
    EXPECT_EQ(ct.toupper(u'\u00E9'), u'\u00E9');
    EXPECT_EQ(ct.narrow(u'\u00E9', '?'), '?');
    EXPECT_EQ(ct.widen('\xE9'), u'\u00E9');
    const auto& np = std::use_facet<std::numpunct<char16_t>>(plain);
    EXPECT_EQ(np.decimal_point(), u'.');
    EXPECT_EQ(np.truename(), u"true");
    EXPECT_EQ(np.grouping(), "");
    std::basic_ostringstream<char16_t> out;
    out.imbue(std::locale(plain, new std::num_put<char16_t>()));
    out << 0.5 << ' ' << std::boolalpha << false;
    EXPECT_EQ(out.str(), u"0.5 false");
}

}  // namespace

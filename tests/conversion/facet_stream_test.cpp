// Number formatting and parsing on char16_t streams with the per-thread locale, and the plain
// std::ctype / std::numpunct char16_t bases; this program links libqxi18n alone, so the char16_t
// facets it needs can only come from there.
#include <fl/i18n/facet.hpp>
#include <fl/i18n/locale.hpp>

#include <gtest/gtest.h>

#include <iomanip>
#include <stdexcept>
#include <sstream>
#include <string>
#include <thread>

namespace {

using fl::ustring;
using fl::i18n::facet::get_global_std_locale;

TEST(facet_stream, writes_and_reads_numbers_with_classic_punctuation)
{
    std::basic_ostringstream<char16_t> out;
    out.imbue(get_global_std_locale());
    out << 1234.5 << ' ' << 1234567 << ' ' << -0.25 << ' ' << std::boolalpha << true << ' ' << false << ' '
        << std::setfill(u'*') << std::setw(6) << 42 << ' ' << std::hex << std::showbase << 255 << ' ' << std::uppercase
        << std::scientific << 1.5e10;
    EXPECT_FALSE(out.fail());
    EXPECT_EQ(out.str(), u"1234.5 1234567 -0.25 true false ****42 0xff 1.500000E+10");
    std::basic_istringstream<char16_t> in(u"  42\t3.25\u00A0-7 0x1F true");
    in.imbue(get_global_std_locale());
    long whole = 0;
    double fraction = 0;
    int negative = 0, hex = 0;
    bool flag = false;
    in >> whole >> fraction >> negative >> std::hex >> hex >> std::boolalpha >> flag;
    EXPECT_FALSE(in.fail());
    // U+00A0 is white space to the ctype facet.
    EXPECT_TRUE(whole == 42 && fraction == 3.25 && negative == -7 && hex == 0x1F && flag);
    for (const ustring text : {u"", u"abc", u"-", u"99999999999999999999"}) {
        std::basic_istringstream<char16_t> bad(text);
        bad.imbue(get_global_std_locale());
        int value = 0;
        EXPECT_TRUE((bad >> value).fail()) << std::string(text.begin(), text.end());
    }
}

TEST(facet_stream, locale_is_per_thread_and_stable)
{
    const std::locale* first = &get_global_std_locale();
    EXPECT_EQ(first, &get_global_std_locale());
    EXPECT_TRUE(std::has_facet<fl::i18n::facet::ctype_facet<char16_t>>(*first));
    const std::locale* other = nullptr;
    const std::locale* other_again = nullptr;
    // Compared while the other thread still runs, so its locale cannot have been freed yet.
    std::thread([&] {
        other = &get_global_std_locale();
        other_again = &get_global_std_locale();
        EXPECT_NE(other, first);
    }).join();
    EXPECT_EQ(other, other_again);
}

// A German C++ global locale must not reach the numbers: the punctuation is the classic one.
TEST(facet_stream, ignores_the_cpp_global_locale)
{
    std::locale german;
    try {
        german = std::locale("de_DE.UTF-8");
    } catch (const std::runtime_error&) {
        GTEST_SKIP() << "the libc locale de_DE.UTF-8 is not installed";
    }
    const std::locale previous = std::locale::global(german);
    ustring text;
    std::string encoding;
    std::thread([&] {
        std::basic_ostringstream<char16_t> out;
        out.imbue(get_global_std_locale());
        out << 1234.5;
        text = out.str();
        encoding = std::use_facet<fl::i18n::facet::ctype_facet<char16_t>>(get_global_std_locale()).encoding();
    }).join();
    std::locale::global(previous);
    EXPECT_EQ(text, u"1234.5");
    EXPECT_EQ(encoding, fl::i18n::QxLocale::global().getEncoding());
}

TEST(std_char16_bases, classify_and_punctuate_as_the_c_locale)
{
    const std::locale plain(std::locale(std::locale::classic(), new std::ctype<char16_t>()),
                            new std::numpunct<char16_t>());
    const auto& ct = std::use_facet<std::ctype<char16_t>>(plain);
    EXPECT_TRUE(ct.is(std::ctype_base::alpha, u'q') && ct.is(std::ctype_base::space, u'\t'));
    EXPECT_FALSE(ct.is(std::ctype_base::alpha, u'\u00E9'));
    EXPECT_EQ(ustring() + ct.toupper(u'q') + ct.toupper(u'\u00E9') + ct.widen('\xE9'), u"Q\u00E9\u00E9");
    EXPECT_EQ(ct.narrow(u'\u00E9', '?'), '?');
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

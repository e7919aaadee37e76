// Number formatting and parsing on char16_t streams with the per-thread locale; this program links
// libqxi18n alone, so the char16_t facets it needs can only come from there.
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

std::basic_ostringstream<char16_t> out_stream()
{
    std::basic_ostringstream<char16_t> out;
    out.imbue(get_global_std_locale());
    return out;
}

std::basic_istringstream<char16_t> in_stream(const ustring& text)
{
    std::basic_istringstream<char16_t> in(text);
    in.imbue(get_global_std_locale());
    return in;
}

TEST(facet_stream, writes_numbers_with_classic_punctuation)
{
    struct row {
        void (*write)(std::basic_ostream<char16_t>&);
        ustring expected;
    };
    const row rows[] = {
        {[](auto& o) { o << 1234.5; }, u"1234.5"},
        {[](auto& o) { o << 1234567; }, u"1234567"},
        {[](auto& o) { o << -0.25; }, u"-0.25"},
        {[](auto& o) { o << std::hex << std::showbase << 255; }, u"0xff"},
        {[](auto& o) { o << std::uppercase << std::scientific << 1.5e10; }, u"1.500000E+10"},
        {[](auto& o) { o << std::boolalpha << true << ' ' << false; }, u"true false"},
        {[](auto& o) { o << std::setfill(u'*') << std::setw(6) << 42; }, u"****42"},
    };
    for (const row& r : rows) {
        auto out = out_stream();
        r.write(out);
        EXPECT_FALSE(out.fail());
        EXPECT_EQ(out.str(), r.expected);
    }
}

TEST(facet_stream, reads_numbers)
{
    auto in = in_stream(u"  42\t3.25\u00A0-7 0x1F true");
    long whole = 0;
    double fraction = 0;
    int negative = 0;
    int hex = 0;
    bool flag = false;
    in >> whole >> fraction >> negative >> std::hex >> hex >> std::boolalpha >> flag;
    EXPECT_FALSE(in.fail());
    EXPECT_EQ(whole, 42);
    EXPECT_EQ(fraction, 3.25);
    EXPECT_EQ(negative, -7);  // U+00A0 is white space to the ctype facet
    EXPECT_EQ(hex, 0x1F);
    EXPECT_TRUE(flag);
}

TEST(facet_stream, failed_reads_set_failbit)
{
    for (const ustring text : {u"", u"abc", u"-", u"99999999999999999999"}) {
        auto in = in_stream(text);
        int value = 0;
        in >> value;
        EXPECT_TRUE(in.fail()) << std::string(text.begin(), text.end());
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
        auto out = out_stream();
        out << 1234.5;
        text = out.str();
        encoding = std::use_facet<fl::i18n::facet::ctype_facet<char16_t>>(get_global_std_locale()).encoding();
    }).join();
    std::locale::global(previous);
    EXPECT_EQ(text, u"1234.5");
    EXPECT_EQ(encoding, fl::i18n::QxLocale::global().getEncoding());
}

}  // namespace

// Tests of the free conversion functions: empty and null input, conversion through a caller's
// converter, the code-point rules, the two-buffer boundaries and reference checks against ICU.
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>

#include "conversion_test_support.hpp"

#include <string_view>
#include <utility>

namespace {

using namespace fl::i18n;
using namespace qx_test;

// Copies unit by unit and counts its calls; the size query and the buffer form count 100, since
// the free functions must make one call of the string form with the whole length.
template <class To, class From>
class counting_converter final : public converter<To, From> {
public:
    mutable int calls = 0;

protected:
    unsigned long do_get_destination_size(const From*, unsigned long n) const override { calls += 100; return n; }
    unsigned long do_convert(To*, unsigned long, const From*, unsigned long n) const override
    {
        calls += 100;
        return n;
    }
    std::basic_string<To> do_convert(const From* s, unsigned long n) const override
    {
        ++calls;
        return std::basic_string<To>(s, s + n);
    }
};

TEST(to_ustring, CallersConverterGetsTheWholeLengthOnceAndNeverForEmptyInput)
{
    counting_converter<char16_t, char> in;
    const std::string with_zero("ab\0cd", 5);
    EXPECT_EQ(to_ustring(std::string(), in) + to_ustring(static_cast<const char*>(nullptr), in) + to_ustring("", in),
              u"");
    EXPECT_EQ(in.calls, 0);
    EXPECT_EQ(to_ustring(with_zero, in), ustring(u"ab\0cd", 5));
    EXPECT_EQ(to_ustring(with_zero.c_str(), in), u"ab");
    EXPECT_EQ(in.calls, 2);
    counting_converter<char, char16_t> out;
    EXPECT_TRUE(to_string(ustring(), out).empty());
    EXPECT_EQ(to_string(ustring(u"x\0y", 3), out), std::string("x\0y", 3));
    EXPECT_EQ(out.calls, 1);
}

TEST(free_functions, EmptyNullAndEmbeddedZeros)
{
    const char16_t* null16 = nullptr;
    const char* null8 = nullptr;
    const std::size_t empty[] = {
        to_ustring(std::wstring()).size(), to_ustring(static_cast<const wchar_t*>(nullptr)).size(),
        to_ustring(std::u32string()).size(), to_ustring(static_cast<const char32_t*>(nullptr)).size(),
        to_wstring(ustring()).size(), to_u32string(ustring()).size(), to_u32string(null16).size(),
        ustring_to_utf8(null16).size(), ustring_to_utf8(null16, 5).size(), ustring_to_utf8(u"abc", 0).size(),
        ustring_to_utf8(std::u16string_view()).size(), utf8_to_ustring(null8).size(),
        utf8_to_ustring(null8, 5).size(), utf8_to_ustring("abc", 0).size(),
    };
    for (std::size_t i = 0; i < std::size(empty); ++i) EXPECT_EQ(empty[i], 0u) << "call " << i;
    // Length forms keep a zero unit, pointer forms stop at it.
    EXPECT_EQ(to_ustring(std::wstring(L"a\0b", 3)) + to_ustring(L"a\0b") + to_ustring(U"a\0b"), ustring(u"a\0baa", 5));
    EXPECT_EQ(to_u32string(ustring(u"a\0b", 3)) + to_u32string(u"a\0b"), std::u32string(U"a\0ba", 4));
}

// The functions share nothing, so threads may call them at once; the seeds are spread over them.
TEST(free_functions, MatchIcuOnRandomInputInEveryThread)
{
    expect_random_texts_in_threads([](const ustring& units, const std::string& bytes) {
        const std::string utf8 = icu_utf16_to_utf8(units);
        const std::u32string utf32 = icu_utf16_to_utf32(units);
        const ustring utf16 = icu_utf8_to_utf16(bytes);
        return ustring_to_utf8(units) == utf8 && ustring_to_utf8(std::u16string_view(units)) == utf8 &&
               ustring_to_utf8(units.c_str()) == icu_utf16_to_utf8(units.c_str()) && to_u32string(units) == utf32 &&
               to_wstring(units) == std::wstring(utf32.begin(), utf32.end()) && utf8_to_ustring(bytes) == utf16 &&
               utf8_to_ustring(bytes.c_str()) == icu_utf8_to_utf16(bytes.c_str());
    });
}

// Above 1024 elements the units are counted first; both paths must give the same arithmetic.
TEST(to_ustring, CodePointsBecomeUnitsWithoutValidationOnBothPaths)
{
    std::vector<std::u32string> texts;
    for (char32_t cp : {0x10FFFFu, 0x10000u, 0xD800u, 0xFFFFu, 0x110000u, 0x61u})
        for (std::size_t n : {1u, 1500u}) texts.push_back(std::u32string(n, cp));
    for (std::size_t length : {1024u, 1025u, 4000u}) {
        texts.push_back(std::u32string(length, U'\U0001F600'));  // two units per element
        std::mt19937 rng(static_cast<std::uint32_t>(length));
        std::u32string any;
        while (any.size() < length) any.push_back(static_cast<char32_t>(random_size(rng, 0x10FFFF)));
        texts.push_back(any);
    }
    EXPECT_EQ(encode_code_points(U"\U00110000"), (ustring{0xDC00, 0xDC00}));
    for (const std::u32string& cps : texts) {
        SCOPED_TRACE(std::to_string(cps.size()) + " x " + std::to_string(cps[0]));
        const ustring expected = encode_code_points(cps);
        const std::wstring wide(cps.begin(), cps.end());
        EXPECT_TRUE(same_text(to_ustring(cps), expected));
        EXPECT_TRUE(same_text(to_ustring(cps.c_str()), expected));
        EXPECT_TRUE(same_text(to_ustring(wide), expected));
    }
}

// Texts around the stack buffer (1024 units), the heap buffer (min(n, 32768)) and the exact
// second pass, in both directions against ICU.
TEST(free_functions, TwoBufferBoundariesInBothDirections)
{
    std::vector<ustring> texts = {rep(u"\u4E2D", 341) + u"a", rep(u"\u4E2D", 341) + u"aa", rep(u"\xDC00", 1024),
                                  rep(u"\U0001F600", 512), u"\u4E2D" + rep(u"a", 32767), rep(u"\u4E2D", 50000)};
    std::vector<std::string> bytes = {rep("\xF0\x9F\x98\x80", 256), rep("\xF0\x9F\x98\x80", 257),
                                      rep("\xE4\xB8\xAD", 10923), rep("\xF0\x9F\x98\x80", 256) + "\xF0"};
    for (std::size_t n : {1024u, 1025u, 32768u, 32769u}) {
        texts.push_back(rep(u"a", n));
        texts.push_back(rep(u"\u4E2D", n));
        bytes.push_back(rep("\xFF", n));
    }
    for (const ustring& text : texts) {
        const std::string utf8 = icu_utf16_to_utf8(text);
        EXPECT_TRUE(same_text(ustring_to_utf8(text.data(), text.size()), utf8)) << text.size() << " units";
        bytes.push_back(utf8);
    }
    for (const std::string& text : bytes)
        EXPECT_TRUE(same_text(utf8_to_ustring(text), icu_utf8_to_utf16(text))) << text.size() << " bytes";
}

}  // namespace

// Tests of the free conversion functions: empty and null input, conversion through a caller's
// converter, the code-point rules, the two-buffer boundaries and reference checks against ICU.
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>

#include "conversion_test_support.hpp"

#include <functional>
#include <string_view>
#include <thread>
#include <utility>

namespace {

using namespace fl::i18n;
using namespace qx_test;

// Converts unit by unit and counts its calls; the size query and the buffer form count 100,
// since the free functions must make one call of the string form with the whole length.
template <class To, class From>
class counting_converter final : public converter<To, From> {
public:
    mutable int calls = 0;
    mutable unsigned long last_length = 0;

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
        last_length = n;
        return std::basic_string<To>(s, s + n);
    }
};

TEST(to_ustring, CallersConverterGetsTheWholeLengthOnceAndNeverForEmptyInput)
{
    const std::string with_zero("ab\0cd", 5);
    const std::pair<std::function<std::size_t(const converter<char16_t, char>&)>, unsigned long> cases[] = {
        {[&](const auto& c) { return to_ustring(with_zero, c).size(); }, 5},
        {[&](const auto& c) { return to_ustring(with_zero.c_str(), c).size(); }, 2},
        {[](const auto& c) { return to_ustring(std::string(), c).size(); }, 0},
        {[](const auto& c) { return to_ustring(static_cast<const char*>(nullptr), c).size(); }, 0},
        {[](const auto& c) { return to_ustring("", c).size(); }, 0},
    };
    for (const auto& [call, length] : cases) {
        counting_converter<char16_t, char> cvt;
        EXPECT_EQ(call(cvt), length);
        EXPECT_EQ(cvt.calls, length ? 1 : 0);
        EXPECT_EQ(cvt.last_length, length);
    }
    counting_converter<char, char16_t> out;
    EXPECT_TRUE(to_string(ustring(), out).empty());
    EXPECT_EQ(to_string(ustring(u"x\0y", 3), out), std::string("x\0y", 3));
    EXPECT_EQ(out.calls, 1);
}

TEST(free_functions, EmptyNullAndEmbeddedZeros)
{
    const char16_t* null16 = nullptr;
    const char* null8 = nullptr;
    // Every form of every function with null or empty input.
    const std::size_t empty[] = {
        to_ustring(std::wstring()).size(),    to_ustring(static_cast<const wchar_t*>(nullptr)).size(),
        to_ustring(L"").size(),               to_wstring(ustring()).size(),
        to_ustring(std::u32string()).size(),  to_ustring(static_cast<const char32_t*>(nullptr)).size(),
        to_ustring(U"").size(),               to_u32string(ustring()).size(),
        to_u32string(null16).size(),          to_u32string(u"").size(),
        ustring_to_utf8(ustring()).size(),    ustring_to_utf8(null16).size(),
        ustring_to_utf8(null16, 5).size(),    ustring_to_utf8(u"abc", 0).size(),
        ustring_to_utf8(std::u16string_view()).size(), utf8_to_ustring(std::string()).size(),
        utf8_to_ustring(null8).size(),        utf8_to_ustring(null8, 5).size(),
        utf8_to_ustring("abc", 0).size(),
    };
    for (std::size_t i = 0; i < std::size(empty); ++i) EXPECT_EQ(empty[i], 0u) << "call " << i;
    // Length forms keep a zero unit, pointer forms stop at it (the random texts below hold zeros too).
    EXPECT_EQ(to_u32string(ustring(u"a\0b", 3)), std::u32string(U"a\0b", 3));
    EXPECT_EQ(to_u32string(u"a\0b"), U"a");
    EXPECT_EQ(to_wstring(ustring(u"a\0b", 3)), std::wstring(L"a\0b", 3));
    EXPECT_EQ(to_ustring(std::wstring(L"a\0b", 3)), ustring(u"a\0b", 3));
    EXPECT_EQ(to_ustring(L"a\0b"), u"a");
    EXPECT_EQ(to_ustring(std::u32string(U"a\0b", 3)), ustring(u"a\0b", 3));
    EXPECT_EQ(to_ustring(U"a\0b"), u"a");
}

// The functions share nothing, so threads may call them at once; the seeds are spread over them.
TEST(free_functions, MatchIcuOnRandomInputInEveryThread)
{
    std::vector<std::string> mismatches(4);
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < mismatches.size(); ++t)
        threads.emplace_back([t, &mismatches] {
            const auto seeds = test_seeds(80);
            for (std::size_t k = t; k < seeds.size(); k += 4) {
                std::mt19937 rng(seeds[k]);
                const ustring units = random_utf16(rng, random_size(rng, 3000));
                const std::string bytes = random_utf8_soup(rng, random_size(rng, 3000));
                const std::string utf8 = icu_utf16_to_utf8(units);
                const std::u32string utf32 = icu_utf16_to_utf32(units);
                const ustring utf16 = icu_utf8_to_utf16(bytes);
                const bool same =
                    ustring_to_utf8(units) == utf8 && ustring_to_utf8(units.data(), units.size()) == utf8 &&
                    ustring_to_utf8(std::u16string_view(units)) == utf8 &&
                    ustring_to_utf8(units.c_str()) == icu_utf16_to_utf8(units.c_str()) &&
                    to_u32string(units) == utf32 && to_wstring(units) == std::wstring(utf32.begin(), utf32.end()) &&
                    utf8_to_ustring(bytes) == utf16 &&
                    utf8_to_ustring(bytes.data(), bytes.size()) == utf16 &&
                    utf8_to_ustring(bytes.c_str()) == icu_utf8_to_utf16(bytes.c_str());
                if (!same) mismatches[t] += " seed " + std::to_string(seeds[k]);
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(mismatches, std::vector<std::string>(4));
}

// Above 1024 elements the units are counted first; both paths must give the same arithmetic.
TEST(to_ustring, CodePointsBecomeUnitsWithoutValidationOnBothPaths)
{
    std::vector<std::u32string> texts;
    for (char32_t cp : {0x10FFFFu, 0x10000u, 0xD800u, 0xDFFFu, 0xFFFFu, 0x110000u, 0x61u})
        for (std::size_t n : {1u, 1500u}) texts.push_back(std::u32string(n, cp));
    for (std::size_t length : {1023u, 1024u, 1025u, 4000u}) {
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
        EXPECT_TRUE(same_text(to_ustring(wide.c_str()), expected));
    }
}

// Texts around the stack buffer (1024 units), the heap buffer (min(n, 32768)) and the exact
// second pass, in both directions against ICU.
TEST(free_functions, TwoBufferBoundariesInBothDirections)
{
    const ustring a = u"a", cjk = u"\u4E2D", lone = {0xDC00}, pair = u"\U0001F600";
    const std::string ff = "\xFF", four = "\xF0\x9F\x98\x80", three = "\xE4\xB8\xAD";
    std::vector<ustring> texts = {rep(cjk, 341) + a,        rep(cjk, 341) + rep(a, 2),  rep(lone, 1024),
                                  rep(pair, 512),           cjk + rep(a, 1998),         cjk + rep(a, 32767),
                                  rep(cjk, 10922) + rep(a, 2), rep(cjk, 50000)};
    std::vector<std::string> bytes = {rep(four, 256),  rep(four, 257),   rep(four, 8193),
                                      rep(three, 342), rep(three, 10923), rep(four, 256) + "\xF0"};
    for (std::size_t n : {1023u, 1024u, 1025u, 2000u, 32767u, 32768u, 32769u}) {
        texts.push_back(rep(a, n));
        texts.push_back(rep(cjk, n));
        bytes.push_back(rep(ff, n));
    }
    for (const ustring& text : texts) {
        const std::string utf8 = icu_utf16_to_utf8(text);
        EXPECT_TRUE(same_text(ustring_to_utf8(text), utf8)) << text.size() << " units";
        EXPECT_TRUE(same_text(ustring_to_utf8(text.data(), text.size()), utf8)) << text.size() << " units";
        EXPECT_TRUE(same_text(utf8_to_ustring(utf8), icu_utf8_to_utf16(utf8))) << utf8.size() << " bytes";
    }
    for (const std::string& text : bytes)
        EXPECT_TRUE(same_text(utf8_to_ustring(text), icu_utf8_to_utf16(text))) << text.size() << " bytes";
}

}  // namespace

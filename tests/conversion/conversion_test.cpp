// Tests of the free conversion functions: empty and null input, conversion through a caller's
// converter, the code-point rules, the two-buffer boundaries and reference checks against ICU.
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>
#include <fl/i18n/conversion_error.hpp>

#include "conversion_test_support.hpp"

#include <functional>
#include <string_view>
#include <thread>
#include <utility>

namespace {

using namespace fl::i18n;
using qx_test::same_text;

// Records which virtual operation was called and with what length; converts unit by unit.
template <class To, class From>
class counting_converter final : public converter<To, From> {
public:
    mutable int size_calls = 0;
    mutable int string_calls = 0;
    mutable int buffer_calls = 0;
    mutable unsigned long last_length = 0;

    int calls() const { return size_calls + string_calls + buffer_calls; }

protected:
    unsigned long do_get_destination_size(const From*, unsigned long n) const override
    {
        ++size_calls;
        return n;
    }
    std::basic_string<To> do_convert(const From* s, unsigned long n) const override
    {
        ++string_calls;
        last_length = n;
        return std::basic_string<To>(s, s + n);
    }
    unsigned long do_convert(To*, unsigned long, const From*, unsigned long n) const override
    {
        ++buffer_calls;
        return n;
    }
};

template <class Char>
std::basic_string<Char> rep(const std::basic_string<Char>& piece, std::size_t times)
{
    std::basic_string<Char> out;
    out.reserve(piece.size() * times);
    for (std::size_t i = 0; i < times; ++i) out += piece;
    return out;
}

// The UTF-16 arithmetic of the code-point conversions, without validation.
ustring encode_code_points(const std::u32string& cps)
{
    ustring out;
    for (char32_t c : cps) {
        if (c > 0xFFFF) {
            out.push_back(static_cast<char16_t>((c >> 10) + 0xD7C0));
            out.push_back(static_cast<char16_t>((c & 0x3FF) | 0xDC00));
        } else {
            out.push_back(static_cast<char16_t>(c));
        }
    }
    return out;
}

std::u32string icu_utf16_to_utf32(const ustring& s)
{
    return qx_test::icu_preflighted<char32_t>([&](char32_t* d, int32_t cap, UErrorCode& ec) {
        int32_t n = 0;
        u_strToUTF32WithSub(reinterpret_cast<UChar32*>(d), cap, &n, s.data(), static_cast<int32_t>(s.size()),
                            0xFFFD, nullptr, &ec);
        return n;
    });
}

TEST(to_ustring, EmptyOrNullInputDoesNotCallTheConverter)
{
    counting_converter<char16_t, char> cvt;
    EXPECT_TRUE(to_ustring(std::string(), cvt).empty());
    EXPECT_TRUE(to_ustring(static_cast<const char*>(nullptr), cvt).empty());
    EXPECT_TRUE(to_ustring("", cvt).empty());
    EXPECT_EQ(cvt.calls(), 0);
}

TEST(to_ustring, ConvertsThroughTheStringFormWithTheWholeLength)
{
    const std::string with_zero("ab\0cd", 5);
    counting_converter<char16_t, char> by_string;
    EXPECT_EQ(to_ustring(with_zero, by_string), ustring(u"ab\0cd", 5));
    EXPECT_EQ(by_string.string_calls, 1);
    EXPECT_EQ(by_string.calls(), 1);
    EXPECT_EQ(by_string.last_length, 5u);

    counting_converter<char16_t, char> by_pointer;
    EXPECT_EQ(to_ustring(with_zero.c_str(), by_pointer), u"ab");
    EXPECT_EQ(by_pointer.string_calls, 1);
    EXPECT_EQ(by_pointer.calls(), 1);
    EXPECT_EQ(by_pointer.last_length, 2u);
}

TEST(to_string, EmptyInputDoesNotCallTheConverter)
{
    counting_converter<char, char16_t> cvt;
    EXPECT_TRUE(to_string(ustring(), cvt).empty());
    EXPECT_EQ(cvt.calls(), 0);
    EXPECT_EQ(to_string(ustring(u"x\0y", 3), cvt), std::string("x\0y", 3));
    EXPECT_EQ(cvt.string_calls, 1);
    EXPECT_EQ(cvt.calls(), 1);
    EXPECT_EQ(cvt.last_length, 3u);
}

TEST(to_string, UsesTheCallersIcuConverterAndItsErrors)
{
    const codecvt_ustring_to_string latin1_out("ISO-8859-1", false);
    const codecvt_string_to_ustring latin1_in("ISO-8859-1", false);
    EXPECT_EQ(to_string(u"caf\u00E9", latin1_out), "caf\xE9");
    EXPECT_EQ(to_ustring("caf\xE9", latin1_in), u"caf\u00E9");
    EXPECT_EQ(to_ustring(std::string("caf\xE9"), latin1_in), u"caf\u00E9");
    EXPECT_THROW(to_string(u"\u20AC", latin1_out), CvtInvalidCharacter);
}

TEST(free_functions, EmptyOrNullInputGivesEmptyResult)
{
    const std::pair<const char*, std::function<std::size_t()>> cases[] = {
        {"to_ustring(std::wstring())", [] { return to_ustring(std::wstring()).size(); }},
        {"to_ustring(null wchar_t*)", [] { return to_ustring(static_cast<const wchar_t*>(nullptr)).size(); }},
        {"to_ustring(L\"\")", [] { return to_ustring(L"").size(); }},
        {"to_wstring(ustring())", [] { return to_wstring(ustring()).size(); }},
        {"to_ustring(std::u32string())", [] { return to_ustring(std::u32string()).size(); }},
        {"to_ustring(null char32_t*)", [] { return to_ustring(static_cast<const char32_t*>(nullptr)).size(); }},
        {"to_ustring(U\"\")", [] { return to_ustring(U"").size(); }},
        {"to_u32string(ustring())", [] { return to_u32string(ustring()).size(); }},
        {"to_u32string(null char16_t*)", [] { return to_u32string(static_cast<const char16_t*>(nullptr)).size(); }},
        {"to_u32string(u\"\")", [] { return to_u32string(u"").size(); }},
        {"ustring_to_utf8(ustring())", [] { return ustring_to_utf8(ustring()).size(); }},
        {"ustring_to_utf8(null)", [] { return ustring_to_utf8(static_cast<const char16_t*>(nullptr)).size(); }},
        {"ustring_to_utf8(null, 5)", [] { return ustring_to_utf8(static_cast<const char16_t*>(nullptr), 5).size(); }},
        {"ustring_to_utf8(u\"abc\", 0)", [] { return ustring_to_utf8(u"abc", 0).size(); }},
        {"ustring_to_utf8(u\"\")", [] { return ustring_to_utf8(u"").size(); }},
        {"ustring_to_utf8(u16string_view())", [] { return ustring_to_utf8(std::u16string_view()).size(); }},
        {"utf8_to_ustring(std::string())", [] { return utf8_to_ustring(std::string()).size(); }},
        {"utf8_to_ustring(null)", [] { return utf8_to_ustring(static_cast<const char*>(nullptr)).size(); }},
        {"utf8_to_ustring(null, 5)", [] { return utf8_to_ustring(static_cast<const char*>(nullptr), 5).size(); }},
        {"utf8_to_ustring(\"abc\", 0)", [] { return utf8_to_ustring("abc", 0).size(); }},
        {"utf8_to_ustring(\"\")", [] { return utf8_to_ustring("").size(); }},
    };
    for (const auto& [name, call] : cases) EXPECT_EQ(call(), 0u) << name;
}

TEST(free_functions, LengthFormsKeepZerosAndPointerFormsStopAtThem)
{
    EXPECT_EQ(utf8_to_ustring(std::string("a\0b", 3)), ustring(u"a\0b", 3));
    EXPECT_EQ(utf8_to_ustring("a\0b", 3), ustring(u"a\0b", 3));
    EXPECT_EQ(utf8_to_ustring("a\0b"), u"a");
    EXPECT_EQ(ustring_to_utf8(ustring(u"a\0b", 3)), std::string("a\0b", 3));
    EXPECT_EQ(ustring_to_utf8(std::u16string_view(u"a\0b", 3)), std::string("a\0b", 3));
    EXPECT_EQ(ustring_to_utf8(u"a\0b", 3), std::string("a\0b", 3));
    EXPECT_EQ(ustring_to_utf8(u"a\0b"), "a");
    EXPECT_EQ(to_u32string(ustring(u"a\0b", 3)), std::u32string(U"a\0b", 3));
    EXPECT_EQ(to_u32string(u"a\0b"), U"a");
    EXPECT_EQ(to_wstring(ustring(u"a\0b", 3)), std::wstring(L"a\0b", 3));
    EXPECT_EQ(to_ustring(std::wstring(L"a\0b", 3)), ustring(u"a\0b", 3));
    EXPECT_EQ(to_ustring(L"a\0b"), u"a");
    EXPECT_EQ(to_ustring(std::u32string(U"a\0b", 3)), ustring(u"a\0b", 3));
    EXPECT_EQ(to_ustring(U"a\0b"), u"a");
}

TEST(ustring_to_utf8, LoneSurrogatesBecomeReplacementCharacter)
{
    const std::string fffd = "\xEF\xBF\xBD";
    const std::pair<ustring, std::string> cases[] = {
        {{0xD800}, fffd},
        {{u'a', 0xDC00, u'b'}, "a" + fffd + "b"},
        {{0xDC00, 0xD800}, fffd + fffd},
        {{u'a', 0xD800}, "a" + fffd},
        {{0xD800, 0xD800, 0xDC00}, fffd + "\xF0\x90\x80\x80"},
        {{0xDBFF, 0xDFFF}, "\xF4\x8F\xBF\xBF"},
    };
    for (const auto& [input, expected] : cases) {
        EXPECT_EQ(ustring_to_utf8(input), expected);
        EXPECT_EQ(ustring_to_utf8(input.data(), input.size()), expected);
    }
}

TEST(utf8_to_ustring, MalformedInputBecomesReplacementCharacters)
{
    const std::pair<std::string, ustring> cases[] = {
        {"\xC0\x80", {0xFFFD, 0xFFFD}},
        {"\xFF", {0xFFFD}},
        {"a\xE3\x81", {u'a', 0xFFFD}},
        {"\xE3\x81" "a", {0xFFFD, u'a'}},
        {"\x80\x80", {0xFFFD, 0xFFFD}},
        {"\xF4\x90\x80\x80", {0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD}},
    };
    for (const auto& [input, expected] : cases) {
        EXPECT_EQ(utf8_to_ustring(input), expected) << "input " << ::testing::PrintToString(input);
        EXPECT_EQ(utf8_to_ustring(input), qx_test::icu_utf8_to_utf16(input));
    }
}

TEST(to_u32string, UnpairedSurrogatesBecomeReplacementCharacter)
{
    const std::pair<ustring, std::u32string> cases[] = {
        {{0xD800, u'a'}, {0xFFFD, U'a'}},
        {{0xD800}, {0xFFFD}},
        {{u'a', 0xD800}, {U'a', 0xFFFD}},
        {{0xDC00}, {0xFFFD}},
        {{0xDC00, 0xD800}, {0xFFFD, 0xFFFD}},
        {{0xD800, 0xD800, 0xDC00}, {0xFFFD, 0x10000}},
        {{0xD83D, 0xDE00, u'!'}, {0x1F600, U'!'}},
        {{0xDBFF, 0xDFFF}, {0x10FFFF}},
        {{0xFFFF, 0xE000}, {0xFFFF, 0xE000}},
    };
    for (const auto& [input, expected] : cases) {
        SCOPED_TRACE(::testing::PrintToString(input));
        EXPECT_EQ(to_u32string(input), expected);
        EXPECT_EQ(to_u32string(input.c_str()), expected);
        EXPECT_EQ(to_wstring(input), std::wstring(expected.begin(), expected.end()));
    }
}

TEST(to_u32string, MatchesIcuOnRandomInput)
{
    for (std::uint32_t seed : qx_test::test_seeds(30)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 rng(seed);
        const ustring input = qx_test::random_utf16(rng, std::uniform_int_distribution<std::size_t>(0, 3000)(rng));
        const std::u32string expected = icu_utf16_to_utf32(input);
        EXPECT_TRUE(same_text(to_u32string(input), expected));
        EXPECT_TRUE(same_text(to_wstring(input), std::wstring(expected.begin(), expected.end())));
    }
}

TEST(to_ustring, CodePointsBecomeUnitsWithoutValidation)
{
    const std::pair<char32_t, ustring> cases[] = {
        {0x10FFFF, {0xDBFF, 0xDFFF}}, {0x10000, {0xD800, 0xDC00}}, {0x1F600, {0xD83D, 0xDE00}},
        {0xD800, {0xD800}},           {0xDFFF, {0xDFFF}},          {0xFFFF, {0xFFFF}},
        {0x110000, {0xDC00, 0xDC00}}, {U'a', {u'a'}},
    };
    for (const auto& [cp, expected] : cases) {
        SCOPED_TRACE("code point " + std::to_string(cp));
        EXPECT_EQ(to_ustring(std::u32string(1, cp)), expected);
        EXPECT_EQ(to_ustring(std::u32string(1, cp).c_str()), expected);
        EXPECT_EQ(to_ustring(std::wstring(1, static_cast<wchar_t>(cp))), expected);
        EXPECT_EQ(to_ustring(std::wstring(1, static_cast<wchar_t>(cp)).c_str()), expected);
        // Above 1024 elements the units are counted first: same result.
        EXPECT_TRUE(same_text(to_ustring(std::u32string(1500, cp)), rep(expected, 1500)));
        EXPECT_TRUE(same_text(to_ustring(std::wstring(1500, static_cast<wchar_t>(cp))), rep(expected, 1500)));
    }
}

TEST(to_ustring, ShortAndLongPathsAgreeAcrossTheBoundary)
{
    for (std::size_t length : {1u, 1023u, 1024u, 1025u, 4000u}) {
        for (std::uint32_t seed : qx_test::test_seeds(4)) {
            SCOPED_TRACE("length " + std::to_string(length) + ", seed " + std::to_string(seed));
            std::mt19937 rng(seed);
            std::uniform_int_distribution<std::uint32_t> any(0, 0x10FFFF);
            std::u32string cps;
            for (std::size_t i = 0; i < length; ++i) cps.push_back(static_cast<char32_t>(any(rng)));
            const ustring expected = encode_code_points(cps);
            EXPECT_TRUE(same_text(to_ustring(cps), expected));
            EXPECT_TRUE(same_text(to_ustring(std::wstring(cps.begin(), cps.end())), expected));
        }
        // All supplementary: the worst case of two units per element.
        const std::u32string wide(length, U'\U0001F600');
        EXPECT_TRUE(same_text(to_ustring(wide), encode_code_points(wide))) << "length " << length;
    }
}

TEST(utf8_to_ustring, MatchesIcuOnRandomByteSoup)
{
    for (std::uint32_t seed : qx_test::test_seeds(60)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 rng(seed);
        const std::string input = qx_test::random_utf8_soup(rng, std::uniform_int_distribution<std::size_t>(0, 3000)(rng));
        const ustring expected = qx_test::icu_utf8_to_utf16(input);
        EXPECT_TRUE(same_text(utf8_to_ustring(input), expected));
        EXPECT_TRUE(same_text(utf8_to_ustring(input.data(), input.size()), expected));
        const std::string up_to_zero(input.c_str());
        EXPECT_TRUE(same_text(utf8_to_ustring(input.c_str()), qx_test::icu_utf8_to_utf16(up_to_zero)));
    }
}

TEST(ustring_to_utf8, MatchesIcuOnRandomInputWithLoneSurrogates)
{
    for (std::uint32_t seed : qx_test::test_seeds(60)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 rng(seed);
        const ustring input = qx_test::random_utf16(rng, std::uniform_int_distribution<std::size_t>(0, 3000)(rng));
        const std::string expected = qx_test::icu_utf16_to_utf8(input);
        EXPECT_TRUE(same_text(ustring_to_utf8(input), expected));
        EXPECT_TRUE(same_text(ustring_to_utf8(input.data(), input.size()), expected));
        EXPECT_TRUE(same_text(ustring_to_utf8(std::u16string_view(input)), expected));
        const ustring up_to_zero(input.c_str());
        EXPECT_TRUE(same_text(ustring_to_utf8(input.c_str()), qx_test::icu_utf16_to_utf8(up_to_zero)));
    }
}

// Texts around the stack buffer (1024 units), the heap buffer (min(n, 32768)) and the exact
// second pass; each is checked in both directions against ICU.
TEST(ustring_to_utf8, TwoBufferBoundariesInBothDirections)
{
    const ustring a = u"a", cjk = u"\u4E2D", lone = {0xDC00}, pair = u"\U0001F600";
    const std::pair<const char*, ustring> cases[] = {
        {"1023 ascii", rep(a, 1023)},
        {"1024 ascii", rep(a, 1024)},
        {"1025 ascii", rep(a, 1025)},
        {"32767 ascii", rep(a, 32767)},
        {"32768 ascii", rep(a, 32768)},
        {"32769 ascii", rep(a, 32769)},
        {"341 cjk + a: 1024 bytes", rep(cjk, 341) + a},
        {"341 cjk + aa: 1025 bytes", rep(cjk, 341) + rep(a, 2)},
        {"1023 cjk", rep(cjk, 1023)},
        {"1024 cjk: 3072 bytes", rep(cjk, 1024)},
        {"1025 cjk", rep(cjk, 1025)},
        {"1024 lone surrogates", rep(lone, 1024)},
        {"512 pairs", rep(pair, 512)},
        {"2000 ascii fills the heap buffer", rep(a, 2000)},
        {"cjk + 1998 ascii: 2001 bytes from 1999 units", cjk + rep(a, 1998)},
        {"cjk + 32767 ascii: 32770 bytes", cjk + rep(a, 32767)},
        {"10922 cjk + aa: 32768 bytes", rep(cjk, 10922) + rep(a, 2)},
        {"32769 cjk", rep(cjk, 32769)},
        {"50000 cjk", rep(cjk, 50000)},
    };
    for (const auto& [name, text] : cases) {
        SCOPED_TRACE(name);
        const std::string utf8 = qx_test::icu_utf16_to_utf8(text);
        EXPECT_TRUE(same_text(ustring_to_utf8(text), utf8));
        EXPECT_TRUE(same_text(ustring_to_utf8(text.data(), text.size()), utf8));
        EXPECT_TRUE(same_text(utf8_to_ustring(utf8), qx_test::icu_utf8_to_utf16(utf8)));
    }
}

TEST(utf8_to_ustring, TwoBufferBoundariesOfMalformedAndShrinkingInput)
{
    const std::string ff = "\xFF", four = "\xF0\x9F\x98\x80", three = "\xE4\xB8\xAD";
    const std::pair<const char*, std::string> cases[] = {
        {"1023 FF", rep(ff, 1023)},      {"1024 FF", rep(ff, 1024)},       {"1025 FF", rep(ff, 1025)},
        {"32767 FF", rep(ff, 32767)},    {"32768 FF", rep(ff, 32768)},     {"32769 FF", rep(ff, 32769)},
        {"256 x 4 bytes", rep(four, 256)}, {"257 x 4 bytes", rep(four, 257)}, {"8193 x 4 bytes", rep(four, 8193)},
        {"342 x 3 bytes", rep(three, 342)}, {"10923 x 3 bytes", rep(three, 10923)},
        {"1025 bytes ending inside a sequence", rep(four, 256) + "\xF0"},
    };
    for (const auto& [name, bytes] : cases) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(same_text(utf8_to_ustring(bytes), qx_test::icu_utf8_to_utf16(bytes)));
    }
}

TEST(utf8_to_ustring, ConcurrentCallsMatchSerialResults)
{
    constexpr int threads = 8;
    struct work {
        std::string utf8;
        ustring utf16;
        ustring expect_utf16;
        std::string expect_utf8;
        std::u32string expect_u32;
        bool ok = true;
    };
    std::vector<work> jobs(threads);
    for (int t = 0; t < threads; ++t) {
        std::mt19937 rng(static_cast<std::uint32_t>(1000 + t));
        jobs[t].utf8 = qx_test::random_utf8_soup(rng, 1000 + 3000 * static_cast<std::size_t>(t));
        jobs[t].utf16 = qx_test::random_utf16(rng, 500 + 5000 * static_cast<std::size_t>(t));
        jobs[t].expect_utf16 = utf8_to_ustring(jobs[t].utf8);
        jobs[t].expect_utf8 = ustring_to_utf8(jobs[t].utf16);
        jobs[t].expect_u32 = to_u32string(jobs[t].utf16);
    }
    std::vector<std::thread> pool;
    for (work& job : jobs) {
        pool.emplace_back([&job] {
            for (int round = 0; round < 50; ++round) {
                job.ok = job.ok && utf8_to_ustring(job.utf8) == job.expect_utf16 &&
                         ustring_to_utf8(job.utf16) == job.expect_utf8 &&
                         to_u32string(job.utf16) == job.expect_u32 &&
                         to_ustring(job.expect_u32) == encode_code_points(job.expect_u32);
            }
        });
    }
    for (std::thread& th : pool) th.join();
    for (int t = 0; t < threads; ++t) EXPECT_TRUE(jobs[t].ok) << "thread " << t;
    for (const work& job : jobs) EXPECT_EQ(job.expect_utf16, qx_test::icu_utf8_to_utf16(job.utf8));
}

}  // namespace

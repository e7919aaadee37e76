// Tests of the converters with a fixed encoding: strict and lenient ASCII, wide text, and the
// JVM's modified UTF-8.
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion_error.hpp>

#include "conversion_test_support.hpp"

namespace {

using namespace fl::i18n;
using qx_test::same_text;

// Converts into a guarded buffer and checks that nothing lands past the capacity or past the
// `output` units of the whole result (no terminator).
template <class To, class Cvt, class From>
std::basic_string<To> through_buffer(const Cvt& cvt, unsigned long capacity, const std::basic_string<From>& source,
                                     unsigned long output, unsigned long& returned)
{
    std::vector<To> buffer(capacity + 4, qx_test::guard_unit<To>());
    returned = cvt.convert(buffer.data(), capacity, source.data(), source.size());
    for (unsigned long i = std::min(capacity, output); i < buffer.size(); ++i)
        EXPECT_EQ(buffer[i], qx_test::guard_unit<To>()) << "unit " << i << " written at capacity " << capacity;
    return std::basic_string<To>(buffer.data(), capacity);
}

TEST(codecvt_ascii_to_ustring, NullEmptyAndStrictness)
{
    const codecvt_ascii_to_ustring strict;
    const codecvt_ascii_to_ustring lenient(true);
    char16_t out[4];
    for (const codecvt_ascii_to_ustring* cvt : {&strict, &lenient}) {
        EXPECT_EQ(cvt->get_destination_size(nullptr, 5), 0u);
        EXPECT_EQ(cvt->get_destination_size("abc", 0), 0u);
        EXPECT_TRUE(cvt->convert(nullptr, 5).empty());
        EXPECT_TRUE(cvt->convert("abc", 0).empty());
        EXPECT_EQ(cvt->convert(out, 4, nullptr, 3), 0u);
        EXPECT_EQ(cvt->convert(nullptr, 4, "abc", 3), 0u);
    }
    std::string all;
    ustring expected;
    for (int c = 0; c < 128; ++c) {
        all.push_back(static_cast<char>(c));
        expected.push_back(static_cast<char16_t>(c));
    }
    EXPECT_EQ(strict.convert(all.data(), all.size()), expected);
    EXPECT_EQ(strict.get_destination_size(all.data(), all.size()), 128u);

    EXPECT_THROW(strict.convert("a\xE9" "b", 3), CvtInvalidCharacter);
    EXPECT_THROW(strict.get_destination_size("ab\x80", 3), CvtInvalidCharacter);
    EXPECT_THROW(strict.convert(out, 4, "a\xE9", 2), CvtInvalidCharacter);
    EXPECT_EQ(lenient.convert("a\xE9" "b\xFF", 4), (ustring{u'a', 0xFFFD, u'b', 0xFFFD}));
    EXPECT_EQ(lenient.get_destination_size("a\xE9", 2), 2u);
}

TEST(codecvt_ascii_to_ustring, BufferFormReturnsWhatItConverted)
{
    const codecvt_ascii_to_ustring lenient(true);
    const std::string source = "h\xE9llo";
    const ustring converted = {u'h', 0xFFFD, u'l', u'l', u'o'};
    for (unsigned long cap : {0ul, 1ul, 3ul, 4ul, 5ul, 9ul}) {
        unsigned long returned = 0;
        const ustring written = through_buffer<char16_t>(lenient, cap, source, 5, returned);
        const unsigned long n = std::min(cap, 5ul);
        EXPECT_EQ(returned, n) << "capacity " << cap;
        EXPECT_EQ(written.substr(0, n), converted.substr(0, n)) << "capacity " << cap;
    }
}

TEST(codecvt_ustring_to_ascii, NullEmptyAndStrictness)
{
    const codecvt_ustring_to_ascii strict;
    const codecvt_ustring_to_ascii lenient(true);
    char out[4];
    for (const codecvt_ustring_to_ascii* cvt : {&strict, &lenient}) {
        EXPECT_EQ(cvt->get_destination_size(nullptr, 5), 0u);
        EXPECT_EQ(cvt->get_destination_size(u"abc", 0), 0u);
        EXPECT_TRUE(cvt->convert(nullptr, 5).empty());
        EXPECT_TRUE(cvt->convert(u"abc", 0).empty());
        EXPECT_EQ(cvt->convert(out, 4, nullptr, 3), 0u);
        EXPECT_EQ(cvt->convert(nullptr, 4, u"abc", 3), 0u);
        EXPECT_EQ(cvt->convert(u"a\x7F", 2), "a\x7F");
    }
    const std::pair<ustring, std::string> lenient_cases[] = {
        {u"caf\u00E9", "caf\xFF"},
        {{0x80}, "\xFF"},
        {{0xD83D, 0xDE00}, "\xFF\xFF"},
        {{0xD800, u'x'}, "\xFFx"},
        {{0xFFFD}, "\xFF"},
    };
    for (const auto& [text, expected] : lenient_cases) {
        EXPECT_EQ(lenient.convert(text.data(), text.size()), expected);
        EXPECT_EQ(lenient.get_destination_size(text.data(), text.size()), text.size());
        EXPECT_THROW(strict.convert(text.data(), text.size()), CvtInvalidCharacter);
        EXPECT_THROW(strict.get_destination_size(text.data(), text.size()), CvtInvalidCharacter);
        EXPECT_THROW(strict.convert(out, 4, text.data(), text.size()), CvtInvalidCharacter);
    }
}

TEST(codecvt_ustring_to_ascii, BufferFormReturnsWhatItConverted)
{
    const codecvt_ustring_to_ascii lenient(true);
    const ustring source = u"h\u00E9llo";
    const std::string converted = "h\xFFllo";
    for (unsigned long cap : {0ul, 1ul, 3ul, 4ul, 5ul, 9ul}) {
        unsigned long returned = 0;
        const std::string written = through_buffer<char>(lenient, cap, source, 5, returned);
        const unsigned long n = std::min(cap, 5ul);
        EXPECT_EQ(returned, n) << "capacity " << cap;
        EXPECT_EQ(written.substr(0, n), converted.substr(0, n)) << "capacity " << cap;
    }
}

TEST(codecvt_wstring_to_ustring, SurrogatePairIsNeverSplitAtTheEndOfTheBuffer)
{
    const codecvt_wstring_to_ustring cvt;
    const std::wstring source = L"ab\U0001F600c";
    const ustring full = u"ab\U0001F600c";
    for (unsigned long cap = 0; cap <= 7; ++cap) {
        SCOPED_TRACE("capacity " + std::to_string(cap));
        unsigned long returned = 0;
        const ustring written = through_buffer<char16_t>(cvt, cap, source, 5, returned);
        EXPECT_EQ(returned, 5u);
        const unsigned long whole = cap == 3 ? 2 : std::min(cap, 5ul);  // the lone lead is not kept
        EXPECT_EQ(written.substr(0, whole), full.substr(0, whole));
    }
    wchar_t wide[2] = {L'a', 0};
    char16_t out[4];
    EXPECT_EQ(cvt.convert(out, 4, nullptr, 2), 0u);
    EXPECT_EQ(cvt.convert(out, 4, wide, 0), 0u);
    EXPECT_EQ(cvt.convert(nullptr, 4, source.data(), 4), 5u);
    EXPECT_EQ(cvt.get_destination_size(source.data(), 4), 5u);
    EXPECT_EQ(cvt.get_destination_size(wide, 0), 0u);
    EXPECT_TRUE(cvt.convert(wide, 0).empty());
}

TEST(codecvt_wstring_to_ustring, AllFormsAgreeWithTheArithmetic)
{
    const codecvt_wstring_to_ustring cvt;
    for (std::uint32_t seed : qx_test::test_seeds(8)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 rng(seed);
        std::wstring source;
        ustring expected;
        const std::size_t length = std::uniform_int_distribution<std::size_t>(1, 2500)(rng);
        for (std::size_t i = 0; i < length; ++i) {
            const auto c = std::uniform_int_distribution<std::uint32_t>(0, 0x10FFFF)(rng);
            source.push_back(static_cast<wchar_t>(c));
            if (c > 0xFFFF) {
                expected.push_back(static_cast<char16_t>((c >> 10) + 0xD7C0));
                expected.push_back(static_cast<char16_t>((c & 0x3FF) | 0xDC00));
            } else {
                expected.push_back(static_cast<char16_t>(c));
            }
        }
        qx_test::expect_all_forms(cvt, source, expected);
    }
}

TEST(codecvt_ustring_to_wstring, UnpairedSurrogatesAndShortBuffers)
{
    const codecvt_ustring_to_wstring cvt;
    const ustring source = {u'a', 0xD83D, 0xDE00, 0xD800};
    const std::wstring full = {L'a', 0x1F600, 0xFFFD};
    EXPECT_EQ(cvt.get_destination_size(source.data(), 4), 3u);
    EXPECT_EQ(cvt.convert(source.data(), 4), full);
    for (unsigned long cap = 0; cap <= 4; ++cap) {
        unsigned long returned = 0;
        const std::wstring written = through_buffer<wchar_t>(cvt, cap, source, 3, returned);
        EXPECT_EQ(returned, 3u) << "capacity " << cap;
        const unsigned long n = std::min(cap, 3ul);
        EXPECT_EQ(written.substr(0, n), full.substr(0, n)) << "capacity " << cap;
    }
    wchar_t out[4];
    EXPECT_EQ(cvt.convert(out, 4, nullptr, 2), 0u);
    EXPECT_EQ(cvt.convert(out, 4, source.data(), 0), 0u);
    EXPECT_EQ(cvt.convert(nullptr, 0, source.data(), 4), 3u);

    for (std::uint32_t seed : qx_test::test_seeds(8)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 rng(seed);
        const ustring text = qx_test::random_utf16(rng, std::uniform_int_distribution<std::size_t>(1, 2500)(rng));
        std::u32string code_points;
        for (char32_t c : qx_test::icu_preflighted<char32_t>([&](char32_t* d, int32_t capacity, UErrorCode& ec) {
                 int32_t n = 0;
                 u_strToUTF32WithSub(reinterpret_cast<UChar32*>(d), capacity, &n, text.data(),
                                     static_cast<int32_t>(text.size()), 0xFFFD, nullptr, &ec);
                 return n;
             }))
            code_points.push_back(c);
        qx_test::expect_all_forms(cvt, text, std::wstring(code_points.begin(), code_points.end()));
    }
}

TEST(codecvt_ustring_to_java_nonstandard_utf8, ModifiedUtf8)
{
    const codecvt_ustring_to_java_nonstandard_utf8 cvt;
    const std::pair<ustring, std::string> cases[] = {
        {ustring(1, 0), "\xC0\x80"},
        {u"\U0001F600", "\xED\xA0\xBD\xED\xB8\x80"},
        {{0xD800}, "\xED\xA0\x80"},
        {u"a\u00E9\uFFFF", "a\xC3\xA9\xEF\xBF\xBF"},
        {ustring(1024, 0), qx_test::icu_java_utf8(ustring(1024, 0))},
        {ustring(1024, u'\u4E2D'), qx_test::icu_java_utf8(ustring(1024, u'\u4E2D'))},
        {ustring(32769, u'\u4E2D'), qx_test::icu_java_utf8(ustring(32769, u'\u4E2D'))},
        {ustring(32768, u'a'), std::string(32768, 'a')},
    };
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(std::to_string(text.size()) + " units");
        qx_test::expect_all_forms(cvt, text, expected);
    }
    EXPECT_EQ(cvt.convert(u"", 0), "");
    for (std::uint32_t seed : qx_test::test_seeds(20)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 rng(seed);
        const ustring text = qx_test::random_utf16(rng, std::uniform_int_distribution<std::size_t>(0, 3000)(rng));
        EXPECT_TRUE(same_text(cvt.convert(text.data(), text.size()), qx_test::icu_java_utf8(text)));
    }
}

TEST(codecvt_ustring_to_java_nonstandard_utf8, LengthsOf2To31AreRefusedBeforeReading)
{
    const qx_test::zero_region zeros(0x80000000ul * sizeof(char16_t));
    if (!zeros) GTEST_SKIP() << "cannot reserve 4 GiB of address space";
    const codecvt_ustring_to_java_nonstandard_utf8 cvt;
    const char16_t* huge = zeros.as<char16_t>();
    char out[16];
    EXPECT_THROW(cvt.get_destination_size(huge, 0x80000000ul), CvtSizeTooLarge);
    EXPECT_THROW(cvt.convert(huge, 0x80000000ul), CvtSizeTooLarge);
    EXPECT_THROW(cvt.convert(out, sizeof out, huge, 0x80000000ul), CvtSizeTooLarge);
    EXPECT_THROW(cvt.convert(out, 0x80000000ul, u"a", 1), CvtSizeTooLarge);
    EXPECT_EQ(cvt.convert(out, 0x7FFFFFFFul, u"a", 1), 1u);
}

}  // namespace

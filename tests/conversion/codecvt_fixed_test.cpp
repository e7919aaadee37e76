// Tests of the converters with a fixed encoding: strict and lenient ASCII, wide text, and the
// JVM's modified UTF-8.
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion_error.hpp>

#include "conversion_test_support.hpp"

namespace {

using namespace fl::i18n;
using namespace qx_test;

// Null or empty input gives nothing; all of ASCII converts strictly; lenient rows convert, strict
// ones throw on every form; the buffer form returns what it converted, truncated to the capacity.
template <class Cvt, class From, class To>
void expect_ascii(const std::vector<std::pair<std::basic_string<From>, std::basic_string<To>>>& lenient_rows)
{
    const Cvt strict, lenient(true);
    To out[4];
    const From abc[] = {From('a'), From('b'), From('c')};
    for (const Cvt* cvt : {&strict, &lenient}) {
        EXPECT_EQ(cvt->get_destination_size(nullptr, 5) + cvt->get_destination_size(abc, 0), 0u);
        EXPECT_TRUE(cvt->convert(nullptr, 5).empty() && cvt->convert(abc, 0).empty());
        EXPECT_EQ(cvt->convert(out, 4, nullptr, 3) + cvt->convert(nullptr, 4, abc, 3), 0u);
    }
    std::basic_string<From> all;
    for (int c = 0; c < 128; ++c) all.push_back(static_cast<From>(c));
    EXPECT_EQ(strict.convert(all.data(), all.size()), std::basic_string<To>(all.begin(), all.end()));
    for (const auto& [text, expected] : lenient_rows) {
        SCOPED_TRACE(::testing::PrintToString(text));
        EXPECT_EQ(lenient.convert(text.data(), text.size()), expected);
        EXPECT_EQ(lenient.get_destination_size(text.data(), text.size()), text.size());
        EXPECT_THROW(strict.convert(text.data(), text.size()), CvtInvalidCharacter);
        EXPECT_THROW(strict.get_destination_size(text.data(), text.size()), CvtInvalidCharacter);
        EXPECT_THROW(strict.convert(out, 4, text.data(), text.size()), CvtInvalidCharacter);
        for (unsigned long cap : {0ul, 1ul, text.size() - 1, text.size(), text.size() + 5}) {
            unsigned long returned = 0;
            const unsigned long n = std::min<unsigned long>(cap, text.size());
            const auto written = through_buffer<To>(lenient, cap, text, text.size(), returned);
            EXPECT_EQ(returned, n) << "capacity " << cap;
            EXPECT_EQ(written.substr(0, n), expected.substr(0, n)) << "capacity " << cap;
        }
    }
}

TEST(codecvt_ascii_to_ustring, NullEmptyStrictnessAndBuffers)
{
    expect_ascii<codecvt_ascii_to_ustring, char, char16_t>(
        {{"h\xE9llo", {u'h', 0xFFFD, u'l', u'l', u'o'}}, {"ab\x80", {u'a', u'b', 0xFFFD}}});
}

TEST(codecvt_ustring_to_ascii, NullEmptyStrictnessAndBuffers)
{
    expect_ascii<codecvt_ustring_to_ascii, char16_t, char>({
        {u"h\u00E9llo", "h\xFFllo"}, {u"\x80", "\xFF"}, {u"\U0001F600", "\xFF\xFF"}, {u"\xD800x", "\xFFx"}});
}

// A capacity one short of the output often ends inside a pair (random code points are mostly above
// U+FFFF): the pair is then counted, not written.
TEST(codecvt_wstring_to_ustring, BothDirectionsMatchTheReferenceOnRandomInput)
{
    const codecvt_wstring_to_ustring in;
    const codecvt_ustring_to_wstring out;
    const ustring unpaired = {u'a', 0xD83D, 0xDE00, 0xD800};
    const std::wstring wide = L"ab\U0001F600";
    expect_all_forms(out, unpaired, std::wstring{L'a', 0x1F600, 0xFFFD});
    expect_all_forms(in, wide, ustring(u"ab\U0001F600"));  // capacity 3 ends inside the pair
    char16_t units[4];
    wchar_t wides[4];
    EXPECT_EQ(in.convert(units, 4, nullptr, 2) + in.convert(units, 4, wide.data(), 0), 0u);
    EXPECT_EQ(in.convert(nullptr, 4, wide.data(), 3), 4u);
    EXPECT_EQ(in.get_destination_size(nullptr, 4), 0u);
    EXPECT_TRUE(in.convert(nullptr, 4).empty());
    EXPECT_EQ(out.convert(wides, 4, nullptr, 2) + out.convert(wides, 4, unpaired.data(), 0), 0u);
    EXPECT_EQ(out.convert(nullptr, 0, unpaired.data(), 4), 3u);
    EXPECT_EQ(out.get_destination_size(nullptr, 4), 0u);
    EXPECT_TRUE(out.convert(nullptr, 4).empty());
    for (std::uint32_t seed : test_seeds(8)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 rng(seed);
        std::u32string cps(random_size(rng, 2500) + 1, U'\0');
        for (char32_t& c : cps) c = static_cast<char32_t>(random_size(rng, 0x10FFFF));
        expect_all_forms(in, std::wstring(cps.begin(), cps.end()), encode_code_points(cps));
        const ustring text = random_utf16(rng, random_size(rng, 2500) + 1);
        const std::u32string utf32 = icu_utf16_to_utf32(text);
        expect_all_forms(out, text, std::wstring(utf32.begin(), utf32.end()));
    }
}

TEST(codecvt_ustring_to_java_nonstandard_utf8, ModifiedUtf8)
{
    const codecvt_ustring_to_java_nonstandard_utf8 cvt;
    std::vector<std::pair<ustring, std::string>> cases = {
        {ustring(1, 0), "\xC0\x80"}, {u"\U0001F600", "\xED\xA0\xBD\xED\xB8\x80"}, {u"\xD800", "\xED\xA0\x80"},
        {u"a\u00E9\uFFFF", "a\xC3\xA9\xEF\xBF\xBF"}, {ustring(32768, u'a'), std::string(32768, 'a')}, {u"", ""}};
    for (const ustring& text : {ustring(1024, 0), ustring(1024, u'\u4E2D'), ustring(32769, u'\u4E2D')})
        cases.emplace_back(text, icu_java_utf8(text));
    for (std::uint32_t seed : test_seeds(20)) {
        std::mt19937 rng(seed);
        const ustring text = random_utf16(rng, random_size(rng, 3000));
        cases.emplace_back(text, icu_java_utf8(text));
    }
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(std::to_string(text.size()) + " units");
        expect_all_forms(cvt, text, expected);
    }
}

TEST(codecvt_ustring_to_java_nonstandard_utf8, LengthsOf2To31AreRefusedBeforeReading)
{
    const zero_region zeros(0x80000000ul * sizeof(char16_t));
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

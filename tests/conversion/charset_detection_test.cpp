// detect_charset with no detection variable set: the byte scan, the UTF-8 preflight, the choice
// among matches, and the whole call against raw ICU's detector. The rule-bound pieces are
// internal, so this test links the library's objects.
#include "conversion/charset_decision.hpp"

#include <fl/i18n/charset_detection.hpp>
#include <fl/i18n/locale.hpp>

#include "charset_test_support.hpp"
#include "conversion_test_support.hpp"

#include <atomic>
#include <cstdlib>
#include <new>
#include <optional>
#include <sstream>
#include <tuple>

namespace {
std::atomic<long> allocations{0};
}  // namespace

// Counts every allocation of the process, for the test that the fast paths make none.
void* operator new(std::size_t size)
{
    ++allocations;
    if (void* p = std::malloc(size ? size : 1)) return p;
    throw std::bad_alloc();
}
// Not inlined, or GCC pairs the allocation with the free inside and warns of a mismatch.
[[gnu::noinline]] void operator delete(void* p) noexcept { std::free(p); }
[[gnu::noinline]] void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace {

using namespace fl::i18n::detail;
using fl::i18n::detect_charset;

class CharsetDetection : public ::testing::Test {
protected:
    void SetUp() override
    {
        for (const char* variable : qx_charset_test::detection_variables)
            if (std::getenv(variable) != nullptr) GTEST_SKIP() << variable << " is set; these tests need the defaults";
    }
};

TEST(scan_bytes, FindsTheFirstZeroOrHighByteAnywhere)
{
    // A zero or a high byte at every place of blocks up to four words long, across the word steps.
    for (std::size_t length = 1; length <= 33; ++length)
        for (std::size_t at = 0; at < length; ++at)
            for (const char special : {'\0', '\xC3'}) {
                std::string bytes(length, 'a');
                bytes[at] = special;
                const byte_scan scan = scan_bytes(bytes.data(), bytes.size());
                const bool last_zero = special == '\0' && at + 1 == length;
                const std::size_t offset = special == '\0' ? 0 : at;
                ASSERT_EQ(scan.ascii, last_zero) << length << " " << at;
                EXPECT_EQ(scan.leading_zero, special == '\0' && at == 0 && length >= 2) << length << " " << at;
                EXPECT_EQ(scan.start, last_zero ? nullptr : bytes.data() + offset) << length << " " << at;
                EXPECT_EQ(scan.size, last_zero ? 0 : length - offset) << length << " " << at;
            }
    // Whichever comes first decides.
    const std::string high_first("ab\xE9\0c", 5), zero_first("\0\xE9", 2);
    EXPECT_EQ(scan_bytes(high_first.data(), 5).start, high_first.data() + 2);
    EXPECT_EQ(scan_bytes(zero_first.data(), 2).start, zero_first.data());
    EXPECT_TRUE(scan_bytes("", 0).ascii);
}

TEST(passes_utf8_preflight, FailsOnlyOnMalformedOrCutUtf8)
{
    using namespace std::string_literals;
    for (const std::string& valid : {"caf\xC3\xA9"s, "a\0b"s, "\xF0\x9F\x98\x80"s, "\xEF\xBF\xBE"s})
        EXPECT_TRUE(passes_utf8_preflight(valid.data(), valid.size())) << testing::PrintToString(valid);
    for (const std::string bad :
         {"\xE9", "\xE3\x81", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xC3\xA9\xC3", "\xFF"})
        EXPECT_FALSE(passes_utf8_preflight(bad.data(), bad.size())) << testing::PrintToString(bad);
}

TEST(parse_threshold, KeepsOnlyOneToOneHundred)
{
    const std::tuple<const char*, int> cases[] = {
        {nullptr, 77}, {"", 77},    {"0", 77},   {"1", 1},     {"100", 100}, {"101", 77}, {"abc", 77},
        {"-5", 77},    {" 42", 42}, {"42x", 42}, {"99.9", 99}, {"+7", 7},
        {"4294967346", 50},  // 2^32 + 50, taken as a 32-bit integer
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(parse_threshold(text, 77), expected) << (text ? text : "(unset)");
}

TEST(choose_charset, TakesTheTopMatchOnlyByMarginAndRescuesUtf8)
{
    using c = charset_choice;
    const std::optional<charset_match> none;
    // first, second, confidence threshold, UTF-8 threshold, choice
    const std::tuple<charset_match, std::optional<charset_match>, int, int, c> cases[] = {
        {{"ISO-8859-1", 95}, charset_match{"ISO-8859-2", 50}, 90, 80, c::top_match},       // lead 45
        {{"ISO-8859-1", 95}, charset_match{"ISO-8859-2", 51}, 90, 80, c::system_charset},  // lead 44
        {{"ISO-8859-1", 90}, none, 90, 80, c::top_match},
        {{"ISO-8859-1", 89}, none, 90, 80, c::system_charset},
        {{"Shift_JIS", 100}, charset_match{"EUC-JP", 99}, 90, 80, c::top_match},  // certainty needs no lead
        {{"UTF-8", 80}, charset_match{"ISO-8859-1", 78}, 90, 80, c::utf8},
        {{"UTF-8", 79}, none, 90, 80, c::system_charset},
        {{"UTF-8", 80}, none, 90, 81, c::system_charset},
        {{"utf-8", 85}, none, 90, 80, c::system_charset},  // the name must match exactly
        {{"windows-1252", 85}, charset_match{"UTF-8", 10}, 90, 80, c::utf8},  // the top match's confidence counts
        {{"windows-1252", 79}, charset_match{"UTF-8", 79}, 90, 80, c::system_charset},
        {{"IBM424_rtl", 100}, none, 90, 80, c::system_charset},
        {{"IBM424_rtl", 100}, charset_match{"UTF-8", 10}, 90, 80, c::utf8},
        {{"IBM424_ltr", 100}, charset_match{"windows-1255", 99}, 90, 80, c::system_charset},  // never the next
        {{"IBM420_ltr", 100}, none, 90, 80, c::system_charset},
        {{"IBM420_rtl", 100}, none, 90, 80, c::system_charset},
        {{"IBM420", 100}, none, 90, 80, c::top_match},
        {{"windows-1252", 99}, none, 100, 80, c::system_charset},
        {{"windows-1252", 100}, charset_match{"windows-1250", 100}, 100, 80, c::top_match},
        {{"KOI8-R", 1}, charset_match{"ISO-8859-5", 1}, 1, 80, c::top_match},  // margin 1 / 2 = 0
        {{"KOI8-R", 0}, none, 1, 80, c::system_charset},
    };
    for (const auto& [first, second, threshold, utf8_threshold, expected] : cases)
        EXPECT_EQ(choose_charset(first, second ? &*second : nullptr, threshold, utf8_threshold), expected)
            << first.name << " " << first.confidence << " / " << (second ? second->name : "-") << " "
            << (second ? second->confidence : 0) << " at " << threshold << ", " << utf8_threshold;
}

TEST_F(CharsetDetection, SettlesAsciiAndUtf8WithoutTheDetectorOrAllocation)
{
    std::ostringstream quiet;  // never written with the defaults
    const auto detect = [&](const std::string& b) { return detect_charset(b.data(), b.size(), quiet, u"x"); };
    EXPECT_EQ(detect_charset(nullptr, 0, quiet, u"") + detect_charset(nullptr, 5, quiet, u""), "UTF-8UTF-8");
    detect("warm-up");  // the first call fills the statics
    for (const std::string& bytes : {std::string(), std::string(1, '\0'), std::string("abc\0", 4),
                                     std::string("ab\0c", 4),  // not ASCII, but valid UTF-8 as a whole
                                     std::string(4096, 'x'), std::string("\xF0\x9F\x98\x80 \xE4\xB8\xAD")}) {
        const long before = allocations.load();
        const std::string result = detect(bytes);
        EXPECT_EQ(allocations.load() - before, 0) << testing::PrintToString(bytes);
        EXPECT_EQ(result, "UTF-8") << testing::PrintToString(bytes);
    }
    EXPECT_EQ(quiet.str(), "");
}

// The reference: raw ICU's matches, chosen among by the rule tested above.
std::string expected_by_icu(const std::string& bytes)
{
    const std::string system_charset = fl::i18n::QxLocale::system().getDefaultEncoding();
    const std::vector<qx_charset_test::icu_match> m = qx_charset_test::icu_matches(bytes);
    if (m.empty()) return system_charset;
    const charset_match first{m[0].name, m[0].confidence};
    const charset_match second = m.size() > 1 ? charset_match{m[1].name, m[1].confidence} : first;
    const charset_choice choice = choose_charset(first, m.size() > 1 ? &second : nullptr,
                                                 default_confidence_threshold, default_utf8_threshold);
    return choice == charset_choice::top_match ? m[0].name : choice == charset_choice::utf8 ? "UTF-8" : system_charset;
}

// Everything the rules leave to the detector, the corpus's files among them, in four threads at once.
TEST_F(CharsetDetection, GivesWhatIcusMatchesDecideInEveryThread)
{
    std::vector<std::string> inputs = {
        "\xE9", "\xE3\x81",  // one byte, not UTF-8; UTF-8 cut inside a character
        std::string(64, '\0'), std::string("\0\0", 2),
        std::string("\0H\0e\0l\0l\0o\0 \0w\0o\0r\0l\0d", 22),  // UTF-16BE skips the UTF-8 test
        // The ASCII before the first high byte is not the detector's: here it would hide the mark.
        std::string("abc\xFF\xFEh\0\xE9\0l\0l\0o\0", 13),
    };
    for (const auto& file : qx_charset_test::corpus())
        if (!passes_utf8_preflight(file.bytes.data(), file.bytes.size())) inputs.push_back(file.bytes);
    std::vector<std::string> expected;
    for (const std::string& bytes : inputs) expected.push_back(expected_by_icu(bytes));
    qx_test::expect_in_threads(4, [&](std::size_t t) {
        std::string mismatches;
        std::ostringstream own;
        for (std::size_t i = t; i < inputs.size(); i += 2)
            if (detect_charset(inputs[i].data(), inputs[i].size(), own, u"x") != expected[i])
                mismatches += testing::PrintToString(inputs[i].substr(0, 40)) + " ";
        return mismatches + own.str();
    });
}

}  // namespace

// detect_charset with no detection variable set: the byte scan, the UTF-8 preflight, the choice
// among matches, and the whole call against raw ICU's detector. The rule-bound pieces are
// internal, so this test links the library's objects.
#include "conversion/charset_decision.hpp"

#include <fl/i18n/charset_detection.hpp>
#include <fl/i18n/locale.hpp>

#include "charset_test_support.hpp"

#include <atomic>
#include <cstdlib>
#include <new>
#include <optional>
#include <sstream>
#include <thread>
#include <tuple>

namespace {
std::atomic<long> allocations{0};
}  // namespace

// Counts every allocation of the process, for the test that the fast paths make none.
void* operator new(std::size_t size)
{
    ++allocations;
    if (void* p = std::malloc(size ? size : 1))
        return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace {

using namespace fl::i18n::detail;
using fl::i18n::detect_charset;

class CharsetDetection : public ::testing::Test {
protected:
    void SetUp() override
    {
        for (const char* variable : qx_charset_test::detection_variables)
            if (std::getenv(variable) != nullptr)
                GTEST_SKIP() << variable << " is set; these tests need the defaults";
    }

    static std::string detect(const std::string& bytes)
    {
        return detect_charset(bytes.data(), bytes.size(), diagnostics, u"sample");
    }

    static inline std::ostringstream diagnostics;  // never written with the defaults
    const std::string system_charset = fl::i18n::QxLocale::system().getDefaultEncoding();
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
                ASSERT_EQ(scan.ascii, last_zero) << length << " " << at;
                EXPECT_EQ(scan.leading_zero, special == '\0' && at == 0 && length >= 2) << length << " " << at;
                const std::size_t offset = special == '\0' ? 0 : at;
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
    const std::tuple<std::string, bool> cases[] = {
        {"caf\xC3\xA9", true},        {std::string("a\0b", 3), true}, {"\xF0\x9F\x98\x80", true},
        {"\xEF\xBF\xBE", true},       {"\xE9", false},                {"\xE3\x81", false},
        {"\xC0\x80", false},          {"\xED\xA0\x80", false},        {"\xF4\x90\x80\x80", false},
        {"\xC3\xA9\xC3", false},      {"\xFF", false},
    };
    for (const auto& [bytes, valid] : cases)
        EXPECT_EQ(passes_utf8_preflight(bytes.data(), bytes.size()), valid) << testing::PrintToString(bytes);
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
        {{"ISO-8859-1", 95}, charset_match{"ISO-8859-2", 60}, 90, 80, c::system_charset},  // lead 35
        {{"ISO-8859-1", 95}, charset_match{"ISO-8859-2", 40}, 90, 80, c::top_match},
        {{"ISO-8859-1", 95}, charset_match{"ISO-8859-2", 50}, 90, 80, c::top_match},       // lead 45
        {{"ISO-8859-1", 95}, charset_match{"ISO-8859-2", 51}, 90, 80, c::system_charset},  // lead 44
        {{"ISO-8859-1", 90}, none, 90, 80, c::top_match},
        {{"ISO-8859-1", 89}, none, 90, 80, c::system_charset},
        {{"Shift_JIS", 100}, charset_match{"EUC-JP", 99}, 90, 80, c::top_match},  // certainty needs no lead
        {{"UTF-8", 85}, none, 90, 80, c::utf8},
        {{"UTF-8", 80}, charset_match{"ISO-8859-1", 78}, 90, 80, c::utf8},
        {{"UTF-8", 79}, none, 90, 80, c::system_charset},
        {{"UTF-8", 80}, none, 90, 81, c::system_charset},
        {{"utf-8", 85}, none, 90, 80, c::system_charset},  // the name must match exactly
        {{"windows-1252", 85}, charset_match{"UTF-8", 80}, 90, 80, c::utf8},
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

TEST_F(CharsetDetection, SettlesAsciiAndUtf8WithoutTheDetector)
{
    const std::string cases[] = {"", "a", std::string(1, '\0'), std::string("abc\0", 4),
                                 std::string("ab\0c", 4),  // not ASCII, but valid UTF-8 as a whole
                                 "caf\xC3\xA9", "\xF0\x9F\x98\x80 \xE4\xB8\xAD \xD0\x96"};
    EXPECT_EQ(detect_charset(nullptr, 0, diagnostics, u""), "UTF-8");
    EXPECT_EQ(detect_charset(nullptr, 5, diagnostics, u""), "UTF-8");
    for (const std::string& bytes : cases)
        EXPECT_EQ(detect(bytes), "UTF-8") << testing::PrintToString(bytes);
    EXPECT_EQ(diagnostics.str(), "");
}

// The reference: raw ICU's matches, chosen among by the rule tested above.
std::string expected_by_icu(const std::string& bytes, const std::string& system_charset)
{
    const std::vector<qx_charset_test::icu_match> m = qx_charset_test::icu_matches(bytes);
    if (m.empty())
        return system_charset;
    const charset_match first{m[0].name, m[0].confidence};
    const charset_match second = m.size() > 1 ? charset_match{m[1].name, m[1].confidence} : first;
    const charset_choice choice = choose_charset(first, m.size() > 1 ? &second : nullptr,
                                                 default_confidence_threshold, default_utf8_threshold);
    return choice == charset_choice::top_match ? m[0].name : choice == charset_choice::utf8 ? "UTF-8" : system_charset;
}

TEST_F(CharsetDetection, GivesWhatIcusMatchesDecideForEverythingElse)
{
    std::vector<std::string> inputs = {
        "\xE9",              // one byte, not UTF-8
        "\xE3\x81",          // UTF-8 cut inside a character
        std::string(64, '\0'),
        std::string("\0\0", 2),
        std::string("\0H\0e\0l\0l\0o\0 \0w\0o\0r\0l\0d", 22),  // UTF-16BE skips the UTF-8 test
        // The ASCII before the first high byte is not the detector's: here it would hide the mark.
        std::string("abc\xFF\xFEh\0\xE9\0l\0l\0o\0", 13),
    };
    for (const auto& file : qx_charset_test::corpus())
        if (!passes_utf8_preflight(file.bytes.data(), file.bytes.size()))
            inputs.push_back(file.bytes);
    for (const std::string& bytes : inputs)
        EXPECT_EQ(detect(bytes), expected_by_icu(bytes, system_charset)) << testing::PrintToString(bytes.substr(0, 40));
    EXPECT_EQ(diagnostics.str(), "");
}

TEST_F(CharsetDetection, AsciiAndValidUtf8DoNotAllocate)
{
    detect("warm-up");  // the first call fills the statics
    for (const std::string& bytes : {std::string("plain text"), std::string(4096, 'x'), std::string("\xE4\xB8\xAD")}) {
        const long before = allocations.load();
        const std::string result = detect(bytes);
        EXPECT_EQ(allocations.load() - before, 0) << testing::PrintToString(bytes);
        EXPECT_EQ(result, "UTF-8");
    }
}

TEST_F(CharsetDetection, ThreadsGetTheAnswersOfOneThread)
{
    const std::vector<qx_charset_test::labelled_file> files = qx_charset_test::corpus();
    std::vector<std::string> expected;
    for (const auto& file : files)
        expected.push_back(detect(file.bytes));
    std::atomic<int> mismatches{0};
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            std::ostringstream own;
            for (std::size_t i = t; i < files.size(); i += 2)
                mismatches += detect_charset(files[i].bytes.data(), files[i].bytes.size(), own, u"x") != expected[i];
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(mismatches.load(), 0);
}

}  // namespace

// detect_charset under its environment variables, which it reads once per process: CTest runs
// each suite in a process of its own with the variables its entry sets, and a suite whose
// variables are not as it needs skips (which fails the entry).
#include <fl/i18n/charset_detection.hpp>
#include <fl/i18n/locale.hpp>

#include "charset_test_support.hpp"

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace {

using fl::i18n::detect_charset;
using qx_charset_test::icu_match;
using qx_charset_test::icu_matches;

std::string system_charset() { return fl::i18n::QxLocale::system().getDefaultEncoding(); }

std::string detect(const std::string& bytes, std::ostream& diagnostics, const ustring& name = u"x")
{
    return detect_charset(bytes.data(), bytes.size(), diagnostics, name);
}

std::string detect(const std::string& bytes)
{
    std::ostringstream ignored;
    return detect(bytes, ignored);
}

// Empty when exactly the `wanted` variables are set (with that value; null: any value), else why not.
std::string mismatch(std::initializer_list<std::pair<const char*, const char*>> wanted = {})
{
    for (const char* variable : qx_charset_test::detection_variables) {
        const char* value = std::getenv(variable);
        const auto* want = std::find_if(wanted.begin(), wanted.end(),
                                        [&](const auto& w) { return std::string(w.first) == variable; });
        if (want == wanted.end() ? value != nullptr
                                 : value == nullptr || (want->second && std::string(value) != want->second))
            return std::string("run by CTest: ") + variable + " is not as this suite needs";
    }
    return "";
}

#define REQUIRE_ENVIRONMENT(...)                                       \
    if (const std::string why = mismatch({__VA_ARGS__}); !why.empty()) \
    GTEST_SKIP() << why

const std::string utf8_text = "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82", ascii_text = "plain text";

// What raw ICU says of a text: its top confidence and lead over the runner-up lie in these
// ranges, and UTF-8 is neither match. Texts are picked by profile, so that the thresholds can be
// watched at work without pinning ICU's scores.
struct profile {
    const char* what;
    int low, high, least_lead, most_lead;
};
const profile certain{"certain top match", 100, 100, 0, 100};
const profile clear{"top match 90..99 leading by 45 or more", 90, 99, 45, 100};
const profile close{"top match 90..99 leading by less than 45", 90, 99, 0, 44};
const profile weak{"top match under 80", 1, 79, 0, 100};

// The first text of the corpus and samples that fits `p`, with ICU's top match.
std::pair<std::string, std::string> text_of(const profile& p)
{
    std::vector<std::string> texts{qx_charset_test::read_data("samples/malformed.utf-8.txt")};
    for (const auto& file : qx_charset_test::corpus()) texts.push_back(file.bytes);
    for (const std::string& bytes : texts) {
        const std::vector<icu_match> m = icu_matches(bytes);
        const int lead = m.empty() ? 0 : m[0].confidence - (m.size() > 1 ? m[1].confidence : 0);
        if (!m.empty() && m[0].confidence >= p.low && m[0].confidence <= p.high && lead >= p.least_lead &&
            lead <= p.most_lead && m[0].name != "UTF-8" && (m.size() < 2 || m[1].name != "UTF-8"))
            return {bytes, m[0].name};
    }
    ADD_FAILURE() << "no text of the corpus has a " << p.what;
    return {};
}

// The top match for the profiles in `accepted`, the system's encoding for those `refused`.
void expect_threshold(std::initializer_list<const profile*> accepted, std::initializer_list<const profile*> refused)
{
    for (const profile* p : accepted) EXPECT_EQ(detect(text_of(*p).first), text_of(*p).second) << p->what;
    for (const profile* p : refused) EXPECT_EQ(detect(text_of(*p).first), system_charset()) << p->what;
}

TEST(CharsetNoDetection, GivesUtf8ForEverythingAndWritesNothing)
{
    REQUIRE_ENVIRONMENT({"QX_NO_CHARSET_DETECTION", nullptr}, {"QX_CHARSET_DETECT_DIAG", nullptr});
    std::ostringstream diagnostics;
    for (const std::string& bytes : {ascii_text, utf8_text, std::string("\xE9"), std::string("\0H\0i", 4)})
        EXPECT_EQ(detect(bytes, diagnostics), "UTF-8") << testing::PrintToString(bytes);
    EXPECT_EQ(detect_charset(nullptr, 3, diagnostics, u"x"), "UTF-8");
    EXPECT_EQ(diagnostics.str(), "");
}

// The system's encoding must differ from UTF-8 to tell them apart.
TEST(CharsetNoDetectionSystemAscii, GivesTheSystemEncodingForEverything)
{
    REQUIRE_ENVIRONMENT({"QX_NO_CHARSET_DETECTION", nullptr}, {"QX_USE_DEFAULT_CHARSET_FOR_ASCII", nullptr});
    ASSERT_NE(system_charset(), "UTF-8");
    for (const std::string& bytes : {ascii_text, utf8_text, std::string("\xE9")})
        EXPECT_EQ(detect(bytes), system_charset()) << testing::PrintToString(bytes);
}

TEST(CharsetSystemAscii, GivesTheSystemEncodingForAsciiOnly)
{
    REQUIRE_ENVIRONMENT({"QX_USE_DEFAULT_CHARSET_FOR_ASCII", nullptr});
    ASSERT_NE(system_charset(), "UTF-8");
    for (const std::string& bytes : {ascii_text, std::string(), std::string("abc\0", 4)})
        EXPECT_EQ(detect(bytes), system_charset()) << testing::PrintToString(bytes);
    std::ostringstream unused;
    EXPECT_EQ(detect_charset(nullptr, 0, unused, u""), system_charset());
    EXPECT_EQ(detect(utf8_text) + detect(std::string("ab\0c", 4)), "UTF-8UTF-8");
}

TEST(CharsetDiagnostics, WritesEachStepAndEveryMatch)
{
    REQUIRE_ENVIRONMENT({"QX_CHARSET_DETECT_DIAG", nullptr});
    std::ostringstream out;
    EXPECT_EQ(detect(ascii_text, out), "UTF-8");
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(detect(utf8_text, out), "UTF-8");
    EXPECT_EQ(out.str(), "Validated encoding: UTF-8\n");
    for (const std::string& bytes :
         {qx_charset_test::read_data("samples/japanese.shift_jis.txt"), std::string("\xE9"), std::string(2, '\0'),
          std::string("an ASCII prefix the detector never sees \x93\xFA\x96\x7B\x8C\xEA")}) {
        std::ostringstream lines, expected;
        const std::string result = detect(bytes, lines, u"donn\u00E9es.txt");
        expected << "Autodetecting encoding for donn\xC3\xA9" "es.txt\n";
        int i = 0;
        for (const icu_match& m : icu_matches(bytes))
            expected << "Match[" << i++ << "] (" << m.confidence << ") " << m.name << '\n';
        expected << "Detected encoding: " << result << '\n';
        EXPECT_EQ(lines.str(), expected.str());
    }
}

// Unset, out of range or unparsable: 90.
TEST(CharsetThresholdDefault, AcceptsAClearLeadAboveNinety)
{
    REQUIRE_ENVIRONMENT({"QX_CHARSET_DETECT_THRESHOLD", nullptr});
    expect_threshold({&certain, &clear}, {&close, &weak});
}

TEST(CharsetThresholdCertain, AcceptsOnlyCertainty)
{
    REQUIRE_ENVIRONMENT({"QX_CHARSET_DETECT_THRESHOLD", "100"});
    expect_threshold({&certain}, {&clear, &close, &weak});
}

TEST(CharsetThresholdOne, AcceptsAnyTopMatch)
{
    REQUIRE_ENVIRONMENT({"QX_CHARSET_DETECT_THRESHOLD", "1"});
    expect_threshold({&certain, &clear, &close, &weak}, {});
}

TEST(CharsetUtf8Threshold, RescuesUtf8OnlyFromItsOwnThreshold)
{
    REQUIRE_ENVIRONMENT({"QX_CHARSET_DETECT_UTF8_THRESHOLD", "81"});
    // A byte order mark and one bad byte: ICU's UTF-8 match, short of certainty.
    const std::string bytes = "\xEF\xBB\xBF" + qx_charset_test::read_data("samples/corpus/russian.txt") + "\xFF";
    const std::vector<icu_match> matches = icu_matches(bytes);
    // Rescued under the default of 80, not under the 81 of this process.
    ASSERT_TRUE(!matches.empty() && matches[0].name == "UTF-8" && matches[0].confidence == 80);
    EXPECT_EQ(detect(bytes), system_charset());
}

TEST(CharsetReadOnce, IgnoresLaterChangesOfTheEnvironment)
{
    REQUIRE_ENVIRONMENT();
    // A weak top match, and UTF-8 with one bad byte: ICU's UTF-8 match among the first two, but weak.
    const std::string weak_text = text_of(weak).first;
    const std::string weak_utf8 = qx_charset_test::read_data("samples/corpus/russian.txt") + "\xFF";
    const std::vector<icu_match> m = icu_matches(weak_utf8);
    ASSERT_TRUE(m.size() > 1 && m[0].confidence < 80 && (m[0].name == "UTF-8" || m[1].name == "UTF-8"));
    std::ostringstream out;
    const auto all = [&] {
        return detect(ascii_text, out) + detect(utf8_text, out) + detect(weak_text, out) + detect(weak_utf8, out);
    };
    // The first call reaches the thresholds, so every variable has been read.
    const std::string before = all();
    EXPECT_EQ(before, "UTF-8UTF-8" + system_charset() + system_charset());
    for (const char* variable : qx_charset_test::detection_variables) ::setenv(variable, "1", 1);
    EXPECT_EQ(all(), before);
    EXPECT_EQ(out.str(), "");
}

}  // namespace

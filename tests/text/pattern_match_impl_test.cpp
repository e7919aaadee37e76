// Tests of pattern_match_impl, the status-reporting matcher: every status of open and matches,
// single-shot opening, and agreement with pattern_match under every mode.
#include <fl/i18n/pattern_match.hpp>

#include "text/pattern_match_impl.hpp"

#include <gtest/gtest.h>

namespace {

using namespace fl::i18n;
using fl::i18n::detail::pattern_match_impl;

const ustring composed_e = u"\u00E9";
const ustring decomposed_e = u"e\u0301";

character_handling_mode_context mode(unsigned int mask) { return character_handling_mode_context(mask); }

TEST(PatternMatchImpl, OpenReportsEachOutcomeOnce)
{
    const struct {
        ustring pattern;
        unsigned int mask;
        regex_status expected;
    } cases[] = {
        {u"", 0, regex_invalid_argument},        {u"", 6, regex_invalid_argument},
        {u"(", 0, regex_failed_object_creation}, {u"(", 2, regex_failed_object_creation},
        {u"abc", 0, regex_success},              {u"^a(.|\r)*c$", 17, regex_success},
    };
    for (const auto& c : cases) {
        pattern_match_impl matcher;
        EXPECT_EQ(matcher.open(c.pattern, mode(c.mask)), c.expected) << "case " << &c - cases;
        // A second pattern, valid or not, changes nothing.
        EXPECT_EQ(matcher.open(u"xyz", mode(0)), c.expected);
        EXPECT_EQ(matcher.open(u"(", mode(0)), c.expected);
        EXPECT_EQ(matcher.status(), c.expected);
        EXPECT_EQ(matcher.valid(), c.expected == regex_success);
        regex_status status{};
        EXPECT_EQ(matcher.matches(u"abc", status), c.expected == regex_success);
        EXPECT_EQ(status, c.expected == regex_success ? regex_success : regex_invalid_object);
        EXPECT_FALSE(matcher.matches(u"xyz", status));
    }
    pattern_match_impl unopened;
    EXPECT_EQ(unopened.status(), regex_status{});
    EXPECT_FALSE(unopened.valid());
    regex_status status = regex_success;
    EXPECT_FALSE(unopened.matches(u"a", status));
    EXPECT_EQ(status, regex_invalid_object);
}

TEST(PatternMatchImpl, MatchesReportsEachOutcome)
{
    const ustring deep(1000000, u'a');
    const struct {
        ustring pattern;
        unsigned int mask;
        ustring text;
        bool expected;
        regex_status status;
    } cases[] = {
        {u"abc", 0, u"xabc", false, regex_success},
        {u".*", 0, u"", true, regex_success},
        // A normalising twin treats an empty name as a normalisation failure.
        {u".*", 2, u"", false, regex_failed_normalization},
        {u".*", 6, u"", false, regex_failed_normalization},
        // ICU's backtracking stack overflows.
        {u"(a|b)*", 0, deep, false, regex_failed_match_operation},
    };
    for (const auto& c : cases) {
        pattern_match_impl matcher;
        ASSERT_EQ(matcher.open(c.pattern, mode(c.mask)), regex_success);
        regex_status status{};
        EXPECT_EQ(matcher.matches(c.text, status), c.expected) << "case " << &c - cases;
        EXPECT_EQ(status, c.status) << "case " << &c - cases;
    }
}

TEST(PatternMatchImpl, FailedMatchLeavesTheObjectUsable)
{
    pattern_match_impl matcher;
    ASSERT_EQ(matcher.open(u"(a|b)*", mode(2)), regex_success);
    regex_status status{};
    EXPECT_FALSE(matcher.matches(ustring(1000000, u'a'), status));
    EXPECT_EQ(status, regex_failed_match_operation);
    EXPECT_FALSE(matcher.matches(u"", status));
    EXPECT_EQ(status, regex_failed_normalization);
    EXPECT_TRUE(matcher.matches(u"abba", status));
    EXPECT_EQ(status, regex_success);
    EXPECT_EQ(matcher.status(), regex_success);
}

TEST(PatternMatchImpl, AgreesWithPatternMatchUnderEveryMode)
{
    const ustring patterns[] = {composed_e, decomposed_e, u"e.", u"A(.|\r)*", u"[" + decomposed_e + u"]"};
    const ustring texts[] = {composed_e, decomposed_e, u"e", u"a\r\n" + composed_e, u"a\u0301"};
    for (unsigned int mask = 0; mask < 32; ++mask)
        for (const auto& pattern : patterns) {
            const pattern_match reference(pattern, mode(mask));
            pattern_match_impl twin;
            ASSERT_EQ(twin.open(pattern, mode(mask)), regex_success);
            for (const auto& text : texts) {
                regex_status status{};
                EXPECT_EQ(twin.matches(text, status), reference.match(text)) << "mode " << mask;
                EXPECT_EQ(status, regex_success);
            }
        }
}

}  // namespace

// Tests of pattern_match: construction under every mode, normal forms of pattern and subject,
// whole and partial matches, moves, the exceptions and their transport, and raw ICU as reference.
#include <fl/i18n/pattern_match.hpp>

#include "pattern_match_test_support.hpp"

#include <boost/exception/exception.hpp>

#include <atomic>
#include <climits>
#include <functional>
#include <random>
#include <stdexcept>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

using namespace fl::i18n;
using qx_test::composed_e;
using qx_test::decomposed_e;

static_assert(!std::is_copy_constructible_v<pattern_match> && !std::is_copy_assignable_v<pattern_match>);
static_assert(std::is_nothrow_move_constructible_v<pattern_match> && std::is_nothrow_move_assignable_v<pattern_match>);

pattern_match make(const ustring& pattern, unsigned int mask)
{
    return pattern_match(pattern, character_handling_mode_context(mask));
}

// Raises E through `call` and checks it as clone_impl<E>, with its key and id, and as Boost's
// clone_base, which boost::current_exception needs to carry it across threads.
template <class E>
void expect_raised(const std::function<void()>& call, const char* key, regex_status id)
{
    try {
        call();
        ADD_FAILURE() << "nothing thrown";
    } catch (const boost::exception_detail::clone_impl<E>& e) {
        EXPECT_STREQ(e.what(), key);
        EXPECT_EQ(e.get_id(), id);
    } catch (...) {
        ADD_FAILURE() << "not thrown as clone_impl<E>";
    }
    EXPECT_THROW(call(), boost::exception_detail::clone_base);
}

TEST(PatternMatch, EmptyPatternIsRefusedUnderEveryMode)
{
    for (unsigned int mask = 0; mask < 32; ++mask)
        EXPECT_THROW(make(u"", mask), RegexInvalidArgument) << "mode " << mask;
}

TEST(PatternMatch, FailuresRaiseWrappedExceptions)
{
    expect_raised<RegexInvalidArgument>([] { make(u"", 0); }, "fl:i18n:RegexInvalidArgument",
                                        regex_invalid_argument);
    expect_raised<RegexFailedObjectCreation>([] { make(u"(", 0); }, "fl:i18n:RegexFailedObjectCreation",
                                             regex_failed_object_creation);
    // ICU's backtracking stack overflows long before the text ends.
    const ustring deep(1000000, u'a');
    expect_raised<RegexFailedMatchOperation>([&] { make(u"(a|b)*", 0).match(deep); },
                                             "fl:i18n:RegexFailedMatchOperation", regex_failed_match_operation);
    expect_raised<RegexFailedMatchOperation>([&] { make(u"(a|b)*c", 0).partialMatch(deep, 0); },
                                             "fl:i18n:RegexFailedMatchOperation", regex_failed_match_operation);
    // Within the caller's six units, but beyond the three of the composed text ICU searches.
    expect_raised<RegexFailedMatchOperation>(
        [] { make(u"x", 2).partialMatch(decomposed_e + decomposed_e + decomposed_e, 5); },
        "fl:i18n:RegexFailedMatchOperation", regex_failed_match_operation);
}

TEST(PatternMatch, MatchesTheWholeSubject)
{
    const struct {
        ustring pattern;
        unsigned int mask;
        ustring subject;
        bool expected;
    } cases[] = {
        {u"a.c", 0, u"a\nc", true},
        // Under UREGEX_DOTALL ICU takes CR LF as one character.
        {u"a.c", 0, u"a\r\nc", true},
        {u"a..c", 0, u"a\r\nc", false},
        {u"abc", 0, u"abc", true},
        {u"abc", 0, u"xabc", false},
        {u"abc", 0, u"ABC", false},
        {u"abc", 1, u"ABC", true},
        {u"abc", 1, u"ABCD", false},
        {u"abc", 8, u"ABC", false},
        {u".*", 0, u"", true},
        {u".*", 2, u"", true},
        {u".+", 6, u"", false},
        // The pattern's own syntax is normalised: the class becomes the one composed letter.
        {u"[" + decomposed_e + u"]", 0, u"e", true},
        {u"[" + decomposed_e + u"]", 2, u"e", false},
        {u"[" + decomposed_e + u"]", 2, composed_e, true},
        {u"e.", 0, composed_e, false},
        {u"e.", 6, composed_e, true},
        {u"e.", 2, decomposed_e, false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(make(c.pattern, c.mask).match(c.subject), c.expected)
            << "mode " << c.mask << " subject of " << c.subject.size() << " units";
}

TEST(PatternMatch, ComposedAndDecomposedLetterMeetUnderNormalisingModes)
{
    const std::pair<unsigned int, bool> modes[] = {{0, false}, {1, false}, {2, true},   {3, true},
                                                   {4, false}, {6, true},  {7, true},   {8, false},
                                                   {16, true}, {18, true}, {20, true},  {22, true}};
    for (const auto& [mask, equal] : modes) {
        EXPECT_EQ(make(composed_e, mask).match(decomposed_e), equal) << "mode " << mask;
        EXPECT_EQ(make(decomposed_e, mask).match(composed_e), equal) << "mode " << mask;
        EXPECT_TRUE(make(composed_e, mask).match(composed_e)) << "mode " << mask;
    }
}

TEST(PatternMatch, PrepareForMatchingGivesTheModesNormalForm)
{
    const struct {
        unsigned int mask;
        ustring text;
        ustring expected;
    } cases[] = {
        {0, decomposed_e, decomposed_e}, {0, composed_e, composed_e},    {1, decomposed_e, decomposed_e},
        {2, decomposed_e, composed_e},   {6, composed_e, decomposed_e},  {16, decomposed_e, composed_e},
        {22, decomposed_e, composed_e},  {4, decomposed_e, decomposed_e}, {2, u"", u""},
        {0, u"", u""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(make(u"x", c.mask).prepareForMatching(c.text), c.expected) << "mode " << c.mask;
}

TEST(PatternMatch, SubjectsAroundTheStackBufferAgreeWithIcu)
{
    // 512 composed letters decompose to exactly 1024 units; one more needs the exact second pass.
    for (const std::size_t letters : {1u, 511u, 512u, 513u, 3000u}) {
        ustring text;
        for (std::size_t i = 0; i < letters; ++i) text += composed_e;
        const pattern_match nfd = make(u"(e\u0301)+", 6);
        EXPECT_EQ(nfd.prepareForMatching(text), qx_test::icu_normalize(text, qx_test::form::nfd)) << letters;
        EXPECT_TRUE(nfd.match(text)) << letters;
        EXPECT_TRUE(make(text, 6).match(qx_test::icu_normalize(text, qx_test::form::nfd))) << letters;
    }
}

TEST(PatternMatch, PartialMatchFindsTheFirstMatchFromStart)
{
    const struct {
        ustring pattern;
        unsigned int mask;
        ustring text;
        int start;
        std::optional<std::pair<int, int>> expected;
    } cases[] = {
        {u"abc", 0, u"xxabc", 0, std::pair(2, 5)},
        {u"q", 0, u"xxabc", 0, std::nullopt},
        {u"abc", 0, u"xxabc", 3, std::nullopt},
        {u"abc", 0, u"abcabc", 1, std::pair(3, 6)},
        {u"abc", 0, u"abc", 2, std::nullopt},
        {u"B", 1, u"abc", 0, std::pair(1, 2)},
        {u"^b", 0, u"ab", 1, std::nullopt},
        // Indices count units of the composed text, not of the caller's.
        {u"b", 2, decomposed_e + u"b", 0, std::pair(1, 2)},
        {u"b", 0, decomposed_e + u"b", 0, std::pair(2, 3)},
        {u"b", 2, decomposed_e + u"b", 2, std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_EQ(make(c.pattern, c.mask).partialMatch(c.text, c.start), c.expected)
            << "start " << c.start << " mode " << c.mask;
}

TEST(PatternMatch, PartialMatchRefusesStartsOutsideTheCallersText)
{
    const pattern_match abc = make(u"abc", 0);
    const struct {
        ustring text;
        int start;
        const char* message;
    } cases[] = {
        {u"xxabc", 5, "Index 5 is out of bounds for xxabc"},
        {u"xxabc", -1, "Index -1 is out of bounds for xxabc"},
        {u"xxabc", INT_MIN, "Index -2147483648 is out of bounds for xxabc"},
        {u"", 0, "Index 0 is out of bounds for "},
        {u"\u00E9", 1, "Index 1 is out of bounds for \xC3\xA9"},
    };
    for (const auto& c : cases) {
        try {
            abc.partialMatch(c.text, c.start);
            ADD_FAILURE() << "nothing thrown for " << c.message;
        } catch (const boost::exception_detail::clone_impl<std::out_of_range>& e) {
            EXPECT_STREQ(e.what(), c.message);
        }
    }
}

TEST(PatternMatch, MovesTransferTheExpressionAndItsNormalForm)
{
    pattern_match a = make(composed_e, 2);
    pattern_match b = std::move(a);
    EXPECT_TRUE(b.match(decomposed_e));
    a = make(u"x", 0);
    EXPECT_TRUE(a.match(u"x"));
    // Assigning over a live expression closes it; the sanitizer build reports a leak otherwise.
    b = std::move(a);
    EXPECT_TRUE(b.match(u"x"));
    EXPECT_FALSE(b.match(composed_e));
    pattern_match& alias = b;
    b = std::move(alias);
    EXPECT_TRUE(b.match(u"x"));
    pattern_match c(std::move(b));
    EXPECT_EQ(c.partialMatch(u"ax", 0), std::pair(1, 2));
}

// match and partialMatch against raw uregex with the same flags, on the normal form ICU is given.
TEST(PatternMatch, AgreesWithRawIcu)
{
    const ustring patterns[] = {u"a.b",       u"(a|b)*", u"[ab]+", u"A",   u"^a", u"b$",        u"\\w+",
                                composed_e,   u"e.",     u".",     u"x*",  u"a\nb", u"[^a]+b", u"(?i)e"};
    const std::pair<unsigned int, qx_test::form> modes[] = {
        {0, qx_test::form::none}, {1, qx_test::form::none}, {2, qx_test::form::nfc},
        {7, qx_test::form::nfd},  {16, qx_test::form::nfc}, {17, qx_test::form::nfc}};
    const ustring alphabet[] = {u"a", u"b", u"A", u"B", u"\n", u"e", u"\u0301", composed_e, u"x"};
    const std::uint32_t seed = 20240611;
    std::mt19937 random(seed);
    std::uniform_int_distribution<std::size_t> pick(0, std::size(alphabet) - 1), length(0, 6);
    std::vector<ustring> subjects(300);
    for (auto& subject : subjects)
        for (std::size_t n = length(random); n > 0; --n) subject += alphabet[pick(random)];
    for (const auto& [mask, form] : modes)
        for (const auto& pattern : patterns) {
            const pattern_match matcher = make(pattern, mask);
            const auto flags = static_cast<std::uint32_t>((mask & 1) ? UREGEX_DOTALL | UREGEX_CASE_INSENSITIVE
                                                                     : UREGEX_DOTALL);
            qx_test::raw_regex raw(qx_test::icu_normalize(pattern, form), flags);
            for (std::size_t i = 0; i < subjects.size(); ++i) {
                SCOPED_TRACE(testing::Message() << "seed " << seed << " subject " << i << " mode " << mask);
                const ustring prepared = qx_test::icu_normalize(subjects[i], form);
                EXPECT_EQ(matcher.match(subjects[i]), raw.matches(prepared));
                if (!subjects[i].empty()) {
                    EXPECT_EQ(matcher.partialMatch(subjects[i], 0), raw.find(prepared, 0));
                }
            }
        }
}

TEST(PatternMatch, SeparateObjectsWorkInParallel)
{
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (unsigned int t = 0; t < 8; ++t)
        threads.emplace_back([t, &wrong] {
            // Each thread has its own mode, so a subject or normal form leaking between objects shows.
            const unsigned int mask = (t % 2 == 0) ? 2u : 0u;
            const pattern_match matcher = make(composed_e + u"(a|b)+", mask | (t & 1u));
            const ustring hit = decomposed_e + u"abab", miss = decomposed_e + u"abc";
            for (int i = 0; i < 2000; ++i) {
                if (matcher.match(hit) != (mask != 0) || matcher.match(miss))
                    ++wrong;
                if (mask != 0 && matcher.partialMatch(u"xx" + hit, 0) != std::pair(2, 7))
                    ++wrong;
            }
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(wrong.load(), 0);
}

}  // namespace

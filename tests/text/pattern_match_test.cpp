// Tests of pattern_match: construction under every mode, normal forms of pattern and subject,
// whole and partial matches, moves, the exceptions and their transport, and raw ICU as reference.
#include <fl/i18n/pattern_match.hpp>

#include "text_reference.hpp"

#include <boost/exception/exception.hpp>
#include <gtest/gtest.h>
#include <unicode/uregex.h>

#include <atomic>
#include <climits>
#include <functional>
#include <memory>
#include <random>
#include <stdexcept>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

using namespace fl::i18n;
using text_test::icu_normalizer;
using text_test::icu_result;

static_assert(!std::is_copy_constructible_v<pattern_match> && !std::is_copy_assignable_v<pattern_match>);
static_assert(std::is_nothrow_move_constructible_v<pattern_match> && std::is_nothrow_move_assignable_v<pattern_match>);

const ustring composed_e = u"\u00E9";
const ustring decomposed_e = u"e\u0301";

pattern_match make(const ustring& pattern, unsigned int mask)
{
    return pattern_match(pattern, character_handling_mode_context(mask));
}

// Raw uregex with the flags of `mask`, on text already in the mode's normal form: whether the
// whole subject matches, and the first match.
std::pair<bool, std::optional<std::pair<int, int>>> raw_icu(const ustring& pattern, unsigned int mask,
                                                            const ustring& subject)
{
    struct closer {
        void operator()(URegularExpression* e) const noexcept { uregex_close(e); }
    };
    const auto flags = static_cast<std::uint32_t>(UREGEX_DOTALL | ((mask & 1) ? UREGEX_CASE_INSENSITIVE : 0));
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<URegularExpression, closer> e(
        uregex_open(pattern.data(), static_cast<int32_t>(pattern.size()), flags, nullptr, &status));
    uregex_setText(e.get(), subject.data(), static_cast<int32_t>(subject.size()), &status);
    const bool whole = uregex_matches(e.get(), -1, &status);
    std::optional<std::pair<int, int>> first;
    if (uregex_find(e.get(), 0, &status))
        first = std::pair(uregex_start(e.get(), 0, &status), uregex_end(e.get(), 0, &status));
    EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
    return {whole, first};
}

// Raises E through `call` and checks it as clone_impl<E>, which boost::current_exception needs to
// carry it across threads, with its key and id.
template <class E>
void expect_raised(const std::function<void()>& call, const char* key, regex_status id)
{
    try {
        call();
        ADD_FAILURE() << "nothing thrown";
    } catch (const boost::exception_detail::clone_impl<E>& e) {
        EXPECT_STREQ(e.what(), key);
        EXPECT_EQ(e.get_id(), id);
    }
}

TEST(PatternMatch, FailuresRaiseWrappedExceptions)
{
    for (unsigned int mask = 0; mask < 32; ++mask)
        EXPECT_THROW(make(u"", mask), RegexInvalidArgument) << "mode " << mask;
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

TEST(PatternMatch, MatchesTheWholeSubjectInTheModesNormalForm)
{
    const struct {
        ustring pattern;
        unsigned int mask;
        ustring subject;
        bool expected;
    } cases[] = {
        {u"a.c", 0, u"a\nc", true},       {u"abc", 1, u"ABC", true},         {u"abc", 8, u"ABC", false},
        {u".*", 2, u"", true},            {u".+", 6, u"", false},            {u"e.", 6, composed_e, true},
        {u"e.", 2, decomposed_e, false},
        // The pattern's own syntax is normalised: the class becomes the one composed letter.
        {u"[" + decomposed_e + u"]", 0, u"e", true}, {u"[" + decomposed_e + u"]", 2, u"e", false},
        {u"[" + decomposed_e + u"]", 2, composed_e, true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(make(c.pattern, c.mask).match(c.subject), c.expected) << "case " << &c - cases;
    const std::pair<unsigned int, bool> modes[] = {{0, false}, {1, false}, {2, true},  {3, true},
                                                   {4, false}, {6, true},  {7, true},  {8, false},
                                                   {16, true}, {18, true}, {20, true}, {22, true}};
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
        {0, decomposed_e, decomposed_e}, {1, decomposed_e, decomposed_e}, {4, decomposed_e, decomposed_e},
        {2, decomposed_e, composed_e},   {6, composed_e, decomposed_e},   {22, decomposed_e, composed_e},
        {2, u"", u""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(make(u"x", c.mask).prepareForMatching(c.text), c.expected) << "mode " << c.mask;
    // 512 composed letters decompose to exactly 1024 units; one more needs the exact second pass.
    for (const std::size_t letters : {1u, 511u, 512u, 513u, 3000u}) {
        ustring text;
        for (std::size_t i = 0; i < letters; ++i)
            text += composed_e;
        const pattern_match nfd = make(u"(e\u0301)+", 6);
        EXPECT_EQ(nfd.prepareForMatching(text), icu_result(icu_normalizer(unorm2_getNFDInstance), text)) << letters;
        EXPECT_TRUE(nfd.match(text)) << letters;
        EXPECT_TRUE(make(text, 6).match(icu_result(icu_normalizer(unorm2_getNFDInstance), text))) << letters;
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
        {u"abc", 0, u"xxabc", 3, std::nullopt}, {u"abc", 0, u"abcabc", 1, std::pair(3, 6)},
        {u"abc", 0, u"abc", 2, std::nullopt},   {u"^b", 0, u"ab", 1, std::nullopt},
        // Indices count units of the composed text, not of the caller's.
        {u"b", 2, decomposed_e + u"b", 0, std::pair(1, 2)}, {u"b", 0, decomposed_e + u"b", 0, std::pair(2, 3)},
        {u"b", 2, decomposed_e + u"b", 2, std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_EQ(make(c.pattern, c.mask).partialMatch(c.text, c.start), c.expected) << "case " << &c - cases;
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
    // Assigning over a live expression closes it; the sanitizer build reports a leak otherwise.
    b = std::move(a);
    EXPECT_TRUE(b.match(u"x"));
    EXPECT_FALSE(b.match(composed_e));
    pattern_match& alias = b;
    b = std::move(alias);
    pattern_match c(std::move(b));
    EXPECT_EQ(c.partialMatch(u"ax", 0), std::pair(1, 2));
}

// match and partialMatch against raw uregex with the same flags, on the normal form ICU is given.
TEST(PatternMatch, AgreesWithRawIcu)
{
    const ustring patterns[] = {u"a.b", u"(a|b)*", u"[ab]+", u"A",     u"^a",     u"b$",    u"\\w+",
                                composed_e, u"e.",   u".",     u"x*", u"a\nb", u"[^a]+b", u"(?i)e"};
    const std::pair<unsigned int, decltype(&unorm2_getNFCInstance)> modes[] = {
        {0, nullptr}, {1, nullptr}, {2, unorm2_getNFCInstance}, {7, unorm2_getNFDInstance},
        {16, unorm2_getNFCInstance}, {17, unorm2_getNFCInstance}};
    const ustring alphabet[] = {u"a", u"b", u"A", u"B", u"\n", u"e", u"\u0301", composed_e, u"x"};
    std::mt19937 random(text_test::random_text_seed);
    std::uniform_int_distribution<std::size_t> pick(0, std::size(alphabet) - 1), length(0, 6);
    std::vector<ustring> subjects(300);
    for (auto& subject : subjects)
        for (std::size_t n = length(random); n > 0; --n)
            subject += alphabet[pick(random)];
    for (const auto& [mask, form] : modes)
        for (const auto& pattern : patterns) {
            const pattern_match matcher = make(pattern, mask);
            const auto normal = [f = form](const ustring& text) {
                return f ? icu_result(icu_normalizer(f), text) : text;
            };
            for (std::size_t i = 0; i < subjects.size(); ++i) {
                SCOPED_TRACE(testing::Message() << "seed " << text_test::random_text_seed << " subject " << i
                                                << " mode " << mask);
                const auto [whole, first] = raw_icu(normal(pattern), mask, normal(subjects[i]));
                EXPECT_EQ(matcher.match(subjects[i]), whole);
                if (!subjects[i].empty()) {
                    EXPECT_EQ(matcher.partialMatch(subjects[i], 0), first);
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
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(wrong.load(), 0);
}

}  // namespace

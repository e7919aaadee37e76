// Tests of patterns and subjects at ICU's 31-bit length limit. The text is 4 GiB, so this
// executable carries the CTest label "large".
#include <fl/i18n/pattern_match.hpp>

#include "text/pattern_match_impl.hpp"

#include <boost/exception/exception.hpp>
#include <boost/numeric/conversion/converter_policies.hpp>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using namespace fl::i18n;
using overflow = boost::exception_detail::clone_impl<boost::numeric::positive_overflow>;

bool has_physical_memory(unsigned long long bytes)
{
    const long pages = sysconf(_SC_PHYS_PAGES), page_size = sysconf(_SC_PAGE_SIZE);
    return pages > 0 && page_size > 0 && static_cast<unsigned long long>(pages) * page_size >= bytes;
}

character_handling_mode_context mode(unsigned int mask) { return character_handling_mode_context(mask); }

// One test, so that the text is built once: every entry rejects 0x80000000 units and accepts one
// less. None of them copies or normalises an over-long text before refusing it.
TEST(PatternMatchLarge, TextsAboveThirtyOneBitsOverflow)
{
    if (!has_physical_memory(8ull << 30)) GTEST_SKIP() << "needs 8 GiB of RAM for a 4 GiB text";
    ustring text(0x80000000ul, u'a');
    const pattern_match plain(u"a", mode(0));
    const pattern_match composing(u"a", mode(2));
    detail::pattern_match_impl twin;
    ASSERT_EQ(twin.open(u"a", mode(0)), regex_success);
    regex_status status{};

    EXPECT_THROW((void)pattern_match(text, mode(0)), overflow);
    EXPECT_THROW((void)pattern_match(text, mode(2)), overflow);
    EXPECT_THROW(plain.match(text), overflow);
    EXPECT_THROW(plain.partialMatch(text, 0), overflow);
    EXPECT_THROW(composing.match(text), overflow);
    EXPECT_THROW(composing.prepareForMatching(text), overflow);
    EXPECT_THROW(detail::pattern_match_impl().open(text, mode(0)), overflow);
    EXPECT_THROW(twin.matches(text, status), overflow);

    text.pop_back();
    EXPECT_FALSE(plain.match(text));
    EXPECT_EQ(plain.partialMatch(text, 0x7FFFFFFE), std::pair(0x7FFFFFFE, 0x7FFFFFFF));
    EXPECT_FALSE(twin.matches(text, status));
    EXPECT_EQ(status, regex_success);
}

}  // namespace

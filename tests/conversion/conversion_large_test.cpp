// Tests of texts beyond ICU's 31-bit lengths. The input is read from zero pages, so only results
// cost memory; registered under the CTest label "large".
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>

#include "conversion_test_support.hpp"

#include <unistd.h>

namespace {

using namespace fl::i18n;

bool has_8_gib_of_ram()
{
    const long pages = sysconf(_SC_PHYS_PAGES), page = sysconf(_SC_PAGE_SIZE);
    return pages > 0 && page > 0 && static_cast<unsigned long>(pages) * static_cast<unsigned long>(page) >= (8ul << 30);
}

template <class Char>
bool all_zero(const std::basic_string<Char>& s)
{
    return std::all_of(s.begin(), s.end(), [](Char c) { return c == Char(); });
}

// Two bytes per unit towards UTF-16LE: the total passes 2^31 although every ICU call stays below it.
TEST(codecvt_string_to_ustring, DestinationSizesBeyond31Bits)
{
    constexpr unsigned long bytes = 0x80000010ul, units = 0x40000000ul;
    const qx_test::zero_region zeros(bytes);
    if (!zeros) GTEST_SKIP() << "cannot map 2 GiB of zero pages";
    EXPECT_EQ(codecvt_string_to_ustring("UTF-8", false).get_destination_size(zeros.as<char>(), bytes), bytes);
    EXPECT_EQ(codecvt_ustring_to_string("UTF-16LE", false).get_destination_size(zeros.as<char16_t>(), units),
              2 * units);
    EXPECT_EQ(codecvt_ustring_to_string("UTF-8", false).get_destination_size(zeros.as<char16_t>(), units), units);
}

TEST(utf8_to_ustring, BeyondTheDirectLimitConvertsInChunks)
{
    constexpr unsigned long bytes = 0x80000010ul;
    const qx_test::zero_region zeros(bytes);
    if (!has_8_gib_of_ram() || !zeros) GTEST_SKIP() << "needs 8 GiB of RAM and 2 GiB of zero pages";
    const ustring result = utf8_to_ustring(zeros.as<char>(), bytes);
    EXPECT_EQ(result.size(), bytes);
    EXPECT_TRUE(all_zero(result));
}

TEST(ustring_to_utf8, AtTheChunkThresholdConvertsInChunks)
{
    constexpr unsigned long units = 0x40000000ul;
    const qx_test::zero_region zeros(units * sizeof(char16_t));
    if (!has_8_gib_of_ram() || !zeros) GTEST_SKIP() << "needs 8 GiB of RAM and 2 GiB of zero pages";
    const std::string result = ustring_to_utf8(zeros.as<char16_t>(), units);
    EXPECT_EQ(result.size(), units);
    EXPECT_TRUE(all_zero(result));
}

}  // namespace

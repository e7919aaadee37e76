// to_ustring and to_string in the default encoding, which is the classic locale's UTF-8 until
// start-up: empty and null input, embedded zeros, the two-buffer boundaries and raw ICU as reference.
#include <fl/i18n/conversion.hpp>

#include "conversion_test_support.hpp"

#include <thread>

namespace {

using namespace fl::i18n;
using namespace qx_test;

TEST(default_encoding, EmptyNullAndEmbeddedZeros)
{
    EXPECT_EQ(to_ustring(std::string()), ustring());
    EXPECT_EQ(to_ustring(""), ustring());
    EXPECT_EQ(to_ustring(static_cast<const char*>(nullptr)), ustring());
    EXPECT_EQ(to_string(ustring()), std::string());
    // The string forms take every unit; the pointer form stops at the first zero.
    EXPECT_EQ(to_ustring(std::string("a\0b", 3)), ustring(u"a\0b", 3));
    EXPECT_EQ(to_ustring("a\0b"), u"a");
    EXPECT_EQ(to_string(ustring(u"a\0\u00E9", 3)), std::string("a\0\xC3\xA9", 4));
}

// No exception for a character: malformed bytes and lone surrogates are substituted as ICU's
// default call-backs do.
TEST(default_encoding, SubstitutesLikeIcuAndNeverThrowsForACharacter)
{
    for (const std::string bytes : {"\xC0\x80", "caf\xE9", "\xED\xA0\x80", "ends inside \xE2\x82", "\xF4\x90\x80\x80"}) {
        EXPECT_TRUE(same_text(to_ustring(bytes), icu_to_uchars("UTF-8", bytes)));
        EXPECT_TRUE(same_text(to_ustring(bytes.c_str()), icu_to_uchars("UTF-8", bytes)));
    }
    for (const ustring& units : {ustring{0xD800}, ustring{u'a', 0xDC00, u'b'}, ustring{0xD83D}}) {
        EXPECT_TRUE(same_text(to_string(units), icu_from_uchars("UTF-8", units)));
        EXPECT_EQ(to_string(units).find("\xEF\xBF\xBD"), units[0] == u'a' ? 1U : 0U);
    }
}

TEST(default_encoding, MatchesIcuOnRandomInput)
{
    for (std::uint32_t seed : test_seeds(40)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 rng(seed);
        const ustring units = random_utf16(rng, random_size(rng, 3000));
        const std::string bytes = random_utf8_soup(rng, random_size(rng, 3000));
        EXPECT_TRUE(same_text(to_string(units), icu_from_uchars("UTF-8", units)));
        EXPECT_TRUE(same_text(to_ustring(bytes), icu_to_uchars("UTF-8", bytes)));
        EXPECT_TRUE(same_text(to_ustring(bytes.c_str()), icu_to_uchars("UTF-8", bytes.c_str())));
    }
}

// The stack buffer holds 1024 units: output that outgrows it takes the exact second pass, and
// input above it a heap buffer.
TEST(default_encoding, TwoBufferBoundaries)
{
    const ustring a = u"a", e_acute = u"\u00E9", euro = u"\u20AC", pair = u"\U0001F600";
    const std::pair<const char*, ustring> texts[] = {
        {"1024 ascii", rep(a, 1024)},           {"1025 ascii", rep(a, 1025)},
        {"1024 e-acute: 2048 bytes", rep(e_acute, 1024)}, {"1025 e-acute: 2050 bytes", rep(e_acute, 1025)},
        {"512 e-acute: 1024 bytes", rep(e_acute, 512)},   {"512 e-acute + a: 1025 bytes", rep(e_acute, 512) + a},
        {"341 euro + a: 1024 bytes", rep(euro, 341) + a}, {"512 pairs", rep(pair, 512)},
        {"33000 euro", rep(euro, 33000)},
    };
    for (const auto& [name, text] : texts) {
        SCOPED_TRACE(name);
        const std::string bytes = icu_from_uchars("UTF-8", text);
        EXPECT_TRUE(same_text(to_string(text), bytes));
        EXPECT_TRUE(same_text(to_ustring(bytes), text));
        EXPECT_TRUE(same_text(to_ustring(bytes.c_str()), text));
    }
}

// Each call has its own converter, so threads need no lock and cannot disturb each other.
TEST(default_encoding, ConcurrentCallsGiveEachTheirOwnResult)
{
    std::vector<std::thread> threads;
    std::vector<int> failures(4, 0);
    for (std::size_t t = 0; t < failures.size(); ++t) {
        threads.emplace_back([t, &failures] {
            std::mt19937 rng(static_cast<std::uint32_t>(t + 1));
            for (int i = 0; i < 200; ++i) {
                const ustring units = random_utf16(rng, random_size(rng, 300), false);
                const std::string bytes = to_string(units);
                failures[t] += to_ustring(bytes) == units ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(failures, std::vector<int>(4, 0));
}

}  // namespace

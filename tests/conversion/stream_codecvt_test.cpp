// Tests of the streaming converters: every cut of a text against one-shot ICU, tiny and empty
// destinations, partial characters, failures and reuse, call-back modes, sizes and the pivot.
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion_error.hpp>
#include <fl/i18n/stream_codecvt.hpp>

#include "conversion_test_support.hpp"

namespace {

using namespace fl::i18n;
using namespace qx_test;

// Feeds `input` in pieces ending at `cuts` (the last piece, up to the end, flushes if `ends`).
// Each piece is converted into a destination of `capacity` units until the converter is done.
template <class To, class From>
std::basic_string<To> feed(const stream_converter<To, From>& cvt, const std::basic_string<From>& input,
                           const std::vector<std::size_t>& cuts, std::size_t capacity, bool ends = true)
{
    std::basic_string<To> out;
    std::vector<To> buffer(capacity);
    const From* next = input.data();
    for (std::size_t i = 0; i <= cuts.size(); ++i) {
        const From* const limit = input.data() + (i < cuts.size() ? cuts[i] : input.size());
        for (bool more = true; more;) {
            To* target = buffer.data();
            more = cvt.convert(&target, buffer.data() + capacity, &next, limit, ends && i == cuts.size());
            out.append(buffer.data(), target);
            if (more && target == buffer.data()) {
                ADD_FAILURE() << "true without output at capacity " << capacity;
                return out;
            }
        }
        EXPECT_EQ(next, limit) << "input left over after false";
    }
    return out;
}

// No cut, one cut at every position, then pieces of one unit, each at a tight and a roomy capacity.
template <class To, class From>
void expect_every_cut(const stream_converter<To, From>& cvt, const std::basic_string<From>& input,
                      const std::basic_string<To>& expected)
{
    std::vector<std::vector<std::size_t>> cut_sets{{}, {}};
    for (std::size_t i = 0; i <= input.size(); ++i) {
        cut_sets.push_back({i});
        if (i > 0 && i < input.size()) cut_sets[1].push_back(i);
    }
    for (const std::size_t capacity : {1, 2, 64})
        for (const auto& cuts : cut_sets)
            ASSERT_TRUE(same_text(feed(cvt, input, cuts, capacity), expected))
                << "capacity " << capacity << ", " << cuts.size() << " cuts, first at " << (cuts.empty() ? 0 : cuts[0]);
}

// The four converters for one encoding.
struct all_four {
    stream_codecvt_string_to_ustring in;
    stream_codecvt_ustring_to_string out;
    stream_codecvt_string_to_utf8string to_utf8;
    stream_codecvt_utf8string_to_string from_utf8;

    all_four(const std::string& encoding, bool substitute)
        : in(encoding, substitute), out(encoding, substitute), to_utf8(encoding, substitute),
          from_utf8(encoding, substitute) {}
};

// Strict conversion of valid text, lenient reading of malformed bytes, and random text in random
// pieces and destinations.
TEST(StreamConverters, EveryCutAndRandomPiecesMatchOneShotIcu)
{
    const std::pair<const char*, ustring> texts[] = {
        {"UTF-8", u"a\u00E9\u20AC\U0001F600\u4E2D!"},        {"Shift_JIS", u"\u65E5\u672C\u8A9Ea\uFF76\u3042"},
        {"GB18030", u"\u4E2D\u6587\u00E9\U0001F600\u0080z"}, {"UTF-16LE", u"a\U0001F600\u00E9\u4E2D"},
        {"ISO-2022-JP", u"ab\u3042\u65E5c\u30AB\u30CA"},     {"ISO-8859-1", u"caf\u00E9 \u00FF"},
    };
    for (const auto& [encoding, text] : texts) {
        SCOPED_TRACE(encoding);
        const all_four cvt(encoding, false);
        const std::string bytes = icu_from_uchars(encoding, text), utf8 = icu_utf16_to_utf8(text);
        ASSERT_EQ(icu_to_uchars(encoding, bytes), text);
        expect_every_cut(cvt.in, bytes, text);
        expect_every_cut(cvt.out, text, bytes);
        expect_every_cut(cvt.to_utf8, bytes, utf8);
        expect_every_cut(cvt.from_utf8, utf8, bytes);
    }
    using malformed = std::pair<const char*, std::string>;
    for (const auto& [encoding, bytes] : {malformed{"UTF-8", "a\xE2\x82" "b\xFF\xF0\x9F\x98\xC3"},
                                          malformed{"Shift_JIS", "\x82\xA0\x82z\xFF\x81"},
                                          malformed{"GB18030", "\x81\x30\x81z\x81"}})
        expect_every_cut(stream_codecvt_string_to_ustring(encoding, true), bytes, icu_to_uchars(encoding, bytes));
    for (const std::uint32_t seed : test_seeds(4)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 rng(seed);
        const ustring text = random_utf16(rng, 3000, false);
        const std::string bytes = icu_from_uchars("GB18030", text), utf8 = icu_utf16_to_utf8(text);
        auto cuts = [&rng](std::size_t size) {
            std::vector<std::size_t> at{random_size(rng, 50)};
            while (at.back() < size) at.push_back(at.back() + 1 + random_size(rng, 700));
            at.pop_back();
            return at;
        };
        const std::size_t capacity = 1 + random_size(rng, 300);
        const all_four cvt("GB18030", false);
        EXPECT_TRUE(same_text(feed(cvt.in, bytes, cuts(bytes.size()), capacity), text));
        EXPECT_TRUE(same_text(feed(cvt.out, text, cuts(text.size()), capacity), bytes));
        EXPECT_TRUE(same_text(feed(cvt.to_utf8, bytes, cuts(bytes.size()), capacity), utf8));
        EXPECT_TRUE(same_text(feed(cvt.from_utf8, utf8, cuts(utf8.size()), capacity), bytes));
    }
}

// A destination without room and input waiting gives true and moves nothing; empty or null
// input gives false and leaves null pointers null, also when flushing.
template <class To, class From>
void expect_empty_ranges(const stream_converter<To, From>& cvt, const std::basic_string<From>& input)
{
    To slot[1] = {};
    for (To* const destination : {slot, static_cast<To*>(nullptr)}) {
        To* target = destination;
        const From* next = input.data();
        EXPECT_TRUE(cvt.convert(&target, destination, &next, input.data() + input.size(), false));
        EXPECT_EQ(target, destination);
        cvt.reset_state();
        for (const bool flush : {false, true}) {
            const From* none = nullptr;
            EXPECT_FALSE(cvt.convert(&target, destination, &none, none, flush));
            EXPECT_TRUE(none == nullptr && target == destination);
        }
    }
}

TEST(StreamConverters, EmptyDestinationAndEmptyInput)
{
    const all_four cvt("UTF-8", false);
    expect_empty_ranges(cvt.in, std::string("a"));
    expect_empty_ranges(cvt.out, ustring(u"a"));
    expect_empty_ranges(cvt.to_utf8, std::string("a"));
    expect_empty_ranges(cvt.from_utf8, std::string("a"));
}

// A character split between two calls comes out after the second; a reset in between drops it,
// so the rest of it reads as a stray byte.
TEST(StreamCodecvtStringToUstring, PartialCharacterWaitsAndResetDropsIt)
{
    const char* const reset = nullptr;
    // lenient, pieces (null: reset_state), output so far after each piece, failure
    const std::tuple<bool, std::vector<const char*>, std::vector<ustring>, std::optional<codecvt_excp_id>> cases[] = {
        {false, {"a\xE2\x82", "\xAC" "b"}, {u"a", u"a\u20ACb"}, {}},
        {false, {"\xF0", "\x9F", "\x98", "\x80"}, {u"", u"", u"", u"\U0001F600"}, {}},
        {true, {"a\xE2\x82", reset, "\xAC" "b"}, {u"a", u"a", u"a\uFFFDb"}, {}},
        {false, {"a\xE2\x82", reset, "\xAC" "b"}, {u"a", u"a"}, cvt_invalid_character},
    };
    for (const auto& c : cases) {
        const stream_codecvt_string_to_ustring cvt("UTF-8", std::get<0>(c));
        ustring out;
        std::optional<codecvt_excp_id> thrown;
        for (std::size_t i = 0; i < std::get<1>(c).size() && !thrown; ++i) {
            const char* piece = std::get<1>(c)[i];
            if (piece == nullptr) cvt.reset_state();
            thrown = thrown_id([&] { out += feed(cvt, std::string(piece ? piece : ""), {}, 8, false); });
            EXPECT_TRUE(thrown || out == std::get<2>(c)[i]) << "after piece " << i;
        }
        EXPECT_EQ(thrown, std::get<3>(c));
    }
}

// A failure throws and resets the object: a new stream converts as if it were fresh.
TEST(StreamConverters, FailureResetsForANewStream)
{
    const std::tuple<const char*, std::string, ustring, codecvt_excp_id> cases[] = {
        {"UTF-8", "ok\xE2\x82", u"ok\xD83D", cvt_conversion_failure},  // truncated at the flush
        {"UTF-8", "ok\xFF", u"ok\xDE00x", cvt_invalid_character},
        {"Shift_JIS", "ok\x82", u"ok\xD83D", cvt_conversion_failure},
    };
    for (const auto& c : cases) {
        const all_four cvt(std::get<0>(c), false);
        const auto expect_reset = [&c](const auto& converter, const auto& input) {
            for (const std::size_t cut : {std::size_t{0}, input.size() - 1}) {
                EXPECT_EQ(thrown_id([&] { feed(converter, input, {cut}, 16); }), std::get<3>(c)) << std::get<0>(c);
                const auto again = feed(converter, input.substr(0, 2), {1}, 1);
                EXPECT_EQ(std::string(again.begin(), again.end()), "ok") << std::get<0>(c);
            }
        };
        expect_reset(cvt.in, std::get<1>(c));
        expect_reset(cvt.out, std::get<2>(c));
        expect_reset(cvt.to_utf8, std::get<1>(c));
        // The UTF-8 reader's source is UTF-8, not the bytes of another encoding.
        if (std::get<0>(c) == std::string("UTF-8")) expect_reset(cvt.from_utf8, std::get<1>(c));
    }
}

// The multi-streaming converter into a narrow encoding escapes what it lacks as "&#xHHHH;";
// stream_codecvt_ustring_to_string writes the substitution byte, or what its mode asks for, as
// the whole-text converter with the same mode does.
TEST(StreamConverters, UnmappableCharacters)
{
    const std::string euro = "a\xE2\x82\xAC\xF0\x9F\x98\x80";
    const ustring euro16 = u"a\u20AC\U0001F600";
    EXPECT_EQ(feed(stream_codecvt_utf8string_to_string("ISO-8859-1", true), euro, {2}, 3), "a&#x20AC;&#x1F600;");
    EXPECT_EQ(feed(stream_codecvt_ustring_to_string("ISO-8859-1", true), euro16, {2}, 3), "a\x1A\x1A");
    EXPECT_EQ(thrown_id([&] { feed(stream_codecvt_utf8string_to_string("ISO-8859-1", false), euro, {}, 8); }),
              cvt_invalid_character);
    EXPECT_EQ(thrown_id([&] { feed(stream_codecvt_ustring_to_string("ISO-8859-1", false), euro16, {}, 8); }),
              cvt_invalid_character);
    // UTF-8 output has no unmappable character: what the lenient reader substitutes passes unescaped.
    EXPECT_EQ(feed(stream_codecvt_string_to_utf8string("Shift_JIS", true), std::string("a\x82"), {}, 8),
              icu_utf16_to_utf8(icu_to_uchars("Shift_JIS", "a\x82")));

    const ustring text = u"x\u00E9\U0001F600\u200By";
    for (const std::uint32_t mode : {0x0u, 0x10u, 0x100u, 0x200u, 0x400u, 0x800u, 0x1000u, 0x2000u, 0x4000u}) {
        const auto m = static_cast<codecvt_call_back_mode>(mode);
        const std::string whole = codecvt_ustring_to_string(m, "US-ASCII", "?").convert(text.data(), text.size());
        expect_every_cut(stream_codecvt_ustring_to_string(m, "US-ASCII", "?"), text, whole);
    }
    EXPECT_THROW(stream_codecvt_ustring_to_string(cvt_call_back_not_implemented, "US-ASCII", "?"), CvtNonSupportedMode);
    EXPECT_THROW(stream_codecvt_ustring_to_string(cvt_call_back_substitute, "US-ASCII", ""), CvtInvalidArgument);
}

// An empty name is the global locale's encoding: UTF-8 here.
TEST(StreamConverters, MaxCharSize)
{
    for (const auto& [encoding, size] : {std::pair<const char*, int>{"UTF-8", 4}, {"ISO-8859-1", 1}, {"Shift_JIS", 2},
                                         {"EUC-JP", 3}, {"GB18030", 4}, {"UTF-16LE", 2}, {"", 4}}) {
        const all_four cvt(encoding, true);
        EXPECT_EQ(cvt.in.max_char_size(), 2) << encoding;
        EXPECT_EQ(cvt.out.max_char_size(), size) << encoding;
        EXPECT_EQ(cvt.to_utf8.max_char_size(), size) << encoding;
        EXPECT_EQ(cvt.from_utf8.max_char_size(), size) << encoding;
    }
    const auto unknown = static_cast<detail::MultiStreamConvType>(7);
    EXPECT_EQ(detail::stream_codecvt_multi_streaming_converter("ISO-8859-1", unknown, true).max_char_size(), 0);
}

// UTF-16LE has no direct path from UTF-8, so ICU fills the pivot: with a one-byte destination
// the first call takes far more input than it writes, and later calls without new input write
// the rest from the pivot, unless a reset empties it.
TEST(StreamCodecvtMulti, PivotCarriesCharactersAcrossCalls)
{
    const ustring text = rep(u"\u0416\u00E9z", 500);
    const std::string utf8 = icu_utf16_to_utf8(text), expected = icu_from_uchars("UTF-16LE", text);
    for (const bool reset : {false, true}) {
        const stream_codecvt_utf8string_to_string cvt("UTF-16LE", false);
        char byte = 0;
        char* target = &byte;
        const char* next = utf8.data();
        EXPECT_TRUE(cvt.convert(&target, &byte + 1, &next, utf8.data() + utf8.size(), false));
        EXPECT_GT(next - utf8.data(), 1000);
        if (reset) cvt.reset_state();
        const std::string rest = feed(cvt, std::string(), {}, 1);
        EXPECT_TRUE(same_text(std::string(1, byte) + rest, reset ? std::string(1, byte) : expected));
    }
}

}  // namespace

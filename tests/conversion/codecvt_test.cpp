// Tests of the ICU-backed converters: reference checks against a fresh ICU converter, buffer
// boundaries, error mapping and reuse after a failure, moves, and per-thread use.
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>
#include <fl/i18n/conversion_error.hpp>

#include "conversion_test_support.hpp"

#include <functional>
#include <optional>
#include <thread>

namespace {

using namespace fl::i18n;
using qx_test::same_text;

const char* const reference_encodings[] = {
    "windows-1252", "Shift_JIS", "EUC-JP", "GB18030", "KOI8-R", "UTF-16LE", "ISO-2022-JP", "UTF-8",
};

template <class Char>
std::basic_string<Char> rep(const std::basic_string<Char>& piece, std::size_t times)
{
    std::basic_string<Char> out;
    for (std::size_t i = 0; i < times; ++i) out += piece;
    return out;
}

TEST(codecvt_string_to_ustring, MatchesIcuOnRandomInput)
{
    for (const char* encoding : reference_encodings) {
        const codecvt_string_to_ustring cvt(encoding, true);
        for (std::uint32_t seed : qx_test::test_seeds(12)) {
            SCOPED_TRACE(std::string(encoding) + ", seed " + std::to_string(seed));
            std::mt19937 rng(seed);
            const std::string input =
                qx_test::random_encoded(rng, encoding, std::uniform_int_distribution<std::size_t>(0, 2500)(rng));
            const ustring expected = qx_test::icu_to_uchars(encoding, input);
            EXPECT_TRUE(same_text(cvt.convert(input.data(), input.size()), expected));
            EXPECT_EQ(cvt.get_destination_size(input.data(), input.size()), expected.size());
            EXPECT_TRUE(same_text(to_ustring(input, cvt), expected));
        }
    }
}

TEST(codecvt_ustring_to_string, MatchesIcuOnRandomInput)
{
    for (const char* encoding : reference_encodings) {
        const codecvt_ustring_to_string cvt(encoding, true);
        for (std::uint32_t seed : qx_test::test_seeds(12)) {
            SCOPED_TRACE(std::string(encoding) + ", seed " + std::to_string(seed));
            std::mt19937 rng(seed);
            const ustring input = qx_test::random_utf16(rng, std::uniform_int_distribution<std::size_t>(0, 2500)(rng));
            const std::string expected = qx_test::icu_from_uchars(encoding, input);
            EXPECT_TRUE(same_text(cvt.convert(input.data(), input.size()), expected));
            EXPECT_EQ(cvt.get_destination_size(input.data(), input.size()), expected.size());
            EXPECT_TRUE(same_text(to_string(input, cvt), expected));
        }
    }
}

TEST(codecvt_string_to_ustring, EmptyInputAndEmptyEncodingName)
{
    const codecvt_string_to_ustring in("", false);
    const codecvt_ustring_to_string out("", false);
    EXPECT_EQ(in.get_destination_size("", 0), 0u);
    EXPECT_TRUE(in.convert("", 0).empty());
    EXPECT_EQ(out.get_destination_size(u"", 0), 0u);
    EXPECT_TRUE(out.convert(u"", 0).empty());
    // Without a locale an empty name is UTF-8, in both directions and strict as asked.
    EXPECT_EQ(in.convert("\xE4\xB8\xAD", 3), u"\u4E2D");
    EXPECT_EQ(out.convert(u"\u4E2D", 1), "\xE4\xB8\xAD");
    EXPECT_THROW(in.convert("\xFF", 1), CvtInvalidCharacter);
    const char16_t lone[] = {0xD800, u'x'};
    EXPECT_THROW(out.convert(lone, 2), CvtInvalidCharacter);
}

TEST(codecvt_string_to_ustring, UnknownEncodingThrowsWithTheName)
{
    const std::function<void()> constructors[] = {
        [] { codecvt_string_to_ustring("no-such-encoding", true); },
        [] { codecvt_string_to_ustring(cvt_call_back_stop, "no-such-encoding"); },
        [] { codecvt_ustring_to_string("no-such-encoding", false); },
        [] { codecvt_ustring_to_string(cvt_call_back_escape_c, "no-such-encoding", ""); },
    };
    for (const auto& construct : constructors) {
        try {
            construct();
            ADD_FAILURE() << "no exception";
        } catch (const CvtInvalidEncodingName& e) {
            EXPECT_EQ(e.get_encoding_name(), "no-such-encoding");
            EXPECT_EQ(e.get_id(), cvt_invalid_encoding_name);
        }
    }
}

// Sizes around the two-buffer rule and around the loop's own spans (0x10000 units towards
// UTF-16, 0x20000 bytes from UTF-16 to UTF-8, 32768 x max char size otherwise).
TEST(codecvt_ustring_to_string, BufferBoundariesMatchIcu)
{
    const ustring a = u"a", cjk = u"\u4E2D", mixed = u"a\u00E9\u4E2D\U0001F600";
    const std::pair<const char*, ustring> texts[] = {
        {"1 ascii", a},          {"1023 ascii", rep(a, 1023)},   {"1024 ascii", rep(a, 1024)},
        {"1025 ascii", rep(a, 1025)}, {"32767 ascii", rep(a, 32767)}, {"32768 ascii", rep(a, 32768)},
        {"32769 ascii", rep(a, 32769)}, {"1024 cjk", rep(cjk, 1024)}, {"32769 cjk", rep(cjk, 32769)},
        {"0x10000 cjk", rep(cjk, 0x10000)}, {"mixed x 7000", rep(mixed, 7000)},
    };
    for (const char* encoding : {"UTF-8", "Shift_JIS", "UTF-16LE", "GB18030"}) {
        const codecvt_ustring_to_string out(encoding, true);
        const codecvt_string_to_ustring in(encoding, true);
        for (const auto& [name, text] : texts) {
            SCOPED_TRACE(std::string(encoding) + ", " + name);
            const std::string bytes = qx_test::icu_from_uchars(encoding, text);
            qx_test::expect_all_forms(out, text, bytes);
            qx_test::expect_all_forms(in, bytes, qx_test::icu_to_uchars(encoding, bytes));
        }
    }
}

TEST(codecvt_string_to_ustring, BufferBoundariesOfShrinkingUtf8)
{
    const codecvt_string_to_ustring in("UTF-8", true);
    for (std::size_t count : {341u, 342u, 1024u, 10923u, 0x10001u}) {
        SCOPED_TRACE("count " + std::to_string(count));
        const std::string bytes = rep(std::string("\xE4\xB8\xAD"), count);
        qx_test::expect_all_forms(in, bytes, ustring(count, u'\u4E2D'));
    }
}

// One row per failure: the encoding, the strictness, the input and the exception, and a valid
// text converted afterwards to prove the converter was reset.
struct failure_case {
    const char* encoding;
    std::string bytes;   // towards UTF-16 when not empty
    ustring units;       // from UTF-16 otherwise
    std::optional<codecvt_excp_id> strict;  // nullopt: converts
    const char* lenient_bytes;               // from UTF-16 with substitution, when fixed
    ustring lenient_units;                   // towards UTF-16 with substitution
};

template <class F>
std::optional<codecvt_excp_id> thrown_id(F&& f)
{
    try {
        f();
    } catch (const CvtExceptionBase& e) {
        return e.get_id();
    }
    return std::nullopt;
}

TEST(codecvt_string_to_ustring, ErrorMappingAndReuse)
{
    const failure_case cases[] = {
        {"UTF-8", "\xFF", {}, cvt_invalid_character, nullptr, {0xFFFD}},
        {"UTF-8", "a\xE3\x81", {}, cvt_conversion_failure, nullptr, {u'a', 0xFFFD}},
        {"UTF-8", "\xC0\x80", {}, cvt_invalid_character, nullptr, {0xFFFD, 0xFFFD}},
        {"UTF-8", "\xED\xA0\x80", {}, cvt_invalid_character, nullptr, {0xFFFD, 0xFFFD, 0xFFFD}},
        {"Shift_JIS", "a\x85\x40", {}, cvt_invalid_character, nullptr, qx_test::icu_to_uchars("Shift_JIS", "a\x85\x40")},
        {"Shift_JIS", "a\x81", {}, cvt_conversion_failure, nullptr, qx_test::icu_to_uchars("Shift_JIS", "a\x81")},
    };
    for (const failure_case& c : cases) {
        SCOPED_TRACE(std::string(c.encoding) + " " + ::testing::PrintToString(c.bytes));
        const codecvt_string_to_ustring strict(c.encoding, false);
        const codecvt_string_to_ustring lenient(c.encoding, true);
        const unsigned long n = c.bytes.size();
        char16_t buffer[64];
        EXPECT_EQ(thrown_id([&] { strict.convert(c.bytes.data(), n); }), c.strict);
        EXPECT_EQ(thrown_id([&] { strict.get_destination_size(c.bytes.data(), n); }), c.strict);
        EXPECT_EQ(thrown_id([&] { strict.convert(buffer, 64, c.bytes.data(), n); }), c.strict);
        EXPECT_EQ(strict.convert("ok", 2), u"ok");
        EXPECT_EQ(lenient.convert(c.bytes.data(), n), c.lenient_units);
        EXPECT_EQ(lenient.convert("ok", 2), u"ok");
    }
}

TEST(codecvt_ustring_to_string, ErrorMappingAndReuse)
{
    const failure_case cases[] = {
        {"ISO-8859-1", {}, u"\u20AC", cvt_invalid_character, "\x1A", {}},
        {"ISO-8859-1", {}, {u'a', 0xD800, u'x'}, cvt_invalid_character, "a\x1Ax", {}},
        {"ISO-8859-1", {}, {u'a', 0xD800}, cvt_conversion_failure, "a\x1A", {}},
        {"Shift_JIS", {}, u"\u00E9", cvt_invalid_character, nullptr, {}},
    };
    for (const failure_case& c : cases) {
        SCOPED_TRACE(std::string(c.encoding) + " " + ::testing::PrintToString(c.units));
        const codecvt_ustring_to_string strict(c.encoding, false);
        const codecvt_ustring_to_string lenient(c.encoding, true);
        const unsigned long n = c.units.size();
        char buffer[64];
        EXPECT_EQ(thrown_id([&] { strict.convert(c.units.data(), n); }), c.strict);
        EXPECT_EQ(thrown_id([&] { strict.get_destination_size(c.units.data(), n); }), c.strict);
        EXPECT_EQ(thrown_id([&] { strict.convert(buffer, 64, c.units.data(), n); }), c.strict);
        const ustring valid = std::string(c.encoding) == "Shift_JIS" ? u"ok\u3042" : u"ok\u00E9";
        EXPECT_EQ(strict.convert(valid.data(), 3), qx_test::icu_from_uchars(c.encoding, valid));
        EXPECT_EQ(lenient.convert(c.units.data(), n), qx_test::icu_from_uchars(c.encoding, c.units));
        if (c.lenient_bytes) {
            EXPECT_EQ(lenient.convert(c.units.data(), n), c.lenient_bytes);
        }
    }
}

TEST(codecvt_string_to_ustring, TruncatedSequenceIsNotPendingForTheNextCall)
{
    const codecvt_string_to_ustring lenient("UTF-8", true);
    EXPECT_EQ(lenient.convert("\xE3\x81", 2), ustring(1, 0xFFFD));
    EXPECT_EQ(lenient.convert("\x82", 1), ustring(1, 0xFFFD));
    EXPECT_EQ(lenient.get_destination_size("\xE3\x81", 2), 1u);
    EXPECT_EQ(lenient.get_destination_size("\x82", 1), 1u);

    const codecvt_string_to_ustring strict("UTF-8", false);
    EXPECT_THROW(strict.convert("\xE3\x81", 2), CvtConversionFailure);
    EXPECT_THROW(strict.convert("\x82", 1), CvtInvalidCharacter);
    EXPECT_EQ(strict.convert("\xE3\x81\x82", 3), u"\u3042");

    const codecvt_ustring_to_string out("UTF-8", true);
    const char16_t lead[] = {0xD83D};
    const char16_t trail[] = {0xDE00};
    EXPECT_EQ(out.convert(lead, 1), "\xEF\xBF\xBD");
    EXPECT_EQ(out.convert(trail, 1), "\xEF\xBF\xBD");
}

TEST(codecvt_string_to_ustring, MovedFromObjectHasNoState)
{
    codecvt_string_to_ustring source(cvt_call_back_stop, "UTF-8");
    codecvt_string_to_ustring target(std::move(source));
    EXPECT_EQ(target.get_call_back_mode(), cvt_call_back_stop);
    EXPECT_THROW(target.convert("\xFF", 1), CvtInvalidCharacter);

    char16_t buffer[8];
    EXPECT_THROW(source.convert("a", 1), CvtConversionFailure);
    EXPECT_THROW(source.get_destination_size("a", 1), CvtConversionFailure);
    EXPECT_THROW(source.convert(buffer, 8, "a", 1), CvtConversionFailure);
    EXPECT_THROW(to_ustring("a", source), CvtConversionFailure);
    EXPECT_NO_THROW(source.change_call_back(static_cast<codecvt_call_back_mode>(2)));
    EXPECT_NO_THROW(source.change_call_back(cvt_call_back_stop));
    EXPECT_NO_THROW(source.reset_call_back());
    EXPECT_EQ(source.get_call_back_mode(), cvt_call_back_default);

    codecvt_string_to_ustring assigned("ISO-8859-1", true);
    assigned = std::move(target);
    EXPECT_EQ(assigned.get_call_back_mode(), cvt_call_back_stop);
    EXPECT_EQ(assigned.convert("\xE4\xB8\xAD", 3), u"\u4E2D");
    EXPECT_THROW(assigned.convert("\xFF", 1), CvtInvalidCharacter);
    EXPECT_THROW(target.convert("a", 1), CvtConversionFailure);
    EXPECT_EQ(target.get_call_back_mode(), cvt_call_back_default);
}

TEST(codecvt_ustring_to_string, MovedFromObjectHasNoState)
{
    codecvt_ustring_to_string source(cvt_call_back_escape_xml_hex, "US-ASCII", "");
    codecvt_ustring_to_string target(std::move(source));
    EXPECT_EQ(target.get_call_back_mode(), cvt_call_back_escape_xml_hex);
    EXPECT_EQ(target.convert(u"\u00E9", 1), "&#xE9;");

    char buffer[8];
    EXPECT_THROW(source.convert(u"a", 1), CvtConversionFailure);
    EXPECT_THROW(source.get_destination_size(u"a", 1), CvtConversionFailure);
    EXPECT_THROW(source.convert(buffer, 8, u"a", 1), CvtConversionFailure);
    EXPECT_THROW(to_string(u"a", source), CvtConversionFailure);
    EXPECT_NO_THROW(source.change_call_back(cvt_call_back_substitute, ""));
    EXPECT_NO_THROW(source.change_call_back(cvt_call_back_not_implemented, ""));
    EXPECT_NO_THROW(source.reset_call_back());
    EXPECT_EQ(source.get_call_back_mode(), cvt_call_back_default);

    codecvt_ustring_to_string assigned("ISO-8859-1", false);
    assigned = std::move(target);
    EXPECT_EQ(assigned.get_call_back_mode(), cvt_call_back_escape_xml_hex);
    EXPECT_EQ(assigned.convert(u"\u20AC", 1), "&#x20AC;");
    EXPECT_THROW(target.convert(u"a", 1), CvtConversionFailure);
    EXPECT_EQ(target.get_call_back_mode(), cvt_call_back_default);
}

TEST(codecvt_string_to_ustring, PerThreadConvertersMatchSerialResults)
{
    constexpr int threads = 8;
    struct work {
        const char* encoding;
        std::vector<std::string> bytes;
        std::vector<ustring> units;
        std::vector<ustring> expect_units;
        std::vector<std::string> expect_bytes;
        bool ok = true;
    };
    std::vector<work> jobs;
    for (int t = 0; t < threads; ++t) {
        work job;
        job.encoding = reference_encodings[t % std::size(reference_encodings)];
        std::mt19937 rng(static_cast<std::uint32_t>(77 + t));
        for (int i = 0; i < 6; ++i) {
            job.units.push_back(qx_test::random_utf16(rng, 200 + 1500 * static_cast<std::size_t>(i)));
            job.bytes.push_back(qx_test::random_encoded(rng, job.encoding, 300 + 1000 * static_cast<std::size_t>(i)));
            job.expect_units.push_back(qx_test::icu_to_uchars(job.encoding, job.bytes.back()));
            job.expect_bytes.push_back(qx_test::icu_from_uchars(job.encoding, job.units.back()));
        }
        jobs.push_back(std::move(job));
    }
    std::vector<std::thread> pool;
    for (work& job : jobs) {
        pool.emplace_back([&job] {
            const codecvt_string_to_ustring in(job.encoding, true);
            const codecvt_ustring_to_string out(job.encoding, true);
            for (int round = 0; round < 20; ++round) {
                for (std::size_t i = 0; i < job.bytes.size(); ++i) {
                    job.ok = job.ok && in.convert(job.bytes[i].data(), job.bytes[i].size()) == job.expect_units[i] &&
                             to_string(job.units[i], out) == job.expect_bytes[i];
                }
            }
        });
    }
    for (std::thread& th : pool) th.join();
    for (const work& job : jobs) EXPECT_TRUE(job.ok) << job.encoding;
}

}  // namespace

// Tests of the ICU-backed converters: reference checks against a fresh ICU converter, buffer
// boundaries, error mapping and reuse after a failure, encoding names, moves, and per-thread use.
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>
#include <fl/i18n/conversion_error.hpp>
#include <fl/i18n/stream_codecvt.hpp>

#include "conversion_test_support.hpp"

#include <functional>

namespace {

using namespace fl::i18n;
using namespace qx_test;

// Without a locale an empty name is UTF-8, in both directions and strict as asked; an unknown
// name is refused with that name by every ICU-backed converter, whole-text or streaming.
TEST(codecvt_string_to_ustring, EmptyInputEmptyNameAndUnknownName)
{
    const codecvt_string_to_ustring in("", false);
    const codecvt_ustring_to_string out("", false);
    EXPECT_EQ(in.get_destination_size("", 0) + out.get_destination_size(u"", 0), 0u);
    EXPECT_TRUE(in.convert("", 0).empty() && out.convert(u"", 0).empty());
    EXPECT_EQ(in.convert("\xE4\xB8\xAD", 3), u"\u4E2D");
    EXPECT_EQ(out.convert(u"\u4E2D", 1), "\xE4\xB8\xAD");
    EXPECT_THROW(in.convert("\xFF", 1), CvtInvalidCharacter);
    EXPECT_THROW(out.convert(u"\xD800x", 2), CvtInvalidCharacter);
    const std::string bad = "no-such-encoding";
    const std::function<void()> constructors[] = {
        [&] { codecvt_string_to_ustring(bad, true); },
        [&] { codecvt_string_to_ustring(cvt_call_back_stop, bad); },
        [&] { codecvt_ustring_to_string(bad, false); },
        [&] { codecvt_ustring_to_string(cvt_call_back_escape_c, bad, ""); },
        [&] { stream_codecvt_string_to_ustring(bad, true); },
        [&] { stream_codecvt_ustring_to_string(cvt_call_back_escape_c, bad, ""); },
        [&] { stream_codecvt_utf8string_to_string(bad, true); },
        [&] { stream_codecvt_string_to_utf8string(bad, false); },
    };
    for (std::size_t i = 0; i < std::size(constructors); ++i) {
        try {
            constructors[i]();
            ADD_FAILURE() << "constructor " << i << " accepted the name";
        } catch (const CvtInvalidEncodingName& e) {
            EXPECT_EQ(e.get_encoding_name(), bad) << "constructor " << i;
        }
    }
}

// Sizes around the two-buffer rule and around the loop's own spans (0x10000 units towards
// UTF-16, 0x20000 bytes from UTF-16 to UTF-8, 32768 x max char size otherwise).
TEST(codecvt_ustring_to_string, BufferBoundariesMatchIcu)
{
    std::vector<ustring> texts = {u"a", rep(u"\u4E2D", 1024), rep(u"\u4E2D", 32769), rep(u"\u4E2D", 0x10000),
                                  rep(u"a\u00E9\u4E2D\U0001F600", 7000)};
    for (std::size_t n : {1024u, 1025u, 32768u, 32769u}) texts.push_back(rep(u"a", n));
    for (const char* encoding : {"UTF-8", "Shift_JIS", "UTF-16LE", "GB18030"}) {
        const codecvt_ustring_to_string out(encoding, true);
        const codecvt_string_to_ustring in(encoding, true);
        for (const ustring& text : texts) {
            SCOPED_TRACE(std::string(encoding) + ", " + std::to_string(text.size()) + " units");
            const std::string bytes = icu_from_uchars(encoding, text);
            expect_all_forms(out, text, bytes);
            expect_all_forms(in, bytes, icu_to_uchars(encoding, bytes));
        }
    }
    const codecvt_string_to_ustring in("UTF-8", true);
    for (std::size_t count : {341u, 342u, 10923u, 0x10001u}) {
        SCOPED_TRACE("shrinking UTF-8, count " + std::to_string(count));
        expect_all_forms(in, rep("\xE4\xB8\xAD", count), ustring(count, u'\u4E2D'));
    }
}

// One row per failure: every form of the strict converter throws the same id, the lenient one
// gives ICU's substitution, and neither leaves a partial character pending: `next` begins with
// what would complete it, and must convert as on a fresh converter; the rest of it is valid.
template <class Cvt, class Text, class Result>
void expect_failure(const char* encoding, const Text& text, codecvt_excp_id id, const Text& next,
                    const Result& substituted)
{
    SCOPED_TRACE(std::string(encoding) + " " + ::testing::PrintToString(text));
    const Cvt strict(encoding, false), lenient(encoding, true), fresh_strict(encoding, false);
    const auto attempt = [&](const Cvt& cvt) {
        Result result;
        const auto failure = thrown_id([&] { result = cvt.convert(next.data(), next.size()); });
        return std::make_pair(failure, result);
    };
    typename Result::value_type buffer[64];
    EXPECT_EQ(thrown_id([&] { strict.convert(text.data(), text.size()); }), id);
    EXPECT_EQ(thrown_id([&] { strict.get_destination_size(text.data(), text.size()); }), id);
    EXPECT_EQ(thrown_id([&] { strict.convert(buffer, 64, text.data(), text.size()); }), id);
    EXPECT_EQ(attempt(strict), attempt(fresh_strict));
    EXPECT_EQ(strict.convert(next.data() + 1, next.size() - 1), lenient.convert(next.data() + 1, next.size() - 1));
    EXPECT_EQ(lenient.convert(text.data(), text.size()), substituted);
    EXPECT_EQ(lenient.get_destination_size(text.data(), text.size()), substituted.size());
    EXPECT_EQ(attempt(lenient), attempt(Cvt(encoding, true)));
}

TEST(codecvt_string_to_ustring, ErrorMappingAndNothingPendingInBothDirections)
{
    const std::tuple<const char*, std::string, codecvt_excp_id> to_units[] = {
        {"UTF-8", "\xFF", cvt_invalid_character},           {"UTF-8", "a\xE3\x81", cvt_conversion_failure},
        {"UTF-8", "\xC0\x80", cvt_invalid_character},       {"UTF-8", "\xED\xA0\x80", cvt_invalid_character},
        {"Shift_JIS", "a\x85\x40", cvt_invalid_character},  {"Shift_JIS", "a\x81", cvt_conversion_failure},
    };
    for (const auto& [encoding, bytes, id] : to_units)
        expect_failure<codecvt_string_to_ustring>(encoding, bytes, id, std::string("\x82ok"),
                                                  icu_to_uchars(encoding, bytes));
    const std::tuple<const char*, ustring, codecvt_excp_id, std::string> from_units[] = {
        {"ISO-8859-1", u"\u20AC", cvt_invalid_character, "\x1A"},
        {"ISO-8859-1", u"a\xD800x", cvt_invalid_character, "a\x1Ax"},
        {"ISO-8859-1", u"a\xD800", cvt_conversion_failure, "a\x1A"},
        {"Shift_JIS", u"\u00E9", cvt_invalid_character, icu_from_uchars("Shift_JIS", u"\u00E9")},
    };
    for (const auto& [encoding, units, id, substituted] : from_units) {
        expect_failure<codecvt_ustring_to_string>(encoding, units, id, ustring(u"\xDE00ok"), substituted);
        EXPECT_EQ(substituted, icu_from_uchars(encoding, units));
    }
}

// A moved-from converter throws on every form and takes call-back changes; the target keeps the
// source's mode through construction and assignment.
TEST(codecvt_string_to_ustring, MovedFromObjectHasNoState)
{
    codecvt_string_to_ustring in(cvt_call_back_stop, "UTF-8"), in_target(std::move(in)),
        in_assigned("UTF-16LE", true);
    codecvt_ustring_to_string out(cvt_call_back_escape_xml_hex, "US-ASCII", ""), out_target(std::move(out)),
        out_assigned("ISO-8859-1", false);
    const auto check = [](const auto& in_to, const auto& out_to, auto& in_from, auto& out_from) {
        EXPECT_EQ(in_to.get_call_back_mode(), cvt_call_back_stop);
        EXPECT_EQ(thrown_id([&] { in_to.convert("\xFF", 1); }), cvt_invalid_character);
        EXPECT_EQ(out_to.get_call_back_mode(), cvt_call_back_escape_xml_hex);
        EXPECT_EQ(out_to.convert(u"\u20AC", 1), "&#x20AC;");
        char16_t units[8];
        char bytes[8];
        for (auto id : {thrown_id([&] { in_from.convert("a", 1); }), thrown_id([&] { out_from.convert(u"a", 1); }),
                        thrown_id([&] { in_from.get_destination_size("a", 1); }),
                        thrown_id([&] { out_from.get_destination_size(u"a", 1); }),
                        thrown_id([&] { in_from.convert(units, 8, "a", 1); }),
                        thrown_id([&] { out_from.convert(bytes, 8, u"a", 1); })})
            EXPECT_EQ(id, cvt_conversion_failure);
        EXPECT_NO_THROW(in_from.change_call_back(static_cast<codecvt_call_back_mode>(2)));
        EXPECT_NO_THROW(out_from.change_call_back(cvt_call_back_not_implemented, ""));
        EXPECT_NO_THROW(in_from.reset_call_back());
        EXPECT_NO_THROW(out_from.reset_call_back());
        EXPECT_EQ(in_from.get_call_back_mode(), cvt_call_back_default);
        EXPECT_EQ(out_from.get_call_back_mode(), cvt_call_back_default);
    };
    check(in_target, out_target, in, out);
    in_assigned = std::move(in_target);
    out_assigned = std::move(out_target);
    check(in_assigned, out_assigned, in_target, out_target);
}

// Random text in several encodings, some bytes overwritten, each encoding in a thread with its own
// converters (ICU converters are not thread-safe); every result matches ICU in the same thread.
TEST(codecvt_string_to_ustring, PerThreadConvertersMatchIcuOnRandomInput)
{
    static const char* const encodings[] = {"windows-1252", "Shift_JIS", "EUC-JP", "GB18030",
                                            "KOI8-R",       "UTF-16LE",  "ISO-2022-JP", "UTF-8"};
    expect_in_threads(std::size(encodings), [](std::size_t t) {
        const char* encoding = encodings[t];
        const codecvt_string_to_ustring in(encoding, true);
        const codecvt_ustring_to_string out(encoding, true);
        std::mt19937 rng(static_cast<std::uint32_t>(77 + t));
        std::string mismatches;
        for (int round = 0; round < 40; ++round) {
            const ustring units = random_utf16(rng, random_size(rng, round % 2 ? 8000 : 2500));
            std::string bytes = icu_from_uchars(encoding, random_utf16(rng, random_size(rng, 6000)));
            for (std::size_t i = 0; i < bytes.size() / 64; ++i)
                bytes[random_size(rng, bytes.size() - 1)] = static_cast<char>(random_size(rng, 255));
            const ustring expect_units = icu_to_uchars(encoding, bytes);
            const std::string expect_bytes = icu_from_uchars(encoding, units);
            const bool same = in.convert(bytes.data(), bytes.size()) == expect_units &&
                              in.get_destination_size(bytes.data(), bytes.size()) == expect_units.size() &&
                              to_ustring(bytes, in) == expect_units &&
                              out.convert(units.data(), units.size()) == expect_bytes &&
                              out.get_destination_size(units.data(), units.size()) == expect_bytes.size() &&
                              to_string(units, out) == expect_bytes;
            if (!same) mismatches += std::string(encoding) + " round " + std::to_string(round);
        }
        return mismatches;
    });
}

}  // namespace

// Tests of the call-back modes: which values each direction accepts, refuses or does not know,
// the exact escape forms, the caller's substitution bytes, and default-ignorable code points.
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion_error.hpp>

#include "conversion_test_support.hpp"

#include <tuple>
#include <utility>

namespace {

using namespace fl::i18n;
using qx_test::thrown_id;

codecvt_call_back_mode mode_of(std::uint32_t value) { return static_cast<codecvt_call_back_mode>(value); }

// What converting a text gives: the result, or "!" when the stop call-back throws.
template <class Cvt, class Text>
auto outcome(const Cvt& cvt, const Text& text)
{
    using result = decltype(cvt.convert(text.data(), text.size()));
    try {
        return cvt.convert(text.data(), text.size());
    } catch (const CvtInvalidCharacter&) {
        return result(1, '!');
    }
}

const std::string icu_e9 = "a%U00E9", icu_smiley = "%UD83D%UDE00";
const ustring e9 = u"a\u00E9";

struct mode_case {
    std::uint32_t mode;
    std::optional<codecvt_excp_id> refused_from, refused_to;  // from and towards UTF-16
    std::uint32_t stored;                                     // from UTF-16
    std::string e9, smiley;                                   // "a\u00E9" and U+1F600 in US-ASCII
};

// Other values with an escape bit are escapes in ICU's own form, stored as given; towards UTF-16
// only the default and stop are known.
const auto unsupported = cvt_non_supported_mode, invalid = cvt_invalid_argument;
const mode_case mode_cases[] = {
    {0x0, {}, {}, 0x0, "a\x1A", "\x1A"}, {0x1, {}, {}, 0x1, "!", "!"},
    {0x10, {}, unsupported, 0x0, "a?", "?"}, {0x20, unsupported, unsupported, 0, "", ""},
    {0x100, {}, unsupported, 0x100, icu_e9, icu_smiley}, {0x200, {}, unsupported, 0x200, "a\\u00E9", "\\uD83D\\uDE00"},
    {0x400, {}, unsupported, 0x400, "a\\u00E9", "\\U0001F600"}, {0x800, {}, unsupported, 0x800, "a&#233;", "&#128512;"},
    {0x1000, {}, unsupported, 0x1000, "a&#xE9;", "&#x1F600;"},
    {0x2000, {}, unsupported, 0x2000, "a{U+00E9}", "{U+1F600}"},
    {0x4000, {}, unsupported, 0x4000, "a\\E9 ", "\\1F600 "}, {0x300, {}, unsupported, 0x300, icu_e9, icu_smiley},
    {0x8100, {}, unsupported, 0x8100, icu_e9, icu_smiley}, {0x7F00, {}, unsupported, 0x7F00, icu_e9, icu_smiley},
    {0xFFFFFFFF, {}, unsupported, 0xFFFFFFFF, icu_e9, icu_smiley}, {0x2, invalid, invalid, 0, "", ""},
    {0x11, invalid, invalid, 0, "", ""}, {0x30, invalid, invalid, 0, "", ""},
    {0x80, invalid, invalid, 0, "", ""}, {0x8000, invalid, invalid, 0, "", ""},
};

// Starting from the stop call-back also shows that a refused mode has already reset it.
TEST(codecvt_ustring_to_string, CallBackModeTable)
{
    EXPECT_EQ(codecvt_ustring_to_string("US-ASCII", false).get_call_back_mode(), cvt_call_back_stop);
    EXPECT_EQ(codecvt_ustring_to_string("US-ASCII", true).get_call_back_mode(), cvt_call_back_default);
    for (const mode_case& c : mode_cases) {
        SCOPED_TRACE("mode " + std::to_string(c.mode));
        codecvt_ustring_to_string changed("US-ASCII", false);
        EXPECT_EQ(thrown_id([&] { changed.change_call_back(mode_of(c.mode), "?"); }), c.refused_from);
        EXPECT_EQ(thrown_id([&] { codecvt_ustring_to_string(mode_of(c.mode), "US-ASCII", "?"); }), c.refused_from);
        if (!c.refused_from) {
            const codecvt_ustring_to_string constructed(mode_of(c.mode), "US-ASCII", "?");
            for (const codecvt_ustring_to_string* cvt : {&std::as_const(changed), &constructed}) {
                EXPECT_EQ(cvt->get_call_back_mode(), c.stored);
                EXPECT_EQ(outcome(*cvt, e9), c.e9);
                EXPECT_EQ(outcome(*cvt, ustring(u"\U0001F600")), c.smiley);
            }
            changed.reset_call_back();
        }
        EXPECT_EQ(changed.get_call_back_mode(), cvt_call_back_default);
        EXPECT_EQ(outcome(changed, e9), c.mode == 0x10 ? "a?" : "a\x1A");
    }
}

TEST(codecvt_string_to_ustring, CallBackModeTable)
{
    const std::string bad = "a\xFF";
    EXPECT_EQ(codecvt_string_to_ustring("UTF-8", false).get_call_back_mode(), cvt_call_back_stop);
    EXPECT_EQ(codecvt_string_to_ustring("UTF-8", true).get_call_back_mode(), cvt_call_back_default);
    for (const mode_case& c : mode_cases) {
        if (c.mode == 0x7F00 || c.mode == 0xFFFFFFFF) continue;
        SCOPED_TRACE("mode " + std::to_string(c.mode));
        codecvt_string_to_ustring changed("UTF-8", false);
        EXPECT_EQ(thrown_id([&] { changed.change_call_back(mode_of(c.mode)); }), c.refused_to);
        EXPECT_EQ(thrown_id([&] { codecvt_string_to_ustring(mode_of(c.mode), "UTF-8"); }), c.refused_to);
        if (!c.refused_to && c.mode != 0) {
            const codecvt_string_to_ustring constructed(mode_of(c.mode), "UTF-8");
            for (const codecvt_string_to_ustring* cvt : {&std::as_const(changed), &constructed}) {
                EXPECT_EQ(cvt->get_call_back_mode(), cvt_call_back_stop);
                EXPECT_EQ(outcome(*cvt, bad), u"!");
            }
            changed.reset_call_back();
        }
        EXPECT_EQ(changed.get_call_back_mode(), cvt_call_back_default);
        EXPECT_EQ(outcome(changed, bad), (ustring{u'a', 0xFFFD}));
    }
}

// Installing a mode over another saves ICU's default, not the mode replaced: a reset after two
// changes gives the default back.
TEST(codecvt_ustring_to_string, EveryChangePassesThroughTheDefault)
{
    const std::tuple<codecvt_call_back_mode, codecvt_call_back_mode, const char*> changes[] = {
        {cvt_call_back_stop, cvt_call_back_stop, "!"},
        {cvt_call_back_escape_icu, cvt_call_back_escape_java, "a\\u00E9"},
        {cvt_call_back_escape_c, cvt_call_back_default, "a\x1A"},
    };
    codecvt_ustring_to_string cvt("US-ASCII", true);
    for (const auto& [first, second, expected] : changes) {
        cvt.change_call_back(first, "");
        cvt.change_call_back(second, "");
        EXPECT_EQ(cvt.get_call_back_mode(), second);
        EXPECT_EQ(outcome(cvt, e9), expected);
        cvt.reset_call_back();
        EXPECT_EQ(outcome(cvt, e9), "a\x1A");
    }
    codecvt_string_to_ustring in("UTF-8", true);
    in.change_call_back(cvt_call_back_stop);
    in.change_call_back(cvt_call_back_stop);
    in.reset_call_back();
    EXPECT_EQ(outcome(in, std::string("\xFF")), ustring(1, 0xFFFD));
}

TEST(codecvt_ustring_to_string, SubstitutionBytesStayOutsideTheModeMachine)
{
    codecvt_ustring_to_string cvt("US-ASCII", false);
    cvt.change_call_back(cvt_call_back_substitute, "?");  // resets the stop call-back first
    EXPECT_EQ(cvt.get_call_back_mode(), cvt_call_back_default);
    const std::pair<codecvt_call_back_mode, const char*> then[] = {
        {cvt_call_back_default, "a?"}, {cvt_call_back_escape_xml_dec, "a&#233;"}, {cvt_call_back_stop, "!"},
        {cvt_call_back_default, "a?"},
    };
    for (const auto& [mode, expected] : then) {
        cvt.change_call_back(mode, "");
        EXPECT_EQ(outcome(cvt, e9), expected) << "mode " << mode;
    }
    cvt.reset_call_back();
    EXPECT_EQ(outcome(cvt, e9), "a?");

    // Refused substitutions leave both the mode and the bytes already set; US-ASCII takes one
    // byte per character.
    const std::pair<std::string, codecvt_excp_id> refused[] = {
        {"", cvt_invalid_argument},
        {std::string(128, '?'), cvt_size_too_large},
        {std::string(300, '?'), cvt_size_too_large},
        {"ab", cvt_call_back_setting_failure},
        {std::string(127, '?'), cvt_call_back_setting_failure},
    };
    for (const auto& [bytes, id] : refused) {
        SCOPED_TRACE("substitution of " + std::to_string(bytes.size()) + " bytes");
        EXPECT_EQ(thrown_id([&] { cvt.change_call_back(cvt_call_back_substitute, bytes); }), id);
        EXPECT_EQ(cvt.get_call_back_mode(), cvt_call_back_default);
        EXPECT_EQ(outcome(cvt, e9), "a?");
    }
    EXPECT_EQ(thrown_id([] { codecvt_ustring_to_string(cvt_call_back_substitute, "US-ASCII", ""); }), cvt_invalid_argument);
    codecvt_ustring_to_string sjis("Shift_JIS", true);
    sjis.change_call_back(cvt_call_back_substitute, "\x81\x48");
    EXPECT_EQ(outcome(sjis, ustring(u"a\u0E01")), "a\x81\x48");
}

// ICU's stock stop and escape call-backs drop an unassigned default-ignorable code point; the
// library's must report or escape it like any other unmappable character.
TEST(codecvt_ustring_to_string, DefaultIgnorableCodePointsAreNotDropped)
{
    for (char16_t cp : {u'\u200B', u'\uFEFF', u'\u2060'}) {
        SCOPED_TRACE("code point " + std::to_string(cp));
        const ustring text = {u'a', cp, u'b'};
        const codecvt_ustring_to_string strict("ISO-8859-1", false);
        EXPECT_THROW(strict.convert(text.data(), 3), CvtInvalidCharacter);
        EXPECT_THROW(strict.get_destination_size(text.data(), 3), CvtInvalidCharacter);
        EXPECT_EQ(codecvt_ustring_to_string("ISO-8859-1", true).convert(text.data(), 3),
                  qx_test::icu_from_uchars("ISO-8859-1", text));
    }
    const std::pair<std::uint32_t, const char*> escapes[] = {
        {0x100, "a%U200Bb"},     {0x200, "a\\u200Bb"},   {0x400, "a\\u200Bb"}, {0x800, "a&#8203;b"},
        {0x1000, "a&#x200B;b"}, {0x2000, "a{U+200B}b"}, {0x4000, "a\\200B b"}, {0x300, "a%U200Bb"},
    };
    for (const auto& [mode, expected] : escapes) {
        const codecvt_ustring_to_string cvt(mode_of(mode), "ISO-8859-1", "");
        EXPECT_EQ(cvt.convert(u"a\u200Bb", 3), expected) << "mode " << mode;
        EXPECT_EQ(cvt.get_destination_size(u"a\u200Bb", 3), std::string(expected).size()) << "mode " << mode;
    }
    EXPECT_EQ(codecvt_ustring_to_string(cvt_call_back_escape_icu, "ISO-8859-1", "").convert(u"\uFEFF", 1), "%UFEFF");
}

}  // namespace

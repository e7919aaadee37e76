// Tests of the call-back modes: which values each direction accepts, refuses or does not know,
// the exact escape forms, the caller's substitution bytes, and default-ignorable code points.
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion_error.hpp>

#include "conversion_test_support.hpp"

#include <optional>
#include <utility>

namespace {

using namespace fl::i18n;

codecvt_call_back_mode mode_of(std::uint32_t value)
{
    return static_cast<codecvt_call_back_mode>(value);
}

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

// What converting a text gives: the bytes, or "!" when the stop call-back throws.
std::string outcome(const codecvt_ustring_to_string& cvt, const ustring& text)
{
    try {
        return cvt.convert(text.data(), text.size());
    } catch (const CvtInvalidCharacter&) {
        return "!";
    }
}

ustring outcome(const codecvt_string_to_ustring& cvt, const std::string& bytes)
{
    try {
        return cvt.convert(bytes.data(), bytes.size());
    } catch (const CvtInvalidCharacter&) {
        return u"!";
    }
}

struct from_mode_case {
    std::uint32_t mode;
    std::optional<codecvt_excp_id> refused;
    std::uint32_t stored;
    std::string e9;       // "a\u00E9" in US-ASCII
    std::string smiley;   // U+1F600 in US-ASCII
    std::string after_reset;
};

TEST(codecvt_ustring_to_string, CallBackModeTable)
{
    const std::string icu_e9 = "a%U00E9", icu_smiley = "%UD83D%UDE00";
    const from_mode_case cases[] = {
        {0x0, {}, 0x0, "a\x1A", "\x1A", "a\x1A"},
        {0x1, {}, 0x1, "!", "!", "a\x1A"},
        {0x10, {}, 0x0, "a?", "?", "a?"},
        {0x20, cvt_non_supported_mode, 0, "", "", ""},
        {0x100, {}, 0x100, icu_e9, icu_smiley, "a\x1A"},
        {0x200, {}, 0x200, "a\\u00E9", "\\uD83D\\uDE00", "a\x1A"},
        {0x400, {}, 0x400, "a\\u00E9", "\\U0001F600", "a\x1A"},
        {0x800, {}, 0x800, "a&#233;", "&#128512;", "a\x1A"},
        {0x1000, {}, 0x1000, "a&#xE9;", "&#x1F600;", "a\x1A"},
        {0x2000, {}, 0x2000, "a{U+00E9}", "{U+1F600}", "a\x1A"},
        {0x4000, {}, 0x4000, "a\\E9 ", "\\1F600 ", "a\x1A"},
        // Other values with an escape bit are escapes in ICU's own form, stored as given.
        {0x300, {}, 0x300, icu_e9, icu_smiley, "a\x1A"},
        {0x8100, {}, 0x8100, icu_e9, icu_smiley, "a\x1A"},
        {0x7F00, {}, 0x7F00, icu_e9, icu_smiley, "a\x1A"},
        {0xFFFFFFFF, {}, 0xFFFFFFFF, icu_e9, icu_smiley, "a\x1A"},
        {0x2, cvt_invalid_argument, 0, "", "", ""},
        {0x11, cvt_invalid_argument, 0, "", "", ""},
        {0x30, cvt_invalid_argument, 0, "", "", ""},
        {0x80, cvt_invalid_argument, 0, "", "", ""},
        {0x8000, cvt_invalid_argument, 0, "", "", ""},
    };
    const ustring e9 = u"a\u00E9", smiley = u"\U0001F600";
    for (const from_mode_case& c : cases) {
        SCOPED_TRACE("mode " + std::to_string(c.mode));
        // Starting from the stop call-back also shows that a refused mode has already reset it.
        codecvt_ustring_to_string changed("US-ASCII", false);
        EXPECT_EQ(thrown_id([&] { changed.change_call_back(mode_of(c.mode), "?"); }), c.refused);
        EXPECT_EQ(thrown_id([&] { codecvt_ustring_to_string(mode_of(c.mode), "US-ASCII", "?"); }), c.refused);
        if (c.refused) {
            EXPECT_EQ(changed.get_call_back_mode(), cvt_call_back_default);
            EXPECT_EQ(outcome(changed, e9), "a\x1A");
            continue;
        }
        const codecvt_ustring_to_string constructed(mode_of(c.mode), "US-ASCII", "?");
        for (const codecvt_ustring_to_string* cvt : {&std::as_const(changed), &constructed}) {
            EXPECT_EQ(cvt->get_call_back_mode(), c.stored);
            EXPECT_EQ(outcome(*cvt, e9), c.e9);
            EXPECT_EQ(outcome(*cvt, smiley), c.smiley);
        }
        changed.reset_call_back();
        EXPECT_EQ(changed.get_call_back_mode(), cvt_call_back_default);
        EXPECT_EQ(outcome(changed, e9), c.after_reset);
    }
}

TEST(codecvt_string_to_ustring, CallBackModeTable)
{
    const std::pair<std::uint32_t, std::optional<codecvt_excp_id>> cases[] = {
        {0x0, {}},
        {0x1, {}},
        {0x10, cvt_non_supported_mode},
        {0x20, cvt_non_supported_mode},
        {0x100, cvt_non_supported_mode},
        {0x200, cvt_non_supported_mode},
        {0x400, cvt_non_supported_mode},
        {0x800, cvt_non_supported_mode},
        {0x1000, cvt_non_supported_mode},
        {0x2000, cvt_non_supported_mode},
        {0x4000, cvt_non_supported_mode},
        {0x300, cvt_non_supported_mode},
        {0x8100, cvt_non_supported_mode},
        {0x2, cvt_invalid_argument},
        {0x11, cvt_invalid_argument},
        {0x30, cvt_invalid_argument},
        {0x80, cvt_invalid_argument},
        {0x8000, cvt_invalid_argument},
    };
    const std::string bad = "a\xFF";
    const ustring substituted = {u'a', 0xFFFD};
    for (const auto& [mode, refused] : cases) {
        SCOPED_TRACE("mode " + std::to_string(mode));
        codecvt_string_to_ustring changed("UTF-8", false);
        EXPECT_EQ(thrown_id([&] { changed.change_call_back(mode_of(mode)); }), refused);
        EXPECT_EQ(thrown_id([&] { codecvt_string_to_ustring(mode_of(mode), "UTF-8"); }), refused);
        if (refused || mode == 0) {
            EXPECT_EQ(changed.get_call_back_mode(), cvt_call_back_default);
            EXPECT_EQ(outcome(changed, bad), substituted);
            continue;
        }
        const codecvt_string_to_ustring constructed(mode_of(mode), "UTF-8");
        for (const codecvt_string_to_ustring* cvt : {&std::as_const(changed), &constructed}) {
            EXPECT_EQ(cvt->get_call_back_mode(), cvt_call_back_stop);
            EXPECT_EQ(outcome(*cvt, bad), u"!");
        }
        changed.reset_call_back();
        EXPECT_EQ(changed.get_call_back_mode(), cvt_call_back_default);
        EXPECT_EQ(outcome(changed, bad), substituted);
    }
}

TEST(codecvt_string_to_ustring, ConstructorStrictnessSetsTheMode)
{
    EXPECT_EQ(codecvt_string_to_ustring("UTF-8", false).get_call_back_mode(), cvt_call_back_stop);
    EXPECT_EQ(codecvt_string_to_ustring("UTF-8", true).get_call_back_mode(), cvt_call_back_default);
    EXPECT_EQ(codecvt_ustring_to_string("UTF-8", false).get_call_back_mode(), cvt_call_back_stop);
    EXPECT_EQ(codecvt_ustring_to_string("UTF-8", true).get_call_back_mode(), cvt_call_back_default);
}

// Installing a mode over another saves ICU's default, not the mode replaced: a reset after two
// changes gives the default back.
TEST(codecvt_ustring_to_string, EveryChangePassesThroughTheDefault)
{
    const ustring e9 = u"a\u00E9";
    codecvt_ustring_to_string cvt("US-ASCII", true);
    cvt.change_call_back(cvt_call_back_stop, "");
    cvt.change_call_back(cvt_call_back_stop, "");
    EXPECT_EQ(outcome(cvt, e9), "!");
    cvt.reset_call_back();
    EXPECT_EQ(outcome(cvt, e9), "a\x1A");

    cvt.change_call_back(cvt_call_back_escape_icu, "");
    cvt.change_call_back(cvt_call_back_escape_java, "");
    EXPECT_EQ(cvt.get_call_back_mode(), cvt_call_back_escape_java);
    EXPECT_EQ(outcome(cvt, e9), "a\\u00E9");
    cvt.reset_call_back();
    EXPECT_EQ(outcome(cvt, e9), "a\x1A");

    cvt.change_call_back(cvt_call_back_escape_c, "");
    cvt.change_call_back(cvt_call_back_default, "");
    EXPECT_EQ(cvt.get_call_back_mode(), cvt_call_back_default);
    EXPECT_EQ(outcome(cvt, e9), "a\x1A");
    cvt.reset_call_back();
    EXPECT_EQ(outcome(cvt, e9), "a\x1A");

    codecvt_string_to_ustring in("UTF-8", true);
    in.change_call_back(cvt_call_back_stop);
    in.change_call_back(cvt_call_back_stop);
    in.reset_call_back();
    EXPECT_EQ(outcome(in, "\xFF"), ustring(1, 0xFFFD));
}

TEST(codecvt_ustring_to_string, SubstitutionBytesStayOutsideTheModeMachine)
{
    const ustring e9 = u"a\u00E9";
    codecvt_ustring_to_string cvt("US-ASCII", false);
    cvt.change_call_back(cvt_call_back_substitute, "?");  // resets the stop call-back first
    EXPECT_EQ(cvt.get_call_back_mode(), cvt_call_back_default);
    EXPECT_EQ(outcome(cvt, e9), "a?");
    cvt.reset_call_back();
    EXPECT_EQ(outcome(cvt, e9), "a?");
    cvt.change_call_back(cvt_call_back_escape_xml_dec, "");
    EXPECT_EQ(outcome(cvt, e9), "a&#233;");
    cvt.change_call_back(cvt_call_back_stop, "");
    EXPECT_EQ(outcome(cvt, e9), "!");
    cvt.change_call_back(cvt_call_back_default, "");
    EXPECT_EQ(outcome(cvt, e9), "a?");

    // Refused substitutions leave both the mode and the bytes already set.
    const std::pair<std::string, codecvt_excp_id> refused[] = {
        {"", cvt_invalid_argument},
        {std::string(128, '?'), cvt_size_too_large},
        {std::string(300, '?'), cvt_size_too_large},
        {"ab", cvt_call_back_setting_failure},  // US-ASCII takes one byte per character
        {std::string(127, '?'), cvt_call_back_setting_failure},
    };
    for (const auto& [bytes, id] : refused) {
        SCOPED_TRACE("substitution of " + std::to_string(bytes.size()) + " bytes");
        EXPECT_EQ(thrown_id([&] { cvt.change_call_back(cvt_call_back_substitute, bytes); }), id);
        EXPECT_EQ(cvt.get_call_back_mode(), cvt_call_back_default);
        EXPECT_EQ(outcome(cvt, e9), "a?");
    }
    EXPECT_EQ(thrown_id([] { codecvt_ustring_to_string(cvt_call_back_substitute, "US-ASCII", ""); }),
              cvt_invalid_argument);

    // A double-byte encoding takes a two-byte substitution, used as given.
    codecvt_ustring_to_string sjis("Shift_JIS", true);
    sjis.change_call_back(cvt_call_back_substitute, "\x81\x48");
    EXPECT_EQ(outcome(sjis, u"a\u0E01"), "a\x81\x48");
}

// ICU's stock stop and escape call-backs drop an unassigned default-ignorable code point; the
// library's must report or escape it like any other unmappable character.
TEST(codecvt_ustring_to_string, DefaultIgnorableCodePointsAreNotDropped)
{
    for (char16_t cp : {u'\u200B', u'\uFEFF', u'\u2060'}) {
        SCOPED_TRACE("code point " + std::to_string(cp));
        const ustring text = {u'a', cp, u'b'};
        EXPECT_THROW(codecvt_ustring_to_string("ISO-8859-1", false).convert(text.data(), 3), CvtInvalidCharacter);
        EXPECT_THROW(codecvt_ustring_to_string("ISO-8859-1", false).get_destination_size(text.data(), 3),
                     CvtInvalidCharacter);
        EXPECT_EQ(codecvt_ustring_to_string("ISO-8859-1", true).convert(text.data(), 3),
                  qx_test::icu_from_uchars("ISO-8859-1", text));
    }
    const std::pair<codecvt_call_back_mode, const char*> escapes[] = {
        {cvt_call_back_escape_icu, "a%U200Bb"},      {cvt_call_back_escape_java, "a\\u200Bb"},
        {cvt_call_back_escape_c, "a\\u200Bb"},       {cvt_call_back_escape_xml_dec, "a&#8203;b"},
        {cvt_call_back_escape_xml_hex, "a&#x200B;b"}, {cvt_call_back_escape_unicode, "a{U+200B}b"},
        {cvt_call_back_escape_css2, "a\\200B b"},    {mode_of(0x300), "a%U200Bb"},
    };
    for (const auto& [mode, expected] : escapes) {
        const codecvt_ustring_to_string cvt(mode, "ISO-8859-1", "");
        EXPECT_EQ(cvt.convert(u"a\u200Bb", 3), expected) << "mode " << mode;
        EXPECT_EQ(cvt.get_destination_size(u"a\u200Bb", 3), std::string(expected).size()) << "mode " << mode;
    }
    EXPECT_EQ(codecvt_ustring_to_string(cvt_call_back_escape_icu, "ISO-8859-1", "").convert(u"\uFEFF", 1), "%UFEFF");
}

}  // namespace

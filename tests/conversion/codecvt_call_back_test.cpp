// Tests of the call-back modes: which values each direction accepts, refuses or does not know,
// the exact escape forms, default-ignorable code points, and the caller's substitution bytes.
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion_error.hpp>

#include "conversion_test_support.hpp"

#include <utility>

namespace {

using namespace fl::i18n;
using qx_test::thrown_id;

codecvt_call_back_mode mode_of(std::uint32_t value) { return static_cast<codecvt_call_back_mode>(value); }

// What converting a text gives: the result, or "!" when the stop call-back throws.
template <class Cvt, class Text>
auto outcome(const Cvt& cvt, const Text& text)
{
    try {
        return cvt.convert(text.data(), text.size());
    } catch (const CvtInvalidCharacter&) {
        return decltype(cvt.convert(text.data(), text.size()))(1, '!');
    }
}

const ustring e9 = u"a\u00E9", smiley = u"\U0001F600", zwsp = u"a\u200Bb";

struct mode_case {
    std::uint32_t mode;
    std::optional<codecvt_excp_id> refused_from, refused_to;  // from and towards UTF-16
    std::uint32_t stored;                                     // from UTF-16
    std::string e9, smiley, zwsp;                             // the three texts in US-ASCII
};

// Other values with an escape bit are escapes in ICU's own form, stored as given; towards UTF-16
// only the default and stop are known. ICU's stock stop and escape call-backs drop an unassigned
// default-ignorable code point (U+200B); the library's report or escape it like any other.
const auto unsupported = cvt_non_supported_mode, invalid = cvt_invalid_argument;
const std::string icu_e9 = "a%U00E9", icu_smiley = "%UD83D%UDE00", icu_zwsp = "a%U200Bb";
const mode_case mode_cases[] = {
    {0x0, {}, {}, 0x0, "a\x1A", "\x1A", "ab"},
    {0x1, {}, {}, 0x1, "!", "!", "!"},
    {0x10, {}, unsupported, 0x0, "a?", "?", "ab"},
    {0x20, unsupported, unsupported, 0, "", "", ""},
    {0x100, {}, unsupported, 0x100, icu_e9, icu_smiley, icu_zwsp},
    {0x200, {}, unsupported, 0x200, "a\\u00E9", "\\uD83D\\uDE00", "a\\u200Bb"},
    {0x400, {}, unsupported, 0x400, "a\\u00E9", "\\U0001F600", "a\\u200Bb"},
    {0x800, {}, unsupported, 0x800, "a&#233;", "&#128512;", "a&#8203;b"},
    {0x1000, {}, unsupported, 0x1000, "a&#xE9;", "&#x1F600;", "a&#x200B;b"},
    {0x2000, {}, unsupported, 0x2000, "a{U+00E9}", "{U+1F600}", "a{U+200B}b"},
    {0x4000, {}, unsupported, 0x4000, "a\\E9 ", "\\1F600 ", "a\\200B b"},
    {0x300, {}, unsupported, 0x300, icu_e9, icu_smiley, icu_zwsp},
    {0x8100, {}, unsupported, 0x8100, icu_e9, icu_smiley, icu_zwsp},
    {0xFFFFFFFF, {}, unsupported, 0xFFFFFFFF, icu_e9, icu_smiley, icu_zwsp},
    {0x2, invalid, invalid, 0, "", "", ""},   {0x11, invalid, invalid, 0, "", "", ""},
    {0x30, invalid, invalid, 0, "", "", ""},  {0x8000, invalid, invalid, 0, "", "", ""},
};

// Each mode is set by change_call_back on converters with the stop call-back (a change resets the
// mode it replaces, and a refused mode has already reset it) and by the constructors; a reset
// afterwards gives ICU's default back.
TEST(codecvt_ustring_to_string, CallBackModeTableInBothDirections)
{
    EXPECT_EQ(codecvt_ustring_to_string("US-ASCII", false).get_call_back_mode(), cvt_call_back_stop);
    EXPECT_EQ(codecvt_string_to_ustring("UTF-8", true).get_call_back_mode(), cvt_call_back_default);
    const std::string bad = "a\xFF";
    for (const mode_case& c : mode_cases) {
        SCOPED_TRACE("mode " + std::to_string(c.mode));
        codecvt_ustring_to_string from("US-ASCII", false);
        codecvt_string_to_ustring to("UTF-8", false);
        EXPECT_EQ(thrown_id([&] { from.change_call_back(mode_of(c.mode), "?"); }), c.refused_from);
        EXPECT_EQ(thrown_id([&] { codecvt_ustring_to_string(mode_of(c.mode), "US-ASCII", "?"); }), c.refused_from);
        EXPECT_EQ(thrown_id([&] { to.change_call_back(mode_of(c.mode)); }), c.refused_to);
        EXPECT_EQ(thrown_id([&] { codecvt_string_to_ustring(mode_of(c.mode), "UTF-8"); }), c.refused_to);
        if (!c.refused_from) {
            const codecvt_ustring_to_string constructed(mode_of(c.mode), "US-ASCII", "?");
            for (const codecvt_ustring_to_string* cvt : {&std::as_const(from), &constructed}) {
                EXPECT_EQ(cvt->get_call_back_mode(), c.stored);
                EXPECT_EQ(outcome(*cvt, e9) + outcome(*cvt, smiley) + outcome(*cvt, zwsp), c.e9 + c.smiley + c.zwsp);
                EXPECT_EQ(c.zwsp == "!" ? 1ul : cvt->get_destination_size(zwsp.data(), 3), c.zwsp.size());
            }
            from.reset_call_back();
        }
        if (!c.refused_to && c.mode != 0) {
            const codecvt_string_to_ustring constructed(mode_of(c.mode), "UTF-8");
            for (const codecvt_string_to_ustring* cvt : {&std::as_const(to), &constructed})
                EXPECT_TRUE(cvt->get_call_back_mode() == cvt_call_back_stop && outcome(*cvt, bad) == u"!");
            to.reset_call_back();
        }
        EXPECT_EQ(from.get_call_back_mode(), cvt_call_back_default);
        EXPECT_EQ(to.get_call_back_mode(), cvt_call_back_default);
        EXPECT_EQ(outcome(from, e9), c.mode == 0x10 ? "a?" : "a\x1A");
        EXPECT_EQ(outcome(to, bad), (ustring{u'a', 0xFFFD}));
    }
}

// The caller's bytes replace the encoding's substitution character whatever mode comes and goes;
// a refused substitution leaves both the mode and the bytes already set.
TEST(codecvt_ustring_to_string, SubstitutionBytesStayOutsideTheModeMachine)
{
    codecvt_ustring_to_string cvt("US-ASCII", false);
    cvt.change_call_back(cvt_call_back_substitute, "?");  // resets the stop call-back first
    EXPECT_EQ(cvt.get_call_back_mode(), cvt_call_back_default);
    const std::pair<codecvt_call_back_mode, const char*> then[] = {
        {cvt_call_back_default, "a?"}, {cvt_call_back_escape_xml_dec, "a&#233;"}, {cvt_call_back_stop, "!"},
        {cvt_call_back_default, "a?"}};
    for (const auto& [mode, expected] : then) {
        cvt.change_call_back(mode, "");
        EXPECT_EQ(outcome(cvt, e9), expected) << "mode " << mode;
    }
    // US-ASCII takes one byte per character.
    const std::pair<std::string, codecvt_excp_id> refused[] = {
        {"", cvt_invalid_argument}, {std::string(128, '?'), cvt_size_too_large},
        {"ab", cvt_call_back_setting_failure}, {std::string(127, '?'), cvt_call_back_setting_failure}};
    for (const auto& [bytes, id] : refused) {
        EXPECT_EQ(thrown_id([&] { cvt.change_call_back(cvt_call_back_substitute, bytes); }), id) << bytes.size();
        EXPECT_EQ(cvt.get_call_back_mode(), cvt_call_back_default);
        EXPECT_EQ(outcome(cvt, e9), "a?") << bytes.size();
    }
    EXPECT_EQ(thrown_id([] { codecvt_ustring_to_string(cvt_call_back_substitute, "US-ASCII", ""); }),
              cvt_invalid_argument);
    codecvt_ustring_to_string sjis("Shift_JIS", true);
    sjis.change_call_back(cvt_call_back_substitute, "\x81\x48");
    EXPECT_EQ(outcome(sjis, ustring(u"a\u0E01")), "a\x81\x48");
}

}  // namespace

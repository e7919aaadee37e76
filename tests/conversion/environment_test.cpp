// getenv, setenv, isenv and unsetenv as ustring, and the terminal converters, under the global
// locale of a process before start-up (the classic locale, UTF-8): errno results, unset versus
// empty, overwrite, and text through raw ICU as reference.
#include <fl/i18n/conversion.hpp>
#include <fl/i18n/environment.hpp>

#include "conversion_test_support.hpp"

#include <cerrno>
#include <cstdlib>
#include <functional>

namespace {

using namespace qx_test;

const std::string name = "QXI18N_TEST_VARIABLE";
const ustring uname = u"QXI18N_TEST_VARIABLE";

class environment : public testing::Test {
protected:
    void SetUp() override { ::unsetenv(name.c_str()); }
    void TearDown() override { ::unsetenv(name.c_str()); }
};

// The raw value, or nullptr when unset.
const char* raw() { return ::getenv(name.c_str()); }

TEST_F(environment, EmptyNamesAndRefusedEmptyValuesAreEinval)
{
    const std::pair<const char*, std::function<bool()>> calls[] = {
        {"getenv(string)", [] { return fl::i18n::getenv(std::string()).empty(); }},
        {"getenv(ustring)", [] { return fl::i18n::getenv(ustring()).empty(); }},
        {"setenv(string)", [] { return fl::i18n::setenv(std::string(), u"v", 1, true) == -1; }},
        {"setenv(ustring)", [] { return fl::i18n::setenv(ustring(), u"v", 1, true) == -1; }},
        {"setenv(string) empty value", [] { return fl::i18n::setenv(name, ustring(), 1, false) == -1; }},
        {"setenv(ustring) empty value", [] { return fl::i18n::setenv(uname, ustring(), 1, false) == -1; }},
        {"isenv(string)", [] { return !fl::i18n::isenv(std::string()); }},
        {"isenv(ustring)", [] { return !fl::i18n::isenv(ustring()); }},
        {"unsetenv(string)", [] { return fl::i18n::unsetenv(std::string()) == -1; }},
        {"unsetenv(ustring)", [] { return fl::i18n::unsetenv(ustring()) == -1; }},
    };
    for (const auto& [what, call] : calls) {
        errno = 0;
        EXPECT_TRUE(call()) << what;
        EXPECT_EQ(errno, EINVAL) << what;
        EXPECT_EQ(raw(), nullptr) << what;
    }
}

TEST_F(environment, UnsetAndEmptyReadAlikeAndIsenvTellsThemApart)
{
    errno = 4711;
    for (const bool exists : {false, true}) {
        SCOPED_TRACE(exists ? "empty" : "unset");
        EXPECT_EQ(fl::i18n::getenv(name), ustring());
        EXPECT_EQ(fl::i18n::getenv(uname), ustring());
        EXPECT_EQ(fl::i18n::isenv(name), exists);
        EXPECT_EQ(fl::i18n::isenv(uname), exists);
        ASSERT_EQ(fl::i18n::setenv(name, ustring(), 1, true), 0);
        ASSERT_NE(raw(), nullptr);
        EXPECT_STREQ(raw(), "");
    }
    EXPECT_EQ(errno, 4711);
}

TEST_F(environment, OverwriteZeroKeepsTheValueAndSucceeds)
{
    ASSERT_EQ(fl::i18n::setenv(name, u"first", 0, false), 0);
    EXPECT_EQ(fl::i18n::setenv(name, u"second", 0, false), 0);
    EXPECT_EQ(fl::i18n::setenv(uname, u"second", 0, false), 0);
    EXPECT_STREQ(raw(), "first");
    EXPECT_EQ(fl::i18n::setenv(uname, u"third", 1, false), 0);
    EXPECT_EQ(fl::i18n::getenv(name), u"third");
    EXPECT_EQ(fl::i18n::setenv(name, u"fourth", 7, false), 0);
    EXPECT_EQ(fl::i18n::getenv(uname), u"fourth");
}

TEST_F(environment, UnsetenvRemovesAndLibcRefusalsKeepLibcsErrno)
{
    ASSERT_EQ(fl::i18n::setenv(name, u"x", 1, false), 0);
    EXPECT_EQ(fl::i18n::unsetenv(uname), 0);
    EXPECT_FALSE(fl::i18n::isenv(name));
    EXPECT_EQ(fl::i18n::unsetenv(name), 0);  // removing what is not there is no error
    for (const auto& refused : {std::function<int()>([] { return fl::i18n::setenv("QXI18N=TEST", u"x", 1, false); }),
                                std::function<int()>([] { return fl::i18n::setenv(u"QXI18N=TEST", u"x", 1, false); }),
                                std::function<int()>([] { return fl::i18n::unsetenv("QXI18N=TEST"); })}) {
        errno = 0;
        EXPECT_EQ(refused(), -1);
        EXPECT_EQ(errno, EINVAL);
    }
}

// Names and values are stored in the classic locale's UTF-8, exactly as ICU writes them, and
// what ICU cannot write comes back as its substitution.
TEST_F(environment, TextIsStoredInTheGlobalEncoding)
{
    const ustring lone{u'a', 0xD800, u'b'};
    const std::pair<const char*, ustring> values[] = {
        {"accents", u"\u00E9t\u00E9"},           {"cjk and emoji", u"\u65E5\u672C\U0001F600"},
        {"lone surrogate", lone},                {"1025 e-acute", rep(ustring(u"\u00E9"), 1025)},
        {"400 euro: 1200 bytes", rep(ustring(u"\u20AC"), 400)}, {"40000 cjk", rep(ustring(u"\u65E5"), 40000)},
    };
    for (const auto& [what, value] : values) {
        SCOPED_TRACE(what);
        const std::string bytes = icu_from_uchars("UTF-8", value);
        ASSERT_EQ(fl::i18n::setenv(name, value, 1, false), 0);
        EXPECT_TRUE(same_text(std::string(raw()), bytes));
        EXPECT_TRUE(same_text(fl::i18n::getenv(uname), icu_to_uchars("UTF-8", bytes)));
    }
    ASSERT_EQ(fl::i18n::setenv(name, lone, 1, false), 0);
    EXPECT_EQ(fl::i18n::getenv(name), u"a\uFFFDb");

    const ustring accented_name = u"QXI18N_TEST_\u00C4\u00D6";
    ASSERT_EQ(fl::i18n::setenv(accented_name, u"v", 1, false), 0);
    EXPECT_STREQ(::getenv("QXI18N_TEST_\xC3\x84\xC3\x96"), "v");
    EXPECT_TRUE(fl::i18n::isenv(accented_name));
    EXPECT_EQ(fl::i18n::unsetenv(accented_name), 0);
    EXPECT_EQ(::getenv("QXI18N_TEST_\xC3\x84\xC3\x96"), nullptr);

    // Bytes that are not UTF-8 read as ICU reads them.
    for (const std::string bytes : {"\xC3(", "\xFF\xFE", "ends inside \xE2\x82"}) {
        ::setenv(name.c_str(), bytes.c_str(), 1);
        EXPECT_TRUE(same_text(fl::i18n::getenv(name), icu_to_uchars("UTF-8", bytes)));
    }
}

// The classic locale has no terminal encoding of its own, so the terminal is its UTF-8; terminal
// text is substituted, never refused.
TEST(terminal_converters, UseTheGlobalLocalesEncodingAndSubstitute)
{
    const std::string bytes = "caf\xC3\xA9 \xC0\x80 \xE2\x82";
    const ustring units{u'a', 0xDC00, u'\u00E9'};
    for (const auto& decoder : {fl::i18n::create_codecvt_terminal_to_ustring(),
                                fl::i18n::create_codecvt_terminal_input_to_ustring()}) {
        ASSERT_NE(decoder, nullptr);
        EXPECT_TRUE(same_text(fl::i18n::to_ustring(bytes, *decoder), icu_to_uchars("UTF-8", bytes)));
    }
    for (const auto& encoder : {fl::i18n::create_codecvt_ustring_to_terminal(),
                                fl::i18n::create_codecvt_ustring_to_terminal_output()}) {
        ASSERT_NE(encoder, nullptr);
        EXPECT_TRUE(same_text(fl::i18n::to_string(units, *encoder), icu_from_uchars("UTF-8", units)));
    }
}

}  // namespace

// Everything that converts through the global locale's encoding: to_ustring and to_string without
// a converter, converters given an empty name, the environment as ustring and the terminal
// converters. Each runs under the classic locale (UTF-8, no terminal encoding of its own) and under
// Latin-1 with an EUC-JP terminal, against raw ICU in that encoding.
#include "locale/locale_context.hpp"

#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>
#include <fl/i18n/environment.hpp>

#include "conversion_test_support.hpp"

#include <cerrno>
#include <cstdlib>
#include <functional>

namespace {

using namespace fl::i18n;
using namespace qx_test;

const std::string name = "QXI18N_TEST_VARIABLE";
const ustring uname = u"QXI18N_TEST_VARIABLE";

// Every test pushes the global locale it needs, so the order of tests does not matter.
void push_global(std::unique_ptr<QxLocaleImpl> locale)
{
    auto& context = detail::locale_context();
    std::lock_guard<std::mutex> lock(context.global_mutex);
    context.push_entry(std::move(locale));
    ::unsetenv(name.c_str());
}

struct global_setting {
    const char* label;
    const char* locale;  // null: the classic locale, as before start-up
    const char* encoding;
    const char* terminal;
};
void PrintTo(const global_setting& setting, std::ostream* out) { *out << setting.label; }

class global_encoding : public testing::TestWithParam<global_setting> {
protected:
    void SetUp() override
    {
        const auto& registry = detail::locale_context().registry;
        auto locale = GetParam().locale ? std::make_unique<QxLocaleImpl>(registry, GetParam().locale)
                                        : std::make_unique<QxLocaleImpl>(registry, QxLocale::classic());
        if (GetParam().locale) locale->set_terminal_encoding(GetParam().terminal);
        push_global(std::move(locale));
        ASSERT_EQ(QxLocale::global().getEncoding(), GetParam().encoding);
    }
    void TearDown() override { ::unsetenv(name.c_str()); }
    ustring decoded(const std::string& bytes) const { return icu_to_uchars(GetParam().encoding, bytes); }
    std::string encoded(const ustring& units) const { return icu_from_uchars(GetParam().encoding, units); }
};

INSTANTIATE_TEST_SUITE_P(, global_encoding,
                         testing::Values(global_setting{"classic", nullptr, "UTF-8", "UTF-8"},
                                         global_setting{"latin1", "de_DE.ISO-8859-1", "ISO-8859-1", "EUC-JP"}),
                         [](const auto& instance) { return std::string(instance.param.label); });

// Malformed bytes and unmappable units are substituted as ICU's default call-backs do, never
// refused; the stack buffer holds 1024 units, and output that outgrows a buffer takes a second pass.
TEST_P(global_encoding, DefaultEncodingMatchesIcu)
{
    EXPECT_EQ(to_ustring(std::string()) + to_ustring("") + to_ustring(static_cast<const char*>(nullptr)), u"");
    EXPECT_EQ(to_string(ustring()), std::string());
    // The string forms take every unit; the pointer form stops at the first zero.
    EXPECT_EQ(to_ustring(std::string("a\0b", 3)), ustring(u"a\0b", 3));
    EXPECT_EQ(to_ustring("a\0b"), u"a");
    EXPECT_EQ(to_string(ustring(u"a\0\u00E9", 3)), encoded(ustring(u"a\0\u00E9", 3)));
    // A converter given an empty name takes the global encoding as it is constructed.
    EXPECT_EQ(codecvt_string_to_ustring("", true).convert("\xE9\xC3\xA9", 3), decoded("\xE9\xC3\xA9"));

    std::vector<std::string> bytes = {"\xC0\x80", "caf\xE9", "\xED\xA0\x80", "ends inside \xE2\x82", "\xFF\x80"};
    for (const ustring& text : {ustring{0xD800}, ustring{u'a', 0xDC00, u'b'}, ustring(u"\u00E9\u20AC\U0001F600"),
                                rep(u"a", 1024), rep(u"a", 1025), rep(u"\u00E9", 512) + u"a", rep(u"\u00E9", 1025),
                                rep(u"\u20AC", 341) + u"a", rep(u"\u20AC", 33000)}) {
        bytes.push_back(encoded(text));
        EXPECT_TRUE(same_text(to_string(text), bytes.back())) << text.size() << " units";
    }
    for (const std::string& text : bytes) {
        EXPECT_TRUE(same_text(to_ustring(text), decoded(text))) << text.size() << " bytes";
        EXPECT_TRUE(same_text(to_ustring(text.c_str()), decoded(text.c_str()))) << text.size() << " bytes";
    }
}

// Each call has its own converter, so threads need no lock and cannot disturb each other.
TEST_P(global_encoding, RandomTextMatchesIcuInEveryThread)
{
    expect_random_texts_in_threads([this](const ustring& units, const std::string& bytes) {
        return to_string(units) == encoded(units) && to_ustring(bytes) == decoded(bytes) &&
               to_ustring(bytes.c_str()) == decoded(bytes.c_str());
    });
}

TEST_P(global_encoding, EnvironmentIsStoredInIt)
{
    for (const ustring& value : {ustring(u"\u00E9t\u00E9 \u20AC\u65E5\U0001F600"), ustring{u'a', 0xD800, u'b'},
                                 rep(u"\u00E9", 1025), rep(u"\u65E5", 40000)}) {
        ASSERT_EQ(fl::i18n::setenv(name, value, 1, false), 0);
        EXPECT_TRUE(same_text(std::string(::getenv(name.c_str())), encoded(value))) << value.size() << " units";
        EXPECT_TRUE(same_text(fl::i18n::getenv(uname), decoded(encoded(value)))) << value.size() << " units";
    }
    const ustring accented_name = u"QXI18N_TEST_\u00C4\u00D6";
    const std::string raw_name = encoded(accented_name);
    ASSERT_EQ(fl::i18n::setenv(accented_name, u"v", 1, false), 0);
    EXPECT_STREQ(::getenv(raw_name.c_str()), "v");
    EXPECT_TRUE(fl::i18n::isenv(accented_name));
    EXPECT_EQ(fl::i18n::unsetenv(accented_name), 0);
    EXPECT_EQ(::getenv(raw_name.c_str()), nullptr);
    for (const std::string bytes : {"\xC3(", "\xFF\xFE", "ends inside \xE2\x82", "\xC3\xA9"}) {
        ::setenv(name.c_str(), bytes.c_str(), 1);
        EXPECT_TRUE(same_text(fl::i18n::getenv(name), decoded(bytes)));
    }
}

TEST_P(global_encoding, EnvironmentEmptyNamesAndRefusedValuesAreEinval)
{
    using fl::i18n::getenv, fl::i18n::setenv, fl::i18n::isenv, fl::i18n::unsetenv;
    const std::function<bool()> calls[] = {
        [] { return getenv(std::string()).empty(); },
        [] { return getenv(ustring()).empty(); },
        [] { return setenv(std::string(), u"v", 1, true) == -1; },
        [] { return setenv(ustring(), u"v", 1, true) == -1; },
        [] { return setenv(name, ustring(), 1, false) == -1; },
        [] { return setenv(uname, ustring(), 1, false) == -1; },
        [] { return !isenv(std::string()); },
        [] { return !isenv(ustring()); },
        [] { return unsetenv(std::string()) == -1; },
        [] { return unsetenv(ustring()) == -1; },
        // libc's own refusals keep libc's errno.
        [] { return setenv("QXI18N=TEST", u"x", 1, false) == -1; },
        [] { return setenv(u"QXI18N=TEST", u"x", 1, false) == -1; }, [] { return unsetenv("QXI18N=TEST") == -1; },
    };
    for (std::size_t i = 0; i < std::size(calls); ++i) {
        errno = 0;
        EXPECT_TRUE(calls[i]()) << "call " << i;
        EXPECT_EQ(errno, EINVAL) << "call " << i;
        EXPECT_EQ(::getenv(name.c_str()), nullptr) << "call " << i;
    }
}

// Unset and empty read alike and isenv tells them apart; overwrite 0 keeps a value.
TEST_P(global_encoding, EnvironmentUnsetEmptyOverwriteAndUnset)
{
    errno = 4711;
    for (const bool exists : {false, true}) {
        SCOPED_TRACE(exists ? "empty" : "unset");
        EXPECT_EQ(fl::i18n::getenv(name) + fl::i18n::getenv(uname), ustring());
        EXPECT_EQ(fl::i18n::isenv(name), exists);
        EXPECT_EQ(fl::i18n::isenv(uname), exists);
        ASSERT_EQ(exists ? fl::i18n::setenv(uname, ustring(), 1, true) : fl::i18n::setenv(name, ustring(), 1, true), 0);
        EXPECT_STREQ(::getenv(name.c_str()), "");
    }
    EXPECT_EQ(errno, 4711);
    ::unsetenv(name.c_str());
    ASSERT_EQ(fl::i18n::setenv(name, u"first", 0, false), 0);
    EXPECT_EQ(fl::i18n::setenv(name, u"second", 0, false) + fl::i18n::setenv(uname, u"second", 0, false), 0);
    EXPECT_STREQ(::getenv(name.c_str()), "first");
    EXPECT_EQ(fl::i18n::setenv(uname, u"third", 1, false), 0);
    EXPECT_EQ(fl::i18n::getenv(name), u"third");
    EXPECT_EQ(fl::i18n::setenv(name, u"fourth", 7, false), 0);
    EXPECT_EQ(fl::i18n::getenv(uname), u"fourth");
    EXPECT_EQ(fl::i18n::unsetenv(uname), 0);
    EXPECT_FALSE(fl::i18n::isenv(name));
    EXPECT_EQ(fl::i18n::unsetenv(name), 0);  // removing what is not there is no error
}

// Without a terminal encoding of its own a locale's terminal is its encoding; terminal text is
// substituted, never refused.
TEST_P(global_encoding, TerminalConvertersUseTheTerminalEncoding)
{
    const char* terminal = GetParam().terminal;
    const ustring text = u"\u65E5\u672C\u8A9E \u00E9 \U0001F600 \xDC00";
    const std::string bytes = icu_from_uchars(terminal, text) + "\xFF \xC0\x80 \xE2\x82";
    for (const auto& decoder : {create_codecvt_terminal_to_ustring(), create_codecvt_terminal_input_to_ustring()})
        EXPECT_TRUE(same_text(to_ustring(bytes, *decoder), icu_to_uchars(terminal, bytes)));
    for (const auto& encoder : {create_codecvt_ustring_to_terminal(), create_codecvt_ustring_to_terminal_output()})
        EXPECT_TRUE(same_text(to_string(text, *encoder), icu_from_uchars(terminal, text)));
}

// A locale with no names and no encoding: ICU opens no converter for it. Empty input and the
// environment's argument checks need none; everything else fails.
TEST(unconvertible_global, EmptyInputAndArgumentChecksNeedNoConverter)
{
    push_global(std::make_unique<QxLocaleImpl>(detail::locale_context().registry));
    EXPECT_EQ(to_ustring(std::string()) + to_ustring(static_cast<const char*>(nullptr)), ustring());
    EXPECT_EQ(to_string(ustring()), std::string());
    EXPECT_THROW(to_ustring(std::string("a")), CvtConversionFailure);
    EXPECT_THROW(to_ustring("a"), CvtConversionFailure);
    EXPECT_THROW(to_string(u"a"), CvtConversionFailure);
    errno = 0;
    EXPECT_EQ(fl::i18n::getenv(std::string()), ustring());
    EXPECT_EQ(fl::i18n::setenv(name, ustring(), 1, false), -1);
    EXPECT_EQ(errno, EINVAL);
    // Even an unset variable's empty value goes through the converter.
    EXPECT_THROW(fl::i18n::getenv(name), CvtConversionFailure);
    EXPECT_THROW(fl::i18n::setenv(name, u"v", 1, false), CvtConversionFailure);
    EXPECT_THROW(fl::i18n::isenv(u"X"), CvtConversionFailure);
    ::setenv(name.c_str(), "x", 1);
    EXPECT_TRUE(fl::i18n::isenv(name));  // a std::string name needs no conversion
    ::unsetenv(name.c_str());
    EXPECT_THROW(create_codecvt_terminal_to_ustring(), CvtInvalidEncodingName);
    EXPECT_THROW(create_codecvt_ustring_to_terminal_output(), CvtInvalidEncodingName);
}

}  // namespace

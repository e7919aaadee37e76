// The functions that convert through the global locale's encoding, under global locales other
// than the classic one: Latin-1 with an EUC-JP terminal, and a locale whose encoding ICU cannot
// open. Each test pushes the global locale it needs, so the order of tests does not matter.
#include "locale/locale_context.hpp"

#include <fl/i18n/conversion.hpp>
#include <fl/i18n/environment.hpp>

#include "conversion_test_support.hpp"

#include <cerrno>

namespace {

using namespace fl::i18n;
using namespace qx_test;

const std::string name = "QXI18N_TEST_VARIABLE";

void push_global(std::unique_ptr<QxLocaleImpl> locale)
{
    auto& context = detail::locale_context();
    std::lock_guard<std::mutex> lock(context.global_mutex);
    context.push_entry(std::move(locale));
}

class latin1_global : public testing::Test {
protected:
    void SetUp() override
    {
        auto locale = std::make_unique<QxLocaleImpl>(detail::locale_context().registry, "de_DE.ISO-8859-1");
        locale->set_terminal_encoding("EUC-JP");
        push_global(std::move(locale));
        ASSERT_EQ(QxLocale::global().getEncoding(), "ISO-8859-1");
        ::unsetenv(name.c_str());
    }
    void TearDown() override { ::unsetenv(name.c_str()); }
};

TEST_F(latin1_global, DefaultEncodingFunctionsUseIt)
{
    const ustring text = u"caf\u00E9 \u20AC \u65E5";
    EXPECT_TRUE(same_text(to_string(text), icu_from_uchars("ISO-8859-1", text)));
    EXPECT_EQ(to_string(u"\u00E9\u20AC"), "\xE9\x1A");  // the encoding's substitution character
    EXPECT_EQ(to_ustring("caf\xE9"), u"caf\u00E9");
    EXPECT_EQ(to_ustring(std::string("\xFF\x80", 2)), u"\u00FF\u0080");
}

TEST_F(latin1_global, EnvironmentIsStoredInItWithSubstitution)
{
    ASSERT_EQ(fl::i18n::setenv(name, u"\u00E9t\u00E9 \u20AC", 1, false), 0);
    EXPECT_STREQ(::getenv(name.c_str()), "\xE9t\xE9 \x1A");
    EXPECT_EQ(fl::i18n::getenv(name), u"\u00E9t\u00E9 \x1A");
    ::setenv(name.c_str(), "\xC3\xA9", 1);  // UTF-8 bytes read as Latin-1
    EXPECT_EQ(fl::i18n::getenv(ustring(name.begin(), name.end())), u"\u00C3\u00A9");
}

TEST_F(latin1_global, TerminalConvertersUseTheTerminalEncoding)
{
    const ustring text = u"\u65E5\u672C\u8A9E \u00E9 \U0001F600";
    const std::string bytes = icu_from_uchars("EUC-JP", text) + "\xFF";
    for (const auto& decoder : {create_codecvt_terminal_to_ustring(), create_codecvt_terminal_input_to_ustring()})
        EXPECT_TRUE(same_text(to_ustring(bytes, *decoder), icu_to_uchars("EUC-JP", bytes)));
    for (const auto& encoder : {create_codecvt_ustring_to_terminal(), create_codecvt_ustring_to_terminal_output()})
        EXPECT_TRUE(same_text(to_string(text, *encoder), icu_from_uchars("EUC-JP", text)));
}

// A locale with no names and no encoding: ICU opens no converter for it.
class unconvertible_global : public testing::Test {
protected:
    void SetUp() override { push_global(std::make_unique<QxLocaleImpl>(detail::locale_context().registry)); }
};

TEST_F(unconvertible_global, EmptyInputNeedsNoConverterAndOtherInputFails)
{
    EXPECT_EQ(to_ustring(std::string()), ustring());
    EXPECT_EQ(to_ustring(static_cast<const char*>(nullptr)), ustring());
    EXPECT_EQ(to_string(ustring()), std::string());
    EXPECT_THROW(to_ustring(std::string("a")), CvtConversionFailure);
    EXPECT_THROW(to_ustring("a"), CvtConversionFailure);
    EXPECT_THROW(to_string(u"a"), CvtConversionFailure);
}

TEST_F(unconvertible_global, EnvironmentChecksComeBeforeConversion)
{
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

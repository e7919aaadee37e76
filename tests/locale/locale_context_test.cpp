// The locale context: what creation leaves behind, the default converters, and a new global locale.
#include "locale/locale_context.hpp"

#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>
#include <fl/i18n/conversion_error.hpp>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <thread>

namespace {

using namespace fl::i18n;
using detail::locale_context;

// The UTF-16 text of some bytes, through a converter the test does not own.
std::u16string decode(UConverter* converter, const std::string& bytes)
{
    char16_t out[64];
    UErrorCode status = U_ZERO_ERROR;
    const int32_t n = ucnv_toUChars(converter, out, 64, bytes.data(), static_cast<int32_t>(bytes.size()), &status);
    EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
    return std::u16string(out, static_cast<std::size_t>(n));
}

std::string standard_name(UConverter* converter)
{
    UErrorCode status = U_ZERO_ERROR;
    return ucnv_getStandardName(ucnv_getName(converter, &status), "MIME", &status);
}

// Makes `locale` the global one, as the start-up will; the entry is never freed.
void push_global(std::unique_ptr<QxLocaleImpl> locale)
{
    auto& context = locale_context();
    std::lock_guard<std::mutex> lock(context.global_mutex);
    context.push_entry(std::move(locale));
}

TEST(QxLocaleCtx, starts_with_the_classic_locale_and_its_records)
{
    auto& context = locale_context();
    EXPECT_EQ(&locale_context(), &context);
    EXPECT_EQ(context.status, 2);
    EXPECT_EQ(context.l10n_enabled, 1);
    EXPECT_EQ(context.global_locked, 0);
    EXPECT_EQ(context.l10n_control, 0);
    ASSERT_EQ(context.locale_stack.size(), 1U);
    EXPECT_EQ(context.current_entry.load(), context.locale_stack[0]);
    EXPECT_EQ(context.locale_stack[0]->prototype->name, "UTF-8");
    EXPECT_NE(context.locale_stack[0]->prototype->converter, nullptr);
    EXPECT_EQ(context.system_locale_ref.load(), context.locale_stack[0]->locale.get());

    // The placeholder system locale differs from the classic one only by its terminal encoding.
    EXPECT_TRUE(*context.system_locale == QxLocale::classic());
    EXPECT_EQ(std::get<std::string>(context.system_locale->getLocaleData(QxLcOptDataCtx::termencoding)), "UTF-8");

    EXPECT_EQ(context.event_log,
              std::vector<std::string>{"QxLocaleCtx::initQxLcCtx - Locale context was initialized."});
    EXPECT_STREQ(ucnv_getDefaultName(), "UTF-8");
}

TEST(QxLocaleCtx, logs_numbers_right_after_the_message)
{
    auto& context = locale_context();
    std::lock_guard<std::mutex> lock(context.global_mutex);
    context.log("LcData::addLcName::modifyLcEntry", "xx_YY:UTF-8:xx", 3);
    EXPECT_EQ(context.event_log.back(), "LcData::addLcName::modifyLcEntry - xx_YY:UTF-8:xx3");
}

// A clone for every call, one converter for each thread; neither is the prototype itself, and
// both carry ICU's default call-backs (a malformed byte becomes U+FFFD).
TEST(clone_current_converter, gives_each_call_and_each_thread_its_own_converter)
{
    const detail::converter_ptr first = detail::clone_current_converter();
    const detail::converter_ptr second = detail::clone_current_converter();
    UConverter* mine = detail::thread_current_converter();
    UConverter* other = nullptr;
    std::thread([&] { other = detail::thread_current_converter(); }).join();
    const UConverter* prototype = locale_context().locale_stack[0]->prototype->converter.get();
    ASSERT_TRUE(first && second && mine && other);
    EXPECT_EQ(detail::thread_current_converter(), mine);
    for (const UConverter* converter : std::initializer_list<const UConverter*>{second.get(), mine, other, prototype})
        EXPECT_NE(first.get(), converter);
    EXPECT_NE(mine, other);
    EXPECT_NE(mine, prototype);
    EXPECT_EQ(decode(first.get(), "Gr\xC3\xBC\xC3\x9F" "e"), u"Grüße");
    EXPECT_EQ(decode(second.get(), "a\xFFz"), u"a\uFFFDz");
    EXPECT_EQ(decode(mine, "\xE2\x82\xAC\xFF"), u"€\uFFFD");
}

TEST(thread_current_converter, follows_a_new_global_locale)
{
    UConverter* before = detail::thread_current_converter();
    const QxLocale& old_global = QxLocale::global();
    push_global(std::make_unique<QxLocaleImpl>(locale_context().registry, "de_DE"));

    // References handed out before the change stay valid and keep their values.
    EXPECT_EQ(old_global.getName(QxLocale::lc_ctype), "en_US_POSIX");
    EXPECT_NE(&QxLocale::global(), &old_global);
    EXPECT_EQ(QxLocale::global().getEncoding(), "ISO-8859-1");
    EXPECT_EQ(&QxLocale::classic(), &old_global);

    UConverter* after = detail::thread_current_converter();
    EXPECT_NE(after, before);
    EXPECT_EQ(standard_name(after), "ISO-8859-1");
    EXPECT_EQ(decode(after, "\xE9"), u"é");
    EXPECT_EQ(decode(detail::clone_current_converter().get(), "\xE9"), u"é");
    // Converters made with an empty encoding name take the new encoding.
    EXPECT_EQ(to_ustring(std::string("\xE9"), codecvt_string_to_ustring("", false)), u"é");
}

// An encoding ICU cannot open (a locale copied from elsewhere is not validated): no prototype.
TEST(thread_current_converter, fails_without_a_prototype)
{
    auto locale = std::make_unique<QxLocaleImpl>(locale_context().registry, "de_DE");
    locale->set_encoding("NO-SUCH-ENCODING");
    push_global(std::move(locale));
    EXPECT_EQ(locale_context().locale_stack.back()->prototype->converter, nullptr);
    EXPECT_THROW(detail::thread_current_converter(), CvtConversionFailure);
    EXPECT_THROW(detail::clone_current_converter(), CvtConversionFailure);
    // The encoding has no entry in the registry, so it has no JVM name to give.
    EXPECT_THROW(QxLocale::global().getLocaleData(QxLcOptDataCtx::jvmencoding), std::logic_error);
}

// Run in a process of its own with the variables set (see CMakeLists.txt).
TEST(QxLocaleCtx, reads_the_qxlocale_variables_once)
{
    if (std::getenv("QXLOCALE_TERMINAL_ENCODING") == nullptr)
        GTEST_SKIP() << "needs the environment of the locale_context_variables test";
    const auto& cached = locale_context().system_setting.env_cache;
    setenv("QXLOCALE_LCDATA_FILENAME", "late.xml", 1);
    EXPECT_EQ(cached, (std::map<std::string, std::string>{{"QXLOCALE_LCDATA_PATH", "/opt/lc"},
                                                          {"QXLOCALE_TERMINAL_ENCODING", "EUC-JP"}}));
}

}  // namespace

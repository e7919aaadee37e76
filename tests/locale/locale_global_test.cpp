// The process-wide locales (classic, global, system), fallback chains, and sharing across threads.
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>
#include <fl/i18n/locale.hpp>

#include <boost/exception_ptr.hpp>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

using fl::i18n::QxLcOptDataCtx;
using fl::i18n::QxLocale;
using fl::ustring;

TEST(QxLocale, classic_global_and_system_are_the_classic_locale_before_start_up)
{
    const QxLocale& classic = QxLocale::classic();
    EXPECT_EQ(&QxLocale::global(), &classic);
    EXPECT_EQ(&QxLocale::system(), &classic);
    EXPECT_EQ(&QxLocale::classic(), &classic);
    EXPECT_EQ(classic.getName(QxLocale::lc_ctype), "en_US_POSIX");
    EXPECT_EQ(classic.getName(QxLocale::lc_messages), "en_US");
    EXPECT_EQ(classic.getEncoding(), "UTF-8");
    EXPECT_EQ(classic.getDefaultEncoding(), "US-ASCII");
    EXPECT_TRUE(classic == *QxLocale::createLocale("C"));
}

// A locale with a messages name chosen by the test, to reach every shape of name.
class messages_locale : public QxLocale {
public:
    explicit messages_locale(std::string name) : name_(std::move(name)) {}
    bool operator==(const QxLocale& other) const override { return this == &other; }
    bool operator!=(const QxLocale& other) const override { return this != &other; }
    std::string getName(LcCategory) const override { return name_; }
    std::string getLanguage(LcCategory, int) const override { return name_; }
    std::string getTerritory(LcCategory) const override { return ""; }
    std::string getModifiers(LcCategory) const override { return ""; }
    std::string getExtras(LcCategory) const override { return ""; }
    std::string getEncoding() const override { return "UTF-8"; }
    std::string getDefaultEncoding() const override { return "UTF-8"; }
    LocaleData getLocaleData(QxLcOptDataCtx::LcOptDataType) const override { return std::string("UTF-8"); }

private:
    std::string name_;
};

TEST(get_fallback_locales, cuts_the_messages_name_at_each_underscore)
{
    struct fallback_case {
        const char* messages;
        std::vector<ustring> with_classic;
        std::vector<ustring> with_empty;
    };
    const fallback_case cases[] = {
        {"en_US", {u"en_US", u"en"}, {u"en_US", u"en", u""}},
        {"en", {u"en"}, {u"en", u""}},
        {"ja_JP", {u"ja_JP", u"ja", u"en"}, {u"ja_JP", u"ja", u""}},
        {"zh-Hant_TW", {u"zh-Hant_TW", u"zh-Hant", u"en"}, {u"zh-Hant_TW", u"zh-Hant", u""}},
        {"en_US_POSIX", {u"en_US_POSIX", u"en_US", u"en"}, {u"en_US_POSIX", u"en_US", u"en", u""}},
        {"_US", {u"_US", u"", u"en"}, {u"_US", u""}},
        {"", {u"", u"en"}, {u""}},
        {"sr_Latn_RS_x", {u"sr_Latn_RS_x", u"sr_Latn_RS", u"sr_Latn", u"sr", u"en"},
         {u"sr_Latn_RS_x", u"sr_Latn_RS", u"sr_Latn", u"sr", u""}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.messages);
        const messages_locale locale(c.messages);
        EXPECT_EQ(fl::i18n::get_fallback_locales(locale), c.with_classic);
        EXPECT_EQ(fl::i18n::get_fallback_locales_with_empty_default(locale), c.with_empty);
    }
    // Only the messages category and its name take part: no modifiers, no encoding.
    const auto mixed = QxLocale::createLocale("de_DE.UTF-8@euro", QxLocale::lc_messages, "fr_CA");
    EXPECT_EQ(fl::i18n::get_fallback_locales(*mixed), (std::vector<ustring>{u"fr_CA", u"fr", u"en"}));
}

// Locales are immutable and the registry is read without a lock, so threads may build, compare
// and query locales at once, and every thread sees the same global reference.
TEST(QxLocale, threads_share_locales_and_the_global_reference)
{
    const QxLocale* const global = &QxLocale::global();
    const auto shared = QxLocale::createLocale("ja_JP.eucjp");
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            const char* names[] = {"de_DE@euro", "zh_HK", "C", "sr-Latn_BA", "ko_KR.euckr"};
            for (int i = 0; i < 300; ++i) {
                const auto locale = QxLocale::createLocale(names[(i + t) % 5]);
                const auto again = QxLocale::createLocale(*locale);
                if (!(*locale == *again) || &QxLocale::global() != global ||
                    shared->getEncoding() != "EUC-JP" || fl::i18n::get_fallback_locales(*locale).empty())
                    ++failures;
                const ustring text = fl::i18n::to_ustring("abc", fl::i18n::codecvt_string_to_ustring("", false));
                if (text != u"abc")
                    ++failures;
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(failures.load(), 0);
}

// Thrown through Boost's cloning wrapper, the exceptions cross threads with their exact type.
TEST(QxLcMgmtExceptionBase, crosses_threads_with_its_type_and_detail)
{
    boost::exception_ptr captured;
    std::thread([&] {
        try {
            QxLocale::createLocale("xx_YY");
        } catch (...) {
            captured = boost::current_exception();
        }
    }).join();
    ASSERT_TRUE(captured);
    try {
        boost::rethrow_exception(captured);
    } catch (const fl::i18n::QxLcInvLcName& e) {
        EXPECT_EQ(e.getDetail(), "xx_YY");
    } catch (...) {
        ADD_FAILURE() << "lost its type";
    }
}

}  // namespace

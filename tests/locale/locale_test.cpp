// The locale object: construction from names, categories, comparison, queries, the process-wide
// locales, fallback chains, sharing across threads, and every exception the layer throws.
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>
#include <fl/i18n/locale.hpp>

#include <boost/exception/exception.hpp>
#include <gtest/gtest.h>
#include <unicode/ulocdata.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace {

using namespace fl::i18n;
using fl::ustring;

constexpr std::array<QxLocale::LcCategory, 6> all_categories = {
    QxLocale::lc_ctype,   QxLocale::lc_collate,  QxLocale::lc_time,
    QxLocale::lc_numeric, QxLocale::lc_monetary, QxLocale::lc_messages};

std::string string_data(const QxLocale& locale, QxLcOptDataCtx::LcOptDataType type)
{
    return std::get<std::string>(locale.getLocaleData(type));
}

struct good_name {
    const char* name;
    const char* canonical;  // every category but messages
    const char* messages;
    const char* modifiers;
    const char* encoding;
    const char* jvm_encoding;
};

const good_name good_names[] = {
    {"en_US_POSIX", "en_US_POSIX", "en_US", "", "UTF-8", "UTF-8"},
    {"C", "en_US_POSIX", "en_US", "", "UTF-8", "UTF-8"},
    {"POSIX", "en_US_POSIX", "en_US", "", "UTF-8", "UTF-8"},
    // A name that is only an alias fails the full parse, so its codeset is not looked at.
    {"posix.ISO-8859-1", "en_US_POSIX", "en_US", "", "UTF-8", "UTF-8"},
    {"de_DE.UTF-8@euro", "de_DE", "de_DE", "euro", "UTF-8", "UTF-8"},
    {"de_DE@euro", "de_DE", "de_DE", "euro", "ISO-8859-1", "ISO-8859-1"},
    {"ja_JP.eucjp", "ja_JP", "ja_JP", "", "EUC-JP", "EUC-JP"},
    {"ja_JP.SJIS", "ja_JP", "ja_JP", "", "Shift_JIS", "MS932"},
    {"ja_JP", "ja_JP", "ja_JP", "", "EUC-JP", "EUC-JP"},
    {"zh_CN", "zh_CN", "zh_CN", "", "GB2312", "GB2312"},
    {"zh_HK", "zh_HK", "zh_HK", "", "Big5-HKSCS", "Big5-HKSCS"},
    {"zh-Hant", "zh_TW", "zh_TW", "", "Big5", "MS950"},
    {"EN_us", "en_US", "en_US", "", "ISO-8859-1", "ISO-8859-1"},
    {"iw_IL.utf8", "he_IL", "he_IL", "", "UTF-8", "UTF-8"},
    {"de_AT.ISO8859-15@euro@x", "de_AT", "de_AT", "euro@x", "ISO-8859-15", "ISO-8859-15"},
    {"ko_KR.euckr", "ko_KR", "ko_KR", "", "EUC-KR", "EUC-KR"},
    {"ru_RU.cp1251", "ru_RU", "ru_RU", "", "windows-1251", "Cp1251"},
};

TEST(QxLocale, builds_every_category_from_a_name)
{
    for (const auto& c : good_names) {
        SCOPED_TRACE(c.name);
        const auto locale = QxLocale::createLocale(c.name);
        for (auto category : all_categories) {
            EXPECT_EQ(locale->getName(category), category == QxLocale::lc_messages ? c.messages : c.canonical);
            EXPECT_EQ(locale->getModifiers(category), c.modifiers);
        }
        EXPECT_EQ(locale->getEncoding(), c.encoding);
        EXPECT_EQ(string_data(*locale, QxLcOptDataCtx::jvmencoding), c.jvm_encoding);
        // Without a terminal encoding of its own, the terminal uses the locale's encoding.
        for (auto type : {QxLcOptDataCtx::termencoding, QxLcOptDataCtx::terminputencoding,
                          QxLcOptDataCtx::termoutputencoding})
            EXPECT_EQ(string_data(*locale, type), c.encoding);
    }
}

TEST(QxLocale, sets_single_categories_and_keeps_the_encoding)
{
    const auto numeric_c = QxLocale::createLocaleWithCForNumeric("de_DE");
    for (auto category : all_categories)
        EXPECT_EQ(numeric_c->getName(category), category == QxLocale::lc_numeric ? "en_US_POSIX" : "de_DE");
    EXPECT_EQ(numeric_c->getEncoding(), "ISO-8859-1");

    const auto mixed = QxLocale::createLocale("de_DE", QxLocale::lc_messages, "fr_FR.UTF-8@x");
    EXPECT_EQ(mixed->getName(QxLocale::lc_messages), "fr_FR");
    EXPECT_EQ(mixed->getModifiers(QxLocale::lc_messages), "x");
    EXPECT_EQ(mixed->getEncoding(), "ISO-8859-1");

    // The list is applied in order, so the last entry for a category wins.
    const auto listed = QxLocale::createLocale(
        *mixed, {{QxLocale::lc_time, "ja_JP"}, {QxLocale::lc_messages, "it_IT"}, {QxLocale::lc_messages, "C"}});
    EXPECT_EQ(listed->getName(QxLocale::lc_time), "ja_JP");
    EXPECT_EQ(listed->getName(QxLocale::lc_messages), "en_US");
    EXPECT_EQ(listed->getName(QxLocale::lc_ctype), "de_DE");

    const auto borrowed = QxLocale::createLocale(*numeric_c, QxLocale::lc_time, *mixed);
    EXPECT_EQ(borrowed->getName(QxLocale::lc_time), "de_DE");
    const auto borrowed_messages = QxLocale::createLocale(*numeric_c, QxLocale::lc_messages, *mixed);
    EXPECT_EQ(borrowed_messages->getModifiers(QxLocale::lc_messages), "x");
}

// Categories with equal settings share storage; a long run of changes against a plain model
// must never let one category's change show through another, six distinct settings included.
TEST(QxLocale, keeps_each_category_through_any_run_of_settings)
{
    struct setting {
        const char* text;
        const char* name;
        const char* messages_name;
        const char* modifiers;
    };
    const setting settings[] = {
        {"de_DE", "de_DE", "de_DE", ""},   {"fr_FR@x", "fr_FR", "fr_FR", "x"}, {"ja_JP", "ja_JP", "ja_JP", ""},
        {"C", "en_US_POSIX", "en_US", ""}, {"de_DE@euro", "de_DE", "de_DE", "euro"}, {"it_IT", "it_IT", "it_IT", ""},
    };
    std::shared_ptr<QxLocale> locale = QxLocale::createLocale("de_DE");
    std::array<const setting*, 6> model;
    model.fill(&settings[0]);
    std::uint32_t random = 12345;
    for (int step = 0; step < 400; ++step) {
        random = random * 1103515245u + 12345u;
        const std::size_t c = (random >> 8) % 6;
        const setting& chosen = settings[(random >> 16) % std::size(settings)];
        locale = QxLocale::createLocale(*locale, all_categories[c], chosen.text);
        model[c] = &chosen;
        for (std::size_t k = 0; k < 6; ++k) {
            const auto category = all_categories[k];
            const char* expected = category == QxLocale::lc_messages ? model[k]->messages_name : model[k]->name;
            ASSERT_EQ(locale->getName(category), expected) << "step " << step << " category " << k;
            ASSERT_EQ(locale->getModifiers(category), model[k]->modifiers) << "step " << step << " category " << k;
        }
    }
    EXPECT_EQ(locale->getEncoding(), "ISO-8859-1");
}

TEST(QxLocale, compares_names_modifiers_and_encoding_only)
{
    const auto base = QxLocale::createLocale("de_DE");
    const auto copy = QxLocale::createLocale(*base);
    EXPECT_TRUE(*base == *copy);
    EXPECT_FALSE(*base != *copy);
    // The copy holds the encoding as its terminal encoding; comparison does not look at it.
    EXPECT_EQ(string_data(*copy, QxLcOptDataCtx::termencoding), "ISO-8859-1");
    const std::shared_ptr<QxLocale> different[] = {
        QxLocale::createLocale("de_DE@euro"),
        QxLocale::createLocale("de_DE.UTF-8"),
        QxLocale::createLocale("de_DE", QxLocale::lc_collate, "de_AT"),
        QxLocale::createLocale("de_DE", QxLocale::lc_monetary, "de_DE@euro"),
    };
    for (const auto& other : different) {
        EXPECT_FALSE(*base == *other) << other->getName(QxLocale::lc_ctype);
        EXPECT_TRUE(*base != *other);
    }
}

// A locale from outside the library: copies and fallback chains must go through its interface.
class foreign_locale : public QxLocale {
public:
    explicit foreign_locale(std::string messages, std::string terminal = "")
        : messages_(std::move(messages)), terminal_(std::move(terminal)) {}
    bool operator==(const QxLocale& other) const override { return this == &other; }
    bool operator!=(const QxLocale& other) const override { return this != &other; }
    std::string getName(LcCategory c) const override { return c == lc_messages ? messages_ : "fr_FR"; }
    std::string getLanguage(LcCategory, int) const override { return "fr"; }
    std::string getTerritory(LcCategory) const override { return "FR"; }
    std::string getModifiers(LcCategory c) const override { return c == lc_time ? "t" : ""; }
    std::string getExtras(LcCategory) const override { return ""; }
    std::string getEncoding() const override { return "UTF-8"; }
    std::string getDefaultEncoding() const override { return "ISO-8859-1"; }
    LocaleData getLocaleData(QxLcOptDataCtx::LcOptDataType) const override
    {
        return terminal_.empty() ? getEncoding() : terminal_;
    }

private:
    std::string messages_;
    std::string terminal_;
};

TEST(QxLocale, copies_a_foreign_locale_through_its_interface)
{
    const foreign_locale source("ja_JP", "EUC-JP");
    const auto copy = QxLocale::createLocale(source);
    EXPECT_EQ(copy->getName(QxLocale::lc_messages), "ja_JP");
    EXPECT_EQ(copy->getName(QxLocale::lc_ctype), "fr_FR");
    EXPECT_EQ(copy->getModifiers(QxLocale::lc_time), "t");
    EXPECT_EQ(copy->getEncoding(), "UTF-8");
    EXPECT_EQ(string_data(*copy, QxLcOptDataCtx::termencoding), "EUC-JP");
    EXPECT_TRUE(*copy == source);
}

TEST(QxLocale, splits_a_category_name_into_language_and_territory)
{
    const auto locale = QxLocale::createLocale("de_DE", QxLocale::lc_time, "zh-Hans_SG");
    EXPECT_EQ(locale->getName(QxLocale::lc_time), "zh-Hans_SG");
    EXPECT_EQ(locale->getLanguage(QxLocale::lc_time, 1), "zh");
    EXPECT_EQ(locale->getLanguage(QxLocale::lc_time, 0), "zh-Hans");
    EXPECT_EQ(locale->getLanguage(QxLocale::lc_time, 2), "zh-Hans");
    EXPECT_EQ(locale->getTerritory(QxLocale::lc_time), "SG");
    EXPECT_EQ(locale->getExtras(QxLocale::lc_time), "");
    EXPECT_EQ(locale->getLanguage(QxLocale::lc_ctype, 1), "de");
    EXPECT_EQ(QxLocale::classic().getTerritory(QxLocale::lc_ctype), "US");
}

// Paper size and measurement system come from ICU's data for the time category.
TEST(QxLocale, paper_and_units_agree_with_icu)
{
    for (const char* name : {"de_DE", "en_US", "en_GB", "ja_JP", "fr_CA", "C", "es_MX", "en_IN"}) {
        SCOPED_TRACE(name);
        const auto locale = QxLocale::createLocale("de_DE", QxLocale::lc_time, name);
        const std::string id = locale->getName(QxLocale::lc_time);
        UErrorCode status = U_ZERO_ERROR;
        int32_t height = 0;
        int32_t width = 0;
        ulocdata_getPaperSize(id.c_str(), &height, &width, &status);
        const UMeasurementSystem system = ulocdata_getMeasurementSystem(id.c_str(), &status);
        ASSERT_TRUE(U_SUCCESS(status));
        const auto paper = height == 297 && width == 210 ? QxLocale::paper_a4 : QxLocale::paper_other;
        const auto unit = system == UMS_SI ? QxLocale::unit_si : system == UMS_UK ? QxLocale::unit_uk
                                                                                  : QxLocale::unit_other;
        EXPECT_EQ(std::get<QxLocale::PaperSize>(locale->getLocaleData(QxLcOptDataCtx::papersize)), paper);
        EXPECT_EQ(std::get<QxLocale::UnitType>(locale->getLocaleData(QxLcOptDataCtx::unittype)), unit);
    }
    const auto us = QxLocale::createLocale("en_US");
    EXPECT_EQ(std::get<QxLocale::PaperSize>(us->getLocaleData(QxLcOptDataCtx::papersize)), QxLocale::paper_other);
    EXPECT_EQ(std::get<QxLocale::UnitType>(us->getLocaleData(QxLcOptDataCtx::unittype)), QxLocale::unit_other);
}

TEST(QxLocale, names_categories_and_data_kinds_in_any_case)
{
    const std::tuple<const char*, const char*, QxLocale::LcCategory> categories[] = {
        {"ctype", "ctype", QxLocale::lc_ctype},          {"Collate", "collate", QxLocale::lc_collate},
        {"TIME", "time", QxLocale::lc_time},             {"numeric", "numeric", QxLocale::lc_numeric},
        {"monetary", "monetary", QxLocale::lc_monetary}, {"MESSAGES", "messages", QxLocale::lc_messages},
    };
    for (const auto& [asked, name, category] : categories) {
        EXPECT_EQ(QxLocale::getLcCategory(asked), category) << asked;
        EXPECT_EQ(QxLocale::getLcCategoryName(category), name);
    }
    const std::pair<const char*, QxLcOptDataCtx::LcOptDataType> kinds[] = {
        {"JvmEncoding", QxLcOptDataCtx::jvmencoding},   {"termencoding", QxLcOptDataCtx::termencoding},
        {"TERMINPUTENCODING", QxLcOptDataCtx::terminputencoding},
        {"termOutputEncoding", QxLcOptDataCtx::termoutputencoding},
        {"PaperSize", QxLcOptDataCtx::papersize},       {"unittype", QxLcOptDataCtx::unittype},
    };
    for (const auto& [name, kind] : kinds)
        EXPECT_EQ(QxLcOptDataCtx::getOptDataType(name), kind) << name;
}

// What a call throws: the exception's exact type, whether it travels in Boost's cloning wrapper
// (which boost::exception_ptr needs to carry it across threads), identifier, code, text, detail.
std::string failure_of(const std::function<void()>& call)
{
    try {
        call();
    } catch (const QxLcMgmtExceptionBase& e) {
        const char* type = dynamic_cast<const QxLcInvLcName*>(&e)       ? "QxLcInvLcName"
                           : dynamic_cast<const QxLcDataNotFound*>(&e)  ? "QxLcDataNotFound"
                           : dynamic_cast<const QxLcInvLcArgument*>(&e) ? "QxLcInvLcArgument"
                                                                        : "another type";
        const bool wrapped = dynamic_cast<const boost::exception_detail::clone_base*>(&e) != nullptr;
        return std::string(wrapped ? "" : "unwrapped ") + type + " " + e.getIdentifier() + " " +
               std::to_string(e.getCode()) + " " + static_cast<const std::exception&>(e).what() + " [" +
               e.getDetail() + "]";
    }
    return "nothing";
}

TEST(QxLcMgmtExceptionBase, every_refusal_has_its_type_code_text_and_detail)
{
    const auto invalid_name = [](const std::string& detail) {
        return "QxLcInvLcName fl:i18n:QxLcInvLcName 1 Invalid locale name. [" + detail + "]";
    };
    const std::string invalid_argument = "QxLcInvLcArgument fl:i18n:QxLcInvLcArgument 4 Invalid argument []";
    const std::string not_found = "QxLcDataNotFound fl:i18n:QxLcDataNotFound 2 Locale data not found. []";
    std::vector<std::pair<std::function<void()>, std::string>> cases = {
        {[] { QxLocale::createLocale(std::string()); }, invalid_argument},
        {[] { QxLocale::createLocale("de_DE", QxLocale::lc_time, ""); }, invalid_argument},
        {[] { QxLocale::createLocale("de_DE", QxLocale::lc_time, "xx_YY"); }, invalid_name("xx_YY")},
        {[] { QxLocale::createLocale("de_DE", {{QxLocale::lc_time, "fr_FR"}, {QxLocale::lc_time, "fr_FR.BOGUS"}}); },
         invalid_name("BOGUS")},
        {[] { QxLocale::classic().getName(static_cast<QxLocale::LcCategory>(6)); }, invalid_argument},
        {[] { QxLocale::classic().getName(static_cast<QxLocale::LcCategory>(-1)); }, invalid_argument},
        {[] { QxLocale::getLcCategoryName(static_cast<QxLocale::LcCategory>(6)); }, not_found},
        {[] { QxLcOptDataCtx::getOptDataType("encoding"); }, not_found},
    };
    // The detail is the refused part of the name: the base name, or the codeset.
    const std::pair<const char*, const char*> bad_names[] = {
        {"xx_YY", "xx_YY"},           {"xx_YY.UTF-8@euro", "xx_YY"},  {"de_DE.NOSUCHCODE", "NOSUCHCODE"},
        {"en_4199", "en_4199"},       {"en_x_foo", "en_x_foo"},       {"e", "e"},
        {"de_DE.UTF-16", "UTF-16"},   {".UTF-8", ""},                 {"de_DE.ibm-37", "ibm-37"},
        {"zh-Cyrl_CN", "zh-Cyrl_CN"}, {"de_D\xC3\x89", "de_D\xC3\x89"},
    };
    for (const auto& [name, detail] : bad_names)
        cases.push_back({[name = name] { QxLocale::createLocale(name); }, invalid_name(detail)});
    for (int type : {-1, 6, 1000}) {
        const auto kind = static_cast<QxLcOptDataCtx::LcOptDataType>(type);
        cases.push_back({[kind] { QxLocale::classic().getLocaleData(kind); }, invalid_argument});
    }
    for (const char* bad : {"paper", "", "lc_ctype", "messages "})
        cases.push_back({[bad] { QxLocale::getLcCategory(bad); }, not_found});
    for (std::size_t i = 0; i < cases.size(); ++i)
        EXPECT_EQ(failure_of(cases[i].first), cases[i].second) << "case " << i;
}

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
        const foreign_locale locale(c.messages);
        EXPECT_EQ(get_fallback_locales(locale), c.with_classic);
        EXPECT_EQ(get_fallback_locales_with_empty_default(locale), c.with_empty);
    }
    // Only the messages category and its name take part: no modifiers, no encoding.
    const auto mixed = QxLocale::createLocale("de_DE.UTF-8@euro", QxLocale::lc_messages, "fr_CA");
    EXPECT_EQ(get_fallback_locales(*mixed), (std::vector<ustring>{u"fr_CA", u"fr", u"en"}));
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
                if (!(*locale == *again) || &QxLocale::global() != global || shared->getEncoding() != "EUC-JP" ||
                    get_fallback_locales(*locale).empty() ||
                    to_ustring("abc", codecvt_string_to_ustring("", false)) != u"abc")
                    ++failures;
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(failures.load(), 0);
}

}  // namespace

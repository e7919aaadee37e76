// Start-up from the user's settings, one scenario per process: CTest runs each test alone with
// QXI18N_SCENARIO naming it and the environment the scenario needs.
#include "locale/locale_context.hpp"
#include "locale/startup.hpp"

#include <fl/i18n/initialize.hpp>
#include <fl/i18n/locale_management.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace fl::i18n;
using detail::locale_context;

// Runs a scenario only in the process CTest made for it.
#define SCENARIO(name)                                                                         \
    do {                                                                                       \
        const char* wanted = std::getenv("QXI18N_SCENARIO");                                   \
        if (wanted == nullptr || std::string(wanted) != (name))                                \
            GTEST_SKIP() << "runs only as its own CTest entry (QXI18N_SCENARIO=" name ")";     \
    } while (false)

std::string env(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "<unset>";
}

bool logged(const std::string& entry)
{
    const auto log = QxLcUtil::getEventLog();
    return std::find(log.begin(), log.end(), entry) != log.end();
}

std::size_t count_logged(const std::string& entry)
{
    const auto log = QxLcUtil::getEventLog();
    return static_cast<std::size_t>(std::count(log.begin(), log.end(), entry));
}

// Every category's name, ctype first, as the system locale holds them.
std::vector<std::string> system_names()
{
    std::vector<std::string> names;
    for (int c = QxLocale::lc_ctype; c <= QxLocale::lc_messages; ++c)
        names.push_back(QxLocale::system().getName(static_cast<QxLocale::LcCategory>(c)));
    return names;
}

const lcmgmt::system_setting_context& setting() { return locale_context().system_setting; }

TEST(startup, german_latin1_user)
{
    SCENARIO("german_latin1_user");
    initLcMgmtSystem();
    EXPECT_EQ(QxLcUtil::getLcStatus(), 0) << QxLcUtil::getInitWarningMsg();
    EXPECT_EQ(system_names(), std::vector<std::string>(6, "de_DE"));
    EXPECT_EQ(QxLocale::system().getEncoding(), "UTF-8");
    EXPECT_EQ(std::get<std::string>(QxLocale::system().getLocaleData(QxLcOptDataCtx::termencoding)), "ISO-8859-1");
    EXPECT_EQ(env("LC_NUMERIC"), "C");
    EXPECT_EQ(env("LANG"), "de_DE.ISO-8859-1");
    EXPECT_EQ(QxLocale::global().getName(QxLocale::lc_numeric), "en_US_POSIX");
    EXPECT_EQ(QxLocale::global().getName(QxLocale::lc_time), "de_DE");
    EXPECT_TRUE(logged("QxLocaleCtx::initLocaleMgmt - XML locale database was loaded."));
    EXPECT_EQ(QxLcUtil::getInitStatusMsg(), "Corvane locale management system initialized.");
    EXPECT_TRUE(lcmgmt::is_std_locale_valid());
    // The process's own numbers follow "C" after start-up.
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
    const auto original = lcmgmt::get_original_user_locale_setting();
    EXPECT_EQ(original.encoding, "ISO-8859-1");
    ASSERT_FALSE(original.user_categories.empty());
    EXPECT_EQ(original.user_categories.front(), std::make_pair(int{LC_CTYPE}, std::string("de_DE.ISO-8859-1")));
    EXPECT_NE(std::find(original.user_environment.begin(), original.user_environment.end(),
                        std::make_pair(std::string("LANG"), std::string("de_DE.ISO-8859-1"))),
              original.user_environment.end());
    const auto info = QxLcUtil::getLocaleInformation();
    EXPECT_EQ(info.at("XpgLcCtype"), "de_DE.ISO-8859-1");
    EXPECT_EQ(info.at("InitialXpgLcCtype"), "C");
    EXPECT_EQ(info.at("XpgEnvLang"), "de_DE.ISO-8859-1");
    EXPECT_EQ(info.at("XpgEncoding"), "ISO-8859-1");
    EXPECT_EQ(info.count("XpgLcIdentification"), 1u);
}

TEST(startup, c_user)
{
    SCENARIO("c_user");
    initLcMgmtSystem();
    EXPECT_EQ(QxLcUtil::getLcStatus(), 0);
    EXPECT_EQ(setting().base_locale, "C");
    std::vector<std::string> expected(6, "en_US_POSIX");
    expected[QxLocale::lc_messages] = "en_US";
    EXPECT_EQ(system_names(), expected);
    EXPECT_EQ(setting().xpg_encoding, "ANSI_X3.4-1968");
    EXPECT_EQ(setting().terminal_encoding, "UTF-8");
    EXPECT_TRUE(setting().uniform);
    EXPECT_EQ(env("LANG"), "C");
    EXPECT_EQ(env("LC_NUMERIC"), "<unset>");
}

TEST(startup, locale_libc_lacks)
{
    SCENARIO("locale_libc_lacks");
    // The standard library refuses a locale that libc lacks, until start-up rewrites LANG.
    EXPECT_FALSE(lcmgmt::is_std_locale_valid());
    initLcMgmtSystem();
    EXPECT_TRUE(lcmgmt::is_std_locale_valid());
    ::setenv("LANG", "xx_XX.UTF-8", 1);
    ::setenv("LC_TIME", "xx_XX.UTF-8", 1);
    EXPECT_FALSE(lcmgmt::is_std_locale_valid());
    lcmgmt::fix_invalid_std_locale();
    EXPECT_TRUE(lcmgmt::is_std_locale_valid());
    EXPECT_EQ(env("LC_TIME"), "<unset>");
    // libc falls back to "C" without complaint, so as far as the library can tell all is well.
    EXPECT_EQ(QxLcUtil::getLcStatus(), 0);
    EXPECT_EQ(setting().target_env[detail::lang_index], "C");
    EXPECT_EQ(env("LANG"), "C");
}

TEST(startup, locale_the_registry_cannot_place)
{
    SCENARIO("locale_the_registry_cannot_place");
    initLcMgmtSystem();
    EXPECT_EQ(setting().xpg_current[0], "qx_QQ.UTF-8") << "the test locale was not generated";
    EXPECT_EQ(QxLcUtil::getLcStatus(), 3);
    EXPECT_EQ(QxLcUtil::getInitWarningMsg(), "Invalid locale name.");
    EXPECT_EQ(QxLcUtil::getInitStatusMsg(), "Corvane locale management system initialized.");
    EXPECT_EQ(setting().base_locale, "C");
    EXPECT_EQ(QxLocale::system().getName(QxLocale::lc_ctype), "en_US_POSIX");
    EXPECT_EQ(QxLocale::system().getName(QxLocale::lc_messages), "en_US");
    EXPECT_EQ(setting().terminal_encoding, "UTF-8");
    EXPECT_EQ(env("LANG"), "C");
}

TEST(startup, french_messages_in_english)
{
    SCENARIO("french_messages_in_english");
    initLcMgmtSystem();
    EXPECT_EQ(setting().resolved[QxLocale::lc_messages].first, "fr_FR");
    EXPECT_EQ(setting().resolved[QxLocale::lc_ctype].first, "en_US");
    EXPECT_FALSE(setting().uniform);
    EXPECT_EQ(setting().target_env[QxLocale::lc_messages], "fr_FR");
    EXPECT_EQ(setting().target_env[QxLocale::lc_numeric], "C");
    EXPECT_EQ(env("LC_MESSAGES"), "fr_FR");
    EXPECT_EQ(env("LC_NUMERIC"), "C");
    EXPECT_EQ(env("LANG"), "en_US.UTF-8");
    EXPECT_EQ(QxLocale::global().getName(QxLocale::lc_messages), "fr_FR");
    EXPECT_EQ(std::get<std::string>(QxLocale::system().getLocaleData(QxLcOptDataCtx::termencoding)), "UTF-8");
}

TEST(startup, lc_all_set)
{
    SCENARIO("lc_all_set");
    initLcMgmtSystem();
    EXPECT_EQ(env("LC_ALL"), "<unset>");
    EXPECT_EQ(env("LANG"), "de_DE.UTF-8");
    EXPECT_EQ(env("LC_NUMERIC"), "C");
    EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "de_DE.UTF-8");
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
    EXPECT_EQ(QxLocale::system().getName(QxLocale::lc_collate), "de_DE");
}

TEST(startup, database_option_turns_localisation_off)
{
    SCENARIO("database_option_turns_localisation_off");
    initLcMgmtSystem();
    EXPECT_EQ(setting().l10n_state, 2);
    EXPECT_TRUE(logged("QxLocaleCtx::initLocaleMgmt - XML locale database was loaded."));
    // The option takes effect when localisation is turned off: messages go to "C", not to the
    // user's German.
    EXPECT_EQ(setting().messages_target, "");
    disable_l10n_resource();
    EXPECT_TRUE(logged("QxLocaleCtx::QxLocaleCtx::disable_l10n_rsc - L10n was disabled."));
    EXPECT_EQ(setting().messages_target, "C");
    EXPECT_EQ(env("LC_MESSAGES"), "C");
    EXPECT_EQ(QxLocale::global().getName(QxLocale::lc_messages), "en_US");
}

TEST(startup, control_on_locks_the_global_locale)
{
    SCENARIO("control_on_locks_the_global_locale");
    initLcMgmtSystem();
    EXPECT_EQ(locale_context().l10n_control, 1);
    const auto before = QxLcUtil::getEventLog().size();
    change_global_locale(*QxLocale::createLocale("en_US"));
    EXPECT_TRUE(logged("QxLocaleCtx::QxLocaleCtx::change_current_locale - No operation was performed."));
    EXPECT_EQ(QxLcUtil::getEventLog().size(), before + 1);
    // The experimental setter ignores the lock.
    EXPECT_TRUE(experimental::set_global_locale("ja_JP"));
    EXPECT_EQ(QxLocale::global().getName(QxLocale::lc_ctype), "ja_JP");
    EXPECT_EQ(QxLocale::global().getName(QxLocale::lc_numeric), "en_US_POSIX");
    EXPECT_EQ(QxLocale::global().getEncoding(), "UTF-8");
    EXPECT_TRUE(get_l10n_resource_status());
}

TEST(startup, control_off_disables_messages)
{
    SCENARIO("control_off_disables_messages");
    initLcMgmtSystem();
    EXPECT_EQ(locale_context().l10n_control, 2);
    EXPECT_FALSE(get_l10n_resource_status());
    EXPECT_EQ(QxLocale::global().getName(QxLocale::lc_messages), "en_US");
    EXPECT_EQ(QxLocale::global().getName(QxLocale::lc_ctype), "de_DE");
    const jvm_init_context jvm = get_javavm_init_context();
    EXPECT_EQ(jvm.display_language, "en");
    EXPECT_EQ(jvm.display_territory, "US");
    EXPECT_EQ(jvm.format_language, "de");
    EXPECT_EQ(jvm.format_territory, "DE");
    EXPECT_FALSE(set_lc_messages("ja_JP"));
}

TEST(startup, control_value_with_a_blank_counts_as_unset)
{
    SCENARIO("control_value_with_a_blank_counts_as_unset");
    initLcMgmtSystem();
    EXPECT_EQ(locale_context().l10n_control, 0);
    EXPECT_EQ(locale_context().global_locked, 0);
}

TEST(startup, database_directory_without_a_database)
{
    SCENARIO("database_directory_without_a_database");
    initLcMgmtSystem();
    EXPECT_EQ(QxLcUtil::getLcStatus(), 0);
    EXPECT_NE(QxLcUtil::getInitWarningMsg().find("Failed to open file "), std::string::npos);
    EXPECT_TRUE(logged("QxLocaleCtx::initLocaleMgmt::parseLcData - Failed to open the XML locale database."));
    EXPECT_TRUE(logged("get_lcdata_path - XML locale data path was retrieved from QXLOCALE_LCDATA_PATH."));
    const auto paths = QxLcUtil::getDataPathNames();
    ASSERT_EQ(paths.size(), 1u);
    EXPECT_EQ(paths.at("xml_locale_database_path"), env("QXI18N_EXPECTED_PATH"));
}

TEST(startup, broken_database_keeps_what_came_before)
{
    SCENARIO("broken_database_keeps_what_came_before");
    initLcMgmtSystem();
    EXPECT_EQ(QxLcUtil::getLcStatus(), 0);
    EXPECT_NE(QxLcUtil::getInitWarningMsg().find("XML Parse error"), std::string::npos)
        << QxLcUtil::getInitWarningMsg();
    EXPECT_TRUE(logged("QxLocaleCtx::initLocaleMgmt::parseLcData - invalid XML locale database."));
    EXPECT_EQ(QxLocale::createLocale("qxtest_german")->getName(QxLocale::lc_ctype), "de_DE");
    EXPECT_THROW(QxLocale::createLocale("qxtest_french"), QxLcInvLcName);
}

TEST(startup, racing_threads_start_once)
{
    SCENARIO("racing_threads_start_once");
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([] { initLcMgmtSystem(); });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(count_logged("QxLocaleCtx::initLocaleMgmt - LcMgmt initialization has started."), 1u);
    EXPECT_EQ(QxLcUtil::getLcStatus(), 0);
}

TEST(startup, messages_state_machine)
{
    SCENARIO("messages_state_machine");
    EXPECT_EQ(QxLcUtil::getLcStatus(), 2);
    EXPECT_EQ(QxLcUtil::getInitStatusMsg(), "Corvane locale management system not initialized.");
    initLcMgmtSystem();
    const QxLocale& before = QxLocale::global();
    EXPECT_FALSE(set_lc_messages("de_DE"));
    EXPECT_TRUE(logged("QxLocaleCtx::QxLocaleCtx::set_lc_messages - Provided locale is same as current locale"));
    EXPECT_THROW(set_lc_messages("xx_YY"), QxLcInvLcName);
    EXPECT_TRUE(logged("QxLocaleCtx::QxLocaleCtx::set_lc_messages - No operation was performed"));
    EXPECT_TRUE(set_lc_messages("ja_JP"));
    EXPECT_EQ(QxLocale::global().getName(QxLocale::lc_messages), "ja_JP");
    EXPECT_EQ(before.getName(QxLocale::lc_messages), "de_DE");  // old references keep their values
    EXPECT_FALSE(set_lc_messages("fr_FR"));
    EXPECT_TRUE(logged("QxLocaleCtx::QxLocaleCtx::set_lc_messages - No operation was performed."));
    EXPECT_FALSE(get_l10n_resource_status());
}

TEST(startup, disabling_english_messages_pushes_nothing)
{
    SCENARIO("disabling_english_messages_pushes_nothing");
    initLcMgmtSystem();
    const std::size_t depth = locale_context().locale_stack.size();
    disable_l10n_resource();
    EXPECT_FALSE(get_l10n_resource_status());
    EXPECT_EQ(locale_context().locale_stack.size(), depth);
    EXPECT_TRUE(logged("QxLocaleCtx::QxLocaleCtx::disable_l10n_rsc - No need to perform disable operation."));
    disable_l10n_resource();
    EXPECT_TRUE(logged("QxLocaleCtx::QxLocaleCtx::disable_l10n_rsc - No operation was performed."));
}

TEST(startup, english_messages_change_turns_localisation_off)
{
    SCENARIO("english_messages_change_turns_localisation_off");
    initLcMgmtSystem();
    const jvm_init_context same = get_javavm_init_context();
    EXPECT_EQ(same.language, "ja");
    EXPECT_EQ(same.territory, "JP");
    EXPECT_EQ(same.format_language, "");
    EXPECT_EQ(same.display_language, "");
    EXPECT_EQ(same.encoding, "UTF-8");
    change_global_locale(*QxLocale::createLocale("en_US"));
    EXPECT_FALSE(get_l10n_resource_status());
    EXPECT_EQ(QxLocale::global().getName(QxLocale::lc_messages), "en_US");
    EXPECT_EQ(QxLocale::global().getName(QxLocale::lc_ctype), "ja_JP");
    // The user had no messages locale of their own, so the environment has none to restore.
    EXPECT_EQ(env("LC_MESSAGES"), "<unset>");
    EXPECT_TRUE(logged("QxLocaleCtx::QxLocaleCtx::change_current_locale - Locale setting was changed to disable L10n."));
    change_global_locale(*QxLocale::createLocale("de_DE"));
    EXPECT_TRUE(logged("QxLocaleCtx::QxLocaleCtx::change_current_locale - No operation was performed."));
}

TEST(startup, initialize_sets_the_zone_directory_once)
{
    SCENARIO("initialize_sets_the_zone_directory_once");
    initialize();
    EXPECT_EQ(env("ICU_TIMEZONE_FILES_DIR"), env("QXI18N_EXPECTED_TZ"));
    ::setenv("ICU_TIMEZONE_FILES_DIR", "/changed", 1);
    initialize();
    EXPECT_EQ(env("ICU_TIMEZONE_FILES_DIR"), "/changed");
}

}  // namespace

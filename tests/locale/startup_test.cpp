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
using strings = std::vector<std::string>;

// The values of some variables, "<unset>" for those that are not set.
strings env(std::initializer_list<const char*> names)
{
    strings values;
    for (const char* name : names)
        values.push_back(std::getenv(name) ? std::getenv(name) : "<unset>");
    return values;
}

// Runs a scenario only in the process CTest made for it.
class startup : public testing::Test {
protected:
    void SetUp() override
    {
        const std::string scenario = testing::UnitTest::GetInstance()->current_test_info()->name();
        if (env({"QXI18N_SCENARIO"}) != strings{scenario})
            GTEST_SKIP() << "runs only as its own CTest entry (QXI18N_SCENARIO=" << scenario << ")";
    }
};

std::size_t count_logged(const std::string& entry)
{
    const auto log = QxLcUtil::getEventLog();
    return static_cast<std::size_t>(std::count(log.begin(), log.end(), entry));
}

bool logged(const std::string& entry) { return count_logged(entry) > 0; }

// Every category's name, ctype first, as a locale holds them.
strings names_of(const QxLocale& locale)
{
    strings names;
    for (int c = QxLocale::lc_ctype; c <= QxLocale::lc_messages; ++c)
        names.push_back(locale.getName(static_cast<QxLocale::LcCategory>(c)));
    return names;
}

std::string terminal_of(const QxLocale& locale)
{
    return std::get<std::string>(locale.getLocaleData(QxLcOptDataCtx::termencoding));
}

const lcmgmt::system_setting_context& setting() { return locale_context().system_setting; }

const std::string initialized = "Corvane locale management system initialized.";
const std::string database_loaded = "QxLocaleCtx::initLocaleMgmt - XML locale database was loaded.";
const std::string change_source = "QxLocaleCtx::QxLocaleCtx::change_current_locale - ";
const std::string change_refused = change_source + "No operation was performed.";
const std::string posix = "en_US_POSIX";

TEST_F(startup, german_latin1_user)
{
    initLcMgmtSystem();
    EXPECT_EQ(QxLcUtil::getLcStatus(), 0) << QxLcUtil::getInitWarningMsg();
    EXPECT_EQ(names_of(QxLocale::system()), strings(6, "de_DE"));
    EXPECT_EQ(QxLocale::system().getEncoding(), "UTF-8");
    EXPECT_EQ(terminal_of(QxLocale::system()), "ISO-8859-1");
    EXPECT_EQ(env({"LC_NUMERIC", "LANG"}), (strings{"C", "de_DE.ISO-8859-1"}));
    EXPECT_EQ(names_of(QxLocale::global()), (strings{"de_DE", "de_DE", "de_DE", posix, "de_DE", "de_DE"}));
    EXPECT_TRUE(logged(database_loaded));
    EXPECT_EQ(QxLcUtil::getInitStatusMsg(), initialized);
    EXPECT_TRUE(lcmgmt::is_std_locale_valid());
    // The process's own numbers follow "C" after start-up.
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
    const auto original = lcmgmt::get_original_user_locale_setting();
    EXPECT_EQ(original.encoding, "ISO-8859-1");
    ASSERT_FALSE(original.user_categories.empty());
    EXPECT_EQ(original.user_categories.front(), std::make_pair(int{LC_CTYPE}, std::string("de_DE.ISO-8859-1")));
    const auto user_lang = std::make_pair(std::string("LANG"), std::string("de_DE.ISO-8859-1"));
    EXPECT_NE(std::find(original.user_environment.begin(), original.user_environment.end(), user_lang),
              original.user_environment.end());
    const auto info = QxLcUtil::getLocaleInformation();
    EXPECT_EQ(info.at("XpgLcCtype"), "de_DE.ISO-8859-1");
    EXPECT_EQ(info.at("InitialXpgLcCtype"), "C");
    EXPECT_EQ(info.at("XpgEnvLang"), "de_DE.ISO-8859-1");
    EXPECT_EQ(info.at("XpgEncoding"), "ISO-8859-1");
    EXPECT_EQ(info.count("XpgLcIdentification"), 1u);
}

TEST_F(startup, c_user)
{
    initLcMgmtSystem();
    EXPECT_EQ(QxLcUtil::getLcStatus(), 0);
    EXPECT_EQ(setting().base_locale, "C");
    EXPECT_EQ(names_of(QxLocale::system()), (strings{posix, posix, posix, posix, posix, "en_US"}));
    EXPECT_EQ(setting().xpg_encoding, "ANSI_X3.4-1968");
    EXPECT_EQ(setting().terminal_encoding, "UTF-8");
    EXPECT_TRUE(setting().uniform);
    EXPECT_EQ(env({"LANG", "LC_NUMERIC"}), (strings{"C", "<unset>"}));
}

TEST_F(startup, locale_libc_lacks)
{
    // The standard library refuses a locale that libc lacks, until start-up rewrites LANG.
    EXPECT_FALSE(lcmgmt::is_std_locale_valid());
    initLcMgmtSystem();
    EXPECT_TRUE(lcmgmt::is_std_locale_valid());
    ::setenv("LANG", "xx_XX.UTF-8", 1);
    ::setenv("LC_TIME", "xx_XX.UTF-8", 1);
    EXPECT_FALSE(lcmgmt::is_std_locale_valid());
    lcmgmt::fix_invalid_std_locale();
    EXPECT_TRUE(lcmgmt::is_std_locale_valid());
    // libc falls back to "C" without complaint, so as far as the library can tell all is well.
    EXPECT_EQ(QxLcUtil::getLcStatus(), 0);
    EXPECT_EQ(setting().target_env[detail::lang_index], "C");
    EXPECT_EQ(env({"LC_TIME", "LANG"}), (strings{"<unset>", "C"}));
}

TEST_F(startup, locale_the_registry_cannot_place)
{
    initLcMgmtSystem();
    EXPECT_EQ(setting().xpg_current[0], "qx_QQ.UTF-8") << "the test locale was not generated";
    EXPECT_EQ(QxLcUtil::getLcStatus(), 3);
    EXPECT_EQ(QxLcUtil::getInitWarningMsg(), "Invalid locale name.");
    EXPECT_EQ(QxLcUtil::getInitStatusMsg(), initialized);
    EXPECT_EQ(setting().base_locale, "C");
    EXPECT_EQ(QxLocale::system().getName(QxLocale::lc_ctype), posix);
    EXPECT_EQ(QxLocale::system().getName(QxLocale::lc_messages), "en_US");
    EXPECT_EQ(setting().terminal_encoding, "UTF-8");
    EXPECT_EQ(env({"LANG"}), strings{"C"});
}

TEST_F(startup, french_messages_in_english)
{
    initLcMgmtSystem();
    EXPECT_EQ(setting().resolved[QxLocale::lc_messages].first, "fr_FR");
    EXPECT_EQ(setting().resolved[QxLocale::lc_ctype].first, "en_US");
    EXPECT_FALSE(setting().uniform);
    EXPECT_EQ(setting().target_env[QxLocale::lc_messages], "fr_FR");
    EXPECT_EQ(setting().target_env[QxLocale::lc_numeric], "C");
    EXPECT_EQ(env({"LC_MESSAGES", "LC_NUMERIC", "LANG"}), (strings{"fr_FR", "C", "en_US.UTF-8"}));
    EXPECT_EQ(QxLocale::global().getName(QxLocale::lc_messages), "fr_FR");
    EXPECT_EQ(terminal_of(QxLocale::system()), "UTF-8");
}

TEST_F(startup, lc_all_set)
{
    initLcMgmtSystem();
    EXPECT_EQ(env({"LC_ALL", "LANG", "LC_NUMERIC"}), (strings{"<unset>", "de_DE.UTF-8", "C"}));
    EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "de_DE.UTF-8");
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
    EXPECT_EQ(QxLocale::system().getName(QxLocale::lc_collate), "de_DE");
}

TEST_F(startup, database_option_turns_localisation_off)
{
    initLcMgmtSystem();
    EXPECT_EQ(setting().l10n_state, 2);
    EXPECT_TRUE(logged(database_loaded));
    // The option takes effect when localisation is turned off: messages go to "C", not to the
    // user's German.
    EXPECT_EQ(setting().messages_target, "");
    disable_l10n_resource();
    EXPECT_TRUE(logged("QxLocaleCtx::QxLocaleCtx::disable_l10n_rsc - L10n was disabled."));
    EXPECT_EQ(setting().messages_target, "C");
    EXPECT_EQ(env({"LC_MESSAGES"}), strings{"C"});
    EXPECT_EQ(QxLocale::global().getName(QxLocale::lc_messages), "en_US");
}

TEST_F(startup, control_on_locks_the_global_locale)
{
    initLcMgmtSystem();
    EXPECT_EQ(locale_context().l10n_control, 1);
    const auto before = QxLcUtil::getEventLog().size();
    change_global_locale(*QxLocale::createLocale("en_US"));
    EXPECT_TRUE(logged(change_refused));
    EXPECT_EQ(QxLcUtil::getEventLog().size(), before + 1);
    // The experimental setter ignores the lock.
    EXPECT_TRUE(experimental::set_global_locale("ja_JP"));
    EXPECT_EQ(QxLocale::global().getName(QxLocale::lc_ctype), "ja_JP");
    EXPECT_EQ(QxLocale::global().getName(QxLocale::lc_numeric), posix);
    EXPECT_EQ(QxLocale::global().getEncoding(), "UTF-8");
    EXPECT_TRUE(get_l10n_resource_status());
}

TEST_F(startup, control_off_disables_messages)
{
    initLcMgmtSystem();
    EXPECT_EQ(locale_context().l10n_control, 2);
    EXPECT_FALSE(get_l10n_resource_status());
    EXPECT_EQ(QxLocale::global().getName(QxLocale::lc_messages), "en_US");
    EXPECT_EQ(QxLocale::global().getName(QxLocale::lc_ctype), "de_DE");
    const jvm_init_context jvm = get_javavm_init_context();
    EXPECT_EQ((strings{jvm.display_language, jvm.display_territory, jvm.format_language, jvm.format_territory}),
              (strings{"en", "US", "de", "DE"}));
    EXPECT_FALSE(set_lc_messages("ja_JP"));
}

TEST_F(startup, control_value_with_a_blank_counts_as_unset)
{
    initLcMgmtSystem();
    EXPECT_EQ(locale_context().l10n_control, 0);
    EXPECT_EQ(locale_context().global_locked, 0);
}

TEST_F(startup, database_directory_without_a_database)
{
    initLcMgmtSystem();
    EXPECT_EQ(QxLcUtil::getLcStatus(), 0);
    EXPECT_NE(QxLcUtil::getInitWarningMsg().find("Failed to open file "), std::string::npos);
    EXPECT_TRUE(logged("QxLocaleCtx::initLocaleMgmt::parseLcData - Failed to open the XML locale database."));
    EXPECT_TRUE(logged("get_lcdata_path - XML locale data path was retrieved from QXLOCALE_LCDATA_PATH."));
    const auto paths = QxLcUtil::getDataPathNames();
    ASSERT_EQ(paths.size(), 1u);
    EXPECT_EQ(strings{paths.at("xml_locale_database_path")}, env({"QXI18N_EXPECTED_PATH"}));
}

TEST_F(startup, broken_database_keeps_what_came_before)
{
    initLcMgmtSystem();
    EXPECT_EQ(QxLcUtil::getLcStatus(), 0);
    EXPECT_NE(QxLcUtil::getInitWarningMsg().find("XML Parse error"), std::string::npos)
        << QxLcUtil::getInitWarningMsg();
    EXPECT_TRUE(logged("QxLocaleCtx::initLocaleMgmt::parseLcData - invalid XML locale database."));
    EXPECT_EQ(QxLocale::createLocale("qxtest_german")->getName(QxLocale::lc_ctype), "de_DE");
    EXPECT_THROW(QxLocale::createLocale("qxtest_french"), QxLcInvLcName);
}

TEST_F(startup, racing_threads_start_once)
{
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([] { initLcMgmtSystem(); });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(count_logged("QxLocaleCtx::initLocaleMgmt - LcMgmt initialization has started."), 1u);
    EXPECT_EQ(QxLcUtil::getLcStatus(), 0);
}

TEST_F(startup, messages_state_machine)
{
    const std::string source = "QxLocaleCtx::QxLocaleCtx::set_lc_messages - ";
    EXPECT_EQ(QxLcUtil::getLcStatus(), 2);
    EXPECT_EQ(QxLcUtil::getInitStatusMsg(), "Corvane locale management system not initialized.");
    initLcMgmtSystem();
    const QxLocale& before = QxLocale::global();
    EXPECT_FALSE(set_lc_messages("de_DE"));
    EXPECT_TRUE(logged(source + "Provided locale is same as current locale"));
    EXPECT_THROW(set_lc_messages("xx_YY"), QxLcInvLcName);
    EXPECT_TRUE(logged(source + "No operation was performed"));
    EXPECT_TRUE(set_lc_messages("ja_JP"));
    EXPECT_EQ(QxLocale::global().getName(QxLocale::lc_messages), "ja_JP");
    EXPECT_EQ(before.getName(QxLocale::lc_messages), "de_DE");  // old references keep their values
    EXPECT_FALSE(set_lc_messages("fr_FR"));
    EXPECT_TRUE(logged(source + "No operation was performed."));
    EXPECT_FALSE(get_l10n_resource_status());
}

TEST_F(startup, disabling_english_messages_pushes_nothing)
{
    initLcMgmtSystem();
    const std::size_t depth = locale_context().locale_stack.size();
    disable_l10n_resource();
    EXPECT_FALSE(get_l10n_resource_status());
    EXPECT_EQ(locale_context().locale_stack.size(), depth);
    EXPECT_TRUE(logged("QxLocaleCtx::QxLocaleCtx::disable_l10n_rsc - No need to perform disable operation."));
    disable_l10n_resource();
    EXPECT_TRUE(logged("QxLocaleCtx::QxLocaleCtx::disable_l10n_rsc - No operation was performed."));
}

TEST_F(startup, english_messages_change_turns_localisation_off)
{
    initLcMgmtSystem();
    const jvm_init_context same = get_javavm_init_context();
    EXPECT_EQ((strings{same.language, same.territory, same.format_language, same.display_language, same.encoding}),
              (strings{"ja", "JP", "", "", "UTF-8"}));
    change_global_locale(*QxLocale::createLocale("en_US"));
    EXPECT_FALSE(get_l10n_resource_status());
    EXPECT_EQ(QxLocale::global().getName(QxLocale::lc_messages), "en_US");
    EXPECT_EQ(QxLocale::global().getName(QxLocale::lc_ctype), "ja_JP");
    // The user had no messages locale of their own, so the environment has none to restore.
    EXPECT_EQ(env({"LC_MESSAGES"}), strings{"<unset>"});
    EXPECT_TRUE(logged(change_source + "Locale setting was changed to disable L10n."));
    change_global_locale(*QxLocale::createLocale("de_DE"));
    EXPECT_TRUE(logged(change_refused));
}

TEST_F(startup, initialize_sets_the_zone_directory_once)
{
    initialize();
    EXPECT_EQ(env({"ICU_TIMEZONE_FILES_DIR"}), env({"QXI18N_EXPECTED_TZ"}));
    ::setenv("ICU_TIMEZONE_FILES_DIR", "/changed", 1);
    initialize();
    EXPECT_EQ(env({"ICU_TIMEZONE_FILES_DIR"}), strings{"/changed"});
}

}  // namespace

// `qxi18n info`: the tool's report of start-up, run under chosen LANG and QXLOCALE_ settings.
#include "cli_test_support.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace qx_cli_test;

using variables = std::vector<std::pair<std::string, const char*>>;

// Sets variables for the children of one test and puts the old values back afterwards.
class environment_guard {
public:
    explicit environment_guard(variables values)
    {
        for (const char* name : {"LC_ALL", "LC_CTYPE", "LC_MESSAGES", "LC_NUMERIC", "LANG", "QXLOCALE_LCDATA_PATH",
                                 "QXLOCALE_L10N_CONTROL"})
            values.emplace_back(name, nullptr);
        for (const auto& [name, value] : values) {
            if (saved_.count(name) != 0)
                continue;
            const char* old = std::getenv(name.c_str());
            saved_.emplace(name, old ? std::optional<std::string>(old) : std::nullopt);
            if (value)
                ::setenv(name.c_str(), value, 1);
            else
                ::unsetenv(name.c_str());
        }
    }
    ~environment_guard()
    {
        for (const auto& [name, value] : saved_) {
            if (value)
                ::setenv(name.c_str(), value->c_str(), 1);
            else
                ::unsetenv(name.c_str());
        }
    }

private:
    std::map<std::string, std::optional<std::string>> saved_;
};

TEST(info, reports_the_resolved_locales_of_the_user_setting)
{
    const environment_guard env(variables{{"LANG", "de_DE.ISO-8859-1"}});
    const run_result r = run_tool({"info"});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto blocks = parse_blocks(r.out);
    ASSERT_EQ(blocks.count("system locale"), 1u) << r.out;
    EXPECT_EQ(blocks.at("status").at("status"), "0");
    EXPECT_EQ(blocks.at("status").at("message"), "Corvane locale management system initialized.");
    EXPECT_EQ(blocks.at("system locale").at("ctype"), "de_DE");
    EXPECT_EQ(blocks.at("system locale").at("encoding"), "UTF-8");
    EXPECT_EQ(blocks.at("system locale").at("terminal encoding"), "ISO-8859-1");
    EXPECT_EQ(blocks.at("global locale").at("numeric"), "en_US_POSIX");
    EXPECT_EQ(blocks.at("user setting").at("XpgEnvLang"), "de_DE.ISO-8859-1");
    EXPECT_EQ(blocks.at("user setting").at("XpgEncoding"), "ISO-8859-1");
    EXPECT_NE(r.out.find("QxLocaleCtx::initLocaleMgmt - XML locale database was loaded."), std::string::npos);
}

TEST(info, shows_a_missing_database_as_a_warning_and_goes_on)
{
    const environment_guard env(variables{{"LANG", "C"}, {"QXLOCALE_LCDATA_PATH", scratch_dir().c_str()}});
    const run_result r = run_tool({"info"});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto blocks = parse_blocks(r.out);
    EXPECT_EQ(blocks.at("status").at("warning"), "Failed to open file " + scratch_dir() + "/lcdata.xml.");
    EXPECT_EQ(blocks.at("data paths").at("xml_locale_database_path"), scratch_dir() + "/lcdata.xml");
    EXPECT_EQ(blocks.at("system locale").at("messages"), "en_US");
}

TEST(info, prints_the_same_as_json)
{
    const environment_guard env(variables{{"LANG", "en_US.UTF-8"}, {"QXLOCALE_L10N_CONTROL", "off"}});
    const run_result r = run_tool({"info", "--json"});
    ASSERT_EQ(r.status, 0) << r.err;
    ASSERT_FALSE(r.out.empty());
    EXPECT_EQ(r.out.front(), '{');
    for (const char* expected : {"\"status\": {", "\"localisation\": \"off\"", "\"messages\": \"en_US\"",
                                 "\"event log\": [", "\"XpgEnvLang\": \"en_US.UTF-8\""})
        EXPECT_NE(r.out.find(expected), std::string::npos) << expected << "\n" << r.out;
    int depth = 0;
    bool in_string = false;
    for (std::size_t i = 0; i < r.out.size(); ++i) {
        const char c = r.out[i];
        if (in_string) {
            if (c == '\\')
                ++i;
            else if (c == '"')
                in_string = false;
        } else if (c == '"') {
            in_string = true;
        } else if (c == '{' || c == '[') {
            ++depth;
        } else if (c == '}' || c == ']') {
            ASSERT_GT(depth, 0);
            --depth;
        }
    }
    EXPECT_EQ(depth, 0);
    EXPECT_FALSE(in_string);
}

}  // namespace

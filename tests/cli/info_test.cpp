// `qxi18n info`: the tool's report of start-up, run under chosen LANG and QXLOCALE_ settings.
#include "cli_test_support.hpp"

#include <tuple>

namespace {

using namespace qx_cli_test;

// The child sees only the locale settings given here.
scoped_env locale_settings(const scoped_env::values& given)
{
    scoped_env::values all;
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LC_MESSAGES", "LC_NUMERIC", "LANG", "QXLOCALE_LCDATA_PATH",
                             "QXLOCALE_L10N_CONTROL"})
        all.emplace_back(name, std::nullopt);
    all.insert(all.end(), given.begin(), given.end());
    return scoped_env(all);
}

// The resolved locales of the user's setting, and a missing database shown as a warning.
TEST(info, reports_start_up_under_the_user_setting)
{
    using checks = std::vector<std::tuple<std::string, std::string, std::string>>;  // block, label, value
    const std::string missing = scratch_dir() + "/lcdata.xml";
    const std::pair<scoped_env::values, checks> cases[] = {
        {{{"LANG", "de_DE.ISO-8859-1"}},
         {{"status", "status", "0"}, {"status", "message", "Corvane locale management system initialized."},
          {"system locale", "ctype", "de_DE"}, {"system locale", "encoding", "UTF-8"},
          {"system locale", "terminal encoding", "ISO-8859-1"}, {"global locale", "numeric", "en_US_POSIX"},
          {"user setting", "XpgEnvLang", "de_DE.ISO-8859-1"}, {"user setting", "XpgEncoding", "ISO-8859-1"}}},
        {{{"LANG", "C"}, {"QXLOCALE_LCDATA_PATH", scratch_dir()}},
         {{"status", "warning", "Failed to open file " + missing + "."}, {"data paths", "xml_locale_database_path", missing},
          {"system locale", "messages", "en_US"}}},
    };
    for (const auto& [settings, expected] : cases) {
        const scoped_env env = locale_settings(settings);
        const run_result r = run_tool({"info"});
        ASSERT_EQ(r.status, 0) << r.err;
        const auto blocks = parse_blocks(r.out);
        for (const auto& [block, label, value] : expected)
            EXPECT_TRUE(blocks.count(block) && blocks.at(block).count(label) && blocks.at(block).at(label) == value)
                << block << ": " << label << " should be " << value << " in\n" << r.out;
    }
}

// The same as one JSON object: the values are there and every bracket outside strings closes.
TEST(info, prints_the_same_as_json)
{
    const scoped_env env = locale_settings({{"LANG", "en_US.UTF-8"}, {"QXLOCALE_L10N_CONTROL", "off"}});
    const run_result r = run_tool({"info", "--json"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out.rfind("{\n", 0), 0u) << r.out;
    for (const char* expected : {"\"status\": {", "\"localisation\": \"off\"", "\"messages\": \"en_US\"",
                                 "QxLocaleCtx::initLocaleMgmt - XML locale database was loaded.",
                                 "\"XpgEnvLang\": \"en_US.UTF-8\""})
        EXPECT_NE(r.out.find(expected), std::string::npos) << expected << "\n" << r.out;
    int depth = 0;
    bool in_string = false;
    for (std::size_t i = 0; i < r.out.size() && depth >= 0; ++i) {
        const char c = r.out[i];
        if (in_string && c == '\\')
            ++i;
        else if (in_string || c == '"')
            in_string = (c == '"') != in_string;
        else
            depth += (c == '{' || c == '[') - (c == '}' || c == ']');
    }
    EXPECT_EQ(depth, 0);
    EXPECT_FALSE(in_string);
}

}  // namespace

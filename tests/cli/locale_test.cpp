// `qxi18n locale` end to end: the block shown for a name, refused names, usage, and the demo's section.
#include "cli_test_support.hpp"

namespace {

using namespace qx_cli_test;
using args = std::vector<std::string>;

TEST(CliLocale, ShowsWhatTheLibraryMakesOfEachName)
{
    const std::pair<std::string, fields> cases[] = {
        {"de_DE.UTF-8@euro", {{"ctype", "de_DE"}, {"messages", "de_DE"}, {"modifiers", "euro"}, {"encoding", "UTF-8"},
                              {"terminal input", "UTF-8"}, {"paper size", "A4"}, {"unit type", "SI"},
                              {"fallback chain", "de_DE -> de -> en"}}},
        {"C", {{"ctype", "en_US_POSIX"}, {"numeric", "en_US_POSIX"}, {"messages", "en_US"}, {"modifiers", "(none)"},
               {"encoding", "UTF-8"}, {"paper size", "other"}, {"unit type", "other"}, {"fallback chain", "en_US -> en"}}},
        {"ja_JP.eucjp", {{"collate", "ja_JP"}, {"encoding", "EUC-JP"}, {"JVM encoding", "EUC-JP"},
                         {"terminal output", "EUC-JP"}, {"fallback chain", "ja_JP -> ja -> en"}}},
        {"zh_HK", {{"time", "zh_HK"}, {"encoding", "Big5-HKSCS"}, {"default encoding", "Big5-HKSCS"}}},
        {"zh-Hans_CN", {{"monetary", "zh_CN"}, {"encoding", "GB2312"}, {"fallback chain", "zh_CN -> zh -> en"}}},
        {"zh_TW", {{"encoding", "Big5"}, {"JVM encoding", "MS950"}}},
        {"EN_gb", {{"ctype", "en_GB"}, {"unit type", "UK"}, {"fallback chain", "en_GB -> en"}}},
    };
    args call{"locale"};
    for (const auto& c : cases) call.push_back(c.first);
    const run_result r = run_tool(call);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "");
    const auto blocks = parse_blocks(r.out);
    EXPECT_EQ(blocks.size(), std::size(cases)) << r.out;
    for (const auto& [name, expected] : cases) {
        const auto block = blocks.find(name);
        ASSERT_NE(block, blocks.end()) << name << " missing from\n" << r.out;
        EXPECT_EQ(block->second.size(), 16u) << name;
        for (const auto& [label, value] : expected) {
            const auto got = block->second.find(label);
            EXPECT_TRUE(got != block->second.end() && got->second == value) << name << ": " << label << " should be " << value;
        }
    }
}

// A refused name is one line on stderr; the names around it are still shown.
TEST(CliLocale, RefusedNamesAreReportedAndSkipped)
{
    const run_result r = run_tool({"locale", "de_DE", "xx_YY", "de_DE.NOSUCHCODE", "", "ja_JP"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "qxi18n: locale: 'xx_YY': Invalid locale name. (fl:i18n:QxLcInvLcName, detail 'xx_YY')\n"
                     "qxi18n: locale: 'de_DE.NOSUCHCODE': Invalid locale name. (fl:i18n:QxLcInvLcName, detail 'NOSUCHCODE')\n"
                     "qxi18n: locale: '': Invalid argument (fl:i18n:QxLcInvLcArgument)\n");
    const auto blocks = parse_blocks(r.out);
    EXPECT_EQ(blocks.size(), 2u) << r.out;
    EXPECT_EQ(blocks.count("de_DE") + blocks.count("ja_JP"), 2u) << r.out;

    const run_result only_bad = run_tool({"locale", "xx_YY"});
    EXPECT_EQ(only_bad.status, 1);
    EXPECT_EQ(only_bad.out, "");
}

// --parse shows the grammar's parts as written, without canonicalising.
TEST(CliLocale, ParseShowsTheNamesParts)
{
    const run_result r = run_tool({"locale", "--parse", "zh-Hant_TW.Big5@a@b", "sl-rozaj-u-co-x-p1", "en_x_foo"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "qxi18n: locale: 'en_x_foo': Invalid locale name. (fl:i18n:QxLcInvLcName, detail 'en_x_foo')\n");
    const auto blocks = parse_blocks(r.out);
    const fields zh = blocks.at("zh-Hant_TW.Big5@a@b");
    EXPECT_EQ(zh.at("language"), "zh");
    EXPECT_EQ(zh.at("script"), "Hant");
    EXPECT_EQ(zh.at("territory"), "TW");
    EXPECT_EQ(zh.at("codeset"), "Big5");
    EXPECT_EQ(zh.at("modifiers"), "a b");
    const fields sl = blocks.at("sl-rozaj-u-co-x-p1");
    EXPECT_EQ(sl.at("variants"), "rozaj");
    EXPECT_EQ(sl.at("extensions"), "u=co");
    EXPECT_EQ(sl.at("private use"), "x: p1");
    EXPECT_EQ(sl.at("territory"), "(none)");
}

TEST(CliLocale, DemoSectionShowsGoodAndRefusedNames)
{
    const run_result r = run_tool({"demo"});
    ASSERT_EQ(r.status, 0) << r.err;
    const std::size_t section = r.out.find(". Locales\n");
    ASSERT_NE(section, std::string::npos) << r.out;
    const std::string text = r.out.substr(section);
    for (const char* expected : {"ja_JP.eucjp", "EUC-JP", "zh_HK -> zh -> en",
                                 "xx_YY              throws QxLcInvLcName (\"Invalid locale name.\", detail \"xx_YY\")"})
        EXPECT_NE(text.find(expected), std::string::npos) << expected << " not in\n" << text;
}

}  // namespace

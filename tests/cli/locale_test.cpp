// `qxi18n locale` end to end: the block shown for a name, refused names and the parts of --parse.
#include "cli_test_support.hpp"

namespace {

using namespace qx_cli_test;

// Each name's block holds what the library makes of it; a refused name is one line on stderr and
// the names around it are still shown.
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
    args call{"locale", "xx_YY"};
    for (const auto& c : cases) call.push_back(c.first);
    call.insert(call.end(), {"de_DE.NOSUCHCODE", ""});
    const run_result r = run_tool(call);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "qxi18n: locale: 'xx_YY': Invalid locale name. (fl:i18n:QxLcInvLcName, detail 'xx_YY')\n"
                     "qxi18n: locale: 'de_DE.NOSUCHCODE': Invalid locale name. (fl:i18n:QxLcInvLcName, detail 'NOSUCHCODE')\n"
                     "qxi18n: locale: '': Invalid argument (fl:i18n:QxLcInvLcArgument)\n");
    const auto blocks = parse_blocks(r.out);
    EXPECT_EQ(blocks.size(), std::size(cases)) << r.out;
    for (const auto& [name, expected] : cases) {
        const fields block = blocks.count(name) ? blocks.at(name) : fields();
        EXPECT_EQ(block.size(), 16u) << name;
        for (const auto& [label, value] : expected)
            EXPECT_TRUE(block.count(label) && block.at(label) == value) << name << ": " << label << " should be " << value;
    }
    expect_run({"locale", "xx_YY"}, 1, "", "qxi18n: locale: 'xx_YY': Invalid locale name.");
}

// --parse shows the grammar's parts as written, without canonicalising.
TEST(CliLocale, ParseShowsTheNamesParts)
{
    const run_result r = run_tool({"locale", "--parse", "zh-Hant_TW.Big5@a@b", "sl-rozaj-u-co-x-p1", "en_x_foo"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "qxi18n: locale: 'en_x_foo': Invalid locale name. (fl:i18n:QxLcInvLcName, detail 'en_x_foo')\n");
    const auto blocks = parse_blocks(r.out);
    EXPECT_EQ(blocks.at("zh-Hant_TW.Big5@a@b"), (fields{{"language", "zh"}, {"script", "Hant"}, {"territory", "TW"},
                                                        {"codeset", "Big5"}, {"modifiers", "a b"}, {"variants", "(none)"},
                                                        {"extensions", "(none)"}, {"private use", "(none)"}}));
    const fields sl = blocks.at("sl-rozaj-u-co-x-p1");
    EXPECT_EQ(sl.at("variants"), "rozaj");
    EXPECT_EQ(sl.at("extensions"), "u=co");
    EXPECT_EQ(sl.at("private use"), "x: p1");
    EXPECT_EQ(sl.at("territory"), "(none)");
}

}  // namespace

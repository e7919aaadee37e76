// `qxi18n encoding` end to end, and `qxi18n convert` with an empty encoding name.
#include "cli_test_support.hpp"

#include <unicode/ucnv.h>

#include <memory>
#include <tuple>

namespace {

using namespace qx_cli_test;

// ICU's name of the converter it opens for `name`, or "(none)".
std::string icu_converter(const std::string& name)
{
    UErrorCode ec = U_ZERO_ERROR;
    const std::unique_ptr<UConverter, decltype(&ucnv_close)> converter(ucnv_open(name.c_str(), &ec), ucnv_close);
    return U_SUCCESS(ec) ? ucnv_getName(converter.get(), &ec) : "(none)";
}

// An unknown name is one line on stderr; the names around it are still shown.
TEST(CliEncoding, ShowsEachNamesStandardIcuAndJvmNames)
{
    // name, standard name, supported, JVM name
    const std::tuple<std::string, std::string, std::string, std::string> cases[] = {
        {"Cp1252", "windows-1252", "yes", "Cp1252"},  {"1252", "windows-1252", "yes", "Cp1252"},
        {"shift-jis", "Shift_JIS", "yes", "MS932"},   {"eucjp", "EUC-JP", "yes", "EUC-JP"},
        // The JVM name of EUC-TW comes from the shipped locale database, which the tool loads.
        {"latin1", "ISO-8859-1", "yes", "ISO-8859-1"}, {"ibm-964_P110-1999", "EUC-TW", "yes", "x-EUC-TW"},
        {"TIS620", "windows-874", "yes", "MS874"},    {"ISO-2022-JP", "ISO-2022-JP", "no", "(none)"},
        {"ibm-37", "IBM037", "no", "(none)"},          {"Big5", "Big5", "yes", "MS950"},
    };
    args call{"encoding", "no-such-encoding"};
    for (const auto& c : cases) call.push_back(std::get<0>(c));
    call.push_back("");
    const run_result r = run_tool(call);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "qxi18n: encoding: 'no-such-encoding': unknown to the library and to ICU\n"
                     "qxi18n: encoding: '': unknown to the library and to ICU\n");
    const auto blocks = parse_blocks(r.out);
    EXPECT_EQ(blocks.size(), std::size(cases)) << r.out;
    for (const auto& [name, standard, supported, jvm] : cases) {
        const fields expected{{"standard name", standard}, {"supported", supported},
                              {"ICU converter", icu_converter(name)}, {"JVM name", jvm}};
        EXPECT_EQ(blocks.count(name) ? blocks.at(name) : fields(), expected) << name;
    }
}

// Before start-up the default encoding is the classic locale's UTF-8.
TEST(CliConvertDefault, EmptyNameIsTheDefaultEncoding)
{
    const std::string text = "caf\xC3\xA9 \xE2\x82\xAC\n", utf16 = icu_convert("UTF-16LE", "UTF-8", text);
    expect_run({"convert", "-f", "", "-t", "UTF-16LE"}, 0, utf16, "", text);
    expect_run({"convert", "-f", "UTF-16LE", "--to="}, 0, text, "", utf16);
}

}  // namespace

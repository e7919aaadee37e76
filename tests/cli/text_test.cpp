// `qxi18n text` end to end: every operation on texts where the choice of operation changes the
// answer, standard input, encodings and usage errors.
#include "cli_test_support.hpp"

#include <tuple>

namespace {

using namespace qx_cli_test;

args text(std::initializer_list<std::string> rest)
{
    args call{"text", "-e", "UTF-8"};
    call.insert(call.end(), rest);
    return call;
}

TEST(CliText, OperationsGiveTheLibrarysAnswers)
{
    const std::pair<args, std::string> cases[] = {
        {text({"upper", "straße", "abc"}), "STRASSE\nABC\n"},
        {text({"upper", "--locale", "tr_TR", "istanbul"}), "İSTANBUL\n"},
        {text({"lower", "--locale", "tr_TR", "I"}), "ı\n"},
        {text({"lower", "ÀÉ"}), "àé\n"},
        {text({"nfd", "é"}), "e\u0301\n"},
        {text({"nfc", "e\u0301"}), "é\n"},
        {text({"nfkc", "\uFB01"}), "fi\n"},
        {text({"nfkd", "\u00C5"}), "A\u030A\n"},
        {text({"strip-diacritics", "Ångström", "\uFB01"}), "Angstrom\n\uFB01\n"},
        {text({"compare", "Straße", "STRASSE", "--tag", "case-insensitive"}), "equal\n"},
        {text({"compare", "a", "B"}), "greater\n"},
        {text({"compare", "a", "B", "--mode", "1"}), "less\n"},
        {text({"compare", "é", "e\u0301", "--mode", "2"}), "equal\n"},
        {text({"compare", "\uFB01", "fi", "--tag", "compatibility"}), "equal\n"},
        {text({"compare", "\uFB01", "fi", "--tag", "normalized"}), "greater\n"},
        {text({"find", "STRASSE", "straße", "--tag", "case-insensitive"}), "0\n"},
        {text({"find", "x", "abc"}), "not found\n"},
        {text({"match", "a.c", "abc", "ABC", "a\nc"}), "match     abc\nno match  ABC\nmatch     a\nc\n"},
        {text({"match", "--mode", "1", "abc", "ABC"}), "match     ABC\n"},
        {text({"match", "--mode", "2", "é", "e\u0301"}), "match     e\u0301\n"},
        {text({"trim", "  a b  "}), "a b\n"},
        {text({"trim", "--set", "x", "--left", "xxaxx"}), "axx\n"},
        {text({"trim", "--set", "x", "--right", "xxaxx"}), "xxa\n"},
        {text({"classify", "A\u00A0\U0001D400"}),
         "U+0041  A  Lu  alpha alnum xdigit upper graph print\n"
         "U+00A0  \u00A0  Zs  print space blank\n"
         "U+1D400  \U0001D400  Lu  alpha alnum upper graph print\n"},
    };
    for (const auto& [call, expected] : cases) expect_run(call, 0, expected);
}

// Standard input is one text, or one subject per line for match. Latin-1 in and out: the text is
// decoded, transformed and encoded in the named encoding, and a character the output encoding
// lacks is an error, not a silent substitute.
TEST(CliText, ReadsStandardInputAndConvertsEncodings)
{
    expect_run(text({"upper"}), 0, "LINE ONE\nLINE TWO\n", "", "line one\nline two");
    expect_run(text({"match", "b+"}), 0, "match     bb\nno match  ab\nmatch     b\n", "", "bb\nab\nb");
    expect_run({"text", "-e", "ISO-8859-1", "upper"}, 0, "\xC9T\xC9\n", "", "\xE9t\xE9");
    expect_run({"text", "-e", "ISO-8859-1", "nfkd"}, 1, "", "qxi18n: text: ISO-8859-1 cannot hold the result (", "\xBD");
    expect_run(text({"upper"}), 1, "", "qxi18n: text: input that is not UTF-8 (", "\xFF");
}

TEST(CliText, BadUsageIsOneLineWithStatus)
{
    const std::string prefix = "qxi18n: text: ";
    const std::tuple<args, int, std::string> cases[] = {
        {{"text"}, 2, prefix + "missing operation"},
        {text({"frob"}), 2, prefix + "unknown operation 'frob'"},
        {text({"match", "--mode", "32", "a", "a"}), 2, prefix + "mode 32 is above 31 (Invalid argument error.)"},
        {text({"match", "--mode", "x", "a", "a"}), 2, prefix + "mode 'x' is not a number"},
        {text({"compare", "a"}), 2, prefix + "compare takes two texts, A and B"},
        {text({"find", "a", "b", "--tag", "compatibility"}), 2, prefix + "find has no tag 'compatibility'"},
        {text({"compare", "a", "b", "--tag", "nope"}), 2, prefix + "unknown tag 'nope'"},
        {text({"upper", "--set", "x", "a"}), 2, prefix + "option --set, --left and --right applies to trim only"},
        {text({"match"}), 2, prefix + "match takes a PATTERN"},
        {{"text", "-e", "no-such-encoding", "upper", "a"}, 2, prefix + "unknown encoding 'no-such-encoding'"},
        {text({"match", "(", "a"}), 1, prefix + "match: pattern '(': fl:i18n:RegexFailedObjectCreation"},
        {text({"match", "", "a"}), 1, prefix + "match: pattern '': fl:i18n:RegexInvalidArgument"},
    };
    for (const auto& [call, status, message] : cases) expect_run(call, status, "", message);
}

}  // namespace

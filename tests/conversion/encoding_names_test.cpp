// get_standard_encoding_name and is_supported_encoding: the table's spelling for every listed
// name, ICU's preferred name for the rest, checked against raw ICU over every name ICU knows.
// The table itself is internal, so this test links the library's objects.
#include "conversion/encoding_names.hpp"
#include "locale/locale_context.hpp"

#include <fl/i18n/encoding_names.hpp>

#include "conversion_test_support.hpp"

#include <tuple>

namespace {

using fl::i18n::get_standard_encoding_name;
using fl::i18n::lcmgmt::is_supported_encoding;

// The reference: ICU's MIME, IANA or WINDOWS name of what ucnv_open makes of `name`, else
// ICU's own name; empty when ICU cannot open it.
std::string icu_preferred_name(const char* name)
{
    const qx_test::icu_converter converter = qx_test::icu_open(name);
    if (!converter) return "";
    UErrorCode ec = U_ZERO_ERROR;
    const char* icu_name = ucnv_getName(converter.get(), &ec);
    for (const char* standard : {"MIME", "IANA", "WINDOWS"}) {
        UErrorCode standard_ec = U_ZERO_ERROR;
        const char* found = ucnv_getStandardName(icu_name, standard, &standard_ec);
        if (U_SUCCESS(standard_ec) && found != nullptr && *found != '\0') return found;
    }
    return icu_name;
}

// The third column: whether the table lists the name or what ICU makes of it.
TEST(get_standard_encoding_name, GivesTheTablesSpellingOrIcusPreferredName)
{
    const std::tuple<std::string, std::string, bool> cases[] = {
        {"Cp1252", "windows-1252", true}, {"1252", "windows-1252", true}, {"WINDOWS-1252", "windows-1252", true},
        {"utf8", "UTF-8", true}, {"eucjp", "EUC-JP", true}, {"ISO88591", "ISO-8859-1", true},
        {"MS932", "Shift_JIS", true}, {"shift-jis", "Shift_JIS", true}, {"windows-57002", "ISCII-DEV", true},
        {"TIS620", "windows-874", true}, {"ibm-964_P110-1999", "EUC-TW", true},
        // Listed names never reach ICU, which cannot open "1250" and takes "949" and "950" for
        // encodings of other rows or none.
        {"1250", "windows-1250", true}, {"949", "windows-949", true}, {"950", "Big5", true},
        // Unlisted names that ICU resolves to a listed encoding take the table's spelling.
        {"latin1", "ISO-8859-1", true}, {"ibm-5348_P100-1997", "windows-1252", true},
        // Known to ICU alone: ICU's preferred name.
        {"ISO-2022-JP", "ISO-2022-JP", false}, {"UTF-16", "UTF-16", false}, {"ibm-37", "IBM037", false},
        // Unknown to both: empty, never an exception. The empty name is whatever ICU makes of it.
        {"no-such-encoding", "", false}, {"", icu_preferred_name(""), false}, {std::string(200, 'x'), "", false},
    };
    for (const auto& [name, expected, supported] : cases) {
        EXPECT_EQ(get_standard_encoding_name(name), expected) << '"' << name << '"';
        EXPECT_EQ(is_supported_encoding(name), supported) << '"' << name << '"';
    }
}

// Every name and alias ICU knows: the table's spelling if the table lists the name or ICU's
// preferred name for it, else ICU's preferred name.
TEST(get_standard_encoding_name, AgreesWithIcuOnEveryNameIcuKnows)
{
    const auto& registry = fl::i18n::detail::locale_context().registry;
    std::size_t icu_only = 0;
    for (int32_t i = 0; i < ucnv_countAvailable(); ++i) {
        const char* converter = ucnv_getAvailableName(i);
        UErrorCode ec = U_ZERO_ERROR;
        const uint16_t aliases = ucnv_countAliases(converter, &ec);
        for (uint16_t j = 0; j < aliases; ++j) {
            const char* name = ucnv_getAlias(converter, j, &ec);
            ASSERT_TRUE(U_SUCCESS(ec)) << converter;
            const std::string preferred = icu_preferred_name(name);
            const char* listed = registry.find_standard_encoding(name);
            if (listed == nullptr) listed = registry.find_standard_encoding(preferred);
            icu_only += listed == nullptr ? 1 : 0;
            EXPECT_EQ(get_standard_encoding_name(name), listed ? listed : preferred) << name;
            EXPECT_EQ(is_supported_encoding(name), listed != nullptr) << name;
            EXPECT_EQ(fl::i18n::detail::icu_standard_name(name), preferred) << name;
        }
    }
    // Most of ICU's names are outside the table: the comparison covers the ICU path broadly.
    EXPECT_GT(icu_only, 500U);
    // Anchors for the reference itself: MIME first, then IANA, else ICU's own name.
    EXPECT_EQ(icu_preferred_name("ISO_8859-1:1987") + " " + icu_preferred_name("ibm-1047") + " " +
                  icu_preferred_name("ibm-1131_P100-1997"),
              "ISO-8859-1 IBM1047 ibm-1131_P100-1997");
}

TEST(get_standard_encoding_name, ConcurrentCallsAgree)
{
    static const std::string names[] = {"Cp1252", "latin1", "ibm-964_P110-1999", "ISO-2022-JP", "nope", "eucjp"};
    std::vector<std::string> expected;
    for (const std::string& name : names) expected.push_back(get_standard_encoding_name(name));
    qx_test::expect_in_threads(4, [&](std::size_t) {
        std::string failures;
        for (int round = 0; round < 300; ++round)
            for (std::size_t k = 0; k < std::size(names); ++k)
                if (get_standard_encoding_name(names[k]) != expected[k]) failures += " " + names[k];
        return failures;
    });
}

}  // namespace

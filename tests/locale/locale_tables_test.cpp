// The registry built from the compiled-in locale tables: encoding lookups, territory groups,
// default encodings and canonical names.
#include "locale/locale_name.hpp"
#include "locale/locale_registry.hpp"
#include "locale/locale_tables.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using namespace fl::i18n::detail;

const locale_registry& registry()
{
    static const locale_registry instance;
    return instance;
}

TEST(locale_registry, finds_every_spelling_of_an_encoding)
{
    struct encoding_case {
        const char* asked;
        const char* standard;
        const char* jvm;
    };
    const encoding_case cases[] = {
        {"ISO8859-1", "ISO-8859-1", "ISO-8859-1"}, {"iso88591", "ISO-8859-1", "ISO-8859-1"},
        {"ISO-8859-1", "ISO-8859-1", "ISO-8859-1"}, {"utf8", "UTF-8", "UTF-8"},
        {"UTF-16LE", "UTF-16LE", "UTF-16LE"},       {"gb18030", "GB18030", "GB18030"},
        {"big5", "Big5", "MS950"},                  {"950", "Big5", "MS950"},
        {"windows-31j", "Shift_JIS", "MS932"},      {"ksc_5601", "windows-949", "MS949"},
        {"CP1252", "windows-1252", "Cp1252"},       {"EUC-JP", "EUC-JP", "EUC-JP"},
        {"iso-8859_11-2001", "ISO-8859-11", "ISO-8859-11"},
    };
    for (const auto& c : cases) {
        EXPECT_STREQ(registry().find_standard_encoding(c.asked), c.standard) << c.asked;
        EXPECT_STREQ(registry().find_jvm_encoding(c.asked), c.jvm) << c.asked;
    }
    for (const char* unknown : {"", "UTF-16", "utf-8 ", "latin1", "ISO_8859-1"}) {
        EXPECT_EQ(registry().find_standard_encoding(unknown), nullptr) << unknown;
        EXPECT_EQ(registry().find_jvm_encoding(unknown), nullptr) << unknown;
    }
    EXPECT_EQ(registry().encoding_name_by_id(46), nullptr);
    EXPECT_EQ(registry().encoding_name_by_id(no_index), nullptr);
}

TEST(canonical_locale_name, maps_aliases_and_rows_to_one_spelling)
{
    const std::pair<const char*, const char*> cases[] = {
        {"C", "en_US_POSIX"},        {"POSIX", "en_US_POSIX"},     {"posix", "en_US_POSIX"},
        {"c", "en_US_POSIX"},        {"en_UK", "en_GB"},           {"en_CB", "en_029"},
        {"cz", "cs_CZ"},             {"cz_CZ", "cs_CZ"},           {"iw", "he_IL"},
        {"iw_IL", "he_IL"},          {"in", "id_ID"},              {"in_ID", "id_ID"},
        {"sh_HR", "hr_HR"},          {"ru_SU", "ru_RU"},           {"hy_AM_REVISED", "hy_AM"},
        {"he", "he_IL"},             {"zh-Hans_CN", "zh_CN"},      {"ZH_hant_tw", "zh_TW"},
        {"EN_us", "en_US"},          {"zh_CN", "zh_CN"},           {"zh_HK", "zh_HK"},
        {"zh_SG", "zh_SG"},          {"zh-hans_SG", "zh-Hans_SG"}, {"az-latn_az", "az-Latn_AZ"},
        {"az_AZ", "az_AZ"},          {"de_DE_AT", "de_AT"},        {"aa_ER", "aa_ER"},
        {"xx_YY", ""},               {"", ""},                     {"de_DE.UTF-8", "de_DE"},
        {"zh-Cyrl_CN", ""},          {"en_4199", ""},
    };
    for (const auto& [name, canonical] : cases)
        EXPECT_EQ(canonical_locale_name(registry(), name), canonical) << name;
}

// Every alias target must itself be a name the registry can place, or locales built from the
// alias could not take it as a category name.
TEST(canonical_locale_name, places_every_alias_target)
{
    for (const char* target : tables::alias_targets())
        EXPECT_FALSE(canonical_locale_name(registry(), target).empty()) << target;
}

// Groups are searched by code number; the answer must be the one a plain text search of the
// group string gives for every code a name can carry.
TEST(locale_registry, finds_territory_codes_as_a_text_search_would)
{
    std::vector<std::string> queries;
    for (char a = 'A'; a <= 'Z'; ++a)
        for (char b = 'A'; b <= 'Z'; ++b)
            queries.push_back({a, b});
    for (int n = 0; n < 1000; ++n)
        queries.push_back(std::to_string(1000 + n).substr(1));
    const auto territories = tables::territories();
    for (std::uint16_t t = 0; t < territories.size; ++t) {
        for (const std::string& query : queries) {
            const int code = locale_registry::territory_code(query);
            ASSERT_GE(code, 0) << query;
            const bool found = std::strstr(territories[t], query.c_str()) != nullptr;
            ASSERT_EQ(registry().territory_holds(t, code), found) << territories[t] << " / " << query;
            if (found) {
                EXPECT_EQ(registry().territory_index_of_code(code), registry().territory_index_of(query)) << query;
            }
        }
    }
    for (const char* not_a_code : {"", "D", "de", "DEU", "1A", "12", "1234", "A1"})
        EXPECT_EQ(locale_registry::territory_code(not_a_code), -1) << not_a_code;
    EXPECT_FALSE(registry().territory_holds(no_index, locale_registry::territory_code("DE")));
    EXPECT_FALSE(registry().territory_holds(0, -1));
}

// Short names take a quicker path than the full grammar; both must choose the same row.
TEST(canonical_locale_name, short_names_agree_with_the_full_grammar)
{
    std::vector<std::string> territories = {"", "ZZ", "001"};
    for (const char* territory : tables::territories())
        if (std::strlen(territory) == 2)
            territories.emplace_back(territory);
    std::size_t placed = 0;
    for (const char* language : tables::languages()) {
        for (const std::string& territory : territories) {
            for (const char* separator : {"_", "-"}) {
                const std::string name = territory.empty() ? language : language + (separator + territory);
                if (registry().find_locale_alias(name) != nullptr)
                    continue;
                const std::string expected =
                    compose_row_name(registry(), resolve_language_row(registry(), parse_locale_name(name)));
                ASSERT_EQ(canonical_locale_name(registry(), name), expected) << name;
                placed += expected.empty() ? 0 : 1;
            }
        }
    }
    EXPECT_GT(placed, 1000u);
    for (const char* odd : {"d", "deu_DE", "de_D", "de_DEU", "de__DE", "de_DE_", "de1_DE", "de_D3", "de_DE@"})
        EXPECT_EQ(canonical_locale_name(registry(), odd),
                  compose_row_name(registry(), resolve_language_row(registry(), parse_locale_name(odd))))
            << odd;
}

TEST(locale_registry, gives_default_encodings)
{
    const std::pair<const char*, const char*> cases[] = {
        {"C", "US-ASCII"},         {"en_US_POSIX", "US-ASCII"}, {"posix", "US-ASCII"},
        {"xx_YY", "UTF-8"},        {"zh_TW", "Big5"},           {"zh_HK", "Big5-HKSCS"},
        {"zh_SG", "GB2312"},       {"zh_MO", "Big5"},           {"aa_DJ", "ISO-8859-1"},
        {"aa_ER", "UTF-8"},        {"ar_EG", "ISO-8859-6"},     {"ar_IN", "UTF-8"},
        {"az_AZ", "UTF-8"},        {"az-Cyrl_AZ", "ISO-8859-5"}, {"az-Latn_AZ", "ISO-8859-9"},
        {"zu_ZA", "ISO-8859-1"},   {"am_ET", "UTF-8"},          {"zh-Hant", "Big5"},
    };
    for (const auto& [name, encoding] : cases)
        EXPECT_STREQ(registry().default_encoding_of(name), encoding) << name;
    EXPECT_EQ(registry().default_encoding_of(""), nullptr);
    EXPECT_EQ(registry().get_option("de_DE", "disable_l10n"), "");
}

}  // namespace

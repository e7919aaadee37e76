// The compiled-in locale tables and the registry built from them: figures, lookups, canonical names.
#include "locale/locale_name.hpp"
#include "locale/locale_registry.hpp"
#include "locale/locale_tables.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace {

using namespace fl::i18n::detail;

const locale_registry& registry()
{
    static const locale_registry instance;
    return instance;
}

std::string text_or_none(const char* text) { return text ? text : "none"; }

// A row as the table would print it: "aa Latn DJ ISO-8859-1 1".
std::string describe(const language_row& row)
{
    const auto& r = registry();
    return text_or_none(r.language_text(row.language)) + " " + text_or_none(r.script_text(row.script)) + " " +
           text_or_none(r.territory_text(row.territory)) + " " + text_or_none(r.encoding_name_by_id(row.encoding)) +
           " " + std::to_string(row.is_default);
}

bool is_code_list(const std::string& text, std::size_t code_length)
{
    if (text.size() < 2 * code_length + 1 || (text.size() + 1) % (code_length + 1) != 0)
        return false;
    std::string previous;
    for (std::size_t at = 0; at < text.size(); at += code_length + 1) {
        const std::string code = text.substr(at, code_length);
        if (code <= previous || (at + code_length < text.size() && text[at + code_length] != ' '))
            return false;
        previous = code;
    }
    return true;
}

TEST(locale_tables, have_their_fixed_sizes_and_shapes)
{
    EXPECT_EQ(tables::scripts().size, 78U);
    EXPECT_EQ(tables::languages().size, 410U);
    EXPECT_EQ(tables::encodings().size, 46U);
    EXPECT_EQ(tables::aliases().size, 116U);
    EXPECT_EQ(registry().alias_count(), 116U);

    // Single codes in alphabetical order, then groups of codes, then the four UN M.49 regions.
    const auto territories = tables::territories();
    ASSERT_GT(territories.size, 264U);
    for (std::size_t i = 0; i < 260; ++i) {
        EXPECT_EQ(std::string(territories[i]).size(), 2U) << i;
        if (i > 0) {
            EXPECT_LT(std::string(territories[i - 1]), territories[i]);
        }
    }
    for (std::size_t i = 260; i + 4 < territories.size; ++i)
        EXPECT_TRUE(is_code_list(territories[i], 2)) << territories[i];
    const char* const regions[] = {"001", "029", "150", "419"};
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_STREQ(territories[territories.size - 4 + i], regions[i]);
    for (std::size_t i = 62; i < tables::scripts().size; ++i)
        EXPECT_TRUE(is_code_list(tables::scripts()[i], 4)) << tables::scripts()[i];

    // Every field refers to an entry of its table, and rows are sorted by language.
    const auto values = tables::language_row_values();
    ASSERT_EQ(values.size % 5, 0U);
    for (std::size_t i = 0; i < values.size; i += 5) {
        SCOPED_TRACE(i / 5);
        EXPECT_LT(values[i], tables::languages().size);
        EXPECT_TRUE(values[i + 1] == no_index || values[i + 1] < tables::scripts().size);
        EXPECT_TRUE(values[i + 2] == no_index || values[i + 2] < territories.size);
        EXPECT_TRUE(values[i + 3] == no_index || values[i + 3] < tables::encodings().size);
        EXPECT_LE(values[i + 4], 1);
        if (i > 0) {
            EXPECT_LE(values[i - 5], values[i]);
        }
    }
}

TEST(locale_tables, hold_the_telling_language_rows)
{
    std::map<std::string, std::vector<std::string>> rows;
    for (const char* language : {"aa", "am", "ar", "az", "zh", "zu"})
        for (const language_row& row : registry().rows_of(language))
            rows[language].push_back(describe(row));
    const char* const expected[] = {
        "aa Latn DJ ISO-8859-1 1",
        "aa none DJ ER ET UTF-8 0",
        "am Ethi ET UTF-8 0",
        "ar Arab AE BH DJ DZ EG EH ER IL IQ JO KM KW LB LY MA MR OM PS QA SA SD SO SY TD TN YE ISO-8859-6 0",
        "ar none IN UTF-8 0",
        "az Cyrl AZ ISO-8859-5 0",
        "az Latn AZ ISO-8859-9 0",
        "az none AZ UTF-8 1",
        "zh Hans CN HK MO SG GB2312 0",
        "zh Hant HK Big5-HKSCS 1",
        "zh Hant MO TW Big5 1",
        "zu none ZA ISO-8859-1 0",
    };
    for (const char* row : expected) {
        const std::string language = std::string(row).substr(0, 2);
        const auto& found = rows[language];
        EXPECT_NE(std::find(found.begin(), found.end(), row), found.end()) << row;
    }
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

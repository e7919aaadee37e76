// The grammar of locale names: parsing, composing and stripping.
#include <fl/i18n/locale_name.hpp>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using fl::i18n::parse_locale_name;
using fl::i18n::parsed_locale_name;
using strings = std::vector<std::string>;

// Extensions written "s=value" so that a case fits on one line.
strings extensions_of(const parsed_locale_name& parsed)
{
    strings out;
    for (const auto& e : parsed.extensions)
        out.push_back(std::string(1, e.singleton) + "=" + e.value);
    return out;
}

struct parse_case {
    const char* name;
    const char* language;
    const char* script;
    const char* territory;
    const char* codeset;
    strings modifiers;
    strings variants;
    strings extensions;
    const char* private_singleton;
    strings private_use;
};

const parse_case valid_names[] = {
    {"de_DE.UTF-8@euro", "de", "", "DE", "UTF-8", {"euro"}, {}, {}, "", {}},
    {"en-US-x-private", "en", "", "US", "", {}, {}, {}, "x", {"private"}},
    {"en-US-X-a-b12", "en", "", "US", "", {}, {}, {}, "X", {"a", "b12"}},
    {"en-x-a-X-b", "en", "", "", "", {}, {}, {}, "x", {"a", "X", "b"}},
    {"en-u-co-phonebk", "en", "", "", "", {}, {"phonebk"}, {"u=co"}, "", {}},
    {"en-a-bb-c-dd", "en", "", "", "", {}, {}, {"a=bb", "c=dd"}, "", {}},
    {"abc", "abc", "", "", "", {}, {}, {}, "", {}},
    {"en_419", "en", "", "419", "", {}, {}, {}, "", {}},
    {"en_US_Latn", "en", "Latn", "US", "", {}, {}, {}, "", {}},
    {"en-Latn_US", "en", "Latn", "US", "", {}, {}, {}, "", {}},
    {"EN_us", "EN", "", "us", "", {}, {}, {}, "", {}},
    {"zh-Hant_TW", "zh", "Hant", "TW", "", {}, {}, {}, "", {}},
    {"sr_RS_Latn_Cyrl", "sr", "Cyrl", "RS", "", {}, {}, {}, "", {}},
    {"de_DE_AT", "de", "", "AT", "", {}, {}, {}, "", {}},
    {"en_US_POSIX", "en", "", "US", "", {}, {"POSIX"}, {}, "", {}},
    {"sl-rozaj-biske", "sl", "", "", "", {}, {"rozaj", "biske"}, {}, "", {}},
    {"de@a@@b", "de", "", "", "", {"a", "", "b"}, {}, {}, "", {}},
    {"de@", "de", "", "", "", {""}, {}, {}, "", {}},
    {"ja_JP.eucjp", "ja", "", "JP", "eucjp", {}, {}, {}, "", {}},
    {"ja_JP.a.b@c.d", "ja", "", "JP", "a.b", {"c.d"}, {}, {}, "", {}},
    {"ja.", "ja", "", "", "", {}, {}, {}, "", {}},
};

TEST(parse_locale_name, splits_every_part_of_a_valid_name)
{
    for (const auto& c : valid_names) {
        SCOPED_TRACE(c.name);
        const parsed_locale_name p = parse_locale_name(c.name);
        EXPECT_EQ(p.language, c.language);
        EXPECT_EQ(p.script, c.script);
        EXPECT_EQ(p.territory, c.territory);
        EXPECT_EQ(p.codeset, c.codeset);
        EXPECT_EQ(p.modifiers, c.modifiers);
        EXPECT_EQ(p.variants, c.variants);
        EXPECT_EQ(extensions_of(p), c.extensions);
        EXPECT_EQ(p.private_singleton, c.private_singleton);
        EXPECT_EQ(p.private_use, c.private_use);
    }
}

TEST(parse_locale_name, refuses_names_outside_the_grammar)
{
    const char* const invalid[] = {
        "", "e", "engl", "en_", "en-", "_US", "-x-foo", "en_x_foo", "en-a", "en-a-b-cc", "en_4199", "en_1996",
        "en_US1", "en_U", "en__US", "en_toolongvar", "e1", "en-x-", "en-x-toolong12", "en-x-a_b", "en-x-é",
        "de_DÉ", "en-a-toolong12", "en-a-b_c", "x-foo", "en-US-x", "1en", "en US", ".UTF-8", "@euro",
        "de_DE-x-", "en-Lat1",
    };
    for (const char* name : invalid) {
        SCOPED_TRACE(name);
        const parsed_locale_name p = parse_locale_name(name);
        EXPECT_FALSE(p.valid());
        // Nothing survives a failed parse, not even the codeset or modifiers found first.
        EXPECT_TRUE(p.codeset.empty() && p.modifiers.empty() && p.territory.empty() && p.private_use.empty());
    }
}

TEST(compose, writes_each_form_back)
{
    struct compose_case {
        const char* name;
        const char* base;
        const char* with_codeset;
        const char* full;
        const char* language;
        const char* modifiers;
        const char* variants;
        const char* extras;
    };
    const compose_case cases[] = {
        {"zh-Hans_CN", "zh-Hans_CN", "zh-Hans_CN", "zh-Hans_CN", "zh-Hans", "", "", ""},
        {"de_DE.UTF-8@euro@x", "de_DE", "de_DE.UTF-8", "de_DE.UTF-8@euro@x", "de", "euro@x", "", ""},
        {"sl-rozaj-biske-u-co-phonebk-x-a-b", "sl", "sl", "sl", "sl", "", "rozaj-biske-phonebk", "-u-co-x-a-b"},
        {"en-a-bb-c-dd-X-p", "en", "en", "en", "en", "", "", "-a-bb-c-dd-X-p"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const parsed_locale_name p = parse_locale_name(c.name);
        EXPECT_EQ(fl::i18n::compose_base(p), c.base);
        EXPECT_EQ(fl::i18n::compose_with_codeset(p), c.with_codeset);
        EXPECT_EQ(fl::i18n::compose_full(p), c.full);
        EXPECT_EQ(fl::i18n::compose_language(p), c.language);
        EXPECT_EQ(fl::i18n::compose_modifiers(p), c.modifiers);
        EXPECT_EQ(fl::i18n::compose_variants(p), c.variants);
        EXPECT_EQ(fl::i18n::compose_extras(p), c.extras);
    }
    EXPECT_EQ(fl::i18n::compose_full(parsed_locale_name{}), "");
}

TEST(strip_name, cuts_at_the_first_dot_or_at)
{
    const std::pair<const char*, const char*> cases[] = {
        {"de_DE.UTF-8@euro", "de_DE"}, {"de_DE@euro.x", "de_DE"}, {"C", "C"},
        {".UTF-8", ""},                {"", ""},                   {"a.b.c", "a"},
    };
    for (const auto& [name, stripped] : cases)
        EXPECT_EQ(fl::i18n::strip_name(name), stripped) << name;
}

}  // namespace

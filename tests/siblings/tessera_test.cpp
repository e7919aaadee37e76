// Tests of libqxtessera: catalogue-name mapping and the layout of the identifier records.
#include <tessera/catalog_name.hpp>
#include <tessera/message_id.hpp>

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <variant>
#include <vector>

namespace {

// The order of alternatives is how readers tell an integer from a double, so it must not move.
static_assert(std::variant_size_v<tessera::message_argument> == 4);
static_assert(std::is_same_v<std::variant_alternative_t<0, tessera::message_argument>, long>);
static_assert(std::is_same_v<std::variant_alternative_t<1, tessera::message_argument>, std::string>);
static_assert(std::is_same_v<std::variant_alternative_t<2, tessera::message_argument>,
                             std::basic_string<char16_t>>);
static_assert(std::is_same_v<std::variant_alternative_t<3, tessera::message_argument>, double>);

struct catalog_name_case {
    const char* name;
    const char* expected;
};

TEST(MakeInternalCatalogName, MapsNamesToIdentifiers)
{
    const catalog_name_case cases[] = {
        {"TOLVEN", "TOLVEN:legacy_two_part"},
        {"", ""},
        {"tolven", "tolven:legacy_two_part"},
        {"A", "A:legacy_two_part"},
        {"abc_1", "abc_1:legacy_two_part"},
        // Anything holding ':' is already an identifier, however odd.
        {"a:b", "a:b"},
        {"a:b:c", "a:b:c"},
        {"TOLVEN:legacy_two_part", "TOLVEN:legacy_two_part"},
        {":", ":"},
        {"a:", "a:"},
        {":a", ":a"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(tessera::makeInternalCatalogName(c.name), c.expected) << "name \"" << c.name << '"';
    }
}

TEST(MakeInternalCatalogName, IsIdempotent)
{
    for (const char* name : {"TOLVEN", "x", "a:b", ""}) {
        const std::string once = tessera::makeInternalCatalogName(name);
        EXPECT_EQ(tessera::makeInternalCatalogName(once), once) << "name \"" << name << '"';
    }
}

TEST(BaseCatalogID, IdentifierIsTheFirstMember)
{
    const tessera::BaseCatalogID id("comp:cat");
    EXPECT_EQ(static_cast<const void*>(&id), static_cast<const void*>(&id.catalog_id));
    EXPECT_EQ(id.getCatalogID(), "comp:cat");
    EXPECT_EQ(&id.getCatalogID(), &id.catalog_id);
    EXPECT_TRUE(tessera::BaseCatalogID().getCatalogID().empty());
}

TEST(BaseMsgID, FieldsAreInRecordOrder)
{
    const tessera::BaseMsgID msg("comp:cat", "key");
    const auto* arguments = reinterpret_cast<const char*>(&msg.arguments);
    const auto* catalog = reinterpret_cast<const char*>(&msg.catalog_id);
    const auto* key = reinterpret_cast<const char*>(&msg.key);
    EXPECT_EQ(static_cast<const void*>(&msg), static_cast<const void*>(arguments));
    EXPECT_LT(arguments, catalog);
    EXPECT_LT(catalog, key);
}

TEST(BaseMsgID, ConstructorsKeepEveryField)
{
    using tessera::message_argument;
    const std::vector<message_argument> args = {message_argument(42L), message_argument(std::string("s")),
                                                message_argument(std::u16string(u"\u00E9")),
                                                message_argument(2.5)};
    struct msg_case {
        tessera::BaseMsgID msg;
        const char* catalog;
        const char* key;
        std::vector<message_argument> arguments;
    };
    const msg_case cases[] = {
        {tessera::BaseMsgID("comp:cat", "key"), "comp:cat", "key", {}},
        {tessera::BaseMsgID("comp:cat", "key", args), "comp:cat", "key", args},
        {tessera::BaseMsgID("", "", {}), "", "", {}},
        {tessera::BaseMsgID(), "", "", {}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.msg.catalog_id, c.catalog);
        EXPECT_EQ(c.msg.key, c.key);
        EXPECT_EQ(c.msg.arguments, c.arguments) << "catalog \"" << c.catalog << '"';
    }
    // The alternative of each argument survives, not only its value.
    const tessera::BaseMsgID full("comp:cat", "key", args);
    ASSERT_EQ(full.arguments.size(), 4U);
    for (std::size_t i = 0; i < full.arguments.size(); ++i)
        EXPECT_EQ(full.arguments[i].index(), i);
}

}  // namespace

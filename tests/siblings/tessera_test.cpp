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
static_assert(std::is_same_v<tessera::message_argument, std::variant<long, std::string, std::u16string, double>>);

// Anything holding ':' is already an identifier, however odd; mapping twice changes nothing.
TEST(MakeInternalCatalogName, MapsNamesToIdentifiersIdempotently)
{
    const std::pair<const char*, const char*> cases[] = {
        {"TOLVEN", "TOLVEN:legacy_two_part"}, {"", ""}, {"A", "A:legacy_two_part"}, {"abc_1", "abc_1:legacy_two_part"},
        {"a:b", "a:b"}, {"a:b:c", "a:b:c"}, {":", ":"}, {"a:", "a:"}, {":a", ":a"},
    };
    for (const auto& [name, expected] : cases) {
        EXPECT_EQ(tessera::makeInternalCatalogName(name), expected) << "name \"" << name << '"';
        EXPECT_EQ(tessera::makeInternalCatalogName(expected), expected) << "name \"" << expected << '"';
    }
}

// Records are read field by field by other programs: the arguments come first, then the
// catalogue identifier, then the key; every constructor keeps each argument's alternative.
TEST(BaseMsgID, FieldsAreInRecordOrderAndKeptByEveryConstructor)
{
    const tessera::BaseCatalogID id("comp:cat");
    EXPECT_EQ(static_cast<const void*>(&id), static_cast<const void*>(&id.catalog_id));
    EXPECT_EQ(&id.getCatalogID(), &id.catalog_id);
    EXPECT_EQ(id.getCatalogID(), "comp:cat");
    EXPECT_TRUE(tessera::BaseCatalogID().getCatalogID().empty());

    const tessera::BaseMsgID msg("comp:cat", "key");
    const auto* arguments = reinterpret_cast<const char*>(&msg.arguments);
    EXPECT_EQ(static_cast<const void*>(&msg), static_cast<const void*>(arguments));
    EXPECT_LT(arguments, reinterpret_cast<const char*>(&msg.catalog_id));
    EXPECT_LT(reinterpret_cast<const char*>(&msg.catalog_id), reinterpret_cast<const char*>(&msg.key));

    using tessera::message_argument;
    const std::vector<message_argument> args = {message_argument(42L), message_argument(std::string("s")),
                                                message_argument(std::u16string(u"\u00E9")), message_argument(2.5)};
    const std::tuple<tessera::BaseMsgID, const char*, const char*, std::vector<message_argument>> cases[] = {
        {msg, "comp:cat", "key", {}},
        {tessera::BaseMsgID("comp:cat", "key", args), "comp:cat", "key", args},
        {tessera::BaseMsgID(), "", "", {}},
    };
    // Comparing the variants compares their alternatives too.
    for (const auto& [m, catalog, key, expected] : cases)
        EXPECT_TRUE(m.catalog_id == catalog && m.key == key && m.arguments == expected) << "catalog \"" << catalog << '"';
}

}  // namespace

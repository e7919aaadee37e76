// Identifiers of catalogues and messages, and the argument type of a message's holes.
#pragma once

#include <tessera/export.hpp>

#include <string>
#include <variant>
#include <vector>

namespace tessera {

/// One argument of a message: an integer, narrow text, UTF-16 text or a floating-point number.
using message_argument = std::variant<long, std::string, std::basic_string<char16_t>, double>;

/// A catalogue identifier such as "component:name". Not validated here: the library that
/// reads catalogues checks the syntax.
struct QXTESSERA_API BaseCatalogID {
    /// The identifier. Kept first: readers of this record rely on its layout.
    std::string catalog_id;

    BaseCatalogID() = default;
    explicit BaseCatalogID(std::string id);

    /// The identifier as given.
    const std::string& getCatalogID() const noexcept;
};

/// A message to be formatted: its arguments, its catalogue and its key within the catalogue.
/// The field order is part of the record's layout.
struct QXTESSERA_API BaseMsgID {
    std::vector<message_argument> arguments;
    std::string catalog_id;
    std::string key;

    BaseMsgID() = default;
    /// A message with no arguments.
    BaseMsgID(std::string catalog, std::string message_key);
    /// A message whose holes are filled, in order, from `args`.
    BaseMsgID(std::string catalog, std::string message_key, std::vector<message_argument> args);
};

}  // namespace tessera

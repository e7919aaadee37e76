// Constructors of the identifier records.
#include <tessera/message_id.hpp>

#include <utility>

namespace tessera {

BaseCatalogID::BaseCatalogID(std::string id) : catalog_id(std::move(id)) {}

const std::string& BaseCatalogID::getCatalogID() const noexcept
{
    return catalog_id;
}

BaseMsgID::BaseMsgID(std::string catalog, std::string message_key)
    : catalog_id(std::move(catalog)), key(std::move(message_key))
{
}

BaseMsgID::BaseMsgID(std::string catalog, std::string message_key,
                     std::vector<message_argument> args)
    : arguments(std::move(args)), catalog_id(std::move(catalog)), key(std::move(message_key))
{
}

}  // namespace tessera

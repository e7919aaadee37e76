// User-facing catalogue names to internal catalogue identifiers.
#include <tessera/catalog_name.hpp>

namespace tessera {

std::string makeInternalCatalogName(const std::string& name)
{
    // A bare name comes from the era of two-part message identifiers; those messages live in
    // a catalogue of their own under the name.
    if (name.empty() || name.find(':') != std::string::npos)
        return name;
    return name + ":legacy_two_part";
}

}  // namespace tessera

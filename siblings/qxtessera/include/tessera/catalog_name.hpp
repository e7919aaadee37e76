// The mapping from a catalogue name that a user sees to the internal catalogue identifier.
#pragma once

#include <tessera/export.hpp>

#include <string>

namespace tessera {

/// The internal identifier of a user-facing catalogue name. A name that already holds ':' is
/// an identifier and comes back unchanged; any other non-empty name N is a legacy catalogue of
/// two-part message identifiers and becomes "N:legacy_two_part" (so "TOLVEN" gives
/// "TOLVEN:legacy_two_part"). The empty name gives the empty string. Never throws except
/// std::bad_alloc.
QXTESSERA_API std::string makeInternalCatalogName(const std::string& name);

}  // namespace tessera

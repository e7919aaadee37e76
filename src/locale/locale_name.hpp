// Canonicalisation of locale names against the registry; the grammar itself is public.
#pragma once

#include "locale_registry.hpp"

#include <fl/i18n/locale_name.hpp>

#include <string>
#include <string_view>

namespace fl::i18n::detail {

using fl::i18n::compose_base;
using fl::i18n::compose_extras;
using fl::i18n::compose_language;
using fl::i18n::compose_modifiers;
using fl::i18n::parse_locale_name;
using fl::i18n::parsed_locale_name;
using fl::i18n::strip_name;

/// The language row that a parsed name selects, narrowed to the script and territory the name gave;
/// empty_language_row when there is none.
language_row resolve_language_row(const locale_registry& registry, const parsed_locale_name& parsed);

/// The parts of a name that choose a row, as views into the caller's text.
struct row_query {
    std::string_view language;
    std::string_view script;
    std::string_view territory;
};
language_row resolve_language_row(const locale_registry& registry, const row_query& query);

/// The row written as language["-" Script]["_" TERRITORY] in the table's letter case.
std::string compose_row_name(const locale_registry& registry, const language_row& row);

/// A canonical name with how it was found: from the alias map, or from `row`.
struct canonical_result {
    std::string name;  // empty when the registry cannot place the name
    language_row row = empty_language_row;
    bool from_alias = false;
};
canonical_result canonicalize(const locale_registry& registry, std::string_view name);

/// An alias target, or the name of the row the name selects; empty for a name the registry
/// cannot place. Strip ".codeset" and "@modifier" first: the whole name is the alias key.
std::string canonical_locale_name(const locale_registry& registry, std::string_view name);

}  // namespace fl::i18n::detail

// Canonicalisation of locale names: choosing a language row and writing it back as a name.
#include "locale_name.hpp"

#include <cstring>

namespace fl::i18n::detail {
namespace {

std::string ascii_case(std::string_view text, bool upper)
{
    std::string out(text);
    for (char& c : out) {
        if (upper && c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
        else if (!upper && c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return out;
}

char lower(char c) noexcept { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

// Where `needle` (already lower case) stands in `text` compared in lower case, or npos.
std::size_t find_lower(std::string_view text, std::string_view needle) noexcept
{
    for (std::size_t at = 0; at + needle.size() <= text.size(); ++at) {
        std::size_t i = 0;
        while (i < needle.size() && lower(text[at + i]) == needle[i])
            ++i;
        if (i == needle.size())
            return at;
    }
    return std::string_view::npos;
}

bool single_territory(const locale_registry& registry, const language_row& row)
{
    const char* text = registry.territory_text(row.territory);
    return text != nullptr && std::strlen(text) < 4;
}

// Keeps language and encoding; the script and territory only where the name asked for them
// and the row has them, taken from the row's text at the place where they matched.
language_row narrow_row(const locale_registry& registry, const language_row& row, const std::string& q_script,
                        int q_territory)
{
    language_row out = row;
    out.script = no_index;
    if (!q_script.empty()) {
        if (const char* scripts = registry.script_text(row.script)) {
            const auto at = find_lower(scripts, q_script);
            if (at != std::string_view::npos)
                out.script = registry.script_index_of(std::string_view(scripts + at, 4));
        }
    }
    out.territory = registry.territory_holds(row.territory, q_territory) ? registry.territory_index_of_code(q_territory)
                                                                         : no_index;
    return out;
}

bool is_letter(char c) noexcept { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

// "ll", "lll", "ll_TT" and "lll-TT" are most of the names callers pass; they are taken apart
// here without the general grammar, which would build a whole parsed record.
bool simple_query(std::string_view name, row_query& query) noexcept
{
    std::size_t language = 0;
    while (language < name.size() && language < 4 && is_letter(name[language]))
        ++language;
    if (language < 2 || language > 3)
        return false;
    query = {name.substr(0, language), {}, {}};
    if (language == name.size())
        return true;
    const std::string_view rest = name.substr(language);
    if (rest.size() != 3 || (rest[0] != '_' && rest[0] != '-') || !is_letter(rest[1]) || !is_letter(rest[2]))
        return false;
    query.territory = rest.substr(1);
    return true;
}

}  // namespace

language_row resolve_language_row(const locale_registry& registry, const parsed_locale_name& parsed)
{
    return resolve_language_row(registry, row_query{parsed.language, parsed.script, parsed.territory});
}

language_row resolve_language_row(const locale_registry& registry, const row_query& parsed)
{
    const std::string q_script = ascii_case(parsed.script, false);
    // The territory as a code number: a name's territory is two letters or three digits, and a
    // bare language searches for itself as a territory ("de" for "DE"), which a three-letter
    // language never finds.
    const int q_territory =
        locale_registry::territory_code(ascii_case(parsed.territory.empty() ? parsed.language : parsed.territory, true));
    const language_row_range rows = registry.rows_of(parsed.language);

    if (parsed.script.empty() && parsed.territory.empty() && rows.count == 1 &&
        single_territory(registry, *rows.first)) {
        language_row only = *rows.first;
        only.script = no_index;
        return only;
    }

    const language_row* default_row = nullptr;
    const language_row* last_row = nullptr;
    std::size_t candidates = 0;
    for (const language_row& row : rows) {
        bool script_hit = false;
        if (!q_script.empty()) {
            const char* scripts = registry.script_text(row.script);
            if (scripts == nullptr || find_lower(scripts, q_script) == std::string_view::npos)
                continue;
            script_hit = true;
        }
        if (row.territory != no_index) {
            if (!registry.territory_holds(row.territory, q_territory))
                continue;
            if (script_hit)
                return narrow_row(registry, row, q_script, q_territory);
        }
        if (row.is_default == 1)
            default_row = &row;
        ++candidates;
        last_row = &row;
    }

    const language_row* chosen = default_row ? default_row : (candidates == 1 ? last_row : nullptr);
    if (chosen == nullptr)
        return empty_language_row;
    return narrow_row(registry, *chosen, q_script, q_territory);
}

std::string compose_row_name(const locale_registry& registry, const language_row& row)
{
    const char* language = registry.language_text(row.language);
    if (language == nullptr)
        return {};
    std::string name(language);
    if (const char* script = registry.script_text(row.script))
        name.append(1, '-').append(script);
    if (const char* territory = registry.territory_text(row.territory))
        name.append(1, '_').append(territory);
    return name;
}

canonical_result canonicalize(const locale_registry& registry, std::string_view name)
{
    canonical_result result;
    if (name.empty())
        return result;
    if (const char* target = registry.find_locale_alias(name)) {
        result.name = target;
        result.from_alias = true;
        return result;
    }
    row_query query;
    if (simple_query(name, query)) {
        result.row = resolve_language_row(registry, query);
    } else {
        const parsed_locale_name parsed = parse_locale_name(name);
        if (!parsed.valid())
            return result;
        result.row = resolve_language_row(registry, parsed);
    }
    result.name = compose_row_name(registry, result.row);
    return result;
}

std::string canonical_locale_name(const locale_registry& registry, std::string_view name)
{
    return canonicalize(registry, name).name;
}

}  // namespace fl::i18n::detail

// Filling of the locale registry from the compiled-in tables, and its lookups.
#include "locale_registry.hpp"

#include "locale_name.hpp"
#include "locale_tables.hpp"

#include <algorithm>
#include <stdexcept>

namespace fl::i18n::detail {
namespace {

template <bool TagKey>
std::string fold(std::string_view text)
{
    std::string key(text);
    for (char& c : key) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
        else if (TagKey && c == '_')
            c = '-';
    }
    return key;
}

// Load factor 1.0 from a single bucket, so that small maps stay small.
template <class Map>
void prepare(Map& map)
{
    map.max_load_factor(1.0F);
    map.rehash(1);
}

// A null text in a table is a programming fault; std::string refuses it with std::logic_error.
std::string checked(const char* text) { return std::string(text); }

template <class Map>
auto find_value(const Map& map, const std::string& key) -> const typename Map::mapped_type*
{
    auto it = map.find(key);
    return it == map.end() ? nullptr : &it->second;
}

}  // namespace

std::string lower_key(std::string_view text) { return fold<false>(text); }
std::string tag_key(std::string_view text) { return fold<true>(text); }

locale_registry::locale_registry()
{
    prepare(language_rows_);
    prepare(script_index_);
    prepare(territory_index_);
    prepare(encoding_by_name_);
    prepare(alias_to_locale_);
    prepare(region_alias_to_locale_);
    prepare(default_encoding_);
    prepare(xpg_name_);
    prepare(compat_encoding_);
    prepare(lc_option_);
    // Later steps look at earlier ones: the language rows need the tables, the aliases the codes.
    fill_scripts();
    fill_territories();
    fill_language_rows();
    fill_encodings();
    fill_aliases();
    fill_default_encodings();
}

locale_registry::~locale_registry() = default;

void locale_registry::fill_scripts()
{
    const auto table = tables::scripts();
    for (std::size_t i = 0; i < table.size; ++i)
        script_index_.emplace(lower_key(checked(table[i])), static_cast<std::uint16_t>(i));
}

void locale_registry::fill_territories()
{
    const auto table = tables::territories();
    territory_by_code_.fill(no_index);
    territory_code_start_.reserve(table.size + 1);
    for (std::size_t i = 0; i < table.size; ++i) {
        const std::string text = checked(table[i]);
        territory_index_.emplace(lower_key(text), static_cast<std::uint16_t>(i));
        // A group is codes separated by single blanks; a search for one code within it must not
        // be able to match across a blank or inside a longer code.
        territory_code_start_.push_back(static_cast<std::uint32_t>(territory_codes_.size()));
        std::size_t at = 0;
        for (;;) {
            const std::size_t end = std::min(text.find(' ', at), text.size());
            const int code = territory_code(std::string_view(text).substr(at, end - at));
            if (code < 0)
                throw std::logic_error("territory string that is not a list of codes: " + std::string(text));
            territory_codes_.push_back(static_cast<std::uint16_t>(code));
            if (end == text.size())
                break;
            at = end + 1;
        }
        auto& single = territory_by_code_[territory_codes_.back()];
        if (territory_codes_.size() - territory_code_start_.back() == 1 && single == no_index)
            single = static_cast<std::uint16_t>(i);
        std::sort(territory_codes_.begin() + territory_code_start_.back(), territory_codes_.end());
    }
    territory_code_start_.push_back(static_cast<std::uint32_t>(territory_codes_.size()));
}

void locale_registry::fill_language_rows()
{
    const auto values = tables::language_row_values();
    rows_.reserve(values.size / 5);
    for (std::size_t i = 0; i + 5 <= values.size; i += 5) {
        language_row row;
        row.language = values[i];
        row.script = values[i + 1];
        row.territory = values[i + 2];
        row.encoding = values[i + 3];
        row.is_default = static_cast<std::uint8_t>(values[i + 4] & 0xFF);
        if (language_text(row.language) == nullptr)
            throw std::logic_error("language row without a language");
        const bool in_range = (row.script == no_index || script_text(row.script) != nullptr) &&
                              (row.territory == no_index || territory_text(row.territory) != nullptr) &&
                              (row.encoding == no_index || encoding_name_by_id(row.encoding) != nullptr);
        if (!in_range)
            throw std::logic_error("language row with an index outside its table");
        rows_.push_back(row);
    }
    // Rows are sorted by language, so each language owns one run of the vector.
    for (std::size_t i = 0; i < rows_.size();) {
        std::size_t end = i + 1;
        while (end < rows_.size() && rows_[end].language == rows_[i].language)
            ++end;
        auto& range = language_rows_[lower_key(language_text(rows_[i].language))];
        if (range.count != 0)
            throw std::logic_error("language rows out of order");
        range = {rows_.data() + i, end - i};
        i = end;
    }
}

void locale_registry::fill_encodings()
{
    for (const auto& row : tables::encodings()) {
        auto entry = std::make_shared<encoding_entry_context>();
        entry->name = row.name;
        entry->jvm_name = row.jvm_name;
        encoding_by_name_.emplace(lower_key(checked(row.name)), entry);
        for (const char* const* alias = row.aliases; *alias != nullptr; ++alias)
            encoding_by_name_.emplace(lower_key(*alias), entry);
    }
}

void locale_registry::fill_aliases()
{
    const auto targets = tables::alias_targets();
    for (const auto& row : tables::aliases()) {
        std::string key = checked(row.full);
        if (key.empty()) {
            const std::string language =
                checked(row.language_index != no_index ? language_text(row.language_index) : row.language);
            const std::string script =
                checked(row.script_index != no_index ? script_text(row.script_index) : row.script);
            const std::string territory =
                checked(row.territory_index != no_index ? territory_text(row.territory_index) : row.territory);
            key = language;
            if (!script.empty())
                key.append(1, '-').append(script);
            if (!territory.empty())
                key.append(1, row.separator).append(territory);
            key += checked(row.variant);
        }
        if (row.target >= targets.size)
            throw std::logic_error("locale alias without a target");
        alias_to_locale_.emplace(tag_key(key), targets[row.target]);
    }
}

void locale_registry::fill_default_encodings()
{
    for (const auto& row : tables::default_encodings())
        default_encoding_.emplace(tag_key(checked(row.locale)), row.encoding);
}

const char* locale_registry::find_standard_encoding(std::string_view name) const
{
    const encoding_entry_context* entry = find_encoding_entry(name);
    return entry ? entry->name : nullptr;
}

const char* locale_registry::find_jvm_encoding(std::string_view name) const
{
    const encoding_entry_context* entry = find_encoding_entry(name);
    if (entry == nullptr)
        return nullptr;
    return entry->jvm_name ? entry->jvm_name : entry->name;
}

const char* locale_registry::encoding_name_by_id(std::uint16_t id) const noexcept
{
    const auto table = tables::encodings();
    return id < table.size ? table[id].name : nullptr;
}

const char* locale_registry::default_encoding_of(std::string_view locale_name) const
{
    if (locale_name.empty())
        return nullptr;
    // An alias stands for its target in every later step.
    const auto* target = find_value(alias_to_locale_, tag_key(locale_name));
    const std::string_view name = target ? std::string_view(*target) : locale_name;
    if (const auto* encoding = find_value(default_encoding_, tag_key(name)))
        return *encoding;

    const language_row row = resolve_language_row(*this, parse_locale_name(name));
    if (row.language == no_index)
        return "UTF-8";
    return default_encoding_of_row(compose_row_name(*this, row), row);
}

const char* locale_registry::default_encoding_of_row(std::string_view canonical, const language_row& row) const
{
    if (const auto* encoding = find_value(default_encoding_, tag_key(canonical)))
        return *encoding;
    const char* encoding = encoding_name_by_id(row.encoding);
    return encoding ? encoding : "UTF-8";
}

std::string locale_registry::get_option(std::string_view locale, std::string_view option) const
{
    std::string key(locale);
    key.append(1, ':').append(option);
    const auto* value = find_value(lc_option_, key);
    return value ? std::string(*value) : std::string();
}

const char* locale_registry::find_locale_alias(std::string_view name) const
{
    const auto* target = find_value(alias_to_locale_, tag_key(name));
    return target ? *target : nullptr;
}

const char* locale_registry::find_region_alias(std::string_view name) const
{
    const auto* target = find_value(region_alias_to_locale_, tag_key(name));
    return target ? *target : nullptr;
}

const char* locale_registry::find_xpg_name(std::string_view locale) const
{
    const auto* xpg = find_value(xpg_name_, tag_key(locale));
    return xpg ? *xpg : nullptr;
}

const char* locale_registry::find_compat_encoding(std::string_view name) const
{
    // Stored under the standard name, so that every spelling of the encoding finds it.
    const encoding_entry_context* entry = find_encoding_entry(name);
    const auto* compat = find_value(compat_encoding_, lower_key(entry ? std::string_view(entry->name) : name));
    return compat ? *compat : nullptr;
}

const encoding_entry_context* locale_registry::find_encoding_entry(std::string_view name) const
{
    const auto* entry = find_value(encoding_by_name_, lower_key(name));
    return entry ? entry->get() : nullptr;
}

language_row_range locale_registry::rows_of(std::string_view language) const
{
    const auto* range = find_value(language_rows_, lower_key(language));
    return range ? *range : language_row_range{};
}

std::uint16_t locale_registry::script_index_of(std::string_view script) const
{
    const auto* index = find_value(script_index_, lower_key(script));
    return index ? *index : no_index;
}

std::uint16_t locale_registry::territory_index_of(std::string_view territory) const
{
    const auto* index = find_value(territory_index_, lower_key(territory));
    return index ? *index : no_index;
}

int locale_registry::territory_code(std::string_view upper) noexcept
{
    const auto letter = [](char c) { return c >= 'A' && c <= 'Z'; };
    const auto digit = [](char c) { return c >= '0' && c <= '9'; };
    if (upper.size() == 2 && letter(upper[0]) && letter(upper[1]))
        return (upper[0] - 'A') * 26 + (upper[1] - 'A');
    if (upper.size() == 3 && digit(upper[0]) && digit(upper[1]) && digit(upper[2]))
        return 26 * 26 + (upper[0] - '0') * 100 + (upper[1] - '0') * 10 + (upper[2] - '0');
    return -1;
}

bool locale_registry::territory_holds(std::uint16_t territory, int code) const noexcept
{
    if (code < 0 || std::size_t{territory} + 1 >= territory_code_start_.size())
        return false;
    const auto first = territory_codes_.begin() + territory_code_start_[territory];
    const auto last = territory_codes_.begin() + territory_code_start_[territory + 1u];
    return std::binary_search(first, last, static_cast<std::uint16_t>(code));
}

std::uint16_t locale_registry::territory_index_of_code(int code) const noexcept
{
    return code < 0 || static_cast<std::size_t>(code) >= territory_code_count ? no_index
                                                                             : territory_by_code_[static_cast<std::size_t>(code)];
}

const char* locale_registry::language_text(std::uint16_t index) const noexcept
{
    const auto table = tables::languages();
    return index < table.size ? table[index] : nullptr;
}

const char* locale_registry::script_text(std::uint16_t index) const noexcept
{
    const auto table = tables::scripts();
    return index < table.size ? table[index] : nullptr;
}

const char* locale_registry::territory_text(std::uint16_t index) const noexcept
{
    const auto table = tables::territories();
    return index < table.size ? table[index] : nullptr;
}

const char* locale_registry::intern(std::string_view text) { return pool_.emplace(text).first->c_str(); }

}  // namespace fl::i18n::detail

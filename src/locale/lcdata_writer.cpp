// What the locale database writes into the registry: the add operations, which compare with
// what is held and log refusals, and the registry's modify operations, which change the maps.
#include "locale_database.hpp"
#include "locale_name.hpp"

#include "conversion/encoding_names.hpp"

namespace fl::i18n {
namespace detail {
namespace {

char ascii_upper(char c) noexcept { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }

// language[-Script][_TERRITORY] in the letter case of the tables, for a name that the registry
// cannot place yet; empty when the name is more than that (codeset, modifier, variant, extension),
// since an alias target is only ever a base name.
std::string new_locale_form(std::string_view name)
{
    parsed_locale_name parsed = parse_locale_name(name);
    if (!parsed.valid() || !parsed.codeset.empty() || !parsed.modifiers.empty() || !parsed.variants.empty() ||
        !parsed.extensions.empty() || !parsed.private_use.empty())
        return {};
    parsed.language = lower_key(parsed.language);
    parsed.script = lower_key(parsed.script);
    if (!parsed.script.empty())
        parsed.script[0] = ascii_upper(parsed.script[0]);
    for (char& c : parsed.territory)
        c = ascii_upper(c);
    return compose_base(parsed);
}

bool any_empty(std::initializer_list<std::string_view> values)
{
    for (std::string_view value : values)
        if (value.empty())
            return true;
    return false;
}

}  // namespace

locale_registry::encoding_choice locale_registry::encoding_for_write(std::string_view name)
{
    if (const auto found = encoding_by_name_.find(lower_key(name)); found != encoding_by_name_.end())
        return {found->second, false};
    // The same rule as the standard-name lookup: ICU's preferred name, which may be listed.
    const std::string standard = icu_standard_name(std::string(name));
    if (standard.empty())
        return {};
    if (const auto found = encoding_by_name_.find(lower_key(standard)); found != encoding_by_name_.end())
        return {found->second, false};
    auto entry = std::make_shared<encoding_entry_context>();
    entry->name = intern(standard);
    return {std::move(entry), true};
}

void locale_registry::add_encoding(const encoding_ptr& entry, std::string_view spelling)
{
    encoding_by_name_.emplace(lower_key(entry->name), entry);
    encoding_by_name_.emplace(lower_key(spelling), entry);
}

void locale_registry::replace_encoding(const encoding_ptr& held, const encoding_ptr& fresh)
{
    for (auto& [key, entry] : encoding_by_name_)
        if (entry == held)
            entry = fresh;
}

bool locale_registry::claims_other_locale(std::string_view alias, std::string_view canonical) const
{
    // A name that is canonical in its own right names a locale; it cannot stand for another one.
    const std::string own = canonical_locale_name(*this, alias);
    return !own.empty() && tag_key(own) == tag_key(alias) && tag_key(own) != tag_key(canonical);
}

int locale_registry::modify_lc_entry(std::string_view name, std::string_view encoding, std::string_view xpg_name)
{
    if (any_empty({name, encoding, xpg_name}))
        return write_empty_input;
    std::string canonical = canonical_locale_name(*this, name);
    const bool new_locale = canonical.empty();
    if (new_locale)
        canonical = new_locale_form(name);
    const encoding_choice choice = encoding_for_write(encoding);
    if (canonical.empty() || !choice.entry)
        return write_not_canonical;
    if (claims_other_locale(xpg_name, canonical))
        return write_conflict;

    const char* stored = intern(canonical);
    if (new_locale)
        alias_to_locale_[tag_key(name)] = stored;
    if (choice.is_new)
        add_encoding(choice.entry, encoding);
    default_encoding_[tag_key(canonical)] = choice.entry->name;
    xpg_name_[tag_key(canonical)] = intern(xpg_name);
    alias_to_locale_[tag_key(xpg_name)] = stored;
    return write_done;
}

int locale_registry::modify_default_encoding(std::string_view name, std::string_view encoding)
{
    if (any_empty({name, encoding}))
        return write_empty_input;
    const std::string canonical = canonical_locale_name(*this, name);
    const encoding_choice choice = encoding_for_write(encoding);
    if (canonical.empty() || !choice.entry)
        return write_not_canonical;
    if (choice.is_new)
        add_encoding(choice.entry, encoding);
    default_encoding_[tag_key(canonical)] = choice.entry->name;
    return write_done;
}

int locale_registry::modify_xpg_name(std::string_view name, std::string_view xpg_name)
{
    if (any_empty({name, xpg_name}))
        return write_empty_input;
    const std::string canonical = canonical_locale_name(*this, name);
    if (canonical.empty())
        return write_not_canonical;
    if (claims_other_locale(xpg_name, canonical))
        return write_conflict;
    xpg_name_[tag_key(canonical)] = intern(xpg_name);
    alias_to_locale_[tag_key(xpg_name)] = intern(canonical);
    return write_done;
}

int locale_registry::modify_alias(alias_kind kind, std::string_view locale, std::string_view alias)
{
    if (any_empty({locale, alias}))
        return write_empty_input;
    const std::string canonical = canonical_locale_name(*this, locale);
    if (canonical.empty())
        return write_not_canonical;
    // A region alias stands for a locale whose resources another locale serves; it may be a real
    // locale name, but never the locale it is sent to.
    const bool conflict = kind == alias_kind::locale ? claims_other_locale(alias, canonical)
                                                     : tag_key(alias) == tag_key(canonical);
    if (conflict)
        return write_conflict;
    auto& map = kind == alias_kind::locale ? alias_to_locale_ : region_alias_to_locale_;
    map[tag_key(alias)] = intern(canonical);
    return write_done;
}

int locale_registry::modify_option(std::string_view locale, std::string_view option, std::string_view value)
{
    if (any_empty({locale, option, value}))
        return write_empty_input;
    std::string key = canonical_locale_name(*this, locale);
    if (key.empty())
        return write_not_canonical;
    key.append(1, ':').append(option);
    lc_option_[key] = intern(value);
    return write_done;
}

int locale_registry::compat_refusal(const encoding_choice& held, const encoding_choice& other) const
{
    if (!held.entry || !other.entry)
        return write_not_canonical;
    // An encoding is not a compatible stand-in for itself.
    if (held.entry == other.entry || lower_key(held.entry->name) == lower_key(other.entry->name))
        return write_conflict;
    return write_done;
}

void locale_registry::store_jvm_name(const encoding_choice& held, std::string_view spelling, std::string_view jvm_name)
{
    // Records are shared by all spellings and read without a lock, so a change is a new record.
    auto fresh = std::make_shared<encoding_entry_context>(*held.entry);
    fresh->jvm_name = intern(jvm_name);
    if (held.is_new)
        add_encoding(fresh, spelling);
    else
        replace_encoding(held.entry, fresh);
}

int locale_registry::modify_encoding_entry(std::string_view name, std::string_view jvm_name, std::string_view compat)
{
    if (any_empty({name, jvm_name, compat}))
        return write_empty_input;
    const encoding_choice held = encoding_for_write(name);
    const encoding_choice other = encoding_for_write(compat);
    if (const int refusal = compat_refusal(held, other); refusal != write_done)
        return refusal;
    store_jvm_name(held, name, jvm_name);
    if (other.is_new)
        add_encoding(other.entry, compat);
    compat_encoding_[lower_key(held.entry->name)] = other.entry->name;
    return write_done;
}

int locale_registry::modify_jvm_name(std::string_view name, std::string_view jvm_name)
{
    if (any_empty({name, jvm_name}))
        return write_empty_input;
    const encoding_choice held = encoding_for_write(name);
    if (!held.entry)
        return write_not_canonical;
    store_jvm_name(held, name, jvm_name);
    return write_done;
}

int locale_registry::modify_compat_encoding(std::string_view name, std::string_view compat)
{
    if (any_empty({name, compat}))
        return write_empty_input;
    const encoding_choice held = encoding_for_write(name);
    const encoding_choice other = encoding_for_write(compat);
    if (const int refusal = compat_refusal(held, other); refusal != write_done)
        return refusal;
    compat_encoding_[lower_key(held.entry->name)] = other.entry->name;
    return write_done;
}

int locale_registry::modify_encoding_alias(std::string_view encoding, std::string_view alias)
{
    if (any_empty({encoding, alias}))
        return write_empty_input;
    const encoding_choice held = encoding_for_write(encoding);
    if (!held.entry)
        return write_not_canonical;
    // Every spelling names one encoding: one that is taken is not moved to another.
    const auto taken = encoding_by_name_.find(lower_key(alias));
    if (taken != encoding_by_name_.end() && taken->second != held.entry)
        return write_conflict;
    if (held.is_new)
        add_encoding(held.entry, encoding);
    encoding_by_name_[lower_key(alias)] = held.entry;
    return write_done;
}

}  // namespace detail

namespace lcmgmt {
namespace {

bool same_text(const char* held, std::string_view value) noexcept { return held != nullptr && value == held; }

}  // namespace

LcData::LcData(detail::locale_registry& registry, std::vector<std::string>& event_log)
    : registry_(&registry), event_log_(&event_log)
{
}

int LcData::report(std::string_view caller, std::string_view operation, std::initializer_list<std::string_view> values,
                   int code)
{
    if (code == 0)
        return 0;
    std::string entry(caller);
    entry.append("::").append(operation).append(" - ");
    const char* separator = "";
    for (std::string_view value : values) {
        entry.append(separator).append(value);
        separator = ":";
    }
    entry += std::to_string(code);
    event_log_->push_back(std::move(entry));
    return code;
}

template <class Both, class First, class Second>
int LcData::modify_given(std::string_view caller, const std::string_view (&operations)[3], std::string_view name,
                         std::string_view first, std::string_view second, const Both& both, const First& first_only,
                         const Second& second_only)
{
    if (!first.empty() && !second.empty())
        return report(caller, operations[0], {name, first, second}, both());
    if (!first.empty())
        return report(caller, operations[1], {name, first}, first_only());
    if (!second.empty())
        return report(caller, operations[2], {name, second}, second_only());
    return 0;
}

int LcData::addLcName(std::string_view name, std::string_view encoding, std::string_view xpg_name)
{
    if (encoding.empty() && xpg_name.empty())
        return 0;
    const std::string canonical = detail::canonical_locale_name(*registry_, name);
    if (!canonical.empty()) {
        // A value equal to the one held is no change, so it counts as not given.
        const char* standard = registry_->find_standard_encoding(encoding);
        if (standard != nullptr && same_text(registry_->default_encoding_of(canonical), standard))
            encoding = {};
        if (same_text(registry_->find_xpg_name(canonical), xpg_name))
            xpg_name = {};
    }
    static constexpr std::string_view operations[] = {"modifyLcEntry", "modifyDefEncoding", "modifyXpgName"};
    return modify_given(
        "LcData::addLcName", operations, name, encoding, xpg_name,
        [&] { return registry_->modify_lc_entry(name, encoding, xpg_name); },
        [&] { return registry_->modify_default_encoding(name, encoding); },
        [&] { return registry_->modify_xpg_name(name, xpg_name); });
}

int LcData::add_alias(detail::alias_kind kind, std::string_view locale, std::string_view alias)
{
    const bool region = kind == detail::alias_kind::region;
    const char* held = region ? registry_->find_region_alias(alias) : registry_->find_locale_alias(alias);
    if (held != nullptr && detail::tag_key(held) == detail::tag_key(locale))
        return 0;
    return report(region ? "LcData::addRegionAliasLcName" : "LcData::addAliasLcName", "modifyLcAliasName",
                  {locale, alias}, registry_->modify_alias(kind, locale, alias));
}

int LcData::addAliasLcName(std::string_view locale, std::string_view alias)
{
    return add_alias(detail::alias_kind::locale, locale, alias);
}

int LcData::addRegionAliasLcName(std::string_view locale, std::string_view alias)
{
    return add_alias(detail::alias_kind::region, locale, alias);
}

int LcData::addL10nFlag(std::string_view locale, std::string_view value)
{
    constexpr std::string_view option = "disable_l10n";
    const std::string canonical = detail::canonical_locale_name(*registry_, locale);
    if (!canonical.empty() && registry_->get_option(canonical, option) == value)
        return 0;
    return report("LcData::addL10nFlag", "modifyLcOptData", {locale, value},
                  registry_->modify_option(locale, option, value));
}

int LcData::addEncodingName(std::string_view name, std::string_view jvm_encoding, std::string_view compat)
{
    if (const detail::encoding_entry_context* entry = registry_->find_encoding_entry(name))
        if (same_text(entry->jvm_name, jvm_encoding))
            jvm_encoding = {};
    const char* held_compat = registry_->find_compat_encoding(name);
    if (held_compat != nullptr &&
        (same_text(held_compat, compat) || same_text(registry_->find_standard_encoding(compat), held_compat)))
        compat = {};
    static constexpr std::string_view operations[] = {"modifyEncodingDataEntry", "modifyJvmName",
                                                      "modifyCompatEncoding"};
    return modify_given(
        "LcData::addEncodingName", operations, name, jvm_encoding, compat,
        [&] { return registry_->modify_encoding_entry(name, jvm_encoding, compat); },
        [&] { return registry_->modify_jvm_name(name, jvm_encoding); },
        [&] { return registry_->modify_compat_encoding(name, compat); });
}

int LcData::addEncodingAlias(std::string_view encoding, std::string_view alias)
{
    const detail::encoding_entry_context* held = registry_->find_encoding_entry(alias);
    const detail::encoding_entry_context* wanted = registry_->find_encoding_entry(encoding);
    if (held != nullptr && (held == wanted || detail::lower_key(held->name) == detail::lower_key(encoding)))
        return 0;
    return report("LcData::addEncodingAlias", "modifyEncodingAlias", {encoding, alias},
                  registry_->modify_encoding_alias(encoding, alias));
}

}  // namespace lcmgmt
}  // namespace fl::i18n

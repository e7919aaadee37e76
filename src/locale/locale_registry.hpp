// The locale registry: languages, scripts, territories, encodings and aliases, filled from the
// compiled-in tables and later extended by the locale database.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace fl::i18n::detail {

inline constexpr std::uint16_t no_index = 65535;

/// ASCII letters lower-cased; the key of languages, scripts, territories and encodings.
std::string lower_key(std::string_view text);
/// ASCII letters lower-cased and "_" made "-"; the key of locale names.
std::string tag_key(std::string_view text);

/// One language with one script (or group) and the territories (or group) where it is used.
struct language_row {
    std::uint16_t language = no_index;
    std::uint16_t script = no_index;     // a group entry holds several codes separated by blanks
    std::uint16_t territory = no_index;  // likewise
    std::uint16_t encoding = no_index;
    std::uint8_t is_default = 255;
};

/// What a lookup that found nothing yields.
inline constexpr language_row empty_language_row{};

struct encoding_entry_context {
    const char* name = nullptr;
    const char* jvm_name = nullptr;
};

/// The rows of one language, in table order.
struct language_row_range {
    const language_row* first = nullptr;
    std::size_t count = 0;
    const language_row* begin() const noexcept { return first; }
    const language_row* end() const noexcept { return first + count; }
};

/// Results of the registry's database writes.
enum write_result : int {
    write_done = 0,
    write_empty_input = 2,    ///< a required input was empty
    write_conflict = 3,       ///< the value contradicts what the registry holds
    write_not_canonical = 4,  ///< a locale or encoding name the registry cannot place
};

/// The two alias maps that the database writes.
enum class alias_kind { locale, region };

class locale_registry {
public:
    /// Fills every map from the compiled-in tables; throws std::logic_error on a broken table.
    locale_registry();
    locale_registry(const locale_registry&) = delete;
    locale_registry& operator=(const locale_registry&) = delete;
    ~locale_registry();

    /// The standard name for any spelling the registry knows, or null.
    const char* find_standard_encoding(std::string_view name) const;
    /// The JVM name, else the standard name; null if the encoding is unknown.
    const char* find_jvm_encoding(std::string_view name) const;
    /// The standard name of an encoding-table id, or null.
    const char* encoding_name_by_id(std::uint16_t id) const noexcept;
    /// The default encoding of a locale name; null for an empty name.
    const char* default_encoding_of(std::string_view locale_name) const;
    /// default_encoding_of for a name that is its own canonical form, found through `row`.
    const char* default_encoding_of_row(std::string_view canonical, const language_row& row) const;
    /// The value stored under "locale:option", or empty.
    std::string get_option(std::string_view locale, std::string_view option) const;

    /// The canonical target of an alias (matched as a tag key), or null.
    const char* find_locale_alias(std::string_view name) const;
    /// The canonical target of a region alias (matched as a tag key), or null.
    const char* find_region_alias(std::string_view name) const;
    /// The XPG name the database gave a canonical locale name (matched as a tag key), or null.
    const char* find_xpg_name(std::string_view locale) const;
    /// The compatible encoding the database gave an encoding (any spelling), or null.
    const char* find_compat_encoding(std::string_view name) const;
    /// The record of any spelling of an encoding, or null.
    const encoding_entry_context* find_encoding_entry(std::string_view name) const;
    /// The rows of a language code (matched as a lower key); empty for an unknown language.
    language_row_range rows_of(std::string_view language) const;
    std::uint16_t script_index_of(std::string_view script) const;
    std::uint16_t territory_index_of(std::string_view territory) const;

    /// A territory code ("DE", "419") as a small number, or -1 for anything else; upper case only.
    static int territory_code(std::string_view upper) noexcept;
    /// Whether the territory string at `territory` (a code or a group) holds the code `code`.
    bool territory_holds(std::uint16_t territory, int code) const noexcept;
    /// The table index of the single code `code`, or no_index.
    std::uint16_t territory_index_of_code(int code) const noexcept;
    /// Table texts by index; null for no_index or an index out of range.
    const char* language_text(std::uint16_t index) const noexcept;
    const char* script_text(std::uint16_t index) const noexcept;
    const char* territory_text(std::uint16_t index) const noexcept;

    /// Keeps a copy of `text` for the registry's life and returns its one stored representation.
    const char* intern(std::string_view text);

    // Writes of the locale database, made only during start-up under the context's mutex. Each
    // stores every value or none, and returns a write_result. A locale name is stored in its
    // canonical form; an encoding must be known to the registry or to ICU, and one that only ICU
    // knows enters the registry under ICU's preferred name.

    /// Sets default encoding and XPG name; the only write that may bring a new locale, which
    /// must then be a plain language[-Script][_TERRITORY] name. The XPG name becomes an alias.
    int modify_lc_entry(std::string_view name, std::string_view encoding, std::string_view xpg_name);
    int modify_default_encoding(std::string_view name, std::string_view encoding);
    /// Stores the XPG name and makes it an alias of the locale.
    int modify_xpg_name(std::string_view name, std::string_view xpg_name);
    /// Maps `alias` to the canonical form of `locale` in the locale or the region alias map.
    int modify_alias(alias_kind kind, std::string_view locale, std::string_view alias);
    /// Stores `value` under "locale:option".
    int modify_option(std::string_view locale, std::string_view option, std::string_view value);
    /// Replaces the encoding's record by one with `jvm_name`, and stores its compatible encoding.
    int modify_encoding_entry(std::string_view name, std::string_view jvm_name, std::string_view compat);
    int modify_jvm_name(std::string_view name, std::string_view jvm_name);
    int modify_compat_encoding(std::string_view name, std::string_view compat);
    /// Makes `alias` one more spelling of `encoding`.
    int modify_encoding_alias(std::string_view encoding, std::string_view alias);

    /// Sizes of the maps, for diagnostics and table checks.
    std::size_t language_count() const noexcept { return language_rows_.size(); }
    std::size_t encoding_name_count() const noexcept { return encoding_by_name_.size(); }
    std::size_t alias_count() const noexcept { return alias_to_locale_.size(); }

private:
    template <class V>
    using string_map = std::unordered_map<std::string, V>;
    using encoding_ptr = std::shared_ptr<encoding_entry_context>;

    void fill_scripts();
    void fill_territories();
    void fill_language_rows();
    void fill_encodings();
    void fill_aliases();
    void fill_default_encodings();

    // An encoding as a write may use it: the record held, or a new one when ICU knows the name.
    struct encoding_choice {
        encoding_ptr entry;  // null when neither knows the name
        bool is_new = false;
    };
    encoding_choice encoding_for_write(std::string_view name);
    // Enters a new record under its standard name and under the spelling that brought it.
    void add_encoding(const encoding_ptr& entry, std::string_view spelling);
    // Keeps the one-record-per-encoding rule: every spelling that led to `held` leads to `fresh`.
    void replace_encoding(const encoding_ptr& held, const encoding_ptr& fresh);
    bool claims_other_locale(std::string_view alias, std::string_view canonical) const;
    int compat_refusal(const encoding_choice& held, const encoding_choice& other) const;
    void store_jvm_name(const encoding_choice& held, std::string_view spelling, std::string_view jvm_name);

    string_map<language_row_range> language_rows_;
    string_map<std::uint16_t> script_index_;
    string_map<std::uint16_t> territory_index_;
    string_map<encoding_ptr> encoding_by_name_;
    string_map<const char*> alias_to_locale_;
    string_map<const char*> region_alias_to_locale_;
    string_map<const char*> default_encoding_;
    string_map<const char*> xpg_name_;
    string_map<const char*> compat_encoding_;
    string_map<const char*> lc_option_;

    // Each territory string split into its codes, so that a group is searched without text scans.
    static constexpr std::size_t territory_code_count = 26 * 26 + 1000;
    std::vector<std::uint16_t> territory_codes_;       // sorted within each string
    std::vector<std::uint32_t> territory_code_start_;  // one more than there are territories
    std::array<std::uint16_t, territory_code_count> territory_by_code_{};

    std::vector<language_row> rows_;
    std::unordered_set<std::string> pool_;
};

}  // namespace fl::i18n::detail

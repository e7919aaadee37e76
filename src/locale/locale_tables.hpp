// The compiled-in locale tables, as constant arrays over the generated data files.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fl::i18n::detail::tables {

template <class T>
struct table_view {
    const T* data;
    std::size_t size;
    const T* begin() const noexcept { return data; }
    const T* end() const noexcept { return data + size; }
    const T& operator[](std::size_t i) const noexcept { return data[i]; }
};

struct encoding_row {
    const char* name;
    const char* jvm_name;        // null when the JVM knows the encoding by its standard name
    const char* aliases[8];      // ends at the first null
};

/// A locale alias: the key is `full` when not empty, else language["-" script][separator
/// territory]variant; an index other than 65535 replaces the text beside it.
struct alias_row {
    const char* full;
    const char* language;
    const char* script;
    const char* territory;
    std::uint16_t language_index;
    std::uint16_t script_index;
    std::uint16_t territory_index;
    const char* variant;
    char separator;
    std::uint16_t target;  // index into alias_targets()
};

struct default_encoding_row {
    const char* locale;
    const char* encoding;
};

table_view<const char*> scripts();
table_view<const char*> territories();
table_view<const char*> languages();
/// Five values a row: language, script, territory, encoding, is_default (low byte).
table_view<std::uint16_t> language_row_values();
table_view<encoding_row> encodings();
table_view<alias_row> aliases();
table_view<const char*> alias_targets();
table_view<default_encoding_row> default_encodings();

}  // namespace fl::i18n::detail::tables

// Benchmark inputs: a short sentence repeated up to a byte size, cut between two characters.
#pragma once

#include <fl/i18n/ustring.hpp>

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace qxbench {

/// One text of the benchmark: a sentence and the encoding its byte form is measured in.
struct text_source {
    const char* label;       ///< short name shown in benchmark names and the table
    const char* icu_name;    ///< the encoding as ICU and the library spell it
    const char* iconv_name;  ///< the same encoding as glibc iconv spells it
    std::u16string_view sentence;
};

/// The same characters twice: in the byte encoding of the text and in UTF-16.
struct sample {
    std::string bytes;
    ustring units;
};

/// The input sizes, as bytes of the byte-encoded form of a text.
struct size_step {
    std::size_t bytes;
    const char* label;
};

inline constexpr std::array<size_step, 4> sizes{{
    {16, "16B"},
    {1024, "1KiB"},
    {64 * 1024, "64KiB"},
    {16 * 1024 * 1024, "16MiB"},
}};

/// The three UTF-8 texts: ASCII, French and German prose with accents, Japanese.
const std::array<text_source, 3>& utf8_texts();

/// The code-page texts: the accented prose in windows-1252 and the Japanese in Shift_JIS.
const std::array<text_source, 2>& codepage_texts();

/// The text repeated as long as its byte form stays within `bytes`, never splitting a character.
/// Built with ICU on first use and kept; throws std::runtime_error if ICU cannot encode it.
const sample& sample_for(const text_source& text, std::size_t bytes);

/// The byte count of a size label ("1KiB" -> 1024), 0 for an unknown label.
std::size_t size_of_label(std::string_view label);

}  // namespace qxbench

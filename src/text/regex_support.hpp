// What pattern_match and its status-reporting twin share: the normal form and ICU flags a mode
// asks for, the normaliser of patterns and subjects, and the owner of a compiled expression.
#pragma once

#include <fl/i18n/character_handling.hpp>
#include <fl/i18n/regex_error.hpp>
#include <fl/i18n/ustring.hpp>

#include <unicode/uregex.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace fl::i18n::detail {

struct uregex_closer {
    void operator()(URegularExpression* expression) const noexcept { uregex_close(expression); }
};
using regex_ptr = std::unique_ptr<URegularExpression, uregex_closer>;

/// Bits of a matcher's `normalization`: pattern and subject are normalised; to NFD rather than NFC.
constexpr std::int32_t normalize_bit = 1;
constexpr std::int32_t decompose_bit = 2;

/// 1 (NFC) for composing and normalisation-insensitive modes, 3 (NFD) for the decomposing mode,
/// else 0. Case and locale bits play no part.
std::int32_t normalization_of(const character_handling_mode_context& mode) noexcept;

/// `text.size()` as ICU's int32_t length; throws boost::numeric::positive_overflow above 0x7FFFFFFF.
std::int32_t checked_regex_length(const ustring& text);

/// Normalises `text` into `out`, to NFD when `normalization` has decompose_bit, else to NFC. An
/// empty text gives an empty result without calling ICU. Returns regex_success or
/// regex_failed_normalization; throws positive_overflow for an over-long text.
regex_status normalize_text(const ustring& text, std::int32_t normalization, ustring& out);

/// Compiles `pattern` with UREGEX_DOTALL, plus UREGEX_CASE_INSENSITIVE when the mode ignores
/// case; null when ICU refuses it. Throws positive_overflow for an over-long pattern.
regex_ptr open_regex(const ustring& pattern, const character_handling_mode_context& mode);

}  // namespace fl::i18n::detail

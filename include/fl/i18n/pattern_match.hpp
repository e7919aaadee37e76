// A compiled ICU regular expression whose pattern and subjects are brought to one normal form.
#pragma once

#include <fl/i18n/character_handling.hpp>
#include <fl/i18n/export.hpp>
#include <fl/i18n/regex_error.hpp>
#include <fl/i18n/ustring.hpp>

#include <cstdint>
#include <optional>
#include <utility>

namespace fl::i18n {

/// Move-only matcher. "." matches line ends; case-insensitive modes add ICU's case-insensitive
/// flag; composing and normalisation-insensitive modes match in NFC, the decomposing mode in NFD.
/// One object must not be used by two threads at once: matching changes ICU's subject.
class QXI18N_API pattern_match {
public:
    /// Throws RegexInvalidArgument for an empty pattern, RegexFailedObjectCreation when ICU
    /// refuses it, RegexFailedNormalization, or boost::numeric::positive_overflow above 2^31-1 units.
    pattern_match(const ustring& pattern, const character_handling_mode_context& mode);
    pattern_match(pattern_match&& other) noexcept;
    pattern_match& operator=(pattern_match&& other) noexcept;
    pattern_match(const pattern_match&) = delete;
    pattern_match& operator=(const pattern_match&) = delete;
    ~pattern_match();

    /// The text as it will be matched, made the expression's current subject. ICU keeps a pointer
    /// into the returned string: keep it alive while working on this object.
    ustring prepareForMatching(const ustring& text) const;
    /// True when the whole text matches.
    bool match(const ustring& text) const;
    /// The first match at or after `start`, as start and end indices of the prepared text.
    /// Throws std::out_of_range unless 0 <= start < text.size().
    std::optional<std::pair<int, int>> partialMatch(const ustring& text, int start) const;

private:
    struct regex_holder;
    regex_holder* holder_;
    std::int32_t normalization_;
};

}  // namespace fl::i18n

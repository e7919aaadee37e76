// pattern_match_impl: the twin of pattern_match that reports by regex_status instead of throwing,
// for the wildcard filter of directory iteration.
#pragma once

#include "regex_support.hpp"

#include <fl/i18n/character_handling.hpp>
#include <fl/i18n/regex_error.hpp>
#include <fl/i18n/ustring.hpp>

#include <cstdint>

namespace fl::i18n::detail {

/// Compiles and matches as pattern_match does. The one exception it lets through is
/// boost::numeric::positive_overflow, for a pattern or text above 0x7FFFFFFF units.
/// Movable, not copyable; for one thread at a time.
class pattern_match_impl {
public:
    /// Compiles `pattern` once: while status() is not 0 this returns it and does nothing. Gives
    /// regex_invalid_argument for an empty pattern, regex_failed_normalization, or
    /// regex_failed_object_creation when ICU refuses the pattern; regex_success otherwise.
    regex_status open(const ustring& pattern, const character_handling_mode_context& mode);

    /// True when the whole text matches. `out_status` becomes regex_invalid_object unless open
    /// succeeded, regex_failed_normalization for a text that cannot be normalised (an empty one
    /// under a normalising mode), regex_failed_match_operation when ICU fails, else regex_success.
    bool matches(const ustring& text, regex_status& out_status);

    /// The outcome of open, or 0 before it.
    regex_status status() const noexcept { return status_; }
    bool valid() const noexcept { return valid_; }

private:
    regex_status compile(const ustring& pattern, const character_handling_mode_context& mode);

    regex_ptr expression_;
    bool valid_ = false;
    std::int32_t normalization_ = 0;
    regex_status status_ = regex_status{};
};

}  // namespace fl::i18n::detail

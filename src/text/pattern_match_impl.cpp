// The status-reporting pattern matcher used by directory iteration.
#include "pattern_match_impl.hpp"

namespace fl::i18n::detail {

regex_status pattern_match_impl::open(const ustring& pattern, const character_handling_mode_context& mode)
{
    if (status_ != regex_status{})
        return status_;
    status_ = compile(pattern, mode);
    return status_;
}

regex_status pattern_match_impl::compile(const ustring& pattern, const character_handling_mode_context& mode)
{
    if (pattern.empty())
        return regex_invalid_argument;
    normalization_ = normalization_of(mode);
    // Every pattern is normalised, whatever the mode, so one that ICU cannot normalise is refused
    // under all modes alike; the normal form is compiled only when the mode asks for it.
    ustring normalized;
    if (normalize_text(pattern, normalization_, normalized) != regex_success)
        return regex_failed_normalization;
    expression_ = open_regex((normalization_ & normalize_bit) ? normalized : pattern, mode);
    if (!expression_)
        return regex_failed_object_creation;
    valid_ = true;
    return regex_success;
}

bool pattern_match_impl::matches(const ustring& text, regex_status& out_status)
{
    if (status_ != regex_success) {
        out_status = regex_invalid_object;
        return false;
    }
    // ICU reads the subject in place: `normalized`, or else the caller's text, lives until we return.
    ustring normalized;
    const ustring* subject = &text;
    if (normalization_ & normalize_bit) {
        if (text.empty() || normalize_text(text, normalization_, normalized) != regex_success) {
            out_status = regex_failed_normalization;
            return false;
        }
        subject = &normalized;
    }
    const std::int32_t length = checked_regex_length(*subject);
    UErrorCode status = U_ZERO_ERROR;
    uregex_setText(expression_.get(), subject->data(), length, &status);
    const UBool matched = uregex_matches(expression_.get(), -1, &status);
    if (U_FAILURE(status)) {
        out_status = regex_failed_match_operation;
        return false;
    }
    out_status = regex_success;
    return matched != 0;
}

}  // namespace fl::i18n::detail

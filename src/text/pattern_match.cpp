// pattern_match: an ICU regular expression over a pattern and subjects in the mode's normal form.
#include <fl/i18n/conversion.hpp>
#include <fl/i18n/pattern_match.hpp>

#include "common/throw_exception.hpp"
#include "regex_support.hpp"

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace fl::i18n {

struct pattern_match::regex_holder {
    detail::regex_ptr expression;
    bool valid = false;
};

namespace {

void normalize_or_throw(const ustring& text, std::int32_t normalization, ustring& out)
{
    if (detail::normalize_text(text, normalization, out) != regex_success)
        fl::detail::throw_exception(RegexFailedNormalization());
}

void check_match_status(UErrorCode status)
{
    if (U_FAILURE(status))
        fl::detail::throw_exception(RegexFailedMatchOperation());
}

// The text as it is matched: normalised into `storage` when the mode asks for it, else `text`.
const ustring& normal_form(std::int32_t normalization, const ustring& text, ustring& storage)
{
    if ((normalization & detail::normalize_bit) == 0)
        return text;
    normalize_or_throw(text, normalization, storage);
    return storage;
}

const ustring& prepare(bool valid, std::int32_t normalization, const ustring& text, ustring& storage)
{
    if (!valid)
        fl::detail::throw_exception(RegexInvalidObject());
    return normal_form(normalization, text, storage);
}

// ICU reads the subject in place and keeps the pointer, so `subject` must outlive the matching.
void set_subject(URegularExpression* expression, const ustring& subject)
{
    const std::int32_t length = detail::checked_regex_length(subject);
    UErrorCode status = U_ZERO_ERROR;
    uregex_setText(expression, subject.data(), length, &status);
    check_match_status(status);
}

}  // namespace

pattern_match::pattern_match(const ustring& pattern, const character_handling_mode_context& mode)
    : holder_(nullptr), normalization_(detail::normalization_of(mode))
{
    if (pattern.empty())
        fl::detail::throw_exception(RegexInvalidArgument());
    // The holder is owned here until the expression is compiled, so a failure releases it.
    auto holder = std::make_unique<regex_holder>();
    ustring normalized;
    const ustring& prepared = normal_form(normalization_, pattern, normalized);
    if (prepared.empty())
        fl::detail::throw_exception(RegexInvalidArgument());
    holder->expression = detail::open_regex(prepared, mode);
    if (!holder->expression)
        fl::detail::throw_exception(RegexFailedObjectCreation());
    holder->valid = true;
    holder_ = holder.release();
}

pattern_match::pattern_match(pattern_match&& other) noexcept
    : holder_(std::exchange(other.holder_, nullptr)), normalization_(other.normalization_)
{
}

pattern_match& pattern_match::operator=(pattern_match&& other) noexcept
{
    if (this != &other) {
        delete holder_;
        holder_ = std::exchange(other.holder_, nullptr);
        normalization_ = other.normalization_;
    }
    return *this;
}

pattern_match::~pattern_match() { delete holder_; }

ustring pattern_match::prepareForMatching(const ustring& text) const
{
    ustring prepared;
    if (&prepare(holder_->valid, normalization_, text, prepared) == &text)
        prepared = text;
    set_subject(holder_->expression.get(), prepared);
    // Returned in place (one named result on every path), so ICU's pointer stays on it.
    return prepared;
}

bool pattern_match::match(const ustring& text) const
{
    ustring storage;
    set_subject(holder_->expression.get(), prepare(holder_->valid, normalization_, text, storage));
    UErrorCode status = U_ZERO_ERROR;
    const UBool matched = uregex_matches(holder_->expression.get(), -1, &status);
    check_match_status(status);
    return matched != 0;
}

std::optional<std::pair<int, int>> pattern_match::partialMatch(const ustring& text, int start) const
{
    // The bound is the caller's text; the indices ICU works with are those of the prepared text.
    const std::int64_t index = start;
    if (index < 0 || static_cast<std::uint64_t>(index) >= text.size())
        fl::detail::throw_exception(std::out_of_range("Index " + std::to_string(index) + " is out of bounds for " +
                                                      to_string(text)));
    ustring storage;
    URegularExpression* expression = holder_->expression.get();
    set_subject(expression, prepare(holder_->valid, normalization_, text, storage));
    UErrorCode status = U_ZERO_ERROR;
    const UBool found = uregex_find(expression, start, &status);
    check_match_status(status);
    if (!found)
        return std::nullopt;
    const std::int32_t first = uregex_start(expression, 0, &status);
    const std::int32_t last = uregex_end(expression, 0, &status);
    check_match_status(status);
    return std::make_pair(first, last);
}

}  // namespace fl::i18n

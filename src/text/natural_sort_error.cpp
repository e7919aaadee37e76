// Exceptions of callers' natural-order comparators: a fixed prefix and the ICU status text.
#include <fl/i18n/natural_sort_error.hpp>

namespace fl::i18n {

namespace {
// The one what() both classes share.
const char* message_text(const std::string& message) noexcept { return message.c_str(); }
}  // namespace

NaturalSortCollatorException::NaturalSortCollatorException(const std::string& error_code)
    : message_("Failed to create ICU Collator. Following error code received: " + error_code)
{
}
NaturalSortCollatorException::~NaturalSortCollatorException() = default;
const char* NaturalSortCollatorException::what() const noexcept { return message_text(message_); }

NaturalSortCompareException::NaturalSortCompareException(const std::string& error_code)
    : message_("ICU Collator's compare operation failed. Following error code received: " + error_code)
{
}
NaturalSortCompareException::~NaturalSortCompareException() = default;
const char* NaturalSortCompareException::what() const noexcept { return message_text(message_); }

}  // namespace fl::i18n

// The text engine's exception family: fixed messages, ids and the ICU status where there is one.
#include <fl/i18n/ctype_error.hpp>

#include "common/throw_exception.hpp"

namespace foundation::ustring {

CtypeExceptionBase::CtypeExceptionBase(const char* message, ctype_excp_id id, int error_code)
    : message_(message), id_(id), error_code_(error_code)
{
}
CtypeExceptionBase::~CtypeExceptionBase() = default;

const char* CtypeExceptionBase::what() const noexcept { return message_.c_str(); }

CtypeInvalidCharacter::CtypeInvalidCharacter()
    : CtypeExceptionBase("Invalid character error.", ctype_invalid_character, 0)
{
}
CtypeInvalidCharacter::~CtypeInvalidCharacter() = default;

void detail::throw_ctype_invalid_character_exception()
{
    fl::detail::throw_exception(CtypeInvalidCharacter());
}

}  // namespace foundation::ustring

namespace fl::i18n {

using foundation::ustring::CtypeExceptionBase;

CtypeSizeTooLarge::CtypeSizeTooLarge()
    : CtypeExceptionBase("Data size too large.", foundation::ustring::ctype_size_too_large, 0)
{
}
CtypeSizeTooLarge::~CtypeSizeTooLarge() = default;

CtypeTransformFailure::CtypeTransformFailure(int icu_status)
    : CtypeExceptionBase("Transformation failure.", foundation::ustring::ctype_transform_failure, icu_status)
{
}
CtypeTransformFailure::~CtypeTransformFailure() = default;

CtypeStrCompFailure::CtypeStrCompFailure()
    : CtypeExceptionBase("String comparison failure.", foundation::ustring::ctype_str_comp_failure, 0)
{
}
CtypeStrCompFailure::~CtypeStrCompFailure() = default;

CtypeInvalidArgument::CtypeInvalidArgument()
    : CtypeExceptionBase("Invalid argument error.", foundation::ustring::ctype_invalid_argument, 0)
{
}
CtypeInvalidArgument::~CtypeInvalidArgument() = default;

}  // namespace fl::i18n

// The locale exception family: identifiers, codes, messages and details.
#include "locale_impl.hpp"

#include "common/throw_exception.hpp"

#include <fl/i18n/locale_error.hpp>

namespace fl::i18n {

QxLcMgmtExceptionBase::QxLcMgmtExceptionBase(const char* identifier, int code, const char* message,
                                             std::string detail)
    : identifier_(identifier), code_(code), message_(message), detail_(std::move(detail))
{
}
QxLcMgmtExceptionBase::QxLcMgmtExceptionBase(const QxLcMgmtExceptionBase& other) = default;
QxLcMgmtExceptionBase::~QxLcMgmtExceptionBase() = default;

const char* QxLcMgmtExceptionBase::what() const noexcept { return message_.c_str(); }

QxLcInvLcName::QxLcInvLcName(const std::string& name)
    : QxLcMgmtExceptionBase("fl:i18n:QxLcInvLcName", 1, "Invalid locale name.", name)
{
}
QxLcInvLcName::~QxLcInvLcName() = default;

QxLcDataNotFound::QxLcDataNotFound()
    : QxLcMgmtExceptionBase("fl:i18n:QxLcDataNotFound", 2, "Locale data not found.", std::string())
{
}
QxLcDataNotFound::~QxLcDataNotFound() = default;

QxLcInvLcArgument::QxLcInvLcArgument()
    : QxLcMgmtExceptionBase("fl:i18n:QxLcInvLcArgument", 4, "Invalid argument", std::string())
{
}
QxLcInvLcArgument::~QxLcInvLcArgument() = default;

namespace detail {

void throw_invalid_name(const std::string& name) { fl::detail::throw_exception(QxLcInvLcName(name)); }
void throw_invalid_argument() { fl::detail::throw_exception(QxLcInvLcArgument()); }
void throw_data_not_found() { fl::detail::throw_exception(QxLcDataNotFound()); }

}  // namespace detail
}  // namespace fl::i18n

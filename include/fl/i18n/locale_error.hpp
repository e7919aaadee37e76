// Exceptions of the locale layer: one base with identifier, code, message and detail.
#pragma once

#include <fl/i18n/export.hpp>

#include <exception>
#include <string>

namespace fl::i18n {

/// Base of all locale-management exceptions. Thrown only wrapped in
/// boost::exception_detail::clone_impl<E>, so boost::current_exception() can carry it.
class QXI18N_API QxLcMgmtExceptionBase : public std::exception {
public:
    QxLcMgmtExceptionBase(const char* identifier, int code, const char* message, std::string detail);
    QxLcMgmtExceptionBase(const QxLcMgmtExceptionBase& other);
    ~QxLcMgmtExceptionBase() override = 0;

    /// The message, e.g. "Invalid locale name.".
    const char* what() const noexcept override;
    /// "fl:i18n:" and the class name.
    const std::string& getIdentifier() const noexcept { return identifier_; }
    int getCode() const noexcept { return code_; }
    const std::string& getMessage() const noexcept { return message_; }
    /// What was refused, e.g. the locale name; may be empty.
    const std::string& getDetail() const noexcept { return detail_; }

private:
    std::string identifier_;
    int code_;
    std::string message_;
    std::string detail_;
};

/// A locale name that fails the grammar, has no language row or alias, or names an unknown codeset.
/// The detail is the refused name or codeset.
class QXI18N_API QxLcInvLcName : public QxLcMgmtExceptionBase {
public:
    explicit QxLcInvLcName(const std::string& name);
    ~QxLcInvLcName() override;
};

/// A category or optional-data name that the locale layer does not know.
class QXI18N_API QxLcDataNotFound : public QxLcMgmtExceptionBase {
public:
    QxLcDataNotFound();
    ~QxLcDataNotFound() override;
};

/// An empty locale name or an argument out of range.
class QXI18N_API QxLcInvLcArgument : public QxLcMgmtExceptionBase {
public:
    QxLcInvLcArgument();
    ~QxLcInvLcArgument() override;
};

}  // namespace fl::i18n

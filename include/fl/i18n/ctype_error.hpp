// Exceptions of the text engine: one base shared by classification, transforms and comparison.
#pragma once

#include <fl/i18n/export.hpp>

#include <cstdint>
#include <exception>
#include <string>

namespace foundation::ustring {

/// Identifies the kind of a text-engine failure.
enum ctype_excp_id : std::int32_t {
    ctype_size_too_large = 0,
    ctype_transform_failure = 1,
    ctype_str_comp_failure = 2,
    ctype_invalid_character = 3,
    ctype_invalid_argument = 4,
};

/// Base of the text engine's exceptions. Thrown only wrapped in
/// boost::exception_detail::clone_impl<E>; catch it as the concrete class or as this base.
class QXI18N_API CtypeExceptionBase : public std::exception {
public:
    CtypeExceptionBase(const char* message, ctype_excp_id id, int error_code);
    ~CtypeExceptionBase() override;

    const char* what() const noexcept override;
    /// The kind of failure.
    ctype_excp_id get_id() const noexcept { return id_; }
    /// The ICU status behind the failure, or 0 when ICU was not involved.
    int get_error_code() const noexcept { return error_code_; }

private:
    std::string message_;
    ctype_excp_id id_;
    int error_code_;
};

/// A character that the operation cannot accept: "Invalid character error.".
class QXI18N_API CtypeInvalidCharacter : public CtypeExceptionBase {
public:
    CtypeInvalidCharacter();
    ~CtypeInvalidCharacter() override;
};

namespace detail {
/// Raises CtypeInvalidCharacter; lets code in other families throw it without repeating the throw.
[[noreturn]] QXI18N_API void throw_ctype_invalid_character_exception();
}  // namespace detail

}  // namespace foundation::ustring

namespace fl::i18n {

/// A length or capacity of 2^31 code units or more: "Data size too large.".
class QXI18N_API CtypeSizeTooLarge : public foundation::ustring::CtypeExceptionBase {
public:
    CtypeSizeTooLarge();
    ~CtypeSizeTooLarge() override;
};

/// ICU failed to case-map, normalise or transliterate: "Transformation failure.".
class QXI18N_API CtypeTransformFailure : public foundation::ustring::CtypeExceptionBase {
public:
    /// `icu_status` is the UErrorCode that ICU reported; get_error_code() returns it.
    explicit CtypeTransformFailure(int icu_status);
    ~CtypeTransformFailure() override;
};

/// ICU failed to compare two texts: "String comparison failure.".
class QXI18N_API CtypeStrCompFailure : public foundation::ustring::CtypeExceptionBase {
public:
    CtypeStrCompFailure();
    ~CtypeStrCompFailure() override;
};

/// An argument outside what the operation accepts, such as a mode mask above 31:
/// "Invalid argument error.".
class QXI18N_API CtypeInvalidArgument : public foundation::ustring::CtypeExceptionBase {
public:
    CtypeInvalidArgument();
    ~CtypeInvalidArgument() override;
};

}  // namespace fl::i18n

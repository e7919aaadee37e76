// Exceptions of the conversion layer: one abstract base and seven concrete failures.
#pragma once

#include <fl/i18n/export.hpp>

#include <exception>
#include <string>

namespace fl::i18n {

/// Identifies the kind of a conversion failure; carried by every conversion exception.
enum codecvt_excp_id {
    cvt_invalid_argument = 1,
    cvt_invalid_encoding_name = 2,
    cvt_call_back_setting_failure = 3,
    cvt_non_supported_mode = 4,
    cvt_invalid_character = 5,
    cvt_size_too_large = 6,
    cvt_conversion_failure = 7,
};

/// Base of all conversion exceptions. Thrown only wrapped in
/// boost::exception_detail::clone_impl<E>, so boost::current_exception() can carry it.
class QXI18N_API CvtExceptionBase : public std::exception {
public:
    CvtExceptionBase(const char* message, codecvt_excp_id id);
    CvtExceptionBase(const CvtExceptionBase& other);
    ~CvtExceptionBase() override = 0;

    const char* what() const noexcept override;
    /// The kind of failure.
    codecvt_excp_id get_id() const noexcept { return id_; }

private:
    std::string message_;
    codecvt_excp_id id_;
};

/// An argument outside what the operation accepts (unknown mode, empty substitution).
class QXI18N_API CvtInvalidArgument : public CvtExceptionBase {
public:
    CvtInvalidArgument();
    ~CvtInvalidArgument() override;
};

/// ICU could not open a converter for the named encoding.
class QXI18N_API CvtInvalidEncodingName : public CvtExceptionBase {
public:
    explicit CvtInvalidEncodingName(const std::string& encoding_name);
    CvtInvalidEncodingName(const CvtInvalidEncodingName& other);
    ~CvtInvalidEncodingName() override;

    /// The name that was refused.
    const std::string& get_encoding_name() const noexcept { return encoding_name_; }

private:
    std::string encoding_name_;
};

/// ICU refused to install or restore a call-back.
class QXI18N_API CvtCallBackSettingFailure : public CvtExceptionBase {
public:
    CvtCallBackSettingFailure();
    ~CvtCallBackSettingFailure() override;
};

/// The call-back mode does not exist for the converter's direction.
class QXI18N_API CvtNonSupportedMode : public CvtExceptionBase {
public:
    CvtNonSupportedMode();
    ~CvtNonSupportedMode() override;
};

/// The text holds a sequence that is malformed or cannot be mapped, and the stop call-back is in force.
class QXI18N_API CvtInvalidCharacter : public CvtExceptionBase {
public:
    CvtInvalidCharacter();
    ~CvtInvalidCharacter() override;
};

/// A length at or beyond ICU's 31-bit limit, or a substitution of 128 bytes or more.
class QXI18N_API CvtSizeTooLarge : public CvtExceptionBase {
public:
    CvtSizeTooLarge();
    ~CvtSizeTooLarge() override;
};

/// Any other failure of a conversion, including a truncated sequence at the end of the input.
class QXI18N_API CvtConversionFailure : public CvtExceptionBase {
public:
    CvtConversionFailure();
    ~CvtConversionFailure() override;
};

}  // namespace fl::i18n

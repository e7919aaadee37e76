// The conversion exception family: fixed texts and ids.
#include <fl/i18n/conversion_error.hpp>
#include <fl/i18n/converter.hpp>

namespace fl::i18n {

CvtExceptionBase::CvtExceptionBase(const char* message, codecvt_excp_id id) : message_(message), id_(id) {}
CvtExceptionBase::CvtExceptionBase(const CvtExceptionBase& other) = default;
CvtExceptionBase::~CvtExceptionBase() = default;

const char* CvtExceptionBase::what() const noexcept { return message_.c_str(); }

CvtInvalidArgument::CvtInvalidArgument() : CvtExceptionBase("fl:i18n:CvtInvalidArgument", cvt_invalid_argument) {}
CvtInvalidArgument::~CvtInvalidArgument() = default;

CvtInvalidEncodingName::CvtInvalidEncodingName(const std::string& encoding_name)
    : CvtExceptionBase("Invalid encoding name specified.", cvt_invalid_encoding_name),
      encoding_name_(encoding_name)
{
}
CvtInvalidEncodingName::CvtInvalidEncodingName(const CvtInvalidEncodingName& other) = default;
CvtInvalidEncodingName::~CvtInvalidEncodingName() = default;

CvtCallBackSettingFailure::CvtCallBackSettingFailure()
    : CvtExceptionBase("fl:i18n:CvtCallBackSettingFailure", cvt_call_back_setting_failure)
{
}
CvtCallBackSettingFailure::~CvtCallBackSettingFailure() = default;

CvtNonSupportedMode::CvtNonSupportedMode() : CvtExceptionBase("fl:i18n:CvtNonSupportedMode", cvt_non_supported_mode) {}
CvtNonSupportedMode::~CvtNonSupportedMode() = default;

CvtInvalidCharacter::CvtInvalidCharacter()
    : CvtExceptionBase("Invalid character code sequence detected.", cvt_invalid_character)
{
}
CvtInvalidCharacter::~CvtInvalidCharacter() = default;

CvtSizeTooLarge::CvtSizeTooLarge()
    : CvtExceptionBase("Data size too large for character code conversion.", cvt_size_too_large)
{
}
CvtSizeTooLarge::~CvtSizeTooLarge() = default;

CvtConversionFailure::CvtConversionFailure()
    : CvtExceptionBase("Failed to convert character code.", cvt_conversion_failure)
{
}
CvtConversionFailure::~CvtConversionFailure() = default;

// The converter interfaces are instantiated here for exactly the pairs the library supports.
template class converter<char16_t, char>;
template class converter<char, char16_t>;
template class converter<char16_t, wchar_t>;
template class converter<wchar_t, char16_t>;
template class stream_converter<char16_t, char>;
template class stream_converter<char, char16_t>;
template class stream_converter<char, char>;

}  // namespace fl::i18n

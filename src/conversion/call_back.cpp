// Call-back modes: what an ICU-backed converter does with a character it cannot convert.
#include "converter_state.hpp"

#include "conversion_internal.hpp"

#include <fl/i18n/codecvt.hpp>

#include <unicode/ucnv_err.h>

namespace fl::i18n::detail {

namespace {

constexpr std::uint32_t escape_bits = 0x7F00;
constexpr std::size_t substitution_limit = 128;

// The escape letter ICU's escape call-back understands; null selects its own %Uhhhh form.
const void* escape_context(std::uint32_t mode)
{
    switch (mode) {
    case cvt_call_back_escape_java: return UCNV_ESCAPE_JAVA;
    case cvt_call_back_escape_c: return UCNV_ESCAPE_C;
    case cvt_call_back_escape_xml_dec: return UCNV_ESCAPE_XML_DEC;
    case cvt_call_back_escape_xml_hex: return UCNV_ESCAPE_XML_HEX;
    case cvt_call_back_escape_unicode: return UCNV_ESCAPE_UNICODE;
    case cvt_call_back_escape_css2: return UCNV_ESCAPE_CSS2;
    default: return nullptr;
    }
}

void check_setting(UErrorCode status)
{
    if (U_FAILURE(status))
        fl::detail::throw_exception(CvtCallBackSettingFailure());
}

}  // namespace

extern "C" void from_u_callback_stop_with_invisible_chars(const void*, UConverterFromUnicodeArgs*, const UChar*,
                                                          int32_t, UChar32, UConverterCallbackReason, UErrorCode*)
{
    // The converter has already set the failure; unlike ICU's stop call-back we never clear it.
}

extern "C" void from_u_callback_escape_with_invisible_chars(const void* context, UConverterFromUnicodeArgs* args,
                                                            const UChar* code_units, int32_t length,
                                                            UChar32 code_point, UConverterCallbackReason reason,
                                                            UErrorCode* status)
{
    // ICU's escape call-back drops a default-ignorable code point only when told it is unassigned;
    // reporting it as illegal makes it escape that character like any other.
    if (reason == UCNV_UNASSIGNED)
        reason = UCNV_ILLEGAL;
    UCNV_FROM_U_CALLBACK_ESCAPE(context, args, code_units, length, code_point, reason, status);
}

void converter_state::change_from_unicode_call_back(std::uint32_t mode, const std::string& substitution)
{
    if (from_unicode_mode_ != 0)
        reset_from_unicode_call_back();

    UErrorCode status = U_ZERO_ERROR;
    if (mode & escape_bits) {
        ucnv_setFromUCallBack(converter_.get(), from_u_callback_escape_with_invisible_chars, escape_context(mode),
                              &saved_from_action_, &saved_from_context_, &status);
        check_setting(status);
        from_unicode_mode_ = mode;
    } else if (mode == cvt_call_back_stop) {
        ucnv_setFromUCallBack(converter_.get(), from_u_callback_stop_with_invisible_chars, nullptr,
                              &saved_from_action_, &saved_from_context_, &status);
        check_setting(status);
        from_unicode_mode_ = mode;
    } else if (mode == cvt_call_back_substitute) {
        if (substitution.empty() || from_unicode_mode_ != 0)
            fl::detail::throw_exception(CvtInvalidArgument());
        if (substitution.size() >= substitution_limit)
            fl::detail::throw_exception(CvtSizeTooLarge());
        // The bytes replace the encoding's substitution character; the mode stays "default".
        ucnv_setSubstChars(converter_.get(), substitution.data(), static_cast<int8_t>(substitution.size()),
                           &status);
        check_setting(status);
    } else if (mode == cvt_call_back_not_implemented) {
        fl::detail::throw_exception(CvtNonSupportedMode());
    } else if (mode != cvt_call_back_default) {
        fl::detail::throw_exception(CvtInvalidArgument());
    }
}

void converter_state::change_to_unicode_call_back(std::uint32_t mode)
{
    if (to_unicode_mode_ != 0)
        reset_to_unicode_call_back();

    if (mode == cvt_call_back_stop) {
        UErrorCode status = U_ZERO_ERROR;
        ucnv_setToUCallBack(converter_.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, &saved_to_action_,
                            &saved_to_context_, &status);
        check_setting(status);
        to_unicode_mode_ = mode;
    } else if ((mode & escape_bits) || mode == cvt_call_back_substitute || mode == cvt_call_back_not_implemented) {
        fl::detail::throw_exception(CvtNonSupportedMode());
    } else if (mode != cvt_call_back_default) {
        fl::detail::throw_exception(CvtInvalidArgument());
    }
}

void converter_state::reset_from_unicode_call_back()
{
    if (from_unicode_mode_ == 0)
        return;
    UConverterFromUCallback replaced = nullptr;
    const void* replaced_context = nullptr;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setFromUCallBack(converter_.get(), saved_from_action_, saved_from_context_, &replaced, &replaced_context,
                          &status);
    check_setting(status);
    saved_from_action_ = nullptr;
    saved_from_context_ = nullptr;
    from_unicode_mode_ = 0;
}

void converter_state::reset_to_unicode_call_back()
{
    if (to_unicode_mode_ == 0)
        return;
    UConverterToUCallback replaced = nullptr;
    const void* replaced_context = nullptr;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setToUCallBack(converter_.get(), saved_to_action_, saved_to_context_, &replaced, &replaced_context,
                        &status);
    check_setting(status);
    saved_to_action_ = nullptr;
    saved_to_context_ = nullptr;
    to_unicode_mode_ = 0;
}

}  // namespace fl::i18n::detail

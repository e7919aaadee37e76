// converter_state: opening, naming and sizing an owned ICU converter.
#include "converter_state.hpp"

#include "conversion_internal.hpp"

#include <cstring>

namespace fl::i18n::detail {

converter_state::converter_state(const std::string& encoding)
{
    UErrorCode status = U_ZERO_ERROR;
    converter_.reset(ucnv_open(encoding.c_str(), &status));
    if (U_FAILURE(status) || !converter_)
        fl::detail::throw_exception(CvtInvalidEncodingName(encoding));
}

converter_state::converter_state(UConverter* converter) noexcept : converter_(converter) {}

converter_state::~converter_state() = default;

const std::string& converter_state::standard_name() const
{
    if (!converter_)
        return no_name_;
    if (!standard_name_.empty())
        return standard_name_;
    if (icu_name_.empty()) {
        UErrorCode status = U_ZERO_ERROR;
        const char* name = ucnv_getName(converter_.get(), &status);
        if (U_SUCCESS(status) && name)
            icu_name_ = name;
    }
    for (const char* standard : {"MIME", "IANA", "WINDOWS"}) {
        UErrorCode status = U_ZERO_ERROR;
        const char* name = ucnv_getStandardName(icu_name_.c_str(), standard, &status);
        if (U_SUCCESS(status) && name && *name) {
            standard_name_ = name;
            return standard_name_;
        }
    }
    standard_name_ = icu_name_;
    return standard_name_;
}

int converter_state::max_char_size() const
{
    if (!converter_)
        return 0;
    if (standard_name() == "UTF-8")
        return 4;
    return ucnv_getMaxCharSize(converter_.get());
}

}  // namespace fl::i18n::detail

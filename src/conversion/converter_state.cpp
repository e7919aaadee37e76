// converter_state: opening, naming and sizing an owned ICU converter.
#include "converter_state.hpp"

#include "conversion_internal.hpp"
#include "encoding_names.hpp"

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
    standard_name_ = preferred_standard_name(converter_.get());
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

// Raw ICU queries about an encoding: its converter type and its smallest character.
#include "encoding_traits.hpp"

#include <unicode/ucnv.h>

#include <memory>

namespace qxi18n_tool {

namespace {

struct ucnv_closer {
    void operator()(UConverter* c) const noexcept { ucnv_close(c); }
};
using converter_ptr = std::unique_ptr<UConverter, ucnv_closer>;

bool is_stateful(UConverterType type)
{
    switch (type) {
    case UCNV_EBCDIC_STATEFUL:
    case UCNV_ISO_2022:
    case UCNV_HZ:
    case UCNV_SCSU:
    case UCNV_ISCII:
    case UCNV_UTF7:
    case UCNV_BOCU1:
    case UCNV_IMAP_MAILBOX:
    case UCNV_COMPOUND_TEXT:
        return true;
    default:
        return type >= UCNV_LMBCS_1 && type <= UCNV_LMBCS_LAST;
    }
}

}  // namespace

encoding_traits probe_encoding(const std::string& encoding)
{
    encoding_traits traits;
    UErrorCode status = U_ZERO_ERROR;
    const converter_ptr converter(ucnv_open(encoding.c_str(), &status));
    if (U_FAILURE(status) || !converter) {
        traits.stateful = true;
        return traits;
    }
    const UConverterType type = ucnv_getType(converter.get());
    traits.stateful = is_stateful(type);
    if (type == UCNV_UTF16)
        traits.byte_order_mark_width = 2;
    else if (type == UCNV_UTF32)
        traits.byte_order_mark_width = 4;
    const int8_t min_size = ucnv_getMinCharSize(converter.get());
    traits.min_char_size = min_size > 0 ? static_cast<std::size_t>(min_size) : 1;
    return traits;
}

std::string byte_order_encoding(std::size_t width, const std::string& head, std::size_t& mark_length)
{
    const auto starts_with = [&head](const char* mark, std::size_t length) {
        return head.size() >= length && head.compare(0, length, mark, length) == 0;
    };
    mark_length = width;
    if (width == 4) {
        if (starts_with("\xFF\xFE\0\0", 4))
            return "UTF-32LE";
        if (starts_with("\0\0\xFE\xFF", 4))
            return "UTF-32BE";
        mark_length = 0;
        return "UTF-32BE";
    }
    if (starts_with("\xFF\xFE", 2))
        return "UTF-16LE";
    if (starts_with("\xFE\xFF", 2))
        return "UTF-16BE";
    mark_length = 0;
    return "UTF-16BE";
}

}  // namespace qxi18n_tool

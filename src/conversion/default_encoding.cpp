// to_ustring and to_string in the process's default encoding, and their diagnostics of non-ASCII use.
#include "conversion_internal.hpp"

#include "locale/locale_context.hpp"

#include <fl/i18n/conversion.hpp>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <type_traits>

namespace fl::i18n {

namespace {

// Decided once, as the library is loaded: later changes of the environment do not reach it.
const bool encoding_diagnostics_enabled = std::getenv("QX_CHAR_ENCODING_DIAG") != nullptr;

// Whether a diagnostic is due: a unit with the high bit set before the first zero unit.
template <class Char>
bool non_ascii_before_zero(const Char* text, std::size_t length)
{
    for (std::size_t i = 0; i < length && text[i] != 0; ++i)
        if (static_cast<std::make_unsigned_t<Char>>(text[i]) >= 0x80)
            return true;
    return false;
}

void report_bytes(const char* what, const char* text, std::size_t length)
{
    if (non_ascii_before_zero(text, length))
        std::cout << what << text << '\n' << std::flush;
}

// A private clone per call: ICU converters are not thread-safe, and a clone needs no lock.
ustring decode(const char* source, unsigned long length)
{
    const detail::converter_ptr converter = detail::clone_current_converter();
    return detail::convert_with_two_buffers<char16_t>(length, [&](char16_t* buffer, unsigned long capacity) {
        return detail::chunked_to_unicode(converter.get(), buffer, capacity, source, length);
    });
}

}  // namespace

ustring to_ustring(const std::string& source)
{
    if (source.empty())
        return ustring();
    if (encoding_diagnostics_enabled)
        report_bytes("to_ustring called with non-ASCII string input: ", source.c_str(), source.size());
    return decode(source.data(), source.size());
}

ustring to_ustring(const char* source)
{
    const std::size_t length = source ? std::strlen(source) : 0;
    if (length == 0)
        return ustring();
    if (encoding_diagnostics_enabled)
        report_bytes("to_ustring called with non-ASCII char * input: ", source, length);
    return decode(source, length);
}

std::string to_string(const ustring& source)
{
    if (source.empty())
        return std::string();
    if (encoding_diagnostics_enabled && non_ascii_before_zero(source.data(), source.size()))
        std::cout << "to_string called with non-ASCII input: " << ustring_to_utf8(source) << '\n' << std::flush;
    const detail::converter_ptr converter = detail::clone_current_converter();
    return detail::convert_with_two_buffers<char>(source.size(), [&](char* buffer, unsigned long capacity) {
        return detail::chunked_from_unicode(converter.get(), buffer, capacity, source.data(), source.size());
    });
}

}  // namespace fl::i18n

// UTF-8 <-> UTF-16 free functions and the converter-taking forms of to_ustring / to_string.
#include "utf_direct.hpp"

#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>

#include <unicode/ustring.h>

#include <cstring>

namespace fl::i18n {

namespace {

constexpr UChar32 replacement_character = 0xFFFD;

}  // namespace

std::string ustring_to_utf8(const char16_t* source, unsigned long length)
{
    if (!source)
        return std::string();
    if (length >= detail::from_utf16_limit)
        return codecvt_ustring_to_string("UTF-8", true).convert(source, length);
    return detail::convert_with_two_buffers<char>(length, [&](char* buffer, unsigned long capacity) {
        return detail::checked_utf_call(length, capacity, detail::from_utf16_limit,
                                        [&](int32_t cap, int32_t* needed, UErrorCode* status) {
                                            u_strToUTF8WithSub(buffer, cap, needed, source,
                                                               static_cast<int32_t>(length), replacement_character,
                                                               nullptr, status);
                                        });
    });
}

std::string ustring_to_utf8(const ustring& source) { return ustring_to_utf8(source.data(), source.size()); }

std::string ustring_to_utf8(const char16_t* source)
{
    return source ? ustring_to_utf8(source, std::char_traits<char16_t>::length(source)) : std::string();
}

std::string ustring_to_utf8(std::basic_string_view<char16_t> source)
{
    return source.data() ? ustring_to_utf8(source.data(), source.size()) : std::string();
}

ustring utf8_to_ustring(const char* source, unsigned long length)
{
    if (!source)
        return ustring();
    if (length >= detail::to_utf16_limit)
        return codecvt_string_to_ustring("UTF-8", true).convert(source, length);
    return detail::convert_with_two_buffers<char16_t>(length, [&](char16_t* buffer, unsigned long capacity) {
        return detail::checked_utf_call(length, capacity, detail::to_utf16_limit,
                                        [&](int32_t cap, int32_t* needed, UErrorCode* status) {
                                            u_strFromUTF8WithSub(buffer, cap, needed, source,
                                                                 static_cast<int32_t>(length),
                                                                 replacement_character, nullptr, status);
                                        });
    });
}

ustring utf8_to_ustring(const std::string& source) { return utf8_to_ustring(source.data(), source.size()); }

ustring utf8_to_ustring(const char* source)
{
    return source ? utf8_to_ustring(source, std::strlen(source)) : ustring();
}

ustring to_ustring(const std::string& source, const converter<char16_t, char>& cvt)
{
    return source.empty() ? ustring() : cvt.convert(source.data(), source.size());
}

ustring to_ustring(const char* source, const converter<char16_t, char>& cvt)
{
    const unsigned long length = source ? std::strlen(source) : 0;
    return length == 0 ? ustring() : cvt.convert(source, length);
}

std::string to_string(const ustring& source, const converter<char, char16_t>& cvt)
{
    return source.empty() ? std::string() : cvt.convert(source.data(), source.size());
}

}  // namespace fl::i18n

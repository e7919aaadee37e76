// Free functions between ustring and 32-bit text.
#include "code_points.hpp"

#include <fl/i18n/conversion.hpp>

namespace fl::i18n {

namespace detail {

unsigned long count_code_points(const char16_t* source, unsigned long length)
{
    unsigned long count = 0;
    for_each_code_point(source, length, [&count](std::uint32_t) { ++count; });
    return count;
}

// One element per source unit is enough; the string is shortened to the code points found.
std::u32string utf16_to_u32string(const char16_t* source, unsigned long length)
{
    std::u32string result(length, U'\0');
    unsigned long i = 0;
    for_each_code_point(source, length, [&](std::uint32_t cp) { result[i++] = cp; });
    result.resize(i);
    return result;
}

}  // namespace detail

ustring to_ustring(const std::wstring& source) { return detail::code_points_to_utf16(source.data(), source.size()); }

ustring to_ustring(const wchar_t* source)
{
    return source ? detail::code_points_to_utf16(source, std::char_traits<wchar_t>::length(source)) : ustring();
}

ustring to_ustring(const std::u32string& source)
{
    return detail::code_points_to_utf16(source.data(), source.size());
}

ustring to_ustring(const char32_t* source)
{
    return source ? detail::code_points_to_utf16(source, std::char_traits<char32_t>::length(source)) : ustring();
}

std::wstring to_wstring(const ustring& source)
{
    std::wstring result(detail::count_code_points(source.data(), source.size()), L'\0');
    unsigned long i = 0;
    detail::for_each_code_point(source.data(), source.size(),
                                [&](std::uint32_t cp) { result[i++] = static_cast<wchar_t>(cp); });
    return result;
}

std::u32string to_u32string(const char16_t* source)
{
    return source ? detail::utf16_to_u32string(source, std::char_traits<char16_t>::length(source))
                  : std::u32string();
}

std::u32string to_u32string(const ustring& source)
{
    return detail::utf16_to_u32string(source.data(), source.size());
}

}  // namespace fl::i18n

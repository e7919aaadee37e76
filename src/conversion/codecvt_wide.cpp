// The wide pair: UTF-16 to and from 32-bit wchar_t, without ICU.
#include "code_points.hpp"

#include <fl/i18n/codecvt.hpp>

namespace fl::i18n {

// --- codecvt_wstring_to_ustring ---

unsigned long codecvt_wstring_to_ustring::do_get_destination_size(const wchar_t* source,
                                                                  unsigned long source_length) const
{
    return source ? detail::count_utf16_units(source, source_length) : 0;
}

ustring codecvt_wstring_to_ustring::do_convert(const wchar_t* source, unsigned long source_length) const
{
    return source ? detail::code_points_to_utf16(source, source_length) : ustring();
}

unsigned long codecvt_wstring_to_ustring::do_convert(char16_t* destination, unsigned long destination_capacity,
                                                     const wchar_t* source, unsigned long source_length) const
{
    if (!source || source_length == 0)
        return 0;
    if (!destination || destination_capacity == 0)
        return detail::count_utf16_units(source, source_length);
    unsigned long written = 0;
    unsigned long i = 0;
    for (; i < source_length; ++i) {
        const auto value = static_cast<std::uint32_t>(source[i]);
        // A surrogate pair is never split at the end of the buffer: it is counted, not written.
        if (written + (value > 0xFFFF ? 2 : 1) > destination_capacity)
            break;
        written += detail::put_utf16(value, destination + written);
    }
    return written + detail::count_utf16_units(source + i, source_length - i);
}

// --- codecvt_ustring_to_wstring ---

unsigned long codecvt_ustring_to_wstring::do_get_destination_size(const char16_t* source,
                                                                  unsigned long source_length) const
{
    return source ? detail::count_code_points(source, source_length) : 0;
}

std::wstring codecvt_ustring_to_wstring::do_convert(const char16_t* source, unsigned long source_length) const
{
    std::wstring result(do_get_destination_size(source, source_length), L'\0');
    unsigned long i = 0;
    if (source)
        detail::for_each_code_point(source, source_length,
                                    [&](std::uint32_t cp) { result[i++] = static_cast<wchar_t>(cp); });
    return result;
}

unsigned long codecvt_ustring_to_wstring::do_convert(wchar_t* destination, unsigned long destination_capacity,
                                                     const char16_t* source, unsigned long source_length) const
{
    if (!source || source_length == 0)
        return 0;
    if (!destination || destination_capacity == 0)
        return detail::count_code_points(source, source_length);
    unsigned long count = 0;
    detail::for_each_code_point(source, source_length, [&](std::uint32_t cp) {
        if (count < destination_capacity)
            destination[count] = static_cast<wchar_t>(cp);
        ++count;
    });
    return count;
}

}  // namespace fl::i18n

// UTF-16 to the JVM's modified UTF-8, through ICU.
#include "utf_direct.hpp"

#include <fl/i18n/codecvt.hpp>

#include <unicode/ustring.h>

#include <algorithm>

namespace fl::i18n {

namespace {

unsigned long to_java_utf8(char* destination, unsigned long capacity, const char16_t* source, unsigned long length)
{
    return detail::checked_utf_call(length, capacity, detail::from_utf16_limit,
                                    [&](int32_t cap, int32_t* needed, UErrorCode* status) {
                                        u_strToJavaModifiedUTF8(destination, cap, needed, source,
                                                                static_cast<int32_t>(length), status);
                                    });
}

}  // namespace

unsigned long codecvt_ustring_to_java_nonstandard_utf8::do_get_destination_size(const char16_t* source,
                                                                                unsigned long source_length) const
{
    return to_java_utf8(nullptr, 0, source, source_length);
}

std::string codecvt_ustring_to_java_nonstandard_utf8::do_convert(const char16_t* source,
                                                                 unsigned long source_length) const
{
    return detail::convert_with_two_buffers<char>(source_length, [&](char* buffer, unsigned long capacity) {
        return to_java_utf8(buffer, capacity, source, source_length);
    });
}

unsigned long codecvt_ustring_to_java_nonstandard_utf8::do_convert(char* destination,
                                                                   unsigned long destination_capacity,
                                                                   const char16_t* source,
                                                                   unsigned long source_length) const
{
    // ICU terminates the output when there is room, and this form must not write past the
    // output: each unit takes at least one byte, so only a capacity above the source length
    // can leave room, and then the exact size is learned first.
    detail::check_icu_sizes(source_length, destination_capacity);
    unsigned long capacity = destination_capacity;
    if (capacity > source_length)
        capacity = std::min(capacity, to_java_utf8(nullptr, 0, source, source_length));
    return to_java_utf8(destination, capacity, source, source_length);
}

}  // namespace fl::i18n

// The ASCII pair: strict (throwing) or substituting 7-bit conversion, without ICU.
#include "conversion_internal.hpp"

#include <fl/i18n/codecvt.hpp>

namespace fl::i18n {

namespace {

constexpr char16_t replacement_character = 0xFFFD;
// The byte written for a unit outside ASCII: deliberately not '?' nor ICU's substitution.
constexpr char substitution_byte = static_cast<char>(0xFF);

inline bool is_ascii(char byte) { return static_cast<unsigned char>(byte) <= 0x7F; }
inline bool is_ascii(char16_t unit) { return unit <= 0x7F; }

[[noreturn]] void throw_invalid_character() { fl::detail::throw_exception(CvtInvalidCharacter()); }

char16_t widen(char byte, bool substitute)
{
    if (is_ascii(byte))
        return static_cast<char16_t>(byte);
    if (!substitute)
        throw_invalid_character();
    return replacement_character;
}

char narrow(char16_t unit, bool substitute)
{
    if (is_ascii(unit))
        return static_cast<char>(unit);
    if (!substitute)
        throw_invalid_character();
    return substitution_byte;
}

template <class Unit>
unsigned long checked_size(const Unit* source, unsigned long length, bool substitute)
{
    if (!source || length == 0)
        return 0;
    if (!substitute) {
        for (unsigned long i = 0; i < length; ++i)
            if (!is_ascii(source[i]))
                throw_invalid_character();
    }
    return length;
}

}  // namespace

// --- codecvt_ascii_to_ustring ---

unsigned long codecvt_ascii_to_ustring::do_get_destination_size(const char* source, unsigned long source_length) const
{
    return checked_size(source, source_length, substitute_);
}

ustring codecvt_ascii_to_ustring::do_convert(const char* source, unsigned long source_length) const
{
    if (!source || source_length == 0)
        return ustring();
    ustring result(source_length, u'\0');
    for (unsigned long i = 0; i < source_length; ++i)
        result[i] = widen(source[i], substitute_);
    return result;
}

unsigned long codecvt_ascii_to_ustring::do_convert(char16_t* destination, unsigned long destination_capacity,
                                                   const char* source, unsigned long source_length) const
{
    if (!source || !destination)
        return 0;
    const unsigned long count = std::min(destination_capacity, source_length);
    // Walks from the last unit to the first.
    for (unsigned long i = count; i-- > 0;)
        destination[i] = widen(source[i], substitute_);
    return count;
}

// --- codecvt_ustring_to_ascii ---

unsigned long codecvt_ustring_to_ascii::do_get_destination_size(const char16_t* source,
                                                                unsigned long source_length) const
{
    return checked_size(source, source_length, substitute_);
}

std::string codecvt_ustring_to_ascii::do_convert(const char16_t* source, unsigned long source_length) const
{
    if (!source || source_length == 0)
        return std::string();
    std::string result(source_length, '\0');
    for (unsigned long i = 0; i < source_length; ++i)
        result[i] = narrow(source[i], substitute_);
    return result;
}

unsigned long codecvt_ustring_to_ascii::do_convert(char* destination, unsigned long destination_capacity,
                                                   const char16_t* source, unsigned long source_length) const
{
    if (!source || !destination)
        return 0;
    const unsigned long count = std::min(destination_capacity, source_length);
    for (unsigned long i = 0; i < count; ++i)
        destination[i] = narrow(source[i], substitute_);
    return count;
}

}  // namespace fl::i18n

// The file-name converters and the ICU passes and status check they share.
#include "filesystem_internal.hpp"

#include "common/throw_exception.hpp"
#include "conversion/conversion_internal.hpp"
#include "conversion/converter_state.hpp"
#include "locale/locale_context.hpp"

#include <fl/filesystem/file_name_conversion.hpp>
#include <fl/i18n/codecvt.hpp>

#include <boost/numeric/conversion/cast.hpp>

#include <unicode/ustring.h>

#include <cstdint>
#include <type_traits>

namespace fl::filesystem::detail {

namespace {

std::int32_t icu_length(unsigned long length)
{
    if (length >= fl::i18n::detail::icu_length_limit)
        fl::detail::throw_exception(FileNameTooLarge(ustring()));
    return static_cast<std::int32_t>(length);
}

unsigned long result_length(std::int32_t length)
{
    try {
        return boost::numeric_cast<unsigned long>(length);
    } catch (const boost::numeric::bad_numeric_cast&) {
        fl::detail::throw_exception(FileNameTooLarge(ustring()));
    }
}

using fl::i18n::detail::converter_state;

UConverter* require(const std::unique_ptr<converter_state>& state)
{
    if (!state || !state->get())
        fl::detail::throw_exception(FileNameConversionFailure());
    return state->get();
}

}  // namespace

void check_file_name_status(UErrorCode status, unsigned long source_length)
{
    // Overflow only means that the destination was too small: the length says so.
    if (status == U_BUFFER_OVERFLOW_ERROR || status <= U_ZERO_ERROR)
        return;
    if (source_length > 0x3FFFFFFFUL)
        fl::detail::throw_exception(FileNameTooLarge(ustring()));
    if (status == U_INVALID_CHAR_FOUND || status == U_ILLEGAL_CHAR_FOUND)
        fl::detail::throw_exception(CvtInvalidCharacter());
    fl::detail::throw_exception(FileNameConversionFailure());
}

namespace {

// One pass in either direction. Well-formed text in a UTF-8 file system comes out of ICU's direct
// UTF-8 transform exactly as out of the converter, at a third of the cost; only ill-formed text
// (bad bytes, an unpaired surrogate) needs the converter and its call-backs.
template <class To, class From>
unsigned long file_name_pass(UConverter* converter, To* destination, unsigned long capacity, const From* source,
                             unsigned long length)
{
    const std::int32_t source_units = icu_length(length);
    const std::int32_t destination_units = icu_length(capacity);
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t produced = 0;
    if (source_units > 0 && ucnv_getType(converter) == UCNV_UTF8) {
        if constexpr (std::is_same_v<To, char16_t>)
            u_strFromUTF8(destination, destination_units, &produced, source, source_units, &status);
        else
            u_strToUTF8(destination, destination_units, &produced, source, source_units, &status);
        if (status != U_INVALID_CHAR_FOUND) {
            check_file_name_status(status, length);
            return result_length(produced);
        }
        status = U_ZERO_ERROR;
    }
    if constexpr (std::is_same_v<To, char16_t>)
        produced = ucnv_toUChars(converter, destination, destination_units, source, source_units, &status);
    else
        produced = ucnv_fromUChars(converter, destination, destination_units, source, source_units, &status);
    check_file_name_status(status, length);
    return result_length(produced);
}

}  // namespace

unsigned long convert_file_name(UConverter* converter, char16_t* destination, unsigned long capacity,
                                const char* source, unsigned long length)
{
    return file_name_pass(converter, destination, capacity, source, length);
}

unsigned long convert_file_name(UConverter* converter, char* destination, unsigned long capacity,
                                const char16_t* source, unsigned long length)
{
    return file_name_pass(converter, destination, capacity, source, length);
}

template <class To, class From>
std::basic_string<To> convert_file_name(UConverter* converter, const From* source, unsigned long length)
{
    return fl::i18n::detail::convert_with_two_buffers<To>(length, [&](To* buffer, unsigned long capacity) {
        return convert_file_name(converter, buffer, capacity, source, length);
    });
}

template ustring convert_file_name<char16_t, char>(UConverter*, const char*, unsigned long);
template std::string convert_file_name<char, char16_t>(UConverter*, const char16_t*, unsigned long);

// A private clone of the default converter. Strict means ICU's stop call-backs, with no
// substitution text, so that a character that does not convert is an error.
template <class To, class From>
file_name_converter<To, From>::file_name_converter(bool substitute)
{
    fl::i18n::detail::converter_ptr clone = fl::i18n::detail::clone_current_converter();
    state_ = std::make_unique<converter_state>(clone.get());
    clone.release();
    if (substitute)
        return;
    if constexpr (std::is_same_v<To, char16_t>)
        state_->change_to_unicode_call_back(fl::i18n::cvt_call_back_stop);
    else
        state_->change_from_unicode_call_back(fl::i18n::cvt_call_back_stop, std::string());
}

template <class To, class From>
file_name_converter<To, From>::~file_name_converter() = default;

template <class To, class From>
unsigned long file_name_converter<To, From>::do_get_destination_size(const From* source, unsigned long length) const
{
    return convert_file_name(require(state_), static_cast<To*>(nullptr), 0, source, length);
}

template <class To, class From>
std::basic_string<To> file_name_converter<To, From>::do_convert(const From* source, unsigned long length) const
{
    return convert_file_name<To>(require(state_), source, length);
}

template <class To, class From>
unsigned long file_name_converter<To, From>::do_convert(To* destination, unsigned long capacity, const From* source,
                                                        unsigned long length) const
{
    return convert_file_name(require(state_), destination, capacity, source, length);
}

template class file_name_converter<char16_t, char>;
template class file_name_converter<char, char16_t>;

}  // namespace fl::filesystem::detail

namespace fl::filesystem {

codecvt_filesystem_to_ustring::codecvt_filesystem_to_ustring(bool substitute) : file_name_converter(substitute) {}
codecvt_filesystem_to_ustring::~codecvt_filesystem_to_ustring() = default;

codecvt_ustring_to_filesystem::codecvt_ustring_to_filesystem(bool substitute) : file_name_converter(substitute) {}
codecvt_ustring_to_filesystem::~codecvt_ustring_to_filesystem() = default;

codecvt_narrow_string_to_ustring::codecvt_narrow_string_to_ustring(bool substitute) : file_name_converter(substitute) {}
codecvt_narrow_string_to_ustring::~codecvt_narrow_string_to_ustring() = default;

codecvt_ustring_to_narrow_string::codecvt_ustring_to_narrow_string(bool substitute) : file_name_converter(substitute) {}
codecvt_ustring_to_narrow_string::~codecvt_ustring_to_narrow_string() = default;

}  // namespace fl::filesystem

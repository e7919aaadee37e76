// Environment variables read and written as ustring, stored in the global locale's encoding.
#include "utf_direct.hpp"

#include "locale/locale_context.hpp"

#include <fl/i18n/environment.hpp>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace fl::i18n {

namespace {

// Names and values are short, so each conversion is one ICU call through a private clone of the
// default converter (a second call only when the output outgrows the first buffer).
std::string encode(const ustring& text)
{
    const detail::converter_ptr converter = detail::clone_current_converter();
    const unsigned long length = text.size();
    return detail::convert_with_two_buffers<char>(length, [&](char* buffer, unsigned long capacity) {
        return detail::checked_utf_call(length, capacity, detail::from_utf16_limit,
                                        [&](int32_t cap, int32_t* needed, UErrorCode* status) {
                                            *needed = ucnv_fromUChars(converter.get(), buffer, cap, text.data(),
                                                                      static_cast<int32_t>(length), status);
                                        });
    });
}

ustring decode(const char* bytes, unsigned long length)
{
    const detail::converter_ptr converter = detail::clone_current_converter();
    return detail::convert_with_two_buffers<char16_t>(length, [&](char16_t* buffer, unsigned long capacity) {
        return detail::checked_utf_call(length, capacity, detail::to_utf16_limit,
                                        [&](int32_t cap, int32_t* needed, UErrorCode* status) {
                                            *needed = ucnv_toUChars(converter.get(), buffer, cap, bytes,
                                                                    static_cast<int32_t>(length), status);
                                        });
    });
}

// libc's functions are named explicitly: inside this namespace the plain names are ours.
ustring getenv_bytes(const std::string& name)
{
    const char* value = ::getenv(name.c_str());
    return value ? decode(value, std::strlen(value)) : decode("", 0);
}

int setenv_bytes(const std::string& name, const std::string& value, int overwrite)
{
    return ::setenv(name.c_str(), value.c_str(), overwrite);
}

template <class Result>
Result invalid(Result result)
{
    errno = EINVAL;
    return result;
}

}  // namespace

ustring getenv(const std::string& name)
{
    return name.empty() ? invalid(ustring()) : getenv_bytes(name);
}

ustring getenv(const ustring& name)
{
    return name.empty() ? invalid(ustring()) : getenv_bytes(encode(name));
}

int setenv(const std::string& name, const ustring& value, int overwrite, bool allow_empty_value)
{
    if (name.empty() || (value.empty() && !allow_empty_value))
        return invalid(-1);
    return setenv_bytes(name, encode(value), overwrite);
}

int setenv(const ustring& name, const ustring& value, int overwrite, bool allow_empty_value)
{
    if (name.empty() || (value.empty() && !allow_empty_value))
        return invalid(-1);
    const std::string bytes = encode(value);
    return setenv_bytes(encode(name), bytes, overwrite);
}

bool isenv(const std::string& name)
{
    return name.empty() ? invalid(false) : ::getenv(name.c_str()) != nullptr;
}

bool isenv(const ustring& name)
{
    return name.empty() ? invalid(false) : ::getenv(encode(name).c_str()) != nullptr;
}

int unsetenv(const std::string& name)
{
    return name.empty() ? invalid(-1) : ::unsetenv(name.c_str());
}

int unsetenv(const ustring& name)
{
    return name.empty() ? invalid(-1) : ::unsetenv(encode(name).c_str());
}

}  // namespace fl::i18n

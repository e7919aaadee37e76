// Free functions between ustring and UTF-8, wide and 32-bit text, the default encoding or a caller's converter.
#pragma once

#include <fl/i18n/converter.hpp>
#include <fl/i18n/export.hpp>
#include <fl/i18n/ustring.hpp>

#include <string>
#include <string_view>

namespace fl::i18n {

/// Converts through `cvt`; empty or null input gives an empty result without calling it.
QXI18N_API ustring to_ustring(const std::string& source, const converter<char16_t, char>& cvt);
QXI18N_API ustring to_ustring(const char* source, const converter<char16_t, char>& cvt);
QXI18N_API std::string to_string(const ustring& source, const converter<char, char16_t>& cvt);

/// The process's default encoding, that of the current global locale, to UTF-16 and back. Meant
/// for text known to be ASCII (names, keys, numbers); other text is converted all the same, and
/// reported on std::cout when QX_CHAR_ENCODING_DIAG was set as the library was loaded. A malformed
/// sequence becomes U+FFFD and an unmappable character the encoding's substitution character:
/// nothing throws for a character. Any length; lengths are in bytes and UTF-16 units. Empty or
/// null input gives an empty result and makes no converter. Throws CvtConversionFailure when no
/// converter can be made for the encoding. Safe from any thread: each call has its own converter.
QXI18N_API ustring to_ustring(const std::string& source);
QXI18N_API ustring to_ustring(const char* source);
QXI18N_API std::string to_string(const ustring& source);

/// Code points to UTF-16. Not validated: surrogate values pass unchanged, values above
/// U+10FFFF give what the arithmetic gives. Null gives empty.
QXI18N_API ustring to_ustring(const std::wstring& source);
QXI18N_API ustring to_ustring(const wchar_t* source);
QXI18N_API ustring to_ustring(const std::u32string& source);
QXI18N_API ustring to_ustring(const char32_t* source);

/// UTF-16 to code points; each unpaired surrogate becomes U+FFFD. Null gives empty.
QXI18N_API std::wstring to_wstring(const ustring& source);
QXI18N_API std::u32string to_u32string(const ustring& source);
QXI18N_API std::u32string to_u32string(const char16_t* source);

/// UTF-16 to UTF-8; an unpaired surrogate becomes U+FFFD (EF BF BD). Null gives empty.
/// Lengths are in UTF-16 units; any length is accepted (long text is converted in chunks).
QXI18N_API std::string ustring_to_utf8(const char16_t* source, unsigned long length);
QXI18N_API std::string ustring_to_utf8(const ustring& source);
QXI18N_API std::string ustring_to_utf8(const char16_t* source);
QXI18N_API std::string ustring_to_utf8(std::basic_string_view<char16_t> source);

/// UTF-8 to UTF-16; a malformed sequence becomes U+FFFD. Null gives empty. Lengths in bytes.
/// Safe on untrusted input.
QXI18N_API ustring utf8_to_ustring(const char* source, unsigned long length);
QXI18N_API ustring utf8_to_ustring(const std::string& source);
QXI18N_API ustring utf8_to_ustring(const char* source);

}  // namespace fl::i18n

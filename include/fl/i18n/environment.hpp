// What the process shares with its surroundings: converters for the terminal's text, and the
// environment variables read and written as ustring.
#pragma once

#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/export.hpp>
#include <fl/i18n/ustring.hpp>

#include <memory>
#include <string>

namespace fl::i18n {

/// New converters for the global locale's terminal encoding (its encoding when it has no terminal
/// encoding of its own). They substitute: a malformed sequence becomes U+FFFD, an unmappable
/// character the encoding's substitution character; terminal text never throws for a character.
/// Throws CvtInvalidEncodingName when ICU cannot open the encoding.
QXI18N_API std::unique_ptr<codecvt_string_to_ustring> create_codecvt_terminal_to_ustring();
QXI18N_API std::unique_ptr<codecvt_ustring_to_string> create_codecvt_ustring_to_terminal();
QXI18N_API std::unique_ptr<codecvt_string_to_ustring> create_codecvt_terminal_input_to_ustring();
QXI18N_API std::unique_ptr<codecvt_ustring_to_string> create_codecvt_ustring_to_terminal_output();

// The environment functions mirror libc: they report their own errors by their result and errno,
// never by an exception. Names and values are stored in the global locale's encoding, with
// substitution for what it cannot hold; a std::string name is passed to libc as it is. They take
// no lock, and neither does libc: do not change the environment while another thread reads it.
// A conversion that cannot be made at all throws CvtConversionFailure, a text of 2^31 units or
// more CvtSizeTooLarge.

/// The value of `name`; empty both when the variable is unset (errno untouched) and when it is
/// empty (isenv tells them apart). An empty name gives empty with errno EINVAL.
QXI18N_API ustring getenv(const std::string& name);
QXI18N_API ustring getenv(const ustring& name);

/// Sets `name` to `value`, replacing an existing value only if `overwrite` is not 0. Returns 0 on
/// success (also when an existing variable is kept), else -1 with errno: EINVAL for an empty name,
/// or an empty value unless `allow_empty_value`; libc's errno for what libc refuses (a name with "=").
QXI18N_API int setenv(const std::string& name, const ustring& value, int overwrite, bool allow_empty_value);
QXI18N_API int setenv(const ustring& name, const ustring& value, int overwrite, bool allow_empty_value);

/// Whether the variable exists, even with an empty value. An empty name gives false with errno EINVAL.
QXI18N_API bool isenv(const std::string& name);
QXI18N_API bool isenv(const ustring& name);

/// Removes the variable; 0 on success (also when it did not exist), else -1 with errno: EINVAL for
/// an empty name or as libc leaves it.
QXI18N_API int unsetenv(const std::string& name);
QXI18N_API int unsetenv(const ustring& name);

}  // namespace fl::i18n

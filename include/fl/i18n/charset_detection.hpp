// Guessing the encoding of a block of bytes: ASCII and UTF-8 settled by rule, the rest by ICU's
// detector under a confidence margin.
#pragma once

#include <fl/i18n/export.hpp>
#include <fl/i18n/ustring.hpp>

#include <iosfwd>
#include <string>

namespace fl::i18n {

/// The encoding of `length` bytes at `data`, typically the leading part of a file.
///
/// Pure ASCII (a zero byte only at the very end allowed), a null pointer and an empty block give
/// "UTF-8", or the system locale's encoding when QX_USE_DEFAULT_CHARSET_FOR_ASCII exists; so does
/// every block when QX_NO_CHARSET_DETECTION exists. Valid UTF-8 gives "UTF-8" without the
/// detector. Otherwise ICU's top match is taken if it is certain (100) or reaches
/// QX_CHARSET_DETECT_THRESHOLD (1..100, default 90) with a lead of half that over the runner-up;
/// the EBCDIC Arabic and Hebrew matches are never taken. A UTF-8 top or second match is rescued
/// when the top confidence reaches QX_CHARSET_DETECT_UTF8_THRESHOLD (default 80); anything else
/// gives the system locale's encoding. The variables are read once per process.
///
/// The result is ICU's detector name ("Shift_JIS", "UTF-16LE"), "UTF-8", or the system
/// locale's default encoding; it is not passed through get_standard_encoding_name. A block cut
/// inside a UTF-8 character fails the UTF-8 test, so cut a file's leading bytes at a character
/// boundary. Safe on untrusted input and from any thread; after the first call, ASCII and valid
/// UTF-8 do not allocate.
///
/// When QX_CHARSET_DETECT_DIAG exists (at the first call), the steps and every match are written
/// to `diagnostics`, which is otherwise never touched; `source_name` names the block there.
/// Nothing ICU reports stops the call; only converting `source_name` to the default encoding
/// for the diagnostics text, which is built once the detector is needed, can throw.
QXI18N_API std::string detect_charset(const char* data, unsigned long length, std::ostream& diagnostics,
                                      const ustring& source_name);

}  // namespace fl::i18n

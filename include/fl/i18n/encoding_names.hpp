// One standard spelling for the many names of an encoding, and whether the library supports it.
#pragma once

#include <fl/i18n/export.hpp>

#include <string>

namespace fl::i18n {

/// The library's standard name of an encoding given in any dialect: POSIX suffixes ("eucjp",
/// "ISO88591"), Windows code pages ("1252"), JVM names ("Cp1252", "MS932") or ICU's names
/// ("ibm-964_P110-1999"). Names the library lists are matched ignoring ASCII case and keep the
/// library's spelling ("windows-1252"); any other name is resolved by ICU and gives ICU's
/// preferred (MIME, else IANA, else WINDOWS) name, or the library's spelling when that is listed.
/// Returns the empty string for a name neither knows; throws nothing for it. Safe from any
/// thread and on untrusted input.
QXI18N_API std::string get_standard_encoding_name(const std::string& name);

namespace lcmgmt {

/// Whether the library lists the encoding under this name or under the name ICU resolves it to.
/// An encoding that ICU can convert but that the library does not list is not supported.
QXI18N_API bool is_supported_encoding(const std::string& name);

}  // namespace lcmgmt

}  // namespace fl::i18n

// Opening files by UTF-16 name with the C stream functions, and temporary directories and files.
#pragma once

#include <fl/filesystem/foundation/upath.hpp>
#include <fl/i18n/converter.hpp>
#include <fl/i18n/export.hpp>
#include <fl/i18n/ustring.hpp>

#include <cstdio>
#include <string>
#include <vector>

namespace fl::filesystem {

/// std::fopen of a UTF-16 name. The name is put in native form and converted to bytes with the
/// calling thread's converter for the default encoding, or with `converter`; `mode` goes to the
/// system unchanged. Never throws: failure gives null with errno set. errno is cleared first;
/// EINVAL for an empty name or mode or a name starting with NUL, EISDIR for a name ending in
/// "/" (the system is not asked), ENOENT for a name that does not convert, ENAMETOOLONG for one
/// too long to convert, ENOMEM, else the system's own errno.
QXI18N_API std::FILE* fopen(const ustring& name, const std::string& mode);
QXI18N_API std::FILE* fopen(const ustring& name, const std::string& mode,
                            const fl::i18n::converter<char, char16_t>& converter);
/// As for ustring, but the path's text is used as it is, and a trailing "/" is left to the system.
QXI18N_API std::FILE* fopen(const upath& name, const std::string& mode);
QXI18N_API std::FILE* fopen(const upath& name, const std::string& mode,
                            const fl::i18n::converter<char, char16_t>& converter);
/// The ustring form; a null `name` counts as empty.
inline std::FILE* fopen(const char16_t* name, const std::string& mode)
{
    return fopen(ustring(name ? name : u""), mode);
}

/// std::freopen of a UTF-16 name on `stream`, with the rules of fopen. A null `stream` gives
/// EINVAL without clearing errno first.
QXI18N_API std::FILE* freopen(const ustring& name, const std::string& mode, std::FILE* stream);
QXI18N_API std::FILE* freopen(const ustring& name, const std::string& mode, std::FILE* stream,
                              const fl::i18n::converter<char, char16_t>& converter);
QXI18N_API std::FILE* freopen(const upath& name, const std::string& mode, std::FILE* stream);
QXI18N_API std::FILE* freopen(const upath& name, const std::string& mode, std::FILE* stream,
                              const fl::i18n::converter<char, char16_t>& converter);
inline std::FILE* freopen(const char16_t* name, const std::string& mode, std::FILE* stream)
{
    return freopen(ustring(name ? name : u""), mode, stream);
}

/// The first usable temporary directory, in native form: the value of TMPDIR, then TMP, then
/// TEMP, then "/tmp", skipping unset or empty variables; usable means a directory with read and
/// write access. When none is, throws as throw_file_system_error does for the last candidate
/// that failed (PathNotFound, NotDirectoryError, AccessDenied, ...) or rethrows the exception
/// that ended it.
QXI18N_API ustring temp_directory_name();
/// As temp_directory_name(), with the values of `variable_names` tried first, in order.
QXI18N_API ustring temp_directory_name(const std::vector<std::string>& variable_names);

/// A fresh name: `directory` (temp_directory_name() when empty), "/", `prefix`, a random text of
/// 19 characters, and `extension` after a "." unless it is empty or starts with one. Nothing
/// checks that no such file exists. Throws as temp_directory_name does.
QXI18N_API ustring tmpnam(const ustring& directory, const ustring& prefix, const ustring& extension);

/// Creates and opens a file (mode "wb+") under a fresh name as tmpnam makes it, trying up to 11
/// names; `name` receives the name. The file stays after closing. Never throws: when every
/// attempt fails `name` is cleared, errno is 0 and the result is null; other failures set
/// errno as fopen does.
QXI18N_API std::FILE* tmpfile(ustring& name, const ustring& directory, const ustring& prefix,
                              const ustring& extension);

}  // namespace fl::filesystem

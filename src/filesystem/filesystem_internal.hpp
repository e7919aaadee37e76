// Internal tools of the file-system layer: file-name conversion through an ICU converter or the
// calling thread's converter, the ICU status check of every file-name converter, and the libc seam.
#pragma once

#include <fl/filesystem/filesystem_error.hpp>
#include <fl/i18n/ustring.hpp>

#include <unicode/ucnv.h>
#include <unicode/utypes.h>

#include <dirent.h>
#include <sys/stat.h>

#include <cstdio>
#include <string>

namespace fl::filesystem::detail {

/// Success for U_BUFFER_OVERFLOW_ERROR and for zero or less; otherwise throws: FileNameTooLarge
/// (empty path) if `source_length` exceeds 0x3FFFFFFF, CvtInvalidCharacter for
/// U_INVALID_CHAR_FOUND and U_ILLEGAL_CHAR_FOUND, FileNameConversionFailure for the rest.
void check_file_name_status(UErrorCode status, unsigned long source_length);

/// One ICU pass over a file name, bytes to UTF-16 or back: writes at most `capacity` units
/// (`destination` may be null when it is 0) and returns the length of the whole result. Lengths
/// of 2^31 or more throw FileNameTooLarge (empty path); ICU's status goes through
/// check_file_name_status.
unsigned long convert_file_name(UConverter* converter, char16_t* destination, unsigned long capacity,
                                const char* source, unsigned long length);
unsigned long convert_file_name(UConverter* converter, char* destination, unsigned long capacity,
                                const char16_t* source, unsigned long length);

/// The whole result of convert_file_name by the two-buffer rule.
template <class To, class From>
std::basic_string<To> convert_file_name(UConverter* converter, const From* source, unsigned long length);

/// `name` as file-system bytes, converted with the calling thread's converter for the default
/// encoding by the two-buffer rule. Throws as file_name_from_unicode does.
std::string to_filesystem_bytes(const char16_t* name, unsigned long length);
inline std::string to_filesystem_bytes(const ustring& name) { return to_filesystem_bytes(name.data(), name.size()); }

/// File-system bytes as UTF-16, converted like to_filesystem_bytes.
ustring from_filesystem_bytes(const char* bytes, unsigned long length);
inline ustring from_filesystem_bytes(const std::string& bytes) { return from_filesystem_bytes(bytes.data(), bytes.size()); }

/// The libc calls of the layer that can fail, in one place so that a test can replace one to
/// produce a failure (or count calls) that a real file system cannot be made to show.
struct system_calls {
    std::FILE* (*fopen)(const char* path, const char* mode);
    std::FILE* (*freopen)(const char* path, const char* mode, std::FILE* stream);
    int (*access)(const char* path, int mode);
    DIR* (*opendir)(const char* path);
    dirent* (*readdir)(DIR* dir);
    int (*closedir)(DIR* dir);
    int (*stat)(const char* path, struct stat* buffer);
    int (*lstat)(const char* path, struct stat* buffer);
};

/// The calls in force; the real ones unless a test replaced them.
system_calls& libc();

}  // namespace fl::filesystem::detail

// The exceptions of fl::filesystem that libqxi18n raises, and the translation between errno
// values and them.
#pragma once

#include <fl/filesystem/foundation/filesystem_error.hpp>
#include <fl/i18n/export.hpp>
#include <fl/i18n/ustring.hpp>

#include <string>
#include <vector>

namespace fl::filesystem {

/// A name or text too long to convert: 2^31 units or more, or a system ENAMETOOLONG.
/// The path may be empty when the failure concerns a length only.
class QXI18N_API FileNameTooLarge : public FsysExceptionBase {
public:
    explicit FileNameTooLarge(const ustring& path);
    ~FileNameTooLarge() override;
};

/// A file name that failed to convert for a reason other than a bad character (a truncated
/// sequence, a converter without state, any other ICU failure).
class QXI18N_API FileNameConversionFailure : public FsysExceptionBase {
public:
    FileNameConversionFailure();
    ~FileNameConversionFailure() override;
};

/// A file name holding a character or byte sequence that a strict converter refuses.
class QXI18N_API CvtInvalidCharacter : public FsysExceptionBase {
public:
    CvtInvalidCharacter();
    ~CvtInvalidCharacter() override;
};

/// EACCES: permission denied on the path or a directory on the way to it.
class QXI18N_API AccessDenied : public FsysExceptionBase {
public:
    explicit AccessDenied(const ustring& path);
    ~AccessDenied() override;
};

/// ENOENT: the path or a directory on the way to it does not exist.
class QXI18N_API PathNotFound : public FsysExceptionBase {
public:
    explicit PathNotFound(const ustring& path);
    ~PathNotFound() override;
};

/// ENOTDIR: a component used as a directory is not one.
class QXI18N_API NotDirectoryError : public FsysExceptionBase {
public:
    explicit NotDirectoryError(const ustring& path);
    ~NotDirectoryError() override;
};

/// ENOTEMPTY: a directory that had to be empty is not.
class QXI18N_API DirectoryNotEmpty : public FsysExceptionBase {
public:
    explicit DirectoryNotEmpty(const ustring& path);
    ~DirectoryNotEmpty() override;
};

/// EISDIR: a directory where a file was expected.
class QXI18N_API FileIsDirectory : public FsysExceptionBase {
public:
    explicit FileIsDirectory(const ustring& path);
    ~FileIsDirectory() override;
};

/// EEXIST: the path exists already.
class QXI18N_API FileExistsError : public FsysExceptionBase {
public:
    explicit FileExistsError(const ustring& path);
    ~FileExistsError() override;
};

/// ICU failed to compare two path names.
class QXI18N_API PathNameComparisonFailure : public FsysExceptionBase {
public:
    PathNameComparisonFailure();
    ~PathNameComparisonFailure() override;
};

/// Any other system failure; get_error() is its errno, the arguments hold a second path
/// (possibly empty).
class QXI18N_API SystemError : public FsysExceptionBase {
public:
    SystemError(const ustring& path, const std::vector<ustring>& arguments, int error);
    ~SystemError() override;
};

/// No temporary directory candidate was available at all.
class QXI18N_API TempEnvNotSpecified : public FsysExceptionBase {
public:
    TempEnvNotSpecified();
    ~TempEnvNotSpecified() override;
};

/// Throws the exception for `error` (an errno value): ENOENT PathNotFound, EACCES AccessDenied,
/// EEXIST FileExistsError, ENOTDIR NotDirectoryError, EISDIR FileIsDirectory, EINVAL and
/// EOPNOTSUPP InvalidArgument (empty message, arguments { second_path }), ENAMETOOLONG
/// FileNameTooLarge, ENOTEMPTY DirectoryNotEmpty, anything else SystemError (arguments
/// { second_path }, the error). Both paths are file-system bytes; a path that is not valid UTF-8
/// is reported with each byte widened to one unit by sign extension (0xE9 becomes U+FFE9), so
/// that the intended exception is never replaced by a conversion failure.
[[noreturn]] QXI18N_API void throw_file_system_error(int error, const std::string& path,
                                                     const std::string& second_path);

/// For use in a catch (...) block: rethrows the current exception and sets errno from it:
/// FileNameTooLarge ENAMETOOLONG; CvtInvalidCharacter, FileNameConversionFailure and
/// PathNotFound ENOENT; InvalidArgument EINVAL; AccessDenied EACCES; NotDirectoryError ENOTDIR;
/// DirectoryNotEmpty ENOTEMPTY; FileExistsError EEXIST; SystemError EIO; std::bad_alloc ENOMEM.
/// Any other exception (FileIsDirectory included) propagates.
QXI18N_API void set_errno_from_current_exception();

}  // namespace fl::filesystem

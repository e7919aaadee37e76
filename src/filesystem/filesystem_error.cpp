// The exceptions libqxi18n raises for the file-system layer, and their translation from and to errno.
#include "filesystem_internal.hpp"

#include "common/throw_exception.hpp"

#include <fl/filesystem/filesystem_error.hpp>
#include <fl/filesystem/foundation/pathname_encoding.hpp>

#include <cerrno>
#include <new>

namespace fl::filesystem {

FileNameTooLarge::FileNameTooLarge(const ustring& path)
    : FsysExceptionBase("fl:filesystem:FileNameTooLarge", fsys_file_name_too_large, path, {}, 0)
{
}
FileNameTooLarge::~FileNameTooLarge() = default;

FileNameConversionFailure::FileNameConversionFailure()
    : FsysExceptionBase("fl:filesystem:FileNameConversionFailure", fsys_file_name_conversion_failure, {}, {}, 0)
{
}
FileNameConversionFailure::~FileNameConversionFailure() = default;

CvtInvalidCharacter::CvtInvalidCharacter()
    : FsysExceptionBase("fl:filesystem:CvtInvalidCharacter", fsys_cvt_invalid_character, {}, {}, 0)
{
}
CvtInvalidCharacter::~CvtInvalidCharacter() = default;

AccessDenied::AccessDenied(const ustring& path)
    : FsysExceptionBase("fl:filesystem:AccessDenied", fsys_access_denied, path, {}, 0)
{
}
AccessDenied::~AccessDenied() = default;

PathNotFound::PathNotFound(const ustring& path)
    : FsysExceptionBase("fl:filesystem:PathNotFound", fsys_path_not_found, path, {}, 0)
{
}
PathNotFound::~PathNotFound() = default;

NotDirectoryError::NotDirectoryError(const ustring& path)
    : FsysExceptionBase("fl:filesystem:NotDirectoryError", fsys_not_directory_error, path, {}, 0)
{
}
NotDirectoryError::~NotDirectoryError() = default;

DirectoryNotEmpty::DirectoryNotEmpty(const ustring& path)
    : FsysExceptionBase("fl:filesystem:DirectoryNotEmpty", fsys_directory_not_empty, path, {}, 0)
{
}
DirectoryNotEmpty::~DirectoryNotEmpty() = default;

FileIsDirectory::FileIsDirectory(const ustring& path)
    : FsysExceptionBase("fl:filesystem:FileIsDirectory", fsys_file_is_directory, path, {}, 0)
{
}
FileIsDirectory::~FileIsDirectory() = default;

FileExistsError::FileExistsError(const ustring& path)
    : FsysExceptionBase("fl:filesystem:FileExistsError", fsys_file_exists_error, path, {}, 0)
{
}
FileExistsError::~FileExistsError() = default;

PathNameComparisonFailure::PathNameComparisonFailure()
    : FsysExceptionBase("fl:filesystem:PathNameComparisonFailure", fsys_path_name_comparison_failure, {}, {}, 0)
{
}
PathNameComparisonFailure::~PathNameComparisonFailure() = default;

SystemError::SystemError(const ustring& path, const std::vector<ustring>& arguments, int error)
    : FsysExceptionBase("fl:filesystem:SystemError", fsys_system_error, path, arguments, error)
{
}
SystemError::~SystemError() = default;

TempEnvNotSpecified::TempEnvNotSpecified()
    : FsysExceptionBase("fl:filesystem:TempEnvNotSpecified", fsys_temp_env_not_specified, {}, {}, 0)
{
}
TempEnvNotSpecified::~TempEnvNotSpecified() = default;

namespace {

// A name that is not UTF-8 is still reported: each byte becomes one unit, sign-extended as a
// plain char is, so that no conversion failure hides the error being reported.
ustring reportable(const std::string& bytes)
{
    try {
        return detail::from_filesystem(bytes);
    } catch (...) {
        ustring widened;
        widened.reserve(bytes.size());
        for (const char byte : bytes)
            widened += static_cast<char16_t>(static_cast<signed char>(byte));
        return widened;
    }
}

}  // namespace

void throw_file_system_error(int error, const std::string& path, const std::string& second_path)
{
    const ustring first = reportable(path);
    const ustring second = second_path.empty() ? ustring() : reportable(second_path);
    switch (error) {
    case ENOENT: fl::detail::throw_exception(PathNotFound(first));
    case EACCES: fl::detail::throw_exception(AccessDenied(first));
    case EEXIST: fl::detail::throw_exception(FileExistsError(first));
    case ENOTDIR: fl::detail::throw_exception(NotDirectoryError(first));
    case EISDIR: fl::detail::throw_exception(FileIsDirectory(first));
    case EINVAL:
    case EOPNOTSUPP: fl::detail::throw_exception(InvalidArgument("", first, {second}));
    case ENAMETOOLONG: fl::detail::throw_exception(FileNameTooLarge(first));
    case ENOTEMPTY: fl::detail::throw_exception(DirectoryNotEmpty(first));
    default: fl::detail::throw_exception(SystemError(first, {second}, error));
    }
}

void set_errno_from_current_exception()
{
    try {
        throw;
    } catch (const FileNameTooLarge&) {
        errno = ENAMETOOLONG;
    } catch (const CvtInvalidCharacter&) {
        // A name that does not convert cannot name an existing file.
        errno = ENOENT;
    } catch (const FileNameConversionFailure&) {
        errno = ENOENT;
    } catch (const PathNotFound&) {
        errno = ENOENT;
    } catch (const InvalidArgument&) {
        errno = EINVAL;
    } catch (const AccessDenied&) {
        errno = EACCES;
    } catch (const NotDirectoryError&) {
        errno = ENOTDIR;
    } catch (const DirectoryNotEmpty&) {
        errno = ENOTEMPTY;
    } catch (const FileExistsError&) {
        errno = EEXIST;
    } catch (const SystemError&) {
        errno = EIO;
    } catch (const std::bad_alloc&) {
        errno = ENOMEM;
    }
}

}  // namespace fl::filesystem

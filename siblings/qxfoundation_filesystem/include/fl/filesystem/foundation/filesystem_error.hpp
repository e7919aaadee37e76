// The base of fl::filesystem's exception family and the exceptions this library raises itself.
#pragma once

#include <fl/filesystem/foundation/config.hpp>

#include <cstdint>
#include <exception>
#include <string>
#include <vector>

namespace fl::filesystem {

/// The kind of a file-system failure; every exception of the family carries one.
enum fsys_excp_id : std::int32_t {
    fsys_operation_failure = 0,             ///< OperationFailure (this library)
    fsys_invalid_argument = 1,              ///< InvalidArgument (this library)
    fsys_invalid_operation = 2,             ///< InvalidOperation (this library)
    fsys_file_name_too_large = 3,           ///< the rest are raised by libqxi18n
    fsys_file_name_conversion_failure = 4,
    fsys_cvt_invalid_character = 5,
    fsys_access_denied = 6,
    fsys_path_not_found = 7,
    fsys_not_directory_error = 8,
    fsys_directory_not_empty = 9,
    fsys_file_is_directory = 10,
    fsys_file_exists_error = 11,
    fsys_path_name_comparison_failure = 12,
    fsys_system_error = 13,
    fsys_temp_env_not_specified = 14,
};

/// Base of every file-system exception. what() is the key, "fl:filesystem:" and the class
/// name, unless a class says otherwise. Thrown only wrapped in
/// boost::exception_detail::clone_impl<E>, so boost::current_exception() can carry it.
class QXFOUNDATION_FILESYSTEM_API FsysExceptionBase : public std::exception {
public:
    FsysExceptionBase(const char* key, fsys_excp_id id, const ustring& path, const std::vector<ustring>& arguments,
                      int error);
    FsysExceptionBase(const FsysExceptionBase& other);
    ~FsysExceptionBase() override = 0;

    const char* what() const noexcept override;

    /// The exception's identifier, e.g. "fl:filesystem:PathNotFound".
    const std::string& get_key() const noexcept { return key_; }
    fsys_excp_id get_id() const noexcept { return id_; }
    /// The path the failure concerns; may be empty.
    const ustring& get_path() const noexcept { return path_; }
    /// Further texts, such as a second path or the name of the failed call; may be empty.
    const std::vector<ustring>& get_arguments() const noexcept { return arguments_; }
    /// The errno value behind the failure, or 0.
    int get_error() const noexcept { return error_; }

private:
    std::string key_;
    fsys_excp_id id_;
    ustring path_;
    std::vector<ustring> arguments_;
    int error_;
};

/// An argument the operation refuses: an empty path, a name that cannot be encoded, a bad mask.
/// what() is "fl:filesystem:InvalidArgument", followed by ": " and the message if there is one.
class QXFOUNDATION_FILESYSTEM_API InvalidArgument : public FsysExceptionBase {
public:
    InvalidArgument(const std::string& message, const ustring& path, const std::vector<ustring>& arguments);
    InvalidArgument(const InvalidArgument& other);
    ~InvalidArgument() override;

    const char* what() const noexcept override;
    /// The message as given, e.g. "Empty Path not permitted"; may be empty.
    const std::string& get_message() const noexcept { return message_; }

private:
    std::string description_;
    std::string message_;
};

/// An operation on an object in a state that does not allow it, such as advancing an iterator
/// that is at its end.
class QXFOUNDATION_FILESYSTEM_API InvalidOperation : public FsysExceptionBase {
public:
    InvalidOperation();
    ~InvalidOperation() override;
};

/// A system call of this library failed for a reason other than a missing file. The error is
/// the call's errno and the single argument the name of the call, e.g. u"realpath".
class QXFOUNDATION_FILESYSTEM_API OperationFailure : public FsysExceptionBase {
public:
    OperationFailure(const ustring& path, const std::vector<ustring>& arguments, int error);
    ~OperationFailure() override;
};

namespace detail {

/// Throws InvalidOperation.
[[noreturn]] QXFOUNDATION_FILESYSTEM_API void throw_invalid_operation_exception();

}  // namespace detail
}  // namespace fl::filesystem

// The base of the file-system exception family and the exceptions of this library.
#include <fl/filesystem/foundation/filesystem_error.hpp>

#include "common/throw_exception.hpp"

namespace fl::filesystem {

FsysExceptionBase::FsysExceptionBase(const char* key, fsys_excp_id id, const ustring& path,
                                     const std::vector<ustring>& arguments, int error)
    : key_(key ? key : ""), id_(id), path_(path), arguments_(arguments), error_(error)
{
}
FsysExceptionBase::FsysExceptionBase(const FsysExceptionBase& other) = default;
FsysExceptionBase::~FsysExceptionBase() = default;

const char* FsysExceptionBase::what() const noexcept { return key_.c_str(); }

InvalidArgument::InvalidArgument(const std::string& message, const ustring& path, const std::vector<ustring>& arguments)
    : FsysExceptionBase("fl:filesystem:InvalidArgument", fsys_invalid_argument, path, arguments, 0),
      description_(message.empty() ? get_key() : get_key() + ": " + message), message_(message)
{
}
InvalidArgument::InvalidArgument(const InvalidArgument& other) = default;
InvalidArgument::~InvalidArgument() = default;

const char* InvalidArgument::what() const noexcept { return description_.c_str(); }

InvalidOperation::InvalidOperation() : FsysExceptionBase("fl:filesystem:InvalidOperation", fsys_invalid_operation, {}, {}, 0) {}
InvalidOperation::~InvalidOperation() = default;

OperationFailure::OperationFailure(const ustring& path, const std::vector<ustring>& arguments, int error)
    : FsysExceptionBase("fl:filesystem:OperationFailure", fsys_operation_failure, path, arguments, error)
{
}
OperationFailure::~OperationFailure() = default;

namespace detail {

void throw_invalid_operation_exception() { fl::detail::throw_exception(InvalidOperation()); }

}  // namespace detail
}  // namespace fl::filesystem

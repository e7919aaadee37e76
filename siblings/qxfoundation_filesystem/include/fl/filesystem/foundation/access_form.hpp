// The form in which a path is handed to the operating system: the bytes a system call takes.
#pragma once

#include <fl/filesystem/foundation/config.hpp>

#include <string>

namespace fl::filesystem::detail {

/// The bytes of a native (file-system) path as a system call takes them. This platform takes
/// every path as it stands, so the bytes come back unchanged, the empty path included.
QXFOUNDATION_FILESYSTEM_API std::string make_access_form(const std::string& native_path);

/// The UTF-16 `path` encoded as UTF-8, then put through make_access_form. The path is taken as
/// it is, "." and "//" included. Throws InvalidArgument (with the path) for a lone surrogate.
QXFOUNDATION_FILESYSTEM_API std::string make_native_access_form(const ustring& path);

/// As make_native_access_form, after cleaning the path with make_native_form(path, true):
/// runs of '/' joined, "." components and a trailing '/' dropped.
QXFOUNDATION_FILESYSTEM_API std::string make_native_access_form_with_cleanup(const ustring& path);

}  // namespace fl::filesystem::detail

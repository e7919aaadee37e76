// Pure string operations on UTF-16 path names: joining, splitting and the native form.
#pragma once

#include <fl/filesystem/foundation/config.hpp>

namespace fl::filesystem {

/// The spelling of the special path components. Strings of char16_t, null-terminated.
struct upath_constant {
    static constexpr char16_t PATHNAME_SEPARATOR[] = u"/";
    static constexpr char16_t CURRENT_DIRECTORY[] = u".";
    static constexpr char16_t PARENT_DIRECTORY[] = u"..";
};

namespace detail {

/// Joins `head` and `tail` with exactly one '/': separators at the end of `head` and at the
/// start of `tail` are dropped first. An empty side gives the other side unchanged. An absolute
/// `tail` is appended like any other (it does not replace `head`). Never throws except
/// std::bad_alloc; safe on any input.
QXFOUNDATION_FILESYSTEM_API ustring concatenate_pathname(const ustring& head, const ustring& tail);

/// The units after the last '/', or the whole path if it has none. "a/b/" and "/" give "".
QXFOUNDATION_FILESYSTEM_API ustring extract_filename(const ustring& path);

/// The file name without its extension (see extract_extension). ".profile" is all stem;
/// "." and ".." are their own stem.
QXFOUNDATION_FILESYSTEM_API ustring extract_stem(const ustring& path);

/// The file name from its last '.' on, dot included: "a.tar.gz" gives ".gz", "a." gives ".".
/// A file name whose only dot is its first unit (".profile"), "." and ".." have none: "".
QXFOUNDATION_FILESYSTEM_API ustring extract_extension(const ustring& path);

/// True when the path begins with '/'. The empty path is relative.
QXFOUNDATION_FILESYSTEM_API bool is_absolute(const ustring& path);

/// The native form of a path: runs of '/' become one, a trailing '/' is dropped (the root "/"
/// stays), and, when `remove_current_directory` is true, every "." component is dropped; a
/// relative path left with no component becomes ".". ".." is kept: resolving it would need
/// the file system because of symbolic links. The empty path stays empty. Never throws except
/// std::bad_alloc.
QXFOUNDATION_FILESYSTEM_API ustring make_native_form(const ustring& path, bool remove_current_directory);

}  // namespace detail
}  // namespace fl::filesystem

// Pure string operations on UTF-16 path names: joining, splitting and the native form.
#pragma once

#include <fl/filesystem/foundation/config.hpp>

#include <string>

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

/// Joins as the two-argument form; with `native` true the result is then put in native form
/// (make_native_form(result, true)), so that a tail like "./b//" leaves no "." or "//" behind.
QXFOUNDATION_FILESYSTEM_API ustring concatenate_pathname(const ustring& head, const ustring& tail, bool native);

/// The path without its last component and the separator before it: "/a/b" gives "/a", "/a"
/// gives "/", "a" and "/" give "". Trailing separators are ignored first ("a/b/" gives "a").
QXFOUNDATION_FILESYSTEM_API ustring extract_parent_path(const ustring& path);

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

/// The path operations for one pair of unit types: those a caller holds and those a path is
/// stored in.
template <class External, class Internal>
struct path_traits;

/// UTF-16 paths kept in UTF-16.
template <>
struct path_traits<char16_t, char16_t> {
    /// As detail::make_native_form.
    static ustring make_native_form(const ustring& path, bool remove_current_directory)
    {
        return ::fl::filesystem::detail::make_native_form(path, remove_current_directory);
    }
};

/// Native paths kept as the bytes the file system stores. The bytes need not be valid UTF-8:
/// '/' and '.' never occur inside a multibyte sequence, so the results are those of the UTF-16
/// operations, byte for byte.
template <>
struct path_traits<char, char> {
    /// As detail::make_native_form.
    QXFOUNDATION_FILESYSTEM_API static std::string make_native_form(const std::string& path,
                                                                    bool remove_current_directory);
    /// As detail::concatenate_pathname.
    QXFOUNDATION_FILESYSTEM_API static std::string concatenate_pathname(const std::string& head,
                                                                        const std::string& tail);
};

}  // namespace detail
}  // namespace fl::filesystem

// basic_path and upath: a path held as UTF-16 text in native form, with its path algebra.
#pragma once

#include <fl/filesystem/foundation/access_form.hpp>
#include <fl/filesystem/foundation/config.hpp>
#include <fl/filesystem/foundation/pathname.hpp>

#include <string>
#include <utility>

namespace fl::filesystem {

namespace detail {

/// Paths whose callers hand bytes (`char`) to the system and which are stored as UTF-16.
template <>
struct path_traits<char, char16_t> {
    using external_string = std::string;
    using internal_string = ustring;

    static ustring make_native_form(const ustring& path, bool remove_current_directory)
    {
        return ::fl::filesystem::detail::make_native_form(path, remove_current_directory);
    }
    static ustring concatenate_pathname(const ustring& head, const ustring& tail, bool native)
    {
        return ::fl::filesystem::detail::concatenate_pathname(head, tail, native);
    }
    static ustring parent_path(const ustring& path) { return extract_parent_path(path); }
    static ustring filename(const ustring& path) { return extract_filename(path); }
    static ustring stem(const ustring& path) { return extract_stem(path); }
    static ustring extension(const ustring& path) { return extract_extension(path); }
    static bool is_absolute(const ustring& path) { return ::fl::filesystem::detail::is_absolute(path); }
    /// UTF-8 bytes for the system; throws InvalidArgument for a lone surrogate.
    static std::string to_external(const ustring& path) { return make_native_access_form(path); }
};

}  // namespace detail

/// A path stored as `Internal` text in native form: no run of separators, no "." component, no
/// trailing separator except the root "/" itself (see detail::make_native_form). ".." stays, as
/// resolving it needs the file system. The append flag, given at construction and kept by every
/// path derived from this one, decides whether appended text is put in native form too (true)
/// or only joined with one separator (false).
template <class External, class Internal, class Traits>
class QXFOUNDATION_FILESYSTEM_API basic_path {
public:
    using value_type = Internal;
    using string_type = std::basic_string<Internal>;
    using external_string_type = std::basic_string<External>;
    using traits_type = Traits;

    /// The empty path.
    basic_path() = default;
    /// `path` in native form. The empty string gives the empty path.
    basic_path(const string_type& path, bool native_append = true)
        : path_(Traits::make_native_form(path, true)), native_append_(native_append)
    {
    }
    /// A null pointer gives the empty path.
    basic_path(const Internal* path, bool native_append = true)
        : basic_path(path ? string_type(path) : string_type(), native_append)
    {
    }

    /// The path's text, in native form.
    const string_type& string() const noexcept { return path_; }
    const Internal* c_str() const noexcept { return path_.c_str(); }
    /// The bytes to hand to the system (UTF-8). Throws InvalidArgument for a lone surrogate.
    external_string_type native_string() const { return Traits::to_external(path_); }
    /// The flag this path passes to the concatenation.
    bool append_flag() const noexcept { return native_append_; }

    bool empty() const noexcept { return path_.empty(); }
    void clear() noexcept { path_.clear(); }
    bool is_absolute() const { return Traits::is_absolute(path_); }
    bool is_relative() const { return !is_absolute(); }

    /// Joins `text` with one separator, as detail::concatenate_pathname with the append flag.
    /// A null or empty `text` leaves the path as it is. Defined by libqxi18n for upath.
    basic_path& append(const Internal* text);

    /// Join as detail::concatenate_pathname with the append flag: an empty side leaves the other
    /// as it is, and an absolute right side is joined, not substituted ("/a" / "/b" is "/a/b").
    basic_path& operator/=(const basic_path& other) { return join(other.path_); }
    basic_path& operator/=(const string_type& text) { return join(text); }
    basic_path& operator/=(const Internal* text) { return text ? join(string_type(text)) : *this; }

    /// The path without its last component: "/a/b" gives "/a", "/a" gives "/", "a" and "/"
    /// give the empty path.
    basic_path parent_path() const { return from_native(Traits::parent_path(path_)); }
    /// The last component: "/a/b.txt" gives "b.txt", "/" gives "".
    string_type filename() const { return Traits::filename(path_); }
    /// The last component without its extension: "b.tar.gz" gives "b.tar", ".profile" itself.
    string_type stem() const { return Traits::stem(path_); }
    /// The last component's extension, dot included: "b.tar.gz" gives ".gz", ".profile" "".
    string_type extension() const { return Traits::extension(path_); }

    /// Unit-by-unit order of the texts: negative, zero or positive.
    int compare(const basic_path& other) const noexcept { return path_.compare(other.path_); }

    void swap(basic_path& other) noexcept
    {
        path_.swap(other.path_);
        std::swap(native_append_, other.native_append_);
    }

    friend basic_path operator/(basic_path lhs, const basic_path& rhs) { return lhs /= rhs; }
    friend bool operator==(const basic_path& a, const basic_path& b) noexcept { return a.path_ == b.path_; }
    friend bool operator!=(const basic_path& a, const basic_path& b) noexcept { return a.path_ != b.path_; }
    friend bool operator<(const basic_path& a, const basic_path& b) noexcept { return a.path_ < b.path_; }
    friend bool operator<=(const basic_path& a, const basic_path& b) noexcept { return a.path_ <= b.path_; }
    friend bool operator>(const basic_path& a, const basic_path& b) noexcept { return a.path_ > b.path_; }
    friend bool operator>=(const basic_path& a, const basic_path& b) noexcept { return a.path_ >= b.path_; }

private:
    basic_path& join(const string_type& text)
    {
        if (!text.empty())
            path_ = Traits::concatenate_pathname(path_, text, native_append_);
        return *this;
    }
    // The text is native already: no second pass.
    basic_path from_native(string_type native) const
    {
        basic_path result;
        result.path_ = std::move(native);
        result.native_append_ = native_append_;
        return result;
    }

    string_type path_;
    bool native_append_ = true;
};

/// The path type of the library's interfaces: UTF-16 text, handed to the system as UTF-8 bytes.
using upath = basic_path<char, char16_t, detail::path_traits<char, char16_t>>;

/// Defined and exported by libqxi18n; declared here so that every caller sees the one definition.
template <>
__attribute__((visibility("default"))) upath& upath::append(const char16_t* text);

}  // namespace fl::filesystem

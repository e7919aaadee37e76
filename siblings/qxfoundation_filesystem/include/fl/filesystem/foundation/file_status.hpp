// The status of a file (type, permissions, times, size) and the operations that ask the system
// about a path: status, existence, absolute and canonical forms.
#pragma once

#include <fl/filesystem/foundation/config.hpp>
#include <fl/filesystem/foundation/upath.hpp>

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <cstdint>

namespace fl::filesystem {

/// What the system reports about one file. The type values are the S_IF* bits of st_mode
/// (so `st_mode & file_type_mask`, and a directory entry's d_type shifted left by 12, compare
/// directly with them); file_not_found and file_type_unknown lie outside every S_IF* value.
class QXFOUNDATION_FILESYSTEM_API file_status {
public:
    using type_type = std::uint32_t;
    using perms_type = std::uint32_t;

    static constexpr type_type file_type_mask = 0xF000;  ///< S_IFMT
    static constexpr type_type fifo_file = 0x1000;       ///< S_IFIFO
    static constexpr type_type character_file = 0x2000;  ///< S_IFCHR
    static constexpr type_type directory_file = 0x4000;  ///< S_IFDIR
    static constexpr type_type block_file = 0x6000;      ///< S_IFBLK
    static constexpr type_type regular_file = 0x8000;    ///< S_IFREG
    static constexpr type_type symlink_file = 0xA000;    ///< S_IFLNK
    static constexpr type_type socket_file = 0xC000;     ///< S_IFSOCK
    static constexpr type_type file_type_unknown = 0;    ///< exists, of no type above
    static constexpr type_type file_not_found = 0x10000; ///< nothing at that path
    static constexpr perms_type no_perms = 0;
    static constexpr perms_type perms_mask = 0xFFF;      ///< rwx for all three, set-id and sticky

    /// Not found, no permissions, times not-a-date-time, size 0.
    file_status() noexcept = default;
    explicit file_status(type_type type, perms_type permissions = no_perms) noexcept
        : type_(type), permissions_(permissions)
    {
    }
    file_status(type_type type, perms_type permissions, boost::posix_time::ptime access_time,
                boost::posix_time::ptime modification_time, boost::posix_time::ptime change_time,
                std::uintmax_t size) noexcept
        : type_(type), permissions_(permissions), access_time_(access_time),
          modification_time_(modification_time), change_time_(change_time), size_(size)
    {
    }

    type_type type() const noexcept { return type_; }
    /// The 12 low bits of st_mode.
    perms_type permissions() const noexcept { return permissions_; }
    boost::posix_time::ptime access_time() const noexcept { return access_time_; }
    boost::posix_time::ptime last_write_time() const noexcept { return modification_time_; }
    boost::posix_time::ptime change_time() const noexcept { return change_time_; }
    /// In bytes.
    std::uintmax_t size() const noexcept { return size_; }

    bool exists() const noexcept { return type_ != file_not_found; }
    bool is_regular_file() const noexcept { return type_ == regular_file; }
    bool is_directory() const noexcept { return type_ == directory_file; }
    bool is_symlink() const noexcept { return type_ == symlink_file; }

private:
    type_type type_ = file_not_found;
    perms_type permissions_ = no_perms;
    boost::posix_time::ptime access_time_;
    boost::posix_time::ptime modification_time_;
    boost::posix_time::ptime change_time_;
    std::uintmax_t size_ = 0;
};

/// The status of what `path` names, following symbolic links (stat). A path that does not exist
/// (ENOENT, or ENOTDIR for a file used as a directory) gives type file_not_found; any other
/// failure throws OperationFailure with the path and errno. The path is encoded as UTF-8 as it
/// stands; a lone surrogate throws InvalidArgument. The times have microsecond resolution.
QXFOUNDATION_FILESYSTEM_API file_status status(const ustring& path);
QXFOUNDATION_FILESYSTEM_API file_status status(const upath& path);
inline file_status status(const char16_t* path) { return status(ustring(path ? path : u"")); }

/// As status, but a symbolic link reports itself (lstat).
QXFOUNDATION_FILESYSTEM_API file_status symlink_status(const ustring& path);
QXFOUNDATION_FILESYSTEM_API file_status symlink_status(const upath& path);
inline file_status symlink_status(const char16_t* path) { return symlink_status(ustring(path ? path : u"")); }

/// Whether status(path) finds something; throws as status does.
QXFOUNDATION_FILESYSTEM_API bool exists(const ustring& path);
QXFOUNDATION_FILESYSTEM_API bool exists(const upath& path);
inline bool exists(const char16_t* path) { return exists(ustring(path ? path : u"")); }

/// The process's working directory, in native form. Throws OperationFailure if getcwd fails.
QXFOUNDATION_FILESYSTEM_API ustring current_path();

/// `path` made absolute against `base` (the working directory when `base` is empty; a relative
/// `base` is made absolute first), in native form: "." components go, ".." stays, and links
/// are not resolved. Touches the disk only to read the working directory. The empty path gives
/// the base.
QXFOUNDATION_FILESYSTEM_API ustring absolute(const ustring& path, const ustring& base = ustring());
QXFOUNDATION_FILESYSTEM_API upath absolute(const upath& path, const upath& base = upath());
inline ustring absolute(const char16_t* path, const char16_t* base = nullptr)
{
    return absolute(ustring(path ? path : u""), ustring(base ? base : u""));
}

/// absolute(path, base) with every symbolic link, "." and ".." resolved (realpath). The path
/// must exist: the empty path or a missing one throws OperationFailure with error ENOENT, as does any other
/// failure with its errno. A lone surrogate throws InvalidArgument; a resolved name that is not
/// UTF-8 throws InvalidArgument too.
QXFOUNDATION_FILESYSTEM_API ustring canonical(const ustring& path, const ustring& base = ustring());
QXFOUNDATION_FILESYSTEM_API upath canonical(const upath& path, const upath& base = upath());
inline ustring canonical(const char16_t* path, const char16_t* base = nullptr)
{
    return canonical(ustring(path ? path : u""), ustring(base ? base : u""));
}

}  // namespace fl::filesystem

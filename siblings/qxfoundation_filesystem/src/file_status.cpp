// File status and path resolution: stat, lstat, getcwd and realpath behind UTF-16 paths.
#include <fl/filesystem/foundation/file_status.hpp>
#include <fl/filesystem/foundation/filesystem_error.hpp>
#include <fl/filesystem/foundation/pathname_encoding.hpp>

#include "common/throw_exception.hpp"

#include <boost/date_time/posix_time/conversion.hpp>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace fl::filesystem {

namespace {

// The bytes for a system call; a NUL unit would silently cut the path short there.
std::string system_path(const ustring& path)
{
    if (path.find(u'\0') != ustring::npos)
        fl::detail::throw_exception(InvalidArgument("Path contains a NUL character", path, {}));
    return detail::make_native_access_form(path);
}

ustring decode(const std::string& bytes, const char* what)
{
    try {
        return detail::from_filesystem(bytes);
    } catch (const std::invalid_argument& e) {
        fl::detail::throw_exception(InvalidArgument(std::string(what) + ": " + e.what(), {}, {}));
    }
}

[[noreturn]] void throw_operation_failure(const ustring& path, const char16_t* call, int error)
{
    fl::detail::throw_exception(OperationFailure(path, {call}, error));
}

boost::posix_time::ptime to_ptime(const timespec& time)
{
    return boost::posix_time::from_time_t(time.tv_sec) + boost::posix_time::microseconds(time.tv_nsec / 1000);
}

file_status::type_type type_of(mode_t mode)
{
    switch (mode & S_IFMT) {
    case S_IFREG: return file_status::regular_file;
    case S_IFDIR: return file_status::directory_file;
    case S_IFLNK: return file_status::symlink_file;
    case S_IFBLK: return file_status::block_file;
    case S_IFCHR: return file_status::character_file;
    case S_IFIFO: return file_status::fifo_file;
    case S_IFSOCK: return file_status::socket_file;
    default: return file_status::file_type_unknown;
    }
}

file_status query(const ustring& path, int (*call)(const char*, struct stat*), const char16_t* call_name)
{
    const std::string bytes = system_path(path);
    struct stat st {};
    if (call(bytes.c_str(), &st) != 0) {
        const int error = errno;
        // A file used as a directory on the way is as missing as a missing name.
        if (error == ENOENT || error == ENOTDIR)
            return file_status(file_status::file_not_found);
        throw_operation_failure(path, call_name, error);
    }
    return file_status(type_of(st.st_mode), static_cast<file_status::perms_type>(st.st_mode) & file_status::perms_mask,
                       to_ptime(st.st_atim), to_ptime(st.st_mtim), to_ptime(st.st_ctim),
                       static_cast<std::uintmax_t>(st.st_size));
}

struct free_deleter {
    void operator()(char* p) const noexcept { std::free(p); }
};

}  // namespace

file_status status(const ustring& path) { return query(path, ::stat, u"stat"); }
file_status status(const upath& path) { return status(path.string()); }
file_status symlink_status(const ustring& path) { return query(path, ::lstat, u"lstat"); }
file_status symlink_status(const upath& path) { return symlink_status(path.string()); }
bool exists(const ustring& path) { return status(path).exists(); }
bool exists(const upath& path) { return exists(path.string()); }

ustring current_path()
{
    const std::unique_ptr<char, free_deleter> cwd(::getcwd(nullptr, 0));
    if (!cwd)
        throw_operation_failure({}, u"getcwd", errno);
    return detail::make_native_form(decode(cwd.get(), "Working directory is not valid UTF-8"), true);
}

ustring absolute(const ustring& path, const ustring& base)
{
    if (detail::is_absolute(path))
        return detail::make_native_form(path, true);
    const ustring root = base.empty() ? current_path() : absolute(base);
    return detail::make_native_form(detail::concatenate_pathname(root, path), true);
}

upath absolute(const upath& path, const upath& base)
{
    return upath(absolute(path.string(), base.string()), path.append_flag());
}

ustring canonical(const ustring& path, const ustring& base)
{
    if (path.empty())
        throw_operation_failure(path, u"realpath", ENOENT);
    const std::string bytes = system_path(absolute(path, base));
    const std::unique_ptr<char, free_deleter> resolved(::realpath(bytes.c_str(), nullptr));
    if (!resolved)
        throw_operation_failure(path, u"realpath", errno);
    return decode(resolved.get(), "Resolved path is not valid UTF-8");
}

upath canonical(const upath& path, const upath& base)
{
    return upath(canonical(path.string(), base.string()), path.append_flag());
}

}  // namespace fl::filesystem

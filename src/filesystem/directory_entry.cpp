// Directory entries (names, types and status of what they name) and the wildcard filters.
#include "directory_internal.hpp"
#include "filesystem_internal.hpp"

#include <fl/filesystem/directory_iterator.hpp>
#include <fl/filesystem/filesystem_error.hpp>

#include <boost/date_time/posix_time/conversion.hpp>
#include <boost/make_shared.hpp>

#include <cerrno>
#include <cstring>

namespace fl::filesystem {

namespace {

using stat_call = int (*)(const char*, struct stat*);
using type_type = file_status::type_type;

std::string full_native_path(const detail::directory_entry_record& record)
{
    std::string path = record.directory;
    path += '/';
    path += record.name_bytes();
    return path;
}

// Fills `buffer`; false when the entry has gone (or its path is refused), a throw otherwise.
bool stat_entry(const std::string& path, stat_call call, struct stat& buffer)
{
    if (call(path.c_str(), &buffer) == 0)
        return true;
    if (errno != ENOENT && errno != EINVAL)
        throw_file_system_error(errno, path, std::string());
    return false;
}

type_type entry_type(const detail::directory_entry_record& record, bool follow)
{
    // The DT_* values are the S_IF* values shifted right by 12.
    if (record.entry_type != DT_UNKNOWN && !(follow && record.entry_type == DT_LNK))
        return static_cast<type_type>(record.entry_type << 12);
    struct stat buffer {};
    const stat_call call = follow ? detail::libc().stat : detail::libc().lstat;
    if (!stat_entry(full_native_path(record), call, buffer))
        return file_status::file_not_found;
    return buffer.st_mode & file_status::file_type_mask;
}

boost::posix_time::ptime to_ptime(std::time_t seconds, long nanoseconds)
{
    return boost::posix_time::from_time_t(seconds) + boost::posix_time::microseconds(nanoseconds / 1000);
}

file_status entry_status(const detail::directory_entry_record& record, stat_call call)
{
    struct stat buffer {};
    if (!stat_entry(full_native_path(record), call, buffer))
        return file_status(file_status::file_not_found, file_status::no_perms);
    type_type type = buffer.st_mode & file_status::file_type_mask;
    switch (type) {
    case file_status::regular_file:
    case file_status::directory_file:
    case file_status::symlink_file:
    case file_status::block_file:
    case file_status::character_file:
    case file_status::fifo_file:
    case file_status::socket_file:
        break;
    default:
        type = file_status::file_type_unknown;
    }
    // The change time carries the fraction of the modification time, as callers have always seen.
    return file_status(type, buffer.st_mode & file_status::perms_mask,
                       to_ptime(buffer.st_atim.tv_sec, buffer.st_atim.tv_nsec),
                       to_ptime(buffer.st_mtim.tv_sec, buffer.st_mtim.tv_nsec),
                       to_ptime(buffer.st_ctim.tv_sec, buffer.st_mtim.tv_nsec),
                       static_cast<std::uintmax_t>(buffer.st_size));
}

}  // namespace

upath_directory_entry::upath_directory_entry() : record_(boost::make_shared<detail::directory_entry_record>()) {}

ustring upath_directory_entry::filename() const
{
    const char* name = record_->name_bytes();
    return detail::from_filesystem_bytes(name, std::strlen(name));
}

ustring upath_directory_entry::alternative_filename() const { return ustring(); }

ustring upath_directory_entry::pathname() const { return detail::from_filesystem_bytes(record_->directory); }

ustring upath_directory_entry::full_pathname() const { return detail::from_filesystem_bytes(full_native_path(*record_)); }

file_status::type_type upath_directory_entry::type() const { return entry_type(*record_, false); }

file_status::type_type upath_directory_entry::target_type() const { return entry_type(*record_, true); }

file_status::type_type upath_directory_entry::target_type_without_validation() const { return target_type(); }

file_status upath_directory_entry::status() const { return entry_status(*record_, detail::libc().stat); }

file_status upath_directory_entry::symlink_status() const
{
    return entry_status(*record_, detail::libc().lstat);
}

pattern_string_context::pattern_string_context(const ustring& file_name, const ustring& pattern)
    : file_name_(file_name), pattern_(pattern)
{
}

pattern_string_context::~pattern_string_context() = default;

wildcard_pattern_string_context::wildcard_pattern_string_context(const ustring& wildcard)
    : pattern_string_context(wildcard, detail::generate_pattern_from_filename(wildcard, tolven_pattern_string_generator()))
{
}

wildcard_pattern_string_context::~wildcard_pattern_string_context() = default;

namespace detail {

ustring generate_pattern_from_filename(const ustring& name, const tolven_pattern_string_generator&)
{
    if (name.empty())
        return ustring();
    if (name == upath_constant::CURRENT_DIRECTORY || name == upath_constant::PARENT_DIRECTORY)
        return u"^.*$";
    static constexpr char16_t special[] = u"$()*+.?[\\^{|}";
    ustring pattern(u"^");
    pattern.reserve(name.size() * 2 + 2);
    for (std::size_t i = 0; i < name.size(); ++i) {
        const char16_t unit = name[i];
        if (unit == u'*') {
            pattern += u"(.|\r)*";
            while (i + 1 < name.size() && name[i + 1] == u'*')
                ++i;
            continue;
        }
        if (unit < 128 && std::char_traits<char16_t>::find(special, sizeof special / 2 - 1, unit) != nullptr)
            pattern += u'\\';
        pattern += unit;
    }
    pattern += u'$';
    return pattern;
}

}  // namespace detail
}  // namespace fl::filesystem

// The two directory readers and the entry record's name storage.
#include "directory_internal.hpp"
#include "filesystem_internal.hpp"
#include "locale/locale_context.hpp"

#include "common/throw_exception.hpp"

#include <fl/filesystem/filesystem_error.hpp>
#include <fl/filesystem/foundation/file_status.hpp>

#include <unicode/ustring.h>

#include <cerrno>
#include <cstring>

namespace fl::filesystem::detail {

void directory_entry_record::set_name(const char* bytes, std::size_t length)
{
    delete[] long_name;
    long_name = nullptr;
    if (length > inline_name_limit) {
        long_name = new char[length + 1]();
        std::memcpy(long_name, bytes, length);
    } else {
        std::memcpy(name, bytes, length);
        name[length] = '\0';
    }
}

directory_entry_context::directory_entry_context(const ustring& directory, const ustring& first_name)
    : directory_name(directory), current_name(first_name),
      native_directory(to_filesystem_bytes(absolute(directory)))
{
    errno = 0;
    handle.reset(libc().opendir(native_directory.c_str()));
    open_error = handle ? 0 : errno;
}

// The handle's deleter closes a directory still open; a destructor cannot report its failure.
directory_entry_context::~directory_entry_context() = default;

std::string directory_entry_context::failure_path()
{
    return to_filesystem_bytes(directory_name + upath_constant::PATHNAME_SEPARATOR + last_name());
}

const ustring& directory_entry_context::last_name()
{
    if (!name_pending_)
        return current_name;
    const char* bytes = record->name_bytes();
    const unsigned long length = std::strlen(bytes);
    UConverter* converter = fl::i18n::detail::thread_current_converter();
    // The storage of the previous name is reused; only a longer name grows it.
    current_name.resize(current_name.capacity());
    unsigned long produced = convert_file_name(converter, current_name.data(), current_name.size(), bytes, length);
    if (produced > current_name.size()) {
        current_name.resize(produced);
        produced = convert_file_name(converter, current_name.data(), current_name.size(), bytes, length);
    }
    current_name.resize(produced);
    name_pending_ = false;
    return current_name;
}

bool directory_entry_context::last_name_is_dot_entry() const noexcept
{
    const char* bytes = record->name_bytes();
    return bytes[0] == '.' && (bytes[1] == '\0' || (bytes[1] == '.' && bytes[2] == '\0'));
}

bool directory_entry_context::read_one()
{
    if (!handle)
        return false;
    errno = 0;
    const dirent* entry = libc().readdir(handle.get());
    if (entry == nullptr) {
        if (errno != 0)
            throw_file_system_error(errno, failure_path(), std::string());
        // Released first, so that the handle is gone whatever closedir says.
        if (libc().closedir(handle.release()) != 0)
            throw_file_system_error(errno, std::string(), std::string());
        return false;
    }
    record->set_name(entry->d_name, std::strlen(entry->d_name));
    record->entry_type = entry->d_type;
    name_pending_ = true;
    return true;
}

directory_entry_without_wc_support_context::directory_entry_without_wc_support_context(const ustring& directory)
    : directory_entry_context(directory, ustring())
{
    if (open_error != 0)
        throw_file_system_error(open_error, to_filesystem_bytes(directory_name), std::string());
}

bool directory_entry_without_wc_support_context::read_next() { return read_one(); }

namespace {

// Refuses a pattern before the directory is opened.
const ustring& checked_file_name(const pattern_string_context& pattern)
{
    if (pattern.file_name().empty() || pattern.pattern().empty())
        fl::detail::throw_exception(InvalidArgument("Empty file name or pattern string context", ustring(), {}));
    const ustring& name = pattern.file_name();
    if (u_strpbrk(name.c_str(), u"/") != nullptr)
        fl::detail::throw_exception(InvalidArgument("Found invalid character in the file name", ustring(), {}));
    return name;
}

}  // namespace

directory_entry_with_wc_support_context::directory_entry_with_wc_support_context(
    const ustring& directory, const pattern_string_context& pattern, bool ignore_pattern_errors)
    : directory_entry_context(directory, checked_file_name(pattern))
{
    if (open_error != 0)
        throw_file_system_error(open_error, failure_path(), std::string());
    // A refused pattern that the caller chose to ignore leaves a matcher that matches nothing.
    if (matcher.open(pattern.pattern(), mask) != fl::i18n::regex_success && !ignore_pattern_errors)
        fl::detail::throw_exception(InvalidArgument("Pattern matching object can not be created", ustring(), {}));
}

bool directory_entry_with_wc_support_context::read_next()
{
    while (read_one()) {
        fl::i18n::regex_status status = fl::i18n::regex_success;
        if (matcher.matches(last_name(), status))
            return true;
    }
    return false;
}

}  // namespace fl::filesystem::detail

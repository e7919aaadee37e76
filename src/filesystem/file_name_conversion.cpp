// File names through the calling thread's converter: boost paths to ustring, upath's append,
// the exported access-form forwarders and the modification time setter.
#include "filesystem_internal.hpp"

#include "locale/locale_context.hpp"

#include <fl/filesystem/file_name_conversion.hpp>
#include <fl/filesystem/foundation/access_form.hpp>
#include <fl/filesystem/foundation/pathname.hpp>

#include <chrono>
#include <filesystem>

namespace fl::filesystem {

namespace detail {

// The thread's own clone: ICU converters are not thread-safe, and this needs no lock beyond
// the read of the current locale record.
std::string to_filesystem_bytes(const char16_t* name, unsigned long length)
{
    return convert_file_name<char>(fl::i18n::detail::thread_current_converter(), name, length);
}

ustring from_filesystem_bytes(const char* bytes, unsigned long length)
{
    return convert_file_name<char16_t>(fl::i18n::detail::thread_current_converter(), bytes, length);
}

std::string make_native_access_form_i18n(const ustring& path) { return make_native_access_form(path); }

std::string make_native_access_form_with_cleanup_i18n(const ustring& path)
{
    return make_native_access_form_with_cleanup(path);
}

}  // namespace detail

template <>
QXI18N_API upath& upath::append(const char16_t* text)
{
    if (text != nullptr && *text != u'\0')
        path_ = detail::concatenate_pathname(path_, ustring(text), native_append_);
    return *this;
}

ustring to_ustring(const boost::filesystem::path& path)
{
    return detail::from_filesystem_bytes(path.native());
}

ustring to_generic_ustring(const boost::filesystem::path& path)
{
    return detail::from_filesystem_bytes(path.generic_path().native());
}

ustring to_generic_ustring(const boost::filesystem::path& path, const fl::i18n::converter<char16_t, char>& converter)
{
    const std::string generic = path.generic_path().native();
    if (generic.empty())
        return ustring();
    return converter.convert(generic.data(), generic.size());
}

void set_last_write_time(const std::string& native_path, const boost::posix_time::ptime& time)
{
    using std::chrono::nanoseconds;
    const boost::posix_time::ptime unix_epoch(boost::gregorian::date(1970, 1, 1));
    const nanoseconds since_unix_epoch((time - unix_epoch).total_microseconds() * 1000);
    // The file clock counts from 2174-01-01, 6437664000 seconds after the Unix epoch.
    const nanoseconds file_clock_offset(std::chrono::seconds(-6437664000LL));
    const std::filesystem::file_time_type file_time(
        std::chrono::duration_cast<std::filesystem::file_time_type::duration>(since_unix_epoch + file_clock_offset));
    try {
        std::filesystem::last_write_time(native_path, file_time);
    } catch (const std::filesystem::filesystem_error& e) {
        throw_file_system_error(e.code().value(), std::string(), native_path);
    }
}

}  // namespace fl::filesystem

// Paths in the form the system calls take: UTF-8 bytes, unchanged on this platform.
#include <fl/filesystem/foundation/access_form.hpp>
#include <fl/filesystem/foundation/filesystem_error.hpp>
#include <fl/filesystem/foundation/pathname.hpp>
#include <fl/filesystem/foundation/pathname_encoding.hpp>

#include "common/throw_exception.hpp"

#include <stdexcept>

namespace fl::filesystem::detail {

std::string make_access_form(const std::string& native_path) { return native_path; }

std::string make_native_access_form(const ustring& path)
{
    try {
        return make_access_form(pathname_traits<char16_t>::to_filesystem(path));
    } catch (const std::invalid_argument& e) {
        fl::detail::throw_exception(InvalidArgument(e.what(), path, {}));
    }
}

std::string make_native_access_form_with_cleanup(const ustring& path)
{
    return make_native_access_form(make_native_form(path, true));
}

}  // namespace fl::filesystem::detail

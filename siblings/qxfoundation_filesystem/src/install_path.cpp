// The installation root, found from the file of the loaded object that holds an address.
#include <fl/filesystem/foundation/install_path.hpp>
#include <fl/filesystem/foundation/pathname_encoding.hpp>

#include <dlfcn.h>
#include <link.h>

#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

namespace fl::filesystem {

namespace {

struct malloc_closer {
    void operator()(char* p) const noexcept { std::free(p); }
};
using malloc_ptr = std::unique_ptr<char, malloc_closer>;

// Any object of this library will do: its address says which file the library was loaded from.
const char library_anchor = 0;

// The absolute, link-free path of the object that holds `address`, or "" if there is none.
std::string object_path(const void* address)
{
    Dl_info info{};
    link_map* map = nullptr;
    if (dladdr1(address, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0)
        return {};
    // The main program's link map has no name, and dladdr then reports argv[0], which may be
    // relative to a directory we have left or a bare name looked up in PATH.
    const char* name = (map == nullptr || map->l_name == nullptr || map->l_name[0] == '\0')
                           ? "/proc/self/exe"
                           : map->l_name;
    const malloc_ptr resolved(::realpath(name, nullptr));
    return resolved ? std::string(resolved.get()) : std::string();
}

// "/a/b" -> "/a", "/a" -> "/", "/" -> "/"; `path` is absolute with no redundant separators.
std::string parent_directory(const std::string& path)
{
    const std::size_t last = path.rfind('/');
    if (last == std::string::npos || last == 0)
        return "/";
    return path.substr(0, last);
}

}  // namespace

namespace detail {

ustring get_base_path(void* address)
{
    if (address == nullptr)
        return {};
    const std::string object = object_path(address);
    if (object.empty())
        return {};
    try {
        return from_filesystem(parent_directory(parent_directory(object)));
    } catch (const std::invalid_argument&) {
        // A root whose bytes are not UTF-8 cannot be named by a ustring: report no root.
        return {};
    }
}

}  // namespace detail

ustring get_install_path()
{
    return detail::get_base_path(const_cast<char*>(&library_anchor));
}

}  // namespace fl::filesystem

// Prints the installation root of this program as get_base_path finds it. The filesystem test
// starts it with a bare argv[0] from another directory, as a shell finding it in PATH would.
#include <fl/filesystem/foundation/install_path.hpp>
#include <fl/filesystem/foundation/pathname_encoding.hpp>

#include <cstdio>

namespace {
const char object_in_program = 0;
}

int main()
{
    const auto root = fl::filesystem::detail::get_base_path(const_cast<char*>(&object_in_program));
    std::fputs(fl::filesystem::pathname_traits<char16_t>::to_filesystem(root).c_str(), stdout);
    return root.empty() ? 1 : 0;
}

// The libc calls of the file-system layer, replaceable by tests.
#include "filesystem_internal.hpp"

#include <unistd.h>

namespace fl::filesystem::detail {

system_calls& libc()
{
    static system_calls calls{&std::fopen, &std::freopen, &::access, &::opendir,
                              &::readdir, &::closedir, &::stat, &::lstat};
    return calls;
}

}  // namespace fl::filesystem::detail

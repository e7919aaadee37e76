// Where the product is installed, found from the location of a loaded object.
#pragma once

#include <fl/filesystem/foundation/config.hpp>

namespace fl::filesystem {

namespace detail {

/// The installation root of the shared object or executable that contains `address`: the
/// parent of the directory holding that object, with symbolic links resolved, e.g.
/// "<prefix>/lib/libqxi18n.so" gives "<prefix>". Empty when `address` is null, lies in no
/// loaded object, or the object's path cannot be resolved or is not valid UTF-8. No trailing
/// separator except for the root "/". Never throws except std::bad_alloc.
QXFOUNDATION_FILESYSTEM_API ustring get_base_path(void* address);

}  // namespace detail

/// The installation root of the product: get_base_path of this library, so "<prefix>" for
/// "<prefix>/lib/libqxfoundation_filesystem.so". In a build tree laid out like the install
/// tree it is the build directory. Empty if it cannot be found.
QXFOUNDATION_FILESYSTEM_API ustring get_install_path();

}  // namespace fl::filesystem

// Umbrella header: every exported header of fl::filesystem.
#pragma once

#include <fl/filesystem/directory_iterator.hpp>
#include <fl/filesystem/file_name_conversion.hpp>
#include <fl/filesystem/file_open.hpp>
#include <fl/filesystem/filesystem_error.hpp>
#include <fl/filesystem/foundation/access_form.hpp>
#include <fl/filesystem/foundation/config.hpp>
#include <fl/filesystem/foundation/file_status.hpp>
#include <fl/filesystem/foundation/filesystem_error.hpp>
#include <fl/filesystem/foundation/fstream.hpp>
#include <fl/filesystem/foundation/install_path.hpp>
#include <fl/filesystem/foundation/pathname.hpp>
#include <fl/filesystem/foundation/pathname_encoding.hpp>
#include <fl/filesystem/foundation/upath.hpp>
#include <fl/filesystem/path_rules.hpp>
#include <fl/filesystem/recursive_directory_iterator.hpp>

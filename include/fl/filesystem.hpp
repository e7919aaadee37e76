// Umbrella header: every exported header of fl::filesystem.
#pragma once

#include <fl/filesystem/foundation/config.hpp>
#include <fl/filesystem/foundation/fstream.hpp>
#include <fl/filesystem/foundation/install_path.hpp>
#include <fl/filesystem/foundation/pathname.hpp>
#include <fl/filesystem/foundation/pathname_encoding.hpp>

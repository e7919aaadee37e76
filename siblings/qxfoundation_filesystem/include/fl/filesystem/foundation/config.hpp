// The export macro and the text type of libqxfoundation_filesystem.
#pragma once

#include <string>

// The library is built with hidden visibility; only declarations marked with this macro are
// part of its binary interface.
#define QXFOUNDATION_FILESYSTEM_API __attribute__((visibility("default")))

namespace fl::filesystem {

/// UTF-16 text, the same type as libqxi18n's `ustring`. Not validated: lone surrogates may occur.
using ustring = std::basic_string<char16_t>;

}  // namespace fl::filesystem

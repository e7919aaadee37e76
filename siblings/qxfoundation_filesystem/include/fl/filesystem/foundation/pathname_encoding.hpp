// Conversion between a UTF-16 path name and the bytes the file system stores (UTF-8).
#pragma once

#include <fl/filesystem/foundation/config.hpp>

#include <string>

namespace fl::filesystem {

namespace detail {

/// Decodes the bytes of a file name as strict UTF-8 into UTF-16. Overlong forms, encoded
/// surrogates, values above U+10FFFF, stray continuation bytes and truncated sequences are
/// refused: throws std::invalid_argument whose what() names the byte offset of the sequence
/// that failed. Safe on untrusted input; the empty string gives the empty string.
QXFOUNDATION_FILESYSTEM_API ustring from_filesystem(const std::string& bytes);

}  // namespace detail

/// Name conversion of one unit type of a path.
template <class Char>
struct pathname_traits;

template <>
struct pathname_traits<char16_t> {
    /// Encodes a UTF-16 name as UTF-8 bytes. A lone surrogate throws std::invalid_argument whose
    /// what() names its offset in UTF-16 units. The empty string gives the empty string.
    QXFOUNDATION_FILESYSTEM_API static std::string to_filesystem(const ustring& name);
};

}  // namespace fl::filesystem

// File streams opened on a native path name, the bytes the file system stores.
#pragma once

#include <fstream>
#include <ios>
#include <string>

namespace fl::filesystem {

/// An input file stream on a native (UTF-8) path, with the standard stream state bits: a failed
/// open leaves is_open() false and sets failbit, a read error sets badbit. std::ios_base::in is
/// always part of the mode; add std::ios_base::binary to read bytes unchanged.
template <class Char, class Traits = std::char_traits<Char>>
class basic_ifstream : public std::basic_ifstream<Char, Traits> {
    using base = std::basic_ifstream<Char, Traits>;

public:
    basic_ifstream() = default;
    explicit basic_ifstream(const char* native_path, std::ios_base::openmode mode = std::ios_base::in)
        : base(native_path, mode | std::ios_base::in)
    {
    }
    explicit basic_ifstream(const std::string& native_path, std::ios_base::openmode mode = std::ios_base::in)
        : base(native_path, mode | std::ios_base::in)
    {
    }

    void open(const char* native_path, std::ios_base::openmode mode = std::ios_base::in)
    {
        base::open(native_path, mode | std::ios_base::in);
    }
    void open(const std::string& native_path, std::ios_base::openmode mode = std::ios_base::in)
    {
        base::open(native_path, mode | std::ios_base::in);
    }
};

using ifstream = basic_ifstream<char>;

}  // namespace fl::filesystem

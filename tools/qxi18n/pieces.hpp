// Raw input of any encoding in fixed blocks, and the guess of its encoding from the first block.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace qxi18n_tool {

/// Reads one input in blocks of a fixed size, cut wherever the size falls: the streaming
/// converters carry a character split between two blocks. Memory stays one block (or the
/// bytes peeked at, if more) however large the input is.
class block_reader {
public:
    /// `name` is used in error messages only; `in` stays open and owned by the caller.
    block_reader(std::FILE* in, std::string name, std::size_t block_size);

    /// The first bytes of the input, up to `n`, read ahead; next() hands them out again.
    /// Call it before the first next(). Throws read_error.
    std::string_view peek(std::size_t n);
    /// True once a read has met the end of the input.
    bool at_end() const { return eof_; }
    /// The next block; empty once the input has ended. The view lives until the next call.
    /// Throws read_error.
    std::string_view next();

private:
    std::size_t fill(std::size_t offset, std::size_t wanted);

    std::FILE* in_;
    std::string name_;
    std::size_t block_size_;
    std::size_t capacity_;
    std::unique_ptr<char[]> buffer_;
    std::size_t peeked_ = 0;  // bytes read by peek and not yet handed out
    bool eof_ = false;
};

/// How many bytes the encoding of an input is guessed from.
inline constexpr std::size_t detection_bytes = 64 * 1024;

/// The encoding of an input that starts with `head`, guessed by the library's detection
/// (fl::i18n::detect_charset). If the input goes on after `head`, a UTF-8 sequence cut at its
/// end is left out, so that a valid UTF-8 text is not taken for something else. A UTF-16 or
/// UTF-32 text that opens with its byte order mark gets the name that reads and drops the mark.
/// `name` names the input in the diagnostics that QX_CHARSET_DETECT_DIAG asks for.
std::string detect_encoding(std::string_view head, bool more_follows, const std::string& name);

}  // namespace qxi18n_tool

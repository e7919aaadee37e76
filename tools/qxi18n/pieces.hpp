// Cutting raw input of any encoding into bounded pieces that end at line ends.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

namespace qxi18n_tool {

/// Line ends in the bytes of one encoding: its encoded "\n", matched only at offsets that are
/// multiples of `align`, so that the bytes of a UTF-16 or UTF-32 unit are never taken apart.
/// A default-constructed object knows no line end, and nothing is ever cut with it.
class line_ends {
public:
    line_ends() = default;
    /// `pattern` must not be empty and its length must be a multiple of `align`.
    line_ends(std::string pattern, std::size_t align);

    bool known() const { return !pattern_.empty(); }
    /// Offset just past the last line end that starts in [from, size), or 0 if there is none.
    /// `from` must be aligned; it is moved to where the next scan of a longer buffer resumes.
    std::size_t last_end(const char* data, std::size_t size, std::size_t& from) const;
    /// Offsets just past each line end, in order.
    std::vector<std::size_t> ends(const char* data, std::size_t size) const;
    /// Number of line ends.
    std::size_t count(const char* data, std::size_t size) const;

private:
    std::string pattern_;
    std::size_t align_ = 1;
};

/// Reads one input in pieces: each a few whole lines up to about `piece_size` bytes, so memory
/// stays small however large the input is. A line longer than a piece is kept whole.
class piece_reader {
public:
    /// `name` is used in error messages only; `in` stays open and owned by the caller.
    piece_reader(std::FILE* in, std::string name, std::size_t piece_size);

    /// Reads until at least `n` bytes are buffered or the input ends; returns the buffer.
    const std::string& peek(std::size_t n);
    /// Forgets the first `n` buffered bytes (a byte order mark).
    void drop(std::size_t n);
    /// The next piece: everything up to the last line end read so far, or the rest of the input
    /// once it has ended. With no known line ends the whole input is one piece. False when the
    /// input is exhausted. Throws io_error if reading fails.
    bool next(std::string& piece, const line_ends& ends);

private:
    void read_chunk();

    std::FILE* in_;
    std::string name_;
    std::size_t piece_size_;
    std::string buffer_;
    std::size_t scanned_ = 0;
    bool eof_ = false;
};

}  // namespace qxi18n_tool

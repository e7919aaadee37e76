// Line ends in raw bytes, and a reader that hands out input in pieces ending at them.
#include "pieces.hpp"

#include "cli.hpp"

#include <cerrno>
#include <cstring>
#include <string_view>

namespace qxi18n_tool {

line_ends::line_ends(std::string pattern, std::size_t align)
    : pattern_(std::move(pattern)), align_(align == 0 ? 1 : align)
{
}

std::size_t line_ends::last_end(const char* data, std::size_t size, std::size_t& from) const
{
    if (!known() || from >= size)
        return 0;
    if (pattern_.size() == 1 && align_ == 1) {
        const std::size_t start = from;
        const std::size_t hit = std::string_view(data + start, size - start).rfind(pattern_[0]);
        from = size;
        return hit == std::string_view::npos ? 0 : start + hit + 1;
    }
    std::size_t found = 0;
    std::size_t p = from;
    while (p + pattern_.size() <= size) {
        if (std::memcmp(data + p, pattern_.data(), pattern_.size()) == 0) {
            found = p + pattern_.size();
            p = found;
        } else {
            p += align_;
        }
    }
    from = p;
    return found;
}

std::vector<std::size_t> line_ends::ends(const char* data, std::size_t size) const
{
    std::vector<std::size_t> result;
    if (!known())
        return result;
    std::size_t p = 0;
    while (p + pattern_.size() <= size) {
        if (std::memcmp(data + p, pattern_.data(), pattern_.size()) == 0) {
            p += pattern_.size();
            result.push_back(p);
        } else {
            p += align_;
        }
    }
    return result;
}

std::size_t line_ends::count(const char* data, std::size_t size) const
{
    if (pattern_.size() == 1 && align_ == 1) {
        std::size_t n = 0;
        for (const char* p = data; (p = static_cast<const char*>(std::memchr(p, pattern_[0],
                                        static_cast<std::size_t>(data + size - p)))) != nullptr;
             ++p)
            ++n;
        return n;
    }
    return ends(data, size).size();
}

piece_reader::piece_reader(std::FILE* in, std::string name, std::size_t piece_size)
    : in_(in), name_(std::move(name)), piece_size_(piece_size == 0 ? 1 : piece_size)
{
}

void piece_reader::read_chunk()
{
    const std::size_t old_size = buffer_.size();
    buffer_.resize(old_size + piece_size_);
    const std::size_t got = std::fread(&buffer_[old_size], 1, piece_size_, in_);
    buffer_.resize(old_size + got);
    if (got < piece_size_) {
        if (std::ferror(in_))
            throw read_error(name_ + ": " + std::strerror(errno));
        eof_ = true;
    }
}

const std::string& piece_reader::peek(std::size_t n)
{
    while (!eof_ && buffer_.size() < n)
        read_chunk();
    return buffer_;
}

void piece_reader::drop(std::size_t n)
{
    buffer_.erase(0, n);
    scanned_ = 0;
}

bool piece_reader::next(std::string& piece, const line_ends& ends)
{
    piece.clear();
    for (;;) {
        if (!eof_)
            read_chunk();
        const std::size_t cut = ends.last_end(buffer_.data(), buffer_.size(), scanned_);
        if (cut != 0) {
            piece.assign(buffer_, 0, cut);
            buffer_.erase(0, cut);
            // The rest holds no line end; the scan of the next piece starts where this one stopped.
            scanned_ -= cut;
            return true;
        }
        if (eof_) {
            if (buffer_.empty())
                return false;
            piece.swap(buffer_);
            buffer_.clear();
            scanned_ = 0;
            return true;
        }
    }
}

}  // namespace qxi18n_tool

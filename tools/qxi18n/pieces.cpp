// Reading input in fixed blocks, and guessing its encoding from the first of them.
#include "pieces.hpp"

#include "cli.hpp"
#include "detect.hpp"

#include <fl/i18n/charset_detection.hpp>
#include <fl/i18n/conversion.hpp>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <utility>

namespace qxi18n_tool {

block_reader::block_reader(std::FILE* in, std::string name, std::size_t block_size)
    : in_(in), name_(std::move(name)), block_size_(std::max<std::size_t>(block_size, 1)),
      capacity_(block_size_), buffer_(new char[capacity_])
{
}

// Reads until `wanted` bytes stand at `offset` or the input ends; returns the bytes read.
std::size_t block_reader::fill(std::size_t offset, std::size_t wanted)
{
    std::size_t got = 0;
    while (!eof_ && got < wanted) {
        const std::size_t n = std::fread(buffer_.get() + offset + got, 1, wanted - got, in_);
        got += n;
        if (n == 0) {
            if (std::ferror(in_))
                throw read_error(name_ + ": " + std::strerror(errno));
            eof_ = true;
        }
    }
    return got;
}

std::string_view block_reader::peek(std::size_t n)
{
    if (n > capacity_) {
        std::unique_ptr<char[]> larger(new char[n]);
        std::memcpy(larger.get(), buffer_.get(), peeked_);
        buffer_ = std::move(larger);
        capacity_ = n;
    }
    if (peeked_ < n)
        peeked_ += fill(peeked_, n - peeked_);
    return {buffer_.get(), peeked_};
}

std::string_view block_reader::next()
{
    if (peeked_ != 0) {
        const std::size_t size = std::exchange(peeked_, 0);
        return {buffer_.get(), size};
    }
    return {buffer_.get(), fill(0, block_size_)};
}

namespace {

bool starts_with(std::string_view bytes, std::string_view mark)
{
    return bytes.substr(0, mark.size()) == mark;
}

}  // namespace

std::string detect_encoding(std::string_view head, bool more_follows, const std::string& name)
{
    const std::size_t length = more_follows ? cut_at_utf8_boundary(head.data(), head.size()) : head.size();
    std::string encoding =
        fl::i18n::detect_charset(head.data(), length, std::cerr, fl::i18n::utf8_to_ustring(name));
    // The explicit-order names would read a byte order mark as U+FEFF.
    using namespace std::string_view_literals;
    if ((encoding == "UTF-16LE" && starts_with(head, "\xFF\xFE"sv))
        || (encoding == "UTF-16BE" && starts_with(head, "\xFE\xFF"sv)))
        return "UTF-16";
    if ((encoding == "UTF-32LE" && starts_with(head, "\xFF\xFE\0\0"sv))
        || (encoding == "UTF-32BE" && starts_with(head, "\0\0\xFE\xFF"sv)))
        return "UTF-32";
    return encoding;
}

}  // namespace qxi18n_tool

// Strict UTF-8 <-> UTF-16 for file names: a name that does not round-trip is refused, never
// silently repaired, because a repaired name would open a different file.
#include <fl/filesystem/foundation/pathname_encoding.hpp>

#include <stdexcept>

namespace fl::filesystem {

namespace {

[[noreturn]] void throw_bad_byte(std::size_t offset)
{
    throw std::invalid_argument("invalid UTF-8 sequence in a file name at byte offset " +
                                std::to_string(offset));
}

[[noreturn]] void throw_lone_surrogate(std::size_t offset)
{
    throw std::invalid_argument("unpaired surrogate in a file name at UTF-16 offset " +
                                std::to_string(offset));
}

bool is_high_surrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool is_low_surrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

void append_utf16(ustring& out, char32_t code_point)
{
    if (code_point < 0x10000) {
        out += static_cast<char16_t>(code_point);
        return;
    }
    code_point -= 0x10000;
    out += static_cast<char16_t>(0xD800 + (code_point >> 10));
    out += static_cast<char16_t>(0xDC00 + (code_point & 0x3FF));
}

}  // namespace

namespace detail {

ustring from_filesystem(const std::string& bytes)
{
    ustring out;
    out.reserve(bytes.size());
    const std::size_t size = bytes.size();
    std::size_t i = 0;
    while (i < size) {
        const auto lead = static_cast<unsigned char>(bytes[i]);
        if (lead < 0x80) {
            out += static_cast<char16_t>(lead);
            ++i;
            continue;
        }
        std::size_t length = 0;
        char32_t code_point = 0;
        char32_t smallest = 0;
        if ((lead & 0xE0) == 0xC0) {
            length = 2, code_point = lead & 0x1F, smallest = 0x80;
        } else if ((lead & 0xF0) == 0xE0) {
            length = 3, code_point = lead & 0x0F, smallest = 0x800;
        } else if ((lead & 0xF8) == 0xF0) {
            length = 4, code_point = lead & 0x07, smallest = 0x10000;
        } else {
            throw_bad_byte(i);
        }
        if (size - i < length)
            throw_bad_byte(i);
        for (std::size_t k = 1; k < length; ++k) {
            const auto trail = static_cast<unsigned char>(bytes[i + k]);
            if ((trail & 0xC0) != 0x80)
                throw_bad_byte(i);
            code_point = (code_point << 6) | (trail & 0x3F);
        }
        // Overlong forms and encoded surrogates would let two byte strings name one file.
        if (code_point < smallest || code_point > 0x10FFFF ||
            (code_point >= 0xD800 && code_point <= 0xDFFF))
            throw_bad_byte(i);
        append_utf16(out, code_point);
        i += length;
    }
    return out;
}

}  // namespace detail

std::string pathname_traits<char16_t>::to_filesystem(const ustring& name)
{
    std::string out;
    out.reserve(name.size() * 3);
    for (std::size_t i = 0; i < name.size(); ++i) {
        char32_t code_point = name[i];
        if (is_high_surrogate(name[i])) {
            if (i + 1 == name.size() || !is_low_surrogate(name[i + 1]))
                throw_lone_surrogate(i);
            code_point = 0x10000 + ((code_point - 0xD800) << 10) + (name[i + 1] - 0xDC00);
            ++i;
        } else if (is_low_surrogate(name[i])) {
            throw_lone_surrogate(i);
        }
        if (code_point < 0x80) {
            out += static_cast<char>(code_point);
        } else if (code_point < 0x800) {
            out += static_cast<char>(0xC0 | (code_point >> 6));
            out += static_cast<char>(0x80 | (code_point & 0x3F));
        } else if (code_point < 0x10000) {
            out += static_cast<char>(0xE0 | (code_point >> 12));
            out += static_cast<char>(0x80 | ((code_point >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (code_point & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (code_point >> 18));
            out += static_cast<char>(0x80 | ((code_point >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((code_point >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (code_point & 0x3F));
        }
    }
    return out;
}

}  // namespace fl::filesystem

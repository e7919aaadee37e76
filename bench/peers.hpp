// The libraries qxi18n is measured against, each called the way a careful user calls it.
#pragma once

#include <fl/i18n/ustring.hpp>

#include <unicode/ucnv.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace qxbench::peer {

/// Raw ICU for UTF-8: a preflight call for the size, then a conversion into a string of
/// exactly that size. Malformed input becomes U+FFFD, as in the library. Throws std::runtime_error.
ustring icu_utf8_to_utf16(const std::string& source);
std::string icu_utf16_to_utf8(const ustring& source);

/// Raw ICU for a code page: one open UConverter reused across calls, preflight then convert.
class icu_codepage {
public:
    /// Throws std::runtime_error if ICU cannot open `encoding`.
    explicit icu_codepage(const char* encoding);

    ustring to_utf16(const std::string& source) const;
    std::string from_utf16(const ustring& source) const;

private:
    struct closer {
        void operator()(UConverter* c) const noexcept { ucnv_close(c); }
    };
    std::unique_ptr<UConverter, closer> converter_;
};

/// glibc iconv: one descriptor opened for the life of the object and an output buffer sized
/// for the worst case of the largest input seen, kept between calls; each result is copied into
/// a new string, since that is what the library returns.
class iconv_codec {
public:
    /// Opens `from` -> `to`; `worst_growth` is the most output bytes one input byte can produce.
    /// Throws std::runtime_error if glibc has no such conversion.
    iconv_codec(const char* to, const char* from, std::size_t worst_growth);

    /// Host-order UTF-16 as glibc spells it.
    static const char* utf16_name();

    ustring to_utf16(const std::string& source);
    std::string from_utf16(const ustring& source);

private:
    // Converts and returns the number of bytes written to out_.
    std::size_t run(const char* source, std::size_t source_bytes);

    struct closer {
        void operator()(void* cd) const noexcept;
    };
    std::unique_ptr<void, closer> cd_;
    std::size_t worst_growth_;
    std::vector<char16_t> out_;  // bytes, held as char16_t so UTF-16 output is read as written
};

/// utf8cpp's checked conversions, appending through back_inserter to a string reserved for the
/// worst case. Throws utf8::exception on malformed input.
ustring utf8cpp_utf8_to_utf16(const std::string& source);
std::string utf8cpp_utf16_to_utf8(const ustring& source);

}  // namespace qxbench::peer

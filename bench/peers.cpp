// Peer conversions for the benchmark: raw ICU, glibc iconv and utf8cpp.
#include "peers.hpp"

#include <unicode/ustring.h>
#include <unicode/utypes.h>

#include <iconv.h>
#include <utf8.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <stdexcept>

namespace qxbench::peer {
namespace {

void check(UErrorCode status, const char* what)
{
    if (U_FAILURE(status))
        throw std::runtime_error(std::string(what) + ": " + u_errorName(status));
}

// A preflight reports the needed size as an overflow; anything else is a real failure.
void check_preflight(UErrorCode& status, const char* what)
{
    if (status == U_BUFFER_OVERFLOW_ERROR || status == U_STRING_NOT_TERMINATED_WARNING)
        status = U_ZERO_ERROR;
    check(status, what);
}

int32_t length_of(std::size_t n)
{
    return static_cast<int32_t>(n);
}

}  // namespace

ustring icu_utf8_to_utf16(const std::string& source)
{
    UErrorCode status = U_ZERO_ERROR;
    int32_t needed = 0;
    u_strFromUTF8WithSub(nullptr, 0, &needed, source.data(), length_of(source.size()), 0xFFFD,
                         nullptr, &status);
    check_preflight(status, "u_strFromUTF8WithSub");
    ustring result(static_cast<std::size_t>(needed), u'\0');
    u_strFromUTF8WithSub(result.data(), needed, &needed, source.data(), length_of(source.size()),
                         0xFFFD, nullptr, &status);
    check(status, "u_strFromUTF8WithSub");
    return result;
}

std::string icu_utf16_to_utf8(const ustring& source)
{
    UErrorCode status = U_ZERO_ERROR;
    int32_t needed = 0;
    u_strToUTF8WithSub(nullptr, 0, &needed, source.data(), length_of(source.size()), 0xFFFD,
                       nullptr, &status);
    check_preflight(status, "u_strToUTF8WithSub");
    std::string result(static_cast<std::size_t>(needed), '\0');
    u_strToUTF8WithSub(result.data(), needed, &needed, source.data(), length_of(source.size()),
                       0xFFFD, nullptr, &status);
    check(status, "u_strToUTF8WithSub");
    return result;
}

icu_codepage::icu_codepage(const char* encoding)
{
    UErrorCode status = U_ZERO_ERROR;
    converter_.reset(ucnv_open(encoding, &status));
    check(status, encoding);
}

ustring icu_codepage::to_utf16(const std::string& source) const
{
    UErrorCode status = U_ZERO_ERROR;
    const int32_t needed = ucnv_toUChars(converter_.get(), nullptr, 0, source.data(),
                                         length_of(source.size()), &status);
    check_preflight(status, "ucnv_toUChars");
    ustring result(static_cast<std::size_t>(needed), u'\0');
    ucnv_toUChars(converter_.get(), result.data(), needed, source.data(), length_of(source.size()),
                  &status);
    check_preflight(status, "ucnv_toUChars");
    return result;
}

std::string icu_codepage::from_utf16(const ustring& source) const
{
    UErrorCode status = U_ZERO_ERROR;
    const int32_t needed = ucnv_fromUChars(converter_.get(), nullptr, 0, source.data(),
                                           length_of(source.size()), &status);
    check_preflight(status, "ucnv_fromUChars");
    std::string result(static_cast<std::size_t>(needed), '\0');
    ucnv_fromUChars(converter_.get(), result.data(), needed, source.data(),
                    length_of(source.size()), &status);
    check_preflight(status, "ucnv_fromUChars");
    return result;
}

void iconv_codec::closer::operator()(void* cd) const noexcept
{
    iconv_close(static_cast<iconv_t>(cd));
}

iconv_codec::iconv_codec(const char* to, const char* from, std::size_t worst_growth)
    : worst_growth_(worst_growth)
{
    iconv_t cd = iconv_open(to, from);
    if (cd == reinterpret_cast<iconv_t>(-1))
        throw std::runtime_error(std::string("iconv_open ") + from + " -> " + to + ": " +
                                 std::strerror(errno));
    cd_.reset(cd);
}

const char* iconv_codec::utf16_name()
{
    return __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? "UTF-16LE" : "UTF-16BE";
}

std::size_t iconv_codec::run(const char* source, std::size_t source_bytes)
{
    const std::size_t capacity = source_bytes * worst_growth_;
    if (out_.size() * 2 < capacity)
        out_.resize((capacity + 1) / 2);
    // Back to the initial shift state, as a fresh conversion of a whole text needs.
    iconv(cd_.get(), nullptr, nullptr, nullptr, nullptr);
    char* in = const_cast<char*>(source);  // glibc's prototype is not const-correct
    std::size_t in_left = source_bytes;
    char* out = reinterpret_cast<char*>(out_.data());
    std::size_t out_left = out_.size() * 2;
    if (iconv(cd_.get(), &in, &in_left, &out, &out_left) == static_cast<std::size_t>(-1))
        throw std::runtime_error(std::string("iconv: ") + std::strerror(errno));
    return out_.size() * 2 - out_left;
}

ustring iconv_codec::to_utf16(const std::string& source)
{
    const std::size_t written = run(source.data(), source.size());
    return ustring(out_.data(), written / 2);
}

std::string iconv_codec::from_utf16(const ustring& source)
{
    const std::size_t written = run(reinterpret_cast<const char*>(source.data()), source.size() * 2);
    return std::string(reinterpret_cast<const char*>(out_.data()), written);
}

ustring utf8cpp_utf8_to_utf16(const std::string& source)
{
    ustring result;
    result.reserve(source.size());
    utf8::utf8to16(source.begin(), source.end(), std::back_inserter(result));
    return result;
}

std::string utf8cpp_utf16_to_utf8(const ustring& source)
{
    std::string result;
    result.reserve(source.size() * 3);
    utf8::utf16to8(source.begin(), source.end(), std::back_inserter(result));
    return result;
}

}  // namespace qxbench::peer

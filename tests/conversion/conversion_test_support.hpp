// Helpers shared by the conversion tests: raw-ICU reference conversions, seeded random text,
// readable comparison of long strings, and a read-only region of zero pages.
#pragma once

#include <fl/i18n/ustring.hpp>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

namespace qx_test {

struct ucnv_closer {
    void operator()(UConverter* c) const noexcept { ucnv_close(c); }
};
using icu_converter = std::unique_ptr<UConverter, ucnv_closer>;

inline icu_converter open_icu(const char* encoding)
{
    UErrorCode ec = U_ZERO_ERROR;
    icu_converter cnv(ucnv_open(encoding, &ec));
    if (U_FAILURE(ec)) {
        ADD_FAILURE() << "ICU cannot open " << encoding << ": " << u_errorName(ec);
        cnv.reset();
    }
    return cnv;
}

// ICU's preflight-then-fill protocol; `op(dest, capacity, ec)` returns the length needed.
template <class Char, class Op>
std::basic_string<Char> icu_preflighted(Op op)
{
    UErrorCode ec = U_ZERO_ERROR;
    const int32_t need = op(nullptr, 0, ec);
    if (ec != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(ec)) {
        ADD_FAILURE() << "ICU preflight failed: " << u_errorName(ec);
        return {};
    }
    std::basic_string<Char> out(static_cast<std::size_t>(need), Char());
    ec = U_ZERO_ERROR;
    op(out.data(), need, ec);
    if (U_FAILURE(ec)) ADD_FAILURE() << "ICU conversion failed: " << u_errorName(ec);
    return out;
}

inline ustring icu_utf8_to_utf16(const std::string& s)
{
    return icu_preflighted<char16_t>([&](char16_t* d, int32_t cap, UErrorCode& ec) {
        int32_t n = 0;
        u_strFromUTF8WithSub(d, cap, &n, s.data(), static_cast<int32_t>(s.size()), 0xFFFD, nullptr, &ec);
        return n;
    });
}

inline std::string icu_utf16_to_utf8(const ustring& s)
{
    return icu_preflighted<char>([&](char* d, int32_t cap, UErrorCode& ec) {
        int32_t n = 0;
        u_strToUTF8WithSub(d, cap, &n, s.data(), static_cast<int32_t>(s.size()), 0xFFFD, nullptr, &ec);
        return n;
    });
}

inline std::string icu_java_utf8(const ustring& s)
{
    return icu_preflighted<char>([&](char* d, int32_t cap, UErrorCode& ec) {
        int32_t n = 0;
        u_strToJavaModifiedUTF8(d, cap, &n, s.data(), static_cast<int32_t>(s.size()), &ec);
        return n;
    });
}

// A fresh ICU converter with its default call-backs: the reference for the ICU-backed classes.
inline ustring icu_to_uchars(const char* encoding, const std::string& s)
{
    icu_converter cnv = open_icu(encoding);
    if (!cnv) return {};
    return icu_preflighted<char16_t>([&](char16_t* d, int32_t cap, UErrorCode& ec) {
        return ucnv_toUChars(cnv.get(), d, cap, s.data(), static_cast<int32_t>(s.size()), &ec);
    });
}

inline std::string icu_from_uchars(const char* encoding, const ustring& s)
{
    icu_converter cnv = open_icu(encoding);
    if (!cnv) return {};
    return icu_preflighted<char>([&](char* d, int32_t cap, UErrorCode& ec) {
        return ucnv_fromUChars(cnv.get(), d, cap, s.data(), static_cast<int32_t>(s.size()), &ec);
    });
}

// UTF-16 drawn from blocks that legacy encodings cover partly: ASCII, Latin-1, Cyrillic, kana,
// CJK, default-ignorables, emoji and CJK extension B (pairs), and lone surrogates.
inline ustring random_utf16(std::mt19937& rng, std::size_t length, bool lone_surrogates = true)
{
    static const char32_t ranges[][2] = {
        {0x20, 0x7E},       {0x00, 0x1F},       {0xA0, 0xFF},        {0x400, 0x45F},
        {0x3040, 0x30FF},   {0x4E00, 0x9FFF},   {0x2000, 0x206F},    {0xFF01, 0xFF9F},
        {0x1F600, 0x1F64F}, {0x20000, 0x2A6DF}, {0xD800, 0xDFFF},
    };
    const std::size_t pools = lone_surrogates ? std::size(ranges) : std::size(ranges) - 1;
    std::uniform_int_distribution<std::size_t> pick(0, pools - 1);
    ustring out;
    while (out.size() < length) {
        const auto& r = ranges[pick(rng)];
        const char32_t c = std::uniform_int_distribution<std::uint32_t>(r[0], r[1])(rng);
        if (c > 0xFFFF && out.size() + 2 <= length) {
            out.push_back(static_cast<char16_t>((c >> 10) + 0xD7C0));
            out.push_back(static_cast<char16_t>((c & 0x3FF) | 0xDC00));
        } else if (c <= 0xFFFF) {
            out.push_back(static_cast<char16_t>(c));
        }
    }
    return out;
}

// Mostly valid UTF-8 interleaved with every kind of malformed sequence; cut at `length`, which
// may end the text inside a sequence.
inline std::string random_utf8_soup(std::mt19937& rng, std::size_t length)
{
    static const char* const broken[] = {
        "\xFF", "\xFE", "\x80", "\xBF", "\xC0\x80", "\xC1\xBF", "\xE0\x80\x80", "\xED\xA0\x80",
        "\xED\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xE3\x81", "\xF0\x9F\x98", "\xC3",
    };
    std::uniform_int_distribution<int> kind(0, 3);
    std::string out;
    while (out.size() < length) {
        switch (kind(rng)) {
        case 0: out += broken[std::uniform_int_distribution<std::size_t>(0, std::size(broken) - 1)(rng)]; break;
        case 1: out.push_back(static_cast<char>(std::uniform_int_distribution<int>(0, 255)(rng))); break;
        default: out += icu_utf16_to_utf8(random_utf16(rng, 1, false)); break;
        }
    }
    out.resize(length);
    return out;
}

// Bytes in `encoding`: random text converted by ICU, then a few bytes overwritten at random so
// that malformed and unassigned sequences occur too.
inline std::string random_encoded(std::mt19937& rng, const char* encoding, std::size_t units)
{
    std::string bytes = icu_from_uchars(encoding, random_utf16(rng, units));
    std::uniform_int_distribution<int> byte(0, 255);
    for (std::size_t i = 0; i < bytes.size() / 64; ++i)
        bytes[std::uniform_int_distribution<std::size_t>(0, bytes.size() - 1)(rng)] = static_cast<char>(byte(rng));
    return bytes;
}

// Compares two texts and names the first differing unit instead of printing megabytes.
template <class Char>
::testing::AssertionResult same_text(const std::basic_string<Char>& actual, const std::basic_string<Char>& expected)
{
    if (actual == expected) return ::testing::AssertionSuccess();
    const std::size_t common = std::min(actual.size(), expected.size());
    const std::size_t at = static_cast<std::size_t>(
        std::mismatch(actual.begin(), actual.begin() + static_cast<std::ptrdiff_t>(common), expected.begin()).first -
        actual.begin());
    auto unit = [](const std::basic_string<Char>& s, std::size_t i) {
        return i < s.size() ? static_cast<unsigned long>(static_cast<std::make_unsigned_t<Char>>(s[i])) : ~0UL;
    };
    return ::testing::AssertionFailure() << "actual has " << actual.size() << " units, expected " << expected.size()
                                         << "; first difference at unit " << at << ": actual 0x" << std::hex
                                         << unit(actual, at) << ", expected 0x" << unit(expected, at);
}

template <class Char>
constexpr Char guard_unit()
{
    return static_cast<Char>(0xA5A5A5A5u);
}

// Checks the size query, the string form and the buffer form at capacity 0, one short, exact and
// roomy: the buffer form always returns the full size, never writes past its capacity and adds
// no terminator.
template <class Converter, class From, class To>
void expect_all_forms(const Converter& cvt, const std::basic_string<From>& source, const std::basic_string<To>& expected)
{
    const unsigned long n = source.size();
    const unsigned long need = expected.size();
    EXPECT_EQ(cvt.get_destination_size(source.data(), n), need);
    EXPECT_TRUE(same_text(cvt.convert(source.data(), n), expected));
    std::vector<unsigned long> capacities{0, need, need + 3};
    if (need > 1) capacities.push_back(need - 1);
    for (unsigned long cap : capacities) {
        SCOPED_TRACE("capacity " + std::to_string(cap));
        std::vector<To> buffer(cap + 4, guard_unit<To>());
        EXPECT_EQ(cvt.convert(buffer.data(), cap, source.data(), n), need);
        const auto written = std::find_if(buffer.begin() + static_cast<std::ptrdiff_t>(std::min(cap, need)),
                                          buffer.end(), [](To u) { return u != guard_unit<To>(); });
        EXPECT_TRUE(written == buffer.end())
            << "unit " << (written - buffer.begin()) << " of an output of " << need << " was written (0x" << std::hex
            << static_cast<unsigned long>(static_cast<std::make_unsigned_t<To>>(*written)) << ")";
        if (cap >= need) {
            EXPECT_TRUE(same_text(std::basic_string<To>(buffer.data(), need), expected));
        }
    }
}

// An anonymous private mapping that is never written: every page is the shared zero page, so
// gigabytes of zero input cost address space only.
class zero_region {
public:
    explicit zero_region(std::size_t bytes) : size_(bytes)
    {
        void* p = mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        data_ = p == MAP_FAILED ? nullptr : p;
    }
    ~zero_region()
    {
        if (data_) munmap(data_, size_);
    }
    zero_region(const zero_region&) = delete;
    zero_region& operator=(const zero_region&) = delete;

    template <class T>
    const T* as() const
    {
        return static_cast<const T*>(data_);
    }
    explicit operator bool() const { return data_ != nullptr; }

private:
    std::size_t size_;
    void* data_;
};

// Seeds of the random reference checks; a failure names its seed.
inline std::vector<std::uint32_t> test_seeds(std::uint32_t count)
{
    std::vector<std::uint32_t> seeds;
    for (std::uint32_t i = 0; i < count; ++i) seeds.push_back(0x9E3779B9u * (i + 1));
    return seeds;
}

}  // namespace qx_test

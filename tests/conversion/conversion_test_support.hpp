// Helpers shared by the conversion tests: raw-ICU reference conversions, seeded random text,
// readable comparison of long strings, guarded buffers, threads and a region of zero pages.
#pragma once

#include <fl/i18n/conversion_error.hpp>
#include <fl/i18n/ustring.hpp>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace qx_test {

struct ucnv_closer {
    void operator()(UConverter* c) const noexcept { ucnv_close(c); }
};
using icu_converter = std::unique_ptr<UConverter, ucnv_closer>;

inline icu_converter icu_open(const char* encoding)
{
    UErrorCode ec = U_ZERO_ERROR;
    return icu_converter(ucnv_open(encoding, &ec));
}

// ICU's preflight-then-fill protocol; `op(dest, capacity, &needed, &ec)` sets the length needed.
template <class Char, class Op>
std::basic_string<Char> icu_preflighted(Op op)
{
    UErrorCode ec = U_ZERO_ERROR;
    int32_t need = 0;
    op(nullptr, 0, &need, &ec);
    std::basic_string<Char> out(static_cast<std::size_t>(std::max(need, 0)), Char());
    ec = U_ZERO_ERROR;
    op(out.data(), need, &need, &ec);
    if (U_FAILURE(ec)) ADD_FAILURE() << "ICU conversion: " << u_errorName(ec);
    return out;
}

// Raw ICU, the obviously-correct path each conversion is compared with: the UTF functions with
// U+FFFD, or a fresh converter with ICU's default call-backs.
inline ustring icu_utf8_to_utf16(const std::string& s)
{
    return icu_preflighted<char16_t>([&](char16_t* d, int32_t cap, int32_t* n, UErrorCode* ec) {
        u_strFromUTF8WithSub(d, cap, n, s.data(), int32_t(s.size()), 0xFFFD, nullptr, ec); });
}

inline std::string icu_utf16_to_utf8(const ustring& s)
{
    return icu_preflighted<char>([&](char* d, int32_t cap, int32_t* n, UErrorCode* ec) {
        u_strToUTF8WithSub(d, cap, n, s.data(), int32_t(s.size()), 0xFFFD, nullptr, ec); });
}

inline std::u32string icu_utf16_to_utf32(const ustring& s)
{
    return icu_preflighted<char32_t>([&](char32_t* d, int32_t cap, int32_t* n, UErrorCode* ec) {
        u_strToUTF32WithSub(reinterpret_cast<UChar32*>(d), cap, n, s.data(), int32_t(s.size()), 0xFFFD, nullptr,
                            ec); });
}

inline std::string icu_java_utf8(const ustring& s)
{
    return icu_preflighted<char>([&](char* d, int32_t cap, int32_t* n, UErrorCode* ec) {
        u_strToJavaModifiedUTF8(d, cap, n, s.data(), int32_t(s.size()), ec); });
}

inline ustring icu_to_uchars(const char* encoding, const std::string& s)
{
    const icu_converter cnv = icu_open(encoding);
    return icu_preflighted<char16_t>([&](char16_t* d, int32_t cap, int32_t* n, UErrorCode* ec) {
        *n = ucnv_toUChars(cnv.get(), d, cap, s.data(), int32_t(s.size()), ec); });
}

inline std::string icu_from_uchars(const char* encoding, const ustring& s)
{
    const icu_converter cnv = icu_open(encoding);
    return icu_preflighted<char>([&](char* d, int32_t cap, int32_t* n, UErrorCode* ec) {
        *n = ucnv_fromUChars(cnv.get(), d, cap, s.data(), int32_t(s.size()), ec); });
}

// The UTF-16 arithmetic of code points, without validation.
inline ustring encode_code_points(const std::u32string& cps)
{
    ustring out;
    for (char32_t c : cps) {
        if (c > 0xFFFF) out.push_back(static_cast<char16_t>((c >> 10) + 0xD7C0));
        out.push_back(static_cast<char16_t>(c > 0xFFFF ? (c & 0x3FF) | 0xDC00 : c));
    }
    return out;
}

template <class Char>
std::basic_string<Char> rep(const Char* piece, std::size_t times)
{
    std::basic_string<Char> out;
    for (std::size_t i = 0; i < times; ++i) out += piece;
    return out;
}

template <class F>
std::optional<fl::i18n::codecvt_excp_id> thrown_id(F&& f)
{
    try {
        f();
    } catch (const fl::i18n::CvtExceptionBase& e) {
        return e.get_id();
    }
    return std::nullopt;
}

// Runs `work(t)` in `count` threads at once; each returns what went wrong in it, empty if nothing.
template <class Work>
void expect_in_threads(std::size_t count, Work work)
{
    std::vector<std::string> failures(count);
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < count; ++t) threads.emplace_back([&, t] { failures[t] = work(t); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(failures, std::vector<std::string>(count));
}

// Seeds of the random reference checks; every loop traces its seed.
inline std::vector<std::uint32_t> test_seeds(std::uint32_t count)
{
    std::vector<std::uint32_t> seeds;
    for (std::uint32_t i = 0; i < count; ++i) seeds.push_back(0x9E3779B9u * (i + 1));
    return seeds;
}

inline std::size_t random_size(std::mt19937& rng, std::size_t max)
{
    return std::uniform_int_distribution<std::size_t>(0, max)(rng);
}

// UTF-16 drawn from blocks that legacy encodings cover partly: ASCII, Latin-1, Cyrillic, kana,
// CJK, default-ignorables, emoji and CJK extension B (pairs), and lone surrogates.
inline ustring random_utf16(std::mt19937& rng, std::size_t length, bool lone_surrogates = true)
{
    static const char32_t ranges[][2] = {
        {0x20, 0x7E},     {0x00, 0x1F},     {0xA0, 0xFF},       {0x400, 0x45F},     {0x3040, 0x30FF}, {0x4E00, 0x9FFF},
        {0x2000, 0x206F}, {0xFF01, 0xFF9F}, {0x1F600, 0x1F64F}, {0x20000, 0x2A6DF}, {0xD800, 0xDFFF},
    };
    ustring out;
    while (out.size() < length) {
        const auto& r = ranges[random_size(rng, std::size(ranges) - (lone_surrogates ? 1 : 2))];
        const char32_t c = std::uniform_int_distribution<std::uint32_t>(r[0], r[1])(rng);
        if (c <= 0xFFFF || out.size() + 2 <= length) out += encode_code_points(std::u32string(1, c));
    }
    return out;
}

// Mostly valid UTF-8 interleaved with every kind of malformed sequence, cut at `length` (maybe
// inside a sequence).
inline std::string random_utf8_soup(std::mt19937& rng, std::size_t length)
{
    static const char* const broken[] = {
        "\xFF", "\xFE", "\x80", "\xBF", "\xC0\x80", "\xC1\xBF", "\xE0\x80\x80", "\xED\xA0\x80",
        "\xED\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xE3\x81", "\xF0\x9F\x98", "\xC3",
    };
    std::string out;
    while (out.size() < length) {
        switch (random_size(rng, 3)) {
        case 0: out += broken[random_size(rng, std::size(broken) - 1)]; break;
        case 1: out.push_back(static_cast<char>(random_size(rng, 255))); break;
        default: out += icu_utf16_to_utf8(random_utf16(rng, 1, false)); break;
        }
    }
    out.resize(length);
    return out;
}

// Random UTF-16 and broken UTF-8 of up to 3000 units from 80 seeds, spread over four threads at
// once; `same(units, bytes)` tells whether the results match the reference.
template <class Check>
void expect_random_texts_in_threads(Check same)
{
    expect_in_threads(4, [&](std::size_t t) {
        std::string failures;
        const auto seeds = test_seeds(80);
        for (std::size_t k = t; k < seeds.size(); k += 4) {
            std::mt19937 rng(seeds[k]);
            const ustring units = random_utf16(rng, random_size(rng, 3000));
            if (!same(units, random_utf8_soup(rng, random_size(rng, 3000))))
                failures += " seed " + std::to_string(seeds[k]);
        }
        return failures;
    });
}

// Compares two texts and names the first differing unit instead of printing megabytes.
template <class Char>
::testing::AssertionResult same_text(const std::basic_string<Char>& actual, const std::basic_string<Char>& expected)
{
    if (actual == expected) return ::testing::AssertionSuccess();
    const auto at = static_cast<std::size_t>(
        std::mismatch(actual.begin(), actual.end(), expected.begin(), expected.end()).first - actual.begin());
    auto unit = [](const std::basic_string<Char>& s, std::size_t i) {
        return i < s.size() ? static_cast<unsigned long>(static_cast<std::make_unsigned_t<Char>>(s[i])) : ~0UL; };
    return ::testing::AssertionFailure() << "actual has " << actual.size() << " units, expected " << expected.size()
                                         << "; first difference at unit " << at << ": actual 0x" << std::hex
                                         << unit(actual, at) << ", expected 0x" << unit(expected, at);
}

// Converts into a buffer of `capacity` plus guard units and checks that nothing lands past the
// capacity or past the `output` units of the whole result (no terminator). Returns the buffer.
template <class To, class Cvt, class From>
std::basic_string<To> through_buffer(const Cvt& cvt, unsigned long capacity, const std::basic_string<From>& source,
                                     unsigned long output, unsigned long& returned)
{
    const To guard = static_cast<To>(0xA5A5A5A5u);
    std::vector<To> buffer(capacity + 4, guard);
    returned = cvt.convert(buffer.data(), capacity, source.data(), source.size());
    const auto written = std::find_if(buffer.begin() + static_cast<std::ptrdiff_t>(std::min(capacity, output)),
                                      buffer.end(), [&](To u) { return u != guard; });
    EXPECT_TRUE(written == buffer.end()) << "unit " << (written - buffer.begin()) << " written at capacity "
                                         << capacity << " of an output of " << output;
    return std::basic_string<To>(buffer.data(), capacity);
}

// The size query, the string form and the buffer form at capacity 0, one short, exact and roomy:
// the buffer form always returns the full size.
template <class Converter, class From, class To>
void expect_all_forms(const Converter& cvt, const std::basic_string<From>& source,
                      const std::basic_string<To>& expected)
{
    const unsigned long need = expected.size();
    EXPECT_EQ(cvt.get_destination_size(source.data(), source.size()), need);
    EXPECT_TRUE(same_text(cvt.convert(source.data(), source.size()), expected));
    for (unsigned long cap : {0ul, need > 1 ? need - 1 : 0ul, need, need + 3}) {
        unsigned long returned = 0;
        const std::basic_string<To> written = through_buffer<To>(cvt, cap, source, need, returned);
        EXPECT_EQ(returned, need) << "capacity " << cap;
        if (cap >= need) {
            EXPECT_TRUE(same_text(written.substr(0, need), expected)) << "capacity " << cap;
        }
    }
}

// A private mapping that is never written: every page is the shared zero page, so gigabytes of
// zero input cost address space only.
struct zero_region {
    explicit zero_region(std::size_t bytes)
        : size(bytes), data(mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {}
    ~zero_region() { if (data != MAP_FAILED) munmap(data, size); }
    zero_region(const zero_region&) = delete;
    zero_region& operator=(const zero_region&) = delete;
    template <class T>
    T* as() const { return static_cast<T*>(data); }
    explicit operator bool() const { return data != MAP_FAILED; }
    std::size_t size;
    void* data;
};

}  // namespace qx_test

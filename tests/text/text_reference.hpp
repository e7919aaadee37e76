// Seeded random UTF-16 text and raw-ICU reference transforms for the checks of transforms,
// comparison and search.
#pragma once

#include <fl/i18n/ustring.hpp>

#include <gtest/gtest.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>

#include <functional>
#include <random>

namespace text_test {

/// The seed of every reference check; printed with each failure through SCOPED_TRACE.
constexpr unsigned random_text_seed = 20240611;

/// 1 to `max_units` units (one more when the last character is a pair) from blocks that case-map,
/// compose, decompose or fold unusually, with lone surrogates and supplementary characters.
inline ustring random_text(std::mt19937& rng, std::size_t max_units)
{
    static constexpr char32_t blocks[][2] = {
        {0x41, 0x5A},       {0x61, 0x7A},       {0xC0, 0x17F},    {0x130, 0x131},   {0xDF, 0xDF},
        {0x1E00, 0x1EFF},   {0x370, 0x3FF},     {0x1F00, 0x1FFF}, {0x4E00, 0x4E3F}, {0xAC00, 0xAC40},
        {0x300, 0x36F},     {0x1DC0, 0x1DFF},   {0xFB00, 0xFB06}, {0xD800, 0xDFFF}, {0x1D400, 0x1D4FF},
        {0x1D15E, 0x1D164}, {0x1F600, 0x1F64F}, {0x2460, 0x24FF}, {0xFF01, 0xFF5E},
    };
    const std::size_t units = std::uniform_int_distribution<std::size_t>(1, max_units)(rng);
    std::uniform_int_distribution<std::size_t> block(0, std::size(blocks) - 1);
    ustring text;
    while (text.size() < units) {
        const auto& range = blocks[block(rng)];
        const auto c = static_cast<char32_t>(std::uniform_int_distribution<unsigned long>(range[0], range[1])(rng));
        if (c >= 0x10000)
            text.push_back(static_cast<char16_t>(0xD7C0 + (c >> 10)));
        text.push_back(static_cast<char16_t>(c >= 0x10000 ? 0xDC00 | (c & 0x3FF) : c));
    }
    return text;
}

/// A transform with ICU's own buffer protocol.
using icu_transform = std::function<int32_t(UChar*, int32_t, const UChar*, int32_t, UErrorCode*)>;

inline icu_transform icu_case(decltype(&u_strToUpper) mapping, const char* locale)
{
    return [=](UChar* dest, int32_t capacity, const UChar* src, int32_t length, UErrorCode* status) {
        return mapping(dest, capacity, src, length, locale, status);
    };
}

inline icu_transform icu_normalizer(decltype(&unorm2_getNFCInstance) instance)
{
    return [=](UChar* dest, int32_t capacity, const UChar* src, int32_t length, UErrorCode* status) {
        return unorm2_normalize(instance(status), src, length, dest, capacity, status);
    };
}

/// The whole output of `reference`: a pre-flight, then a buffer of exactly that size.
inline ustring icu_result(const icu_transform& reference, const ustring& text)
{
    const auto length = static_cast<int32_t>(text.size());
    UErrorCode status = U_ZERO_ERROR;
    ustring out(static_cast<std::size_t>(reference(nullptr, 0, text.data(), length, &status)), u'\0');
    status = U_ZERO_ERROR;
    reference(out.data(), static_cast<int32_t>(out.size()), text.data(), length, &status);
    EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
    return out;
}

}  // namespace text_test

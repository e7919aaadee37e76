// The normal form, flags and normaliser shared by the two pattern matchers.
#include "regex_support.hpp"

#include "common/throw_exception.hpp"
#include "conversion/conversion_internal.hpp"

#include <boost/numeric/conversion/converter_policies.hpp>

#include <unicode/unorm2.h>

namespace fl::i18n::detail {

std::int32_t normalization_of(const character_handling_mode_context& mode) noexcept
{
    // Normalisation-insensitive matching is done by composing both sides.
    if (mode.is_normalized_compose_mode() || mode.is_normalization_insensitive_mode())
        return normalize_bit;
    if (mode.is_normalized_decompose_mode())
        return normalize_bit | decompose_bit;
    return 0;
}

std::int32_t checked_regex_length(const ustring& text)
{
    if (text.size() >= icu_length_limit)
        fl::detail::throw_exception(boost::numeric::positive_overflow());
    return static_cast<std::int32_t>(text.size());
}

regex_status normalize_text(const ustring& text, std::int32_t normalization, ustring& out)
{
    out.clear();
    if (text.empty())
        return regex_success;
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* normalizer =
        (normalization & decompose_bit) ? unorm2_getNFDInstance(&status) : unorm2_getNFCInstance(&status);
    if (U_FAILURE(status))
        return regex_failed_normalization;
    const std::int32_t length = checked_regex_length(text);

    constexpr std::int32_t stack_units = 1024;
    char16_t buffer[stack_units];
    const std::int32_t needed = unorm2_normalize(normalizer, text.data(), length, buffer, stack_units, &status);
    if (U_SUCCESS(status)) {
        out.assign(buffer, static_cast<std::size_t>(needed));
        return regex_success;
    }
    if (status != U_BUFFER_OVERFLOW_ERROR)
        return regex_failed_normalization;
    // Only a longer result than the stack holds costs a heap buffer, of exactly its size.
    out.assign(static_cast<std::size_t>(needed), u'\0');
    status = U_ZERO_ERROR;
    unorm2_normalize(normalizer, text.data(), length, out.data(), needed, &status);
    if (U_FAILURE(status)) {
        out.clear();
        return regex_failed_normalization;
    }
    return regex_success;
}

regex_ptr open_regex(const ustring& pattern, const character_handling_mode_context& mode)
{
    // "." always matches line ends; no other flag is ever set.
    constexpr std::uint32_t dot_all = UREGEX_DOTALL;
    constexpr std::uint32_t case_insensitive = UREGEX_CASE_INSENSITIVE;
    const std::uint32_t flags = mode.is_case_sensitive_mode() ? dot_all : dot_all | case_insensitive;
    const std::int32_t length = checked_regex_length(pattern);
    UErrorCode status = U_ZERO_ERROR;
    regex_ptr expression(uregex_open(pattern.data(), length, flags, nullptr, &status));
    if (U_FAILURE(status))
        expression.reset();
    return expression;
}

}  // namespace fl::i18n::detail

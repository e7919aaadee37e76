// Comparison of UTF-16 text by code units, case folding and canonical or compatibility equivalence.
#include <fl/i18n/text_compare.hpp>

#include "text_internal.hpp"

#include <fl/i18n/transform.hpp>

#include <boost/container/small_vector.hpp>

#include <unicode/unorm2.h>
#include <unicode/ustring.h>

#include <cstdint>

namespace fl::i18n::detail {
namespace {

// An empty or null text orders before every other; only two non-empty texts reach `compare_both`.
template <class Compare>
int compare_texts(const char16_t* a, unsigned long a_length, const char16_t* b, unsigned long b_length,
                  Compare&& compare_both)
{
    if (is_empty_text(a, a_length))
        return is_empty_text(b, b_length) ? 0 : -1;
    if (is_empty_text(b, b_length))
        return 1;
    return compare_both();
}

void check_sizes(unsigned long a_length, unsigned long b_length)
{
    check_text_size(b_length);
    check_text_size(a_length);
}

int32_t icu_length(unsigned long length) noexcept { return static_cast<int32_t>(length); }

int checked_result(int32_t result, UErrorCode status)
{
    if (U_FAILURE(status))
        fl::detail::throw_exception(CtypeStrCompFailure());
    return result;
}

int normalized_compare(const char16_t* a, unsigned long a_length, const char16_t* b, unsigned long b_length,
                       uint32_t options)
{
    check_sizes(a_length, b_length);
    UErrorCode status = U_ZERO_ERROR;
    const int32_t result = unorm_compare(a, icu_length(a_length), b, icu_length(b_length), options, &status);
    return checked_result(result, status);
}

// The compatibility decomposition of a text, in a buffer of exactly its size; short texts stay
// on the stack.
class nfkd_text {
public:
    nfkd_text(const char16_t* text, unsigned long length)
        : units_(transform(nullptr, 0, text, length, to_nfkd()))
    {
        transform(units_.data(), units_.size(), text, length, to_nfkd());
    }

    // An empty decomposition goes to ICU as a null text.
    const char16_t* data() const noexcept { return units_.empty() ? nullptr : units_.data(); }
    unsigned long size() const noexcept { return units_.size(); }

private:
    boost::container::small_vector<char16_t, 256> units_;
};

}  // namespace

int compare(const char16_t* a, unsigned long a_length, const char16_t* b, unsigned long b_length,
            const case_sensitive&)
{
    return compare_texts(a, a_length, b, b_length, [&] {
        check_sizes(a_length, b_length);
        return u_strCompare(a, icu_length(a_length), b, icu_length(b_length), false);
    });
}

int compare(const char16_t* a, unsigned long a_length, const char16_t* b, unsigned long b_length,
            const case_insensitive&)
{
    return compare_texts(a, a_length, b, b_length, [&] {
        check_sizes(a_length, b_length);
        UErrorCode status = U_ZERO_ERROR;
        const int32_t result = u_strCaseCompare(a, icu_length(a_length), b, icu_length(b_length), 0, &status);
        return checked_result(result, status);
    });
}

int compare(const char16_t* a, unsigned long a_length, const char16_t* b, unsigned long b_length,
            const normalized_case_sensitive&)
{
    return compare_texts(a, a_length, b, b_length, [&] { return normalized_compare(a, a_length, b, b_length, 0); });
}

int compare(const char16_t* a, unsigned long a_length, const char16_t* b, unsigned long b_length,
            const normalized_case_insensitive&)
{
    return compare_texts(a, a_length, b, b_length,
                         [&] { return normalized_compare(a, a_length, b, b_length, U_COMPARE_IGNORE_CASE); });
}

int compare(const char16_t* a, unsigned long a_length, const char16_t* b, unsigned long b_length,
            const normalized_compatibility_case_sensitive&)
{
    return compare_texts(a, a_length, b, b_length, [&] {
        const nfkd_text first(a, a_length);
        const nfkd_text second(b, b_length);
        check_sizes(first.size(), second.size());
        return u_strCompare(first.data(), icu_length(first.size()), second.data(), icu_length(second.size()), false);
    });
}

int compare(const char16_t* a, unsigned long a_length, const char16_t* b, unsigned long b_length,
            const normalized_compatibility_case_insensitive&)
{
    return compare_texts(a, a_length, b, b_length, [&] {
        const nfkd_text first(a, a_length);
        const nfkd_text second(b, b_length);
        return normalized_compare(first.data(), first.size(), second.data(), second.size(), U_COMPARE_IGNORE_CASE);
    });
}

}  // namespace fl::i18n::detail

// Helpers of the pattern-matching tests: the letter é in both normal forms and raw ICU as reference.
#pragma once

#include <fl/i18n/ustring.hpp>

#include <gtest/gtest.h>
#include <unicode/unorm2.h>
#include <unicode/uregex.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

namespace qx_test {

inline const ustring composed_e = u"\u00E9";
inline const ustring decomposed_e = u"e\u0301";

enum class form { none, nfc, nfd };

inline ustring icu_normalize(const ustring& text, form f)
{
    if (f == form::none || text.empty())
        return text;
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* n = f == form::nfc ? unorm2_getNFCInstance(&status) : unorm2_getNFDInstance(&status);
    const auto length = static_cast<int32_t>(text.size());
    const int32_t needed = unorm2_normalize(n, text.data(), length, nullptr, 0, &status);
    ustring out(static_cast<std::size_t>(needed), u'\0');
    status = U_ZERO_ERROR;
    unorm2_normalize(n, text.data(), length, out.data(), needed, &status);
    if (U_FAILURE(status)) ADD_FAILURE() << "unorm2_normalize: " << u_errorName(status);
    return out;
}

// One uregex compiled with the given flags; each call sets the subject it is given.
class raw_regex {
public:
    raw_regex(const ustring& pattern, std::uint32_t flags)
    {
        UErrorCode status = U_ZERO_ERROR;
        expression_.reset(uregex_open(pattern.data(), static_cast<int32_t>(pattern.size()), flags, nullptr, &status));
        if (U_FAILURE(status)) ADD_FAILURE() << "uregex_open: " << u_errorName(status);
    }

    bool matches(const ustring& subject)
    {
        UErrorCode status = U_ZERO_ERROR;
        uregex_setText(expression_.get(), subject.data(), static_cast<int32_t>(subject.size()), &status);
        const bool result = uregex_matches(expression_.get(), -1, &status);
        if (U_FAILURE(status)) ADD_FAILURE() << "uregex_matches: " << u_errorName(status);
        return result;
    }

    std::optional<std::pair<int, int>> find(const ustring& subject, int32_t start)
    {
        UErrorCode status = U_ZERO_ERROR;
        uregex_setText(expression_.get(), subject.data(), static_cast<int32_t>(subject.size()), &status);
        if (!uregex_find(expression_.get(), start, &status))
            return std::nullopt;
        const int first = uregex_start(expression_.get(), 0, &status);
        const int last = uregex_end(expression_.get(), 0, &status);
        if (U_FAILURE(status)) ADD_FAILURE() << "uregex_find: " << u_errorName(status);
        return std::pair(first, last);
    }

private:
    struct closer {
        void operator()(URegularExpression* e) const noexcept { uregex_close(e); }
    };
    std::unique_ptr<URegularExpression, closer> expression_;
};

}  // namespace qx_test

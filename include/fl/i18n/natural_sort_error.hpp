// Exceptions for callers' natural-order comparators built on an ICU collator: one type on both
// sides of the library boundary.
#pragma once

#include <fl/i18n/export.hpp>

#include <exception>
#include <string>

namespace fl::i18n {

/// The collator could not be created; `error_code` is the ICU status as text.
class QXI18N_API NaturalSortCollatorException : public std::exception {
public:
    explicit NaturalSortCollatorException(const std::string& error_code);
    ~NaturalSortCollatorException() override;
    const char* what() const noexcept override;

private:
    std::string message_;
};

/// The collator's compare operation failed; `error_code` is the ICU status as text.
class QXI18N_API NaturalSortCompareException : public std::exception {
public:
    explicit NaturalSortCompareException(const std::string& error_code);
    ~NaturalSortCompareException() override;
    const char* what() const noexcept override;

private:
    std::string message_;
};

}  // namespace fl::i18n

// Exceptions of pattern matching, and the status numbers they share with the non-throwing matcher.
#pragma once

#include <fl/i18n/export.hpp>

#include <cstdint>
#include <exception>
#include <string>

namespace fl::i18n {

/// Outcome of a pattern operation; the failure values are the ids of the exceptions below.
enum regex_status : std::int32_t {
    regex_success = 1,
    regex_invalid_argument = 2,
    regex_invalid_object = 3,
    regex_failed_object_creation = 4,
    regex_failed_match_operation = 5,
    regex_failed_normalization = 6,
};

/// Base of the pattern-matching exceptions; what() is the class's key, such as
/// "fl:i18n:RegexInvalidArgument". Thrown only wrapped in boost::exception_detail::clone_impl<E>.
class QXI18N_API RegexExceptionBase : public std::exception {
public:
    ~RegexExceptionBase() override = 0;
    const char* what() const noexcept override;
    /// The failure's status number.
    std::int32_t get_id() const noexcept { return id_; }

protected:
    RegexExceptionBase(const char* message, regex_status id);

private:
    std::string message_;
    std::int32_t id_;
};

/// An empty pattern.
class QXI18N_API RegexInvalidArgument : public RegexExceptionBase {
public:
    RegexInvalidArgument();
    ~RegexInvalidArgument() override;
};

/// A matcher whose expression was never compiled.
class QXI18N_API RegexInvalidObject : public RegexExceptionBase {
public:
    RegexInvalidObject();
    ~RegexInvalidObject() override;
};

/// ICU refused the pattern.
class QXI18N_API RegexFailedObjectCreation : public RegexExceptionBase {
public:
    RegexFailedObjectCreation();
    ~RegexFailedObjectCreation() override;
};

/// ICU failed to set the subject, match or find.
class QXI18N_API RegexFailedMatchOperation : public RegexExceptionBase {
public:
    RegexFailedMatchOperation();
    ~RegexFailedMatchOperation() override;
};

/// The pattern or the subject could not be normalised.
class QXI18N_API RegexFailedNormalization : public RegexExceptionBase {
public:
    RegexFailedNormalization();
    ~RegexFailedNormalization() override;
};

}  // namespace fl::i18n

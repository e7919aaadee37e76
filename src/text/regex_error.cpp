// The pattern-matching exception family: each message is the class's own key.
#include <fl/i18n/regex_error.hpp>

namespace fl::i18n {

RegexExceptionBase::RegexExceptionBase(const char* message, regex_status id) : message_(message), id_(id) {}
RegexExceptionBase::~RegexExceptionBase() = default;

const char* RegexExceptionBase::what() const noexcept { return message_.c_str(); }

RegexInvalidArgument::RegexInvalidArgument()
    : RegexExceptionBase("fl:i18n:RegexInvalidArgument", regex_invalid_argument)
{
}
RegexInvalidArgument::~RegexInvalidArgument() = default;

RegexInvalidObject::RegexInvalidObject() : RegexExceptionBase("fl:i18n:RegexInvalidObject", regex_invalid_object) {}
RegexInvalidObject::~RegexInvalidObject() = default;

RegexFailedObjectCreation::RegexFailedObjectCreation()
    : RegexExceptionBase("fl:i18n:RegexFailedObjectCreation", regex_failed_object_creation)
{
}
RegexFailedObjectCreation::~RegexFailedObjectCreation() = default;

RegexFailedMatchOperation::RegexFailedMatchOperation()
    : RegexExceptionBase("fl:i18n:RegexFailedMatchOperation", regex_failed_match_operation)
{
}
RegexFailedMatchOperation::~RegexFailedMatchOperation() = default;

RegexFailedNormalization::RegexFailedNormalization()
    : RegexExceptionBase("fl:i18n:RegexFailedNormalization", regex_failed_normalization)
{
}
RegexFailedNormalization::~RegexFailedNormalization() = default;

}  // namespace fl::i18n

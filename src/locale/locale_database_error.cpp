// The locale database exception family: identifiers, codes and messages.
#include <fl/i18n/locale_database_error.hpp>

namespace fl::i18n {

LcRscExceptionBase::LcRscExceptionBase(const char* identifier, int code, std::string message)
    : identifier_(identifier), code_(code), message_(std::move(message))
{
}
LcRscExceptionBase::LcRscExceptionBase(const LcRscExceptionBase& other) = default;
LcRscExceptionBase::~LcRscExceptionBase() = default;

const char* LcRscExceptionBase::what() const noexcept { return message_.c_str(); }

LcRscOpenFileFailure::LcRscOpenFileFailure(const std::string& path)
    : LcRscExceptionBase("fl:i18n:LcRscOpenFileFailure", 2, "Failed to open file " + path + ".")
{
}
LcRscOpenFileFailure::~LcRscOpenFileFailure() = default;

LcRscFileReadFailure::LcRscFileReadFailure(const std::string& path)
    : LcRscExceptionBase("fl:i18n:LcRscFileReadFailure", 3, "Failed to read file " + path + ".")
{
}
LcRscFileReadFailure::~LcRscFileReadFailure() = default;

LcRscParserCreationFailure::LcRscParserCreationFailure()
    : LcRscExceptionBase("fl:i18n:LcRscParserCreationFailure", 4, "Failed to create XML parser.")
{
}
LcRscParserCreationFailure::~LcRscParserCreationFailure() = default;

LcRscInvalidXmlDoc::LcRscInvalidXmlDoc(const std::string& error, unsigned long long column, unsigned long long line)
    : LcRscExceptionBase("fl:i18n:LcRscInvalidXmlDoc", 5,
                         "XML Parse error detected with " + error + " at column, " + std::to_string(column) +
                             ", on line, " + std::to_string(line) + " in resource file.")
{
}
LcRscInvalidXmlDoc::~LcRscInvalidXmlDoc() = default;

}  // namespace fl::i18n

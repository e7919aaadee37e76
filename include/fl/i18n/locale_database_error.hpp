// Exceptions of the locale database reader: one base with identifier, code and message.
#pragma once

#include <fl/i18n/export.hpp>

#include <cstddef>
#include <exception>
#include <string>

namespace fl::i18n {

/// Base of the exceptions that reading lcdata.xml throws. Thrown only wrapped in
/// boost::exception_detail::clone_impl<E>, so boost::current_exception() can carry it.
/// Whatever the reader stored before the failure stays in the locale registry.
class QXI18N_API LcRscExceptionBase : public std::exception {
public:
    LcRscExceptionBase(const char* identifier, int code, std::string message);
    LcRscExceptionBase(const LcRscExceptionBase& other);
    ~LcRscExceptionBase() override = 0;

    /// The message, e.g. "Failed to open file /opt/bin/lcdata.xml.".
    const char* what() const noexcept override;
    /// "fl:i18n:" and the class name.
    const std::string& getIdentifier() const noexcept { return identifier_; }
    /// 2 open, 3 read, 4 parser creation, 5 invalid document.
    int getCode() const noexcept { return code_; }
    const std::string& getMessage() const noexcept { return message_; }

private:
    std::string identifier_;
    int code_;
    std::string message_;
};

/// The database could not be opened: missing, not permitted, or not a regular file.
class QXI18N_API LcRscOpenFileFailure : public LcRscExceptionBase {
public:
    /// `path` is the native path as narrow text.
    explicit LcRscOpenFileFailure(const std::string& path);
    ~LcRscOpenFileFailure() override;
};

/// Reading the open database failed, or the file is larger than the reader accepts.
class QXI18N_API LcRscFileReadFailure : public LcRscExceptionBase {
public:
    explicit LcRscFileReadFailure(const std::string& path);
    ~LcRscFileReadFailure() override;
};

/// The XML parser could not be created.
class QXI18N_API LcRscParserCreationFailure : public LcRscExceptionBase {
public:
    LcRscParserCreationFailure();
    ~LcRscParserCreationFailure() override;
};

/// The document is not well-formed, breaks the database grammar, or trips the parser's limits.
/// `error` is the parser's own text, e.g. "unclosed token" or "parsing aborted".
class QXI18N_API LcRscInvalidXmlDoc : public LcRscExceptionBase {
public:
    LcRscInvalidXmlDoc(const std::string& error, unsigned long long column, unsigned long long line);
    ~LcRscInvalidXmlDoc() override;
};

}  // namespace fl::i18n

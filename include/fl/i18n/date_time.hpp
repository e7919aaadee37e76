// Date-time text: boost::posix_time::ptime to and from UTF-16 in four fixed layouts or any Boost
// time-facet format, and ptime to time_t.
#pragma once

#include <fl/i18n/export.hpp>
#include <fl/i18n/ustring.hpp>

#include <boost/date_time/posix_time/ptime.hpp>

#include <ctime>
#include <exception>
#include <string>

namespace fl::i18n::date_time {

/// The fixed layouts.
enum DateFormat {
    date_format_simple = 0,        ///< "2002-Jan-01 10:00:01"
    date_format_iso = 1,           ///< "20020131T100001"
    date_format_iso_extended = 2,  ///< "2002-01-31T10:00:01"
    date_format_utc_stamp = 3,     ///< "2002-01-31T10:00:01Z", nothing allowed after it when reading
};

/// Base of the date-time exceptions; thrown only wrapped in boost::exception_detail::clone_impl.
class QXI18N_API date_time_exception_base : public std::exception {
public:
    date_time_exception_base(const date_time_exception_base& other);
    ~date_time_exception_base() override = 0;

    const char* what() const noexcept override;
    int get_id() const noexcept { return id_; }

protected:
    date_time_exception_base(const char* text, int id);

private:
    std::string text_;
    int id_;
};

/// A value that has no meaning for the operation, such as not_a_date_time for ptime_to_time_t.
class QXI18N_API invalid_data_error : public date_time_exception_base {
public:
    invalid_data_error();
    ~invalid_data_error() override;
};

/// `text` read in `format`; not_a_date_time when it does not parse (text that does not parse is
/// not an error). A non-ASCII unit throws CvtInvalidCharacter. date_format_simple alone parses
/// without a stream, and its field errors (boost::gregorian::bad_day_of_month and the like,
/// boost::bad_lexical_cast) reach the caller.
QXI18N_API boost::posix_time::ptime to_ptime(const ustring& text, DateFormat format);
/// `text` read with a Boost time_input_facet format; text after the parsed part is ignored.
QXI18N_API boost::posix_time::ptime to_ptime(const ustring& text, const std::string& format);

/// `time` written in `format`; empty for an unknown format value.
QXI18N_API ustring to_ustring(const boost::posix_time::ptime& time, DateFormat format);
/// `time` written with a Boost time_facet format; empty for an empty format or a failed write.
/// A non-ASCII byte in the result throws CvtInvalidCharacter.
QXI18N_API ustring to_ustring(const boost::posix_time::ptime& time, const std::string& format);

/// Whole seconds since 1970-01-01 00:00:00, truncated toward zero (so times before 1970 with a
/// fraction round toward 1970). Infinities give the extreme microsecond counts in seconds;
/// not_a_date_time throws invalid_data_error.
QXI18N_API std::time_t ptime_to_time_t(const boost::posix_time::ptime& time);

}  // namespace fl::i18n::date_time

// Time zones: an ICU zone in a value class, and ptime shifted between local time and UTC.
#pragma once

#include <fl/i18n/export.hpp>
#include <fl/i18n/ustring.hpp>

#include <boost/any.hpp>
#include <boost/date_time/posix_time/ptime.hpp>

#include <exception>
#include <string>

namespace fl::i18n::time_zone {

namespace detail {
struct timezone_access;  // the conversions' view of the ICU zone and the flag
}

/// A time zone by its ICU id. Copies share the ICU object; a timezone is a value and may be read
/// from several threads at once.
class QXI18N_API timezone {
public:
    /// The zone `id` names (an ICU id such as "Europe/Berlin", an alias such as "US/Eastern", or
    /// "GMT+05:30"); an empty id is the host's default zone. Throws invalid_timezone_id for an id
    /// ICU does not know ("Etc/Unknown" included) and, for the std::string form, CvtInvalidCharacter
    /// for a non-ASCII byte.
    explicit timezone(const std::string& id);
    explicit timezone(const ustring& id);
    timezone(const timezone& other);
    timezone& operator=(const timezone& other);
    ~timezone();

    /// Replaces the content by the host's default zone; throws invalid_timezone_id if that is
    /// ICU's unknown zone.
    void create_default();

    /// The zone's ICU id, as given at construction (an alias stays an alias).
    ustring get_id() const;

    /// Same ICU zone (ICU's equality, which includes the id), same id and same flags: a zone and
    /// an alias of its id are not equal.
    bool operator==(const timezone& other) const;
    bool operator!=(const timezone& other) const { return !(*this == other); }

private:
    friend struct detail::timezone_access;

    boost::any zone_;  // boost::shared_ptr<const icu::TimeZone>, shared by copies
    ustring id_;       // empty from every constructor; when set, it wins over the ICU id
    bool ignore_daylight_saving_ = false;  // leave the daylight-saving offset out of conversions
};

/// Base of the time-zone exceptions; thrown only wrapped in boost::exception_detail::clone_impl.
class QXI18N_API timezone_exception_base : public std::exception {
public:
    timezone_exception_base(const timezone_exception_base& other);
    ~timezone_exception_base() override = 0;

    /// The identifier text, such as "fl::i18n::timezone::invalid_time_data".
    const char* what() const noexcept override;
    int get_id() const noexcept { return id_; }
    const std::string& message() const noexcept { return message_; }

protected:
    timezone_exception_base(const char* identifier, int id, const char* message);

private:
    std::string identifier_;
    int id_;
    std::string message_;
};

/// The offset could not be had from ICU, or the result leaves the range of ptime.
class QXI18N_API invalid_time_data : public timezone_exception_base {
public:
    invalid_time_data();
    ~invalid_time_data() override;
};

/// ICU does not know the zone id.
class QXI18N_API invalid_timezone_id : public timezone_exception_base {
public:
    invalid_timezone_id();
    ~invalid_timezone_id() override;
};

/// `local`, a wall-clock time in `zone`, as UTC. The offset is ICU's at the whole second toward
/// 1970 (so a time before 1970 with a fraction takes the offset of the later second) and the
/// fraction is carried through with its sign; in a daylight-saving gap or overlap ICU decides.
/// not_a_date_time and the infinities come back unchanged. Throws invalid_time_data when ICU
/// fails or the result leaves the 64-bit microsecond range.
QXI18N_API boost::posix_time::ptime to_utc(const boost::posix_time::ptime& local, const timezone& zone);
/// `utc` as wall-clock time in `zone`; the same rules as to_utc.
QXI18N_API boost::posix_time::ptime from_utc(const boost::posix_time::ptime& utc, const timezone& zone);

}  // namespace fl::i18n::time_zone

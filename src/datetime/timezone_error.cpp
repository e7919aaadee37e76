// The time-zone exception family: an identifier text that what() gives, an id and a message.
#include <fl/i18n/time_zone.hpp>

namespace fl::i18n::time_zone {

timezone_exception_base::timezone_exception_base(const char* identifier, int id, const char* message)
    : identifier_(identifier), id_(id), message_(message)
{
}
timezone_exception_base::timezone_exception_base(const timezone_exception_base& other) = default;
timezone_exception_base::~timezone_exception_base() = default;

const char* timezone_exception_base::what() const noexcept { return identifier_.c_str(); }

invalid_time_data::invalid_time_data()
    : timezone_exception_base("fl::i18n::timezone::invalid_time_data", 1, "Invalid time data.")
{
}
invalid_time_data::~invalid_time_data() = default;

invalid_timezone_id::invalid_timezone_id()
    : timezone_exception_base("fl::i18n::timezone::invalid_timezone_id", 2, "Invalid timezone id.")
{
}
invalid_timezone_id::~invalid_timezone_id() = default;

}  // namespace fl::i18n::time_zone

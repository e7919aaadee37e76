// The date-time exception family.
#include <fl/i18n/date_time.hpp>

namespace fl::i18n::date_time {

date_time_exception_base::date_time_exception_base(const char* text, int id) : text_(text), id_(id) {}

date_time_exception_base::date_time_exception_base(const date_time_exception_base& other) = default;

date_time_exception_base::~date_time_exception_base() = default;

const char* date_time_exception_base::what() const noexcept { return text_.c_str(); }

invalid_data_error::invalid_data_error() : date_time_exception_base("fl:i18n:date_time:invalid_data_error", 1) {}

invalid_data_error::~invalid_data_error() = default;

}  // namespace fl::i18n::date_time

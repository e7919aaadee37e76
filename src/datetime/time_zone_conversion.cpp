// to_utc and from_utc: one shift of a ptime by the zone's offset, taken at the whole second.
#include "time_zone_internal.hpp"

#include "common/retry_once.hpp"

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <unicode/timezone.h>

#include <cstdint>
#include <limits>

namespace fl::i18n::time_zone {

namespace {

namespace pt = boost::posix_time;
using detail::timezone_access;

constexpr std::int64_t microseconds_per_second = 1000000;
constexpr double milliseconds_per_second = 1000.0;
constexpr std::int64_t microseconds_per_millisecond = 1000;
constexpr double int64_bound = 9223372036854775808.0;  // 2^63, exact in a double

// 1970-01-01, built from its day number so that nothing depends on a calendar lookup.
fl::detail::retry_once<const pt::ptime> epoch_region;

const pt::ptime& epoch()
{
    return epoch_region.get([] {
        return new pt::ptime(boost::gregorian::date(boost::gregorian::date::date_int_type(2440588)));
    });
}

[[noreturn]] void throw_invalid_time_data() { fl::detail::throw_exception(invalid_time_data()); }

pt::ptime shift(const pt::ptime& time, const timezone& zone, bool is_local)
{
    const icu::TimeZone& icu_zone = timezone_access::zone(zone);
    // Infinities and not_a_date_time have no offset; they come back as they are.
    if (time.is_special())
        return time;
    const pt::ptime& start = epoch();
    const std::int64_t difference = (time - start).total_microseconds();
    // ICU's UDate in whole seconds: the fraction is cut toward zero here and added back at the end.
    const double date = static_cast<double>(difference / microseconds_per_second) * milliseconds_per_second;

    int32_t raw_offset = 0;
    int32_t dst_offset = 0;
    UErrorCode status = U_ZERO_ERROR;
    icu_zone.getOffset(date, is_local, raw_offset, dst_offset, status);
    if (U_FAILURE(status))
        throw_invalid_time_data();
    const double offset = timezone_access::ignores_daylight_saving(zone)
                              ? static_cast<double>(raw_offset)
                              : static_cast<double>(raw_offset) + static_cast<double>(dst_offset);

    const double result = is_local ? date - offset : date + offset;
    if (result <= -int64_bound || result >= int64_bound)
        throw_invalid_time_data();
    std::int64_t microseconds = 0;
    if (__builtin_mul_overflow(static_cast<std::int64_t>(result), microseconds_per_millisecond, &microseconds))
        throw_invalid_time_data();
    // The smallest count stands for minus infinity, which takes no fraction.
    if (microseconds != std::numeric_limits<std::int64_t>::min()
        && __builtin_add_overflow(microseconds, difference % microseconds_per_second, &microseconds))
        throw_invalid_time_data();
    return start + pt::microseconds(microseconds);
}

}  // namespace

pt::ptime to_utc(const pt::ptime& local, const timezone& zone) { return shift(local, zone, true); }

pt::ptime from_utc(const pt::ptime& utc, const timezone& zone) { return shift(utc, zone, false); }

}  // namespace fl::i18n::time_zone

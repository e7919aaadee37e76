// The library's view of a timezone: its ICU zone, its daylight-saving flag and the adoption of a
// freshly created ICU zone.
#pragma once

#include "common/throw_exception.hpp"

#include <fl/i18n/time_zone.hpp>

#include <boost/any.hpp>
#include <boost/shared_ptr.hpp>

#include <unicode/timezone.h>

namespace fl::i18n::time_zone::detail {

using zone_ptr = boost::shared_ptr<const icu::TimeZone>;

struct timezone_access {
    /// The ICU zone; throws boost::bad_any_cast if the object holds anything else.
    static const icu::TimeZone& zone(const timezone& tz)
    {
        const zone_ptr* held = boost::any_cast<zone_ptr>(&tz.zone_);
        if (held == nullptr || !*held)
            fl::detail::throw_exception(boost::bad_any_cast());
        return **held;
    }

    /// Takes `zone` (from an ICU factory; null means ICU ran out of memory) as the whole content
    /// of `tz`: empty id, flag false. If it is ICU's unknown zone, it stays in `tz` and
    /// invalid_timezone_id is thrown.
    static void adopt(timezone& tz, icu::TimeZone* zone);

    static bool ignores_daylight_saving(const timezone& tz) noexcept { return tz.ignore_daylight_saving_; }
    /// No public operation sets the flag; code inside the library and its tests do it here.
    static void set_ignore_daylight_saving(timezone& tz, bool ignore) noexcept { tz.ignore_daylight_saving_ = ignore; }
};

}  // namespace fl::i18n::time_zone::detail

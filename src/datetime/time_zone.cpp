// timezone: an ICU zone made from an id or the host's default, shared by copies, with its
// identity and equality.
#include "time_zone_internal.hpp"

#include "common/retry_once.hpp"

#include <fl/i18n/codecvt.hpp>

#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <cstdint>
#include <limits>
#include <new>

namespace fl::i18n::time_zone {

using detail::timezone_access;

namespace {

// Ids given as std::string must be ASCII; the strict converter has no state, so one serves all.
fl::detail::retry_once<const codecvt_ascii_to_ustring> ascii_region;

ustring strict_ascii(const std::string& id)
{
    const codecvt_ascii_to_ustring& converter =
        ascii_region.get([] { return new codecvt_ascii_to_ustring(false); });
    return converter.convert(id.data(), id.size());
}

}  // namespace

void timezone_access::adopt(timezone& tz, icu::TimeZone* zone)
{
    if (zone == nullptr)
        fl::detail::throw_exception(std::bad_alloc());
    // The shared_ptr deletes the zone through ICU's virtual destructor, also if its own
    // allocation fails.
    tz.zone_ = zone_ptr(zone);
    tz.id_.clear();
    tz.ignore_daylight_saving_ = false;
    // ICU answers an id it does not know with a copy of its unknown zone rather than a failure,
    // and its data also holds "Etc/Unknown" as a zone of another class: either way the id tells.
    icu::UnicodeString id, unknown_id;
    if (zone->getID(id) == icu::TimeZone::getUnknown().getID(unknown_id))
        fl::detail::throw_exception(invalid_timezone_id());
}

timezone::timezone(const ustring& id)
{
    if (id.empty()) {
        create_default();
        return;
    }
    // No zone has an id beyond ICU's 31-bit lengths.
    if (id.size() > static_cast<std::size_t>(std::numeric_limits<int32_t>::max()))
        fl::detail::throw_exception(invalid_timezone_id());
    const icu::UnicodeString name(false, id.data(), static_cast<int32_t>(id.size()));
    timezone_access::adopt(*this, icu::TimeZone::createTimeZone(name));
}

timezone::timezone(const std::string& id) : timezone(id.empty() ? ustring() : strict_ascii(id)) {}

timezone::timezone(const timezone& other) = default;
timezone& timezone::operator=(const timezone& other) = default;
timezone::~timezone() = default;

void timezone::create_default()
{
    timezone_access::adopt(*this, icu::TimeZone::createDefault());
}

ustring timezone::get_id() const
{
    if (!id_.empty())
        return id_;
    icu::UnicodeString id;
    timezone_access::zone(*this).getID(id);
    return ustring(id.getBuffer(), static_cast<std::size_t>(id.length()));
}

bool timezone::operator==(const timezone& other) const
{
    return timezone_access::zone(*this) == timezone_access::zone(other) && get_id() == other.get_id()
           && ignore_daylight_saving_ == other.ignore_daylight_saving_;
}

}  // namespace fl::i18n::time_zone

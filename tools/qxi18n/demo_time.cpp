// The demo's tour of time: one instant in the text layouts and in several zones, zone identity,
// a daylight-saving gap and an unknown id.
#include "demo.hpp"

#include <fl/i18n/conversion.hpp>
#include <fl/i18n/date_time.hpp>
#include <fl/i18n/time_zone.hpp>

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <cstdio>
#include <string>

namespace qxi18n_tool::demo {

namespace {

namespace pt = boost::posix_time;
namespace dt = fl::i18n::date_time;
namespace tz = fl::i18n::time_zone;

std::string iso(const pt::ptime& time) { return fl::i18n::ustring_to_utf8(dt::to_ustring(time, dt::date_format_iso_extended)); }

}  // namespace

void show_time(const context&)
{
    const pt::ptime instant = dt::to_ptime(u"2024-07-01T12:00:00.123456", dt::date_format_iso_extended);
    std::printf("date_time::to_ustring writes one instant in the four layouts:\n\n");
    const struct {
        const char* name;
        dt::DateFormat format;
    } layouts[] = {{"date_format_simple", dt::date_format_simple},
                   {"date_format_iso", dt::date_format_iso},
                   {"date_format_iso_extended", dt::date_format_iso_extended},
                   {"date_format_utc_stamp", dt::date_format_utc_stamp}};
    for (const auto& l : layouts)
        std::printf("  %-26s %s\n", l.name, fl::i18n::ustring_to_utf8(dt::to_ustring(instant, l.format)).c_str());

    std::printf("\ntime_zone::from_utc shows it as wall-clock time; the offset is taken at the whole\n"
                "second and the fraction carried through:\n\n");
    for (const char* id : {"UTC", "Europe/Berlin", "America/New_York", "Asia/Kolkata", "Australia/Lord_Howe"})
        std::printf("  %-22s %s\n", id, iso(tz::from_utc(instant, tz::timezone(id))).c_str());

    const tz::timezone berlin("Europe/Berlin");
    const pt::ptime gap = dt::to_ptime(u"2024-03-31T02:30:00", dt::date_format_iso_extended);
    std::printf("\n2024-03-31 02:30 never happened in Berlin (clocks went from 02:00 to 03:00);\n"
                "to_utc leaves the choice to ICU's zone data: %s UTC.\n", iso(tz::to_utc(gap, berlin)).c_str());

    std::printf("\nA zone equals another only with the same ICU id: America/New_York and its alias\n"
                "US/Eastern are %s. The host's default zone here is %s.\n",
                tz::timezone("America/New_York") == tz::timezone("US/Eastern") ? "equal" : "not equal",
                fl::i18n::ustring_to_utf8(tz::timezone("").get_id()).c_str());
    try {
        tz::timezone("Nowhere/Invalid");
        std::printf("\ntimezone(\"Nowhere/Invalid\") was accepted.\n");
    } catch (const tz::timezone_exception_base& e) {
        std::printf("\ntimezone(\"Nowhere/Invalid\") throws %s (\"%s\").\n", e.what(), e.message().c_str());
    }
    std::printf("\n'qxi18n time convert 2024-07-01T14:00:00 --from Europe/Berlin --to Asia/Tokyo'\n"
                "converts on the command line.\n");
}

}  // namespace qxi18n_tool::demo

// `qxi18n time`: date-time text in the library's layouts or a Boost format, wall-clock times
// converted between time zones, and the ids of zones.
#include "cli.hpp"

#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>
#include <fl/i18n/conversion_error.hpp>
#include <fl/i18n/date_time.hpp>
#include <fl/i18n/time_zone.hpp>

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <cctype>
#include <cstdio>
#include <string>
#include <vector>

namespace qxi18n_tool {

namespace {

namespace pt = boost::posix_time;
namespace dt = fl::i18n::date_time;
namespace tz = fl::i18n::time_zone;

void print_help()
{
    std::printf("Usage: qxi18n time format [LAYOUT] [TIME]\n"
                "       qxi18n time parse TEXT [LAYOUT]\n"
                "       qxi18n time convert TIME [--from ZONE] [--to ZONE]\n"
                "       qxi18n time zone [ID]\n\n"
                "format   writes TIME (default: now, in UTC) in LAYOUT.\n"
                "parse    reads TEXT in LAYOUT and writes the time in ISO extended form, or\n"
                "         \"not-a-date-time\" with status 1 when it does not parse. --utc-stamp\n"
                "         must match the whole text; --iso, --iso-ext and --format read as far as\n"
                "         they match. --simple reports an impossible field (day 30 of February)\n"
                "         or trailing text as an error rather than not-a-date-time.\n"
                "convert  takes TIME as wall-clock time in the zone --from and writes the same\n"
                "         instant as wall-clock time in the zone --to (both default to UTC). The\n"
                "         offset is that of the whole second; in a daylight-saving gap or overlap\n"
                "         ICU's zone data decides.\n"
                "zone     writes the ICU id of zone ID, or of the host's default zone.\n\n"
                "TIME is YYYY-MM-DDTHH:MM:SS with up to six digits of fraction (\".ffffff\"), or\n"
                "\"now\" (UTC). ZONE and ID are ICU zone ids such as Europe/Berlin, US/Eastern or\n"
                "GMT+05:30; an empty one is the host's default zone.\n\n"
                "Layouts (default --iso-ext):\n"
                "  --iso-ext      2024-07-01T12:00:00.123456\n"
                "  --iso          20240701T120000.123456\n"
                "  --simple       2024-Jul-01 12:00:00.123456\n"
                "  --utc-stamp    2024-07-01T12:00:00Z\n"
                "  --format FMT   a Boost time-facet format, such as \"%%d.%%m.%%Y %%H:%%M\"\n"
                "  -h, --help     show this help\n\n"
                "Exit status: 0 success, 1 text that does not parse, an unknown zone, a time out\n"
                "of range, 2 bad usage (unknown operation or option, TIME not in the form above).\n");
}

struct fixed_layout {
    const char* flag;
    dt::DateFormat format;
};
const fixed_layout fixed_layouts[] = {
    {"--iso-ext", dt::date_format_iso_extended},
    {"--iso", dt::date_format_iso},
    {"--simple", dt::date_format_simple},
    {"--utc-stamp", dt::date_format_utc_stamp},
};

// The command line besides the operation and its operands.
struct settings {
    const fixed_layout* fixed = nullptr;
    std::string format;
    bool format_given = false;
    std::string from = "UTC", to = "UTC";
    bool zone_given = false;
};

void print_line(const ustring& text) { std::printf("%s\n", fl::i18n::to_string(text).c_str()); }

ustring ascii(const std::string& text) { return fl::i18n::to_ustring(text, fl::i18n::codecvt_ascii_to_ustring()); }

// "YYYY-MM-DDTHH:MM:SS" and an optional fraction of one to six digits; '#' stands for a digit.
bool is_iso_extended_time(const std::string& text)
{
    constexpr char shape[] = "####-##-##T##:##:##";
    constexpr std::size_t length = sizeof shape - 1;
    if (text.size() < length)
        return false;
    for (std::size_t i = 0; i < length; ++i)
        if (shape[i] == '#' ? !std::isdigit(static_cast<unsigned char>(text[i])) : text[i] != shape[i])
            return false;
    if (text.size() == length)
        return true;
    const std::size_t digits = text.size() - length - 1;
    if (text[length] != '.' || digits < 1 || digits > 6)
        return false;
    for (std::size_t i = length + 1; i < text.size(); ++i)
        if (!std::isdigit(static_cast<unsigned char>(text[i])))
            return false;
    return true;
}

pt::ptime time_operand(const std::string& text)
{
    if (text == "now")
        return pt::microsec_clock::universal_time();
    if (!is_iso_extended_time(text))
        throw usage_error("time", "TIME '" + text + "' is not YYYY-MM-DDTHH:MM:SS[.ffffff] or now");
    const pt::ptime time = dt::to_ptime(ascii(text), dt::date_format_iso_extended);
    if (time.is_not_a_date_time())
        throw usage_error("time", "TIME '" + text + "' is no date of the calendar");
    return time;
}

// An unknown or non-ASCII id is bad data, reported with the library's key.
tz::timezone zone_operand(const std::string& id)
{
    try {
        return tz::timezone(id);
    } catch (const tz::timezone_exception_base& e) {
        throw io_error("time: unknown zone '" + id + "' (" + e.what() + ")");
    } catch (const fl::i18n::CvtExceptionBase& e) {
        throw io_error("time: zone id '" + id + "' is not ASCII (" + e.what() + ")");
    }
}

int run_format(const std::vector<std::string>& operands, const settings& s)
{
    if (operands.size() > 1)
        throw usage_error("time", "format takes at most one TIME");
    const pt::ptime time = operands.empty() ? pt::microsec_clock::universal_time() : time_operand(operands[0]);
    const ustring text = s.format_given ? dt::to_ustring(time, s.format) : dt::to_ustring(time, s.fixed->format);
    if (text.empty())
        throw io_error("time: the format '" + s.format + "' gave no text");
    print_line(text);
    return exit_ok;
}

int run_parse(const std::vector<std::string>& operands, const settings& s)
{
    if (operands.size() != 1)
        throw usage_error("time", "parse takes one TEXT");
    const ustring text = fl::i18n::to_ustring(operands[0]);
    const pt::ptime time = s.format_given ? dt::to_ptime(text, s.format) : dt::to_ptime(text, s.fixed->format);
    print_line(dt::to_ustring(time, dt::date_format_iso_extended));
    return time.is_not_a_date_time() ? exit_data_error : exit_ok;
}

int run_convert(const std::vector<std::string>& operands, const settings& s)
{
    if (operands.size() != 1)
        throw usage_error("time", "convert takes one TIME");
    const pt::ptime local = time_operand(operands[0]);
    const tz::timezone from = zone_operand(s.from), to = zone_operand(s.to);
    try {
        print_line(dt::to_ustring(tz::from_utc(tz::to_utc(local, from), to), dt::date_format_iso_extended));
    } catch (const tz::invalid_time_data& e) {
        throw io_error("time: " + operands[0] + " cannot be converted (" + e.what() + ")");
    }
    return exit_ok;
}

int run_zone(const std::vector<std::string>& operands, const settings&)
{
    if (operands.size() > 1)
        throw usage_error("time", "zone takes at most one ID");
    print_line(zone_operand(operands.empty() ? std::string() : operands[0]).get_id());
    return exit_ok;
}

// The operations, and which options each takes.
struct operation {
    const char* name;
    bool takes_layout;
    bool takes_zones;
    int (*run)(const std::vector<std::string>& operands, const settings& s);
};
const operation operations[] = {
    {"format", true, false, run_format},
    {"parse", true, false, run_parse},
    {"convert", false, true, run_convert},
    {"zone", false, false, run_zone},
};

}  // namespace

int run_time(int argc, char** argv)
{
    arguments args(argc, argv, "time");
    settings s;
    std::vector<std::string> operands;  // the operation first
    int layouts = 0;
    while (args.more()) {
        if (args.help()) {
            print_help();
            return exit_ok;
        }
        if (args.option(nullptr, "--format", s.format)) {
            s.format_given = true;
            ++layouts;
            continue;
        }
        if (args.option(nullptr, "--from", s.from) || args.option(nullptr, "--to", s.to)) {
            s.zone_given = true;
            continue;
        }
        const fixed_layout* flagged = nullptr;
        for (const fixed_layout& l : fixed_layouts)
            if (flagged == nullptr && args.flag(nullptr, l.flag))
                flagged = &l;
        if (flagged != nullptr) {
            s.fixed = flagged;
            ++layouts;
            continue;
        }
        operands.push_back(args.operand());
    }
    if (operands.empty())
        throw usage_error("time", "missing operation");
    const operation* chosen = nullptr;
    for (const operation& o : operations)
        if (operands.front() == o.name)
            chosen = &o;
    if (chosen == nullptr)
        throw usage_error("time", "unknown operation '" + operands.front() + "'");
    operands.erase(operands.begin());
    if (layouts > 1)
        throw usage_error("time", "give one layout: --format, --iso-ext, --iso, --simple or --utc-stamp");
    if (layouts > 0 && !chosen->takes_layout)
        throw usage_error("time", "a layout applies to format and parse only");
    if (s.zone_given && !chosen->takes_zones)
        throw usage_error("time", "options --from and --to apply to convert only");
    if (s.format_given && s.format.empty())
        throw usage_error("time", "the format is empty");
    if (s.fixed == nullptr)
        s.fixed = &fixed_layouts[0];
    return chosen->run(operands, s);
}

}  // namespace qxi18n_tool

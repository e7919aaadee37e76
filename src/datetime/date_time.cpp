// ptime to and from ASCII text in UTF-16: Boost date_time does the calendar and the fields, this
// file picks the Boost entry for each layout and turns failed parses into not_a_date_time.
#include "common/throw_exception.hpp"

#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion.hpp>
#include <fl/i18n/date_time.hpp>
#include <fl/i18n/facet.hpp>

#include <boost/date_time/gregorian/gregorian.hpp>
#include <boost/date_time/posix_time/posix_time.hpp>
#include <boost/thread/tss.hpp>

#include <cstdint>
#include <limits>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

namespace fl::i18n::date_time {

namespace {

namespace pt = boost::posix_time;

const std::string& utc_stamp_format()
{
    static const std::string format = "%Y-%m-%dT%H:%M:%SZ";
    return format;
}

// A utc stamp has its 'T' here; a longer text without it is refused before parsing.
constexpr std::size_t utc_stamp_t_index = 10;

// Date-time text is ASCII by rule: anything else throws CvtInvalidCharacter both ways.
ustring from_ascii(const std::string& text) { return fl::i18n::to_ustring(text, codecvt_ascii_to_ustring()); }
std::string to_ascii(const ustring& text) { return fl::i18n::to_string(text, codecvt_ustring_to_ascii()); }

// Which facet a cached locale holds: the two ISO input layouts, or a format string either way.
enum class facet_kind { read_iso, read_iso_extended, read_format, write_format };

// Making a Boost facet costs tens of microseconds (it builds its name tables and parsers) and
// using one well under one. A facet never changes once made, so each thread keeps the locales it
// built from its own std::locale: the answers are those of a fresh facet per call.
class thread_locales {
public:
    template <class Make>
    const std::locale& get(facet_kind kind, const std::string& format, Make make_facet)
    {
        for (const entry& e : entries_)
            if (e.kind == kind && e.format == format)
                return e.locale;
        // A caller cycling through many format strings must not grow the cache without bound.
        if (entries_.size() == capacity)
            entries_.erase(entries_.begin());
        entries_.push_back({kind, format, std::locale(facet::get_global_std_locale(), make_facet())});
        return entries_.back().locale;
    }

    static thread_locales& mine()
    {
        // Never destroyed: threads that end after static destruction still free their own cache.
        static auto* const per_thread = new boost::thread_specific_ptr<thread_locales>();
        if (per_thread->get() == nullptr)
            per_thread->reset(new thread_locales());
        return *per_thread->get();
    }

private:
    static constexpr std::size_t capacity = 16;
    struct entry {
        facet_kind kind;
        std::string format;
        std::locale locale;
    };
    std::vector<entry> entries_;
};

const std::locale& reading_locale(facet_kind kind, const std::string& format)
{
    return thread_locales::mine().get(kind, format, [kind, &format] {
        auto* made = kind == facet_kind::read_format ? new pt::time_input_facet(format) : new pt::time_input_facet();
        if (kind == facet_kind::read_iso)
            made->set_iso_format();
        else if (kind == facet_kind::read_iso_extended)
            made->set_iso_extended_format();
        return made;
    });
}

enum class end_rule { ignore_rest, nothing_after };

// Boost's operator>> swallows its parse exceptions and sets failbit.
pt::ptime read(const ustring& text, facet_kind kind, const std::string& format, end_rule rule)
{
    std::istringstream in(to_ascii(text));
    in.imbue(reading_locale(kind, format));
    pt::ptime result(pt::not_a_date_time);
    in >> result;
    if (in.fail())
        return pt::ptime(pt::not_a_date_time);
    if (rule == end_rule::nothing_after && in.peek() != std::istringstream::traits_type::eof())
        return pt::ptime(pt::not_a_date_time);
    return result;
}

pt::ptime read_simple(const ustring& text)
{
    const std::string ascii = to_ascii(text);
    const std::size_t blank = ascii.find(' ');
    const std::string date = ascii.substr(0, blank);
    const std::string time_of_day = blank == std::string::npos ? std::string() : ascii.substr(blank + 1);
    // The date first, so that its field errors win over those of the time of day. Like Boost's
    // time_from_string, an empty time of day throws std::out_of_range from the duration parser.
    const auto day = boost::date_time::parse_date<boost::gregorian::date>(date, boost::date_time::ymd_order_iso);
    return pt::ptime(day, boost::date_time::str_from_delimited_time_duration<pt::time_duration, char>(time_of_day));
}

ustring from_boost_text(const std::string& text) { return text.empty() ? ustring() : from_ascii(text); }

}  // namespace

pt::ptime to_ptime(const ustring& text, DateFormat format)
{
    if (text.empty())
        return pt::ptime(pt::not_a_date_time);
    switch (format) {
    case date_format_simple:
        return read_simple(text);
    case date_format_iso:
        return read(text, facet_kind::read_iso, std::string(), end_rule::ignore_rest);
    case date_format_iso_extended:
        return read(text, facet_kind::read_iso_extended, std::string(), end_rule::ignore_rest);
    case date_format_utc_stamp:
        if (text.size() > utc_stamp_t_index + 1 && text[utc_stamp_t_index] != u'T')
            return pt::ptime(pt::not_a_date_time);
        return read(text, facet_kind::read_format, utc_stamp_format(), end_rule::nothing_after);
    }
    return pt::ptime(pt::not_a_date_time);
}

pt::ptime to_ptime(const ustring& text, const std::string& format)
{
    if (text.empty() || format.empty())
        return pt::ptime(pt::not_a_date_time);
    return read(text, facet_kind::read_format, format, end_rule::ignore_rest);
}

ustring to_ustring(const pt::ptime& time, DateFormat format)
{
    switch (format) {
    case date_format_simple:
        return from_boost_text(pt::to_simple_string(time));
    case date_format_iso:
        return from_boost_text(pt::to_iso_string(time));
    case date_format_iso_extended:
        return from_boost_text(pt::to_iso_extended_string(time));
    case date_format_utc_stamp:
        return to_ustring(time, utc_stamp_format());
    }
    return ustring();
}

ustring to_ustring(const pt::ptime& time, const std::string& format)
{
    if (format.empty())
        return ustring();
    std::ostringstream out;
    out.imbue(thread_locales::mine().get(facet_kind::write_format, format,
                                         [&format] { return new pt::time_facet(format.c_str()); }));
    out << time;
    if (out.fail())
        return ustring();
    return from_boost_text(out.str());
}

std::time_t ptime_to_time_t(const pt::ptime& time)
{
    if (time.is_not_a_date_time())
        fl::detail::throw_exception(invalid_data_error());
    std::int64_t microseconds;
    if (time.is_pos_infinity())
        microseconds = std::numeric_limits<std::int64_t>::max();
    else if (time.is_neg_infinity())
        microseconds = std::numeric_limits<std::int64_t>::min();
    else
        microseconds = (time - pt::ptime(boost::gregorian::date(1970, 1, 1))).total_microseconds();
    // Integer division truncates toward zero: a time before 1970 with a fraction rounds toward 1970.
    return static_cast<std::time_t>(microseconds / 1000000);
}

}  // namespace fl::i18n::date_time

// date_time::to_ustring, to_ptime and ptime_to_time_t against raw Boost and timegm over seeded
// times from 1400 to 9999, the strict utc stamp, the failure paths and concurrent use.
#include <fl/i18n/conversion_error.hpp>
#include <fl/i18n/date_time.hpp>

#include <boost/date_time/gregorian/gregorian.hpp>
#include <boost/date_time/posix_time/posix_time.hpp>
#include <boost/lexical_cast.hpp>

#include <gtest/gtest.h>

#include <ctime>
#include <locale>
#include <random>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace {

namespace pt = boost::posix_time;
namespace dt = fl::i18n::date_time;
using boost::gregorian::date;
using fl::ustring;

const pt::ptime nadt(pt::not_a_date_time);
constexpr const char* stamp_format = "%Y-%m-%dT%H:%M:%SZ";

ustring u(const std::string& ascii) { return ustring(ascii.begin(), ascii.end()); }

pt::ptime at(int y, int mo, int d, int h, int mi, int s, long us = 0)
{
    return pt::ptime(date(static_cast<unsigned short>(y), static_cast<unsigned short>(mo), static_cast<unsigned short>(d)),
                     pt::time_duration(h, mi, s) + pt::microseconds(us));
}

// Raw Boost streams in the classic locale: the reference for the facet-based paths.
std::string boost_write(const pt::ptime& t, const char* format)
{
    std::ostringstream out;
    out.imbue(std::locale(std::locale::classic(), new pt::time_facet(format)));
    out << t;
    return out.str();
}

pt::ptime boost_read(const std::string& text, const char* format)
{
    std::istringstream in(text);
    in.imbue(std::locale(std::locale::classic(), new pt::time_input_facet(format)));
    pt::ptime t(pt::not_a_date_time);
    in >> t;
    return in.fail() ? nadt : t;
}

// Times spread evenly over Boost's calendar, to the microsecond; about a third before 1970.
std::vector<pt::ptime> seeded_times(std::uint32_t seed, int count)
{
    std::mt19937 rng(seed);
    std::uniform_int_distribution<long> day(date(1400, 1, 1).day_number(), date(9999, 12, 31).day_number());
    std::uniform_int_distribution<long long> tick(0, 86400LL * 1000000 - 1);
    std::vector<pt::ptime> times;
    for (int i = 0; i < count; ++i)
        times.emplace_back(date(static_cast<date::date_int_type>(day(rng))), pt::microseconds(tick(rng)));
    return times;
}

TEST(date_time_write, every_format_writes_as_boost)
{
    std::vector<pt::ptime> times = seeded_times(20240229, 1000);
    times.insert(times.end(), {nadt, pt::ptime(pt::pos_infin), pt::ptime(pt::neg_infin), pt::ptime(pt::min_date_time),
                               pt::ptime(pt::max_date_time), at(1969, 12, 31, 23, 59, 59, 500000)});
    for (const pt::ptime& t : times) {
        EXPECT_EQ(dt::to_ustring(t, dt::date_format_simple), u(pt::to_simple_string(t)));
        EXPECT_EQ(dt::to_ustring(t, dt::date_format_iso), u(pt::to_iso_string(t)));
        EXPECT_EQ(dt::to_ustring(t, dt::date_format_iso_extended), u(pt::to_iso_extended_string(t)));
        EXPECT_EQ(dt::to_ustring(t, dt::date_format_utc_stamp), u(boost_write(t, stamp_format)));
        EXPECT_EQ(dt::to_ustring(t, "%d.%m.%Y %H:%M:%S%F %a %b"), u(boost_write(t, "%d.%m.%Y %H:%M:%S%F %a %b")));
    }
    const pt::ptime t = at(2002, 1, 31, 10, 0, 1);
    for (const int unknown : {4, -1}) EXPECT_EQ(dt::to_ustring(t, static_cast<dt::DateFormat>(unknown)), u"");
    EXPECT_EQ(dt::to_ustring(t, std::string()), u"");
    EXPECT_THROW(dt::to_ustring(t, "%Y \xC3\xA9t\xC3\xA9"), fl::i18n::CvtInvalidCharacter);
}

TEST(date_time_read, every_format_reads_what_it_writes)
{
    for (const pt::ptime& t : seeded_times(19700101, 1000)) {
        const std::string simple = pt::to_simple_string(t), iso = pt::to_iso_string(t), ext = pt::to_iso_extended_string(t);
        EXPECT_EQ(dt::to_ptime(u(simple), dt::date_format_simple), t) << simple;
        EXPECT_EQ(dt::to_ptime(u(iso), dt::date_format_iso), t) << iso;
        EXPECT_EQ(dt::to_ptime(u(ext), dt::date_format_iso_extended), t) << ext;
        // The stamp has whole seconds only.
        const pt::ptime seconds(t.date(), pt::seconds(t.time_of_day().total_seconds()));
        EXPECT_EQ(dt::to_ptime(dt::to_ustring(t, dt::date_format_utc_stamp), dt::date_format_utc_stamp), seconds);
    }
}

// Empty text or format, and unknown layouts, give not_a_date_time; the utc stamp must be the
// whole text where the format strings and ISO layouts read as far as they match; non-ASCII throws.
TEST(date_time_read, failure_paths_and_the_strict_utc_stamp)
{
    for (const int format : {0, 1, 2, 3, 4, -1})
        EXPECT_TRUE(dt::to_ptime(ustring(), static_cast<dt::DateFormat>(format)).is_not_a_date_time()) << format;
    EXPECT_TRUE(dt::to_ptime(u"2024-01-02T10:00:00", static_cast<dt::DateFormat>(4)).is_not_a_date_time());
    EXPECT_TRUE(dt::to_ptime(ustring(), std::string(stamp_format)).is_not_a_date_time());
    EXPECT_TRUE(dt::to_ptime(u"2024-01-02T10:00:00Z", std::string()).is_not_a_date_time());
    const std::pair<const char*, pt::ptime> stamps[] = {
        {"2024-01-02T10:00:00Z", at(2024, 1, 2, 10, 0, 0)},
        {"2024-01-02 10:00:00Z", nadt},  // index 10 is not 'T'
        {"2024-01-02T10:00:00Z ", nadt}, // a trailing blank
        {"2024-01-02T10:00:00Z junk", nadt},
        {"2024-02-30T00:00:00Z", nadt},  // no such day
        {"2024-01-02", boost_read("2024-01-02", stamp_format)},
    };
    for (const auto& [text, stamp] : stamps) {
        EXPECT_EQ(dt::to_ptime(u(text), dt::date_format_utc_stamp), stamp) << text;
        EXPECT_EQ(dt::to_ptime(u(text), std::string(stamp_format)), boost_read(text, stamp_format)) << text;
    }
    EXPECT_EQ(dt::to_ptime(u"2024-01-02T10:00:00Z junk", std::string(stamp_format)), at(2024, 1, 2, 10, 0, 0));
    EXPECT_EQ(dt::to_ptime(u"2024-01-02T10:00:00 junk", dt::date_format_iso_extended), at(2024, 1, 2, 10, 0, 0));
    EXPECT_EQ(dt::to_ptime(u"20240102T100000.25 junk", dt::date_format_iso), at(2024, 1, 2, 10, 0, 0, 250000));
    EXPECT_TRUE(dt::to_ptime(u"2024-01-02T10:00:00", dt::date_format_iso).is_not_a_date_time());

    // The 'T' check comes before the ASCII check: only a text that passes it reaches the converter.
    EXPECT_TRUE(dt::to_ptime(u"2024-01-02x\u00E9", dt::date_format_utc_stamp).is_not_a_date_time());
    EXPECT_THROW(dt::to_ptime(u"2024-01-02T\u00E9", dt::date_format_utc_stamp), fl::i18n::CvtInvalidCharacter);
    EXPECT_THROW(dt::to_ptime(u"2024-01-02\u00E9", dt::date_format_utc_stamp), fl::i18n::CvtInvalidCharacter);
    for (const dt::DateFormat format : {dt::date_format_simple, dt::date_format_iso, dt::date_format_iso_extended})
        EXPECT_THROW(dt::to_ptime(u"2024-01-02T10:00:00\u00E9", format), fl::i18n::CvtInvalidCharacter) << format;
    EXPECT_THROW(dt::to_ptime(u"2024-01-02T10:00:00\u00E9", std::string(stamp_format)), fl::i18n::CvtInvalidCharacter);
}

template <class E>
bool is(const std::exception& e)
{
    return dynamic_cast<const E*>(&e) != nullptr;
}

TEST(date_time_read, simple_form_lets_field_errors_through)
{
    const std::pair<const char*, bool (*)(const std::exception&)> rows[] = {
        {"2024-Feb-30 00:00:00", is<boost::gregorian::bad_day_of_month>},
        {"2024-Jan-32", is<boost::gregorian::bad_day_of_month>},
        {"1399-Jan-01 00:00:00", is<boost::gregorian::bad_year>},
        {"2024-13-01", is<boost::gregorian::bad_month>},
        {"abcd-Jan-01", is<boost::bad_lexical_cast>},
        {"2024-Jan-01 1x:00:00", is<boost::bad_lexical_cast>},
        {"not-a-date-time", is<boost::bad_lexical_cast>},
        {"2024-Jan-02", is<std::out_of_range>},  // no time of day, as with time_from_string
    };
    for (const auto& [text, expected] : rows) {
        try {
            dt::to_ptime(u(text), dt::date_format_simple);
            ADD_FAILURE() << text << " did not throw";
        } catch (const std::exception& e) {
            EXPECT_TRUE(expected(e)) << text << ": " << e.what();
        }
    }
    EXPECT_EQ(dt::to_ptime(u"2024-01-02 10:00:00.5", dt::date_format_simple), at(2024, 1, 2, 10, 0, 0, 500000));
}

// More formats than a thread keeps facets for, twice round, interleaved with the fixed layouts.
TEST(date_time, many_format_strings_in_turn_each_act_as_fresh_ones)
{
    const pt::ptime t = at(1969, 7, 20, 20, 17, 40, 125000);
    for (int round = 0; round < 2; ++round)
        for (int i = 0; i < 24; ++i) {
            const std::string format = "%Y-%m-%d" + std::string(static_cast<std::size_t>(i), '_') + "%H:%M:%S%F";
            const std::string text = boost_write(t, format.c_str());
            ASSERT_EQ(dt::to_ustring(t, format), u(text)) << format;
            ASSERT_EQ(dt::to_ptime(u(text), format), t) << format;
            ASSERT_EQ(dt::to_ptime(u"19690720T201740.125", dt::date_format_iso), t);
        }
}

TEST(ptime_to_time_t, truncates_toward_zero_maps_infinities_and_refuses_not_a_date_time)
{
    const std::pair<pt::ptime, std::time_t> rows[] = {
        {at(1970, 1, 1, 0, 0, 0), 0},          {at(1969, 12, 31, 23, 59, 59, 500000), 0},
        {at(1969, 12, 31, 23, 59, 58, 250000), -1}, {at(1970, 1, 1, 0, 0, 0, 999999), 0},
        {at(2038, 1, 19, 3, 14, 8), 2147483648},    {pt::ptime(pt::pos_infin), 9223372036854},
        {pt::ptime(pt::neg_infin), -9223372036854},
    };
    for (const auto& [time, expected] : rows) EXPECT_EQ(dt::ptime_to_time_t(time), expected) << time;
    for (const pt::ptime& t : seeded_times(42, 1000)) {
        std::tm fields = pt::to_tm(t);
        const std::time_t whole = timegm(&fields);
        EXPECT_EQ(dt::ptime_to_time_t(t), whole + (whole < 0 && t.time_of_day().fractional_seconds() != 0 ? 1 : 0)) << t;
    }
    try {
        dt::ptime_to_time_t(nadt);
        ADD_FAILURE() << "no exception";
    } catch (const dt::date_time_exception_base& e) {
        EXPECT_STREQ(e.what(), "fl:i18n:date_time:invalid_data_error");
        EXPECT_EQ(e.get_id(), 1);
        EXPECT_TRUE(is<dt::invalid_data_error>(e));
        EXPECT_NE(dynamic_cast<const boost::exception_detail::clone_base*>(&e), nullptr);
    }
}

TEST(date_time, concurrent_calls_agree_with_boost)
{
    std::vector<std::thread> threads;
    for (std::uint32_t seed = 1; seed <= 4; ++seed)
        threads.emplace_back([seed] {
            for (const pt::ptime& t : seeded_times(seed, 200)) {
                const ustring text = dt::to_ustring(t, dt::date_format_iso_extended);
                EXPECT_EQ(text, u(pt::to_iso_extended_string(t)));
                EXPECT_EQ(dt::to_ptime(text, dt::date_format_iso_extended), t);
            }
        });
    for (std::thread& thread : threads) thread.join();
}

}  // namespace

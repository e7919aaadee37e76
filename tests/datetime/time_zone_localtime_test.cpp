// from_utc and to_utc against the system's zone database: localtime_r under TZ, in a child
// process per zone so that this process's TZ never changes.
#include <fl/i18n/time_zone.hpp>

#include <gtest/gtest.h>

#include <boost/date_time/posix_time/posix_time.hpp>

#include <unicode/basictz.h>
#include <unicode/timezone.h>

#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>

namespace {

namespace pt = boost::posix_time;
namespace tz = fl::i18n::time_zone;

const pt::ptime epoch(boost::gregorian::date(1970, 1, 1));
constexpr std::int64_t hour = 3600;
constexpr std::size_t hours_of_2024 = 366 * 24;

std::int64_t seconds_of(const char* iso_extended) { return (pt::from_iso_extended_string(iso_extended) - epoch).total_seconds(); }

// ICU's changes of offset between two instants, in seconds since 1970.
std::vector<std::int64_t> icu_changes(const char* id, std::int64_t from, std::int64_t to)
{
    const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(icu::UnicodeString(id, -1, US_INV)));
    const auto* basic = dynamic_cast<const icu::BasicTimeZone*>(zone.get());
    std::vector<std::int64_t> changes;
    icu::TimeZoneTransition t;
    for (double at = static_cast<double>(from) * 1000.0;
         basic != nullptr && basic->getNextTransition(at, false, t) && t.getTime() < static_cast<double>(to) * 1000.0;
         at = t.getTime())
        changes.push_back(static_cast<std::int64_t>(t.getTime() / 1000.0));
    return changes;
}

// Every hour of 2024 first, then every minute of two hours and the seconds either side of each
// of ICU's changes in 2024, and noon of every seventh day from 1971 to 2037.
std::vector<std::int64_t> instants_for(const char* id)
{
    std::vector<std::int64_t> seconds;
    const std::int64_t start = seconds_of("2024-01-01T00:00:00");
    for (std::size_t h = 0; h < hours_of_2024; ++h) seconds.push_back(start + static_cast<std::int64_t>(h) * hour);
    for (const std::int64_t change : icu_changes(id, start, start + static_cast<std::int64_t>(hours_of_2024) * hour)) {
        for (std::int64_t m = -120; m <= 120; ++m) seconds.push_back(change + 60 * m);
        for (const std::int64_t s : {-2, -1, 1, 2}) seconds.push_back(change + s);
    }
    for (std::int64_t s = seconds_of("1971-01-01T12:00:00"); s < seconds_of("2038-01-01T00:00:00"); s += 7 * 24 * hour)
        seconds.push_back(s);
    return seconds;
}

// tm_gmtoff of each instant under TZ=":id", computed by a child process; empty if it failed.
std::vector<long> system_offsets(const char* id, const std::vector<std::int64_t>& seconds)
{
    int fds[2];
    if (::pipe(fds) != 0) return {};
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::close(fds[0]);
        ::setenv("TZ", (std::string(":") + id).c_str(), 1);
        ::tzset();
        std::FILE* out = ::fdopen(fds[1], "wb");
        bool written = out != nullptr;
        for (const std::int64_t s : seconds) {
            const std::time_t t = static_cast<std::time_t>(s);
            std::tm fields{};
            const long offset = ::localtime_r(&t, &fields) != nullptr ? fields.tm_gmtoff : LONG_MIN;
            written = written && std::fwrite(&offset, sizeof offset, 1, out) == 1;
        }
        ::_exit(written && std::fclose(out) == 0 ? 0 : 1);
    }
    ::close(fds[1]);
    std::vector<long> offsets(seconds.size());
    std::FILE* in = ::fdopen(fds[0], "rb");
    const std::size_t got = in != nullptr ? std::fread(offsets.data(), sizeof(long), offsets.size(), in) : 0;
    if (in != nullptr) std::fclose(in);
    int status = 0;
    if (pid < 0 || ::waitpid(pid, &status, 0) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0 || got != offsets.size())
        return {};
    return offsets;
}

// The number of changes in 2024 is the system's own count, so ICU cannot miss one unseen.
TEST(TimeZoneSystemDatabase, FromUtcAgreesWithLocaltimeAndToUtcRoundTrips)
{
    const std::pair<const char*, int> zones[] = {
        {"Europe/Berlin", 2},     {"America/New_York", 2}, {"Australia/Lord_Howe", 2}, {"Asia/Kolkata", 0},
        {"America/Sao_Paulo", 0}, {"Pacific/Apia", 0},     {"Europe/London", 2},       {"UTC", 0},
    };
    for (const auto& [id, changes_in_2024] : zones) {
        SCOPED_TRACE(id);
        if (::access((std::string("/usr/share/zoneinfo/") + id).c_str(), R_OK) != 0)
            GTEST_SKIP() << "the system's zone database (package tzdata) lacks " << id;
        const std::vector<std::int64_t> seconds = instants_for(id);
        const std::vector<long> offsets = system_offsets(id, seconds);
        ASSERT_EQ(offsets.size(), seconds.size()) << "the child process failed";
        // Round trips hold away from a change, where no wall-clock time is skipped or repeated.
        const std::vector<std::int64_t> changes = icu_changes(id, seconds_of("1970-06-01T00:00:00"), seconds_of("2038-06-01T00:00:00"));
        const tz::timezone zone(id);
        int mismatches = 0, system_changes = 0;
        for (std::size_t i = 0; i < seconds.size(); ++i) {
            system_changes += i > 0 && i < hours_of_2024 && offsets[i] != offsets[i - 1];
            bool near_change = false;
            for (const std::int64_t change : changes)
                near_change = near_change || (seconds[i] > change - 3 * hour && seconds[i] < change + 3 * hour);
            for (const auto fraction : {pt::microseconds(0), pt::microseconds(250000)}) {
                const pt::ptime utc = epoch + pt::seconds(seconds[i]) + fraction, local = tz::from_utc(utc, zone);
                const bool wrong = local != utc + pt::seconds(offsets[i]) || (!near_change && tz::to_utc(local, zone) != utc);
                if (wrong && ++mismatches <= 5)
                    ADD_FAILURE() << utc << " gives " << local << ", localtime_r offset " << offsets[i] << " s";
            }
        }
        EXPECT_EQ(mismatches, 0);
        EXPECT_EQ(system_changes, changes_in_2024);
    }
}

}  // namespace

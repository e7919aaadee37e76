// Registers the time-zone benchmarks and prints their table: the library beside ICU's getOffset
// with the same arithmetic by hand, and beside libc's localtime_r on the system's zone data.
#include "timezone_benchmarks.hpp"

#include "allocation_counter.hpp"

#include <fl/i18n/time_zone.hpp>

#include <boost/date_time/gregorian/gregorian.hpp>
#include <boost/date_time/posix_time/posix_time.hpp>

#include <unicode/timezone.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace qxbench {
namespace {

namespace pt = boost::posix_time;
namespace tz = fl::i18n::time_zone;

// The library adds an any_cast, the epoch and the fraction around one getOffset.
constexpr double zone_icu_ratio_limit = 1.5;
constexpr const char* prefix = "tz::";
constexpr std::size_t instant_count = 64;
const pt::ptime epoch(boost::gregorian::date(1970, 1, 1));

const char* const zones[] = {"Europe/Berlin", "America/New_York", "Asia/Kolkata", "Australia/Lord_Howe"};

// Spread over 2024 and its two changes of offset, each with its own fraction of a second.
const std::vector<pt::ptime>& instants()
{
    static const std::vector<pt::ptime> list = [] {
        std::vector<pt::ptime> made;
        const pt::ptime start(boost::gregorian::date(2024, 1, 1), pt::microseconds(500000));
        for (std::size_t k = 0; k < instant_count; ++k) {
            const auto step = static_cast<long>(k);
            made.push_back(start + pt::hours(137 * step) + pt::microseconds(12345 * step));
        }
        return made;
    }();
    return list;
}

std::unique_ptr<icu::TimeZone> icu_zone(const char* id)
{
    return std::unique_ptr<icu::TimeZone>(icu::TimeZone::createTimeZone(icu::UnicodeString(id, -1, US_INV)));
}

// What a caller holding an ICU zone writes: the offset at the whole second, the fraction kept.
pt::ptime icu_shift(const icu::TimeZone& zone, const pt::ptime& time, bool is_local)
{
    const std::int64_t us = (time - epoch).total_microseconds();
    int32_t raw = 0;
    int32_t dst = 0;
    UErrorCode status = U_ZERO_ERROR;
    zone.getOffset(static_cast<double>(us / 1000000) * 1000.0, is_local, raw, dst, status);
    if (U_FAILURE(status))
        throw std::runtime_error(u_errorName(status));
    const pt::time_duration offset = pt::milliseconds(raw + dst);
    return is_local ? time - offset : time + offset;
}

pt::ptime libc_from_utc(const pt::ptime& time)
{
    const std::time_t seconds = static_cast<std::time_t>((time - epoch).total_microseconds() / 1000000);
    std::tm fields{};
    if (localtime_r(&seconds, &fields) == nullptr)
        throw std::runtime_error("localtime_r failed");
    return time + pt::seconds(fields.tm_gmtoff);
}

// TZ names the zone for one run of the localtime_r peer; the process's own value comes back after.
class tz_variable {
public:
    explicit tz_variable(const char* zone)
    {
        if (const char* old = std::getenv("TZ"))
            saved_ = old;
        setenv("TZ", (std::string(":") + zone).c_str(), 1);
        tzset();
    }
    ~tz_variable()
    {
        if (saved_)
            setenv("TZ", saved_->c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }
    tz_variable(const tz_variable&) = delete;
    tz_variable& operator=(const tz_variable&) = delete;

private:
    std::optional<std::string> saved_;
};

// Registers "row/impl": `make()` gives what one run needs (a zone, the TZ variable), `convert`
// turns instant i of `inputs` with it, and every answer must equal `expected[i]` before timing.
template <class Make, class Convert>
void add(const std::string& row, const char* impl, std::vector<pt::ptime> inputs, std::vector<pt::ptime> expected,
         Make make, Convert convert)
{
    register_row(row, impl, [=](benchmark::State& state) {
        const auto held = make();
        for (std::size_t i = 0; i < inputs.size(); ++i)
            if (convert(*held, inputs[i]) != expected[i])
                return state.SkipWithError("answer differs from ICU's");
        const std::uint64_t before = allocations_on_this_thread();
        for (auto _ : state)
            for (const pt::ptime& input : inputs) {
                pt::ptime answer = convert(*held, input);
                benchmark::DoNotOptimize(answer);
            }
        count_allocations(state, before);
        state.counters["items"] = static_cast<double>(inputs.size());
    });
}

void add_conversion_rows(const char* zone)
{
    const std::unique_ptr<icu::TimeZone> reference = icu_zone(zone);
    std::vector<pt::ptime> local, utc;
    for (const pt::ptime& t : instants())
        local.push_back(icu_shift(*reference, t, false));
    for (const pt::ptime& t : local)
        utc.push_back(icu_shift(*reference, t, true));
    auto library = [zone] { return std::make_unique<tz::timezone>(zone); };
    auto raw = [zone] { return icu_zone(zone); };

    const std::string from = std::string(prefix) + "from_utc/" + zone;
    add(from, "qxi18n", instants(), local, library,
        [](const tz::timezone& z, const pt::ptime& t) { return tz::from_utc(t, z); });
    add(from, "icu", instants(), local, raw,
        [](const icu::TimeZone& z, const pt::ptime& t) { return icu_shift(z, t, false); });
    add(from, "localtime_r", instants(), local, [zone] { return std::make_unique<tz_variable>(zone); },
        [](const tz_variable&, const pt::ptime& t) { return libc_from_utc(t); });

    const std::string to = std::string(prefix) + "to_utc/" + zone;
    add(to, "qxi18n", local, utc, library, [](const tz::timezone& z, const pt::ptime& t) { return tz::to_utc(t, z); });
    add(to, "icu", local, utc, raw, [](const icu::TimeZone& z, const pt::ptime& t) { return icu_shift(z, t, true); });
}

void add_construction_rows(const char* zone)
{
    const std::string row = std::string(prefix) + "timezone/" + zone;
    const std::string expected_id(zone);
    const fl::ustring id(expected_id.begin(), expected_id.end());
    benchmark::RegisterBenchmark((row + "/qxi18n").c_str(), [id](benchmark::State& state) {
        for (auto _ : state) {
            tz::timezone made(id);
            benchmark::DoNotOptimize(made);
        }
    });
    benchmark::RegisterBenchmark((row + "/icu").c_str(), [id](benchmark::State& state) {
        for (auto _ : state) {
            const std::unique_ptr<icu::TimeZone> made(
                icu::TimeZone::createTimeZone(icu::UnicodeString(false, id.data(), static_cast<int32_t>(id.size()))));
            benchmark::DoNotOptimize(made.get());
        }
    });
}

bool is_timezone_row(const std::string& name) { return name.rfind(prefix, 0) == 0; }

bool has_icu_target(const std::string& row) { return row.find("timezone/") == std::string::npos; }

int print_timezone_table(const cpu_run_table& table, std::ostream& out)
{
    char line[640];
    std::snprintf(line, sizeof line,
                  "\nTime-zone rows: qxi18n CPU time per conversion (best repetition, %zu instants of 2024 per\n"
                  "call) or per construction, its operator new calls per item, and ratio = qxi18n / peer. icu\n"
                  "is getOffset on a zone the caller holds, with the same arithmetic by hand; localtime_r reads\n"
                  "the system's zone data under TZ. Target: from_utc and to_utc within %.2f of icu (marked *);\n"
                  "the other ratios are informational. ! marks a miss.\n\n",
                  instant_count, zone_icu_ratio_limit);
    out << line;
    const char* format = "%-10s %-20s %10s %7s %9s %14s  %s\n";
    std::snprintf(line, sizeof line, format, "operation", "zone", "qxi18n", "allocs", "vs icu ", "vs localtime_r ",
                  "targets");
    out << line;
    int misses = 0;
    for (const std::string& row : table.rows()) {
        const std::size_t slash = row.find('/');
        const auto* mine = table.find(row, "qxi18n");
        const std::optional<double> ours = table.time_of(row, "qxi18n");
        const double items = mine != nullptr ? mine->items : 1;
        std::string cells[2];
        bool miss = false;
        const char* peers[] = {"icu", "localtime_r"};
        for (std::size_t i = 0; i < 2; ++i) {
            const std::optional<double> theirs = table.time_of(row, peers[i]);
            if (!ours || !theirs) {
                cells[i] = "- ";
                continue;
            }
            const double ratio = *ours / *theirs;
            const bool targeted = i == 0 && has_icu_target(row);
            miss = miss || (targeted && ratio > zone_icu_ratio_limit);
            char cell[16];
            std::snprintf(cell, sizeof cell, "%.2f%s", ratio, targeted && ratio > zone_icu_ratio_limit ? "!" : targeted ? "*" : " ");
            cells[i] = cell;
        }
        char allocs[16] = "-";
        if (mine != nullptr && mine->allocations >= 0)
            std::snprintf(allocs, sizeof allocs, "%.1f", mine->allocations / items);
        misses += miss ? 1 : 0;
        const std::string op = row.substr(std::strlen(prefix), slash - std::strlen(prefix));
        std::snprintf(line, sizeof line, format, op.c_str(), row.substr(slash + 1).c_str(),
                      ours ? format_time(*ours / items).c_str() : "-", allocs, cells[0].c_str(), cells[1].c_str(),
                      !ours ? "no result" : miss ? "MISS ICU" : has_icu_target(row) ? "ok" : "ok, informational");
        out << line;
    }
    out << "\n" << misses << " of " << table.size() << " time-zone rows miss a target.\n";
    return misses;
}

}  // namespace

void register_timezone_benchmarks()
{
    for (const char* zone : zones)
        add_conversion_rows(zone);
    for (const char* zone : zones)
        add_construction_rows(zone);
}

std::unique_ptr<table_family> timezone_family()
{
    return cpu_table_family(is_timezone_row, print_timezone_table);
}

}  // namespace qxbench

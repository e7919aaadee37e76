// Registers the date-time text benchmarks and prints their table: the library beside the Boost
// calls a caller would otherwise make, and libc's strftime / strptime.
#include "datetime_benchmarks.hpp"

#include "allocation_counter.hpp"

#include <fl/i18n/date_time.hpp>

#include <boost/date_time/gregorian/gregorian.hpp>
#include <boost/date_time/posix_time/posix_time.hpp>

#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <locale>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace qxbench {
namespace {

namespace pt = boost::posix_time;
namespace dt = fl::i18n::date_time;

// The library wraps one Boost call (or one Boost stream) and an ASCII copy.
constexpr double boost_ratio_limit = 1.5;
constexpr const char* prefix = "dt::";
constexpr const char* stamp_format = "%Y-%m-%dT%H:%M:%SZ";
const pt::ptime epoch(boost::gregorian::date(1970, 1, 1));

const std::vector<pt::ptime>& times()
{
    static const std::vector<pt::ptime> list = [] {
        using boost::gregorian::date;
        const std::array<pt::ptime, 8> fixed{{
            pt::ptime(date(2024, 3, 15), pt::time_duration(12, 34, 56) + pt::microseconds(789012)),
            pt::ptime(date(1969, 12, 31), pt::time_duration(23, 59, 59) + pt::microseconds(500000)),
            pt::ptime(date(1400, 1, 1), pt::time_duration(0, 0, 1) + pt::microseconds(1)),
            pt::ptime(date(9999, 12, 31), pt::time_duration(23, 59, 59) + pt::microseconds(999999)),
            pt::ptime(date(2000, 2, 29), pt::time_duration(6, 7, 8) + pt::microseconds(90)),
            pt::ptime(date(1815, 6, 18), pt::time_duration(11, 30, 0) + pt::microseconds(250000)),
            pt::ptime(date(2038, 1, 19), pt::time_duration(3, 14, 8) + pt::microseconds(123456)),
            pt::ptime(date(1970, 1, 1), pt::time_duration(0, 0, 0) + pt::microseconds(1)),
        }};
        return std::vector<pt::ptime>(fixed.begin(), fixed.end());
    }();
    return list;
}

fl::ustring widen(const std::string& ascii) { return fl::ustring(ascii.begin(), ascii.end()); }

std::int64_t microseconds_of(const pt::ptime& t) { return (t - epoch).total_microseconds(); }

// --- libc peers ---

std::string strftime_iso_extended(const pt::ptime& t)
{
    const std::int64_t us = microseconds_of(t);
    std::time_t seconds = static_cast<std::time_t>(us / 1000000);
    long fraction = static_cast<long>(us % 1000000);
    if (fraction < 0) {
        fraction += 1000000;
        --seconds;
    }
    std::tm fields{};
    gmtime_r(&seconds, &fields);
    char buffer[48];
    const std::size_t length = std::strftime(buffer, sizeof buffer, "%Y-%m-%dT%H:%M:%S", &fields);
    if (fraction != 0)
        std::snprintf(buffer + length, sizeof buffer - length, ".%06ld", fraction);
    return buffer;
}

// strptime and timegm, then the fraction Boost writes after a '.', in microseconds since 1970;
// -1 when the text does not parse.
std::int64_t strptime_microseconds(const std::string& text, const char* format)
{
    std::tm fields{};
    const char* rest = strptime(text.c_str(), format, &fields);
    if (rest == nullptr)
        return -1;
    std::int64_t fraction = 0;
    if (*rest == '.')
        fraction = std::strtol(rest + 1, nullptr, 10);
    const std::int64_t seconds = timegm(&fields);
    return seconds * 1000000 + fraction;
}

pt::ptime boost_stream_read(const std::string& text, pt::time_input_facet* facet)
{
    std::istringstream in(text);
    in.imbue(std::locale(std::locale::classic(), facet));
    pt::ptime result(pt::not_a_date_time);
    in >> result;
    return in.fail() ? pt::ptime(pt::not_a_date_time) : result;
}

// --- registration ---

// Registers "row/impl" running `call(i)` over every time of the batch; `check(i, answer)` must
// hold for each before the timing starts.
template <class Call, class Check>
void add(const std::string& row, const char* impl, Call call, Check check)
{
    register_row(row, impl, [call, check](benchmark::State& state) {
        const std::size_t count = times().size();
        for (std::size_t i = 0; i < count; ++i)
            if (!check(i, call(i))) {
                state.SkipWithError("answer differs from the expected one");
                return;
            }
        const std::uint64_t before = allocations_on_this_thread();
        for (auto _ : state)
            for (std::size_t i = 0; i < count; ++i) {
                auto answer = call(i);
                benchmark::DoNotOptimize(answer);
            }
        count_allocations(state, before);
        state.counters["items"] = static_cast<double>(count);
    });
}

// The texts of one layout, as std::string for the peers and as ustring for the library.
struct texts {
    std::vector<std::string> ascii;
    std::vector<fl::ustring> utf16;
};

texts texts_of(std::string (*write)(const pt::ptime&))
{
    texts result;
    for (const pt::ptime& t : times()) {
        result.ascii.push_back(write(t));
        result.utf16.push_back(widen(result.ascii.back()));
    }
    return result;
}

std::string write_stamp(const pt::ptime& t)
{
    std::ostringstream out;
    out.imbue(std::locale(std::locale::classic(), new pt::time_facet(stamp_format)));
    out << t;
    return out.str();
}

std::string strftime_stamp(const pt::ptime& t)
{
    const std::time_t seconds = static_cast<std::time_t>((t - epoch).total_seconds()) -
                                (t < epoch && t.time_of_day().fractional_seconds() != 0 ? 1 : 0);
    std::tm fields{};
    gmtime_r(&seconds, &fields);
    char buffer[32];
    return std::string(buffer, std::strftime(buffer, sizeof buffer, "%Y-%m-%dT%H:%M:%SZ", &fields));
}

void add_write_rows()
{
    const std::string row = std::string(prefix) + "to_ustring/iso_extended";
    auto expected = [](std::size_t i) { return pt::to_iso_extended_string(times()[i]); };
    add(row, "qxi18n", [](std::size_t i) { return dt::to_ustring(times()[i], dt::date_format_iso_extended); },
        [expected](std::size_t i, const fl::ustring& s) { return s == widen(expected(i)); });
    add(row, "boost", [](std::size_t i) { return pt::to_iso_extended_string(times()[i]); },
        [expected](std::size_t i, const std::string& s) { return s == expected(i); });
    add(row, "strftime", [](std::size_t i) { return strftime_iso_extended(times()[i]); },
        [expected](std::size_t i, const std::string& s) { return s == expected(i); });

    const std::string stamp_row = std::string(prefix) + "to_ustring/utc_stamp";
    auto stamp = [](std::size_t i) { return write_stamp(times()[i]); };
    add(stamp_row, "qxi18n", [](std::size_t i) { return dt::to_ustring(times()[i], dt::date_format_utc_stamp); },
        [stamp](std::size_t i, const fl::ustring& s) { return s == widen(stamp(i)); });
    add(stamp_row, "boost_stream", stamp, [stamp](std::size_t i, const std::string& s) { return s == stamp(i); });
    add(stamp_row, "strftime", [](std::size_t i) { return strftime_stamp(times()[i]); },
        [stamp](std::size_t i, const std::string& s) { return s == stamp(i); });
}

// One to_ptime row: the library, then each Boost peer, then strptime with `libc_format`.
void add_read_row(const char* name, dt::DateFormat format, std::string (*write)(const pt::ptime&),
                  std::vector<std::pair<const char*, std::function<pt::ptime(const std::string&)>>> boost_peers,
                  const char* libc_format, bool whole_seconds)
{
    const std::string row = std::string(prefix) + "to_ptime/" + name;
    auto input = std::make_shared<const texts>(texts_of(write));
    auto expected = [whole_seconds](std::size_t i) {
        const pt::ptime& t = times()[i];
        return whole_seconds ? pt::ptime(t.date(), pt::seconds(t.time_of_day().total_seconds())) : t;
    };
    auto same = [expected](std::size_t i, const pt::ptime& answer) { return answer == expected(i); };
    add(row, "qxi18n", [input, format](std::size_t i) { return dt::to_ptime(input->utf16[i], format); }, same);
    for (auto& [impl, read] : boost_peers)
        add(row, impl, [input, read = read](std::size_t i) { return read(input->ascii[i]); }, same);
    add(row, "strptime", [input, libc_format](std::size_t i) { return strptime_microseconds(input->ascii[i], libc_format); },
        [expected](std::size_t i, std::int64_t us) { return us == microseconds_of(expected(i)); });
}

pt::ptime stream_iso(const std::string& text)
{
    auto* facet = new pt::time_input_facet();
    facet->set_iso_format();
    return boost_stream_read(text, facet);
}

pt::ptime stream_iso_extended(const std::string& text)
{
    auto* facet = new pt::time_input_facet();
    facet->set_iso_extended_format();
    return boost_stream_read(text, facet);
}

pt::ptime stream_stamp(const std::string& text) { return boost_stream_read(text, new pt::time_input_facet(stamp_format)); }

void add_read_rows()
{
    add_read_row("simple", dt::date_format_simple, [](const pt::ptime& t) { return pt::to_simple_string(t); },
                 {{"boost", [](const std::string& s) { return pt::time_from_string(s); }}},
                 "%Y-%b-%d %H:%M:%S", false);
    add_read_row("iso", dt::date_format_iso, [](const pt::ptime& t) { return pt::to_iso_string(t); },
                 {{"boost", [](const std::string& s) { return pt::from_iso_string(s); }}, {"boost_stream", stream_iso}}, "%Y%m%dT%H%M%S", false);
    add_read_row("iso_extended", dt::date_format_iso_extended,
                 [](const pt::ptime& t) { return pt::to_iso_extended_string(t); },
                 {{"boost", [](const std::string& s) { return pt::from_iso_extended_string(s); }},
                  {"boost_stream", stream_iso_extended}},
                 "%Y-%m-%dT%H:%M:%S", false);
    add_read_row("utc_stamp", dt::date_format_utc_stamp, write_stamp, {{"boost_stream", stream_stamp}},
                 "%Y-%m-%dT%H:%M:%SZ", true);
}

bool is_datetime_row(const std::string& name) { return name.rfind(prefix, 0) == 0; }

int print_datetime_table(const cpu_run_table& table, std::ostream& out)
{
    char line[640];
    std::snprintf(line, sizeof line,
                  "\nDate-time rows: qxi18n CPU time per text (best repetition, eight texts per call), its\n"
                  "operator new calls per text, and ratio = qxi18n / peer. boost is the string function\n"
                  "(to_iso_extended_string, time_from_string, from_iso_string, from_iso_extended_string),\n"
                  "boost_stream a std::istringstream with a time_input_facet, libc gmtime_r + strftime or\n"
                  "strptime + timegm. Target: within %.2f of Boost's string function, or of the stream where\n"
                  "Boost has none (the target marked *); the other ratios are informational. ! marks a miss.\n\n",
                  boost_ratio_limit);
    out << line;
    const char* format = "%-26s %-14s %10s %7s %10s %13s %10s  %s\n";
    std::snprintf(line, sizeof line, format, "operation", "format", "qxi18n", "allocs", "vs boost ", "vs boost_stream",
                  "vs libc ", "targets");
    out << line;
    int misses = 0;
    for (const std::string& row : table.rows()) {
        const std::size_t slash = row.rfind('/');
        const auto* mine = table.find(row, "qxi18n");
        const std::optional<double> ours = table.time_of(row, "qxi18n");
        const double items = mine != nullptr ? mine->items : 1;
        // Boost's string function where it has one, else a stream with the same facet.
        const char* target = table.find(row, "boost") != nullptr ? "boost" : "boost_stream";
        std::string cells[3];
        bool miss = false;
        const char* peers[] = {"boost", "boost_stream", row.find("to_ustring") != std::string::npos ? "strftime"
                                                                                                      : "strptime"};
        for (std::size_t i = 0; i < 3; ++i) {
            const std::optional<double> theirs = table.time_of(row, peers[i]);
            if (!ours || !theirs) {
                cells[i] = "- ";
                continue;
            }
            const double ratio = *ours / *theirs;
            const bool targeted = std::strcmp(peers[i], target) == 0;
            const bool missed = targeted && ratio > boost_ratio_limit;
            miss = miss || missed;
            char cell[16];
            std::snprintf(cell, sizeof cell, "%.2f%s", ratio, missed ? "!" : targeted ? "*" : " ");
            cells[i] = cell;
        }
        char allocs[16] = "-";
        if (mine != nullptr && mine->allocations >= 0)
            std::snprintf(allocs, sizeof allocs, "%.1f", mine->allocations / items);
        std::string verdict = ours ? (miss ? "MISS Boost" : "ok") : "no result";
        misses += miss ? 1 : 0;
        const std::string op = row.substr(std::strlen(prefix), row.find('/', std::strlen(prefix)) - std::strlen(prefix));
        std::snprintf(line, sizeof line, format, op.c_str(), row.substr(slash + 1).c_str(),
                      ours ? format_time(*ours / items).c_str() : "-", allocs, cells[0].c_str(), cells[1].c_str(),
                      cells[2].c_str(), verdict.c_str());
        out << line;
    }
    out << "\n" << misses << " of " << table.size() << " date-time rows miss a target.\n";
    return misses;
}

}  // namespace

void register_datetime_benchmarks()
{
    add_write_rows();
    add_read_rows();
}

std::unique_ptr<table_family> datetime_family()
{
    return cpu_table_family(is_datetime_row, print_datetime_table);
}

}  // namespace qxbench

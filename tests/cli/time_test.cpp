// `qxi18n time` end to end: the layouts both ways, conversion between zones, zone ids, the
// statuses of bad data and bad usage, and the demo's time section.
#include "cli_test_support.hpp"

#include <cstdlib>
#include <regex>
#include <tuple>

namespace {

using namespace qx_cli_test;
using args = std::vector<std::string>;

TEST(CliTime, FormatsParsesAndConverts)
{
    const std::tuple<args, int, std::string> cases[] = {
        {{"time", "format", "2024-07-01T12:00:00.123456"}, 0, "2024-07-01T12:00:00.123456\n"},
        {{"time", "format", "--iso", "2024-07-01T12:00:00.5"}, 0, "20240701T120000.500000\n"},
        {{"time", "format", "--simple", "2024-07-01T12:00:00"}, 0, "2024-Jul-01 12:00:00\n"},
        {{"time", "format", "--utc-stamp", "2024-07-01T12:00:00.9"}, 0, "2024-07-01T12:00:00Z\n"},
        {{"time", "format", "--format", "%d.%m.%Y %H:%M", "2024-07-01T12:34:56"}, 0, "01.07.2024 12:34\n"},
        {{"time", "parse", "20240701T120000", "--iso"}, 0, "2024-07-01T12:00:00\n"},
        {{"time", "parse", "2024-07-01T12:00:00Z", "--utc-stamp"}, 0, "2024-07-01T12:00:00\n"},
        {{"time", "parse", "2024-07-01T12:00:00Z ", "--utc-stamp"}, 1, "not-a-date-time\n"},
        {{"time", "parse", "2024-02-30T00:00:00Z", "--utc-stamp"}, 1, "not-a-date-time\n"},
        {{"time", "parse", "01.07.2024 junk", "--format", "%d.%m.%Y"}, 0, "2024-07-01T00:00:00\n"},
        {{"time", "parse", "yesterday"}, 1, "not-a-date-time\n"},
        {{"time", "convert", "2024-07-01T14:00:00.25", "--from", "Europe/Berlin", "--to", "Asia/Tokyo"}, 0,
         "2024-07-01T21:00:00.250000\n"},
        {{"time", "convert", "2024-03-10T12:00:00", "--from", "America/New_York"}, 0, "2024-03-10T16:00:00\n"},
        {{"time", "convert", "2024-03-09T12:00:00", "--from", "America/New_York"}, 0, "2024-03-09T17:00:00\n"},
        {{"time", "convert", "2024-01-15T00:00:00", "--to", "Australia/Lord_Howe"}, 0, "2024-01-15T11:00:00\n"},
        {{"time", "convert", "1969-12-31T23:59:59.5", "--to", "Asia/Kolkata"}, 0, "1970-01-01T05:29:59.500000\n"},
        {{"time", "zone", "US/Eastern"}, 0, "US/Eastern\n"},
        {{"time", "zone", "GMT+05:30"}, 0, "GMT+05:30\n"},
    };
    for (const auto& [call, status, expected] : cases) {
        const run_result r = run_tool(call);
        EXPECT_EQ(r.status, status) << call[2] << ": " << r.err;
        EXPECT_EQ(r.out, expected) << call[2];
    }
}

TEST(CliTime, NowIsUtcInIsoExtendedForm)
{
    const run_result r = run_tool({"time", "format"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(std::regex_match(r.out, std::regex(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d(\.\d{6})?\n)"))) << r.out;
}

// The tool is a fresh process: TZ set for it alone decides its default zone.
TEST(CliTime, DefaultZoneFollowsTz)
{
    const char* saved = std::getenv("TZ");
    const std::string previous = saved != nullptr ? saved : "";
    ::setenv("TZ", "Asia/Kolkata", 1);
    const run_result r = run_tool({"time", "zone"});
    const run_result converted = run_tool({"time", "convert", "2024-07-01T12:00:00", "--to", ""});
    saved != nullptr ? ::setenv("TZ", previous.c_str(), 1) : ::unsetenv("TZ");
    EXPECT_EQ(r.out, "Asia/Kolkata\n") << r.err;
    EXPECT_EQ(converted.out, "2024-07-01T17:30:00\n") << converted.err;
}

TEST(CliTime, BadDataAndBadUsage)
{
    const std::tuple<args, int, std::string> cases[] = {
        {{"time", "zone", "Nowhere/Invalid"}, 1,
         "qxi18n: time: unknown zone 'Nowhere/Invalid' (fl::i18n::timezone::invalid_timezone_id)\n"},
        {{"time", "zone", "Etc/Unknown"}, 1, "qxi18n: time: unknown zone 'Etc/Unknown'"},
        {{"time", "zone", "Z\xC3\xBCrich"}, 1, "qxi18n: time: zone id 'Z\xC3\xBCrich' is not ASCII"},
        {{"time", "convert", "2024-07-01T00:00:00", "--to", "Mars/Olympus"}, 1, "qxi18n: time: unknown zone"},
        {{"time", "parse", "2024-02-30 00:00:00", "--simple"}, 1, "qxi18n: time: "},
        {{"time"}, 2, "qxi18n: time: missing operation"},
        {{"time", "when"}, 2, "qxi18n: time: unknown operation 'when'"},
        {{"time", "format", "2024-07-01"}, 2, "qxi18n: time: TIME '2024-07-01' is not YYYY-MM-DDTHH:MM:SS"},
        {{"time", "format", "2024-07-01T12:00:00.1234567"}, 2, "qxi18n: time: TIME"},
        {{"time", "format", "2024-13-01T00:00:00"}, 2, "qxi18n: time: TIME '2024-13-01T00:00:00' is no date"},
        {{"time", "format", "--iso", "--simple"}, 2, "qxi18n: time: give one layout"},
        {{"time", "format", "--format", ""}, 2, "qxi18n: time: the format is empty"},
        {{"time", "zone", "--iso"}, 2, "qxi18n: time: a layout applies to format and parse only"},
        {{"time", "format", "--from", "UTC"}, 2, "qxi18n: time: options --from and --to apply to convert only"},
        {{"time", "parse"}, 2, "qxi18n: time: parse takes one TEXT"},
        {{"time", "convert", "2024-07-01T00:00:00", "extra"}, 2, "qxi18n: time: convert takes one TIME"},
        {{"time", "zone", "UTC", "GMT"}, 2, "qxi18n: time: zone takes at most one ID"},
    };
    for (const auto& [call, status, message] : cases) {
        const run_result r = run_tool(call);
        EXPECT_EQ(r.status, status) << call.back();
        EXPECT_EQ(r.err.rfind(message, 0), 0U) << r.err;
        if (status == 2) {
            EXPECT_EQ(r.out, "") << call.back();
        }
    }
}

TEST(CliTime, DemoShowsTimeZones)
{
    const run_result r = run_tool({"demo"});
    ASSERT_EQ(r.status, 0) << r.err;
    for (const char* expected : {"Dates, times and time zones", "date_format_iso            20240701T120000.123456",
                                 "Europe/Berlin          2024-07-01T14:00:00.123456",
                                 "Australia/Lord_Howe    2024-07-01T22:30:00.123456", "are not equal",
                                 "throws fl::i18n::timezone::invalid_timezone_id (\"Invalid timezone id.\")"})
        EXPECT_NE(r.out.find(expected), std::string::npos) << expected;
}

}  // namespace

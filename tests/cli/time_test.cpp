// `qxi18n time` end to end: the layouts both ways, conversion between zones, zone ids and the
// default zone, and the statuses of bad data and bad usage.
#include "cli_test_support.hpp"

#include <regex>
#include <tuple>

namespace {

using namespace qx_cli_test;

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
    for (const auto& [call, status, expected] : cases) expect_run(call, status, expected);
    const run_result now = run_tool({"time", "format"});
    EXPECT_TRUE(std::regex_match(now.out, std::regex(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d(\.\d{6})?\n)"))) << now.out;
}

// The tool is a fresh process: TZ set for it alone decides its default zone.
TEST(CliTime, DefaultZoneFollowsTz)
{
    const scoped_env tz("TZ", "Asia/Kolkata");
    expect_run({"time", "zone"}, 0, "Asia/Kolkata\n");
    expect_run({"time", "convert", "2024-07-01T12:00:00", "--to", ""}, 0, "2024-07-01T17:30:00\n");
}

TEST(CliTime, BadDataAndBadUsage)
{
    const std::string prefix = "qxi18n: time: ";
    const std::tuple<args, int, std::string> cases[] = {
        {{"time", "zone", "Nowhere/Invalid"}, 1, prefix + "unknown zone 'Nowhere/Invalid' (fl::i18n::timezone::invalid_timezone_id)\n"},
        {{"time", "zone", "Etc/Unknown"}, 1, prefix + "unknown zone 'Etc/Unknown'"},
        {{"time", "zone", "Z\xC3\xBCrich"}, 1, prefix + "zone id 'Z\xC3\xBCrich' is not ASCII"},
        {{"time", "convert", "2024-07-01T00:00:00", "--to", "Mars/Olympus"}, 1, prefix + "unknown zone"},
        {{"time", "parse", "2024-02-30 00:00:00", "--simple"}, 1, prefix},
        {{"time"}, 2, prefix + "missing operation"},
        {{"time", "when"}, 2, prefix + "unknown operation 'when'"},
        {{"time", "format", "2024-07-01"}, 2, prefix + "TIME '2024-07-01' is not YYYY-MM-DDTHH:MM:SS"},
        {{"time", "format", "2024-07-01T12:00:00.1234567"}, 2, prefix + "TIME"},
        {{"time", "format", "2024-13-01T00:00:00"}, 2, prefix + "TIME '2024-13-01T00:00:00' is no date"},
        {{"time", "format", "--iso", "--simple"}, 2, prefix + "give one layout"},
        {{"time", "format", "--format", ""}, 2, prefix + "the format is empty"},
        {{"time", "zone", "--iso"}, 2, prefix + "a layout applies to format and parse only"},
        {{"time", "format", "--from", "UTC"}, 2, prefix + "options --from and --to apply to convert only"},
        {{"time", "parse"}, 2, prefix + "parse takes one TEXT"},
        {{"time", "convert", "2024-07-01T00:00:00", "extra"}, 2, prefix + "convert takes one TIME"},
        {{"time", "zone", "UTC", "GMT"}, 2, prefix + "zone takes at most one ID"},
    };
    for (const auto& [call, status, message] : cases) expect_run(call, status, "", message);
}

}  // namespace

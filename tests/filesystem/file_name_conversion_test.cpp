// File-name converters, the thread-converter conversions, upath's append and the modification
// time setter, under the classic locale's UTF-8 and compared with raw ICU.
#include "filesystem_test_support.hpp"

#include <fl/filesystem/file_name_conversion.hpp>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <gtest/gtest.h>

#include <random>
#include <thread>
#include <vector>

namespace {

namespace fs = fl::filesystem;
using fl::ustring;
using namespace qx_test;

template <class Converter, class Char>
auto convert(const Converter& c, const std::basic_string<Char>& s)
{
    return c.convert(s.data(), s.size());
}

TEST(FileNameConverters, LengthsAroundTheBufferBoundariesMatchIcu)
{
    const fs::codecvt_ustring_to_filesystem to_bytes(false);
    const fs::codecvt_filesystem_to_ustring to_units(false);
    // Characters whose UTF-8 is one, two and three bytes long.
    for (const char16_t unit : {u'a', u'\u00E9', u'\u65E5'}) {
        for (const std::size_t length : {0ul, 1ul, 1023ul, 1024ul, 1025ul, 32767ul, 32768ul, 32769ul, 40000ul}) {
            const ustring text(length, unit);
            const std::string bytes = *icu_convert<char>("UTF-8", text, true);
            EXPECT_EQ(convert(to_bytes, text), bytes) << length;
            EXPECT_EQ(to_bytes.get_destination_size(text.data(), text.size()), bytes.size()) << length;
            EXPECT_EQ(convert(to_units, bytes), text) << length;
            EXPECT_EQ(fs::detail::to_filesystem_bytes(text), bytes) << length;
            EXPECT_EQ(fs::detail::from_filesystem_bytes(bytes), text) << length;
        }
    }
}

TEST(FileNameConverters, RefuseIcuSizesOf2To31WithAnEmptyPath)
{
    const fs::codecvt_ustring_to_filesystem to_bytes(false);
    const fs::codecvt_filesystem_to_ustring to_units(true);
    const char16_t units[4] = u"abc";
    char bytes[16] = {};
    char16_t out[16] = {};
    const unsigned long huge = 0x80000000UL;
    const failure too_large(fs::fsys_file_name_too_large, u"");
    EXPECT_EQ(thrown([&] { to_bytes.get_destination_size(units, huge); }), too_large);
    EXPECT_EQ(thrown([&] { to_units.get_destination_size("abc", huge); }), too_large);
    EXPECT_EQ(thrown([&] { to_bytes.convert(bytes, huge, units, 3); }), too_large);
    EXPECT_EQ(thrown([&] { to_units.convert(out, huge, "abc", 3); }), too_large);
    EXPECT_EQ(thrown([&] { to_bytes.convert(bytes, 16, units, huge); }), too_large);
    // One below the limit is accepted: ICU writes only what the text needs.
    EXPECT_EQ(to_bytes.convert(bytes, huge - 1, units, 3), 3u);
    EXPECT_EQ(to_units.convert(out, huge - 1, "abc", 3), 3u);
    // A short buffer gets what fits, and the length of the whole result comes back.
    const ustring text = u"d\u00E9j\u00E0";
    std::string buffer(8, '#');
    EXPECT_EQ(to_bytes.convert(buffer.data(), 3, text.data(), text.size()), 6u);
    EXPECT_EQ(buffer, "d\xC3\xA9#####");
}

TEST(FileNameConverters, StrictFailsWhereLenientSubstitutes)
{
    // bytes, strict failure (-1: none), lenient result
    const std::tuple<std::string, int, ustring> to_unicode[] = {
        {"ok", -1, u"ok"},
        {"a\xFF" "b", fs::fsys_cvt_invalid_character, u"a\uFFFDb"},
        {"\xED\xA0\x80", fs::fsys_cvt_invalid_character, u"\uFFFD\uFFFD\uFFFD"},
        {"a\xC3", fs::fsys_file_name_conversion_failure, u"a\uFFFD"},
    };
    for (const auto& [bytes, id, lenient] : to_unicode) {
        EXPECT_EQ(convert(fs::codecvt_filesystem_to_ustring(true), bytes), lenient);
        EXPECT_EQ(convert(fs::codecvt_narrow_string_to_ustring(true), bytes), lenient);
        EXPECT_EQ(icu_convert<char16_t>("UTF-8", bytes, false), lenient);
        EXPECT_EQ(thrown([&] { convert(fs::codecvt_filesystem_to_ustring(false), bytes); }).first, id) << bytes;
    }
    EXPECT_EQ(convert(fs::codecvt_filesystem_to_ustring(false), std::string("ok")), u"ok");
    const ustring lone = u"a\xD800" "b";
    EXPECT_THROW(convert(fs::codecvt_ustring_to_filesystem(false), lone), fs::CvtInvalidCharacter);
    EXPECT_THROW(convert(fs::codecvt_ustring_to_narrow_string(false), lone), fs::CvtInvalidCharacter);
    EXPECT_EQ(convert(fs::codecvt_ustring_to_filesystem(true), lone), *icu_convert<char>("UTF-8", lone, false));
    // The thread's converter is lenient.
    EXPECT_EQ(fs::detail::from_filesystem_bytes("a\xFF"), u"a\uFFFD");
}

// Both pairs agree with each other and with ICU on random text; the seed is printed on failure.
TEST(FileNameConverters, PairsAgreeWithIcuOnRandomText)
{
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const fs::codecvt_ustring_to_filesystem to_bytes(false);
    const fs::codecvt_ustring_to_narrow_string to_narrow(false);
    const fs::codecvt_filesystem_to_ustring to_units(false);
    const fs::codecvt_narrow_string_to_ustring from_narrow(false);
    // Both sides of each check: the converter's result, or "failed".
    const auto outcome = [](const auto& converter, const auto& text) {
        try {
            return std::make_optional(convert(converter, text));
        } catch (const fs::FsysExceptionBase&) {
            return decltype(std::make_optional(convert(converter, text)))();
        }
    };
    for (int round = 0; round < 200; ++round) {
        ustring text(random() % 2000, u'\0');
        for (char16_t& unit : text)
            unit = static_cast<char16_t>(random() % 4 == 0 ? random() % 0x10000 : 0x20 + random() % 0x60);
        std::string bytes(random() % 2000, '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(random() % 8 == 0 ? random() % 256 : 0x20 + random() % 0x60);
        const auto expected_bytes = icu_convert<char>("UTF-8", text, true);
        const auto expected_units = icu_convert<char16_t>("UTF-8", bytes, true);
        EXPECT_EQ(outcome(to_bytes, text), expected_bytes);
        EXPECT_EQ(outcome(to_narrow, text), expected_bytes);
        EXPECT_EQ(outcome(to_units, bytes), expected_units);
        EXPECT_EQ(outcome(from_narrow, bytes), expected_units);
    }
}

TEST(CheckFileNameStatus, SortsIcuStatusesIntoTheFamily)
{
    // status, source length, id (-1: success)
    const std::tuple<UErrorCode, unsigned long, int> cases[] = {
        {U_ZERO_ERROR, 5, -1}, {U_STRING_NOT_TERMINATED_WARNING, 5, -1}, {U_BUFFER_OVERFLOW_ERROR, 0x40000000, -1},
        {U_INVALID_CHAR_FOUND, 5, fs::fsys_cvt_invalid_character},
        {U_ILLEGAL_CHAR_FOUND, 0x3FFFFFFF, fs::fsys_cvt_invalid_character},
        {U_TRUNCATED_CHAR_FOUND, 5, fs::fsys_file_name_conversion_failure},
        {U_ILLEGAL_ARGUMENT_ERROR, 5, fs::fsys_file_name_conversion_failure},
        {U_INVALID_CHAR_FOUND, 0x40000000, fs::fsys_file_name_too_large},
        {U_MEMORY_ALLOCATION_ERROR, 0x40000000, fs::fsys_file_name_too_large},
    };
    for (const auto& [status, length, id] : cases) {
        const failure expected(fs::fsys_excp_id(id), id == -1 ? u"no exception" : u"");
        EXPECT_EQ(thrown([&] { fs::detail::check_file_name_status(status, length); }), expected)
            << u_errorName(status) << " " << length;
    }
}

// The thread's converter is lenient; the caller's, here strict, is used when given.
TEST(ToUstring, ConvertsBoostPathsWithTheThreadConverterOrTheCallers)
{
    const boost::filesystem::path path("/d\xC3\xA9j\xC3\xA0//x/");
    EXPECT_EQ(fs::to_ustring(path), u"/d\u00E9j\u00E0//x/");
    EXPECT_EQ(fs::to_generic_ustring(path), u"/d\u00E9j\u00E0//x/");
    EXPECT_EQ(fs::to_ustring(boost::filesystem::path("a\xFF")), u"a\uFFFD");
    EXPECT_EQ(fs::to_ustring(boost::filesystem::path()), u"");
    const fs::codecvt_filesystem_to_ustring strict(false);
    EXPECT_EQ(fs::to_generic_ustring(boost::filesystem::path(), strict), u"");
    EXPECT_EQ(fs::to_generic_ustring(path, strict), u"/d\u00E9j\u00E0//x/");
    EXPECT_THROW(fs::to_generic_ustring(boost::filesystem::path("a\xFF"), strict), fs::CvtInvalidCharacter);
}

TEST(ToUstring, EachThreadConvertsWithItsOwnConverter)
{
    std::vector<std::thread> threads;
    std::vector<int> mismatches(4, 0);
    for (std::size_t t = 0; t < 4; ++t)
        threads.emplace_back([t, &mismatches] {
            const std::string bytes = std::string(100 + t, 'a') + "\xE6\x97\xA5\xC3\xA9";
            const ustring expected = ustring(100 + t, u'a') + u"\u65E5\u00E9";
            for (int i = 0; i < 2000; ++i)
                if (fs::to_ustring(boost::filesystem::path(bytes)) != expected ||
                    fs::detail::to_filesystem_bytes(expected) != bytes)
                    ++mismatches[t];
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(mismatches, std::vector<int>(4, 0));
}

TEST(UpathAppend, JoinsWithTheFlagAndIgnoresNullAndEmpty)
{
    // start, flag, text, result
    const std::tuple<const char16_t*, bool, const char16_t*, const char16_t*> cases[] = {
        {u"/a", true, nullptr, u"/a"},      {u"/a", true, u"", u"/a"},           {u"/a", false, nullptr, u"/a"},
        {u"/a", true, u"b", u"/a/b"},       {u"/a", true, u"./b//c/", u"/a/b/c"}, {u"/a", false, u"./b//c/", u"/a/./b//c/"},
        {u"", true, u"x/", u"x"},           {u"/", true, u"x", u"/x"},           {u"a", true, u"/abs", u"a/abs"},
    };
    for (const auto& [start, flag, text, result] : cases) {
        fs::upath path(start, flag);
        EXPECT_EQ(&path.append(text), &path);
        EXPECT_EQ(path.string(), result);
    }
    EXPECT_EQ(fs::detail::make_native_access_form_i18n(u"/a//./\u00E9/"), "/a//./\xC3\xA9/");
    EXPECT_EQ(fs::detail::make_native_access_form_with_cleanup_i18n(u"/a//./\u00E9/"), "/a/\xC3\xA9");
    EXPECT_THROW(fs::detail::make_native_access_form_i18n(u"\xDFFF"), fs::InvalidArgument);
}

class SetLastWriteTime : public scratch_test {};

// The microseconds that stat reads back, across the epochs; failures name only the second path.
TEST_F(SetLastWriteTime, SetsTheMicrosecondsThatStatReads)
{
    using boost::posix_time::time_from_string;
    make_file(at("f"));
    // time, st_mtim seconds, nanoseconds
    const std::tuple<boost::posix_time::ptime, long, long> cases[] = {
        {time_from_string("2021-03-04 05:06:07.123456"), 1614834367L, 123456000L},
        {time_from_string("1970-01-01 00:00:00"), 0L, 0L},
        {time_from_string("1969-12-31 23:59:59.5"), -1L, 500000000L},
        {time_from_string("2174-01-01 00:00:00.000001"), 6437664000L, 1000L},
        {time_from_string("2038-01-19 03:14:08"), 2147483648L, 0L},
    };
    for (const auto& [time, seconds, nanoseconds] : cases) {
        fs::set_last_write_time(at("f"), time);
        struct stat st {};
        ASSERT_EQ(::stat(at("f").c_str(), &st), 0);
        EXPECT_EQ(std::make_pair(long(st.st_mtim.tv_sec), long(st.st_mtim.tv_nsec)), std::make_pair(seconds, nanoseconds))
            << time;
    }
    const auto now = boost::posix_time::second_clock::universal_time();
    EXPECT_EQ(thrown([&] { fs::set_last_write_time(at("missing"), now); }), failure(fs::fsys_path_not_found, u""));
    EXPECT_EQ(thrown([&] { fs::set_last_write_time(at("f/below"), now); }), failure(fs::fsys_not_directory_error, u""));
}

}  // namespace

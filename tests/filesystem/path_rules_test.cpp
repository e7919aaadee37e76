// Tests of the name rules of a volume: compare against raw ICU, validate_pathname's bits,
// the volume queries and last_write_time.
#include "filesystem_test_support.hpp"

#include <fl/filesystem/path_rules.hpp>
#include <fl/i18n/text_compare.hpp>

#include <boost/date_time/posix_time/conversion.hpp>
#include <boost/date_time/posix_time/posix_time.hpp>
#include <gtest/gtest.h>
#include <unicode/unorm.h>
#include <unicode/ustring.h>

#include <random>

namespace {

namespace fs = fl::filesystem;
using fl::ustring;
using mode = fl::i18n::character_handling_mode_context;
using namespace qx_test;

int sign(long long v) { return v < 0 ? -1 : v > 0 ? 1 : 0; }

TEST(ComparePaths, AbsolutePathsInNativeForm)
{
    const std::tuple<ustring, ustring, int> cases[] = {
        {u"", u"", 0},       {u"/a", u"", 1},   {u"", u"/a", -1},         {u"/a", u"/abc", -2}, {u"/abc", u"/a", 2},
        {u"/a/", u"/a", 0}, {u"/b", u"/a", 1}, {u"/a//./b", u"/a/b", 0}, {u"/a\u00E9", u"/ae\u0301", 1},
    };
    for (const auto& [a, b, result] : cases) {
        EXPECT_EQ(fs::compare(a, b), result) << fs::detail::to_filesystem_bytes(a) << " ~ " << fs::detail::to_filesystem_bytes(b);
        EXPECT_EQ(fs::compare(fs::upath(a), fs::upath(b)), result);
    }
    for (const auto& [a, b] : {std::pair<ustring, ustring>{u"a", u"b"}, {u"", u"a"}, {u"/a", u"b"}, {u"a", u""}})
        EXPECT_EQ(thrown_message([&] { fs::compare(a, b); }), "Path must be absolute");
}

TEST(CompareWithMode, EmptyNamesAndRefusedMasks)
{
    for (unsigned m = 0; m < 32; ++m) {
        EXPECT_EQ(fs::compare(u"", u"", mode(m)), 0) << m;
        EXPECT_EQ(fs::compare(u"a", u"", mode(m)), 1) << m;
        EXPECT_EQ(fs::compare(ustring(), ustring(u"a"), mode(m)), -1) << m;
    }
    EXPECT_EQ(thrown_message([] { fs::compare(u"a", u"b", mode(mode::locale_mode)); }),
              "Specified character handling mask not valid");
    for (unsigned m : {18U, 22U, 19U, 23U, 26U})
        EXPECT_EQ(thrown_message([m] { fs::compare(u"a", u"b", mode(m)); }), "Invalid mask specified") << m;
    EXPECT_EQ(fs::compare(u"ABC", u"abc", mode(mode::locale_mode | mode::case_insensitive_mode)), 0);
}

TEST(CompareWithMode, NormalisationAndTheAsciiFastPath)
{
    const ustring composed = u"caf\u00E9", decomposed = u"cafe\u0301";
    EXPECT_NE(fs::compare(composed, decomposed, mode(mode::default_mode)), 0);
    for (unsigned m : {2U, 4U, 6U, 16U, 3U, 17U, 7U})
        EXPECT_EQ(fs::compare(composed, decomposed, mode(m)), 0) << m;
    EXPECT_EQ(fs::compare(fs::upath(u"/x/" + composed), fs::upath(u"/x/" + decomposed), mode(2)), 0);
    // "f" against "e" + acute: binary order below 20 ASCII units, ICU's (NFD) order above.
    const ustring accented = u"\u00E9";
    EXPECT_LT(fs::compare(u"f", accented, mode(2)), 0);
    EXPECT_LT(fs::compare(ustring(19, u'z'), ustring(19, u'z') + accented, mode(16)), 0);
    EXPECT_LT(fs::compare(ustring(18, u'z') + u"f", ustring(18, u'z') + accented, mode(16)), 0);
    EXPECT_GT(fs::compare(ustring(19, u'z') + u"f", ustring(19, u'z') + accented, mode(16)), 0);
    EXPECT_GT(fs::compare(u"f\u00E0", accented, mode(2)), 0);
}

// Differential check on random names against raw ICU and the text engine's compare.
TEST(CompareWithMode, AgreesWithIcuOnRandomNames)
{
    const unsigned seed = std::random_device()();
    std::mt19937 random(seed);
    const char16_t alphabet[] = u"aAeEzZ_.\u00E9\u00C9\u0301\u0323\u1E0B\u00DF\u4E2D";
    const auto make = [&] {
        ustring s(random() % 26, u'a');
        for (char16_t& c : s)
            c = alphabet[random() % (sizeof alphabet / 2 - 1)];
        return s;
    };
    for (int i = 0; i < 3000; ++i) {
        const ustring a = make(), b = i % 5 == 0 ? a : make();
        if (a.empty() || b.empty())
            continue;
        SCOPED_TRACE("seed " + std::to_string(seed) + " case " + std::to_string(i));
        const auto n = [](const ustring& s) { return static_cast<int32_t>(s.size()); };
        UErrorCode status = U_ZERO_ERROR;
        const int binary = sign(a.compare(b));
        const int folded = sign(u_strCaseCompare(a.data(), n(a), b.data(), n(b), 0, &status));
        const int normalised = sign(unorm_compare(a.data(), n(a), b.data(), n(b), 0, &status));
        const int both = sign(unorm_compare(a.data(), n(a), b.data(), n(b), U_COMPARE_IGNORE_CASE, &status));
        ASSERT_TRUE(U_SUCCESS(status));
        const ustring& shorter = a.size() <= b.size() ? a : b;  // the first on a tie
        const bool fast = shorter.size() <= 19 && std::all_of(shorter.begin(), shorter.end(), [](char16_t c) { return c < 128; });
        EXPECT_EQ(binary, sign(fl::i18n::detail::compare(a.data(), a.size(), b.data(), b.size(), fl::i18n::case_sensitive())));
        const std::pair<unsigned, int> expected[] = {
            {0, binary}, {1, folded}, {2, fast ? binary : normalised}, {16, fast ? binary : normalised}, {3, both}, {17, both},
        };
        for (const auto& [m, result] : expected)
            EXPECT_EQ(sign(fs::compare(a, b, mode(m))), result) << "mask " << m;
    }
}

TEST(ValidatePathname, FirstFailedCheck)
{
    const auto all = fs::validate_encodable | fs::validate_no_null | fs::validate_path_length | fs::validate_component_length;
    const ustring cjk(200, u'\u4E2D');  // 600 bytes in UTF-8
    // name, checks, the first that fails
    const std::tuple<ustring, fs::validation_id, unsigned> cases[] = {
        {u"", all, 0},                                           {ustring(4095, u'a'), fs::validate_path_length, 0},
        {ustring(4096, u'a'), fs::validate_path_length, 16},     {ustring(255, u'a'), fs::validate_component_length, 0},
        {ustring(256, u'a'), fs::validate_component_length, 32}, {u"x/" + ustring(256, u'a'), all, 32},
        {ustring(256, u'a') + u"/x", all, 32},                   {u"/" + ustring(255, u'a') + u"/" + ustring(255, u'b') + u"/", all, 0},
        {cjk, fs::validate_path_length, 0},                      {cjk, fs::validate_component_length, 32},
        {ustring(u"a\0b", 3), fs::validate_no_null, 4},          {ustring(u"a\0b", 3), fs::validate_component_length, 0},
        {u"lo\xD800ne", fs::validate_component_length, 1},       {ustring(u"\xD800\0", 2), all, 4},
        {ustring(1366, u'\u4E2D'), all, 16},
    };
    for (const auto& [name, checks, result] : cases)
        EXPECT_EQ(fs::validate_pathname(name, checks, mode(0)), result) << name.size() << " units, checks " << checks;
    // A lead surrogate at the very end is a truncated character, not an invalid one: it passes through.
    EXPECT_THROW(fs::validate_pathname(u"lone\xD800", fs::validate_encodable, mode(0)), fs::FileNameConversionFailure);
}

class VolumeQueries : public scratch_test {};

TEST_F(VolumeQueries, MaskPathnameAndWriteTime)
{
    EXPECT_EQ(thrown_message([] { fs::generate_character_handling_mask_from_volume(fs::upath()); }),
              "Empty Path not permitted");
    EXPECT_EQ(fs::generate_character_handling_mask_from_volume(fs::upath(u16at("missing"))).get_mask(), 0U);

    make_dir(at("real"));
    make_link("real", at("link"));
    const ustring base = u16at("");
    EXPECT_EQ(fs::get_pathname_from_volume(base, u16at("link/../link/")), u16at("real"));
    EXPECT_EQ(fs::get_pathname_from_volume(fs::upath(base), fs::upath(u"link")), fs::upath(u16at("real")));
    EXPECT_EQ(fs::get_pathname_from_volume(base, ustring()), ustring());
    EXPECT_TRUE(fs::get_pathname_from_volume(fs::upath(base), fs::upath()).empty());

    const boost::posix_time::ptime when(boost::gregorian::date(2001, 2, 3), boost::posix_time::microseconds(4005006));
    fs::last_write_time(fs::upath(u16at("real")), when);
    struct stat raw {};
    ASSERT_EQ(::stat(at("real").c_str(), &raw), 0);
    EXPECT_EQ(boost::posix_time::from_time_t(raw.st_mtim.tv_sec) + boost::posix_time::microseconds(raw.st_mtim.tv_nsec / 1000),
              when);
    EXPECT_EQ(thrown_message([] { fs::last_write_time(ustring(), boost::posix_time::second_clock::universal_time()); }),
              "Empty Path not permitted");
    EXPECT_EQ(thrown_message([&] { fs::last_write_time(u16at("real"), boost::posix_time::ptime()); }),
              "Time is not a ptime");
    EXPECT_THROW(fs::last_write_time(u16at("missing"), when), fs::PathNotFound);
}

}  // namespace

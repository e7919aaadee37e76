// Unique names and temporary files; the search for a temporary directory when candidates fail.
// The choice among environment variables runs in processes of its own (see CMakeLists.txt).
#include "filesystem_test_support.hpp"

#include <fl/filesystem/file_open.hpp>

#include <gtest/gtest.h>

#include <cerrno>
#include <regex>

namespace {

namespace fs = fl::filesystem;
using fl::ustring;
using namespace qx_test;

std::string bytes(const ustring& text) { return fs::detail::to_filesystem_bytes(text); }

const std::string random_part = "[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}";

std::regex name_pattern(const std::string& head, const std::string& tail)
{
    return std::regex(std::regex_replace(head, std::regex("[.^$|()\\[\\]{}*+?\\\\]"), "\\$&") + random_part + tail);
}

TEST(Tmpnam, JoinsDirectoryPrefixRandomTextAndExtension)
{
    // directory, prefix, extension, the name around the random text
    const std::tuple<ustring, ustring, ustring, std::string, std::string> cases[] = {
        {u"/d", u"p", u"txt", "/d/p", "\\.txt"},  {u"/d/", u"p", u"txt", "/d/p", "\\.txt"},
        {u"/d", u"p", u".txt", "/d/p", "\\.txt"}, {u"/d", u"p", u"", "/d/p", ""},
        {u"/d//e/./", u"", u"x", "/d/e/", "\\.x"}, {u"/", u"\u00E9", u"", "/\xC3\xA9", ""},
        {u"rel", u"p-", u"..b", "rel/p-", "\\.\\.b"},
    };
    for (const auto& [directory, prefix, extension, head, tail] : cases) {
        const std::string name = bytes(fs::tmpnam(directory, prefix, extension));
        EXPECT_TRUE(std::regex_match(name, name_pattern(head, tail))) << name;
    }
    EXPECT_NE(fs::tmpnam(u"/d", u"p", u""), fs::tmpnam(u"/d", u"p", u""));
    const std::string directory = bytes(fs::temp_directory_name()), name = bytes(fs::tmpnam(u"", u"q", u"tmp"));
    EXPECT_TRUE(std::regex_match(name, name_pattern(directory + (directory == "/" ? "q" : "/q"), "\\.tmp"))) << name;
}

class Tmpfile : public scratch_test {};

TEST_F(Tmpfile, CreatesAFileThatStaysAfterClosing)
{
    ustring name = u"old";
    std::FILE* file = fs::tmpfile(name, u16at("/./"), u"pre", u"dat");
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(std::regex_match(bytes(name), name_pattern(root + "/pre", "\\.dat"))) << bytes(name);
    char read[8] = {};
    EXPECT_EQ(std::fputs("written", file), 1);
    std::rewind(file);
    EXPECT_EQ(std::fread(read, 1, 7, file), 7u);
    std::fclose(file);
    EXPECT_STREQ(read, "written");
    EXPECT_TRUE(std::ifstream(bytes(name)).good());
}

// Each attempt tries a fresh name; after eleven failures the result is null, the name empty and
// errno 0, whatever errno was.
TEST_F(Tmpfile, TriesElevenFreshNamesThenGivesUpWithErrnoZero)
{
    static std::vector<std::string> tried;
    static std::size_t failures;
    tried.clear();
    failures = 100;
    fs::detail::libc().fopen = [](const char* path, const char* mode) -> std::FILE* {
        tried.emplace_back(path);
        if (tried.size() <= failures) {
            errno = EEXIST;
            return nullptr;
        }
        return std::fopen(path, mode);
    };
    ustring name = u"old";
    errno = EPERM;
    EXPECT_EQ(fs::tmpfile(name, u16at(""), u"p", u""), nullptr);
    EXPECT_EQ(tried.size(), 11U);
    EXPECT_EQ(errno, 0);
    EXPECT_TRUE(name.empty());

    tried.clear();
    failures = 3;
    std::FILE* file = fs::tmpfile(name, u16at(""), u"", u"");
    ASSERT_NE(file, nullptr);
    std::fclose(file);
    ASSERT_EQ(tried.size(), 4U);
    EXPECT_EQ(bytes(name), tried.back());
    for (std::size_t i = 1; i < tried.size(); ++i)
        EXPECT_NE(tried[i], tried[i - 1]);
}

// When every candidate fails, the last one (/tmp) is reported; tmpfile turns that into errno.
TEST_F(Tmpfile, ATemporaryDirectoryFailureIsTheLastCandidatesOrErrno)
{
    fs::detail::libc().access = [](const char*, int) {
        errno = EROFS;
        return -1;
    };
    for (const std::vector<std::string>& variables : {std::vector<std::string>{}, std::vector<std::string>{"HOME"}}) {
        try {
            fs::temp_directory_name(variables);
            ADD_FAILURE() << "a directory was found";
        } catch (const fs::SystemError& e) {
            EXPECT_EQ(e.get_path(), u"/tmp");
            EXPECT_EQ(e.get_error(), EROFS);
            EXPECT_EQ(e.get_arguments(), std::vector<ustring>{u""});
        }
    }
    EXPECT_THROW(fs::tmpnam(u"", u"p", u""), fs::SystemError);
    EXPECT_NO_THROW(fs::tmpnam(u"/given", u"p", u""));
    ustring name = u"old";
    errno = 0;
    EXPECT_EQ(fs::tmpfile(name, u"", u"p", u"x"), nullptr);
    EXPECT_EQ(errno, EIO);
    EXPECT_TRUE(name.empty());
}

// As a user who may read but not write "read-only": tmpfile there fails with errno 0, and that
// directory in TMPDIR fails access(), so TMP is next.
TEST_F(Tmpfile, ReadOnlyDirectoriesAreSkippedOrFailQuietly)
{
    if (!child) {
        make_dir(at("read-only"), 0555);
        make_dir(at("writable"), 0777);
        ASSERT_EQ(::chmod(at("writable").c_str(), 0777), 0);
        return run_as_nobody("TMPDIR='" + at("read-only") + "' TMP='" + at("writable") + "'");
    }
    EXPECT_EQ(bytes(fs::temp_directory_name()), at("writable"));
    ustring name = u"old";
    errno = EPERM;
    EXPECT_EQ(fs::tmpfile(name, u16at("read-only"), u"p", u"x"), nullptr);
    EXPECT_EQ(errno, 0);
    EXPECT_TRUE(name.empty());
}

}  // namespace

// Unique names and temporary files; the search for a temporary directory when every candidate
// fails. The choice among environment variables runs in processes of its own (see CMakeLists.txt).
#include "filesystem_test_support.hpp"

#include <fl/filesystem/file_open.hpp>
#include <fl/filesystem/filesystem_error.hpp>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cerrno>
#include <fstream>
#include <regex>

namespace {

namespace fs = fl::filesystem;
using fl::ustring;
using namespace qx_test;

std::string bytes(const ustring& text) { return fs::detail::to_filesystem_bytes(text); }

const std::string random_part = "[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}";

TEST(Tmpnam, JoinsDirectoryPrefixRandomTextAndExtension)
{
    // directory, prefix, extension, expected pattern with R for the random text
    const std::tuple<ustring, ustring, ustring, std::string> cases[] = {
        {u"/d", u"p", u"txt", "/d/pR\\.txt"},     {u"/d/", u"p", u"txt", "/d/pR\\.txt"},
        {u"/d", u"p", u".txt", "/d/pR\\.txt"},    {u"/d", u"p", u"", "/d/pR"},
        {u"/d//e/./", u"", u"x", "/d/e/R\\.x"},   {u"/", u"\u00E9", u"", "/\xC3\xA9R"},
        {u"rel", u"p-", u"..b", "rel/p-R\\.\\.b"},
    };
    for (const auto& [directory, prefix, extension, pattern] : cases) {
        const std::string expected = std::regex_replace(pattern, std::regex("R"), random_part);
        const std::string name = bytes(fs::tmpnam(directory, prefix, extension));
        EXPECT_TRUE(std::regex_match(name, std::regex(expected))) << name << " !~ " << expected;
    }
    EXPECT_NE(fs::tmpnam(u"/d", u"p", u""), fs::tmpnam(u"/d", u"p", u""));
}

TEST(Tmpnam, AnEmptyDirectoryMeansTheTemporaryDirectory)
{
    const std::string directory = bytes(fs::temp_directory_name());
    const std::string name = bytes(fs::tmpnam(u"", u"q", u"tmp"));
    EXPECT_TRUE(std::regex_match(name, std::regex(std::regex_replace(directory, std::regex("[.^$|()\\[\\]{}*+?\\\\]"), "\\$&") +
                                                  (directory == "/" ? "" : "/") + "q" + random_part + "\\.tmp")))
        << name;
}

int system_opens = 0;

class Tmpfile : public scratch_test {
protected:
    void SetUp() override
    {
        scratch_test::SetUp();
        system_opens = 0;
    }
    libc_override restore;
};

TEST_F(Tmpfile, CreatesAFileThatStaysAfterClosing)
{
    ustring name = u"old";
    std::FILE* file = fs::tmpfile(name, u16at("/./"), u"pre", u"dat");
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(std::regex_match(bytes(name), std::regex(root + "/pre" + random_part + "\\.dat"))) << bytes(name);
    EXPECT_EQ(std::fputs("written", file), 1);
    std::rewind(file);
    char read[8] = {};
    EXPECT_EQ(std::fread(read, 1, 7, file), 7u);
    EXPECT_STREQ(read, "written");
    std::fclose(file);
    std::ifstream again(bytes(name));
    EXPECT_TRUE(again.good());
}

TEST_F(Tmpfile, GivesUpAfterElevenAttemptsWithErrnoZero)
{
    fs::detail::libc().fopen = [](const char* path, const char* mode) {
        ++system_opens;
        return std::fopen(path, mode);
    };
    ustring name = u"old";
    errno = EPERM;
    EXPECT_EQ(fs::tmpfile(name, u16at("missing-directory"), u"p", u""), nullptr);
    EXPECT_EQ(system_opens, 11);
    EXPECT_EQ(errno, 0);
    EXPECT_TRUE(name.empty());
}

TEST_F(Tmpfile, TriesAFreshNameAfterEachFailure)
{
    static std::vector<std::string> tried;
    tried.clear();
    fs::detail::libc().fopen = [](const char* path, const char* mode) -> std::FILE* {
        tried.emplace_back(path);
        if (tried.size() < 4) {
            errno = EEXIST;
            return nullptr;
        }
        return std::fopen(path, mode);
    };
    ustring name;
    std::FILE* file = fs::tmpfile(name, u16at(""), u"", u"");
    ASSERT_NE(file, nullptr);
    std::fclose(file);
    ASSERT_EQ(tried.size(), 4u);
    EXPECT_EQ(bytes(name), tried.back());
    for (std::size_t i = 1; i < tried.size(); ++i)
        EXPECT_NE(tried[i], tried[i - 1]);
}

TEST_F(Tmpfile, ATemporaryDirectoryFailureBecomesErrno)
{
    fs::detail::libc().access = [](const char*, int) {
        errno = EACCES;
        return -1;
    };
    ustring name = u"old";
    errno = 0;
    EXPECT_EQ(fs::tmpfile(name, u"", u"p", u"x"), nullptr);
    EXPECT_EQ(errno, EACCES);
    EXPECT_TRUE(name.empty());
}

TEST(TempDirectoryName, ReportsTheLastCandidateWhenNoneIsUsable)
{
    libc_override restore;
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
}

}  // namespace

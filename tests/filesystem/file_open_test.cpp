// fopen and freopen by UTF-16 name: results and errno, with the system's fopen counted where a
// case must not reach it.
#include "filesystem_test_support.hpp"

#include <fl/filesystem/file_name_conversion.hpp>
#include <fl/filesystem/file_open.hpp>

#include <gtest/gtest.h>

#include <cerrno>
#include <new>

namespace {

namespace fs = fl::filesystem;
using fl::ustring;
using namespace qx_test;

int system_opens = 0;

struct file_closer {
    void operator()(std::FILE* f) const noexcept
    {
        if (f)
            std::fclose(f);
    }
};
using file_ptr = std::unique_ptr<std::FILE, file_closer>;

std::string contents(std::FILE* file)
{
    std::rewind(file);
    std::string text(64, '\0');
    text.resize(std::fread(text.data(), 1, text.size(), file));
    return text;
}

// The result of `open` (null or not) and the errno it leaves, which starts as garbage.
template <class Open>
std::pair<bool, int> outcome(Open&& open)
{
    errno = 12345;
    const file_ptr file(open());
    return {file != nullptr, errno};
}

class Fopen : public scratch_test {
protected:
    void SetUp() override
    {
        scratch_test::SetUp();
        system_opens = 0;
        fs::detail::libc().fopen = [](const char* path, const char* mode) {
            ++system_opens;
            return std::fopen(path, mode);
        };
    }
};

TEST_F(Fopen, RefusesBadArgumentsWithoutAskingTheSystem)
{
    // name, mode, errno
    const std::tuple<ustring, std::string, int> cases[] = {
        {u"", "r", EINVAL},      {u"x", "", EINVAL},    {ustring(u"\0x", 2), "r", EINVAL},
        {u"/tmp/", "r", EISDIR}, {u"a//", "w", EISDIR}, {u"/", "r", EISDIR},
    };
    for (const auto& [name, mode, error] : cases) {
        EXPECT_EQ(outcome([&] { return fs::fopen(name, mode); }), std::make_pair(false, error)) << mode;
        EXPECT_EQ(outcome([&] { return fs::fopen(name, mode, fs::codecvt_ustring_to_filesystem(false)); }),
                  std::make_pair(false, error));
    }
    EXPECT_EQ(outcome([] { return fs::fopen(static_cast<const char16_t*>(nullptr), "r"); }), std::make_pair(false, EINVAL));
    EXPECT_EQ(outcome([] { return fs::fopen(fs::upath(), "r"); }), std::make_pair(false, EINVAL));
    // A name that does not convert names nothing.
    const ustring bad = u16at("") + u"/bad\xD800";
    EXPECT_EQ(outcome([&] { return fs::fopen(bad, "w", fs::codecvt_ustring_to_filesystem(false)); }),
              std::make_pair(false, ENOENT));
    EXPECT_EQ(outcome([&] { return fs::fopen(fs::upath(bad), "w", fs::codecvt_ustring_to_narrow_string(false)); }),
              std::make_pair(false, ENOENT));
    EXPECT_EQ(system_opens, 0);
    // The upath form is native already: a trailing separator goes to the system as it is.
    EXPECT_EQ(outcome([&] { return fs::fopen(fs::upath(u16at("") + u"/"), "w"); }), std::make_pair(false, EISDIR));
    EXPECT_EQ(system_opens, 1);
}

TEST_F(Fopen, OpensAndReportsTheSystemsErrno)
{
    make_file(at("d\xC3\xA9j\xC3\xA0.txt"), "one");
    // name (relative to the scratch directory), mode, errno of a failure or 0
    const std::tuple<ustring, std::string, int> cases[] = {
        {u"d\u00E9j\u00E0.txt", "r", 0},    {u".//d\u00E9j\u00E0.txt", "r", 0}, {u"missing", "r", ENOENT},
        {u"no/such/dir", "w", ENOENT},      {u".", "w", EISDIR},                {u"d\u00E9j\u00E0.txt/x", "r", ENOTDIR},
        {ustring(300, u'n'), "r", ENAMETOOLONG},
    };
    for (const auto& [relative, mode, error] : cases) {
        const ustring full = u16at("") + u"/" + relative;
        const auto expected = std::make_pair(error == 0, error);
        EXPECT_EQ(outcome([&] { return fs::fopen(full, mode); }), expected);
        EXPECT_EQ(outcome([&] { return fs::fopen(fs::upath(full), mode); }), expected);
        EXPECT_EQ(outcome([&] { return fs::fopen(full, mode, fs::codecvt_ustring_to_filesystem(true)); }), expected);
    }
    const file_ptr file(fs::fopen(u16at("d\xC3\xA9j\xC3\xA0.txt"), "r"));
    ASSERT_TRUE(file);
    EXPECT_EQ(contents(file.get()), "one");
    fs::detail::libc().fopen = [](const char*, const char*) -> std::FILE* { throw std::bad_alloc(); };
    EXPECT_EQ(outcome([&] { return fs::fopen(u16at("x"), "w"); }), std::make_pair(false, ENOMEM));
}

// A failure of the system's freopen would close the stream but leave its memory behind, so only
// successes reach the system here; its errno takes the same path as for fopen.
TEST_F(Fopen, FreopenReopensAStreamOrRefusesBeforeTheSystem)
{
    make_file(at("first"), "first");
    make_file(at("\xE6\x97\xA5"), "second");
    file_ptr reopened(fs::freopen(fs::upath(u16at("\xE6\x97\xA5")), "r", std::fopen(at("first").c_str(), "r")));
    ASSERT_TRUE(reopened);
    EXPECT_EQ(contents(reopened.get()), "second");
    reopened.reset(fs::freopen(u16at(".//first"), "r", reopened.release(), fs::codecvt_ustring_to_filesystem(false)));
    ASSERT_TRUE(reopened);
    EXPECT_EQ(contents(reopened.get()), "first");

    EXPECT_EQ(outcome([&] { return fs::freopen(u16at("x"), "r", nullptr); }), std::make_pair(false, EINVAL));
    EXPECT_EQ(outcome([&] { return fs::freopen(fs::upath(u16at("x")), "r", nullptr, fs::codecvt_ustring_to_filesystem(true)); }),
              std::make_pair(false, EINVAL));
    EXPECT_EQ(outcome([&] { return fs::freopen(u16at("dir/"), "r", reopened.get()); }), std::make_pair(false, EISDIR));
    EXPECT_EQ(outcome([&] { return fs::freopen(u"", "r", reopened.get()); }), std::make_pair(false, EINVAL));
    EXPECT_EQ(contents(reopened.get()), "first");
}

TEST_F(Fopen, UnreadableFileGivesEacces)
{
    if (!child) {
        make_file(at("secret"));
        ASSERT_EQ(::chmod(at("secret").c_str(), 0600), 0);
        make_dir(at("read-only"), 0555);
        return run_as_nobody();
    }
    EXPECT_EQ(outcome([this] { return fs::fopen(u16at("secret"), "r"); }), std::make_pair(false, EACCES));
    EXPECT_EQ(outcome([this] { return fs::fopen(fs::upath(u16at("read-only/new")), "w"); }), std::make_pair(false, EACCES));
}

}  // namespace

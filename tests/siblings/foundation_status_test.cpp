// Tests of libqxfoundation_filesystem's upath algebra, file status, path resolution and exceptions.
#include <fl/filesystem/foundation/access_form.hpp>
#include <fl/filesystem/foundation/file_status.hpp>
#include <fl/filesystem/foundation/filesystem_error.hpp>
#include <fl/filesystem/foundation/pathname_encoding.hpp>
#include <fl/filesystem/foundation/upath.hpp>

#include <boost/date_time/posix_time/conversion.hpp>
#include <boost/exception_ptr.hpp>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <tuple>

namespace {

using fl::filesystem::file_status;
using fl::filesystem::upath;
using fl::filesystem::ustring;
namespace fs = fl::filesystem;
namespace stdfs = std::filesystem;

std::string utf8(const ustring& s) { return fs::pathname_traits<char16_t>::to_filesystem(s); }
ustring u16(const std::string& s) { return fs::detail::from_filesystem(s); }

// A directory of its own under the build tree, removed with everything in it.
class FileSystemQueries : public testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = (stdfs::path(QXI18N_TEST_BINARY_DIR) / "tests" / "siblings" / "status_").string() + std::string(6, 'X');
        ASSERT_NE(mkdtemp(pattern.data()), nullptr) << pattern;
        root = stdfs::canonical(pattern).string();
    }
    void TearDown() override { stdfs::remove_all(root); }
    std::string at(const std::string& name) const { return root + "/" + name; }
    std::string root;
};

TEST(Upath, KeepsTheNativeFormAndDecomposes)
{
    // text, native form, parent, filename, stem, extension
    const std::tuple<const char16_t*, const char16_t*, const char16_t*, const char16_t*, const char16_t*, const char16_t*>
        cases[] = {
            {u"a//b/./c.tar.gz/", u"a/b/c.tar.gz", u"a/b", u"c.tar.gz", u"c.tar", u".gz"},
            {u"///x//", u"/x", u"/", u"x", u"x", u""},
            {u"/", u"/", u"", u"", u"", u""},
            {u"./", u".", u"", u".", u".", u""},
            {u"a/../.profile", u"a/../.profile", u"a/..", u".profile", u".profile", u""},
            {nullptr, u"", u"", u"", u"", u""},
            {u"\u00E9//\U0001F600", u"\u00E9/\U0001F600", u"\u00E9", u"\U0001F600", u"\U0001F600", u""},
        };
    for (const auto& [text, native, parent, filename, stem, extension] : cases) {
        const upath p(text);
        EXPECT_EQ(p.string(), native) << (text ? utf8(text) : "null");
        EXPECT_EQ(p.parent_path().string(), parent) << utf8(native);
        EXPECT_EQ(p.filename(), filename) << utf8(native);
        EXPECT_EQ(p.stem(), stem) << utf8(native);
        EXPECT_EQ(p.extension(), extension) << utf8(native);
    }
    for (const auto& [path, parent] : {std::pair{u"//a", u"/"}, {u"a//b/", u"a"}, {u"///", u""}, {u"/a//b//", u"/a"}})
        EXPECT_EQ(fs::detail::extract_parent_path(path), parent) << utf8(path);
    EXPECT_TRUE(upath(u"/a").is_absolute());
    EXPECT_TRUE(upath(u"a").is_relative());
    EXPECT_EQ(upath(u"a//b/"), upath(u"a/b"));
    EXPECT_LT(upath(u"/a"), upath(u"/b"));
    EXPECT_EQ(upath(u"d\u00E9j\u00E0/x").native_string(), "d\xC3\xA9j\xC3\xA0/x");
    EXPECT_THROW(upath(ustring(1, u'\xD800')).native_string(), fs::InvalidArgument);
}

TEST(Upath, JoiningFollowsTheAppendFlag)
{
    // head, tail, joined with the flag true, joined with the flag false
    const std::tuple<const char16_t*, const char16_t*, const char16_t*, const char16_t*> cases[] = {
        {u"a", u"b", u"a/b", u"a/b"},  {u"a", u"./b//", u"a/b", u"a/./b//"}, {u"/", u"x", u"/x", u"/x"},
        {u"/a", u"/b", u"/a/b", u"/a/b"}, {u"", u"./x/", u"x", u"./x/"},    {u"a", u"", u"a", u"a"},
    };
    for (const auto& [head, tail, native, plain] : cases) {
        EXPECT_EQ((upath(head) /= tail).string(), native) << utf8(head) << " / " << utf8(tail);
        EXPECT_EQ((upath(head, false) /= ustring(tail)).string(), plain) << utf8(head) << " / " << utf8(tail);
    }
    EXPECT_EQ((upath(u"a") / upath(u"b") / upath(u"c.txt")).string(), u"a/b/c.txt");
    EXPECT_EQ((upath(u"a") /= static_cast<const char16_t*>(nullptr)).string(), u"a");
    EXPECT_FALSE((upath(u"a", false) / upath(u"b")).parent_path().append_flag());
}

TEST(AccessForm, IsTheUtf8BytesAsTheyStand)
{
    EXPECT_EQ(fs::detail::make_native_access_form(u"/a//./\u00E9/"), "/a//./\xC3\xA9/");
    EXPECT_EQ(fs::detail::make_native_access_form_with_cleanup(u"/a//./\u00E9/"), "/a/\xC3\xA9");
    EXPECT_EQ(fs::detail::make_access_form(std::string("\xFF/x\0y", 5)), std::string("\xFF/x\0y", 5));
    try {
        fs::detail::make_native_access_form(u"ab\xDC00");
        FAIL() << "a lone surrogate converted";
    } catch (const fs::InvalidArgument& e) {
        EXPECT_EQ(e.get_path(), u"ab\xDC00");
        EXPECT_EQ(std::string(e.what()).rfind("fl:filesystem:InvalidArgument: ", 0), 0u) << e.what();
    }
    EXPECT_STREQ(fs::InvalidArgument("", u"/p", {}).what(), "fl:filesystem:InvalidArgument");
}

TEST(Exceptions, InvalidOperationSurvivesExceptionPtr)
{
    boost::exception_ptr captured;
    try {
        fs::detail::throw_invalid_operation_exception();
    } catch (...) {
        captured = boost::current_exception();
    }
    ASSERT_TRUE(captured);
    try {
        boost::rethrow_exception(captured);
    } catch (const fs::InvalidOperation& e) {
        EXPECT_EQ(e.get_id(), fs::fsys_invalid_operation);
        EXPECT_STREQ(e.what(), "fl:filesystem:InvalidOperation");
    }
}

// `call` must throw OperationFailure for `path`, from the system call `name`, with `error`.
template <class Call>
void expect_failure(Call call, const ustring& path, const char16_t* name, int error)
{
    try {
        call();
        ADD_FAILURE() << utf8(path) << " did not fail";
    } catch (const fs::OperationFailure& e) {
        EXPECT_EQ(e.get_error(), error) << utf8(path);
        EXPECT_EQ(e.get_path(), path);
        EXPECT_EQ(e.get_arguments(), std::vector<ustring>{name});
    }
}

TEST_F(FileSystemQueries, StatusReportsTypePermissionsTimesAndSize)
{
    std::ofstream(at("f\xC3\xA9.txt")) << "12345";
    ASSERT_EQ(::chmod(at("f\xC3\xA9.txt").c_str(), 0640), 0);
    const timespec times[2] = {{1000000000, 123456789}, {1234567890, 987654321}};
    ASSERT_EQ(::utimensat(AT_FDCWD, at("f\xC3\xA9.txt").c_str(), times, 0), 0);
    ASSERT_EQ(::mkdir(at("dir").c_str(), 0750), 0);
    ASSERT_EQ(::mkfifo(at("fifo").c_str(), 0600), 0);
    ASSERT_EQ(::symlink("f\xC3\xA9.txt", at("link").c_str()), 0);
    ASSERT_EQ(::symlink("missing", at("dangling").c_str()), 0);

    const file_status file = fs::status(u16(at("f\xC3\xA9.txt")));
    EXPECT_EQ(file.type(), file_status::regular_file);
    EXPECT_EQ(file.permissions(), 0640u);
    EXPECT_EQ(file.size(), 5u);
    using boost::posix_time::from_time_t;
    using boost::posix_time::microseconds;
    EXPECT_EQ(file.access_time(), from_time_t(1000000000) + microseconds(123456));
    EXPECT_EQ(file.last_write_time(), from_time_t(1234567890) + microseconds(987654));
    EXPECT_FALSE(file.change_time().is_not_a_date_time());

    // path, type by status, type by symlink_status
    const std::tuple<std::string, file_status::type_type, file_status::type_type> cases[] = {
        {"dir", file_status::directory_file, file_status::directory_file},
        {"fifo", file_status::fifo_file, file_status::fifo_file},
        {"link", file_status::regular_file, file_status::symlink_file},
        {"dangling", file_status::file_not_found, file_status::symlink_file},
        {"missing", file_status::file_not_found, file_status::file_not_found},
        {"f\xC3\xA9.txt/below", file_status::file_not_found, file_status::file_not_found},
    };
    for (const auto& [name, followed, own] : cases) {
        EXPECT_EQ(fs::status(upath(u16(at(name)))).type(), followed) << name;
        EXPECT_EQ(fs::symlink_status(u16(at(name))).type(), own) << name;
        EXPECT_EQ(fs::exists(upath(u16(at(name)))), followed != file_status::file_not_found) << name;
    }
    EXPECT_EQ(fs::status(u"/dev/null").type(), file_status::character_file);
    EXPECT_EQ(fs::status(u"").type(), file_status::file_not_found);
    const file_status missing = fs::status(u16(at("missing")));
    EXPECT_EQ(missing.permissions(), file_status::no_perms);
    EXPECT_TRUE(missing.last_write_time().is_not_a_date_time());
    EXPECT_EQ(file_status().type(), file_status::file_not_found);
}

TEST_F(FileSystemQueries, StatusFailuresOtherThanMissingThrowWithThePath)
{
    ASSERT_EQ(::symlink("loop_b", at("loop_a").c_str()), 0);
    ASSERT_EQ(::symlink("loop_a", at("loop_b").c_str()), 0);
    const ustring too_long = u16(at(std::string(NAME_MAX + 1, 'n')));
    expect_failure([&] { fs::status(u16(at("loop_a"))); }, u16(at("loop_a")), u"stat", ELOOP);
    expect_failure([&] { fs::status(too_long); }, too_long, u"stat", ENAMETOOLONG);
    EXPECT_EQ(fs::symlink_status(u16(at("loop_a"))).type(), file_status::symlink_file);
    EXPECT_THROW(fs::status(ustring(u"/tmp\0x", 6)), fs::InvalidArgument);
    EXPECT_THROW(fs::status(ustring(u"/\xD800")), fs::InvalidArgument);
}

TEST_F(FileSystemQueries, AbsoluteJoinsAndCanonicalResolves)
{
    const ustring cwd = u16(stdfs::current_path().string());
    EXPECT_EQ(fs::current_path(), cwd);
    // path, base, absolute
    const std::tuple<ustring, ustring, ustring> cases[] = {
        {u"x/./y/", u"/base", u"/base/x/y"}, {u"/abs//p/", u"/base", u"/abs/p"}, {u"../z", u"/base/", u"/base/../z"},
        {u"", u"/base", u"/base"},          {u"rel", u"", cwd + u"/rel"},      {u"rel", u"b", cwd + u"/b/rel"},
    };
    for (const auto& [path, base, expected] : cases) {
        EXPECT_EQ(fs::absolute(path, base), expected) << utf8(path) << " against " << utf8(base);
        EXPECT_EQ(fs::absolute(upath(path, false), upath(base)).string(), expected) << utf8(path);
    }
    ASSERT_EQ(::mkdir(at("real").c_str(), 0700), 0);
    std::ofstream(at("real/file"));
    ASSERT_EQ(::symlink("real", at("alias").c_str()), 0);
    const ustring root16 = u16(root);
    EXPECT_EQ(fs::canonical(root16 + u"/alias/../alias/./file"), root16 + u"/real/file");
    EXPECT_EQ(fs::canonical(u"alias//file", root16.c_str()), root16 + u"/real/file");
    EXPECT_EQ(fs::canonical(upath(u"alias"), upath(root16)).string(), root16 + u"/real");
    for (const auto& [path, error] : {std::pair<ustring, int>{root16 + u"/alias/missing", ENOENT}, {u"", ENOENT},
                                      {root16 + u"/real/file/x", ENOTDIR}})
        expect_failure([&path = path] { fs::canonical(path); }, path, u"realpath", error);
}

}  // namespace

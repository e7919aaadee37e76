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

TEST(Upath, KeepsTheNativeFormAndDecomposes)
{
    // text, native form, parent, filename, stem, extension
    const std::tuple<const char16_t*, const char16_t*, const char16_t*, const char16_t*, const char16_t*, const char16_t*>
        cases[] = {
            {u"a//b/./c.tar.gz/", u"a/b/c.tar.gz", u"a/b", u"c.tar.gz", u"c.tar", u".gz"},
            {u"///x//", u"/x", u"/", u"x", u"x", u""},
            {u"/", u"/", u"", u"", u"", u""},
            {u"./", u".", u"", u".", u".", u""},
            {nullptr, u"", u"", u"", u"", u""},
            {u"\u00E9//\U0001F600", u"\u00E9/\U0001F600", u"\u00E9", u"\U0001F600", u"\U0001F600", u""},
        };
    for (const auto& [text, native, parent, filename, stem, extension] : cases) {
        const upath p(text);
        EXPECT_EQ(p.string(), native) << (text ? utf8(text) : "null");
        EXPECT_EQ(std::make_tuple(p.parent_path().string(), p.filename(), p.stem(), p.extension()),
                  std::make_tuple(ustring(parent), ustring(filename), ustring(stem), ustring(extension)))
            << utf8(native);
    }
    for (const auto& [path, parent] : {std::pair{u"//a", u"/"}, {u"a//b/", u"a"}, {u"///", u""}, {u"/a//b//", u"/a"}})
        EXPECT_EQ(fs::detail::extract_parent_path(path), parent) << utf8(path);
    EXPECT_TRUE(upath(u"/a").is_absolute() && upath(u"a").is_relative());
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

// The access form is the UTF-8 bytes as they stand; a name without any is refused with its path.
TEST(AccessForm, IsTheUtf8BytesAsTheyStand)
{
    EXPECT_EQ(fs::detail::make_native_access_form(u"/a//./\u00E9/"), "/a//./\xC3\xA9/");
    EXPECT_EQ(fs::detail::make_native_access_form_with_cleanup(u"/a//./\u00E9/"), "/a/\xC3\xA9");
    EXPECT_EQ(fs::detail::make_access_form(std::string("\xFF/x\0y", 5)), std::string("\xFF/x\0y", 5));
    try {
        fs::detail::make_native_access_form(u"ab\xDC00");
        ADD_FAILURE() << "a lone surrogate converted";
    } catch (const fs::InvalidArgument& e) {
        EXPECT_EQ(e.get_path(), u"ab\xDC00");
        EXPECT_EQ(std::string(e.what()).rfind("fl:filesystem:InvalidArgument: ", 0), 0u) << e.what();
    }
    EXPECT_STREQ(fs::InvalidArgument("", u"/p", {}).what(), "fl:filesystem:InvalidArgument");
    boost::exception_ptr captured;
    try {
        fs::detail::throw_invalid_operation_exception();
    } catch (...) {
        captured = boost::current_exception();
    }
    EXPECT_THROW(boost::rethrow_exception(captured), fs::InvalidOperation);
    EXPECT_EQ(fs::InvalidOperation().get_id(), fs::fsys_invalid_operation);
}

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
    std::string native(const std::string& name) const { return root + "/" + name; }
    ustring at(const std::string& name) const { return u16(native(name)); }
    std::string root;
};

// `call` must throw OperationFailure for `path`, from the system call `name`, with `error`.
template <class Call>
void expect_failure(Call call, const ustring& path, const char16_t* name, int error)
{
    try {
        call();
        ADD_FAILURE() << utf8(path) << " did not fail";
    } catch (const fs::OperationFailure& e) {
        EXPECT_EQ(std::make_tuple(e.get_error(), e.get_path(), e.get_arguments()),
                  std::make_tuple(error, path, std::vector<ustring>{name}));
    }
}

TEST_F(FileSystemQueries, StatusReportsTypePermissionsTimesAndSizeOrThrows)
{
    const std::string file_name = native("f\xC3\xA9.txt");
    std::ofstream(file_name) << "12345";
    const timespec times[2] = {{1000000000, 123456789}, {1234567890, 987654321}};
    ASSERT_TRUE(::chmod(file_name.c_str(), 0640) == 0 && ::utimensat(AT_FDCWD, file_name.c_str(), times, 0) == 0);
    ASSERT_TRUE(::mkdir(native("dir").c_str(), 0750) == 0 && ::mkfifo(native("fifo").c_str(), 0600) == 0);
    for (const auto& [target, link] : {std::pair{"f\xC3\xA9.txt", "link"}, {"missing", "dangling"}, {"loop", "loop"}})
        ASSERT_EQ(::symlink(target, native(link).c_str()), 0);

    const file_status file = fs::status(at("f\xC3\xA9.txt"));
    using boost::posix_time::from_time_t;
    using boost::posix_time::microseconds;
    EXPECT_EQ(std::make_tuple(file.type(), file.permissions(), file.size()), std::make_tuple(file_status::regular_file, 0640u, 5u));
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
        EXPECT_EQ(fs::status(upath(at(name))).type(), followed) << name;
        EXPECT_EQ(fs::symlink_status(at(name)).type(), own) << name;
        EXPECT_EQ(fs::exists(upath(at(name))), followed != file_status::file_not_found) << name;
    }
    EXPECT_EQ(fs::status(u"/dev/null").type(), file_status::character_file);
    EXPECT_EQ(fs::status(u"").type(), file_status::file_not_found);
    const file_status missing = fs::status(at("missing"));
    EXPECT_EQ(missing.permissions(), file_status::no_perms);
    EXPECT_TRUE(missing.last_write_time().is_not_a_date_time());
    EXPECT_EQ(file_status().type(), file_status::file_not_found);

    // Failures other than a missing name throw with the path.
    const ustring too_long = at(std::string(NAME_MAX + 1, 'n'));
    expect_failure([&] { fs::status(at("loop")); }, at("loop"), u"stat", ELOOP);
    expect_failure([&] { fs::status(too_long); }, too_long, u"stat", ENAMETOOLONG);
    EXPECT_EQ(fs::symlink_status(at("loop")).type(), file_status::symlink_file);
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
    ASSERT_TRUE(::mkdir(native("real").c_str(), 0700) == 0 && ::symlink("real", native("alias").c_str()) == 0);
    std::ofstream(native("real/file"));
    EXPECT_EQ(fs::canonical(at("alias/../alias/./file")), at("real/file"));
    EXPECT_EQ(fs::canonical(u"alias//file", u16(root).c_str()), at("real/file"));
    EXPECT_EQ(fs::canonical(upath(u"alias"), upath(u16(root))).string(), at("real"));
    for (const auto& [path, error] : {std::pair<ustring, int>{at("alias/missing"), ENOENT}, {u"", ENOENT}, {at("real/file/x"), ENOTDIR}})
        expect_failure([&path = path] { fs::canonical(path); }, path, u"realpath", error);
}

}  // namespace

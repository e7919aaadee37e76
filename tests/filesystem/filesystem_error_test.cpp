// The file-system exception family: ids and keys, errno to exception and back, and the
// reporting of names that are not valid in any encoding.
#include <fl/filesystem/filesystem_error.hpp>

#include <boost/exception/exception.hpp>
#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>

namespace {

namespace fs = fl::filesystem;
using fl::ustring;

// What throw_file_system_error throws, as far as a caller can see it.
struct thrown {
    fs::fsys_excp_id id;
    std::string key;
    ustring path;
    std::vector<ustring> arguments;
    int error;
};

thrown catch_thrown(int error, const std::string& path, const std::string& second_path)
{
    try {
        fs::throw_file_system_error(error, path, second_path);
    } catch (const fs::FsysExceptionBase& e) {
        return {e.get_id(), e.what(), e.get_path(), e.get_arguments(), e.get_error()};
    }
}

TEST(ThrowFileSystemError, MapsEachErrnoToItsException)
{
    const std::vector<ustring> second{u"/second"};
    // errno, id, class, arguments, error kept
    const std::tuple<int, fs::fsys_excp_id, const char*, std::vector<ustring>, int> cases[] = {
        {ENOENT, fs::fsys_path_not_found, "PathNotFound", {}, 0},     {EACCES, fs::fsys_access_denied, "AccessDenied", {}, 0},
        {EEXIST, fs::fsys_file_exists_error, "FileExistsError", {}, 0}, {ENOTDIR, fs::fsys_not_directory_error, "NotDirectoryError", {}, 0},
        {EISDIR, fs::fsys_file_is_directory, "FileIsDirectory", {}, 0}, {EINVAL, fs::fsys_invalid_argument, "InvalidArgument", second, 0},
        {ENAMETOOLONG, fs::fsys_file_name_too_large, "FileNameTooLarge", {}, 0},
        {ENOTEMPTY, fs::fsys_directory_not_empty, "DirectoryNotEmpty", {}, 0},
        {EOPNOTSUPP, fs::fsys_invalid_argument, "InvalidArgument", second, 0},
        {EIO, fs::fsys_system_error, "SystemError", second, EIO},      {0, fs::fsys_system_error, "SystemError", second, 0},
    };
    for (const auto& [error, id, name, arguments, kept] : cases) {
        const thrown t = catch_thrown(error, "/d\xC3\xA9j\xC3\xA0", "/second");
        EXPECT_EQ(t.id, id) << "errno " << error;
        EXPECT_EQ(t.key, std::string("fl:filesystem:") + name) << "errno " << error;
        EXPECT_EQ(t.path, u"/d\u00E9j\u00E0") << "errno " << error;
        EXPECT_EQ(t.arguments, arguments) << "errno " << error;
        EXPECT_EQ(t.error, kept) << "errno " << error;
    }
    // The one-element list exists even when there is no second path.
    EXPECT_EQ(catch_thrown(EINVAL, "x", "").arguments, std::vector<ustring>{u""});
    EXPECT_EQ(catch_thrown(5, "x", "").arguments, std::vector<ustring>{u""});
    // The classes that no errno leads to.
    const std::tuple<std::shared_ptr<fs::FsysExceptionBase>, fs::fsys_excp_id, const char*> others[] = {
        {std::make_shared<fs::FileNameConversionFailure>(), fs::fsys_file_name_conversion_failure, "FileNameConversionFailure"},
        {std::make_shared<fs::CvtInvalidCharacter>(), fs::fsys_cvt_invalid_character, "CvtInvalidCharacter"},
        {std::make_shared<fs::PathNameComparisonFailure>(), fs::fsys_path_name_comparison_failure, "PathNameComparisonFailure"},
        {std::make_shared<fs::TempEnvNotSpecified>(), fs::fsys_temp_env_not_specified, "TempEnvNotSpecified"},
    };
    for (const auto& [e, id, name] : others) {
        EXPECT_EQ(e->get_id(), id) << name;
        EXPECT_EQ(e->what(), std::string("fl:filesystem:") + name);
        EXPECT_TRUE(e->get_path().empty() && e->get_arguments().empty() && e->get_error() == 0) << name;
    }
}

TEST(ThrowFileSystemError, WidensUndecodableNamesWithSignExtension)
{
    // bytes, reported as
    const std::pair<std::string, ustring> cases[] = {
        {"\xE9t\xE9", u"\xFFE9t\xFFE9"}, {"\xC3", u"\xFFC3"}, {"\xED\xA0\x80", u"\xFFED\xFFA0\xFF80"},
        {std::string("\x7F\0\xFF", 3), ustring(u"\x7F\0\xFFFF", 3)}, {"", u""},
    };
    for (const auto& [bytes, reported] : cases) {
        EXPECT_EQ(catch_thrown(EACCES, bytes, "").path, reported);
        EXPECT_EQ(catch_thrown(EIO, "ok", bytes).arguments, std::vector<ustring>{reported});
    }
}

// The errno that set_errno_from_current_exception gives for what `raise` throws; -1 if it rethrew.
int errno_after(const std::function<void()>& raise)
{
    try {
        try {
            raise();
        } catch (...) {
            errno = 0;
            fs::set_errno_from_current_exception();
            return errno;
        }
    } catch (...) {
        return -1;
    }
    ADD_FAILURE() << "nothing was thrown";
    return -2;
}

template <class E, class... Args>
std::function<void()> raising(Args... args)
{
    return [=] { throw boost::exception_detail::clone_impl<E>(E(args...)); };
}

TEST(SetErrnoFromCurrentException, ClassifiesTheFamilyAndBadAlloc)
{
    // what is thrown, errno (-1: rethrown)
    const std::pair<std::function<void()>, int> cases[] = {
        {raising<fs::CvtInvalidCharacter>(), ENOENT},
        {raising<fs::FileNameConversionFailure>(), ENOENT},
        {raising<fs::FileNameTooLarge>(u""), ENAMETOOLONG},
        {[] { throw std::bad_alloc(); }, ENOMEM},
        {raising<fs::TempEnvNotSpecified>(), -1},
        {raising<fs::InvalidOperation>(), -1},
        {[] { throw std::runtime_error("other"); }, -1},
    };
    int index = 0;
    for (const auto& [raise, expected] : cases)
        EXPECT_EQ(errno_after(raise), expected) << "case " << index++;
    // errno thrown by throw_file_system_error, errno after the round trip
    const std::pair<int, int> round_trips[] = {
        {ENOENT, ENOENT}, {EACCES, EACCES}, {EEXIST, EEXIST},  {ENOTDIR, ENOTDIR},         {EINVAL, EINVAL},
        {EOPNOTSUPP, EINVAL}, {ENAMETOOLONG, ENAMETOOLONG}, {ENOTEMPTY, ENOTEMPTY}, {EISDIR, -1},
        {EIO, EIO}, {EPERM, EIO},
    };
    for (const auto& [error, expected] : round_trips)
        EXPECT_EQ(errno_after([e = error] { fs::throw_file_system_error(e, "/p", ""); }), expected) << "errno " << error;
}

}  // namespace

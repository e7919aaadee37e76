// Helpers shared by the file-system tests: raw-ICU reference conversions, what a call throws, tree
// builders, and a scratch directory that restores the libc seam and can rerun its test unprivileged.
#pragma once

#include "filesystem/filesystem_internal.hpp"

#include <fl/filesystem/filesystem_error.hpp>
#include <fl/i18n/ustring.hpp>

#include <gtest/gtest.h>
#include <unicode/ucnv.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

namespace qx_test {

using fl::ustring;

struct ucnv_closer {
    void operator()(UConverter* c) const noexcept { ucnv_close(c); }
};

// Raw ICU through a fresh converter, either way: the reference result, or nullopt where a
// strict converter (stop call-backs) fails.
template <class To, class From>
std::optional<std::basic_string<To>> icu_convert(const char* encoding, const std::basic_string<From>& text, bool strict)
{
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UConverter, ucnv_closer> converter(ucnv_open(encoding, &status));
    if (strict) {
        ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
        ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    }
    EXPECT_TRUE(U_SUCCESS(status)) << encoding;
    std::basic_string<To> out(text.size() * 4 + 4, To());
    const auto capacity = static_cast<int32_t>(out.size()), length = static_cast<int32_t>(text.size());
    int32_t produced = 0;
    if constexpr (std::is_same_v<To, char>)
        produced = ucnv_fromUChars(converter.get(), out.data(), capacity, text.data(), length, &status);
    else
        produced = ucnv_toUChars(converter.get(), out.data(), capacity, text.data(), length, &status);
    if (U_FAILURE(status))
        return std::nullopt;
    out.resize(static_cast<std::size_t>(produced));
    return out;
}

// The id and path of the file-system exception that `f` throws; {-1, "no exception"} if none.
using failure = std::pair<fl::filesystem::fsys_excp_id, ustring>;
template <class F>
failure thrown(F&& f)
{
    try {
        f();
    } catch (const fl::filesystem::FsysExceptionBase& e) {
        return {e.get_id(), e.get_path()};
    }
    return {fl::filesystem::fsys_excp_id(-1), u"no exception"};
}

// The message of the InvalidArgument that `f` throws.
template <class F>
std::string thrown_message(F&& f)
{
    try {
        f();
    } catch (const fl::filesystem::InvalidArgument& e) {
        return e.get_message();
    }
    return "no InvalidArgument";
}

inline void make_file(const std::string& path, const std::string& text = "x") { std::ofstream(path) << text; }
inline void make_dir(const std::string& path, mode_t mode = 0755) { ASSERT_EQ(::mkdir(path.c_str(), mode), 0) << path; }
inline void make_link(const std::string& target, const std::string& path)
{
    ASSERT_EQ(::symlink(target.c_str(), path.c_str()), 0) << path;
}

// Descriptors open in this process right now.
inline int open_descriptors()
{
    const std::filesystem::directory_iterator fds("/proc/self/fd");
    return static_cast<int>(std::distance(begin(fds), end(fds)));
}

// A fresh directory under the build tree, removed with its contents at the end of the test; in
// the unprivileged child that run_as_nobody starts, its parent's directory. The real libc calls
// are kept in real_libc and put back at the end, whatever the test put in the seam.
class scratch_test : public testing::Test {
protected:
    void SetUp() override
    {
        if (const char* parent = std::getenv("QXI18N_CHILD_SCRATCH")) {
            root = parent;
            child = true;
            return;
        }
        std::string pattern = (std::filesystem::path(QXI18N_TEST_BINARY_DIR) / "tests" / "filesystem" / "scratch_")
                                  .string() + std::string(6, 'X');
        ASSERT_NE(mkdtemp(pattern.data()), nullptr) << pattern;
        root = pattern;
    }
    void TearDown() override
    {
        fl::filesystem::detail::libc() = real_libc;
        std::error_code ignored;
        if (!child)
            std::filesystem::remove_all(root, ignored);
    }
    std::string at(const std::string& name) const { return root + "/" + name; }
    ustring u16at(const std::string& name) const { return fl::filesystem::detail::from_filesystem_bytes(at(name)); }

    // Runs this test again in this program as uid and gid 65534 (directly when not root), with
    // `environment` added; it fails unless the child passes within a minute. The child finds
    // `child` set.
    void run_as_nobody(const std::string& environment = "")
    {
        const bool as_root = ::geteuid() == 0;
        if (as_root && ::access("/usr/bin/setpriv", X_OK) != 0 && ::access("/bin/setpriv", X_OK) != 0)
            GTEST_SKIP() << "running as root and setpriv is missing: cannot drop to an unprivileged user";
        ASSERT_EQ(::chmod(root.c_str(), 0755), 0);
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        const std::string log_path = root + ".log";
        const std::string command = "env QXI18N_CHILD_SCRATCH='" + root + "' " + environment +
                                    (as_root ? " timeout 60 setpriv --reuid=65534 --regid=65534 --clear-groups '" : " timeout 60 '") +
                                    std::filesystem::read_symlink("/proc/self/exe").string() + "' --gtest_filter=" +
                                    test->test_suite_name() + "." + test->name() + " > '" + log_path + "' 2>&1";
        const int status = std::system(command.c_str());
        std::ifstream in(log_path);
        const std::string log((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        std::remove(log_path.c_str());
        EXPECT_EQ(status, 0) << log;
        EXPECT_NE(log.find("[  PASSED  ] 1 test"), std::string::npos) << log;
    }

    const fl::filesystem::detail::system_calls real_libc = fl::filesystem::detail::libc();
    std::string root;
    bool child = false;
};

}  // namespace qx_test

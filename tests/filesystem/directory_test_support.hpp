// Helpers of the directory tests: building trees, counting open descriptors, replacing the
// directory calls, and running one test again as an unprivileged user.
#pragma once

#include "filesystem_test_support.hpp"

#include "filesystem/directory_internal.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace qx_test {

// Descriptors open in this process right now.
inline int open_descriptors()
{
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        static_cast<void>(entry);
        ++count;
    }
    return count;
}

inline void make_file(const std::string& path) { std::ofstream(path) << "x"; }
inline void make_dir(const std::string& path) { ASSERT_EQ(::mkdir(path.c_str(), 0755), 0) << path; }
inline void make_link(const std::string& target, const std::string& path)
{
    ASSERT_EQ(::symlink(target.c_str(), path.c_str()), 0) << path;
}

// The path of the exception of type E that `f` throws; "no exception" otherwise.
template <class E, class F>
fl::ustring thrown_path(F&& f)
{
    try {
        f();
    } catch (const E& e) {
        return e.get_path();
    }
    return u"no exception";
}

// Replaces directory calls for one scope.
class directory_calls_override {
public:
    directory_calls_override() : saved_(fl::filesystem::detail::directory_libc()) {}
    ~directory_calls_override() { fl::filesystem::detail::directory_libc() = saved_; }
    directory_calls_override(const directory_calls_override&) = delete;
    directory_calls_override& operator=(const directory_calls_override&) = delete;

private:
    fl::filesystem::detail::directory_calls saved_;
};

// Runs `suite.test` of this program again as uid and gid 65534 (directly when not root), with
// QXI18N_DIRECTORY_CHILD set so that the test body runs there; true when it passed.
inline bool run_unprivileged(const std::string& test, const std::string& scratch, std::string& log)
{
    const std::string drop = ::geteuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : "";
    const std::string log_path = scratch + ".log";
    const std::string command = "env QXI18N_DIRECTORY_CHILD='" + scratch + "' " + drop +
                                std::filesystem::read_symlink("/proc/self/exe").string() + " --gtest_filter=" + test +
                                " > '" + log_path + "' 2>&1";
    const int status = std::system(command.c_str());
    std::ifstream in(log_path);
    log.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    std::remove(log_path.c_str());
    return status == 0 && log.find("[  PASSED  ] 1 test") != std::string::npos;
}

// A scratch directory, except in the unprivileged child, which works in its parent's.
class directory_scratch_test : public scratch_test {
protected:
    void SetUp() override
    {
        if (std::getenv("QXI18N_DIRECTORY_CHILD") == nullptr)
            scratch_test::SetUp();
    }
    void TearDown() override
    {
        if (std::getenv("QXI18N_DIRECTORY_CHILD") == nullptr)
            scratch_test::TearDown();
    }
};

inline bool can_drop_privileges()
{
    return ::geteuid() != 0 || ::access("/usr/bin/setpriv", X_OK) == 0 || ::access("/bin/setpriv", X_OK) == 0;
}

}  // namespace qx_test

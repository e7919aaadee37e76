// fopen and freopen by UTF-16 name: results and errno, with the system's fopen counted where a
// case must not reach it.
#include "filesystem_test_support.hpp"

#include <fl/filesystem/file_name_conversion.hpp>
#include <fl/filesystem/file_open.hpp>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <new>

namespace {

namespace fs = fl::filesystem;
using fl::ustring;
using namespace qx_test;

int system_opens = 0;

std::FILE* counting_fopen(const char* path, const char* mode)
{
    ++system_opens;
    return std::fopen(path, mode);
}

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

class Fopen : public scratch_test {
protected:
    void SetUp() override
    {
        scratch_test::SetUp();
        system_opens = 0;
        fs::detail::libc().fopen = counting_fopen;
    }
    libc_override restore;
};

TEST_F(Fopen, RefusesBadArgumentsWithoutAskingTheSystem)
{
    // name, mode, errno
    const std::tuple<ustring, std::string, int> cases[] = {
        {u"", "r", EINVAL},          {u"x", "", EINVAL},       {ustring(u"\0x", 2), "r", EINVAL},
        {u"/tmp/", "r", EISDIR},     {u"a//", "w", EISDIR},    {u"/", "r", EISDIR},
    };
    for (const auto& [name, mode, error] : cases) {
        errno = 12345;
        EXPECT_EQ(fs::fopen(name, mode), nullptr);
        EXPECT_EQ(errno, error) << mode;
        errno = 12345;
        EXPECT_EQ(fs::fopen(name, mode, fs::codecvt_ustring_to_filesystem(false)), nullptr);
        EXPECT_EQ(errno, error) << mode;
    }
    EXPECT_EQ(system_opens, 0);
    errno = 0;
    EXPECT_EQ(fs::fopen(static_cast<const char16_t*>(nullptr), "r"), nullptr);
    EXPECT_EQ(errno, EINVAL);
    errno = 0;
    EXPECT_EQ(fs::fopen(fs::upath(), "r"), nullptr);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(system_opens, 0);
}

TEST_F(Fopen, UpathLeavesATrailingSeparatorToTheSystem)
{
    // The ustring form answers by itself; the upath form, native already, asks the system.
    errno = 0;
    EXPECT_EQ(fs::fopen(ustring(u16at("") + u"/"), "w"), nullptr);
    EXPECT_EQ(errno, EISDIR);
    EXPECT_EQ(system_opens, 0);
    errno = 0;
    EXPECT_EQ(fs::fopen(fs::upath(u16at("") + u"/"), "w"), nullptr);
    EXPECT_EQ(errno, EISDIR);
    EXPECT_EQ(system_opens, 1);
}

TEST_F(Fopen, OpensAndReportsTheSystemsErrno)
{
    const ustring name = u16at("d\xC3\xA9j\xC3\xA0.txt");
    file_ptr written(fs::fopen(name, "w"));
    ASSERT_TRUE(written);
    EXPECT_EQ(errno, 0);
    std::fputs("one", written.get());
    written.reset();
    EXPECT_TRUE(std::ifstream(at("d\xC3\xA9j\xC3\xA0.txt")).good());

    // name (relative to the scratch directory), mode, errno of a failure or 0
    const std::tuple<ustring, std::string, int> cases[] = {
        {u"d\u00E9j\u00E0.txt", "r", 0},    {u".//d\u00E9j\u00E0.txt", "r", 0}, {u"missing", "r", ENOENT},
        {u"no/such/dir", "w", ENOENT},      {u".", "w", EISDIR},                {u"d\u00E9j\u00E0.txt/x", "r", ENOTDIR},
        {ustring(300, u'n'), "r", ENAMETOOLONG},
    };
    for (const auto& [relative, mode, error] : cases) {
        const ustring full = u16at("") + u"/" + relative;
        for (int form = 0; form < 3; ++form) {
            errno = 0;
            file_ptr file(form == 0   ? fs::fopen(full, mode)
                          : form == 1 ? fs::fopen(fs::upath(full), mode)
                                      : fs::fopen(full, mode, fs::codecvt_ustring_to_filesystem(true)));
            EXPECT_EQ(file != nullptr, error == 0) << form;
            EXPECT_EQ(errno, error) << form;
            if (file) {
                EXPECT_EQ(contents(file.get()), "one");
            }
        }
    }
}

TEST_F(Fopen, NamesThatDoNotConvertGiveEnoentAndNoException)
{
    const ustring name = u16at("") + u"/bad\xD800";
    errno = 0;
    EXPECT_EQ(fs::fopen(name, "w", fs::codecvt_ustring_to_filesystem(false)), nullptr);
    EXPECT_EQ(errno, ENOENT);
    errno = 0;
    EXPECT_EQ(fs::fopen(fs::upath(name), "w", fs::codecvt_ustring_to_narrow_string(false)), nullptr);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(system_opens, 0);
}

TEST_F(Fopen, MemoryExhaustionGivesEnomem)
{
    fs::detail::libc().fopen = [](const char*, const char*) -> std::FILE* { throw std::bad_alloc(); };
    errno = 0;
    EXPECT_EQ(fs::fopen(u16at("x"), "w"), nullptr);
    EXPECT_EQ(errno, ENOMEM);
}

class Freopen : public scratch_test {};

TEST_F(Freopen, ReopensAStreamOnANamedFile)
{
    std::ofstream(at("first")) << "first";
    std::ofstream(at("\xE6\x97\xA5")) << "second";
    std::FILE* stream = std::fopen(at("first").c_str(), "r");
    ASSERT_NE(stream, nullptr);
    // A failure of the system's freopen would close the stream but leave its memory behind, so
    // only successes are tried here; the system's errno takes the same path as for fopen.
    file_ptr reopened(fs::freopen(fs::upath(u16at("\xE6\x97\xA5")), "r", stream));
    ASSERT_TRUE(reopened);
    EXPECT_EQ(contents(reopened.get()), "second");
    std::FILE* again = reopened.release();
    reopened.reset(fs::freopen(u16at(".//first"), "r", again, fs::codecvt_ustring_to_filesystem(false)));
    ASSERT_TRUE(reopened);
    EXPECT_EQ(contents(reopened.get()), "first");
}

TEST_F(Freopen, RefusesANullStreamAndBadArguments)
{
    errno = 0;
    EXPECT_EQ(fs::freopen(u16at("x"), "r", nullptr), nullptr);
    EXPECT_EQ(errno, EINVAL);
    errno = 0;
    EXPECT_EQ(fs::freopen(fs::upath(u16at("x")), "r", nullptr, fs::codecvt_ustring_to_filesystem(true)), nullptr);
    EXPECT_EQ(errno, EINVAL);
    file_ptr stream(std::fopen(at("keep").c_str(), "w"));
    ASSERT_TRUE(stream);
    errno = 0;
    EXPECT_EQ(fs::freopen(u16at("dir/"), "r", stream.get()), nullptr);
    EXPECT_EQ(errno, EISDIR);
    errno = 0;
    EXPECT_EQ(fs::freopen(u"", "r", stream.get()), nullptr);
    EXPECT_EQ(errno, EINVAL);
    // Refused before the system was asked: the stream is still open and usable.
    EXPECT_EQ(std::fputs("still open", stream.get()), 1);
}

// Runs as_nobody.<test> of the scenario program as uid and gid 65534, or directly when the tests
// do not run as root (then permissions bind anyway). Gives the program's exit status.
int run_unprivileged(const std::string& test, const std::string& scratch, const std::string& environment)
{
    const std::string drop = ::geteuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : "";
    const std::string command = "env QXI18N_SCENARIO=" + test + " QXI18N_SCRATCH='" + scratch + "' " + environment + " " + drop + "'" +
                                QXI18N_SCENARIO_PROGRAM + "' --gtest_filter=as_nobody." + test + " > '" + scratch +
                                "/child.log' 2>&1";
    return std::system(command.c_str());
}

class Unprivileged : public scratch_test {
protected:
    void SetUp() override
    {
        scratch_test::SetUp();
        if (::geteuid() == 0 && ::access("/usr/bin/setpriv", X_OK) != 0 && ::access("/bin/setpriv", X_OK) != 0)
            GTEST_SKIP() << "running as root and setpriv is missing: cannot drop to an unprivileged user";
        ASSERT_EQ(::chmod(root.c_str(), 0755), 0);
        std::ofstream(at("secret")) << "secret";
        ASSERT_EQ(::chmod(at("secret").c_str(), 0600), 0);
        ASSERT_EQ(::mkdir(at("read-only").c_str(), 0555), 0);
        ASSERT_EQ(::mkdir(at("writable").c_str(), 0777), 0);
        ASSERT_EQ(::chmod(at("writable").c_str(), 0777), 0);
    }
    void expect_child_passes(const std::string& test, const std::string& environment = "")
    {
        const int status = run_unprivileged(test, root, environment);
        std::ifstream log(at("child.log"));
        const std::string output((std::istreambuf_iterator<char>(log)), std::istreambuf_iterator<char>());
        EXPECT_EQ(status, 0) << output;
        EXPECT_NE(output.find("[  PASSED  ] 1 test"), std::string::npos) << output;
    }
};

TEST_F(Unprivileged, FopenOfAnUnreadableFileGivesEacces) { expect_child_passes("fopen_denied"); }

TEST_F(Unprivileged, TmpfileInAnUnwritableDirectoryGivesNullWithErrnoZero)
{
    expect_child_passes("tmpfile_in_unwritable_directory");
}

// The environment is the child's own, so this process's variables stay as they are.
TEST_F(Unprivileged, TempDirectoryNameSkipsAReadOnlyCandidate)
{
    expect_child_passes("temp_directory_skips_a_read_only_candidate",
                        "TMPDIR='" + at("read-only") + "' TMP='" + at("writable") + "'");
}

}  // namespace

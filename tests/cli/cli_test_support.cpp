// Running the tool as a child process, scratch files and raw-ICU reference conversions.
#include "cli_test_support.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unicode/ucnv.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

extern char** environ;

namespace qx_cli_test {

namespace {

struct fd_closer {
    int fd;
    ~fd_closer() { if (fd >= 0) ::close(fd); }
};

int open_for_child(const std::string& path, int flags)
{
    const int fd = ::open(path.c_str(), flags | O_CLOEXEC, 0600);
    if (fd < 0)
        ADD_FAILURE() << "cannot open " << path << ": " << std::strerror(errno);
    return fd;
}

}  // namespace

// Removes the scratch directory when the test program ends.
class scratch_cleanup : public testing::Environment {
public:
    explicit scratch_cleanup(std::string dir) : dir_(std::move(dir)) {}
    void TearDown() override
    {
        std::error_code ignored;
        std::filesystem::remove_all(dir_, ignored);
    }

private:
    std::string dir_;
};

const std::string& scratch_dir()
{
    static const std::string dir = [] {
        std::string pattern = testing::TempDir() + "qxi18n_cli_XXXXXX";
        if (::mkdtemp(pattern.data()) == nullptr)
            ADD_FAILURE() << "mkdtemp failed: " << std::strerror(errno);
        testing::AddGlobalTestEnvironment(new scratch_cleanup(pattern));
        return pattern;
    }();
    return dir;
}

std::string scratch_file(const std::string& name, const std::string& bytes)
{
    const std::string path = scratch_dir() + "/" + name;
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out)
        ADD_FAILURE() << "cannot write " << path;
    return path;
}

std::string read_file(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        ADD_FAILURE() << "cannot read " << path;
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string sample_path(const std::string& name)
{
    return std::string(QXI18N_TEST_DATA_DIR) + "/samples/" + name;
}

namespace {

// With an empty `stdout_path` standard output is collected into the result.
run_result spawn_tool(const std::vector<std::string>& args, const std::string& stdin_path,
                      const std::string& stdout_path)
{
    static int serial = 0;
    const std::string base = scratch_dir() + "/run" + std::to_string(++serial);
    const bool keep_output = stdout_path.empty();
    const std::string out_path = keep_output ? base + ".out" : stdout_path;
    const std::string err_path = base + ".err";
    run_result result;
    {
        const fd_closer in{open_for_child(stdin_path, O_RDONLY)};
        const fd_closer out{open_for_child(out_path, O_WRONLY | O_CREAT | O_TRUNC)};
        const fd_closer err{open_for_child(err_path, O_WRONLY | O_CREAT | O_TRUNC)};
        if (in.fd < 0 || out.fd < 0 || err.fd < 0)
            return result;

        std::vector<std::string> storage{QXI18N_TOOL};
        storage.insert(storage.end(), args.begin(), args.end());
        std::vector<char*> argv;
        for (std::string& s : storage)
            argv.push_back(s.data());
        argv.push_back(nullptr);

        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, in.fd, 0);
        posix_spawn_file_actions_adddup2(&actions, out.fd, 1);
        posix_spawn_file_actions_adddup2(&actions, err.fd, 2);
        pid_t pid = 0;
        const int spawned = posix_spawn(&pid, QXI18N_TOOL, &actions, nullptr, argv.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        if (spawned != 0) {
            ADD_FAILURE() << "cannot start " << QXI18N_TOOL << ": " << std::strerror(spawned);
            return result;
        }
        int wstatus = 0;
        struct rusage usage {};
        while (::wait4(pid, &wstatus, 0, &usage) < 0 && errno == EINTR) {
        }
        result.max_rss_kib = usage.ru_maxrss;
        if (WIFEXITED(wstatus))
            result.status = WEXITSTATUS(wstatus);
        else if (WIFSIGNALED(wstatus))
            result.signal = WTERMSIG(wstatus);
    }
    if (keep_output) {
        result.out = read_file(out_path);
        std::remove(out_path.c_str());
    }
    result.err = read_file(err_path);
    std::remove(err_path.c_str());
    return result;
}

}  // namespace

run_result run_tool(const std::vector<std::string>& args, const std::string& stdin_path)
{
    return spawn_tool(args, stdin_path, "");
}

run_result run_tool_writing_to(const std::vector<std::string>& args, const std::string& stdout_path)
{
    return spawn_tool(args, "/dev/null", stdout_path);
}

run_result run_tool_with_input(const std::vector<std::string>& args, const std::string& input)
{
    static int serial = 0;
    const std::string path = scratch_file("stdin" + std::to_string(++serial), input);
    run_result result = run_tool(args, path);
    std::remove(path.c_str());
    return result;
}

std::string icu_convert(const char* to, const char* from, const std::string& bytes)
{
    UErrorCode ec = U_ZERO_ERROR;
    const auto length = static_cast<int32_t>(bytes.size());
    const int32_t need = ucnv_convert(to, from, nullptr, 0, bytes.data(), length, &ec);
    if (ec != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(ec)) {
        ADD_FAILURE() << "ICU " << from << " -> " << to << " failed: " << u_errorName(ec);
        return {};
    }
    std::string out(static_cast<std::size_t>(need) + 1, '\0');
    ec = U_ZERO_ERROR;
    ucnv_convert(to, from, out.data(), need + 1, bytes.data(), length, &ec);
    if (U_FAILURE(ec))
        ADD_FAILURE() << "ICU " << from << " -> " << to << " failed: " << u_errorName(ec);
    out.resize(static_cast<std::size_t>(need));
    return out;
}

std::size_t count_lines(const std::string& text)
{
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

std::string printable(const std::string& text)
{
    std::ostringstream shown;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte < 0x7F && byte != '\\') {
            shown << c;
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
            shown << escaped;
        }
    }
    return shown.str();
}

}  // namespace qx_cli_test

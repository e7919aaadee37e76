// Running the tool as a child process and checking its run, scratch files, raw-ICU reference
// conversions and environment settings.
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

extern char** environ;

namespace qx_cli_test {

namespace {

struct fd_closer {
    int fd;
    ~fd_closer() { if (fd >= 0) ::close(fd); }
};

// Removes the scratch directory when the test program ends.
struct scratch_cleanup : testing::Environment {
    explicit scratch_cleanup(std::string d) : dir(std::move(d)) {}
    void TearDown() override
    {
        std::error_code ignored;
        std::filesystem::remove_all(dir, ignored);
    }
    std::string dir;
};

}  // namespace

const std::string& scratch_dir()
{
    static const std::string dir = [] {
        std::string pattern = testing::TempDir() + "qxi18n_cli_XXXXXX";
        if (::mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "mkdtemp failed: " << std::strerror(errno);
        testing::AddGlobalTestEnvironment(new scratch_cleanup(pattern));
        return pattern;
    }();
    return dir;
}

std::string scratch_file(const std::string& name, const std::string& bytes)
{
    const std::string path = scratch_dir() + "/" + name;
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()))) ADD_FAILURE() << "cannot write " << path;
    return path;
}

std::string read_file(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) ADD_FAILURE() << "cannot read " << path;
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string sample_path(const std::string& name) { return std::string(QXI18N_TEST_DATA_DIR) + "/samples/" + name; }

run_result run_tool(const args& call, const std::optional<std::string>& input, const std::string& stdout_path)
{
    static int serial = 0;
    const std::string base = scratch_dir() + "/run" + std::to_string(++serial);
    const std::string in_path = input ? scratch_file("run" + std::to_string(serial) + ".in", *input) : "/dev/null";
    const std::string out_path = stdout_path.empty() ? base + ".out" : stdout_path;
    run_result result;
    {
        const fd_closer fds[] = {{::open(in_path.c_str(), O_RDONLY | O_CLOEXEC)},
                                 {::open(out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600)},
                                 {::open((base + ".err").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600)}};
        std::vector<std::string> storage{QXI18N_TOOL};
        storage.insert(storage.end(), call.begin(), call.end());
        std::vector<char*> argv;
        for (std::string& s : storage) argv.push_back(s.data());
        argv.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        for (int i = 0; i < 3; ++i) {
            if (fds[i].fd < 0) ADD_FAILURE() << "cannot open the child's descriptor " << i << ": " << std::strerror(errno);
            posix_spawn_file_actions_adddup2(&actions, fds[i].fd, i);
        }
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
        if (WIFEXITED(wstatus)) result.status = WEXITSTATUS(wstatus);
        if (WIFSIGNALED(wstatus)) result.signal = WTERMSIG(wstatus);
    }
    if (stdout_path.empty()) result.out = read_file(out_path);
    result.err = read_file(base + ".err");
    for (const std::string& path : {base + ".out", base + ".err", input ? in_path : std::string()}) std::remove(path.c_str());
    return result;
}

void expect_run(const args& call, int status, const std::string& out, const std::string& err,
                const std::optional<std::string>& input)
{
    std::string shown = "qxi18n";
    for (const std::string& arg : call) shown += " " + arg.substr(0, 60);
    SCOPED_TRACE(shown + (input ? " < " + testing::PrintToString(input->substr(0, 40)) : std::string()));
    const run_result r = run_tool(call, input);
    EXPECT_EQ(r.status, status) << r.err;
    EXPECT_TRUE(r.out == out) << testing::PrintToString(r.out.substr(0, 300));
    if (err.empty()) {
        EXPECT_EQ(r.err, "");
    } else {
        EXPECT_EQ(r.err.rfind(err, 0), 0u) << r.err;
        EXPECT_EQ(count_lines(r.err), 1u) << r.err;
    }
}

scoped_env::scoped_env(const values& changes)
{
    for (const auto& [name, value] : changes) {
        const char* old = std::getenv(name.c_str());
        saved_.emplace_back(name, old != nullptr ? std::optional<std::string>(old) : std::nullopt);
        value ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
    }
}

scoped_env::~scoped_env()
{
    for (auto it = saved_.rbegin(); it != saved_.rend(); ++it)
        it->second ? ::setenv(it->first.c_str(), it->second->c_str(), 1) : ::unsetenv(it->first.c_str());
}

std::string icu_convert(const char* to, const char* from, const std::string& bytes)
{
    UErrorCode ec = U_ZERO_ERROR;
    const auto length = static_cast<int32_t>(bytes.size());
    const int32_t need = ucnv_convert(to, from, nullptr, 0, bytes.data(), length, &ec);
    std::string out(static_cast<std::size_t>(std::max(need, 0)) + 1, '\0');
    ec = U_ZERO_ERROR;
    ucnv_convert(to, from, out.data(), need + 1, bytes.data(), length, &ec);
    if (U_FAILURE(ec)) ADD_FAILURE() << "ICU " << from << " -> " << to << " failed: " << u_errorName(ec);
    out.resize(out.size() - 1);
    return out;
}

std::size_t count_lines(const std::string& text) { return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')); }

std::map<std::string, fields> parse_blocks(const std::string& out)
{
    std::map<std::string, fields> blocks;
    fields* current = nullptr;
    for (std::size_t start = 0, end = 0; start < out.size(); start = end + 1) {
        end = std::min(out.find('\n', start), out.size());
        const std::string line = out.substr(start, end - start);
        if (line.empty())
            current = nullptr;
        else if (current == nullptr)
            current = &blocks[line];
        else if (const std::size_t gap = line.find("  ", 2); line.rfind("  ", 0) == 0 && gap != std::string::npos)
            (*current)[line.substr(2, gap - 2)] = line.substr(line.find_first_not_of(' ', gap));
        else
            ADD_FAILURE() << "not a field line: " << line;
    }
    return blocks;
}

}  // namespace qx_cli_test

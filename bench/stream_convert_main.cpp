// qxi18n_bench_stream: `qxi18n convert` against the iconv program on a generated text of 1 GiB,
// both as whole processes writing to /dev/null: wall and CPU time, throughput and peak memory.
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

extern char** environ;

namespace {

constexpr double ratio_limit = 1.2;
constexpr long rss_limit_kib = 16 * 1024;

// Lines of Latin-1 prose, Cyrillic, CJK and ASCII in UTF-8, mixed within and between lines.
const std::vector<std::string> mixed_phrases = {
    "L'\xC3\xA9t\xC3\xA9 \xC3\xA0 Gen\xC3\xA8ve, les \xC3\xA9l\xC3\xA8ves go\xC3\xBBtent des cr\xC3\xAApes. ",
    "Gr\xC3\xB6\xC3\x9F" "ere L\xC3\xA4" "den \xC3\xB6" "ffnen fr\xC3\xBCh. ",
    "\xD0\x97\xD0\xB8\xD0\xBC\xD0\xBE\xD0\xB9 \xD0\xB2 \xD0\xB3\xD0\xBE\xD1\x80\xD0\xBE\xD0\xB4\xD0\xB5 "
    "\xD1\x80\xD0\xB0\xD0\xBD\xD0\xBE \xD1\x82\xD0\xB5\xD0\xBC\xD0\xBD\xD0\xB5\xD0\xB5\xD1\x82. ",
    "\xE6\x98\xA5\xE3\x81\xAE\xE6\x9C\x9D\xE3\x80\x81\xE7\xA7\x81\xE3\x81\x9F\xE3\x81\xA1\xE3\x81\xAF"
    "\xE9\xA7\x85\xE3\x81\xA7\xE8\x8C\xB6\xE3\x82\x92\xE9\xA3\xB2\xE3\x82\x93\xE3\x81\xA0\xE3\x80\x82",
    "Seven sailors counted ninety boats at dawn. ",
    "\xE4\xBB\x8A\xE5\xA4\xA9\xE6\x97\xA9\xE4\xB8\x8A\xE4\xB8\x8B\xE4\xBA\x86\xE4\xB8\x80\xE5\x9C\xBA"
    "\xE5\xB0\x8F\xE9\x9B\xA8\xE3\x80\x82",
};

// Russian and ASCII only: every character has a byte in windows-1251.
const std::vector<std::string> cyrillic_phrases = {
    mixed_phrases[2],
    mixed_phrases[4],
    "\xD0\x9A\xD0\xBD\xD0\xB8\xD0\xB3\xD0\xB0 \xD0\xBB\xD0\xB5\xD0\xB6\xD0\xB8\xD1\x82 "
    "\xD0\xBD\xD0\xB0 \xD1\x81\xD1\x82\xD0\xBE\xD0\xBB\xD0\xB5, 2024. ",
};

// One MiB of lines of 1 to 9 phrases, the same every run.
std::string make_block(const std::vector<std::string>& phrases)
{
    std::string block;
    unsigned state = 12345;
    while (block.size() < 1024 * 1024) {
        state = state * 1103515245u + 12345u;
        for (unsigned n = 1 + (state >> 16) % 9; n > 0; --n) {
            state = state * 1103515245u + 12345u;
            block += phrases[(state >> 16) % phrases.size()];
        }
        block += '\n';
    }
    return block;
}

// The generated text in $TMPDIR, removed when the benchmark ends.
class text_file {
public:
    /// `mib` copies of `block`.
    text_file(std::size_t mib, const std::string& block)
    {
        const char* dir = std::getenv("TMPDIR");
        // mkstemp replaces the six trailing X.
        path_ = std::string(dir != nullptr && *dir != '\0' ? dir : "/tmp") + "/qxi18n_bench_stream_" + std::string(6, 'X');
        const int fd = ::mkstemp(path_.data());
        if (fd < 0)
            throw std::runtime_error("cannot create " + path_ + ": " + std::strerror(errno));
        bool written = true;
        for (std::size_t i = 0; i < mib && written; ++i)
            written = ::write(fd, block.data(), block.size()) == static_cast<ssize_t>(block.size());
        ::close(fd);
        bytes_ = static_cast<double>(mib) * static_cast<double>(block.size());
        if (!written) {
            ::unlink(path_.c_str());
            throw std::runtime_error("cannot write " + path_);
        }
    }
    ~text_file() { ::unlink(path_.c_str()); }
    text_file(const text_file&) = delete;
    text_file& operator=(const text_file&) = delete;

    const std::string& path() const { return path_; }
    double bytes() const { return bytes_; }

private:
    std::string path_;
    double bytes_ = 0;
};

struct cost {
    double wall = 0;  // seconds
    double cpu = 0;   // user and system seconds of the child
    long rss_kib = 0;
};

double seconds(const timeval& t)
{
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
}

// Runs `args` (found on PATH) with standard output to `out`; its peak memory comes from wait4.
cost run(const std::vector<std::string>& args, const char* out = "/dev/null")
{
    const int fd = ::open(out, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0)
        throw std::runtime_error(std::string("cannot open ") + out);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fd, 1);
    std::vector<std::string> storage(args);
    std::vector<char*> argv;
    for (std::string& arg : storage)
        argv.push_back(arg.data());
    argv.push_back(nullptr);
    const auto start = std::chrono::steady_clock::now();
    pid_t child = 0;
    const int spawned = posix_spawnp(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(fd);
    if (spawned != 0)
        throw std::runtime_error("cannot start " + args[0] + ": " + std::strerror(spawned));
    int status = 0;
    rusage usage{};
    while (::wait4(child, &status, 0, &usage) < 0 && errno == EINTR) {
    }
    cost result;
    result.wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    result.cpu = seconds(usage.ru_utime) + seconds(usage.ru_stime);
    result.rss_kib = usage.ru_maxrss;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw std::runtime_error(args[0] + " failed on " + args.back());
    return result;
}

std::string read_all(const std::string& path)
{
    std::string text;
    if (std::FILE* f = std::fopen(path.c_str(), "rb")) {
        char buffer[65536];
        for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, f)) > 0;)
            text.append(buffer, n);
        std::fclose(f);
    }
    return text;
}

struct bench_case {
    const char* label;
    std::vector<std::string> ours;   // after "qxi18n convert", before the file
    std::vector<std::string> iconv;  // after "iconv", before the file
    bool same_output;                // the two must agree byte for byte
    const std::vector<std::string>& phrases;
    const char* input_encoding;      // the text is UTF-8 unless this names another encoding
};

const bench_case bench_cases[] = {
    {"UTF-8 -> UTF-16LE", {"-f", "UTF-8", "-t", "UTF-16LE"}, {"-f", "UTF-8", "-t", "UTF-16LE"}, true,
     mixed_phrases, nullptr},
    {"UTF-8 -> GB18030, substitute", {"-f", "UTF-8", "-t", "GB18030", "--on-error=substitute"},
     {"-f", "UTF-8", "-t", "GB18030"}, true, mixed_phrases, nullptr},
    // iconv -c drops what windows-1251 lacks where qxi18n writes 0x1A: the same work, other bytes.
    {"UTF-8 -> windows-1251, substitute", {"-f", "UTF-8", "-t", "windows-1251", "--on-error=substitute"},
     {"-c", "-f", "UTF-8", "-t", "WINDOWS-1251"}, false, mixed_phrases, nullptr},
    {"UTF-8 -> windows-1251, Russian", {"-f", "UTF-8", "-t", "windows-1251"}, {"-f", "UTF-8", "-t", "WINDOWS-1251"},
     true, cyrillic_phrases, nullptr},
    {"windows-1251 -> UTF-8, Russian", {"-f", "windows-1251", "-t", "UTF-8"}, {"-f", "WINDOWS-1251", "-t", "UTF-8"},
     true, cyrillic_phrases, "WINDOWS-1251"},
};

std::vector<std::string> command(const std::string& program, const std::vector<std::string>& options,
                                 const std::string& file)
{
    std::vector<std::string> args{program};
    if (program != "iconv")
        args.emplace_back("convert");
    args.insert(args.end(), options.begin(), options.end());
    args.push_back(file);
    return args;
}

// One MiB of the case's text in its input encoding; iconv makes the encoded forms.
std::string block_of(const bench_case& c, const std::string& dir)
{
    const std::string utf8 = make_block(c.phrases);
    if (c.input_encoding == nullptr)
        return utf8;
    const text_file source(1, utf8);
    const std::string encoded = dir + "/qxi18n_bench_stream_input";
    run(command("iconv", {"-f", "UTF-8", "-t", c.input_encoding}, source.path()), encoded.c_str());
    std::string block = read_all(encoded);
    ::unlink(encoded.c_str());
    return block;
}

// Both programs on the first MiB, into files: a wrong answer must not be timed.
bool outputs_agree(const bench_case& c, const std::string& block, const std::string& tool, const std::string& dir)
{
    const text_file head(1, block);
    const std::string ours = dir + "/qxi18n_bench_stream_ours", theirs = dir + "/qxi18n_bench_stream_iconv";
    run(command(tool, c.ours, head.path()), ours.c_str());
    run(command("iconv", c.iconv, head.path()), theirs.c_str());
    const bool same = read_all(ours) == read_all(theirs);
    ::unlink(ours.c_str());
    ::unlink(theirs.c_str());
    return same;
}

long parse_number(const char* arg, const char* name)
{
    const std::size_t length = std::strlen(name);
    if (std::strncmp(arg, name, length) != 0)
        return -1;
    return std::strtol(arg + length, nullptr, 10);
}

}  // namespace

int main(int argc, char** argv)
{
    std::size_t mib = 1024;
    int runs = 3;
    for (int i = 1; i < argc; ++i) {
        if (const long value = parse_number(argv[i], "--size-mib="); value > 0)
            mib = static_cast<std::size_t>(value);
        else if (const long count = parse_number(argv[i], "--runs="); count > 0)
            runs = static_cast<int>(count);
        else {
            std::fprintf(stderr, "usage: %s [--size-mib=N] [--runs=N]\n", argv[0]);
            return 2;
        }
    }
    try {
        const char* dir = std::getenv("TMPDIR");
        const std::string tmp = dir != nullptr && *dir != '\0' ? dir : "/tmp";
        const std::string tool = QXI18N_TOOL;
        std::printf("qxi18n convert against iconv on %zu MiB of text (mixed Latin-1, Cyrillic and CJK, or Russian\n"
                    "and ASCII), output to\n"
                    "/dev/null: the best wall and the best CPU time (user + system) of %d runs, throughput on CPU\n"
                    "time, the peak memory of all runs, and ratios qxi18n / iconv of wall and CPU time.\n"
                    "Targets: qxi18n within %.1fx of iconv's CPU time (a shared machine's load shows in wall\n"
                    "time only), peak memory under %ld MiB.\n\n",
                    mib, runs, ratio_limit, rss_limit_kib / 1024);
        std::printf("%-34s %-7s %7s %7s %7s %9s %11s  %s\n", "case", "program", "wall s", "CPU s", "MB/s",
                    "peak MiB", "wall  CPU", "targets");
        int misses = 0;
        for (const bench_case& c : bench_cases) {
            const std::string block = block_of(c, tmp);
            const bool agree = outputs_agree(c, block, tool, tmp);
            if (c.same_output && !agree) {
                std::printf("%-34s outputs differ from iconv's, not timed\n", c.label);
                ++misses;
                continue;
            }
            const text_file text(mib, block);
            cost best[2];
            for (int r = 0; r < runs; ++r) {
                // Interleaved, so that a change of machine load falls on both alike.
                const cost measured[2] = {run(command(tool, c.ours, text.path())),
                                          run(command("iconv", c.iconv, text.path()))};
                for (int k = 0; k < 2; ++k) {
                    best[k].wall = r == 0 ? measured[k].wall : std::min(best[k].wall, measured[k].wall);
                    best[k].cpu = r == 0 ? measured[k].cpu : std::min(best[k].cpu, measured[k].cpu);
                    best[k].rss_kib = std::max(best[k].rss_kib, measured[k].rss_kib);
                }
            }
            const double ratio = best[0].cpu / best[1].cpu;
            const bool slow = ratio > ratio_limit, big = best[0].rss_kib >= rss_limit_kib;
            const char* names[2] = {"qxi18n", "iconv"};
            for (int k = 0; k < 2; ++k) {
                std::string verdict = k == 1 ? "" : slow || big ? "MISS" : "ok";
                if (k == 0 && slow)
                    verdict += " time";
                if (k == 0 && big)
                    verdict += " memory";
                char ratios[32] = "";
                if (k == 0)
                    std::snprintf(ratios, sizeof ratios, "%.2f %.2f", best[0].wall / best[1].wall, ratio);
                std::printf("%-34s %-7s %7.2f %7.2f %7.0f %9.1f %11s  %s\n", k == 0 ? c.label : "", names[k],
                            best[k].wall, best[k].cpu, text.bytes() / best[k].cpu / 1e6,
                            static_cast<double>(best[k].rss_kib) / 1024.0, ratios, verdict.c_str());
            }
            misses += slow || big ? 1 : 0;
        }
        std::printf("\n%d of %zu cases miss a target.\n", misses, sizeof bench_cases / sizeof bench_cases[0]);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "qxi18n_bench_stream: %s\n", e.what());
        return 1;
    }
    return 0;
}

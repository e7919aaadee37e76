// qxi18n_bench_startup: initialize() in a fresh process, timed as whole runs of a small driver
// with and without the call; the difference is the cost of start-up, database parse included.
#include <benchmark/benchmark.h>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

extern char** environ;

namespace {

std::string driver_path;

// Runs the driver once and waits for it; a failed start or exit stops the benchmark.
bool run_driver(benchmark::State& state, bool initialize)
{
    std::vector<char*> argv{const_cast<char*>(driver_path.c_str())};
    if (initialize)
        argv.push_back(const_cast<char*>("init"));
    argv.push_back(nullptr);
    pid_t child = 0;
    if (posix_spawn(&child, driver_path.c_str(), nullptr, nullptr, argv.data(), environ) != 0) {
        state.SkipWithError("cannot start the driver");
        return false;
    }
    int status = 0;
    if (waitpid(child, &status, 0) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        state.SkipWithError("the driver failed");
        return false;
    }
    return true;
}

void fresh_process(benchmark::State& state, bool initialize)
{
    for (auto _ : state)
        if (!run_driver(state, initialize))
            return;
}

// Keeps the best repetition of each run and prints the difference once all have run.
class startup_reporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.iterations == 0 || run.error_occurred)
                continue;
            const double seconds = run.real_accumulated_time / static_cast<double>(run.iterations);
            auto& best = best_[run.run_name.function_name];
            best = best == 0 ? seconds : std::min(best, seconds);
        }
    }

    int print_summary() const
    {
        const auto with = best_.find("initialize/fresh_process/qxi18n");
        const auto without = best_.find("initialize/fresh_process/without_call");
        if (with == best_.end() || without == best_.end())
            return 0;
        const double cost_ms = (with->second - without->second) * 1e3;
        std::printf("\nStart-up: a fresh process with initialize() %.2f ms, without it %.2f ms (best repetition);\n"
                    "initialize() costs %.2f ms, ratio %.2f. Target: under 2 ms. %s\n",
                    with->second * 1e3, without->second * 1e3, cost_ms, with->second / without->second,
                    cost_ms < 2.0 ? "ok" : "MISS");
        return cost_ms < 2.0 ? 0 : 1;
    }

private:
    std::map<std::string, double> best_;
};

}  // namespace

int main(int argc, char** argv)
{
    const std::string self = argv[0];
    const auto slash = self.rfind('/');
    driver_path = (slash == std::string::npos ? std::string(".") : self.substr(0, slash)) + "/qxi18n_startup_driver";

    benchmark::RegisterBenchmark("initialize/fresh_process/qxi18n", fresh_process, true)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime()
        ->Repetitions(5);
    benchmark::RegisterBenchmark("initialize/fresh_process/without_call", fresh_process, false)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime()
        ->Repetitions(5);
    benchmark::Initialize(&argc, argv);
    startup_reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.print_summary();
    return 0;
}

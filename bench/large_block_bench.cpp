// One large block: time, memory and answers of the three discretisations, against the open peer's program where it is
// installed (package libopm-upscaling-bin), and the cost per sample from 20^3 to 160^3.
//
// large_block_bench [--peer SCRIPT] [--largest N] [--repeats N]
//
// SCRIPT is bench/peer/run_model unless given (relative to where the program is run). All figures come from processes
// of their own, so that the peak of one does not hide that of another.

#include "peer/LognormalModel.h"
#include "upscaling/kernels/flow/LargeBlock.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;
using namespace Kelvane::flow;

constexpr std::array<Discretisation, 3> discretisations{Discretisation::TwoPoint, Discretisation::Mixed,
                                                        Discretisation::Conforming};
constexpr std::array<const char*, 3> names{"two-point", "mixed", "conforming"};
constexpr double variance = 4;
constexpr std::uint64_t seed = 1;

struct Run {
    std::array<double, 3> answer{};
    double seconds = 0;
    double cpu_seconds = 0; // of all threads
    double peak_mb = 0;
    double residual = 0;
    int iterations = 0;
    bool backup = false;
};

double seconds_since(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double cpu_seconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// work() in a child process, its result through a pipe, its peak of resident memory added. Nothing when it failed.
std::optional<Run> in_child(const std::function<Run()>& work)
{
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0)
        return std::nullopt;
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        const Run run = work();
        const bool sent = write(ends[1], &run, sizeof run) == static_cast<ssize_t>(sizeof run);
        std::_Exit(sent ? 0 : 1);
    }
    close(ends[1]);
    Run run;
    const bool received = read(ends[0], &run, sizeof run) == static_cast<ssize_t>(sizeof run);
    close(ends[0]);
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    run.peak_mb = static_cast<double>(usage.ru_maxrss) * 1024 / 1e6;
    return received && status == 0 ? std::optional(run) : std::nullopt;
}

std::optional<Run> solve(const std::array<int, 3>& n, const std::array<double, 3>& cell, Discretisation discretisation,
                         int repeats)
{
    return in_child([&] {
        const bench::LognormalModel model = bench::make_lognormal(n, cell, variance, seed);
        Block block;
        block.n = model.n;
        block.size = model.size();
        block.ki = block.kj = block.kk = model.k;
        BlockOptions options;
        options.discretisation = discretisation;
        Run run;
        for (int repeat = 0; repeat < repeats; ++repeat) {
            const double cpu_before = cpu_seconds();
            const auto start = Clock::now();
            const BlockResult result = solve_large_brick(block, options);
            const double seconds = seconds_since(start);
            const double cpu = cpu_seconds() - cpu_before;
            run.seconds = repeat == 0 ? seconds : std::min(run.seconds, seconds);
            run.cpu_seconds = repeat == 0 ? cpu : std::min(run.cpu_seconds, cpu);
            std::copy_n(result.tensor.begin(), 3, run.answer.begin());
            run.residual = result.residual;
            run.iterations = result.iterations;
            run.backup = result.backup;
        }
        return run;
    });
}

// The peer on the same model. Its peak is that of the largest process behind the script.
std::optional<Run> run_peer(const std::string& script, const std::string& model_file)
{
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0)
        return std::nullopt;
    std::fflush(stdout);
    const auto start = Clock::now();
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        close(ends[0]);
        close(ends[1]);
        execl(script.c_str(), script.c_str(), model_file.c_str(), static_cast<char*>(nullptr));
        std::_Exit(127);
    }
    close(ends[1]);
    std::string text;
    std::array<char, 256> buffer{};
    for (ssize_t got = 0; (got = read(ends[0], buffer.data(), buffer.size())) > 0;)
        text.append(buffer.data(), static_cast<std::size_t>(got));
    close(ends[0]);
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    Run run;
    run.seconds = seconds_since(start);
    run.cpu_seconds = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                      static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
    run.peak_mb = static_cast<double>(usage.ru_maxrss) * 1024 / 1e6;
    if (status != 0 || std::sscanf(text.c_str(), "%lf %lf %lf", &run.answer[0], &run.answer[1], &run.answer[2]) != 3)
        return std::nullopt;
    return run;
}

std::string machine()
{
    std::ifstream info("/proc/cpuinfo");
    std::string model = "unknown processor";
    for (std::string line; std::getline(info, line);)
        if (line.starts_with("model name")) {
            model = line.substr(line.find(':') + 2);
            break;
        }
    double load = 0;
    (void)getloadavg(&load, 1);
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f", load);
    return model + ", " + std::to_string(std::thread::hardware_concurrency()) + " cores, load " + text.data();
}

bool same_digits(double found, double expected)
{
    std::array<char, 32> a{}, b{};
    std::snprintf(a.data(), a.size(), "%.6g", found);
    std::snprintf(b.data(), b.size(), "%.6g", expected);
    return std::strcmp(a.data(), b.data()) == 0;
}

int compare_with_peer(const std::array<double, 3>& cell, const std::string& script, const std::string& folder,
                      int repeats)
{
    const std::array<int, 3> n{60, 60, 40};
    std::printf("\n60 x 60 x 40 samples of %g x %g x %g m, ln k normal, variance %g, seed %llu; confined, three "
                "directions, relative residual 1e-8\n",
                cell[0], cell[1], cell[2], variance, static_cast<unsigned long long>(seed));
    const std::string file = folder + "/model.grdecl";
    bench::write_grdecl(bench::make_lognormal(n, cell, variance, seed), file);
    const std::optional<Run> peer = run_peer(script, file);
    if (peer)
        std::printf("%-11s %8.3f s (processor %8.3f s)                                  %8.1f MB   %.6g %.6g %.6g mD\n",
                    "peer", peer->seconds, peer->cpu_seconds, peer->peak_mb, peer->answer[0], peer->answer[1],
                    peer->answer[2]);
    else
        std::printf("peer not installed or failed: no comparison\n");
    int failed = 0;
    for (std::size_t d = 0; d < discretisations.size(); ++d) {
        const std::optional<Run> run = solve(n, cell, discretisations[d], repeats);
        if (!run) {
            std::printf("%s failed\n", names[d]);
            ++failed;
            continue;
        }
        std::printf("%-11s %8.3f s (processor %8.3f s), %3d iterations, residual %.1e, %8.1f MB   %.9g %.9g %.9g "
                    "mD%s\n",
                    names[d], run->seconds, run->cpu_seconds, run->iterations, run->residual, run->peak_mb,
                    run->answer[0], run->answer[1], run->answer[2], run->backup ? " (backup)" : "");
        if (!peer)
            continue;
        std::printf("            peer/this: time %.1f, processor time %.1f, memory %.1f", peer->seconds / run->seconds,
                    peer->cpu_seconds / run->cpu_seconds, peer->peak_mb / run->peak_mb);
        if (discretisations[d] == Discretisation::Mixed) {
            bool same = true;
            for (std::size_t axis = 0; axis < 3; ++axis)
                same = same && same_digits(run->answer[axis], peer->answer[axis]);
            std::printf(", answers %s in the peer's six digits", same ? "equal" : "DIFFER");
            failed += same ? 0 : 1;
        }
        std::printf("\n");
    }
    return failed;
}

int cost_per_sample(int largest, int repeats)
{
    std::printf("\ncost per sample and direction, cubes of samples, ln k normal, variance %g, confined, residual "
                "1e-8\n",
                variance);
    int failed = 0;
    for (std::size_t d = 0; d < discretisations.size(); ++d) {
        double first = 0, first_cpu = 0;
        for (int n = 20; n <= largest; n *= 2) {
            const std::optional<Run> run = solve({n, n, n}, {1, 1, 1}, discretisations[d], n < 80 ? 3 * repeats : 1);
            if (!run) {
                ++failed;
                continue;
            }
            const double samples = static_cast<double>(n) * n * n;
            const double cost = run->seconds / 3 / samples * 1e9;
            const double cpu = run->cpu_seconds / 3 / samples * 1e9;
            first = first == 0 ? cost : first;
            first_cpu = first_cpu == 0 ? cpu : first_cpu;
            std::printf("%-11s %3d^3: %8.3f s, %3d iterations; ns a sample and direction: %5.0f (%.2f of 20^3), "
                        "processor %5.0f (%.2f); %4.0f bytes a sample, %.9g %.9g %.9g mD\n",
                        names[d], n, run->seconds, run->iterations, cost, cost / first, cpu, cpu / first_cpu,
                        run->peak_mb * 1e6 / samples, run->answer[0], run->answer[1],
                        run->answer[2]);
            std::fflush(stdout);
        }
    }
    return failed;
}

} // namespace

int main(int argc, char** argv)
{
    std::string script = "bench/peer/run_model";
    int largest = 160;
    int repeats = 3;
    for (int a = 1; a + 1 < argc; a += 2) {
        if (std::strcmp(argv[a], "--peer") == 0)
            script = argv[a + 1];
        else if (std::strcmp(argv[a], "--largest") == 0)
            largest = std::atoi(argv[a + 1]);
        else if (std::strcmp(argv[a], "--repeats") == 0)
            repeats = std::max(1, std::atoi(argv[a + 1]));
    }
    std::printf("%s\n", machine().c_str());
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("large_block_bench." + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    int failed = 0;
    for (const auto& cell : {std::array{10.0, 10.0, 10.0}, std::array{10.0, 10.0, 1.0}})
        failed += compare_with_peer(cell, script, folder.string(), repeats);
    std::filesystem::remove_all(folder);
    failed += cost_per_sample(largest, repeats);
    return failed ? 1 : 0;
}

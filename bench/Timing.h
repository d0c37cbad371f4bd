#pragma once

// What the benchmark programs measure with: runs that take turns, so that other work on the machine slows all of them
// alike, medians, copies of files for comparison, and the peak memory of a reading in a process of its own.

#include <lodex/gridio/GridFormat.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <variant>
#include <vector>

namespace bench {

/// Seconds that passed, and seconds of this process alone (user and system), which other work leaves alone.
struct Time {
    double wall = 0;
    double cpu = 0;
};

inline double process_seconds()
{
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

inline Time time_of(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    const double cpu_start = process_seconds();
    work();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    return {taken.count(), process_seconds() - cpu_start};
}

/// Medians of several rounds in which every work has its turn.
inline std::vector<Time> medians(const std::vector<std::function<void()>>& works, int rounds = 7)
{
    std::vector<std::vector<double>> walls(works.size());
    std::vector<std::vector<double>> cpus(works.size());
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t n = 0; n < works.size(); ++n) {
            const Time time = time_of(works[n]);
            walls[n].push_back(time.wall);
            cpus[n].push_back(time.cpu);
        }
    }
    const auto median = [](std::vector<double>& values) {
        const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
        std::nth_element(values.begin(), middle, values.end());
        return *middle;
    };
    std::vector<Time> result;
    for (std::size_t n = 0; n < works.size(); ++n) {
        result.push_back({median(walls[n]), median(cpus[n])});
    }
    return result;
}

inline void print(const char* what, double mega_bytes, const Time& time, const Time& beside, const char* beside_what)
{
    std::printf("  %-24s %8.0f MB/s (%.0f MB/s of processor time), %.2f (%.2f) times the speed of %s\n", what,
                mega_bytes / time.wall, mega_bytes / time.cpu, beside.wall / time.wall, beside.cpu / time.cpu,
                beside_what);
    std::fflush(stdout);
}

/// Copies with read() and write(); `to` empty: reads alone. safely: as the writers do, to a new file that is brought to
/// the disk and renamed.
inline void copy_file(const std::filesystem::path& from, const std::filesystem::path& to, bool safely = false)
{
    constexpr std::size_t size = 1 << 20;
    const int in = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
    const std::filesystem::path name = safely ? to.string() + ".new" : to.string();
    const int out = to.empty() ? -1 : ::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    const auto buffer = std::make_unique_for_overwrite<char[]>(size);
    for (ssize_t got = 0; (got = ::read(in, buffer.get(), size)) > 0;) {
        if (out >= 0 && ::write(out, buffer.get(), static_cast<std::size_t>(got)) != got) {
            std::perror("write");
            std::exit(1);
        }
    }
    ::close(in);
    if (out >= 0) {
        if (safely) {
            ::fsync(out);
        }
        ::close(out);
        if (safely) {
            std::filesystem::rename(name, to);
        }
    }
}

inline double model_bytes(const lodex::GridModel& model)
{
    std::size_t bytes = model.coord.size() * model.coord.bytes_per_value()
        + model.zcorn.size() * model.zcorn.bytes_per_value() + model.active.size();
    for (const lodex::PropertyData& property : model.properties) {
        bytes += std::visit([](const auto& values) { return values.size() * sizeof(values[0]); }, property.values);
    }
    for (const lodex::RegionData& region : model.regions) {
        bytes += region.flags.size();
    }
    return static_cast<double>(bytes);
}

/// A line of /proc/self/status in bytes, "VmHWM:" or "VmRSS:".
inline double memory(const char* line)
{
    double bytes = 0;
    if (std::FILE* const file = std::fopen("/proc/self/status", "r")) {
        char text[256];
        while (std::fgets(text, sizeof text, file) != nullptr) {
            if (std::strncmp(text, line, std::strlen(line)) == 0) {
                bytes = std::atof(text + std::strlen(line)) * 1024;
            }
        }
        std::fclose(file);
    }
    return bytes;
}

/// Answers "PROGRAM --peak FILE": reads the file and prints the peak of memory beside the model's bytes. Not
/// getrusage(), which counts what the process was before it became this program.
inline int print_peak_of_this_process(const char* path)
{
    const double before = memory("VmRSS:");
    const auto result = lodex::GridFormats::for_reading(path).read(path, {});
    const double peak = memory("VmHWM:") - before;
    const double model = model_bytes(result.model);
    std::printf("  %-24s %8.0f MB more than before, %.2f times the model's %.0f MB\n", "peak memory of reading",
                peak / 1e6, peak / model, model / 1e6);
    return 0;
}

/// The peak in a process of its own, where nothing else has used memory.
inline void print_peak(const std::string& program, const std::filesystem::path& path)
{
    std::fflush(stdout);
    const pid_t child = ::fork();
    if (child == 0) {
        ::execl(program.c_str(), program.c_str(), "--peak", path.c_str(), nullptr);
        std::_Exit(1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
}

/// Runs work in a process of its own, so that its memory is gone afterwards. True when it ended well.
inline bool in_child(const std::function<void()>& work)
{
    std::fflush(stdout);
    const pid_t child = ::fork();
    if (child == 0) {
        int failed = 0;
        try {
            work();
        } catch (const std::exception& error) {
            std::fprintf(stderr, "%s\n", error.what());
            failed = 1;
        }
        std::fflush(stdout);
        std::_Exit(failed);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return status == 0;
}

/// Size of the grid and the folder from "[NI NJ NK] [FOLDER]".
struct Arguments {
    std::int64_t ni, nj, nk;
    std::filesystem::path folder;

    Arguments(int argc, char** argv, std::int64_t usual_ni, std::int64_t usual_nj, std::int64_t usual_nk)
        : ni(usual_ni), nj(usual_nj), nk(usual_nk), folder(std::filesystem::temp_directory_path())
    {
        if (argc > 3) {
            ni = std::atoll(argv[1]);
            nj = std::atoll(argv[2]);
            nk = std::atoll(argv[3]);
        }
        if (argc == 2 || argc == 5) {
            folder = argv[argc - 1];
        }
    }
};

/// A folder of its own, removed with everything in it.
class Folder {
public:
    explicit Folder(const std::filesystem::path& parent, const char* program)
        : path_(parent / (std::string(program) + '-' + std::to_string(::getpid())))
    {
        std::filesystem::create_directories(path_);
    }
    ~Folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    [[nodiscard]] std::filesystem::path operator/(const char* name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

} // namespace bench

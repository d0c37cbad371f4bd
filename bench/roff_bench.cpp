// Speed and memory of reading and writing ROFF files, beside a plain read() and a file copy of the same bytes.
//
//     roff_bench [NI NJ NK] [FOLDER]
//
// makes a model of that size (default 250 x 200 x 200: 10 million cells) in FOLDER (default: the temporary folder).
// Each reading runs in a process of its own, so that its peak memory is its own.

#include <lodex/gridio/GridFormat.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using lodex::GridModel;
using lodex::PropertyData;

/// Map coordinates relative to an offset, a fault every fortieth column, porosity and facies.
GridModel make_model(std::int64_t ni, std::int64_t nj, std::int64_t nk)
{
    GridModel model;
    model.size = {ni, nj, nk};
    std::vector<double> coord;
    for (std::int64_t j = 0; j <= nj; ++j) {
        for (std::int64_t i = 0; i <= ni; ++i) {
            const double x = 461860.625 + 50 * static_cast<double>(i);
            const double y = 5932880.0 + 50 * static_cast<double>(j);
            coord.insert(coord.end(), {x, y, 1500, x + 3, y + 1, 2500});
        }
    }
    model.coord = std::move(coord);
    const auto cells = static_cast<std::size_t>(model.cells());
    std::vector<float> zcorn(8 * cells);
    std::size_t at = 0;
    for (std::int64_t plane = 0; plane < 2 * nk; ++plane) {
        for (std::int64_t y = 0; y < 2 * nj; ++y) {
            for (std::int64_t x = 0; x < 2 * ni; ++x) {
                const auto node = static_cast<float>((x + 1) / 2 + (y + 1) / 2);
                const float throw_of_fault = 10 * static_cast<float>(x / 80);
                zcorn[at++] = 1600 + 2.37F * static_cast<float>((plane + 1) / 2) + 0.013F * node + throw_of_fault;
            }
        }
    }
    model.zcorn = std::move(zcorn);
    model.active.assign(cells, 1);
    std::vector<float> porosity(cells);
    std::vector<std::int32_t> facies(cells);
    for (std::size_t i = 0; i < cells; ++i) {
        porosity[i] = 0.2F + 0.1F * std::sin(static_cast<float>(i));
        facies[i] = static_cast<std::int32_t>(i % 13);
    }
    PropertyData property;
    property.no_data = -999;
    property.name = "PORO";
    property.values = std::move(porosity);
    model.properties.push_back(property);
    property.name = "FACIES";
    property.values = std::move(facies);
    model.properties.push_back(std::move(property));
    return model;
}

double model_bytes(const GridModel& model)
{
    double bytes = static_cast<double>(model.coord.size() * model.coord.bytes_per_value()
                                       + model.zcorn.size() * model.zcorn.bytes_per_value() + model.active.size());
    for (const PropertyData& property : model.properties) {
        bytes += static_cast<double>(property.size() * (property.values.index() == 1 ? 8 : 4));
    }
    return bytes;
}

struct Time {
    double wall = 1e300;
    double cpu = 1e300;
};

double process_seconds()
{
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/// Least of five runs.
template <class Work> Time least_time(Work&& work)
{
    Time least;
    for (int run = 0; run < 5; ++run) {
        const auto start = std::chrono::steady_clock::now();
        const double cpu_start = process_seconds();
        work();
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        least.wall = std::min(least.wall, taken.count());
        least.cpu = std::min(least.cpu, process_seconds() - cpu_start);
    }
    return least;
}

/// Reads the bytes and writes them to `to` when that is a file; with fsync as the writers do.
void plain_copy(const std::filesystem::path& from, const std::filesystem::path& to, bool sync)
{
    const int in = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
    const int out = to.empty() ? -1 : ::open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    const auto buffer = std::make_unique_for_overwrite<char[]>(1 << 20);
    for (ssize_t got = 0; (got = ::read(in, buffer.get(), 1 << 20)) > 0;) {
        if (out >= 0 && ::write(out, buffer.get(), static_cast<std::size_t>(got)) != got) {
            std::perror("write");
            std::exit(1);
        }
    }
    if (out >= 0) {
        if (sync) {
            ::fsync(out);
        }
        ::close(out);
    }
    ::close(in);
}

void print(const char* what, double mega_bytes, const Time& time, const Time& plain, const char* beside)
{
    std::printf("    %-22s %8.1f MB/s (%.1f MB/s of processor time), %.2f of %s\n", what, mega_bytes / time.wall,
                mega_bytes / time.cpu, plain.wall / time.wall, beside);
}

/// Peak memory of a process that reads the file and nothing else, beside one that does nothing.
void print_peak(const std::string& program, const std::filesystem::path& path)
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

int peak(const char* path)
{
    // Not getrusage(), which counts what the process was before it became this program.
    const auto kilo_bytes = [] {
        std::ifstream status("/proc/self/status");
        double value = 0;
        for (std::string word; status >> word;) {
            if (word == "VmHWM:") {
                status >> value;
            }
        }
        return value;
    };
    const double before = kilo_bytes();
    const GridModel model = lodex::GridFormats::for_reading(path).read(path, {}).model;
    const double bytes = 1024 * (kilo_bytes() - before);
    std::printf("    peak memory of reading %.0f MB, %.2f of the model's %.0f MB\n", bytes / 1e6,
                bytes / model_bytes(model), model_bytes(model) / 1e6);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::string(argv[1]) == "--peak") {
        return peak(argv[2]);
    }
    const bool sized = argc > 3;
    const std::int64_t ni = sized ? std::atoll(argv[1]) : 250;
    const std::int64_t nj = sized ? std::atoll(argv[2]) : 200;
    const std::int64_t nk = sized ? std::atoll(argv[3]) : 200;
    const std::filesystem::path folder =
        argc == 2 || argc == 5 ? std::filesystem::path(argv[argc - 1]) : std::filesystem::temp_directory_path();
    const auto path = folder / ("roff_bench-" + std::to_string(::getpid()));
    const auto copy = path.string() + ".copy";
    try {
        const GridModel model = make_model(ni, nj, nk);
        std::printf("%lld x %lld x %lld cells, %.0f MB in memory\n", static_cast<long long>(ni),
                    static_cast<long long>(nj), static_cast<long long>(nk), model_bytes(model) / 1e6);
        for (const char* const name : {"roff", "roff_big_endian", "roff_text"}) {
            const lodex::GridFormat& format = *lodex::GridFormats::find(name);
            std::uint64_t bytes = 0;
            const Time writing = least_time([&] { bytes = format.write(model, path, {}).bytes; });
            const Time synced = least_time([&] { plain_copy(path, copy, true); });
            const Time copying = least_time([&] { plain_copy(path, copy, false); });
            const Time plain = least_time([&] { plain_copy(path, {}, false); });
            const Time reading = least_time([&] { (void)format.read(path, {}); });
            const double mega = static_cast<double>(bytes) / 1e6;
            std::printf("%s, %.1f MB\n", name, mega);
            print("plain read()", mega, plain, plain, "itself");
            print("file copy", mega, copying, copying, "itself");
            print("read", mega, reading, copying, "a file copy");
            print("write", mega, writing, synced, "a file copy with fsync");
            print_peak(argv[0], path);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        std::filesystem::remove(path);
        std::filesystem::remove(copy);
        return 1;
    }
    std::filesystem::remove(path);
    std::filesystem::remove(copy);
    return 0;
}

// Speed of reading and writing GRDECL text on one core, beside a plain read() of the same bytes and a copy through memory.
//
//     grdecl_bench [NI NJ NK] [FOLDER]
//
// makes a model of that size (default 160 x 160 x 80, some 200 MB of text) in FOLDER (default: the temporary folder).

#include <lodex/gridio/GridFormat.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <unistd.h>

namespace {

using lodex::GridModel;
using lodex::PropertyData;

/// Coordinates and depths with millimetres as exporters print them, a porosity of 32 bits and a rock type.
GridModel make_model(std::int64_t ni, std::int64_t nj, std::int64_t nk)
{
    GridModel model;
    model.size = {ni, nj, nk};
    const auto millimetres = [](double value) { return std::round(value * 1000) / 1000; };
    std::vector<double> coord;
    for (std::int64_t j = 0; j <= nj; ++j) {
        for (std::int64_t i = 0; i <= ni; ++i) {
            const double x = 456510.625 + 51.237 * static_cast<double>(i);
            const double y = 5926880.172 + 49.871 * static_cast<double>(j);
            coord.insert(coord.end(), {millimetres(x), millimetres(y), 1500, millimetres(x + 3), millimetres(y + 1), 2500});
        }
    }
    model.coord = std::move(coord);
    const auto cells = static_cast<std::size_t>(model.cells());
    std::vector<double> zcorn(8 * cells);
    for (std::size_t i = 0; i < zcorn.size(); ++i) {
        const auto layer = static_cast<double>(i / static_cast<std::size_t>(4 * ni * nj));
        zcorn[i] = millimetres(1600 + 2.37 * layer + 50 * std::sin(static_cast<double>(i % 4096) * 1e-3));
    }
    model.zcorn = std::move(zcorn);
    model.active.assign(cells, 1);
    std::vector<float> porosity(cells);
    std::vector<std::int32_t> rock(cells);
    for (std::size_t i = 0; i < cells; ++i) {
        porosity[i] = 0.2F + 0.1F * std::sin(static_cast<float>(i));
        rock[i] = static_cast<std::int32_t>(i % 13);
    }
    PropertyData property;
    property.name = "PORO";
    property.values = std::move(porosity);
    model.properties.push_back(property);
    property.name = "SATNUM";
    property.values = std::move(rock);
    model.properties.push_back(std::move(property));
    return model;
}

/// Seconds that passed, and seconds of this process alone (user and system), which other work on the machine leaves alone.
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

void print(const char* what, double mega_bytes, const Time& time, const Time& plain)
{
    std::printf("%-24s %8.1f MB/s (%.1f MB/s of processor time), %.3f of a plain read()\n", what, mega_bytes / time.wall,
                mega_bytes / time.cpu, plain.wall / time.wall);
}

void plain_read(const std::filesystem::path& path)
{
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const auto buffer = std::make_unique_for_overwrite<char[]>(1 << 20);
    while (::read(descriptor, buffer.get(), 1 << 20) > 0) {
    }
    ::close(descriptor);
}

} // namespace

int main(int argc, char** argv)
{
    const bool sized = argc > 3;
    const std::int64_t ni = sized ? std::atoll(argv[1]) : 160;
    const std::int64_t nj = sized ? std::atoll(argv[2]) : 160;
    const std::int64_t nk = sized ? std::atoll(argv[3]) : 80;
    const std::filesystem::path folder =
        argc == 2 || argc == 5 ? std::filesystem::path(argv[argc - 1]) : std::filesystem::temp_directory_path();
    const auto path = folder / ("grdecl_bench-" + std::to_string(::getpid()) + ".grdecl");
    try {
        const lodex::GridFormat& format = lodex::GridFormats::for_writing(path);
        const GridModel model = make_model(ni, nj, nk);
        std::uint64_t bytes = 0;
        const Time writing = least_time([&] { bytes = format.write(model, path, {}).bytes; });
        const Time plain = least_time([&] { plain_read(path); });
        std::size_t properties = 0;
        const Time reading = least_time([&] { properties = format.read(path, {}).model.properties.size(); });
        lodex::ReadOptions only;
        only.properties_only = true;
        const Time skipping = least_time([&] { properties = format.read(path, only).model.properties.size(); });
        const double mega = static_cast<double>(bytes) / 1e6;
        std::printf("%lld x %lld x %lld cells, %zu properties, %.1f MB of text\n", static_cast<long long>(ni),
                    static_cast<long long>(nj), static_cast<long long>(nk), properties, mega);
        print("plain read()", mega, plain, plain);
        print("read", mega, reading, plain);
        print("read, properties only", mega, skipping, plain);
        print("write (with fsync)", mega, writing, plain);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        std::filesystem::remove(path);
        return 1;
    }
    std::filesystem::remove(path);
    return 0;
}

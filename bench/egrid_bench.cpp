// Speed of reading and writing EGRID with INIT and binary GRDECL, beside a copy of the same bytes with read() and
// write() and beside plain read(), measured in the same run; and the memory that reading takes, beside the model.
//
//     egrid_bench [NI NJ NK] [FOLDER]
//
// makes a model of that size (default 250 x 250 x 160, ten million cells) in FOLDER (default: the temporary folder).

#include <lodex/gridio/GridFormat.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using lodex::GridModel;
using lodex::PropertyData;

/// A third of the cells is inactive. Porosity and permeability of active cells, a rock type of all cells.
GridModel make_model(std::int64_t ni, std::int64_t nj, std::int64_t nk)
{
    GridModel model;
    model.size = {ni, nj, nk};
    std::vector<float> coord;
    for (std::int64_t j = 0; j <= nj; ++j) {
        for (std::int64_t i = 0; i <= ni; ++i) {
            const auto x = 50.0F * static_cast<float>(i);
            const auto y = 50.0F * static_cast<float>(j);
            coord.insert(coord.end(), {x, y, 1500, x + 3, y + 1, 2500});
        }
    }
    model.coord = std::move(coord);
    const auto cells = static_cast<std::size_t>(model.cells());
    std::vector<float> zcorn(8 * cells);
    for (std::size_t i = 0; i < zcorn.size(); ++i) {
        const auto layer = static_cast<float>((i / static_cast<std::size_t>(4 * ni * nj) + 1) / 2);
        zcorn[i] = 1600 + 2.37F * layer + static_cast<float>(i % 4096) * 1e-3F;
    }
    model.zcorn = std::move(zcorn);
    model.active.assign(cells, 1);
    std::vector<float> porosity(cells);
    std::vector<float> permeability(cells);
    std::vector<std::int32_t> rock(cells);
    for (std::size_t i = 0; i < cells; ++i) {
        const bool active = i / 64 % 3 != 1;
        model.active[i] = static_cast<std::uint8_t>(active);
        porosity[i] = active ? 0.1F + static_cast<float>(i % 997) * 1e-4F : std::nanf("");
        permeability[i] = active ? 100 + static_cast<float>(i % 10007) : std::nanf("");
        rock[i] = static_cast<std::int32_t>(i % 13);
    }
    const auto add = [&model](const char* name, auto values) {
        PropertyData property;
        property.name = name;
        property.values = std::move(values);
        model.properties.push_back(std::move(property));
    };
    add("PORO", std::move(porosity));
    add("PERMX", std::move(permeability));
    add("ROCK", std::move(rock));
    return model;
}

double model_bytes(const GridModel& model)
{
    double bytes = static_cast<double>((model.coord.size() * model.coord.bytes_per_value())
                                       + model.zcorn.size() * model.zcorn.bytes_per_value() + model.active.size());
    for (const PropertyData& property : model.properties) {
        bytes += std::visit([](const auto& values) { return static_cast<double>(values.size() * sizeof(values[0])); },
                            property.values);
    }
    return bytes;
}

template <class Work> double seconds(Work&& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    return taken.count();
}

/// Through a buffer; `to` empty: reads alone.
void copy_file_bytes(const std::filesystem::path& from, const std::filesystem::path& to)
{
    constexpr std::size_t size = 1 << 20;
    const int in = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
    const int out = to.empty() ? -1 : ::open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    const auto buffer = std::make_unique_for_overwrite<char[]>(size);
    for (ssize_t got = 0; (got = ::read(in, buffer.get(), size)) > 0;) {
        if (out >= 0 && ::write(out, buffer.get(), static_cast<std::size_t>(got)) != got) {
            std::perror("write");
            break;
        }
    }
    ::close(in);
    if (out >= 0) {
        ::close(out);
    }
}

/// A line of /proc/self/status in bytes, "VmHWM:" or "VmRSS:".
double memory(const char* line)
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

/// Reads in a process of its own, where nothing else has used memory, and prints the peak beside the model's bytes.
void print_memory(const lodex::GridFormat& format, const std::filesystem::path& path)
{
    std::fflush(stdout);
    const pid_t child = ::fork();
    if (child == 0) {
        const double before = memory("VmRSS:");
        try {
            const auto result = format.read(path, {});
            const double model = model_bytes(result.model);
            std::printf("  memory: model %.1f MB, peak %.1f MB more than before, %.3f of the model\n", model / 1e6,
                        (memory("VmHWM:") - before) / 1e6, (memory("VmHWM:") - before) / model);
            std::fflush(stdout);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "%s\n", error.what());
        }
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
}

void measure(const std::filesystem::path& path, const std::vector<std::filesystem::path>& files)
{
    const lodex::GridFormat& format = lodex::GridFormats::for_reading(path);
    double mega = 0;
    for (const auto& file : files) {
        mega += static_cast<double>(std::filesystem::file_size(file)) / 1e6;
    }
    auto target = path;
    target += ".copy";
    // One after the other in every round, so that other work on the machine slows all of them; the quickest counts.
    double copying = 1e300;
    double plain = 1e300;
    double reading = 1e300;
    std::size_t properties = 0;
    constexpr int rounds = 7;
    for (int round = 0; round < rounds; ++round) {
        copying = std::min(copying, seconds([&] {
            for (const auto& file : files) {
                copy_file_bytes(file, target);
            }
        }));
        std::filesystem::remove(target);
        plain = std::min(plain, seconds([&] {
            for (const auto& file : files) {
                copy_file_bytes(file, {});
            }
        }));
        reading = std::min(reading, seconds([&] { properties = format.read(path, {}).model.properties.size(); }));
    }
    std::printf("%s: %.1f MB, %zu properties\n", std::string(format.name()).c_str(), mega, properties);
    std::printf("  copy %.0f MB/s, plain read() %.0f MB/s\n", mega / copying, mega / plain);
    std::printf("  read %.0f MB/s: %.2f times the speed of the copy, %.2f of plain read()\n", mega / reading,
                copying / reading, plain / reading);
}

} // namespace

int main(int argc, char** argv)
{
    const bool sized = argc > 3;
    const std::int64_t ni = sized ? std::atoll(argv[1]) : 250;
    const std::int64_t nj = sized ? std::atoll(argv[2]) : 250;
    const std::int64_t nk = sized ? std::atoll(argv[3]) : 160;
    const std::filesystem::path parent =
        argc == 2 || argc == 5 ? std::filesystem::path(argv[argc - 1]) : std::filesystem::temp_directory_path();
    const auto folder = parent / ("egrid_bench-" + std::to_string(::getpid()));
    int status = 0;
    try {
        std::filesystem::create_directories(folder);
        const auto egrid = folder / "A.EGRID";
        const auto bgrdecl = folder / "A.bgrdecl";
        // Written by a process of its own: this one is to hold no memory when it measures.
        std::fflush(stdout);
        const pid_t child = ::fork();
        if (child == 0) {
            int failed = 0;
            try {
                const GridModel model = make_model(ni, nj, nk);
                std::printf("%lld x %lld x %lld cells\n", static_cast<long long>(ni), static_cast<long long>(nj),
                            static_cast<long long>(nk));
                for (const auto& path : {egrid, bgrdecl}) {
                    const auto start = std::chrono::steady_clock::now();
                    const auto bytes = lodex::GridFormats::for_writing(path).write(model, path, {}).bytes;
                    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
                    std::printf("%s: written with %.0f MB/s (with fsync)\n", path.extension().c_str(),
                                static_cast<double>(bytes) / 1e6 / taken.count());
                }
            } catch (const std::exception& error) {
                std::fprintf(stderr, "%s\n", error.what());
                failed = 1;
            }
            std::fflush(stdout);
            ::_exit(failed);
        }
        ::waitpid(child, &status, 0);
        if (status == 0) {
            print_memory(lodex::GridFormats::for_reading(egrid), egrid);
            measure(egrid, {egrid, folder / "A.INIT"});
            print_memory(lodex::GridFormats::for_reading(bgrdecl), bgrdecl);
            measure(bgrdecl, {bgrdecl});
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        status = 1;
    }
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    return status == 0 ? 0 : 1;
}

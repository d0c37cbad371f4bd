// Speed and memory of saving and opening a project, beside writing and reading the same number of bytes as they are.
//
//     project_bench [NI NJ NK] [FOLDER]
//
// makes the example field in that size (default 250 x 250 x 160, ten million cells) with one more property of pure noise in
// FOLDER (default: the temporary folder). A model counts as its bytes in memory. Written is to the disk (fsync), read from
// the disk: the system's copy of the file is dropped before. Medians of rounds in which everything has its turn.

#include "Timing.h"

#include <lodex/project/Project.h>
#include <lodex/volumes/CornerPointGrid.h>
#include <lodex/volumes/model/Create.h>
#include <lodex/volumes/model/PropertyTools.h>

#include <Lodex/geobase/GeobaseLib.h>

#include <span>

namespace {

using lodex::GridModel;

void drop_from_memory(const std::filesystem::path& path)
{
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    ::fsync(file);
    ::posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
    ::close(file);
}

/// All arrays of the model one after the other, as they are.
template <class F> void for_each_array(const GridModel& model, F f)
{
    const auto real = [&](const lodex::RealArray& numbers) { numbers.visit([&](auto values) { f(std::as_bytes(values)); }); };
    real(model.coord);
    real(model.zcorn);
    f(std::as_bytes(std::span(model.active)));
    for (const lodex::PropertyData& property : model.properties)
        std::visit([&](const auto& values) { f(std::as_bytes(std::span(values))); }, property.values);
    for (const lodex::RegionData& region : model.regions)
        f(std::as_bytes(std::span(region.flags)));
}

void write_plainly(const GridModel& model, const std::filesystem::path& path)
{
    std::filesystem::remove(path);
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    for_each_array(model, [&](std::span<const std::byte> bytes) {
        for (std::size_t done = 0; done < bytes.size();) {
            const ssize_t now = ::write(file, bytes.data() + done, std::min<std::size_t>(bytes.size() - done, 1 << 20));
            if (now <= 0) {
                std::perror("write");
                std::exit(1);
            }
            done += static_cast<std::size_t>(now);
        }
    });
    ::fsync(file);
    ::close(file);
}

void open_and_load(const std::filesystem::path& path)
{
    lodex::open_project(path);
    lodex::find_grid("G")->load();
}

/// Peak of this process's memory while work runs, over what it has before.
double peak_of(const std::function<void()>& work)
{
    if (std::FILE* const file = std::fopen("/proc/self/clear_refs", "w")) {
        std::fputs("5", file); // sets VmHWM to VmRSS
        std::fclose(file);
    }
    const double before = bench::memory("VmRSS:");
    work();
    return bench::memory("VmHWM:") - before;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::string(argv[1]) == "--peak") {
        const double peak = peak_of([&] { open_and_load(argv[2]); });
        const double model = bench::model_bytes(lodex::find_grid("G")->model());
        std::printf("  %-24s %8.0f MB more than before, %.2f times the model's\n", "peak memory of opening", peak / 1e6,
                    peak / model);
        return 0;
    }
    const bench::Arguments arguments(argc, argv, 250, 250, 160);
    try {
        const bench::Folder folder(arguments.folder, "project_bench");
        const auto project = folder / "A.lodex-project";
        const auto plain = folder / "plain";
        {
            GridModel model = lodex::make_example({arguments.ni, arguments.nj, arguments.nk}, 1);
            model.properties.push_back(lodex::lognormal_property(model, "NOISE", 1, 1, 7));
            lodex::add_grid("G", std::move(model));
        }
        const GridModel& model = lodex::find_grid("G")->model();
        const double bytes = bench::model_bytes(model);
        std::printf("%lld x %lld x %lld cells, %.0f MB in memory\n", static_cast<long long>(arguments.ni),
                    static_cast<long long>(arguments.nj), static_cast<long long>(arguments.nk), bytes / 1e6);
        const double peak = peak_of([&] { lodex::save_project(project); });
        std::printf("  the project's file has %.0f MB\n", static_cast<double>(std::filesystem::file_size(project)) / 1e6);
        const auto writing = bench::medians({[&] { write_plainly(model, plain); }, [&] { lodex::save_project(project); }}, 3);
        bench::print("save", bytes / 1e6, writing[1], writing[0], "plain writing with fsync");
        std::printf("  %-24s %8.0f MB more than before, %.3f times the model's\n", "peak memory of saving", peak / 1e6,
                    peak / bytes);

        Lodex::GeobaseLib::instance()->clear();
        std::vector<double> listing;
        drop_from_memory(plain);
        drop_from_memory(project);
        const auto reading = bench::medians(
            {[&] { bench::copy_file(plain, {}); }, [&] { open_and_load(project); },
             [&] { // what a round has to clean up between the timed ones
                 drop_from_memory(plain);
                 drop_from_memory(project);
                 listing.push_back(bench::time_of([&] { lodex::open_project(project); }).wall);
                 drop_from_memory(project);
             }},
            4);
        bench::print("open and load all", bytes / 1e6, reading[1], reading[0], "plain reading");
        std::printf("  %-24s %8.1f ms\n", "open alone", 1e3 * *std::min_element(listing.begin(), listing.end()));
        Lodex::GeobaseLib::instance()->clear();
        const auto again = bench::time_of([&] {
            lodex::open_project(project);
            lodex::save_project(project);
        });
        std::printf("  %-24s %8.0f MB/s\n", "copy of unread arrays", bytes / 1e6 / again.wall);
        bench::print_peak(argv[0], project);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}

// Speed and memory of reading and writing EGRID with INIT and binary GRDECL, and of reading the old GRID, beside copies of the
// same bytes.
//
//     egrid_bench [NI NJ NK] [FOLDER]
//
// makes a model of that size (default 250 x 250 x 160, ten million cells; a quarter of it as old GRID) in FOLDER (default:
// the temporary folder). Medians of rounds in which everything has its turn.

#include "Timing.h"

#include <lodex/gridio/RecordFile.h>

#include <array>
#include <cmath>

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

/// Every cell with its eight corners, as old GRID files list them.
void write_old_grid(const GridModel& model, const std::filesystem::path& path)
{
    using lodex::records::Type;
    lodex::AtomicFile file(path);
    lodex::records::Writer writer(file, false);
    const auto [ni, nj, nk] = model.size;
    const auto number = [](std::int64_t value) { return static_cast<std::int32_t>(value); };
    const std::array<std::int32_t, 3> size = {number(ni), number(nj), number(nk)};
    writer.begin("DIMENS", Type::Integer, size.size(), path);
    writer.put(std::span<const std::int32_t>(size));
    std::int64_t cell = 0;
    for (std::int64_t k = 0; k < nk; ++k) {
        for (std::int64_t j = 0; j < nj; ++j) {
            for (std::int64_t i = 0; i < ni; ++i, ++cell) {
                const std::array<std::int32_t, 7> place = {number(i + 1), number(j + 1), number(k + 1), number(cell + 1),
                                                           model.active[static_cast<std::size_t>(cell)], 0, 0};
                writer.begin("COORDS", Type::Integer, place.size(), path);
                writer.put(std::span<const std::int32_t>(place));
                std::array<float, 24> corners{};
                for (std::int64_t corner = 0; corner < 8; ++corner) {
                    const std::int64_t a = corner & 1;
                    const std::int64_t b = corner >> 1 & 1;
                    const std::int64_t c = corner >> 2;
                    const auto pillar = static_cast<std::size_t>(6 * (i + a + (ni + 1) * (j + b)));
                    const double depth = model.zcorn[static_cast<std::size_t>((2 * k + c) * 4 * nj * ni
                                                                              + (2 * j + b) * 2 * ni + 2 * i + a)];
                    const double part = (depth - model.coord[pillar + 2]) / (model.coord[pillar + 5] - model.coord[pillar + 2]);
                    float* const point = corners.data() + 3 * corner;
                    for (std::size_t axis = 0; axis < 2; ++axis) {
                        const double top = model.coord[pillar + axis];
                        point[axis] = static_cast<float>(top + part * (model.coord[pillar + 3 + axis] - top));
                    }
                    point[2] = static_cast<float>(depth);
                }
                writer.begin("CORNERS", Type::Real, corners.size(), path);
                writer.put(std::span<const float>(corners));
            }
        }
    }
    file.commit();
}

void measure(const std::string& program, const GridModel* model, const std::vector<std::filesystem::path>& files)
{
    const std::filesystem::path& path = files.front();
    const lodex::GridFormat& format = lodex::GridFormats::for_reading(path);
    double mega = 0;
    for (const auto& file : files) {
        mega += static_cast<double>(std::filesystem::file_size(file)) / 1e6;
    }
    std::printf("%s, %.0f MB\n", std::string(format.name()).c_str(), mega);
    std::filesystem::path other = path;
    other.replace_filename("B" + path.extension().string());
    const auto copy_all = [&](bool sync) {
        for (const auto& file : files) {
            std::filesystem::path copy = file;
            copy.replace_filename("B" + file.extension().string());
            bench::copy_file(file, copy, sync);
        }
    };
    std::vector<std::function<void()>> works = {[&] { copy_all(false); }, [&] { (void)format.read(path, {}); }};
    if (model != nullptr) {
        works.emplace_back([&] { copy_all(true); });
        works.emplace_back([&] { (void)format.write(*model, other, {}); });
    }
    const auto times = bench::medians(works);
    bench::print("read", mega, times[1], times[0], "a copy");
    if (model != nullptr) {
        bench::print("write", mega, times[3], times[2], "a copy with fsync");
    }
    bench::print_peak(program, path);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::string(argv[1]) == "--peak") {
        return bench::print_peak_of_this_process(argv[2]);
    }
    const bench::Arguments arguments(argc, argv, 250, 250, 160);
    try {
        const bench::Folder folder(arguments.folder, "egrid_bench");
        {
            const GridModel model = make_model(arguments.ni, arguments.nj, arguments.nk);
            std::printf("%lld x %lld x %lld cells, %.0f MB in memory\n", static_cast<long long>(arguments.ni),
                        static_cast<long long>(arguments.nj), static_cast<long long>(arguments.nk),
                        bench::model_bytes(model) / 1e6);
            const auto egrid = folder / "A.EGRID";
            const auto bgrdecl = folder / "A.bgrdecl";
            for (const auto& path : {egrid, bgrdecl}) {
                lodex::GridFormats::for_writing(path).write(model, path, {});
            }
            measure(argv[0], &model, {egrid, folder / "A.INIT"});
            measure(argv[0], &model, {bgrdecl});
        }
        std::filesystem::remove(folder / "A.INIT"); // of another grid than the next
        std::filesystem::remove(folder / "B.INIT");
        const auto grid = folder / "A.GRID";
        const std::int64_t quarter = std::max<std::int64_t>(1, arguments.nk / 4);
        if (bench::in_child([&] { write_old_grid(make_model(arguments.ni, arguments.nj, quarter), grid); })) {
            measure(argv[0], nullptr, {grid});
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}

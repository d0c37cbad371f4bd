// Speed and memory of reading and writing ROFF files, beside copies of the same bytes.
//
//     roff_bench [NI NJ NK] [FOLDER]
//
// makes a model of that size (default 250 x 200 x 200: 10 million cells) in FOLDER (default: the temporary folder).
// Medians of rounds in which everything has its turn.

#include "Timing.h"

#include <cmath>

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

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::string(argv[1]) == "--peak") {
        return bench::print_peak_of_this_process(argv[2]);
    }
    const bench::Arguments arguments(argc, argv, 250, 200, 200);
    try {
        const bench::Folder folder(arguments.folder, "roff_bench");
        const auto path = folder / "model";
        const auto copy = folder / "copy";
        const GridModel model = make_model(arguments.ni, arguments.nj, arguments.nk);
        std::printf("%lld x %lld x %lld cells, %.0f MB in memory\n", static_cast<long long>(arguments.ni),
                    static_cast<long long>(arguments.nj), static_cast<long long>(arguments.nk),
                    bench::model_bytes(model) / 1e6);
        for (const char* const name : {"roff", "roff_big_endian", "roff_text"}) {
            const lodex::GridFormat& format = *lodex::GridFormats::find(name);
            const double mega = static_cast<double>(format.write(model, path, {}).bytes) / 1e6;
            std::printf("%s, %.0f MB\n", name, mega);
            constexpr int rounds = 5;
            const auto times = bench::medians(
                {[&] { bench::copy_file(path, copy); }, [&] { bench::copy_file(path, copy, true); },
                 [&] { (void)format.read(path, {}); }, [&] { (void)format.write(model, copy, {}); }},
                rounds);
            bench::print("read", mega, times[2], times[0], "a copy");
            bench::print("write", mega, times[3], times[1], "a copy with fsync");
            bench::print_peak(argv[0], path);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}

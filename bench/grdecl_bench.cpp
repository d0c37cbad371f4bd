// Speed and memory of reading and writing GRDECL text on one core, beside a plain read() and a copy of the same bytes.
//
//     grdecl_bench [NI NJ NK] [FOLDER]
//
// makes a model of that size (default 160 x 160 x 80, some 200 MB of text; 250 x 250 x 160 has ten million cells) in
// FOLDER (default: the temporary folder). Medians of rounds in which everything has its turn.

#include "Timing.h"

#include <cmath>

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

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::string(argv[1]) == "--peak") {
        return bench::print_peak_of_this_process(argv[2]);
    }
    const bench::Arguments arguments(argc, argv, 160, 160, 80);
    try {
        const bench::Folder folder(arguments.folder, "grdecl_bench");
        const auto path = folder / "model.grdecl";
        const auto copy = folder / "copy.grdecl";
        const lodex::GridFormat& format = lodex::GridFormats::for_writing(path);
        const GridModel model = make_model(arguments.ni, arguments.nj, arguments.nk);
        format.write(model, path, {});
        const double mega = static_cast<double>(std::filesystem::file_size(path)) / 1e6;
        std::printf("%lld x %lld x %lld cells, %.0f MB in memory, %.0f MB of text\n", static_cast<long long>(arguments.ni),
                    static_cast<long long>(arguments.nj), static_cast<long long>(arguments.nk),
                    bench::model_bytes(model) / 1e6, mega);
        lodex::ReadOptions properties_only;
        properties_only.properties_only = true;
        constexpr int rounds = 5;
        const auto times = bench::medians({[&] { bench::copy_file(path, {}); }, [&] { bench::copy_file(path, copy, true); },
                                           [&] { (void)format.read(path, {}); },
                                           [&] { (void)format.read(path, properties_only); },
                                           [&] { (void)format.write(model, copy, {}); }},
                                          rounds);
        bench::print("read", mega, times[2], times[0], "plain read()");
        bench::print("read, properties only", mega, times[3], times[0], "plain read()");
        bench::print("write", mega, times[4], times[1], "a copy with fsync");
        bench::print_peak(argv[0], path);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}

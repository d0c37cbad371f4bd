// A host program without windows: makes a grid, coarsens it and carries a property over by commands, and reads both grids
// through the host's interfaces. Prints cells, volume and pore volume of each.

#include <Kelvane/upscaling/Kelvane_upscaling_init.h>
#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/geobase/Property.h>
#include <Lodex/interpreter/CommandExecuter.h>
#include <Lodex/utils/Logger.h>
#include <Lodex/volumes/Lodex_volumes_init.h>
#include <Lodex/volumes/SGrid.h>

#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>
#include <variant>

namespace {

/// Shows what goes wrong.
class Problems : public Lodex::LogSink {
public:
    Problems() { Lodex::Logger::add_sink(this); }
    ~Problems() override { Lodex::Logger::remove_sink(this); }
    Problems(const Problems&) = delete;
    Problems& operator=(const Problems&) = delete;

    void message(Lodex::LogLevel level, const Lodex::CString& text) override
    {
        if (level != Lodex::LogLevel::Info)
            std::cerr << text << '\n';
    }
};

bool run(const std::string& commands)
{
    std::ostringstream text;
    text << commands;
    return Lodex::CommandLib::instance()->cmd_executer()->run_cmd(text, nullptr);
}

/// Cells, bulk volume and pore volume of the active cells on one line. False when grid or porosity are not there.
bool print(const char* name)
{
    const auto* grid =
        static_cast<Lodex::SGrid*>(Lodex::GeobaseLib::instance()->find(name, Lodex::SGrid::static_type_id_()));
    const Lodex::Property* porosity = grid ? grid->property_db()->find("PORO") : nullptr;
    if (!porosity)
        return false;
    // A property keeps the kind of numbers that it came with.
    const auto active = grid->active_flags();
    const auto volumes = grid->bulk_volumes();
    std::size_t cells = 0;
    double bulk = 0, pores = 0;
    std::visit(
        [&](const auto values) {
            for (std::size_t cell = 0; cell < values.size(); ++cell) {
                if (active[cell]) {
                    ++cells;
                    bulk += volumes[cell];
                    pores += volumes[cell] * static_cast<double>(values[cell]);
                }
            }
        },
        porosity->values());
    std::printf("%s: %zu cells, bulk volume %.6g, pore volume %.6g\n", name, cells, bulk, pores);
    return true;
}

} // namespace

int main()
{
    Lodex::Lodex_volumes_init::initialize();
    Kelvane::Kelvane_upscaling_init::initialize();
    const Problems problems;

    const bool done = run(R"(
        lodex create sgrid name Fine size 8+6+12 spacing 50+50+2 origin 0+0+2000
        lodex on SGrid Fine fill_property PORO lognormal 0.2+0.3 seed 7
        lodex sgrid_merge_multiple_sections name Coarse sgrid Fine direction vertical sections 0+3+4+7+8+11 property_sections -1
        lodex on SGrid Fine upscale_porosity fine_porosity PORO Coarse Coarse coarse_porosity PORO mapper geometric upscaler Arithmetic weight_using_volume 1
    )");
    return done && print("Fine") && print("Coarse") ? 0 : 1;
}

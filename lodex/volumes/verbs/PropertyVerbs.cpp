#include "VerbTools.h"

#include "lodex/utils/Numbers.h"
#include "lodex/volumes/model/FaultBlocks.h"
#include "lodex/volumes/model/Layering.h"
#include "lodex/volumes/model/PropertyTools.h"

#include <algorithm>

namespace lodex {

namespace {

void fill_property(Call& call)
{
    CornerPointGrid& grid = grid_of(call);
    const std::string name = call.text("property");
    if (call.has("value") == call.has("lognormal"))
        call.fail("fill_property takes either \"value\" or \"lognormal\"");
    if (call.has("value")) {
        set_property(grid, constant_property(grid.model(), name, call.real("value")));
    } else {
        const std::vector<double> parameters = call.reals("lognormal");
        if (parameters.size() != 2)
            call.fail("\"lognormal\" holds " + std::to_string(parameters.size()) + " numbers; expected MEAN+SIGMA", "lognormal");
        set_property(grid, at_keyword(call, "lognormal", [&] {
                         return lognormal_property(grid.model(), name, parameters[0], parameters[1],
                                                   static_cast<std::uint64_t>(call.integer("seed")),
                                                   call.progress_check());
                     }));
    }
    call.count("cells", static_cast<double>(grid.header().cells()));
}

void define_region(Call& call)
{
    CornerPointGrid& grid = grid_of(call);
    (void)property_of(call, "property", grid.model());
    const auto bound = [&](std::string_view keyword) {
        return call.has(keyword) ? std::optional(call.real(keyword)) : std::nullopt;
    };
    const std::string name = call.text("region");
    RegionData region = at_keyword(call, call.has("min") ? "min" : "max", [&] {
        return region_from_range(grid.model(), name, call.text("property"), bound("min"), bound("max"),
                                 call.progress_check());
    });
    const auto cells = std::ranges::count(region.flags, 1);
    grid.change([&](GridModel& model) { put_item(model.regions, std::move(region)); });
    call.count("cells", static_cast<double>(cells));
}

void define_unit_regions(Call& call)
{
    CornerPointGrid& grid = grid_of(call);
    if (grid.header().layers.empty())
        call.fail("SGrid \"" + grid.name().str() + "\" has no stratigraphic units");
    std::vector<RegionData> regions = unit_regions(grid.model());
    for (const RegionData& region : regions) {
        const RegionData* former = grid.model().find_region(region.name);
        if (former && !former->model)
            call.fail("SGrid \"" + grid.name().str() + "\" has a region \"" + region.name + "\" that comes from no unit");
    }
    call.count("regions", static_cast<double>(regions.size()));
    grid.change([&](GridModel& model) { replace_regions(model, std::move(regions)); });
}

const VerbRegistration fill_registration{
    {.name = "fill_property",
     .object_type = "SGrid",
     .summary = "Sets a property to one value, or to lognormal values that are independent from cell to cell.",
     .keywords = {{.name = "property", .kind = ValueKind::ItemName, .meaning = "the property, made when it is not there",
                   .required = true, .positional = true},
                  {.name = "value", .kind = ValueKind::Real, .meaning = "one value for all cells"},
                  {.name = "lognormal", .kind = ValueKind::RealList,
                   .meaning = "arithmetic mean of the values + standard deviation of their natural logarithm"},
                  {.name = "seed", .kind = ValueKind::Integer, .meaning = "the same seed makes the same values on every machine",
                   .default_value = "1", .min = 0}},
     .run = fill_property}};

const VerbRegistration region_registration{
    {.name = "define_region",
     .object_type = "SGrid",
     .summary = "Makes (or replaces) a region of the cells whose property lies between two values, both included.",
     .keywords = {{.name = "region", .kind = ValueKind::ItemName, .meaning = "the region", .required = true, .positional = true},
                  {.name = "property", .kind = ValueKind::Text, .meaning = "the property to look at", .required = true},
                  {.name = "min", .kind = ValueKind::Real, .meaning = "least value; absent: no lower bound"},
                  {.name = "max", .kind = ValueKind::Real, .meaning = "largest value; absent: no upper bound"}},
     .run = define_region}};

const VerbRegistration unit_regions_registration{
    {.name = "define_unit_regions",
     .object_type = "SGrid",
     .summary = "Makes (or replaces) a model region of every stratigraphic unit. Model regions always pass on to the grids that "
                "are made from this one.",
     .run = define_unit_regions}};

} // namespace

} // namespace lodex

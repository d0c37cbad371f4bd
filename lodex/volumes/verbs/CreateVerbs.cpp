#include "VerbTools.h"

#include "lodex/utils/Memory.h"
#include "lodex/volumes/model/CellGeometry.h"
#include "lodex/volumes/model/Create.h"

namespace lodex {

namespace {

/// Three values of a joined list.
template <class T> std::array<T, 3> triple(const Call& call, std::string_view keyword, const std::vector<T>& values)
{
    if (values.size() != 3) {
        call.fail("\"" + std::string(keyword) + "\" holds " + std::to_string(values.size()) +
                      " numbers; expected three joined by +",
                  keyword);
    }
    return {values[0], values[1], values[2]};
}

GridSize read_size(const Call& call)
{
    const auto size = triple(call, "size", call.integers("size"));
    const GridSize grid{size[0], size[1], size[2]};
    constexpr std::int64_t bytes_per_cell = 8 * sizeof(double) + 1; // corner depths and flag
    const auto most_cells = static_cast<std::int64_t>(model_memory_limit() / bytes_per_cell);
    if (grid[0] > most_cells / grid[1] || grid[0] * grid[1] > most_cells / grid[2])
        call.fail("a grid of " + size_text(grid) + " cells is too large for this machine; at most " + std::to_string(most_cells) + " cells",
                  "size");
    return grid;
}

void report(Call& call, const CornerPointGrid& grid)
{
    const GridModel& model = grid.model();
    call.count("cells", static_cast<double>(model.cells()));
    call.info("SGrid \"" + grid.name().str() + "\": " + size_text(model.size) + " cells");
}

void create_box(Call& call)
{
    const auto spacing = triple(call, "spacing", call.reals("spacing"));
    const auto origin = triple(call, "origin", call.reals("origin"));
    GridModel model = at_keyword(call, "spacing", [&] {
        return make_box(read_size(call), spacing, origin, call.progress_check());
    });
    report(call, *add_grid(call.text("name"), std::move(model)));
}

void create_example(Call& call)
{
    const GridSize size = call.has("size") ? read_size(call) : example_size;
    const auto seed = static_cast<std::uint64_t>(call.integer("seed"));
    report(call, *add_grid(call.text("name"), make_example(size, seed, call.progress_check())));
}

const VerbRegistration box_registration{
    {.name = "create sgrid",
     .summary = "Makes a plain box of equal cells, all active.",
     .keywords = {{.name = "name", .kind = ValueKind::NewName, .meaning = "the new grid", .required = true},
                  {.name = "size", .kind = ValueKind::IntegerList, .meaning = "cells along I, J, K", .required = true, .min = 1},
                  {.name = "spacing", .kind = ValueKind::RealList, .meaning = "size of a cell along I, J, K",
                   .required = true, .unit = "m"},
                  {.name = "origin", .kind = ValueKind::RealList, .meaning = "x, y and depth of the first corner",
                   .unit = "m", .default_value = "0+0+0"}},
     .run = create_box}};

const VerbRegistration example_registration{
    {.name = "create example",
     .summary = "Makes the example field: a faulted anticline with four units, facies, porosity and permeability.",
     .keywords = {{.name = "name", .kind = ValueKind::NewName, .meaning = "the new grid", .required = true},
                  {.name = "size", .kind = ValueKind::IntegerList, .meaning = "cells along I, J, K; absent: 50+40+40", .min = 1},
                  {.name = "seed", .kind = ValueKind::Integer, .meaning = "the same seed makes the same field on every machine",
                   .default_value = "1", .min = 0}},
     .run = create_example}};

} // namespace

} // namespace lodex

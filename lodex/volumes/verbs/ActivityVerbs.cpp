#include "VerbTools.h"

#include "lodex/volumes/ActivityModel.h"
#include "lodex/volumes/model/Layering.h"
#include "lodex/volumes/model/Merge.h"

namespace lodex {

namespace {

void fill_layers(Call& call)
{
    CornerPointGrid& grid = grid_of(call);
    grid.change([&call](GridModel& model) {
        fill_layering_info(model);
        mend_units(call, model.layers);
    });
    call.count("layers", static_cast<double>(grid.header().layers.size()));
}

void create_upgridding(Call& call)
{
    auto data = at_keyword(call, "modifications", [&] { return coarsening_from_text(call.text("modifications")); });
    Lodex::SGrid& coarse = as_grid(call.object_of("result"));
    if (!Lodex::SGridUpgriddingActivityData::create_upgridding_activity(&grid_head_of(call), &coarse, data.release()))
        call.fail("no record of such a coarsening leads from \"" + call.object()->name().str() + "\" to \"" +
                      call.text("result") + "\"",
                  "result");
}

void create_downgridding(Call& call)
{
    auto data = at_keyword(call, "modifications", [&] { return refinement_from_text(call.text("modifications")); });
    Lodex::SGrid& fine = as_grid(call.object_of("result"));
    if (!Lodex::SGridDowngriddingActivityData::create_downgridding_activity(&grid_head_of(call), &fine, data.release()))
        call.fail("no record of such a refinement leads from \"" + call.object()->name().str() + "\" to \"" +
                      call.text("result") + "\"",
                  "result");
}

void create_coarsening(Call& call)
{
    using Activity = Lodex::SGridGridCoarseningModificationActivityData;
    CornerPointGrid& grid = grid_head_of(call);
    const std::string name = call.text("activity");
    auto data = at_keyword(call, "modifications", [&] { return coarsening_from_text(call.text("modifications")); });
    std::vector<GridModification> modifications;
    Activity* existing = Activity::get_coarsening_activity(&grid, name);
    if (existing) {
        for (const auto& m : existing->grid_coarsening_data()->modifications())
            modifications.push_back({m.axis, m.first, m.last, m.step});
    }
    for (const auto& m : data->modifications())
        modifications.push_back({m.axis, m.first, m.last, m.step});
    at_keyword(call, "modifications", [&] { return merge_sections_of(modifications, grid.header().size); });
    if (existing) {
        for (const auto& m : data->modifications())
            existing->grid_coarsening_data()->add_modification(m.axis, m.first, m.last, m.step);
    } else if (!Activity::create_coarsening_activity(&grid, name, data.release())) {
        call.fail("the activity \"" + name + "\" cannot be made", "activity");
    }
}

void apply_coarsening_activity(Call& call)
{
    CornerPointGrid& grid = grid_of(call);
    auto* activity = Lodex::SGridGridCoarseningModificationActivityData::get_coarsening_activity(&grid, call.text("activity"));
    if (!activity)
        call.fail("SGrid \"" + grid.name().str() + "\" has no coarsening activity \"" + call.text("activity") + "\"", "activity");
    std::vector<GridModification> modifications;
    for (const auto& m : activity->grid_coarsening_data()->modifications())
        modifications.push_back({m.axis, m.first, m.last, m.step});
    MergeOptions options;
    options.copy_properties = call.flag("copy_properties");
    options.copy_regions = call.flag("copy_regions");
    options.source_name = grid.name().str();
    MergeReport report;
    GridModel coarse = at_keyword(call, "activity", [&] {
        return apply_coarsening(grid.model(), modifications, options, report, call.progress_check());
    });
    const CornerPointGrid* result = add_grid(call.text("name"), std::move(coarse));
    call.count("cells", static_cast<double>(result->header().cells()));
    call.info("SGrid \"" + result->name().str() + "\": " + size_text(result->header().size) + " cells");
    for (const std::string& warning : report.warnings)
        call.warn(warning);
}

const Keyword result_keyword{.name = "result", .kind = ValueKind::Object, .meaning = "the grid that came from it",
                             .required = true, .object_type = "SGrid"};

// The activities write their own journal lines, since dialogs make them without a statement.
const VerbRegistration layering_registration{
    {.name = "sgrid_fill_layering_info",
     .object_type = "SGrid",
     .summary = "Gives a grid without layers its layers: by the discrete property ZONE where that is constant on each K "
                "layer, else one layer of all K cells.",
     .run = fill_layers}};

const VerbRegistration upgridding_registration{
    {.name = "create_upgridding_activity",
     .object_type = "SGrid",
     .summary = "Remembers that another grid came from this one by a coarsening.",
     .keywords = {result_keyword,
                  {.name = "modifications", .kind = ValueKind::Text,
                   .meaning = "axis (1 to 3), first cell, last cell (1-based), step; all joined by +", .required = true,
                   .may_be_empty = true}},
     .journalled = false,
     .run = create_upgridding}};

const VerbRegistration downgridding_registration{
    {.name = "create_downgridding_activity",
     .object_type = "SGrid",
     .summary = "Remembers that another grid came from this one by a refinement.",
     .keywords = {result_keyword,
                  {.name = "modifications", .kind = ValueKind::Text,
                   .meaning = "axis (1 to 3), first cell, last cell (1-based), amount, thickness, layering style; all joined by +",
                   .required = true, .may_be_empty = true}},
     .journalled = false,
     .run = create_downgridding}};

const VerbRegistration coarsening_registration{
    {.name = "create_coarsening_activity",
     .object_type = "SGrid",
     .summary = "Keeps a named coarsening with the grid, or adds to the one of that name.",
     .keywords = {{.name = "activity", .kind = ValueKind::ItemName, .meaning = "name of the activity", .required = true,
                   .positional = true},
                  {.name = "modifications", .kind = ValueKind::Text,
                   .meaning = "axis (1 to 3), first cell, last cell (1-based), step; all joined by +", .required = true,
                   .may_be_empty = true}},
     .journalled = false,
     .run = create_coarsening}};

const VerbRegistration apply_registration{
    {.name = "apply_coarsening",
     .object_type = "SGrid",
     .summary = "Makes the grid that a named coarsening activity describes.",
     .keywords = {{.name = "activity", .kind = ValueKind::Text, .meaning = "name of the activity", .required = true,
                   .positional = true},
                  {.name = "name", .kind = ValueKind::NewName, .meaning = "the new grid", .required = true},
                  {.name = "copy_properties", .kind = ValueKind::Flag, .meaning = "whether properties pass on", .default_value = "0"},
                  {.name = "copy_regions", .kind = ValueKind::Flag, .meaning = "whether user regions pass on", .default_value = "0"}},
     .run = apply_coarsening_activity}};

} // namespace

} // namespace lodex

#include "lodex/utils/AtomicFile.h"
#include "lodex/volumes/ActivityModel.h"
#include "lodex/volumes/model/CellGeometry.h"
#include "lodex/volumes/model/Statistics.h"
#include "lodex/volumes/verbs/VerbTools.h"

#include <nlohmann/json.hpp>

#include <array>

namespace lodex {

namespace {

using nlohmann::ordered_json;

ordered_json number_or_null(const std::optional<double>& value)
{
    return value ? ordered_json(*value) : ordered_json(nullptr);
}

ordered_json property_entry(const PropertyStatistics& statistics, const PropertyData& data)
{
    ordered_json entry{{"count", statistics.count},
                       {"undefined", statistics.undefined},
                       {"min", number_or_null(statistics.min)},
                       {"max", number_or_null(statistics.max)},
                       {"mean", number_or_null(statistics.mean)},
                       {"sum", statistics.sum},
                       {"discrete", statistics.discrete},
                       {"on", data.on_points ? "points" : "cells"}};
    if (!data.unit.empty())
        entry["unit"] = data.unit;
    if (statistics.discrete) {
        ordered_json codes = ordered_json::object();
        for (const auto& [code, count] : statistics.codes)
            codes[std::to_string(code)] = count;
        entry["codes"] = std::move(codes);
        ordered_json names = ordered_json::object();
        for (const auto& [code, name] : data.code_names)
            names[std::to_string(code)] = name;
        if (!names.empty())
            entry["code_names"] = std::move(names);
    }
    return entry;
}

const char* kind_name(Lodex::SGridActivity::Kind kind)
{
    switch (kind) {
    case Lodex::SGridActivity::Kind::Upgridding: return "upgridding";
    case Lodex::SGridActivity::Kind::Downgridding: return "downgridding";
    case Lodex::SGridActivity::Kind::Coarsening: return "coarsening";
    }
    return "";
}

ordered_json activity_entry(const Lodex::SGridActivity& activity)
{
    ordered_json entry{{"kind", kind_name(activity.kind())}, {"name", activity.name().str()}};
    if (const auto* up = dynamic_cast<const Lodex::SGridUpgriddingActivityData*>(&activity))
        entry["modifications"] = to_text(up->coarsening_data());
    else if (const auto* down = dynamic_cast<const Lodex::SGridDowngriddingActivityData*>(&activity))
        entry["modifications"] = to_text(down->refinement_data());
    return entry;
}

/// What the coordinates are: units and axes as the file stated them, and how the axes turn.
ordered_json frame_entry(const GridModel& model)
{
    ordered_json entry{{"depth", "positive downwards"}};
    const int turn = handedness(model);
    entry["ijk_against_xy_depth"] = turn > 0 ? "right-handed" : turn < 0 ? "left-handed" : "undecided";
    const auto stated = [](const std::string& unit) { return unit.empty() ? ordered_json(nullptr) : ordered_json(unit); };
    entry["grid_units"] = stated(model.frame.grid_units);
    entry["grid_units_are_map_units"] = model.frame.grid_units_map;
    entry["map_units"] = stated(model.frame.map_units);
    entry["map_axes"] = model.frame.map_axes ? ordered_json(*model.frame.map_axes) : ordered_json(nullptr);
    entry["stored_depths"] = model.zcorn.is_double() ? "64 bits" : "32 bits";
    return entry;
}

ordered_json grid_report(const CornerPointGrid& grid, const GridStatistics& statistics)
{
    const GridModel& model = grid.model();
    ordered_json report{{"name", grid.name().str()},
                        {"size", model.size},
                        {"active", statistics.active},
                        {"bulk_volume", statistics.bulk_volume},
                        {"total_volume", statistics.total_volume},
                        {"frame", frame_entry(model)}};
    ordered_json properties = ordered_json::object();
    for (std::size_t i = 0; i < statistics.properties.size(); ++i)
        properties[statistics.properties[i].name] = property_entry(statistics.properties[i], model.properties[i]);
    report["properties"] = std::move(properties);

    ordered_json regions = ordered_json::object();
    for (const RegionStatistics& region : statistics.regions)
        regions[region.name] = {{"cells", region.cells}, {"bulk_volume", region.bulk_volume}, {"model", region.model}};
    report["regions"] = std::move(regions);

    constexpr std::array styles{"proportional", "parallel_to_base", "parallel_to_top"};
    ordered_json layers = ordered_json::array();
    for (const LayerData& layer : model.layers) {
        layers.push_back({{"unit", layer.unit},
                          {"nb_k_cells", layer.nb_k_cells},
                          {"cell_thickness", layer.cell_thickness},
                          {"layering", styles[layer.style]}});
    }
    report["layers"] = std::move(layers);

    ordered_json k_layers = ordered_json::array();
    for (const LayerStatistics& layer : statistics.k_layers) {
        ordered_json means = ordered_json::object();
        for (std::size_t i = 0; i < layer.means.size(); ++i) {
            if (!model.properties[i].on_points)
                means[model.properties[i].name] = number_or_null(layer.means[i]);
        }
        k_layers.push_back(
            {{"k", layer.k + 1}, {"active", layer.active}, {"bulk_volume", layer.bulk_volume}, {"means", std::move(means)}});
    }
    report["k_layers"] = std::move(k_layers);

    ordered_json activities = ordered_json::array();
    if (const Lodex::SGridActivityModel* activity_model = grid.sgrid_activity_model()) {
        for (const Lodex::SGridActivity* activity : activity_model->activities())
            activities.push_back(activity_entry(*activity));
    }
    report["activities"] = std::move(activities);
    ordered_json faults = ordered_json::object();
    for (const FaultSegment& segment : model.faults)
        faults[segment.name] = faults.value(segment.name, 0) + 1;
    report["fault_segments"] = std::move(faults);
    ordered_json kept = ordered_json::array();
    for (const KeptKeyword& keyword : model.kept)
        kept.push_back(keyword.name);
    report["kept_keywords"] = std::move(kept);
    return report;
}

void run(Call& call)
{
    const CornerPointGrid& grid = grid_of(call, "sgrid");
    const GridStatistics statistics = grid_statistics(grid.model(), call.progress_check());
    const std::string text = grid_report(grid, statistics).dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n";
    call.count("active_cells", static_cast<double>(statistics.active));
    call.count("bulk_volume", statistics.bulk_volume);
    if (!call.has("file")) {
        call.answer(text);
        return;
    }
    at_keyword(call, "file", [&] {
        AtomicFile file(call.text("file"));
        file.write(text);
        file.commit();
    });
    call.info("report of SGrid \"" + grid.name().str() + "\" written to " + call.text("file"));
}

const VerbRegistration registration{
    {.name = "report",
     .summary = "Tells all numbers of a grid as JSON: counts, volumes, property statistics, regions, layers, activities.",
     .keywords = {{.name = "sgrid", .kind = ValueKind::Object, .meaning = "the grid", .required = true, .object_type = "SGrid"},
                  {.name = "file", .kind = ValueKind::Path, .meaning = "where to; absent: the statement's answer"}},
     .journalled = false,
     .run = run}};

} // namespace

} // namespace lodex

#include "VerbTools.h"

#include "lodex/utils/Numbers.h"
#include "lodex/volumes/model/Merge.h"

#include "upscaling/upscalers/UpscalerInfo.h"

#include <Kelvane/upscaling/FlowUnitStatsManager.h>
#include <Lodex/geobase/Property.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace lodex {

namespace {

/// In the order of Kelvane::FlowUnitStatsManager::GuessMethod.
constexpr std::array creation_methods{"number of flow units", "deviation from mean", "deviation from mean (%)",
                                      "maximum difference (%)", "maximum threshold", "minimum threshold"};

std::string number_text(float value)
{
    return std::isnan(value) ? "-" : format_general(value, 6);
}

void run(Call& call)
{
    const CornerPointGrid& grid = grid_of(call);
    const PropertyData& property = cell_property_of(call, "property", grid.model());
    int denominator = -1;
    if (call.has("over_property")) {
        const PropertyData& below = cell_property_of(call, "over_property", grid.model());
        if (&below == &property)
            call.fail("the two properties of the ratio are the same", "over_property");
        denominator = grid.property_db()->property_index(below.name);
    }
    const auto method = std::ranges::find(creation_methods, call.text("method")) - creation_methods.begin();
    const double value = call.real("value");
    const long layers = static_cast<long>(grid.header().size[2]);
    if (layers < 2)
        call.fail("the grid has one K layer: there is nothing to group");
    if (method != Kelvane::FlowUnitStatsManager::NumberOfFlowUnits && method < Kelvane::FlowUnitStatsManager::MaximumThreshold && value < 0)
        call.fail("\"value\" is \"" + call.text("value") + "\"; expected 0 or more", "value");
    if (method == Kelvane::FlowUnitStatsManager::NumberOfFlowUnits &&
        (std::trunc(value) != value || value < 1 || value >= static_cast<double>(layers)))
        call.fail("\"value\" is \"" + call.text("value") + "\"; expected a whole number of units from 1 to " +
                      std::to_string(layers - 1),
                  "value");

    Lodex::List<int> units;
    for (long k = 0; k < layers; ++k)
        units.append(static_cast<int>(k) + 1);
    const auto manager = Kelvane::FlowUnitStatsManager::create();
    const auto execute = [&] {
        if (!manager->execute(&grid, units, grid.property_db()->property_index(property.name), call.text("average"),
                              call.text("region"), call.flag("weight_using_volume"), call.real("power"), denominator)) {
            if (manager->cancelled())
                throw Cancelled{};
            call.fail("the statistics of \"" + property.name + "\" cannot be worked out for region \"" + call.text("region") + "\"",
                      "region");
        }
    };
    execute();
    if (!manager->compute_units_from_threshold(value, static_cast<Kelvane::FlowUnitStatsManager::GuessMethod>(method), units))
        call.fail("no flow units can be made from \"" + property.name + "\"", "method");
    execute();

    const int count = units.empty() ? 0 : units[units.count() - 1];
    std::string table = "layer\tunit\tlayer mean\tflow unit mean\t% difference\theterogeneity\n";
    for (int k = 0; k < units.count(); ++k) {
        const auto at = static_cast<std::size_t>(k);
        table += std::to_string(k + 1) + "\t" + std::to_string(units[k]) + "\t" + number_text(manager->getUnitAvrgList()[at]) +
                 "\t" + number_text(manager->getFlowAvrgList()[static_cast<std::size_t>(units[k] - 1)]) + "\t" +
                 number_text(manager->getDeltas()[at]) + "\t" + number_text(manager->getStatsLayers()[at]) + "\n";
    }

    if (call.has("name")) {
        MergeRequest request;
        request.source_name = grid.name().str();
        for (int k = 0; k < units.count();) {
            int end = k;
            while (end + 1 < units.count() && units[end + 1] == units[k])
                ++end;
            if (end > k)
                request.sections.push_back({k, end});
            k = end + 1;
        }
        MergeReport report;
        GridModel merged =
            at_keyword(call, "name", [&] { return merge_sections(grid.model(), request, report, call.progress_check()); });
        const CornerPointGrid* made = add_grid(call.text("name"), std::move(merged));
        call.info("SGrid \"" + made->name().str() + "\": " + size_text(made->header().size) + " cells");
        for (const std::string& warning : report.warnings)
            call.warn(warning);
    }
    call.count("layers", static_cast<double>(layers));
    call.count("units", count);
    call.answer(table);
}

std::vector<std::string> averages()
{
    std::vector<std::string> names;
    for (const Kelvane::UpscalerInfo* info : Kelvane::upscaler_infos())
        if (std::ranges::find(info->families, "upgridder") != info->families.end())
            names.push_back(info->name);
    return names;
}

const VerbRegistration registration{
    {.name = "flow_units",
     .object_type = "SGrid",
     .summary = "Groups the K layers into flow units from the statistics of a property, tells them, and makes the coarse grid "
                "when a name is given.",
     .keywords = {{.name = "property", .kind = ValueKind::Text, .meaning = "the property", .required = true},
                  {.name = "over_property", .kind = ValueKind::Text, .meaning = "the property is divided by this one, cell by cell"},
                  {.name = "region", .kind = ValueKind::NameList, .meaning = "cells that count", .default_value = "everywhere"},
                  {.name = "average", .kind = ValueKind::Choice, .meaning = "how values of a layer or unit become one",
                   .default_value = "Arithmetic", .choices = averages()},
                  {.name = "power", .kind = ValueKind::Real, .meaning = "exponent of the average Power", .default_value = "1",
                   .min = -1, .max = 1},
                  {.name = "weight_using_volume", .kind = ValueKind::Flag, .meaning = "whether cells weigh by their bulk volume",
                   .default_value = "0"},
                  {.name = "method", .kind = ValueKind::Choice, .meaning = "how layers are grouped", .required = true,
                   .choices = {creation_methods.begin(), creation_methods.end()}},
                  {.name = "value", .kind = ValueKind::Real, .meaning = "the n of the method", .required = true},
                  {.name = "name", .kind = ValueKind::NewName, .meaning = "the coarse grid; absent: none is made"}},
     .run = run}};

} // namespace

} // namespace lodex

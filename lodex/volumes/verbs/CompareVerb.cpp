#include "VerbTools.h"

#include "lodex/utils/Numbers.h"
#include "lodex/volumes/PropertyComparison.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace lodex {

namespace {

using nlohmann::ordered_json;

ordered_json number(double value)
{
    return std::isfinite(value) ? ordered_json(value) : ordered_json(nullptr);
}

ordered_json entry(const WeightedStatistics& statistics)
{
    return {{"cells", statistics.count},          {"bulk_volume", statistics.bulk_volume},
            {"total", statistics.total},          {"mean", number(statistics.mean)},
            {"deviation", number(statistics.deviation)}, {"min", number(statistics.min)},
            {"p10", number(statistics.p10)},      {"p50", number(statistics.p50)},
            {"p90", number(statistics.p90)},      {"max", number(statistics.max)}};
}

void run(Call& call)
{
    const CornerPointGrid& fine = grid_of(call);
    CornerPointGrid& coarse = grid_of(call, "Coarse");
    if (&fine == &coarse)
        call.fail("the coarse grid is the fine grid itself", "Coarse");
    const PropertyData& fine_property = cell_property_of(call, "property", fine.model());
    const PropertyData& coarse_property = cell_property_of(call, "coarse_property", coarse.model());
    if (call.has("difference") && call.text("difference") == coarse_property.name)
        call.fail("the difference would replace the property \"" + coarse_property.name + "\" that is compared; expected another name",
                  "difference");
    const auto matched = match_grids(
        call, "mapper",
        {.fine = &fine, .coarse = &coarse, .fine_cells = fine.active_flags(), .coarse_cells = coarse.active_flags()},
        part_of_progress(call, 0, 0.4));
    PropertyComparison comparison =
        compare_properties(fine, fine_property, coarse, coarse_property, matched->mapping(), part_of_progress(call, 0.4, 1));

    ordered_json report{{"fine", {{"grid", fine.name().str()}, {"property", fine_property.name}}},
                        {"coarse", {{"grid", coarse.name().str()}, {"property", coarse_property.name}}}};
    report["fine"].update(entry(comparison.fine));
    report["coarse"].update(entry(comparison.coarse));
    const double change = comparison.fine.total != 0 ? comparison.coarse.total / comparison.fine.total - 1 : std::nan("");
    report["total_change"] = number(change);
    report["compared_cells"] = comparison.compared;
    report["mean_difference"] = comparison.mean_difference;
    report["mean_absolute_difference"] = comparison.mean_absolute;
    report["largest_absolute_difference"] = comparison.largest_absolute;
    if (comparison.largest_cell >= 0) {
        const GridSize& size = coarse.header().size;
        const std::int64_t cell = comparison.largest_cell;
        report["largest_at"] = {cell % size[0] + 1, cell / size[0] % size[1] + 1, cell / (size[0] * size[1]) + 1};
    }
    call.count("compared_cells", static_cast<double>(comparison.compared));
    call.count("fine_total", comparison.fine.total);
    call.count("coarse_total", comparison.coarse.total);
    call.count("largest_absolute_difference", comparison.largest_absolute);
    call.answer(report.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n");
    if (call.has("difference"))
        set_property(coarse, {.name = call.text("difference"), .unit = coarse_property.unit, .values = std::move(comparison.difference)});
}

const VerbRegistration registration{
    {.name = "compare_property",
     .object_type = "SGrid",
     .summary = "Compares a property of this fine grid with one of a coarse grid: totals, statistics side by side and, when asked "
                "for, the difference as a property of the coarse grid. Answers JSON.",
     .keywords = {{.name = "property", .kind = ValueKind::Text, .meaning = "the property of the fine grid", .required = true,
                   .positional = true},
                  {.name = "Coarse", .kind = ValueKind::Object, .meaning = "the coarse grid", .required = true, .object_type = "SGrid"},
                  {.name = "coarse_property", .kind = ValueKind::Text, .meaning = "the property of the coarse grid", .required = true},
                  {.name = "mapper", .kind = ValueKind::Choice, .meaning = "how fine cells are matched to coarse cells",
                   .default_value = "geometric", .choices = mapper_names()},
                  {.name = "difference", .kind = ValueKind::ItemName,
                   .meaning = "property to make on the coarse grid: its value minus the volume-weighted mean of the fine values"}},
     .run = run}};

} // namespace

} // namespace lodex

#pragma once

#include "lodex/interpreter/Verb.h"
#include "lodex/utils/Numbers.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/GridText.h"

#include <Lodex/volumes/GridObjCellMapper.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lodex {

/// The grid behind "on SGrid NAME".
[[nodiscard]] inline CornerPointGrid& grid_of(const Call& call)
{
    return as_grid(call.object());
}

/// The grid that a keyword of kind Object names.
[[nodiscard]] inline CornerPointGrid& grid_of(const Call& call, std::string_view keyword)
{
    return as_grid(call.object_of(keyword));
}

/// Properties or regions to copy. Nothing: all of them (keyword absent, or a word that means all is in the list).
[[nodiscard]] std::optional<std::vector<std::string>> properties_to_copy(const Call& call, std::string_view keyword,
                                                                         const GridModel& model);
[[nodiscard]] std::optional<std::vector<std::string>> regions_to_copy(const Call& call, std::string_view keyword,
                                                                      const GridModel& model);

/// Runs f and turns a ModelError into a failure of the statement at the keyword's value.
template <class F> decltype(auto) at_keyword(const Call& call, std::string_view keyword, F&& f)
{
    try {
        return f();
    } catch (const ModelError& error) {
        call.fail(error.what(), keyword);
    }
}

/// A property, region or layer of the model, replaced when one of the name is there, else appended.
void set_property(CornerPointGrid& grid, PropertyData property);

/// The name, or a failure that says that the grid has no such property.
const PropertyData& property_of(const Call& call, std::string_view keyword, const GridModel& model);

/// The same for a property of cells; one on points is a failure as well.
const PropertyData& cell_property_of(const Call& call, std::string_view keyword, const GridModel& model);

/// What statements call the axes I, J, K.
inline constexpr std::array<const char*, 3> axis_directions{"first axis", "second axis", "vertical"};

/// The axis that the keyword "direction" names: 0, 1, 2 for I, J, K.
[[nodiscard]] int axis_of_direction(const Call& call);

/// "1.25 %" for 0.0125.
[[nodiscard]] std::string percent_text(double part);

/// Tells what became of cells and bulk volume when a grid was made of another one, as counts and as a message.
/// `changed` names the count of cells that were merged or divided; `cells` begins the part on single cells.
template <class Report>
void report_cells_and_volumes(Call& call, const std::string& name, const Report& result, const std::string& changed,
                              std::int64_t changed_cells, const std::string& cells)
{
    const double before = result.bulk_volume_before;
    const double change = before > 0 ? (result.bulk_volume_after - before) / before : 0;
    call.count("cells", static_cast<double>(result.size_after[0] * result.size_after[1] * result.size_after[2]));
    call.count("active_cells", static_cast<double>(result.active_after));
    call.count(changed, static_cast<double>(changed_cells));
    call.count("bulk_volume_before", before);
    call.count("bulk_volume_after", result.bulk_volume_after);
    call.count("total_volume_before", result.total_volume_before);
    call.count("total_volume_after", result.total_volume_after);
    call.count("max_relative_cell_difference", result.max_relative_difference);
    call.count("mean_relative_cell_difference", result.mean_relative_difference);
    call.info("SGrid \"" + name + "\": " + size_text(result.size_before) + " -> " + size_text(result.size_after) + " cells, " +
              std::to_string(result.active_before) + " -> " + std::to_string(result.active_after) + " active; bulk volume " +
              format_general(before, 10) + " -> " + format_general(result.bulk_volume_after, 10) + " (" + percent_text(change) +
              "), " + cells + " " + percent_text(result.mean_relative_difference) + " on average, " +
              percent_text(result.max_relative_difference) + " at most");
}

/// Names of the registered cell mappers, in registry order.
[[nodiscard]] std::vector<std::string> mapper_names();

/// Matches two grids by the mapper that the keyword names and hands its warnings on; what the mapper refuses is a failure
/// of the statement at the keyword.
[[nodiscard]] std::unique_ptr<Lodex::MatchedGrids> match_grids(Call& call, std::string_view keyword,
                                                               const Lodex::MappingRequest& request,
                                                               const ProgressCheck& progress);

/// Part of the verb's progress as a check of its own, from `from` to `to` of the whole. The call must outlive it.
[[nodiscard]] inline ProgressCheck part_of_progress(const Call& call, double from, double to)
{
    return [&call, from, to](double done) { return call.progress(from + (to - from) * done); };
}

} // namespace lodex

#pragma once

#include "lodex/interpreter/Verb.h"
#include "lodex/utils/Names.h"
#include "lodex/utils/Numbers.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/Carry.h"
#include "lodex/volumes/model/GridText.h"

#include <Lodex/volumes/GridObjCellMapper.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace lodex {

/// The grid behind "on SGrid NAME" with all its arrays; fails when its file no longer gives one of them.
[[nodiscard]] inline CornerPointGrid& grid_of(const Call& call)
{
    CornerPointGrid& grid = as_grid(call.object());
    grid.load([&call](double) { return call.progress(0); });
    return grid;
}

/// The same for the grid that a keyword of kind Object names.
[[nodiscard]] inline CornerPointGrid& grid_of(const Call& call, std::string_view keyword)
{
    CornerPointGrid& grid = as_grid(call.object_of(keyword));
    grid.load([&call](double) { return call.progress(0); });
    return grid;
}

/// The grid behind "on SGrid NAME" as it is, for verbs that look at nothing but its header().
[[nodiscard]] inline CornerPointGrid& grid_head_of(const Call& call)
{
    return as_grid(call.object());
}

/// What passes on to the grid that a merge or a subdivision makes, as the statement's keywords say.
void read_carry_options(const Call& call, const CornerPointGrid& source, CarryOptions& options);

/// Puts the grid "name" into the catalogue, with the source's style when "copy_style" says so.
void add_made_grid(const Call& call, const CornerPointGrid& source, GridModel made);

/// Runs f and turns a ModelError into a failure of the statement at the keyword's value.
template <class F> decltype(auto) at_keyword(const Call& call, std::string_view keyword, F&& f)
{
    try {
        return f();
    } catch (const ModelError& error) {
        call.fail(error.what(), keyword);
    }
}

/// Puts a property or region into its list: one of the same name is replaced where it stands.
template <class Item> void put_item(std::vector<Item>& items, Item item)
{
    const auto it = std::ranges::find(items, item.name, &Item::name);
    if (it != items.end())
        *it = std::move(item);
    else
        items.push_back(std::move(item));
}

/// Puts the property into the grid.
void set_property(CornerPointGrid& grid, PropertyData property);

/// The name, or a failure that says that the grid has no such property.
const PropertyData& property_of(const Call& call, std::string_view keyword, const GridModel& model);

/// The same for a property of cells; one on points is a failure as well.
const PropertyData& cell_property_of(const Call& call, std::string_view keyword, const GridModel& model);

/// Makes the names that came in with a file legal and unique among their kind; every change is a warning.
template <class Item>
void mend_names(Call& call, std::vector<Item>& items, std::string Item::*name, const std::string& what,
                bool unique = true)
{
    std::set<std::string> taken;
    for (Item& item : items) {
        const std::string former = item.*name;
        std::string mended = mend_object_name(former);
        for (int n = 2; unique && taken.contains(mended); ++n)
            mended = mend_object_name(former) + "_" + std::to_string(n);
        taken.insert(mended);
        if (mended != former)
            call.warn("the " + what + " \"" + former + "\" is named \"" + mended + "\"");
        item.*name = mended;
    }
}

/// The same for stratigraphic units, several of which may bear one name.
inline void mend_units(Call& call, std::vector<LayerData>& layers)
{
    mend_names(call, layers, &LayerData::unit, "unit", false);
}

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

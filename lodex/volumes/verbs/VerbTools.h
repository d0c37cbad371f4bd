#pragma once

#include "lodex/interpreter/Verb.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/GridText.h"

#include <Lodex/volumes/GridObjCellMapper.h>

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

#pragma once

#include "lodex/geobase/ProjectUnits.h"
#include "lodex/volumes/model/GridModel.h"

namespace lodex {

/// Internal units (metres) in one unit of the grid's coordinates; a grid that does not state its unit is taken to be in
/// internal units.
[[nodiscard]] inline double grid_unit_scale(const GridModel& model)
{
    const auto unit = length_unit_from_word(model.frame.grid_units);
    return unit ? measurement_unit(*unit).scale() : 1;
}

} // namespace lodex

#pragma once

#include <Lodex/geobase/MapCoordinateSystem.h>

#include <optional>
#include <string_view>

namespace lodex {

/// Units of length that a project may use. The internal unit is the metre.
enum class LengthUnit { Metre, Foot };

/// Name ("m", "ft") and scale (1, 0.3048) of a unit; lives as long as the process.
[[nodiscard]] const Lodex::MeasurementUnit& measurement_unit(LengthUnit unit);

/// The unit that a word stands for, without regard to case: m, metre(s), meter(s), metric; ft, foot, feet, field.
/// Nothing for any other word.
[[nodiscard]] std::optional<LengthUnit> length_unit_from_word(std::string_view word);

/// The project's units, metres at first. GUI thread only.
[[nodiscard]] LengthUnit project_horizontal_unit();
[[nodiscard]] LengthUnit project_vertical_unit();
void set_project_units(LengthUnit horizontal, LengthUnit vertical);

/// The project's coordinate system with these units; lives as long as the process.
[[nodiscard]] Lodex::MapCoordinateSystem& project_coordinate_system();

} // namespace lodex

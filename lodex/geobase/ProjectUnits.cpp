#include "ProjectUnits.h"

#include <lodex/utils/Immortal.h>

#include <algorithm>
#include <array>

namespace lodex {

namespace {

class Metre : public Lodex::MeasurementUnit {
public:
    [[nodiscard]] Lodex::CString name() const override { return "m"; }
    [[nodiscard]] double scale() const override { return 1.0; }
};

/// The international foot.
class Foot : public Lodex::MeasurementUnit {
public:
    [[nodiscard]] Lodex::CString name() const override { return "ft"; }
    [[nodiscard]] double scale() const override { return 0.3048; }
};

class ProjectCoordinateSystem : public Lodex::MapCoordinateSystem {
public:
    [[nodiscard]] const Lodex::MeasurementUnit& vertical_unit() const override { return measurement_unit(vertical); }
    [[nodiscard]] const Lodex::MeasurementUnit& horizontal_unit() const override
    {
        return measurement_unit(horizontal);
    }
    [[nodiscard]] bool depth_positive_down() const override { return true; }

    LengthUnit horizontal = LengthUnit::Metre;
    LengthUnit vertical = LengthUnit::Metre;
};

ProjectCoordinateSystem& project()
{
    static Immortal<ProjectCoordinateSystem> system;
    return system.get();
}

bool same_word(std::string_view a, std::string_view b)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

} // namespace

const Lodex::MeasurementUnit& measurement_unit(LengthUnit unit)
{
    static Immortal<Metre> metre;
    static Immortal<Foot> foot;
    if (unit == LengthUnit::Foot)
        return foot.get();
    return metre.get();
}

std::optional<LengthUnit> length_unit_from_word(std::string_view word)
{
    constexpr std::array<std::string_view, 6> metre{"m", "metre", "metres", "meter", "meters", "metric"};
    constexpr std::array<std::string_view, 4> foot{"ft", "foot", "feet", "field"};
    const auto is_word = [word](std::string_view other) { return same_word(word, other); };
    if (std::ranges::any_of(metre, is_word))
        return LengthUnit::Metre;
    if (std::ranges::any_of(foot, is_word))
        return LengthUnit::Foot;
    return std::nullopt;
}

LengthUnit project_horizontal_unit()
{
    return project().horizontal;
}

LengthUnit project_vertical_unit()
{
    return project().vertical;
}

void set_project_units(LengthUnit horizontal, LengthUnit vertical)
{
    project().horizontal = horizontal;
    project().vertical = vertical;
}

Lodex::MapCoordinateSystem& project_coordinate_system()
{
    return project();
}

} // namespace lodex

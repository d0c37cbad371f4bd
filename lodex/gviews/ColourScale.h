#pragma once

#include <Lodex/gtools/Colormap.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Lodex {
class Style;
}

namespace lodex {

/// How the values of a property are turned into colours. It is kept in the property's style, so that every view shows
/// it and projects and copies carry it: attributes "colormap", "low_clip", "high_clip", "scale_function" ("linear", "log";
/// empty: chosen by the values), "outside_clips" ("grey"; empty: the end colours) and, of a discrete property,
/// "code_colours" ("0 #ffcc00 2 #336699": codes and their colours).
struct ColourScale {
    enum class Function { Automatic, Linear, Logarithmic };

    std::string colormap;            ///< one of Colormap::names(); empty: the first
    std::optional<double> low, high; ///< absent: least and greatest defined value of the active cells
    Function function = Function::Automatic;
    bool grey_outside = false; ///< values beyond the range are grey instead of the end colours
    std::map<std::int32_t, std::uint32_t> code_colours; ///< 0xrrggbb; codes that are not listed have one of their own

    friend bool operator==(const ColourScale&, const ColourScale&) = default;
};

[[nodiscard]] ColourScale read_colour_scale(const Lodex::Style& style);

/// Sets the attributes that differ and tells the style's observers when any does.
void write_colour_scale(Lodex::Style& style, const ColourScale& scale);

/// Round numbers between two bounds, about `count` of them, in rising order; empty when there is no range.
[[nodiscard]] std::vector<double> round_ticks(double low, double high, int count);

} // namespace lodex

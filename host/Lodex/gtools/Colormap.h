#pragma once

#include <Lodex/utils/CString.h>

#include <array>
#include <cstdint>
#include <vector>

namespace Lodex {

class Style;

/// Colours for the values of a property, taken from its style: attributes "colormap", "low_clip", "high_clip",
/// "scale_function" ("linear" or "log").
class Colormap {
public:
    using Rgb = std::array<std::uint8_t, 3>;

    /// Names that the attribute "colormap" may have; the first is used where it has none or another one.
    [[nodiscard]] static std::vector<CString> names();

    /// A copy of what the style says now.
    explicit Colormap(const Style& style);

    /// Colour at a place between the clips, 0 to 1; places outside are cut.
    [[nodiscard]] Rgb colour(double place) const;
    /// Colour of a value; values outside the clips take the end colours.
    [[nodiscard]] Rgb colour_of(double value) const;
    [[nodiscard]] double low_clip() const { return low_; }
    [[nodiscard]] double high_clip() const { return high_; }

private:
    CString map_;
    double low_ = 0, high_ = 1;
    bool log_ = false;
};

} // namespace Lodex

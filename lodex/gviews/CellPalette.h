#pragma once

#include "ColourScale.h"
#include "GridDisplay.h"

#include "lodex/volumes/model/GridModel.h"

#include <QColor>
#include <QString>

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

namespace lodex {

class CornerPointGrid;

/// Least and greatest defined value of the active cells, and the codes that they have.
struct ValueRange {
    std::optional<double> min, max;
    std::set<std::int32_t> codes; ///< discrete properties only
};

/// Values on cells. Runs on all threads.
[[nodiscard]] ValueRange value_range(const GridModel& model, const PropertyData& property);

/// Colours of a grid's cells and what their legend says. Refers to the grid's values: to be made anew when the grid or
/// the property's style changes.
class CellPalette {
public:
    using Rgb = std::array<std::uint8_t, 3>;
    struct Entry {
        QColor colour;
        QString text;
    };
    struct Tick {
        double place; ///< along the scale, 0 to 1
        QString text;
    };

    static constexpr Rgb plain{150, 168, 182};
    static constexpr Rgb undefined{128, 128, 128};

    CellPalette() = default;
    /// A property that is not there or stands on points colours all cells alike. `range`: what value_range() gave for
    /// the property, so that it need not be looked for again.
    CellPalette(const CornerPointGrid& grid, const ColourBy& by, const ValueRange* range = nullptr);

    [[nodiscard]] Rgb of(std::size_t cell) const;
    /// The same for many cells: 3 bytes for each. Runs on all threads.
    void colours(std::span<const std::uint32_t> cells, std::span<std::uint8_t> rgb) const;
    /// "0.213", "channel", "undefined"; empty when all cells are alike.
    [[nodiscard]] QString value_text(std::size_t cell) const;

    /// Name and unit of what is shown; empty when all cells are alike.
    [[nodiscard]] const QString& title() const { return title_; }
    [[nodiscard]] bool has_legend() const { return is_scale() || !entries_.empty(); }
    /// True when the colours are a scale with ticks; else they are entries.
    [[nodiscard]] bool is_scale() const { return !scale_.empty(); }
    [[nodiscard]] const std::vector<Tick>& ticks() const { return ticks_; }
    [[nodiscard]] const std::vector<Entry>& entries() const { return entries_; }
    [[nodiscard]] QColor scale_colour(double place) const;
    [[nodiscard]] double low() const { return low_; }
    [[nodiscard]] double high() const { return high_; }
    [[nodiscard]] bool logarithmic() const { return logarithmic_; }
    /// Place of a number along the scale, 0 to 1, numbers beyond the ends cut.
    [[nodiscard]] double place_of(double number) const;

    /// Colour of the n-th of several things that must be told apart.
    [[nodiscard]] static QColor distinct_colour(std::size_t n);

private:
    void use_units(const CornerPointGrid& grid);
    void use_codes(const PropertyData& property, const ColourScale& wanted, const ValueRange& range);
    void use_scale(const ColourScale& wanted, const ValueRange& range);
    void use_depth(const CornerPointGrid& grid);
    void make_ticks(const ValueRange& found);
    [[nodiscard]] Rgb of_number(double number) const;

    QString title_;
    std::vector<Entry> entries_;
    std::vector<Rgb> entry_colours_;
    std::vector<Tick> ticks_;
    const GridModel* model_ = nullptr;
    const PropertyData* property_ = nullptr;
    std::vector<std::size_t> entry_of_layer_; // by K
    std::unordered_map<std::int32_t, std::size_t> entry_of_code_;
    bool by_depth_ = false;
    std::vector<Rgb> scale_;
    double low_ = 0, high_ = 1;
    bool logarithmic_ = false, grey_outside_ = false;
};

} // namespace lodex

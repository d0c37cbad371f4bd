#pragma once

#include <Lodex/gtools/Colormap.h>

#include <QColor>
#include <QMetaType>
#include <QString>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace lodex {

class CornerPointGrid;
struct PropertyData;

/// What cells are coloured by.
struct Colouring {
    enum class Kind { None, Unit, Property };
    Kind kind = Kind::None;
    std::string property;

    friend bool operator==(const Colouring&, const Colouring&) = default;
};

/// Colours of a grid's cells and what their legend says. Refers to the grid's values: to be made anew when the grid
/// changes.
class CellColours {
public:
    struct Entry {
        QColor colour;
        QString text;
    };
    struct Tick {
        double place; ///< along the colour scale, 0 to 1
        QString text;
    };

    /// All cells alike.
    CellColours() = default;
    /// By the stratigraphic units or a property. A property's style says its colour map; clips that it does not set are
    /// the least and greatest defined value of the active cells, and a positive property that spans more than three
    /// decades is shown on a logarithmic scale. A property that is not there or stands on points colours all cells
    /// alike.
    CellColours(const CornerPointGrid& grid, const Colouring& colouring);

    [[nodiscard]] QRgb of(std::int64_t cell) const;
    /// "0.213", "channel"; empty when all cells are alike.
    [[nodiscard]] QString value_text(std::int64_t cell) const;

    /// Name and unit of what is shown; empty when all cells are alike.
    [[nodiscard]] const QString& title() const { return title_; }
    /// True when the colours are a scale with ticks; else they are entries.
    [[nodiscard]] bool is_scale() const { return map_.has_value(); }
    [[nodiscard]] QColor scale_colour(double place) const;
    [[nodiscard]] const std::vector<Tick>& ticks() const { return ticks_; }
    [[nodiscard]] const std::vector<Entry>& entries() const { return entries_; }

private:
    void use_units(const CornerPointGrid& grid);
    void use_codes(const PropertyData& property, const CornerPointGrid& grid);
    void use_scale(const PropertyData& property, const CornerPointGrid& grid);
    [[nodiscard]] std::optional<double> value(std::int64_t cell) const;
    [[nodiscard]] double place_of(double value) const;

    QString title_;
    std::vector<Entry> entries_;
    std::vector<Tick> ticks_;
    const PropertyData* property_ = nullptr;
    std::map<std::int32_t, std::size_t> entry_of_code_;
    std::vector<std::size_t> entry_of_layer_; // by K
    std::int64_t cells_per_layer_ = 0;
    std::optional<Lodex::Colormap> map_;
    std::vector<QRgb> scale_;
    bool logarithmic_ = false;
};

/// Round numbers between two bounds for an axis of about `count` ticks, in rising order; empty when there is no range.
[[nodiscard]] std::vector<double> round_numbers(double low, double high, int count);

/// A whole number with its digits in groups of three.
[[nodiscard]] QString grouped(std::int64_t number);

/// Unit of a grid's lengths ("m", "ft"); empty when the grid does not say it.
[[nodiscard]] QString length_unit_text(const CornerPointGrid& grid);

} // namespace lodex

Q_DECLARE_METATYPE(lodex::Colouring)

#include "CellSamples.h"

#include <Lodex/volumes/SGrid.h>
#include <Lodex/volumes/SGridCube.h>

#include <bit>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <variant>

namespace Kelvane {

CellSamples::CellSamples(const Lodex::SGrid& grid, int property, int denominator, const Lodex::CString& regions,
                         bool volume_weighted)
    : layers_(grid.cube()->nw() - 1),
      layer_cells_(static_cast<std::size_t>((grid.cube()->nu() - 1) * (grid.cube()->nv() - 1))),
      active_(grid.active_flags()), region_(grid, regions), numerator_(source(grid, property))
{
    if (denominator != -1)
        denominator_ = source(grid, denominator);
    if (volume_weighted)
        volumes_ = grid.bulk_volumes();
}

CellSamples::Source CellSamples::source(const Lodex::SGrid& grid, int property) const
{
    const Lodex::Property* found = grid.property_db()->property(property);
    if (!found)
        throw std::invalid_argument("the grid has no property number " + std::to_string(property));
    const Source source{found->values(), found->no_data()};
    if (std::visit([](const auto& values) { return values.size(); }, source.values) != active_.size())
        throw std::invalid_argument("the property \"" + found->name().str() + "\" does not have one value a cell");
    return source;
}

Fingerprint CellSamples::fingerprint() const
{
    Fingerprint all;
    all.add(static_cast<std::uint64_t>(layers_));
    all.add(layer_cells_);
    all.add(active_);
    region_.add_to(all);
    all.add(volumes_);
    for (const Source* source : {&numerator_, denominator_ ? &*denominator_ : nullptr}) {
        all.add(source ? source->values.index() + 1 : 0);
        if (!source)
            continue;
        std::visit([&](const auto& values) { all.add(values); }, source->values);
        all.add(source->no_data ? 1 : 0);
        all.add(std::bit_cast<std::uint64_t>(source->no_data.value_or(0)));
    }
    return all;
}

void CellSamples::read(long layer, Layer& samples) const
{
    samples.values.clear();
    samples.weights.clear();
    const std::size_t first = static_cast<std::size_t>(layer) * layer_cells_;

    // Calls take(cell, value) for each defined value of the source in the cells given by select(cell).
    const auto each = [&](const Source& source, const auto& select, const auto& take) {
        std::visit(
            [&](const auto& values) {
                using Value = std::remove_cvref_t<decltype(values[0])>;
                constexpr bool real = std::is_floating_point_v<Value>;
                // The no-data value is compared in the width that the values are stored in. NaN equals nothing.
                const auto undefined = [no_data = source.no_data](Value value) {
                    if constexpr (real)
                        return !std::isfinite(value) || (no_data && value == static_cast<Value>(*no_data));
                    else
                        return no_data && static_cast<double>(value) == *no_data;
                };
                for (std::size_t cell = first; cell < first + layer_cells_; ++cell) {
                    if (select(cell) && !undefined(values[cell]))
                        take(cell, static_cast<double>(values[cell]));
                }
            },
            source.values);
    };
    const auto keep = [&](std::size_t cell, double value) {
        if (volumes_.empty()) {
            samples.values.push_back(value);
        } else if (std::isfinite(volumes_[cell])) {
            samples.values.push_back(value);
            samples.weights.push_back(volumes_[cell]);
        }
    };
    const auto inside = [&](std::size_t cell) {
        return active_[cell] != 0 && region_.holds(cell);
    };
    const auto active = [&](std::size_t cell) {
        return active_[cell] != 0;
    };

    if (denominator_) {
        constexpr double nothing = std::numeric_limits<double>::quiet_NaN();
        std::vector<double> below(layer_cells_, nothing);
        each(*denominator_, inside, [&](std::size_t cell, double value) { below[cell - first] = value; });
        each(
            numerator_, [&](std::size_t cell) { return std::isfinite(below[cell - first]); },
            [&](std::size_t cell, double value) {
                const double ratio = value / below[cell - first];
                if (below[cell - first] != 0 && std::isfinite(ratio))
                    keep(cell, ratio);
            });
    } else if (region_.everywhere()) {
        each(numerator_, active, keep);
    } else {
        each(numerator_, inside, keep);
    }
}

} // namespace Kelvane

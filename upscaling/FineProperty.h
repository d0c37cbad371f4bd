#pragma once

#include <Lodex/geobase/Property.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace Kelvane {

/// A property of the fine grid as the upscaling reads it: its values in 64 bits, NaN where undefined (no-data value, not
/// finite, outside the region). Does not own the arrays.
class FineProperty {
public:
    /// region: one flag per cell, empty for everywhere.
    FineProperty(const Lodex::Property& property, std::span<const std::uint8_t> region);

    [[nodiscard]] const std::string& name() const { return name_; }
    [[nodiscard]] std::size_t size() const;

    /// Values of all `count` cells from `first` on.
    void read(std::int64_t first, std::int64_t count, double* out) const;
    /// Values of the cells of a list.
    void read(std::span<const std::int64_t> cells, double* out) const;

private:
    std::string name_;
    Lodex::Property::Values values_;
    std::optional<double> no_data_;
    std::span<const std::uint8_t> region_;
};

/// What replaces values that a method could not take; nothing: no replacement. Applied in this order.
struct Preparation {
    std::optional<double> negative; ///< for values below 0
    std::optional<double> zero;     ///< for 0
    std::optional<double> undefined;
};

/// What the preparation and the method did with the fine values.
struct PreparationCounts {
    std::int64_t negative_replaced = 0;
    std::int64_t zero_replaced = 0;
    std::int64_t undefined_replaced = 0;
    std::int64_t undefined_left_out = 0; ///< averages: undefined values or weights that were not replaced
    std::int64_t refused_left_out = 0;   ///< averages: values that the method cannot take
    std::int64_t undefined_filled = 0;   ///< samples that took the mean of their neighbours
    std::int64_t sealed = 0;             ///< samples of permeability 0

    void add(const PreparationCounts& other);
};

/// Replaces in place. True when all values are above 0, so that no method can refuse one.
bool prepare(std::span<double> values, const Preparation& preparation, PreparationCounts& counts);

} // namespace Kelvane

#pragma once

#include "GridModel.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace lodex {

/// True when a value of the property is defined: finite and not the no-data value, which is compared in the property's
/// own storage type.
[[nodiscard]] bool is_defined(const PropertyData& property, std::size_t index);

/// Value in 64 bits; NaN where undefined.
[[nodiscard]] double value_or_nan(const PropertyData& property, std::size_t index);

/// The undefined value of a property: its no-data value, NaN for a continuous one without. A discrete property without
/// one (or with one that does not fit 32 bits) gets -999 or, where that is one of its codes, the next of -9999, -99999,
/// ... that is not; `property` then remembers it.
double undefined_value(PropertyData& property);

/// A property of one value for all cells, 32-bit. Throws ModelError when the value does not fit.
[[nodiscard]] PropertyData constant_property(const GridModel& model, std::string name, double value);

/// Lognormal values, independent from cell to cell and the same for the same seed on every machine, 32-bit. `mean` is
/// the arithmetic mean of the distribution, `sigma` the standard deviation of the natural logarithm: the value is
/// exp(ln(mean) - sigma^2/2 + sigma n), n standard normal. Throws ModelError unless mean > 0
/// and sigma >= 0, and when a value does not fit 32 bits; Cancelled.
[[nodiscard]] PropertyData lognormal_property(const GridModel& model, std::string name, double mean, double sigma,
                                              std::uint64_t seed, const ProgressCheck& progress = {});

/// Region of the cells whose value is defined and lies in [min, max], whatever their active flag; an end that is not
/// given is open. Throws ModelError when there is no such property on cells, or min > max; Cancelled.
[[nodiscard]] RegionData region_from_range(const GridModel& model, std::string name, std::string_view property,
                                           std::optional<double> min, std::optional<double> max,
                                           const ProgressCheck& progress = {});

} // namespace lodex

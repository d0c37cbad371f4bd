#pragma once

#include <Lodex/utils/CString.h>

namespace Lodex {

/// A unit of measurement.
class MeasurementUnit {
public:
    virtual ~MeasurementUnit() = default;
    [[nodiscard]] virtual CString name() const = 0;
    /// Internal units in one of this unit: internal value = value in this unit times scale.
    [[nodiscard]] virtual double scale() const = 0;
};

/// The project's coordinate system: units and the sign of depth.
class MapCoordinateSystem {
public:
    virtual ~MapCoordinateSystem() = default;
    [[nodiscard]] virtual const MeasurementUnit& vertical_unit() const = 0;
    [[nodiscard]] virtual const MeasurementUnit& horizontal_unit() const = 0;
    /// True when depth grows downwards, as in the grids' depths.
    [[nodiscard]] virtual bool depth_positive_down() const = 0;
};

} // namespace Lodex

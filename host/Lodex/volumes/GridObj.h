#pragma once

#include <Lodex/geobase/GObj.h>

namespace Lodex {

/// A grid: cells or points that carry properties.
class GridObj : public GObj {
public:
    /// Where properties live.
    enum PropertyAlignment { Cells, Points };

    [[nodiscard]] virtual PropertyAlignment property_alignment() const = 0;

protected:
    using GObj::GObj;
};

} // namespace Lodex

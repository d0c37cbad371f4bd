#pragma once

#include <Lodex/utils/CString.h>

#include <cstdint>
#include <span>

namespace Lodex {

/// A named set of cells of a grid.
class Region {
public:
    virtual ~Region() = default;
    [[nodiscard]] virtual const CString& name() const = 0;
    /// One flag per cell, 0 or 1, I fastest; inactive cells included.
    [[nodiscard]] virtual std::span<const std::uint8_t> flags() const = 0;
    /// Made from stratigraphic units or fault blocks; passes on to every derived grid.
    [[nodiscard]] virtual bool is_model_region() const = 0;
};

} // namespace Lodex

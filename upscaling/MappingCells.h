#pragma once

#include <Lodex/volumes/GridObjCellMapper.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace Kelvane {

/// Calls visit(fine cell) for the fine cells of a coarse cell, in ascending order, whatever the form of the mapping, until it
/// answers false. Sizes are cells along I, J, K; indices are linear and 0-based.
template <class Visit>
void visit_fine_cells(const Lodex::CellMapping& mapping, const std::array<std::int64_t, 3>& fine_size,
                      const std::array<std::int64_t, 3>& coarse_size, std::int64_t coarse_cell, const Visit& visit)
{
    const auto at = static_cast<std::size_t>(coarse_cell);
    if (!mapping.has_boxes()) {
        for (std::int64_t n = mapping.offsets[at]; n < mapping.offsets[at + 1]; ++n)
            if (!visit(mapping.cells[static_cast<std::size_t>(n)]))
                return;
        return;
    }
    if (!mapping.coarse_flags[at])
        return;
    const auto range = [&](std::size_t axis, std::int64_t index) { return mapping.boxes[axis][static_cast<std::size_t>(index)]; };
    const Lodex::IndexRange i = range(0, coarse_cell % coarse_size[0]), j = range(1, coarse_cell / coarse_size[0] % coarse_size[1]),
                            k = range(2, coarse_cell / (coarse_size[0] * coarse_size[1]));
    for (std::int64_t layer = k.first; layer <= k.last; ++layer)
        for (std::int64_t row = j.first; row <= j.last; ++row)
            for (std::int64_t column = i.first; column <= i.last; ++column) {
                const std::int64_t cell = column + fine_size[0] * (row + fine_size[1] * layer);
                if (mapping.fine_flags[static_cast<std::size_t>(cell)] && !visit(cell))
                    return;
            }
}

/// Calls f(fine cell) for all of them.
template <class F>
void for_fine_cells(const Lodex::CellMapping& mapping, const std::array<std::int64_t, 3>& fine_size,
                    const std::array<std::int64_t, 3>& coarse_size, std::int64_t coarse_cell, const F& f)
{
    visit_fine_cells(mapping, fine_size, coarse_size, coarse_cell, [&f](std::int64_t cell) {
        f(cell);
        return true;
    });
}

} // namespace Kelvane

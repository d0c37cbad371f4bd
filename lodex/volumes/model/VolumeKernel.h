#pragma once

#include "GridModel.h"

#include "upscaling/kernels/CellGeometry.h"

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace lodex {

/// A run of neighbouring pillars with their slopes worked out: x = x0 + (depth - z0) * sx, y likewise. Five arrays so
/// that loops over cells load them lane by lane.
class PillarRow {
public:
    /// Takes the pillars first ... first + count - 1 of the grid's pillar array.
    void load(const RealArray& coord, std::int64_t first, std::int64_t count);
    /// Takes the pillars of `other` at the given places.
    void pick(const PillarRow& other, std::span<const std::int64_t> places);
    void swap(PillarRow& other) noexcept
    {
        values_.swap(other.values_);
        std::swap(count_, other.count_);
    }

    [[nodiscard]] std::int64_t count() const { return count_; }
    [[nodiscard]] const double* x0() const { return values_.data(); }
    [[nodiscard]] const double* y0() const { return values_.data() + count_; }
    [[nodiscard]] const double* z0() const { return values_.data() + 2 * count_; }
    [[nodiscard]] const double* sx() const { return values_.data() + 3 * count_; }
    [[nodiscard]] const double* sy() const { return values_.data() + 4 * count_; }

private:
    std::vector<double> values_;
    std::int64_t count_ = 0;
};

/// Signed volumes of `cells` neighbouring cells along I between two pillar rows (J sides 0 and 1, cells + 1 pillars
/// each). zBC points at the depths of the row at J side B and K side C, two a cell. A volume that is not finite becomes
/// 0.
void volume_row(std::int64_t cells, const PillarRow& back, const PillarRow& front, const float* z00, const float* z10,
                const float* z01, const float* z11, double* volumes);
void volume_row(std::int64_t cells, const PillarRow& back, const PillarRow& front, const double* z00, const double* z10,
                const double* z01, const double* z11, double* volumes);

using Kelvane::depth_offset;

} // namespace lodex

#pragma once

#include "GridModel.h"
#include "SubdividePlan.h"
#include "VolumeKernel.h"

#include <cmath>
#include <cstdint>
#include <vector>

namespace lodex {

/// Pillars of the grid divided along I (axis 0) or J (axis 1), in 64 bits, old ones with their very numbers; along K
/// the old array. See subdivide_sections() for where new pillars stand. Throws Cancelled.
[[nodiscard]] RealArray subdivided_pillars(const GridModel& source, int axis, const AxisDivision& division,
                                           const ProgressCheck& progress);

/// Where a new pillar stands between the two old ones of an edge: gives the depth at which it meets an edge from the
/// point of the first pillar at one depth to the point of the second pillar at another.
///
/// With P, P' the first and second pillar and Q the new one, all as functions of depth z: D(z) = P' - P, R(z) = Q - P.
/// On the edge from P(a) to P'(b), which runs along d = P'(b) - P(a), the point at the share g has the depth
/// a + g (b - a); Q at that depth lies beside it when (Q - P(a)) . d = g d . d, which makes
/// g = R(a) . d / ((D(b) - (b - a) R') . d).
class EdgePlace {
public:
    EdgePlace() = default;
    /// Pillars number p, p' and q of their rows. `share` is taken where the pillars do not tell (they meet or cross).
    EdgePlace(const PillarRow& first, std::int64_t p, const PillarRow& second, std::int64_t p2, const PillarRow& made,
              std::int64_t q, double share);

    [[nodiscard]] double depth(double a, double b) const
    {
        const double rise = b - a;
        if (rise == 0 || where_ == Where::First)
            return a;
        if (where_ == Where::Second)
            return b;
        const double above = a - z_, below = b - z_;
        const double ex = dx_ + below * dsx_, ey = dy_ + below * dsy_;
        const double vx = ex + rise * sx_, vy = ey + rise * sy_;
        const double gap = (rx_ + above * rsx_) * vx + (ry_ + above * rsy_) * vy;
        const double whole = (ex - rise * rsx_) * vx + (ey - rise * rsy_) * vy;
        double share = gap / whole;
        if (!(whole > 0) || !std::isfinite(share))
            share = share_;
        share = share < 0 ? 0 : share > 1 ? 1 : share;
        return a + share * rise;
    }

private:
    enum class Where : std::uint8_t { Between, First, Second };
    double z_ = 0;                               // reference depth
    double sx_ = 0, sy_ = 0;                     // slope of the first pillar
    double dx_ = 0, dy_ = 0, dsx_ = 0, dsy_ = 0; // second less first pillar at the reference depth, and its slope
    double rx_ = 0, ry_ = 0, rsx_ = 0, rsy_ = 0; // new less first pillar
    double share_ = 0;
    Where where_ = Where::Between;
};

} // namespace lodex

#pragma once

#include "BlockPlan.h"
#include "Lanes.h"

namespace Kelvane::flow {

/// Local matrices of brick samples, for one block (Number = double) or eight (LaneVector). `c` are permeability times
/// volume over squared length along the three axes; `s` the lower triangle, pair r (r + 1) / 2 + c. Their rows sum to
/// 0.

/// Lowest-order mixed hybrid element with the mean pressure of the sample and the sealed faces eliminated
/// (P.-A. Raviart, J.-M. Thomas, Lect. Notes Math. 606, 1977). The mass matrix of one axis is [2 -1; -1 2] / (6 c) in
/// outward fluxes; its inverse is [4 2; 2 4] c, or 3 c for one face when the other is sealed.
template <class Number> LANES_INLINE void mixed_brick(const Number* c, const int* dofs, Number* s)
{
    Number own[6];  // flux out of a face by its own pressure
    Number mean[6]; // flux out of a face by the sample's mean pressure
    Number total = c[0] * 0.0;
    for (int axis = 0; axis < 3; ++axis) {
        const bool low = dofs[2 * axis] != sealed_dof;
        const bool high = dofs[2 * axis + 1] != sealed_dof;
        const double w = low && high ? 4.0 : 3.0;
        const double m = low && high ? 6.0 : 3.0;
        own[2 * axis] = c[axis] * (low ? w : 0.0);
        own[2 * axis + 1] = c[axis] * (high ? w : 0.0);
        mean[2 * axis] = c[axis] * (low ? m : 0.0);
        mean[2 * axis + 1] = c[axis] * (high ? m : 0.0);
        total += mean[2 * axis] + mean[2 * axis + 1];
    }
    const Number inverse = total > 0.0 ? 1.0 / total : total;
    for (int r = 0; r < 6; ++r) {
        const Number part = mean[r] * inverse;
        for (int q = 0; q <= r; ++q)
            s[r * (r + 1) / 2 + q] = -part * mean[q];
        s[r * (r + 1) / 2 + r] += own[r];
    }
    for (int axis = 0; axis < 3; ++axis) {
        if (dofs[2 * axis] != sealed_dof && dofs[2 * axis + 1] != sealed_dof)
            s[pair_count(2 * axis + 1) + 2 * axis] += 2.0 * c[axis];
    }
}

/// Trilinear conforming element.
template <class Number> LANES_INLINE void conforming_brick(const Number* c, Number* s)
{
    int entry = 0;
    for (int r = 0; r < 8; ++r) {
        for (int q = 0; q <= r; ++q, ++entry) {
            double factor[3];
            for (int axis = 0; axis < 3; ++axis) {
                factor[axis] = 1;
                for (int a = 0; a < 3; ++a) {
                    const bool same = ((r >> a) & 1) == ((q >> a) & 1);
                    if (a == axis)
                        factor[axis] *= same ? 1.0 : -1.0;
                    else
                        factor[axis] *= same ? 1.0 / 3 : 1.0 / 6;
                }
            }
            s[entry] = factor[0] * c[0] + factor[1] * c[1] + factor[2] * c[2];
        }
    }
}

/// Conductance of two half conductances one after the other; 0 where either is.
template <class Number> LANES_INLINE void in_series(const Number& a, const Number& b, Number& result)
{
    const Number sum = a + b;
    result = sum > 0.0 ? a * (b / sum) : sum;
}

} // namespace Kelvane::flow

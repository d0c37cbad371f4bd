#pragma once

#include "Block.h"

#include <Lodex/utils/Progress.h>

#include <cstddef>

namespace Kelvane::flow {

/// Effective permeability of a block of many samples (hundreds to millions), taken as its brick: `corners` is not read.
///
/// Fast: conjugate gradients preconditioned by one multilevel cycle over a seven-point network (see KCycle). TwoPoint
/// is that network itself, Mixed reduced to the samples lies within 1 to 3 times it and Conforming within 1/9 to 1
/// times the one between the corners, so the number of iterations does not grow with the number of samples. Some 150
/// bytes a sample.
///
/// Exact: factorisation in nested dissection order with iterative refinement. Its memory grows with samples^(4/3) and
/// its work with samples^2: up to 1 GiB and 4e11 operations, which is about 50^3 samples. Beyond that conjugate
/// gradients go down to a residual of 1e-12 and the result says `backup`.
///
/// Components are energy products of the pressures, so the tensor is symmetric by itself and its error is of second
/// order in that of the pressure; for the exact solution they are the volume averages of the flux. Samples with a
/// permeability of 0 (negative, not finite) along an axis are sealed along it; parts that reach no fixed pressure, or a
/// single one, take no part. Where nothing can flow the answer is 0.
///
/// `backup` is set when the tolerance was not reached (`residual` then says how far it came), when a direct solution
/// was too large, and when a size of the brick is not positive and finite (1 stands in).
///
/// The result is the same to the last bit on any number of threads. Progress is asked at least a few times a second.
/// Throws Lodex::Cancelled when it answers false, std::invalid_argument for arrays that do not fit `n`.
[[nodiscard]] BlockResult solve_large_brick(const Block& block, const BlockOptions& options,
                                            const Lodex::ProgressCheck& progress = {});

} // namespace Kelvane::flow

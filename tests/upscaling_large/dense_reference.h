#pragma once

#include "large_model.h"

/// The tensor (II, JJ, KK, IJ, IK, JK) from dense matrices put together in the plainest way: all fluxes and pressures
/// for the mixed method, Gauss points for the conforming one, mean flux against mean gradient. For some hundred
/// samples.
[[nodiscard]] std::array<double, 6> dense_reference(const Model& model, Kelvane::flow::Boundary boundary,
                                                    Kelvane::flow::Discretisation discretisation);

#pragma once

#include "DirectionalUpscaler.h"

namespace Kelvane {

/// Harmonic along the flow, then arithmetic across it: a lower bound.
class HarmonicArithmeticUpscaler final : public DirectionalUpscaler {
public:
    HarmonicArithmeticUpscaler() : DirectionalUpscaler(flow::DirectionalMean::HarmonicArithmetic) {}
};

} // namespace Kelvane

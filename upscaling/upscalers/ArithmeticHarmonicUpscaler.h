#pragma once

#include "DirectionalUpscaler.h"

namespace Kelvane {

/// Arithmetic across the flow, then harmonic along it: an upper bound.
class ArithmeticHarmonicUpscaler final : public DirectionalUpscaler {
public:
    ArithmeticHarmonicUpscaler() : DirectionalUpscaler(flow::DirectionalMean::ArithmeticHarmonic) {}
};

} // namespace Kelvane

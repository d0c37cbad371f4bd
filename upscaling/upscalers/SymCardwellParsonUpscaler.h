#pragma once

#include "DirectionalUpscaler.h"

namespace Kelvane {

/// The geometric mean over the six orders of one harmonic and two arithmetic means.
class SymCardwellParsonUpscaler final : public DirectionalUpscaler {
public:
    SymCardwellParsonUpscaler() : DirectionalUpscaler(flow::DirectionalMean::SymCardwellParson) {}
};

} // namespace Kelvane

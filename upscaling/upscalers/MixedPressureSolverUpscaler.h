#pragma once

#include "FlowUpscaler.h"

namespace Kelvane {

/// The flow in the true cell by a mixed discretisation, right for skewed cells.
class MixedPressureSolverUpscaler final : public FlowUpscaler {
public:
    MixedPressureSolverUpscaler() : FlowUpscaler(flow::Discretisation::Mixed, true) {}
};

} // namespace Kelvane

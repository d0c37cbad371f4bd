#pragma once

#include "FlowUpscaler.h"

namespace Kelvane {

/// The flow in the true cell by two-point finite differences.
class DFPressureSolverUpscaler final : public FlowUpscaler {
public:
    DFPressureSolverUpscaler() : FlowUpscaler(flow::Discretisation::TwoPoint, true) {}
};

} // namespace Kelvane

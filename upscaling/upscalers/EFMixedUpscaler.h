#pragma once

#include "FlowUpscaler.h"

namespace Kelvane {

/// The flow in the brick of the mean cell sizes by lowest-order mixed hybrid finite elements: a lower bound.
class EFMixedUpscaler final : public FlowUpscaler {
public:
    EFMixedUpscaler() : FlowUpscaler(flow::Discretisation::Mixed, false) {}
};

} // namespace Kelvane

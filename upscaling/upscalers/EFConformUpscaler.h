#pragma once

#include "FlowUpscaler.h"

namespace Kelvane {

/// The pressure in the brick of the mean cell sizes by trilinear conforming finite elements: an upper bound.
class EFConformUpscaler final : public FlowUpscaler {
public:
    EFConformUpscaler() : FlowUpscaler(flow::Discretisation::Conforming, false) {}
};

} // namespace Kelvane

#pragma once

#include "DirectionalUpscaler.h"

namespace Kelvane {

/// The geometric mean of the two bounds.
class CardwellParsonUpscaler final : public DirectionalUpscaler {
public:
    CardwellParsonUpscaler() : DirectionalUpscaler(flow::DirectionalMean::CardwellParson) {}
};

} // namespace Kelvane

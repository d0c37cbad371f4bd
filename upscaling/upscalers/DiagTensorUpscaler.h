#pragma once

#include "DirectionalUpscaler.h"

namespace Kelvane {

/// SymCardwellParson of each component along its own axis.
class DiagTensorUpscaler final : public DirectionalUpscaler {
public:
    DiagTensorUpscaler() : DirectionalUpscaler(flow::DirectionalMean::SymCardwellParson) {}
    [[nodiscard]] bool tensor_input() const override { return true; }

protected:
    [[nodiscard]] std::array<double, 3> diagonal(const flow::Block& block) const override
    {
        return flow::diagonal_means(block.n, block.ki, block.kj, block.kk);
    }
};

} // namespace Kelvane

#pragma once

#include "upscaling/kernels/flow/Block.h"

#include <Kelvane/upscaling/Upscaler.h>
#include <Lodex/utils/Progress.h>

#include <span>

namespace Kelvane {

/// A method that looks at the places of the fine cells: permeability from the samples of a coarse cell.
class LocalUpscaler : public Upscaler {
public:
    /// True when it reads three fine permeabilities (along I, J, K), false when one stands for all.
    [[nodiscard]] virtual bool tensor_input() const = 0;
    /// True when the boundary condition matters; else the result is a diagonal.
    [[nodiscard]] virtual bool uses_boundary() const { return false; }
    /// True when the method looks at the cell's true shape (Block::corners), false when the brick is enough.
    [[nodiscard]] virtual bool true_geometry() const { return false; }
    /// One result per block, the same for any number of threads. Throws Cancelled.
    virtual void upscale(std::span<const flow::Block> blocks, const flow::BlockOptions& options,
                         std::span<flow::BlockResult> results, const Lodex::ProgressCheck& progress) const = 0;

    [[nodiscard]] bool accepts_negative(double) const final { return false; }
    [[nodiscard]] bool accepts_zero(double) const final { return true; }
};

} // namespace Kelvane

#pragma once

#include "LocalUpscaler.h"

namespace Kelvane {

/// Permeability from a solved pressure field.
class FlowUpscaler : public LocalUpscaler {
public:
    [[nodiscard]] bool tensor_input() const override { return true; }
    [[nodiscard]] bool uses_boundary() const override { return true; }
    [[nodiscard]] bool true_geometry() const override { return true_geometry_; }
    /// The discretisation in `options` is not looked at: it is the method's own.
    void upscale(std::span<const flow::Block> blocks, const flow::BlockOptions& options,
                 std::span<flow::BlockResult> results, const Lodex::ProgressCheck& progress) const final;

protected:
    FlowUpscaler(flow::Discretisation discretisation, bool true_geometry)
        : discretisation_(discretisation), true_geometry_(true_geometry)
    {
    }

private:
    flow::Discretisation discretisation_;
    bool true_geometry_;
};

} // namespace Kelvane

#pragma once

#include "LocalUpscaler.h"

#include "upscaling/kernels/flow/DirectionalMeans.h"

namespace Kelvane {

/// Arithmetic and harmonic means of lines and planes of samples: a diagonal, no flow is solved.
class DirectionalUpscaler : public LocalUpscaler {
public:
    [[nodiscard]] bool tensor_input() const override { return false; }
    void upscale(std::span<const flow::Block> blocks, const flow::BlockOptions& options,
                 std::span<flow::BlockResult> results, const Lodex::ProgressCheck& progress) const final;

protected:
    explicit DirectionalUpscaler(flow::DirectionalMean mean) : mean_(mean) {}
    /// Along I, J, K.
    [[nodiscard]] virtual std::array<double, 3> diagonal(const flow::Block& block) const;

private:
    flow::DirectionalMean mean_;
};

} // namespace Kelvane

#pragma once

#include "AverageUpscaler.h"

namespace Kelvane {

/// The geometric mean. Formula: Average::Geometric.
class GeometricUpscaler final : public KernelAverage<Average::Geometric> {};

} // namespace Kelvane

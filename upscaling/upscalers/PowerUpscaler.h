#pragma once

#include "AverageUpscaler.h"

namespace Kelvane {

/// The power mean: harmonic at -1, geometric at 0, arithmetic at 1. Formula: Average::Power.
class PowerUpscaler final : public KernelAverage<Average::Power> {};

} // namespace Kelvane

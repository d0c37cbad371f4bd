#pragma once

#include "AverageUpscaler.h"

namespace Kelvane {

/// The harmonic mean. Formula: Average::Harmonic.
class HarmonicUpscaler final : public KernelAverage<Average::Harmonic> {};

} // namespace Kelvane

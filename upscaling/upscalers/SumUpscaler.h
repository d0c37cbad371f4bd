#pragma once

#include "AverageUpscaler.h"

namespace Kelvane {

/// The sum. Formula: Average::Sum.
class SumUpscaler final : public KernelAverage<Average::Sum> {};

} // namespace Kelvane

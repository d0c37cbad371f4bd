#pragma once

#include "AverageUpscaler.h"

namespace Kelvane {

/// The smallest value. Formula: Average::Minimum.
class MinUpscaler final : public KernelAverage<Average::Minimum> {};

} // namespace Kelvane

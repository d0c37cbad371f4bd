#pragma once

#include "AverageUpscaler.h"

namespace Kelvane {

/// The largest value. Formula: Average::Maximum.
class MaxUpscaler final : public KernelAverage<Average::Maximum> {};

} // namespace Kelvane

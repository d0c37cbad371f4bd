#pragma once

#include "AverageUpscaler.h"

namespace Kelvane {

/// The value in the middle, the mean of the two middle ones of an even number. Formula: Average::Median.
class MedianUpscaler final : public KernelAverage<Average::Median> {};

} // namespace Kelvane

#pragma once

#include "AverageUpscaler.h"

namespace Kelvane {

/// The most frequent value, the smallest of several. Formula: Average::MostProbable.
class MostProbableUpscaler final : public KernelAverage<Average::MostProbable> {};

} // namespace Kelvane

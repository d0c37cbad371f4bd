#pragma once

#include "AverageUpscaler.h"

namespace Kelvane {

/// How many defined values there are. Formula: Average::Number.
class NumberUpscaler final : public KernelAverage<Average::Number> {};

} // namespace Kelvane

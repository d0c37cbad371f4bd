#pragma once

#include "AverageUpscaler.h"

namespace Kelvane {

/// The arithmetic mean. Formula: Average::Arithmetic.
class ArithmeticUpscaler final : public KernelAverage<Average::Arithmetic> {};

} // namespace Kelvane

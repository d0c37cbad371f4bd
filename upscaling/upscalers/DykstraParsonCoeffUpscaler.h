#pragma once

#include "AverageUpscaler.h"

namespace Kelvane {

/// The Dykstra-Parsons coefficient of heterogeneity: 0 for equal values, towards 1 for wild ones. Formula: Average::DykstraParsons.
class DykstraParsonCoeffUpscaler final : public KernelAverage<Average::DykstraParsons> {};

} // namespace Kelvane

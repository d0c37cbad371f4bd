#pragma once

#include "upscaling/kernels/Summation.h"

namespace lodex {

using Kelvane::CompensatedSum;
using Kelvane::pairwise_sum;

} // namespace lodex

#pragma once

#include "upscaling/kernels/ParallelBlocks.h"

namespace lodex {

using Kelvane::check_progress;
using Kelvane::for_blocks;
using Kelvane::partial_progress;

} // namespace lodex

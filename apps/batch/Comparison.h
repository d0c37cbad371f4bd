#pragma once

#include "lodex/volumes/model/GridModel.h"

#include <string>
#include <vector>

namespace lodex {

/// How far two numbers may be apart: |a - b| <= abs + rel * max(|a|, |b|).
struct Tolerance {
    double abs = 0;
    double rel = 0;
};

/// What differs between two models, one line each, most important first; empty when nothing does. Compared are size, active
/// flags, pillars and corner depths, properties (by name, undefined against undefined), regions, layers and faults.
[[nodiscard]] std::vector<std::string> differences(const GridModel& a, const GridModel& b, const Tolerance& tolerance);

} // namespace lodex

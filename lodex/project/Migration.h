#pragma once

#include <nlohmann/json_fwd.hpp>

namespace lodex {

/// Brings contents of an earlier format to the present one. Throws nlohmann's exceptions where they lack what their format
/// says, std::out_of_range for a format without a way from it.
void migrate_contents(nlohmann::json& contents, int format);

} // namespace lodex

#pragma once

#include "lodex/utils/Errors.h"

#include <filesystem>
#include <map>
#include <string>

namespace lodex {

/// Writes what the catalogue, the units and the journal hold, and these parts. Throws FileError, Cancelled.
void write_project(const std::filesystem::path& path, const std::map<std::string, std::string>& parts,
                   const ProgressCheck& check);

} // namespace lodex

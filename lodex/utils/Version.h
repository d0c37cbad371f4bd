#pragma once

namespace lodex {

/// Version of the programs and libraries, "MAJOR.MINOR.PATCH".
[[nodiscard]] const char* program_version();

} // namespace lodex

#pragma once

#include <string>

namespace lodex {

/// True when the file is a project.
[[nodiscard]] bool is_project(const std::string& path);

/// Prints what a project holds: names and sizes, no values. Arrays are not read. False with a message on standard error
/// when the project cannot be opened.
[[nodiscard]] bool show_project(const std::string& path, bool json);

} // namespace lodex

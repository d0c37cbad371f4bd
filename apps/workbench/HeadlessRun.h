#pragma once

#include <filesystem>
#include <ostream>

namespace lodex {

/// The workbench's work without a person and without a display: makes the example field, coarsens it through the merge
/// dialog's own widgets, and leaves in the folder pictures of dialog and grids, the coarse model, reports of both grids
/// and the journal. What was made is told on `results`, a failure with its reason on `problems`. Needs a QApplication.
/// Returns 0, or 1 after a failure.
[[nodiscard]] int run_headless(const std::filesystem::path& folder, std::ostream& results, std::ostream& problems);

} // namespace lodex

#pragma once

#include <string>

namespace Kelvane {

/// The page of operators in Markdown: what every upscaler and every mapper declares of itself, with its formula and source.
[[nodiscard]] std::string operator_page();

} // namespace Kelvane

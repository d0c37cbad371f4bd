#pragma once

namespace lodex {

/// Colours of all windows.
enum class Theme { System, Light, Dark };

/// Gives the application the theme's palette; System brings back what the platform had at the first call. Colours that
/// windows choose by themselves follow the palette.
void use_theme(Theme theme);
[[nodiscard]] Theme current_theme();

} // namespace lodex

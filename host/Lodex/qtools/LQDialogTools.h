#pragma once

class QWidget;

namespace Lodex {

class LQDialogTools {
public:
    /// The host's current top-level window; null when it has none.
    [[nodiscard]] static QWidget* active_top_widget();
};

} // namespace Lodex

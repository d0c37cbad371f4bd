#pragma once

class QWidget;

namespace Lodex {

/// What a dialog needs to know of the windows around it.
class LQDialogTools {
public:
    /// The host's current top-level window; null when it has none.
    [[nodiscard]] static QWidget* active_top_widget();
};

} // namespace Lodex

#pragma once

#include <QEvent>
#include <QObject>

namespace lodex {

/// What a person does that could start something in a window.
[[nodiscard]] bool is_user_input(QEvent::Type type);

/// Tells whether a long command is running on the GUI thread while events are processed below it. What must not happen
/// in the middle of such a command (closing a window whose slot is still on the stack, a message box) waits for
/// released(). GUI thread only.
class BusyState : public QObject {
    Q_OBJECT

public:
    [[nodiscard]] static BusyState& instance();

    [[nodiscard]] bool busy() const { return depth_ > 0; }
    /// Calls nest.
    void enter() { ++depth_; }
    void leave();

signals:
    /// The last leave() came.
    void released();

private:
    int depth_ = 0;
};

} // namespace lodex

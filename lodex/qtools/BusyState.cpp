#include <lodex/qtools/BusyState.h>

namespace lodex {

bool is_user_input(QEvent::Type type)
{
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::Shortcut:
    case QEvent::Wheel:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TabletPress:
    case QEvent::TabletRelease:
    case QEvent::ContextMenu:
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
    case QEvent::Close: return true;
    default: return false;
    }
}

BusyState& BusyState::instance()
{
    static BusyState state;
    return state;
}

void BusyState::leave()
{
    if (depth_ > 0 && --depth_ == 0)
        emit released();
}

} // namespace lodex

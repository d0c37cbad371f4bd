#pragma once

#include <QString>
#include <QWidget>

namespace lodex {

/// Names a widget for tests and assistive tools and says what it does.
template <class Widget> Widget* named(Widget* widget, const char* name, const QString& tip)
{
    widget->setObjectName(name);
    widget->setToolTip(tip);
    widget->setAccessibleDescription(tip);
    return widget;
}

} // namespace lodex

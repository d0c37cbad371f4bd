#include <Lodex/qtools/LQDialogTools.h>

#include <lodex/qtools/MainWindowRegistry.h>

#include <QApplication>
#include <QPointer>
#include <QWidget>

namespace lodex {

namespace {

QPointer<QWidget>& registered_window()
{
    static QPointer<QWidget> window;
    return window;
}

} // namespace

void set_main_window(QWidget* window)
{
    registered_window() = window;
}

QWidget* main_window()
{
    return registered_window();
}

} // namespace lodex

namespace Lodex {

QWidget* LQDialogTools::active_top_widget()
{
    QWidget* window = QApplication::activeWindow();
    // A menu or a list that is just open is no parent for a dialog: it goes away at once.
    while (window && (window->windowType() == Qt::Popup || window->windowType() == Qt::ToolTip))
        window = window->parentWidget() ? window->parentWidget()->window() : nullptr;
    return window ? window : lodex::main_window();
}

} // namespace Lodex

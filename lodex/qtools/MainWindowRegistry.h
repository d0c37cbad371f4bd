#pragma once

class QWidget;

namespace lodex {

/// Tells the dialogs which window the application calls its main one (not owned; null: none). A window that dies is
/// forgotten by itself.
void set_main_window(QWidget* window);
/// Null when the application has set none, or it is gone.
[[nodiscard]] QWidget* main_window();

} // namespace lodex

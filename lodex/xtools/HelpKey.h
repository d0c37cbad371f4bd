#pragma once

class QWidget;

namespace lodex {

/// Lets F1 in a window open a page of the guide, "user-doc/numbers.html", or the contents where there is no such page.
void set_help_page(QWidget& window, const char* path);

} // namespace lodex

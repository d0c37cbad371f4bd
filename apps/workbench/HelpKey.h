#pragma once

class QWidget;

namespace lodex {

/// Lets F1 in a window open the guide's page of the workbench at this anchor, or the contents where there is no such
/// page.
void set_help_anchor(QWidget& window, const char* anchor);

} // namespace lodex

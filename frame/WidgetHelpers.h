#pragma once

#include <Lodex/utils/CString.h>

#include <QString>

class QLayout;
class QWidget;

namespace Kelvane {

/// A name for an object that is going to be made: base when no object of the catalogue bears it, else the first free
/// one of base_0, base_1, ... Returns true when base itself was taken.
bool build_unused_name(const Lodex::CString& base, QString& result);

/// Adds a section heading to a layout: the title in colour (rich text; none when empty), then a horizontal rule when
/// with_rule is set. An empty colour means "#004fa3". Does nothing without a parent or a layout.
void add_separator(QWidget* parent, QLayout* layout, bool with_rule, const QString& title, const QString& color);

} // namespace Kelvane

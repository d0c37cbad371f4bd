#pragma once

#include <QBoxLayout>
#include <QCheckBox>
#include <QFormLayout>
#include <QLabel>

#include <initializer_list>

// Small pieces that the pages of the wizard are put together from.

namespace Kelvane {

/// Rows one below the other, without a margin of their own.
[[nodiscard]] QVBoxLayout* new_rows(QWidget* content);

/// Fields with their labels before them, without a margin of their own. The fields take the room there is.
[[nodiscard]] QFormLayout* new_form(QWidget* content);

/// A label that leads to its field and says the same of it.
[[nodiscard]] QLabel* label_of(QWidget* field, const QString& text);

/// Gives the labels of fields in forms one width, so that the fields stand below each other.
void align_labels(std::initializer_list<QWidget*> fields);

[[nodiscard]] QCheckBox* new_check_box(QWidget* parent, const QString& name, const QString& text, const QString& tip);

/// Left edge of what belongs to a check box above it, in pixels.
[[nodiscard]] int indent_under(const QCheckBox* box);

} // namespace Kelvane

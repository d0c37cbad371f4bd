#pragma once

#include <Lodex/utils/CString.h>

#include <QString>
#include <QStringList>

namespace Kelvane {

/// What kind of property is upscaled.
enum class PropertyClass { None, Porosity, Permeability, Indicator };

/// How a registered path or a type is called in lists and commands: the name that the host shows for its last
/// component.
[[nodiscard]] QString shown_name(const Lodex::CString& path);

/// Texts of the classes, in the order of the list.
[[nodiscard]] QStringList property_class_names();
/// The class of a text of the list; None for any other text.
[[nodiscard]] PropertyClass property_class_of(const QString& text);

/// Texts of the methods registered for a class, in registry order; empty for None.
[[nodiscard]] QStringList method_names(PropertyClass property_class);

// What is known of a method by its text.
/// Takes one fine property along each axis.
[[nodiscard]] bool takes_tensor(const QString& method);
/// Gives one coarse property along each axis.
[[nodiscard]] bool gives_tensor(const QString& method);
[[nodiscard]] bool takes_power(const QString& method);
/// An average whose cells can be weighted.
[[nodiscard]] bool takes_weights(const QString& method);
/// Its boundary conditions can be chosen.
[[nodiscard]] bool takes_boundary(const QString& method);
/// Its solver can be chosen.
[[nodiscard]] bool takes_exact(const QString& method);

// What the summary shows of a method. These are sets of their own: what is sent may hold more or less than what is
// shown.
[[nodiscard]] bool summary_shows_fine_tensor(const QString& method);
[[nodiscard]] bool summary_shows_coarse_tensor(const QString& method);
[[nodiscard]] bool summary_shows_boundary(const QString& method);
[[nodiscard]] bool summary_shows_solver(const QString& method);

} // namespace Kelvane

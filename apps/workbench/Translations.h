#pragma once

#include <QString>
#include <QStringList>

namespace lodex {

/// Languages that texts of windows can be shown in, as two letters; English ("en") first. Commands, names of methods
/// and whatever else may stand in a command are never translated.
[[nodiscard]] QStringList languages();

/// The best of languages() for the user's wishes ("fr-CA", "en", ...), the most wanted first.
[[nodiscard]] QString language_for(const QStringList& wanted);

/// Shows the texts of windows that are made from now on in this language. False, with English texts, when there are no
/// texts in it.
bool use_language(const QString& language);
[[nodiscard]] QString current_language();

} // namespace lodex

#pragma once

#include "Verb.h"

namespace lodex {

/// Checks of a statement that need no catalogue: its verb, its keywords and values. Throws CommandError with the place.
void check_statement(const Statement& statement);

/// The statement's verb with its object and its values, all checked against the catalogue as it is now: objects exist, new
/// names are legal and free. Throws CommandError with the place.
[[nodiscard]] Call bind_statement(const Statement& statement);

} // namespace lodex

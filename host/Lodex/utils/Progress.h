#pragma once

#include <functional>

namespace Lodex {

/// Progress of a long loop and the user's wish to stop it. Called now and then from the thread that runs the command;
/// returns false when the work shall stop. `done` runs from 0 to 1.
using ProgressCheck = std::function<bool(double done)>;

/// Thrown by an operator, a reader or a verb whose progress check answered false.
struct Cancelled {
};

} // namespace Lodex

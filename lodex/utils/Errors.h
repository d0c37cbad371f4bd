#pragma once

#include <Lodex/utils/Progress.h>

#include <stdexcept>

namespace lodex {

using Lodex::Cancelled;
using Lodex::ProgressCheck;

/// Thrown when input does not fit; what() is the whole message for the user.
class ModelError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace lodex

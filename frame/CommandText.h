#pragma once

#include <sstream>

namespace Kelvane {

/// An empty stream for command text. Numbers are written in the C locale, reals with six significant digits.
[[nodiscard]] std::ostringstream command_stream();

/// How a command writes a boolean.
[[nodiscard]] constexpr char flag_text(bool on)
{
    return on ? '1' : '0';
}

/// Ends the text with a NUL and hands it to the host's interpreter. Returns what the interpreter says; a dialog has
/// done its part once the text is sent.
bool submit_command(std::ostringstream& command);

} // namespace Kelvane

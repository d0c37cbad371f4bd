#pragma once

#include "propertyupscale/UpscaleChoices.h"

#include <Lodex/utils/CString.h>

#include <ostream>

namespace Kelvane {

/// Replaces one character by another in the stored characters of a text, its terminating NUL left out. Returns the
/// number of replacements.
int replace_characters(Lodex::CopyCString& text, char from, char to);

/// Writes the command that upscales as chosen, with a NUL at its end. At the first choice that will not do, writes one
/// line to the messages and returns false; the command then ends somewhere. Without a factory for the method there is
/// no line. Numbers in the C locale whatever that of the streams.
[[nodiscard]] bool compose_upscale_command(const UpscaleChoices& choices, std::ostream& messages,
                                           std::ostream& command);

} // namespace Kelvane

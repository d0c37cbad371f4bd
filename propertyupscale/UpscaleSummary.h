#pragma once

#include "propertyupscale/UpscaleChoices.h"

namespace Kelvane {

/// All choices as rich text. Names and typed texts are escaped, so that one with a "<" is shown as it stands.
[[nodiscard]] QString upscale_summary(const UpscaleChoices& choices);

/// What stands above the summary when the choices will not do.
[[nodiscard]] QString summary_error_block(const QString& message);

} // namespace Kelvane

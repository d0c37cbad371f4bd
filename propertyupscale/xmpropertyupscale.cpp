// Start-up of this source unit when the module is loaded.

#include "frame/SourceUnit.h"

namespace {

const Kelvane::DialogUnit unit;

} // namespace

#include "lodex/utils/Version.h"

namespace lodex {

const char* program_version()
{
    return LODEX_VERSION; // from the build files, where the version stands once
}

} // namespace lodex

#include <Lodex/surfaces/Lodex_surfaces_init.h>

namespace Lodex {

void Lodex_surfaces_init::start()
{
    // This host holds no surfaces: nothing to bring up.
}

} // namespace Lodex

#include <Kelvane/upscaling/Kelvane_upscaling_init.h>

namespace Kelvane {

void Kelvane_upscaling_init::start()
{
    // Nothing to register yet.
}

} // namespace Kelvane

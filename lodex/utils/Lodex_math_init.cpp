#include <Lodex/math/Lodex_math_init.h>

namespace Lodex {

void Lodex_math_init::start()
{
    // Pure functions only: nothing to bring up.
}

} // namespace Lodex

#include <Lodex/gxtools/Lodex_gxtools_init.h>

#include <Lodex/xtools/Lodex_xtools_init.h>

namespace Lodex {

void Lodex_gxtools_init::start()
{
    Lodex_xtools_init::initialize();
}

} // namespace Lodex

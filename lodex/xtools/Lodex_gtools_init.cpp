#include <Lodex/gtools/Lodex_gtools_init.h>

#include <Lodex/geobase/Lodex_geobase_init.h>

namespace Lodex {

void Lodex_gtools_init::start()
{
    Lodex_geobase_init::initialize();
}

} // namespace Lodex

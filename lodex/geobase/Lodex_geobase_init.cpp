#include <Lodex/geobase/Lodex_geobase_init.h>

#include <Lodex/geobase/GeobaseLib.h>

namespace Lodex {

void Lodex_geobase_init::start()
{
    static_cast<void>(GeobaseLib::instance());
}

} // namespace Lodex

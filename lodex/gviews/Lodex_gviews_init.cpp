#include <Lodex/gviews/Lodex_gviews_init.h>

#include <Lodex/xtools/Lodex_xtools_init.h>

namespace Lodex {

void Lodex_gviews_init::start()
{
    Lodex_xtools_init::initialize();
}

} // namespace Lodex

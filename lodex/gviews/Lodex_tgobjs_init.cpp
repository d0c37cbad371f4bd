#include <Lodex/tgobjs/Lodex_tgobjs_init.h>

#include <Lodex/gviews/Lodex_gviews_init.h>

namespace Lodex {

void Lodex_tgobjs_init::start()
{
    Lodex_gviews_init::initialize();
}

} // namespace Lodex

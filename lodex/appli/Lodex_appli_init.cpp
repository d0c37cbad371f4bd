#include <Lodex/appli/Lodex_appli_init.h>

#include <Lodex/gviews/Lodex_gviews_init.h>
#include <Lodex/interpreter/Lodex_interpreter_init.h>
#include <Lodex/volumes/Lodex_volumes_init.h>
#include <Lodex/xtools/Lodex_xtools_init.h>

namespace Lodex {

void Lodex_appli_init::start()
{
    Lodex_interpreter_init::initialize();
    Lodex_volumes_init::initialize();
    Lodex_xtools_init::initialize();
    Lodex_gviews_init::initialize();
}

} // namespace Lodex

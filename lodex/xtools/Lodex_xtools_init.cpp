#include <Lodex/xtools/Lodex_xtools_init.h>

#include <Lodex/qtools/Lodex_qtools_init.h>

namespace Lodex {

void Lodex_xtools_init::start()
{
    Lodex_qtools_init::initialize();
}

} // namespace Lodex

#include <Lodex/utils/Lodex_utils_init.h>

#include <Lodex/utils/FactoryLib.h>
#include <Lodex/utils/PluginManager.h>

namespace Lodex {

void Lodex_utils_init::start()
{
    // The registries are there before any plug-in registers from another thread.
    static_cast<void>(FactoryLib::instance());
    static_cast<void>(NamingLib::instance());
    static_cast<void>(PluginManager::instance());
}

} // namespace Lodex

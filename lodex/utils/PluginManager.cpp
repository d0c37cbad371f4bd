#include <Lodex/utils/PluginManager.h>

#include <lodex/utils/Immortal.h>

#include <set>
#include <string>

namespace Lodex {

namespace {

class Plugins : public PluginManager {
public:
    [[nodiscard]] bool is_loaded(const CString& plugin) const override { return loaded_.contains(plugin.str()); }

    void set_loaded(const CString& plugin, bool loaded) override
    {
        if (loaded)
            loaded_.insert(plugin.str());
        else
            loaded_.erase(plugin.str());
    }

private:
    // What this plug-in offers, layers for a grid that has none, is part of this host.
    std::set<std::string> loaded_{"Venlacore"};
};

} // namespace

PluginManager* PluginManager::instance()
{
    static lodex::Immortal<Plugins> manager;
    return &manager.get();
}

} // namespace Lodex

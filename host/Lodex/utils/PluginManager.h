#pragma once

#include <Lodex/utils/CString.h>

namespace Lodex {

/// Which plug-ins of the host's family are there.
class PluginManager {
public:
    [[nodiscard]] static PluginManager* instance();

    virtual ~PluginManager() = default;
    [[nodiscard]] virtual bool is_loaded(const CString& plugin) const = 0;
    virtual void set_loaded(const CString& plugin, bool loaded) = 0;
};

} // namespace Lodex

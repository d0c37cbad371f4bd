#pragma once

#include <Lodex/utils/CString.h>

namespace Lodex {

/// Run-time type of catalogue objects. One static object per type; compare with is_a().
class TypeId {
public:
    /// name as it stands in commands ("SGrid"); base null for a root type.
    constexpr TypeId(const char* name, const TypeId* base) : name_(name), base_(base) {}

    [[nodiscard]] CString name() const { return name_; }
    [[nodiscard]] bool is_a(const TypeId& other) const
    {
        for (const TypeId* type = this; type; type = type->base_) {
            if (type == &other)
                return true;
        }
        return false;
    }

private:
    const char* name_;
    const TypeId* base_;
};

} // namespace Lodex

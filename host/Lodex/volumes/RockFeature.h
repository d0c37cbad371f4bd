#pragma once

#include <Lodex/utils/CString.h>

namespace Lodex {

/// A stratigraphic unit.
class RockFeature {
public:
    virtual ~RockFeature() = default;
    [[nodiscard]] virtual const CString& name() const = 0;
};

} // namespace Lodex

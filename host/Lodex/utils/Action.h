#pragma once

#include <Lodex/utils/Resource.h>

namespace Lodex {

/// Something to do later: whoever holds it calls execute().
class Action : public Resource {
public:
    virtual void execute() = 0;
};

} // namespace Lodex

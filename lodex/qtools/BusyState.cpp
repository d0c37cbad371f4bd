#include <lodex/qtools/BusyState.h>

namespace lodex {

BusyState& BusyState::instance()
{
    static BusyState state;
    return state;
}

void BusyState::leave()
{
    if (depth_ > 0 && --depth_ == 0)
        emit released();
}

} // namespace lodex

#include <Lodex/xtools/LQActionAdapter.h>

namespace Lodex {

LQActionAdapter::LQActionAdapter(Action* action, QObject* parent) : QObject(parent), action_(action)
{
}

void LQActionAdapter::run()
{
    const Ref<Action> action = action_; // the action may delete this adapter
    if (action)
        action->execute();
}

} // namespace Lodex

#include "Lodex/xtools/moc_LQActionAdapter.cpp"

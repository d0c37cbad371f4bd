#include <Lodex/xtools/XMShell.h>

#include <utility>

namespace Lodex {

XMWidget::XMWidget(const CString& name) : name_(name)
{
}

XMWidget::~XMWidget()
{
    run_delete_action();
}

void XMWidget::set_delete_action(Action* action)
{
    delete_action_ = action;
}

void XMWidget::run_delete_action()
{
    // Let go first: what the action deletes may come back here.
    const Ref<Action> action = std::exchange(delete_action_, Ref<Action>());
    if (action)
        action->execute();
}

} // namespace Lodex

#include "Lodex/xtools/moc_XMShell.cpp"

#include <Lodex/geobase/Component.h>

#include <lodex/geobase/Notification.h>

namespace Lodex {

using lodex::Notification;

Component::~Component()
{
    Notification<Component>::subject_gone(*this);
    while (!observers_.empty()) {
        ComponentObserver* const observer = observers_.front();
        observers_.erase(observers_.begin());
        observer->disconnect(this);
    }
}

void Component::attach(ComponentObserver* observer)
{
    if (observer && std::ranges::find(observers_, observer) == observers_.end())
        observers_.push_back(observer);
}

void Component::detach(ComponentObserver* observer)
{
    std::erase(observers_, observer);
}

void Component::notify()
{
    Notification<Component>(*this).tell(observers_, [this](ComponentObserver* observer) { observer->update(this); });
}

void Component::notify_renamed()
{
    Notification<Component>(*this).tell(observers_, [this](ComponentObserver* observer) { observer->renamed(this); });
}

} // namespace Lodex

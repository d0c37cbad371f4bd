#pragma once

#include <vector>

namespace Lodex {

class Component;

/// Follows one or more components. An observer must be detached before it dies (GObjObserver does so by itself).
class ComponentObserver {
public:
    virtual ~ComponentObserver() = default;
    /// The component changed.
    virtual void update(Component* component) = 0;
    /// The component goes away; it has detached this observer already.
    virtual void disconnect(Component* component) = 0;
    /// The component got another name. Does nothing unless overridden.
    virtual void renamed(Component*) {}
};

/// Something that can be observed. Observers are not owned.
class Component {
public:
    Component() = default;
    Component(const Component&) = delete;
    Component& operator=(const Component&) = delete;
    /// Calls disconnect() of every observer that is still attached.
    virtual ~Component();

    /// Attaching twice has no further effect.
    void attach(ComponentObserver* observer);
    void detach(ComponentObserver* observer);
    /// Calls update() of every observer. Observers may detach during the call.
    void notify();
    void notify_renamed();

private:
    std::vector<ComponentObserver*> observers_;
};

} // namespace Lodex

#pragma once

#include <Lodex/geobase/GObjObserver.h>
#include <Lodex/geobase/Style.h>

#include <functional>

namespace lodex {

/// Follows one grid and calls functions; for widgets, whose own members bear the names of the observer's.
class GridWatch final : public Lodex::GObjObserver {
public:
    std::function<void()> changed;
    /// The grid goes away; it is observed no more.
    std::function<void()> gone;

    void update(Lodex::Component*) override
    {
        if (changed)
            changed();
    }
    void disconnect(Lodex::Component* component) override
    {
        GObjObserver::disconnect(component);
        if (gone)
            gone();
    }
};

/// The same for one style.
class StyleWatch final : public Lodex::StyleObserver {
public:
    std::function<void()> changed;

    StyleWatch() = default;
    ~StyleWatch() override { observe(nullptr); }
    StyleWatch(const StyleWatch&) = delete;
    StyleWatch& operator=(const StyleWatch&) = delete;

    /// Null: none.
    void observe(Lodex::Style* style)
    {
        if (style == style_)
            return;
        if (style_)
            style_->detach_style(this);
        style_ = style;
        if (style_)
            style_->attach_style(this);
    }

    void update(Lodex::StyleInfo*) override
    {
        if (changed)
            changed();
    }
    void disconnect() override { style_ = nullptr; }

private:
    Lodex::Style* style_ = nullptr;
};

} // namespace lodex

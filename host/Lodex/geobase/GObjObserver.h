#pragma once

#include <Lodex/geobase/GObj.h>

namespace Lodex {

/// Follows one object of the catalogue. Copies follow the same object.
class GObjObserver : public ComponentObserver {
public:
    GObjObserver() = default;
    GObjObserver(const GObjObserver& other) { observe(other.observed_); }
    GObjObserver& operator=(const GObjObserver& other)
    {
        observe(other.observed_);
        return *this;
    }
    ~GObjObserver() override { observe(nullptr); }

    /// Detaches from the former object and attaches to this one (null: to none).
    void observe(GObj* object)
    {
        if (object == observed_)
            return;
        if (observed_)
            observed_->detach(this);
        observed_ = object;
        if (observed_)
            observed_->attach(this);
    }
    /// Null when detached.
    [[nodiscard]] GObj* observed() const { return observed_; }

    void disconnect(Component*) override { observed_ = nullptr; }

private:
    GObj* observed_ = nullptr;
};

} // namespace Lodex

#pragma once

#include <Lodex/utils/CString.h>
#include <Lodex/utils/Resource.h>

#include <functional>
#include <utility>
#include <vector>

namespace Lodex {

/// A shared, observable value. Writing and telling are two steps: set(), set_changed(), notify().
template <class T> class ObservableValue : public Resource {
public:
    explicit ObservableValue(T value = {}) : value_(std::move(value)) {}

    [[nodiscard]] const T& value() const { return value_; }
    void set(T value) { value_ = std::move(value); }

    /// Marks the value as changed, so that the next notify() calls the observers.
    void set_changed() { changed_ = true; }
    [[nodiscard]] bool changed() const { return changed_; }
    /// Calls every observer if the value is marked as changed, then takes the mark off.
    void notify()
    {
        if (!changed_)
            return;
        changed_ = false;
        const auto observers = observers_; // an observer may remove itself
        for (const auto& [id, call] : observers)
            call();
    }

    /// Returns a number for remove_observer().
    int add_observer(std::function<void()> call)
    {
        observers_.emplace_back(++last_id_, std::move(call));
        return last_id_;
    }
    void remove_observer(int id)
    {
        std::erase_if(observers_, [id](const auto& entry) { return entry.first == id; });
    }

private:
    T value_;
    bool changed_ = false;
    int last_id_ = 0;
    std::vector<std::pair<int, std::function<void()>>> observers_;
};

/// A whole number, such as the section number that a tool and an editor share.
class IntValue : public ObservableValue<int> {
public:
    using ObservableValue::ObservableValue;
};

/// A text, such as the name that several editors share.
class StringValue : public ObservableValue<CString> {
public:
    using ObservableValue::ObservableValue;
};

} // namespace Lodex

#pragma once

#include <memory>
#include <utility>
#include <vector>

namespace Lodex {

/// An ordered list that owns what its pointers point to; indices are 0-based. Copying is not possible.
template <class T> class PtrList {
public:
    [[nodiscard]] int count() const { return static_cast<int>(items_.size()); }
    [[nodiscard]] bool empty() const { return items_.empty(); }

    /// The item at index, still owned by the list; null when index is outside.
    [[nodiscard]] T* at(int index) const
    {
        return index >= 0 && index < count() ? items_[static_cast<std::size_t>(index)].get() : nullptr;
    }
    /// Position of the item, -1 when it is not in the list.
    [[nodiscard]] int find(const T* item) const
    {
        for (int i = 0; i < count(); ++i) {
            if (items_[static_cast<std::size_t>(i)].get() == item)
                return i;
        }
        return -1;
    }
    /// Puts the item before the one at index; an index outside appends.
    T* insert(int index, std::unique_ptr<T> item)
    {
        T* raw = item.get();
        const bool inside = index >= 0 && index < count();
        items_.insert(inside ? items_.begin() + index : items_.end(), std::move(item));
        return raw;
    }
    T* append(std::unique_ptr<T> item) { return insert(-1, std::move(item)); }
    /// Takes the item out and hands it to the caller; null when index is outside.
    [[nodiscard]] std::unique_ptr<T> take(int index)
    {
        if (index < 0 || index >= count())
            return nullptr;
        auto item = std::move(items_[static_cast<std::size_t>(index)]);
        items_.erase(items_.begin() + index);
        return item;
    }
    void clear() { items_.clear(); }

private:
    std::vector<std::unique_ptr<T>> items_;
};

} // namespace Lodex

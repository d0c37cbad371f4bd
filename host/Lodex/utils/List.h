#pragma once

#include <cstddef>
#include <initializer_list>
#include <utility>
#include <vector>

namespace Lodex {

/// An ordered list of values; indices are 0-based.
template <class T> class List {
public:
    List() = default;
    List(std::initializer_list<T> items) : items_(items) {}

    [[nodiscard]] int count() const { return static_cast<int>(items_.size()); }
    [[nodiscard]] bool empty() const { return items_.empty(); }
    void append(T item) { items_.push_back(std::move(item)); }
    void clear() { items_.clear(); }

    [[nodiscard]] T& operator[](int index) { return items_[static_cast<std::size_t>(index)]; }
    [[nodiscard]] const T& operator[](int index) const { return items_[static_cast<std::size_t>(index)]; }

    [[nodiscard]] auto begin() { return items_.begin(); }
    [[nodiscard]] auto end() { return items_.end(); }
    [[nodiscard]] auto begin() const { return items_.begin(); }
    [[nodiscard]] auto end() const { return items_.end(); }

    friend bool operator==(const List&, const List&) = default;

private:
    std::vector<T> items_;
};

} // namespace Lodex

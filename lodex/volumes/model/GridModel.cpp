#include "GridModel.h"

#include <algorithm>
#include <atomic>

namespace lodex {

namespace {
template <class T> const T* find_by_name(const std::vector<T>& items, std::string_view name)
{
    const auto it = std::ranges::find(items, name, &T::name);
    return it == items.end() ? nullptr : &*it;
}
} // namespace

const PropertyData* GridModel::find_property(std::string_view name) const
{
    return find_by_name(properties, name);
}

const RegionData* GridModel::find_region(std::string_view name) const
{
    return find_by_name(regions, name);
}

std::uint64_t next_grid_id()
{
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

} // namespace lodex

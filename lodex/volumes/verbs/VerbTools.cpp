#include "VerbTools.h"

#include "lodex/interpreter/Lists.h"

#include <algorithm>
#include <set>

namespace lodex {

namespace {

template <class Item> std::vector<std::string_view> names_of(const std::vector<Item>& items, std::string Item::*name)
{
    std::vector<std::string_view> names;
    for (const Item& item : items)
        names.push_back(item.*name);
    return names;
}

std::optional<std::vector<std::string>> names_to_copy(const Call& call, std::string_view keyword, const std::string& what,
                                                      std::initializer_list<std::string_view> words_for_all,
                                                      const std::vector<std::string_view>& existing)
{
    if (!call.has(keyword))
        return std::nullopt;
    const auto means_all = [&](const std::string& name) { return std::ranges::find(words_for_all, name) != words_for_all.end(); };
    std::set<std::string_view> known(words_for_all);
    known.insert(existing.begin(), existing.end());
    const auto longest = std::ranges::max_element(known, {}, &std::string_view::size);
    std::vector<std::string> names;
    try {
        names = resolve_joined(
            call.text(keyword), [&](const std::string& name) { return known.contains(name); }, longest->size(), what);
    } catch (const CommandError& error) {
        call.fail(error.what(), keyword);
    }
    if (std::ranges::any_of(names, means_all))
        return std::nullopt;
    return names;
}

} // namespace

std::optional<std::vector<std::string>> properties_to_copy(const Call& call, std::string_view keyword, const GridModel& model)
{
    return names_to_copy(call, keyword, "property", {"all_properties"},
                         names_of(model.properties, &PropertyData::name));
}

std::optional<std::vector<std::string>> regions_to_copy(const Call& call, std::string_view keyword, const GridModel& model)
{
    return names_to_copy(call, keyword, "region", {"all_regions", "everywhere"}, names_of(model.regions, &RegionData::name));
}

void set_property(CornerPointGrid& grid, PropertyData property)
{
    grid.change([&](GridModel& model) {
        const auto it = std::ranges::find(model.properties, property.name, &PropertyData::name);
        if (it != model.properties.end())
            *it = std::move(property);
        else
            model.properties.push_back(std::move(property));
    });
}

const PropertyData& property_of(const Call& call, std::string_view keyword, const GridModel& model)
{
    const PropertyData* property = model.find_property(call.text(keyword));
    if (!property)
        call.fail("there is no property \"" + call.text(keyword) + "\"", keyword);
    return *property;
}

} // namespace lodex

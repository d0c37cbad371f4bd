#include "VerbTools.h"

#include "lodex/interpreter/Lists.h"

#include <algorithm>

namespace lodex {

namespace {

std::optional<std::vector<std::string>> names_to_copy(const Call& call, std::string_view keyword, const std::string& what,
                                                      std::initializer_list<std::string_view> words_for_all,
                                                      const std::function<bool(const std::string&)>& exists)
{
    if (!call.has(keyword))
        return std::nullopt;
    const auto means_all = [&](const std::string& name) { return std::ranges::find(words_for_all, name) != words_for_all.end(); };
    std::vector<std::string> names;
    try {
        names = resolve_joined(call.text(keyword), [&](const std::string& name) { return means_all(name) || exists(name); }, what);
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
                         [&](const std::string& name) { return model.find_property(name) != nullptr; });
}

std::optional<std::vector<std::string>> regions_to_copy(const Call& call, std::string_view keyword, const GridModel& model)
{
    return names_to_copy(call, keyword, "region", {"all_regions", "everywhere"},
                         [&](const std::string& name) { return model.find_region(name) != nullptr; });
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

std::string size_text(const GridSize& size)
{
    return std::to_string(size[0]) + " x " + std::to_string(size[1]) + " x " + std::to_string(size[2]);
}

} // namespace lodex

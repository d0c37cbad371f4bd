// Verbs that rename and remove what belongs to a grid.

#include "VerbTools.h"

#include <Lodex/geobase/Property.h>
#include <Lodex/geobase/Style.h>

#include <algorithm>

namespace lodex {

namespace {

/// The new name, once it is sure that no item of the list bears it.
template <class Items> std::string free_item_name(const Call& call, const Items& items, const std::string& kind)
{
    std::string name = call.text("name");
    if (std::ranges::any_of(items, [&](const auto& item) { return item.name == name; }))
        call.fail("SGrid \"" + call.object()->name().str() + "\" has a " + kind + " \"" + name + "\" already", "name");
    return name;
}

/// Position of the region that the statement names.
std::size_t region_of(const Call& call, const GridModel& model)
{
    const std::string name = call.text("region");
    const auto found = std::ranges::find(model.regions, name, &RegionData::name);
    if (found == model.regions.end())
        call.fail("SGrid \"" + call.object()->name().str() + "\" has no region \"" + name + "\"", "region");
    return static_cast<std::size_t>(found - model.regions.begin());
}

std::size_t position_of(const PropertyData& property, const GridModel& model)
{
    return static_cast<std::size_t>(&property - model.properties.data());
}

Lodex::Style* style_of(const CornerPointGrid& grid, const std::string& property)
{
    const Lodex::Property* const found = grid.property_db()->find(property);
    return found ? found->style() : nullptr;
}

void rename_property(Call& call)
{
    CornerPointGrid& grid = grid_of(call);
    const std::size_t at = position_of(property_of(call, "property", grid.model()), grid.model());
    const std::string name = free_item_name(call, grid.model().properties, "property");
    // The style goes with the name, and the colours that a user chose are to stay.
    std::map<std::string, std::string> look;
    if (const Lodex::Style* style = style_of(grid, call.text("property")))
        look = style->attributes();
    grid.change([&](GridModel& model) { model.properties[at].name = name; });
    Lodex::Style* const style = style_of(grid, name);
    if (!style || look.empty())
        return;
    for (const auto& [attribute, value] : look)
        style->set_attribute(attribute, value);
    style->update();
}

void destroy_property(Call& call)
{
    CornerPointGrid& grid = grid_head_of(call);
    const std::size_t at = position_of(property_of(call, "property", grid.header()), grid.header());
    grid.change([&](GridModel& model) { model.properties.erase(model.properties.begin() + static_cast<std::ptrdiff_t>(at)); });
}

void rename_region(Call& call)
{
    CornerPointGrid& grid = grid_of(call);
    const std::size_t at = region_of(call, grid.model());
    const std::string name = free_item_name(call, grid.model().regions, "region");
    grid.change([&](GridModel& model) { model.regions[at].name = name; });
}

void destroy_region(Call& call)
{
    CornerPointGrid& grid = grid_head_of(call);
    const std::size_t at = region_of(call, grid.header());
    grid.change([&](GridModel& model) { model.regions.erase(model.regions.begin() + static_cast<std::ptrdiff_t>(at)); });
}

Keyword item(const std::string& name, const std::string& meaning)
{
    return {.name = name, .kind = ValueKind::Text, .meaning = meaning, .required = true, .positional = true};
}

const Keyword new_name{.name = "name", .kind = ValueKind::ItemName, .meaning = "its new name", .required = true};

const VerbRegistration rename_property_registration{{.name = "rename_property",
                                                     .object_type = "SGrid",
                                                     .summary = "Gives a property of the grid another name.",
                                                     .keywords = {item("property", "the property"), new_name},
                                                     .run = rename_property}};

const VerbRegistration destroy_property_registration{{.name = "destroy_property",
                                                      .object_type = "SGrid",
                                                      .summary = "Removes a property from the grid.",
                                                      .keywords = {item("property", "the property")},
                                                      .run = destroy_property}};

const VerbRegistration rename_region_registration{{.name = "rename_region",
                                                   .object_type = "SGrid",
                                                   .summary = "Gives a region of the grid another name.",
                                                   .keywords = {item("region", "the region"), new_name},
                                                   .run = rename_region}};

const VerbRegistration destroy_region_registration{
    {.name = "destroy_region",
     .object_type = "SGrid",
     .summary = "Removes a region from the grid; the cells and their values stay.",
     .keywords = {item("region", "the region")},
     .run = destroy_region}};

} // namespace

} // namespace lodex
